"""How many small faults in the product code the test suite catches.

    scripts/mutate.sh [--sample N] [--seed S] [--out FILE] [--list] [--jobs J]

Every place in store/, clients/, agent/ and settings/ where a comparison, a logical operator,
a boolean, an integer constant or a negation can be changed is listed in source order; a
seeded sample of N of them is applied one at a time, built in build/mutate and put to the
whole suite. The sample depends only on the product sources and the seed, so runs before
and after a change to the tests are compared mutant by mutant.

    killed     a test failed or timed out
    survived   every test passed: the fault goes unnoticed
    stillborn  the mutant does not build (not counted in the rate)
"""
import argparse
import os
import random
import re
import shlex
import signal
import subprocess
import sys
import time
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
PRODUCT_DIRS = ["store", "clients", "agent", "settings"]
BUILD = ROOT / "build" / "mutate"

# What is never mutated, found left to right so that a quote inside a comment (or a comment
# marker inside a string) is taken for what it is.
UNTOUCHABLE = re.compile(r'''
    //[^\n]*
  | /\*.*?\*/
  | "(?:\\.|[^"\\\n])*"
  | '(?:\\.|[^'\\\n])*'
  | ^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*
  | \bstatic_assert\b[^;]*
''', re.S | re.M | re.X)

# The code is clang-formatted: a binary operator has a space on each side, a template
# bracket never has (`std::vector<int>`, `template <class T>`), nor do `->`, `<<` and `>>`.
# The `= 0` of a pure virtual function is left alone: changed, it never builds.
SITE = re.compile(r'''
    (?<=\s)(?:<=?|>=?|==|!=|&&|\|\|)(?=\s)
  | \b(?:true|false)\b
  | (?<![\w.])(?<!const\ =\ )(?<!\)\ =\ )(?:0[xX][0-9a-fA-F]+|0|[1-9][0-9]*)(?=[uUlL]*(?![\w.]))
  | !(?!=)
''', re.X)

SWAPS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==",
         "&&": "||", "||": "&&", "true": "false", "false": "true", "!": ""}


def replacement(token):
    if token in SWAPS:
        return SWAPS[token]
    hexadecimal = token[:2] in ("0x", "0X")
    value = int(token, 16 if hexadecimal else 10)
    value = {0: 1, 1: 0}.get(value, value + 1)
    if not hexadecimal:
        return str(value)
    digits = token[2:]
    return token[:2] + format(value, "0%d%s" % (len(digits), "x" if digits.islower() else "X"))


def product_files():
    for folder in PRODUCT_DIRS:
        for path in sorted((ROOT / folder).iterdir()):
            if path.suffix in (".cpp", ".h"):
                yield path.relative_to(ROOT).as_posix()


def sites(relpath):
    # latin-1 maps bytes one to one, so offsets hold and a file is written back unchanged.
    text = (ROOT / relpath).read_bytes().decode("latin-1")
    masked = UNTOUCHABLE.sub(lambda m: re.sub(r"[^\n]", " ", m.group()), text)
    for match in SITE.finditer(masked):
        yield relpath, match.start(), match.group(), replacement(match.group())


def describe(mutant, window=28):
    relpath, offset, token, new = mutant
    text = (ROOT / relpath).read_bytes().decode("latin-1")
    start = max(text.rfind("\n", 0, offset) + 1, offset - window)
    end = text.find("\n", offset)
    end = min(len(text) if end < 0 else end, offset + len(token) + window)
    before, after = text[start:offset], text[offset + len(token):end]
    line = text.count("\n", 0, offset) + 1
    return "%s:%d  %s -> %s" % (relpath, line, (before + token + after).strip(),
                                (before + new + after).strip())


def run(command, log):
    with open(log, "w") as out:
        process = subprocess.Popen(command, cwd=ROOT, stdout=out, stderr=subprocess.STDOUT,
                                   start_new_session=True)
        try:
            return process.wait()
        except BaseException:
            # The build and the tests run in a session of their own: stop all of it.
            os.killpg(process.pid, signal.SIGTERM)
            process.wait()
            raise


def build_and_test(jobs):
    if run(["cmake", "--build", str(BUILD), "-j", str(jobs)], BUILD / "mutate-build.log"):
        # A mutant that breaks the test programs' start-up fails the build while the tests
        # are listed: the suite noticed it.
        log = (BUILD / "mutate-build.log").read_text(errors="replace")
        return "killed" if "Error running test executable" in log else "stillborn"
    tests = ["ctest", "--test-dir", str(BUILD), "-j", str(jobs), "--stop-on-failure",
             "--timeout", "60"]
    return "killed" if run(tests, BUILD / "mutate-test.log") else "survived"


def product_tree_clean():
    return subprocess.run(["git", "diff", "--quiet", "--"] + PRODUCT_DIRS, cwd=ROOT).returncode == 0


def main():
    parser = argparse.ArgumentParser(description="Mutation check of the test suite.")
    parser.add_argument("--sample", type=int, default=120, help="mutants to run (default 120)")
    parser.add_argument("--seed", type=int, default=2024, help="sampling seed (default 2024)")
    parser.add_argument("--out", help="also write the results to this file")
    parser.add_argument("--list", action="store_true", help="print the sample and stop")
    parser.add_argument("--jobs", type=int, default=2, help="build and test jobs (default 2)")
    args = parser.parse_args()

    every = [site for path in product_files() for site in sites(path)]
    chosen = sorted(random.Random(args.seed).sample(every, min(args.sample, len(every))),
                    key=lambda site: (site[0], site[1]))
    if args.list:
        for mutant in chosen:
            print(describe(mutant))
        print("%d of %d sites" % (len(chosen), len(every)))
        return 0
    if not product_tree_clean():
        sys.exit("mutate: store/, clients/, agent/ or settings/ has uncommitted changes")

    # However stopped, the run restores the sources (SIGINT even in a background job).
    for stop in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
        signal.signal(stop, signal.default_int_handler)
    out = open(args.out, "w") if args.out else None

    def report(line):
        print(line, flush=True)
        if out:
            out.write(line + "\n")
            out.flush()

    started = time.monotonic()
    report("$ " + shlex.join(["scripts/mutate.sh"] + sys.argv[1:]))
    # The default preset's build without -Werror: `a && b || c` or an always-true unsigned
    # test still runs, and it is for the tests, not the compiler, to catch it.
    subprocess.run(["cmake", "-S", str(ROOT), "-B", str(BUILD), "-G", "Ninja",
                    "-DCMAKE_BUILD_TYPE=RelWithDebInfo", "-DTUK_WERROR=OFF"],
                   stdout=subprocess.DEVNULL, check=True)
    if build_and_test(args.jobs) != "survived":
        sys.exit("mutate: the unchanged suite does not pass; see build/mutate/mutate-*.log")

    counts = {"killed": 0, "survived": 0, "stillborn": 0}
    pristine = None
    try:
        for mutant in chosen:
            relpath, offset, token, new = mutant
            path = ROOT / relpath
            pristine = path.read_bytes()
            text = pristine.decode("latin-1")
            path.write_bytes((text[:offset] + new + text[offset + len(token):]).encode("latin-1"))
            outcome = build_and_test(args.jobs)
            # Written back, the file is newer than the mutant's object: the next build
            # recompiles this one file, nothing else.
            path.write_bytes(pristine)
            pristine = None
            counts[outcome] += 1
            report("%-9s %s" % (outcome, describe(mutant)))
    finally:
        # A second Ctrl-C must not cut the restoring short.
        signal.signal(signal.SIGINT, signal.SIG_IGN)
        if pristine is not None:
            path.write_bytes(pristine)
        if not product_tree_clean():
            sys.exit("mutate: the product sources differ from git after restoring")

    judged = counts["killed"] + counts["survived"]
    report("mutants %d  killed %d  survived %d  stillborn %d  (kill rate %.1f%%)" % (
        len(chosen), counts["killed"], counts["survived"], counts["stillborn"],
        100.0 * counts["killed"] / judged if judged else 0.0))
    minutes, seconds = divmod(int(time.monotonic() - started), 60)
    report("# wall time %dm%02ds" % (minutes, seconds))
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        sys.exit("mutate: interrupted")
