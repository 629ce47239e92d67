// The four clients' mail file formats.
#include "tests/support/ClientStores.h"

#include "tests/support/TestFiles.h"

namespace {
bool usesCrLf(const std::string &client) {
  return client == "eudora" || client == "internet";
}

std::string withLineEnds(const std::string &text, const std::string &eol) {
  std::string out;
  for (const char c : text)
    out += c == '\n' ? eol : std::string(1, c);
  return out;
}

// The first header line is one the agent can't see (no line feed stands before it).
std::string messageText(const std::string &client, const TestMessage &message) {
  std::string text = "Received: by mail.example.org\n";
  if (!message.date.empty())
    text += "Date: " + message.date + "\n";
  text += "From: " + message.from + "\nTo: " + message.to + "\n";
  if (!message.cc.empty())
    text += "Cc: " + message.cc + "\n";
  text += "Subject: " + message.subject + "\n\n" + message.body;
  return withLineEnds(text, usesCrLf(client) ? "\r\n" : "\n");
}
} // namespace

std::string bodyOf(const std::string &client, const TestMessage &message) {
  return withLineEnds(message.body, usesCrLf(client) ? "\r\n" : "\n");
}

Mailbox framed(const std::string &client, const std::vector<std::string> &texts) {
  Mailbox mailbox;
  if (client == "pegasus")
    mailbox.bytes = std::string("Test folder").append(128 - 11, '\0');
  for (size_t i = 0; i < texts.size(); ++i) {
    if (client == "eudora")
      mailbox.bytes += "From ???@???"; // the rest of its line belongs to the message
    else if (client == "internet")
      mailbox.bytes += std::string("\0\x7F\0\x7F", 4);
    else if (client == "netscape")
      mailbox.bytes += "From - Thu Jan 15 10:30:45 1998\n";
    else if (i > 0)
      mailbox.bytes += "\n\n\x1a";
    mailbox.ranges.push_back(
        {static_cast<uint32_t>(mailbox.bytes.size()), static_cast<uint32_t>(texts[i].size())});
    mailbox.bytes += texts[i];
  }
  return mailbox;
}

Mailbox mailboxOf(const std::string &client, const std::vector<TestMessage> &messages) {
  std::vector<std::string> texts;
  for (const TestMessage &message : messages)
    texts.push_back((client == "eudora" ? " Mon Jan 01 00:00:00 1998\r\n" : "") +
                    messageText(client, message));
  return framed(client, texts);
}

std::string mailFileOf(const std::string &client, const std::string &stem) {
  if (client == "eudora")
    return stem + ".mbx";
  if (client == "pegasus")
    return stem + ".PMM";
  return stem;
}

std::string controlFileOf(const std::string &client, const std::string &stem) {
  if (client == "eudora")
    return stem + ".toc";
  if (client == "pegasus")
    return stem + ".PMI";
  return stem + ".snm";
}

std::vector<MessageRange> writeMailbox(const std::string &client, const std::string &stem,
                                       const std::vector<TestMessage> &messages) {
  const Mailbox mailbox = mailboxOf(client, messages);
  writeFile(mailFileOf(client, stem), mailbox.bytes);
  writeFile(controlFileOf(client, stem), std::string(32, '\0'));
  return mailbox.ranges;
}

std::string agentKeyOf(const std::string &client) {
  const std::string tag = client == "eudora"     ? "MHEudora"
                          : client == "internet" ? "MHInternet"
                          : client == "netscape" ? "MHNetscape"
                                                 : "MHPegasus";
  return "Software\\Tuk\\Agents\\" + tag;
}
