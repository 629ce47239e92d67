// MIME-heavy mail for the benchmarks, as hard to read as what people receive: HTML mail with
// its text alternative, attachments, text in legacy 8-bit character sets, and names and
// subjects in encoded words. Of every hundred messages, about
//   50 multipart/alternative: text/plain in quoted-printable, text/html in base64;
//   20 multipart/mixed: such an alternative or a text part, and one or two base64
//      attachments (PDF, PNG, text) named plainly, by encoded words or extended parameters;
//   15 text/plain in ISO-8859-1 or windows-1252, 8-bit;
//   15 text/plain in UTF-8, base64;
// with the display name of From and the subject as encoded words on about a third.
//
// One seed gives the same bytes on every run and machine.
#pragma once

#include "bench/MailCorpus.h"
#include "bench/MimeText.h"

#include <cstddef>
#include <cstdint>
#include <string>

class MimeCorpus {
public:
  // The header blocks' routing fields and recipients, and the bytes of binary attachments,
  // come from `mail`, whose line ends these messages share.
  MimeCorpus(MailCorpus &mail, uint64_t seed);

  // A message of about `size` bytes (never less than its header block and one paragraph).
  void appendMessage(std::string &out, size_t size);

private:
  enum class Body { Alternative, Mixed, EightBit, Base64Text };

  void appendHeaderBlock(std::string &out, Body body, const std::string &boundary,
                         bool windows1252);
  void appendMultipartType(std::string &out, const char *subtype, const std::string &boundary);
  void appendTextType(std::string &out, const char *type, const char *encoding);
  // The parts of a multipart/alternative and its closing boundary, in about `budget` bytes.
  void appendAlternative(std::string &out, const std::string &boundary, size_t budget);
  // A text/plain part in quoted-printable: its headers and text, in about `budget` bytes.
  void appendQuotedText(std::string &out, size_t budget);
  // An attachment's headers and content, in about `budget` bytes.
  void appendAttachment(std::string &out, size_t budget);

  MailCorpus &mail_;
  BenchRandom random_;
  std::string eol_;
  MimeText text_;
  std::string pdfHead_, pdfTail_, pngHead_, pngTail_; // base64, heads in whole lines
};
