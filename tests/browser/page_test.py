#!/usr/bin/env python3
"""mhhost serve's search page in headless chromium, on an index of the bundled samples and a
store of hostile and filler messages: search, open, page, filter, index, and nothing that a
message holds runs or fetches anything.
  page_test.py --mhhost BIN --samples DIR --out DIR [--save-docs]"""
import argparse, os, pathlib, re, shutil, subprocess, sys, tempfile

SKIPPED = 77
HOSTILE_SUBJECT = '<script>alert(1)</script></title> hostile'
HOSTILE = f'''From - Mon Mar 02 09:00:00 1998
Date: Mon, 02 Mar 1998 09:00:00 +0000
From: "<script>alert(3)</script>" <mallory@example.org>
Subject: {HOSTILE_SUBJECT}
MIME-Version: 1.0
Content-Type: text/html; charset=utf-8

<html><head><title>x</title><script>alert(2)</script></head><body>
<p>Hostile <a href="javascript:alert(4)">click here</a></p><img src=http://10.9.9.9/x>
<p></title><script>alert(5)</script> payload</p></body></html>
'''
FILLER = 'From - Tue Feb 06 10:00:00 2001\nDate: Tue, {day:02d} Feb 2001 10:00:00 +0000\n' \
         'From: Filler <filler@example.org>\nSubject: Filler {day}\n\nfiller line {day}\n'
# Every call into the page's alert is kept, whatever CSP lets through.
CATCH_ALERTS = 'window.caught = []; window.alert = (m) => window.caught.push(String(m));'


def make_index(mhhost, samples, folder):
    common = [mhhost, '--registry', f'{folder}/registry.reg', '--db', f'{folder}/index.db']
    hostile = pathlib.Path(folder, 'hostile')
    hostile.mkdir()
    hostile.joinpath('Inbox').write_text(HOSTILE + ''.join(FILLER.format(day=d) for d in range(1, 26)))
    hostile.joinpath('Inbox.msf').touch()
    for client in ('eudora', 'internet', 'netscape', 'pegasus'):
        subprocess.run(common + ['--client', client, 'config', '--mail-dir', f'{samples}/{client}',
                                 '--yes'], check=True, stdout=subprocess.DEVNULL)
    subprocess.run(common + ['--key', r'Software\Tuk\Agents\MHNetscapeHostile', 'config',
                             '--mail-dir', str(hostile), '--ctrl-ext', '.msf', '--yes'],
                   check=True, stdout=subprocess.DEVNULL)
    subprocess.run(common + ['index'], check=True, stdout=subprocess.DEVNULL)
    return common


def start_server(common):
    server = subprocess.Popen(common + ['serve', '--port', '0'], stdout=subprocess.PIPE, text=True)
    for line in server.stdout:
        found = re.search(r'http://(127\.0\.0\.1|localhost|\[::1\]):\d+/\?token=[\w-]+', line)
        if found:
            return server, found.group(0)
    sys.exit(f'mhhost serve printed no URL (exit status {server.wait()})')


def drive(driver, url, out):
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    from selenium.webdriver.support.ui import WebDriverWait
    wait = lambda test, seconds=10: WebDriverWait(driver, seconds).until(lambda d: test())
    text = lambda id: driver.find_element(By.ID, id).text
    subjects = lambda: [e.text for e in driver.find_elements(By.CSS_SELECTOR, '.hit-subject')]
    driver.execute_cdp_cmd('Page.addScriptToEvaluateOnNewDocument', {'source': CATCH_ALERTS})
    driver.get(url)

    def search(query, summary):
        box = driver.find_element(By.ID, 'q')
        box.clear()
        box.send_keys(query, Keys.ENTER)
        wait(lambda: text('summary') == summary)

    search('subject:report', '8 hits')
    assert all('Quarterly report draft' in s for s in subjects()), subjects()
    assert driver.find_elements(By.CSS_SELECTOR, '.hit-snippet mark'), 'no highlighted words'
    driver.save_screenshot(f'{out}/search.png')
    # The keys alone: select the first hit, open it, and come back.
    driver.find_element(By.TAG_NAME, 'body').send_keys('/', Keys.ESCAPE, 'j', Keys.ENTER)
    wait(lambda: 'Two small corrections' in text('m-text'))
    assert text('m-subject') == 'Re: Quarterly report draft'
    driver.save_screenshot(f'{out}/message.png')
    driver.switch_to.active_element.send_keys(Keys.ESCAPE)
    wait(lambda: driver.find_element(By.ID, 'results-view').is_displayed())

    eudora = [b for b in driver.find_elements(By.CSS_SELECTOR, '#facet-stores .facet')
              if b.text.startswith('eudora')]
    eudora[0].click()
    wait(lambda: text('summary') == '2 hits')
    assert all(e.text.startswith('eudora') for e in driver.find_elements(By.CLASS_NAME, 'hit-place'))

    search('filler', '25 hits')
    assert text('page-label') == '1–20 of 25'
    driver.find_element(By.ID, 'next').click()
    wait(lambda: text('page-label') == '21–25 of 25')
    assert len(subjects()) == 5
    driver.back()
    wait(lambda: text('page-label') == '1–20 of 25')

    search('payload', '1 hit')
    assert subjects() == [HOSTILE_SUBJECT], subjects()
    driver.find_element(By.CSS_SELECTOR, 'a.hit').click()
    wait(lambda: 'click here' in text('m-text'))
    assert text('m-subject') == HOSTILE_SUBJECT

    driver.find_element(By.ID, 'index-now').click()
    wait(lambda: text('index-status').startswith('Indexed'), 60)

    assert driver.execute_script('return window.caught') == [], 'an alert ran'
    origin = url.split('/?')[0] + '/'
    fetched = driver.execute_script(
        "return performance.getEntriesByType('resource').map((e) => e.name)")
    strangers = [name for name in fetched if not name.startswith(origin)]
    assert not strangers, f'requests to other addresses: {strangers}'


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument('--mhhost', required=True)
    parser.add_argument('--samples', required=True)
    parser.add_argument('--out', required=True)
    parser.add_argument('--save-docs', action='store_true',
                        help='copy the screenshots to docs/screenshots/')
    args = parser.parse_args()
    try:
        from selenium import webdriver
        from selenium.webdriver.chrome.service import Service
    except ImportError:
        print('skipped: python3-selenium is not installed')
        return SKIPPED
    chromium, chromedriver = shutil.which('chromium'), shutil.which('chromedriver')
    if not chromium or not chromedriver:
        print('skipped: chromium or chromedriver is not installed')
        return SKIPPED
    with tempfile.TemporaryDirectory() as folder:
        server, url = start_server(make_index(args.mhhost, args.samples, folder))
        options = webdriver.ChromeOptions()
        options.binary_location = chromium
        for flag in ('--headless=new', '--no-sandbox', '--disable-gpu',
                     '--disable-background-networking', '--disable-component-update',
                     '--disable-sync', '--no-first-run', '--window-size=1100,800',
                     f'--user-data-dir={folder}/profile'):
            options.add_argument(flag)
        driver = webdriver.Chrome(service=Service(chromedriver), options=options)
        try:
            os.makedirs(args.out, exist_ok=True)
            drive(driver, url, args.out)
        finally:
            driver.quit()
            server.terminate()
            server.wait()
    if args.save_docs:
        docs = pathlib.Path(__file__).resolve().parents[2] / 'docs' / 'screenshots'
        docs.mkdir(parents=True, exist_ok=True)
        for name in ('search.png', 'message.png'):
            shutil.copy(f'{args.out}/{name}', docs / name)
    print(f'the page works; screenshots in {args.out}')
    return 0


if __name__ == '__main__':
    sys.exit(main())
