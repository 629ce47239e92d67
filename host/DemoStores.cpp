// The demo's mail: a few messages per client, laid out as each client keeps them.
#include "host/DemoStores.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sys/stat.h>

namespace {

struct DemoMessage {
  const char *date; // "" for a message without a Date header
  const char *from;
  const char *to;
  const char *cc;
  const char *subject;
  const char *body;                  // lines ended by '\n'
  const char *contentType = nullptr; // of a MIME message, whose body holds its parts
};

const DemoMessage kEudoraInbox[] = {
    {"Thu, 15 Jan 1998 10:30:45 -0500", "Ann Lee <ann@example.org>", "team@example.org",
     "bob@example.org", "Quarterly report draft",
     "Hi all,\n\nThe draft of the quarterly report is ready for review.\n"
     "From what I hear, the numbers look good.\n\nAnn\n"},
    {"Fri, 16 Jan 1998 08:15:02 -0500", "Bob Stone <bob@example.org>", "ann@example.org", "",
     "Re: Quarterly report draft",
     "Ann,\n\nTwo small corrections on page 3; see below.\n\n> From what I hear\n\nBob\n"},
    {"Wed, 7 May 1997 11:02:33 GMT", "Carol Diaz <carol@example.net>", "ann@example.org", "",
     "Lunch on Friday?", "Are you free for lunch on Friday? The new place on Elm Street opened.\n"},
};
const DemoMessage kEudoraProjects[] = {
    {"Mon, 2 Feb 1998 09:00:00 +0100", "Erik Berg <erik@example.se>", "ann@example.org",
     "team@example.org", "Kickoff meeting for the garden project",
     "The kickoff meeting is on Monday. Bring your ideas for the new garden.\n"},
    {"", "Dan <dan@example.com>", "ann@example.org", "carol@example.net", "No date on this one",
     "A message without a Date header keeps the agent's fixed date.\n"},
};
const DemoMessage kInternetInbox[] = {
    {"Tue, 10 Mar 1998 14:20:00 +0000", "Frank Moss <frank@example.com>", "ann@example.org", "",
     "Invoice 1998-031 attached",
     "Please find the invoice for March attached.\nBinary part follows:\n"},
    {"Thu, 12 Mar 1998 16:45:10 +0000", "Carol Diaz <carol@example.net>", "ann@example.org",
     "bob@example.org", "Lunch next week", "Lunch next week works for me. Tuesday or Wednesday?\n"},
};
const DemoMessage kInternetSent[] = {
    {"Fri, 13 Mar 1998 09:05:00 +0000", "Ann Lee <ann@example.org>", "frank@example.com", "",
     "Re: Invoice 1998-031 attached", "Thanks Frank, the invoice is paid.\n"},
};
const DemoMessage kNetscapeInbox[] = {
    {"Sat, 07 Feb 98 18:44:00 PST", "Lists <news@lists.example.com>", "ann@example.org", "",
     "Weekly digest: gardening",
     "This week: tomatoes, compost and the first frost.\nFrom here to there and back.\n"
     "From x y z is no delimiter either.\n"},
    {"Sun, 8 Feb 1998 20:00:00 -0800", "Gina Park <gina@example.org>", "ann@example.org", "",
     "Photos from the trip",
     "The photos from the mountain trip are online.\n>From the top the view was clear.\n"},
    {"Mon, 9 Feb 1998 07:30:00 -0800", "Bob Stone <bob@example.org>", "ann@example.org",
     "gina@example.org", "Final quarterly report", "Here is the final report. Thanks all.\n"},
    // What a reader decodes: encoded words, quoted-printable UTF-8, HTML beside the plain
    // text, and an attachment with an RFC 2231 name.
    {"Tue, 10 Feb 1998 09:15:00 +0100", "=?ISO-8859-1?Q?J=F6rg_M=FCller?= <joerg@example.de>",
     "ann@example.org", "", "=?UTF-8?Q?Gr=C3=BC=C3=9Fe_vom_Gipfel?=",
     "--outer\nContent-Type: multipart/alternative; boundary=alt\n\n"
     "--alt\nContent-Type: text/plain; charset=UTF-8\nContent-Transfer-Encoding: "
     "quoted-printable\n\nHallo Ann,\n\nviele Gr=C3=BC=C3=9Fe vom Gipfel! Die Aussicht war =\n"
     "herrlich.\n\nJ=C3=B6rg\n"
     "--alt\nContent-Type: text/html; charset=UTF-8\n\n<p>Hallo Ann,</p><p>viele "
     "<b>Gr&uuml;&szlig;e</b> vom Gipfel!</p>\n--alt--\n"
     "--outer\nContent-Type: image/jpeg\nContent-Transfer-Encoding: base64\n"
     "Content-Disposition: attachment; filename*=UTF-8''Gipfelkreuz%20M%C3%A4rz.jpg\n\n"
     "/9j/4AAQSkZJRgABAQEASABIAAD/2wBDAP//////////////////////////////////////////\n"
     "--outer--\n",
     "multipart/mixed; boundary=outer"},
};
const DemoMessage kNetscapeArchive[] = {
    {"Tue, 2 Dec 1997 12:00:00 -0800", "Hank Orr <hank@example.net>", "ann@example.org", "",
     "Archive of the 1997 budget", "The 1997 budget, for the archive.\n"},
};
const DemoMessage kPegasusInbox[] = {
    {"Wed, 18 Mar 1998 10:10:10 +0000", "Ivy Chen <ivy@example.org>", "ann@example.org", "",
     "Concert tickets", "I have two tickets for the concert on Saturday.\nInterested?\n"},
    {"Wed, 18 Mar 1998 12:00:00 +0000", "Ann Lee <ann@example.org>", "ivy@example.org",
     "carol@example.net", "Re: Concert tickets", "Yes please! See you at the door.\n"},
    {"Fri, 20 Mar 1998 17:30:00 +0000", "Dan <dan@example.com>", "ann@example.org", "",
     "Garden tools", "Can I borrow the garden tools this weekend?\n"},
};
const DemoMessage kPegasusFriends[] = {
    {"Sun, 1 Jun 1997 11:11:11 +0000", "Jo Ray <jo@example.net>", "ann@example.org", "",
     "Long time no see", "How have you been? Lunch some time?\n"},
};

template <size_t N> std::vector<DemoMessage> messages(const DemoMessage (&list)[N]) {
  return std::vector<DemoMessage>(list, list + N);
}

std::string withLineEnds(const std::string &text, const std::string &lineEnd) {
  std::string out;
  for (const char c : text)
    out += c == '\n' ? lineEnd : std::string(1, c);
  return out;
}

// The header block and the body, with `first` as the first header line: the agent can't find
// a field on the first line of a message, so real stores start with another header.
std::string messageText(const DemoMessage &message, const std::string &first,
                        const std::string &eol) {
  std::string text = first.empty() ? "" : first + eol;
  if (*message.date != '\0')
    text += std::string("Date: ") + message.date + eol;
  text += std::string("From: ") + message.from + eol + "To: " + message.to + eol;
  if (*message.cc != '\0')
    text += std::string("Cc: ") + message.cc + eol;
  text += std::string("Subject: ") + message.subject + eol + "MIME-Version: 1.0" + eol;
  if (message.contentType != nullptr)
    text += std::string("Content-Type: ") + message.contentType + eol;
  text += eol;
  return text + withLineEnds(message.body, eol);
}

std::string eudoraMailbox(const std::vector<DemoMessage> &list) {
  std::string out;
  for (const DemoMessage &message : list)
    out += "From ???@??? Mon Jan 01 00:00:00 1998" + std::string("\r\n") +
           messageText(message, "", "\r\n");
  return out;
}

std::string internetMailbox(const std::vector<DemoMessage> &list, bool zeroByteInFirst) {
  static const char kDelimiter[] = {0, 0x7F, 0, 0x7F};
  std::string out;
  for (size_t i = 0; i < list.size(); ++i) {
    out.append(kDelimiter, sizeof kDelimiter);
    out += messageText(list[i], "Received: by mail.example.org", "\r\n");
    if (i == 0 && zeroByteInFirst)
      out += std::string("PK\x03\x04\0\0\x08\0", 8) + "\r\n";
  }
  return out;
}

std::string netscapeMailbox(const std::vector<DemoMessage> &list) {
  std::string out;
  for (const DemoMessage &message : list)
    out +=
        "From - Sat Feb 07 18:44:00 1998\n" + messageText(message, "X-Mozilla-Status: 0001", "\n");
  return out;
}

std::string pegasusMailbox(const std::string &title, const std::vector<DemoMessage> &list) {
  std::string out = title;
  out.resize(128, '\0'); // the file header the scan steps over
  for (size_t i = 0; i < list.size(); ++i) {
    if (i > 0)
      out += "\n\n\x1a";
    out += messageText(list[i], "Received: by mail.example.org", "\n");
  }
  return out;
}

class DemoWriter {
public:
  explicit DemoWriter(std::string root) : root_(std::move(root)) {}

  // Writes `bytes` to root/relative, making folders; remembers the first failure.
  void file(const std::string &relative, const std::string &bytes) {
    if (!error_.empty())
      return;
    const std::string path = root_ + "/" + relative;
    for (size_t slash = root_.size() + 1; (slash = path.find('/', slash)) != std::string::npos;
         ++slash) {
      if (mkdir(path.substr(0, slash).c_str(), 0755) != 0 && errno != EEXIST)
        return fail(path.substr(0, slash));
    }
    const std::unique_ptr<FILE, int (*)(FILE *)> out(std::fopen(path.c_str(), "wb"), std::fclose);
    if (!out || std::fwrite(bytes.data(), 1, bytes.size(), out.get()) != bytes.size())
      return fail(path);
  }
  std::string path(const std::string &relative) const { return root_ + "/" + relative; }
  const std::string &error() const { return error_; }

private:
  void fail(const std::string &path) {
    error_ = "cannot write " + path + ": " + std::strerror(errno);
  }

  std::string root_;
  std::string error_;
};

} // namespace

bool writeDemoStores(const std::string &folder, std::vector<DemoStore> &stores,
                     std::string &error) {
  DemoWriter out(folder);
  // Eudora: CR LF, a delimiter that starts a line of its own text, an upper-case control
  // extension in a subfolder, a zero-byte mailbox and a mail file without its control file.
  out.file("eudora/In.mbx", eudoraMailbox(messages(kEudoraInbox)));
  out.file("eudora/In.toc", std::string(104, '\0'));
  out.file("eudora/Work/Projects.mbx", eudoraMailbox(messages(kEudoraProjects)));
  out.file("eudora/Work/Projects.TOC", std::string(104, '\0'));
  out.file("eudora/Trash.mbx", "");
  out.file("eudora/Trash.toc", std::string(104, '\0'));
  out.file("eudora/Unpaired.mbx", eudoraMailbox(messages(kEudoraProjects)));
  out.file("programs/eudora/eudora.exe", "");
  // Internet Mail: four-byte delimiters with zero bytes, zero bytes inside a message.
  out.file("internet/Inbox", internetMailbox(messages(kInternetInbox), true));
  out.file("internet/Inbox.snm", std::string(64, '\0'));
  out.file("internet/Folders/Sent", internetMailbox(messages(kInternetSent), false));
  out.file("internet/Folders/Sent.snm", std::string(64, '\0'));
  // Netscape: "From" lines that are text, an empty parent folder with its .sbd subfolders.
  out.file("netscape/Inbox", netscapeMailbox(messages(kNetscapeInbox)));
  out.file("netscape/Inbox.snm", std::string(64, '\0'));
  out.file("netscape/Archive", "");
  out.file("netscape/Archive.snm", std::string(64, '\0'));
  out.file("netscape/Archive.sbd/1997", netscapeMailbox(messages(kNetscapeArchive)));
  out.file("netscape/Archive.sbd/1997.snm", std::string(64, '\0'));
  out.file("programs/netscape/netscape.exe", "");
  // Pegasus: 128-byte file headers, bare line feeds, a folder of nothing but its header.
  out.file("pegasus/IN.PMM", pegasusMailbox("Main folder", messages(kPegasusInbox)));
  out.file("pegasus/IN.PMI", std::string(32, '\0'));
  out.file("pegasus/Friends/FRIENDS.PMM", pegasusMailbox("Friends", messages(kPegasusFriends)));
  out.file("pegasus/Friends/FRIENDS.PMI", std::string(32, '\0'));
  out.file("pegasus/EMPTY.PMM", pegasusMailbox("Empty folder", {}));
  out.file("pegasus/EMPTY.PMI", std::string(32, '\0'));
  out.file("programs/pegasus/winpm-32.exe", "");
  if (!out.error().empty()) {
    error = out.error();
    return false;
  }
  stores = {
      {"eudora", out.path("eudora"), out.path("programs/eudora"), "subject:report"},
      // No program directory: the settings page's check warns, and the demo answers Cancel.
      {"internet", out.path("internet"), "", "invoice"},
      {"netscape", out.path("netscape"), out.path("programs/netscape"), "tomatoes"},
      {"pegasus", out.path("pegasus"), out.path("programs/pegasus"), "\"concert tickets\""},
  };
  return true;
}
