// Mail stores of the four clients, written byte by byte with each format's rules, so that a
// test knows where every message lies and what its body is.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct TestMessage {
  std::string date; // empty: no Date header
  std::string from, to, cc, subject;
  std::string body; // lines ended by "\n"; the store's own line ends replace them
};

struct MessageRange {
  uint32_t offset = 0, length = 0;
};

struct Mailbox {
  std::string bytes;
  std::vector<MessageRange> ranges;
};

// The four clients by the names mhhost gives them.
inline const std::vector<std::string> kClientNames = {"eudora", "internet", "netscape", "pegasus"};

// Texts of messages framed as whole messages of `client`'s mail file: Eudora's 12-byte
// delimiter, Internet Mail's 00 7F 00 7F, Netscape's "From" line, Pegasus's 128-byte header
// and 0A 0A 1A between messages.
Mailbox framed(const std::string &client, const std::vector<std::string> &texts);
// The mailbox bytes of `client` for messages with headers.
Mailbox mailboxOf(const std::string &client, const std::vector<TestMessage> &messages);
// The body of a message as the agent gives it: with the store's line ends.
std::string bodyOf(const std::string &client, const TestMessage &message);

// The mail file and control file of the mailbox `stem` (a path without extension).
std::string mailFileOf(const std::string &client, const std::string &stem);
std::string controlFileOf(const std::string &client, const std::string &stem);
// Writes both files, making folders; returns the mailbox's ranges.
std::vector<MessageRange> writeMailbox(const std::string &client, const std::string &stem,
                                       const std::vector<TestMessage> &messages);

// The agent key mhhost uses for a client by default.
std::string agentKeyOf(const std::string &client);
