// The content of one MIME leaf: transfer decoding and its text in UTF-8.
#pragma once

#include "host/reader/MailReader.h"
#include <cstdint>

#include <gmime/gmime.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using TakeBytes = std::function<void(std::string_view)>;

// Decoding in the named transfer encoding ("base64", "quoted-printable", "x-uuencode"; any
// other, or none, is the identity), fed in pieces: a large part is never held encoded and
// decoded at once. `take` gets the result in pieces of at most 64 KB.
class TransferDecoder {
public:
  explicit TransferDecoder(std::string_view encoding);
  TransferDecoder(const TransferDecoder &) = delete;
  TransferDecoder &operator=(const TransferDecoder &) = delete;

  // False for the identity: what is fed is taken as it is.
  bool decodes() const { return decoding_; }
  void feed(std::string_view encoded, const TakeBytes &take);
  void finish(const TakeBytes &take);

private:
  void step(std::string_view encoded, const TakeBytes &take);

  bool decoding_ = false;
  // Uuencode's data follows its begin line: until then, the line read so far.
  bool beforeBegin_ = false;
  std::string line_;
  GMimeEncoding state_ = {};
  std::unique_ptr<char[]> out_;
};

// Appends the text of a decoded text part of `mimeType` ("text/html" is turned into its
// text, any other text type taken as it is) in `charset`, in UTF-8, on a line of its own.
// Files uuencoded into plain text go to `files` instead.
void appendPartText(std::string_view decoded, std::string_view mimeType, std::string_view charset,
                    std::string &out, std::vector<MailAttachment> &files);
