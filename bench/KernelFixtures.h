// Inputs of the kernel benchmarks, made once per run: the agent's names from its string
// table, realistic messages, and mail files of each client in a folder of their own.
#pragma once

#include "bench/StoreWriter.h"

#include <cstddef>
#include <string>

// Loads the header names and month names from the agent's string table, as an agent's
// construction does; no registry file is read.
void loadAgentStrings();

// `size` bytes of no pattern, for the checksum.
const std::string &randomBytes(size_t size);

// A message of about `size` bytes with CR LF line ends, as Eudora stores it: the delimiter
// line's tail, then a realistic header block and body.
const std::string &sampleMessage(size_t size);

enum class MailboxContent {
  Everyday,  // messages of 1 to 16 KB, text
  Mixed,     // messages of 1 KB to 1 MB, most of the bytes in base64 attachments
  FromLines, // everyday messages whose every body line starts with "From"
};

// A mail file of `client` with 16 MB of messages.
const std::string &sampleMailbox(Client client, MailboxContent content);
