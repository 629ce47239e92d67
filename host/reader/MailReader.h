// The message as a person reads it: decoded header fields, the text of its text parts in
// UTF-8, its attachments, and its true date.
//
// The input is a message's top-level header block (without any delimiter line) and its body,
// as the agent gives them. Nothing in them can make the reader fail, run without bound or
// write invalid UTF-8: where the MIME structure can't be read the raw body stands as the text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct MailAttachment {
  std::string name;  // the file name (RFC 2231 and encoded words decoded); may be empty
  std::string type;  // "application/pdf"
  uint64_t size = 0; // of the decoded content
};

struct ReadMessage {
  // False when the body's MIME structure could not be read: `text` is then the raw body
  // (made valid UTF-8), and the header fields are still decoded.
  bool decoded = true;
  std::string subject, from, to, cc; // decoded, unfolded, UTF-8
  std::string dateText;              // the Date header as written
  bool hasDate = false;              // whether `date` holds the Date header's time
  int64_t date = 0;                  // seconds since 1970, UTC
  std::string messageId, inReplyTo, references;
  // The text of the text parts, and of attached messages (their headers too), in
  // UTF-8; HTML as its text.
  std::string text;
  // The text of text/* attachments: searched with the message, not shown as its text.
  std::string attachmentText;
  std::vector<MailAttachment> attachments;
};

// Reads one message.
void readMessage(std::string_view headerBlock, std::string_view body, ReadMessage &message);
