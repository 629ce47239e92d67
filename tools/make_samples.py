#!/usr/bin/env python3
"""Writes the bundled sample mail stores of the four clients into samples/.

Each store holds a few realistic messages in nested folders, with the features of its format:
Eudora's delimiter in the middle of text, Internet Mail's zero bytes, Netscape lines that only
start with "From", Pegasus's file header and bare line feeds. Run it from the repository root.
"""
import os
import zlib
import shutil

MESSAGES = [
    ("Thu, 15 Jan 1998 10:30:45 -0500", "Ann Lee <ann@example.org>", "team@example.org",
     "bob@example.org", "Quarterly report draft",
     "Hi all,\n\nThe draft of the quarterly report is ready for review.\n"
     "From what I hear, the numbers look good.\n\nAnn\n"),
    ("Fri Jan 16 08:15:02 1998", "Bob Stone <bob@example.org>", "ann@example.org", "",
     "Re: Quarterly report draft",
     "Ann,\n\nThanks. Two small corrections on page 3; see below.\n\n> From what I hear\n\nBob\n"),
    ("Wed, 7 May 1997 11:02:33 GMT", "Carol Diaz <carol@example.net>", "ann@example.org", "",
     "Lunch on Friday?",
     "Are you free for lunch on Friday? The new place on Elm Street opened.\n"),
    ("Sat, 07 Feb 98 18:44:00 PST", "Lists <news@lists.example.com>", "ann@example.org", "",
     "Weekly digest: gardening",
     "This week: tomatoes, compost and the first frost.\nFrom here to there and back.\n"),
    ("", "Dan <dan@example.com>", "ann@example.org", "carol@example.net", "No date on this one",
     "A message without a Date header keeps the fixed date.\n"),
]


def headers(date, sender, to, cc, subject, eol):
    lines = []
    if date:
        lines.append("Date: " + date)
    lines += ["From: " + sender, "To: " + to]
    if cc:
        lines.append("Cc: " + cc)
    lines += ["Subject: " + subject, "Message-ID: <%d@example.org>" % zlib.crc32(subject.encode())]
    return eol.join(lines) + eol + eol


def body(text, eol):
    return text.replace("\n", eol)


def write(path, data):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as f:
        f.write(data.encode("utf-8") if isinstance(data, str) else data)


def eudora(root):
    # The first header line follows the delimiter's own line.
    def mailbox(msgs):
        out = ""
        for m in msgs:
            out += "From ???@??? Mon Jan 01 00:00:00 1998\r\n" + headers(*m[:5], "\r\n") + body(m[5], "\r\n")
        return out
    write(root + "/In.mbx", mailbox(MESSAGES[0:3]))
    write(root + "/In.toc", b"\0" * 104)
    write(root + "/Work/Projects.mbx", mailbox(MESSAGES[3:5]))
    write(root + "/Work/Projects.toc", b"\0" * 104)
    write(root + "/Trash.mbx", "")  # a zero-byte mailbox is passed over
    write(root + "/Trash.toc", b"\0" * 104)
    write(root + "/Attach/readme.txt", "Attachments live here.\n")


def internet(root):
    delim = b"\x00\x7f\x00\x7f"
    def mailbox(msgs):
        out = b""
        for m in msgs:
            out += delim + ("Received: by mail.example.org\r\n" + headers(*m[:5], "\r\n") + body(m[5], "\r\n")).encode()
        return out
    write(root + "/Inbox", mailbox(MESSAGES[0:3]))
    write(root + "/Inbox.snm", b"\0" * 64)
    write(root + "/Folders/Sent", mailbox(MESSAGES[3:5]))
    write(root + "/Folders/Sent.snm", b"\0" * 64)


def netscape(root):
    def mailbox(msgs):
        out = ""
        for m in msgs:
            out += "From - Thu Jan 15 10:30:45 1998\n" + "X-Mozilla-Status: 0001\n" + headers(*m[:5], "\n") + body(m[5], "\n")
        return out
    write(root + "/Inbox", mailbox(MESSAGES[0:3]))
    write(root + "/Inbox.snm", b"\0" * 64)
    write(root + "/Archive.sbd/1998", mailbox(MESSAGES[3:5]))
    write(root + "/Archive.sbd/1998.snm", b"\0" * 64)
    write(root + "/Archive", "")
    write(root + "/Archive.snm", b"\0" * 64)


def pegasus(root):
    def mailbox(title, msgs):
        header = (title.encode() + b"\0" * 128)[:128]
        out = header
        for i, m in enumerate(msgs):
            if i:
                out += b"\n\n\x1a"
            out += ("Received: by mail.example.org\n" + headers(*m[:5], "\n") + body(m[5], "\n")).encode()
        return out
    write(root + "/IN.PMM", mailbox("Main folder", MESSAGES[0:3]))
    write(root + "/IN.PMI", b"\0" * 32)
    write(root + "/Friends/FRIENDS.PMM", mailbox("Friends", MESSAGES[3:5]))
    write(root + "/Friends/FRIENDS.PMI", b"\0" * 32)


def main():
    for name, make in [("eudora", eudora), ("internet", internet), ("netscape", netscape),
                       ("pegasus", pegasus)]:
        root = os.path.join("samples", name)
        shutil.rmtree(root, ignore_errors=True)
        make(root)


if __name__ == "__main__":
    main()
