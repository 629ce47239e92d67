// The content of one MIME leaf: transfer decoding and its text in UTF-8.
#pragma once

#include <cstdint>
#include "host/reader/MailReader.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Decodes `encoded` in the named transfer encoding ("base64", "quoted-printable",
// "x-uuencode"; any other, or none, is the identity) and hands the result to `take` in
// pieces of at most 64 KB, so that a large part needs no second copy of itself.
void decodeTransfer(std::string_view encoded, std::string_view encoding,
                    const std::function<void(std::string_view)> &take);

// Appends the text of a decoded text part of `mimeType` ("text/html" is turned into its
// text, any other text type taken as it is) in `charset`, in UTF-8. Files uuencoded into
// plain text go to `files` instead.
void appendPartText(std::string_view decoded, std::string_view mimeType, std::string_view charset,
                    std::string &out, std::vector<MailAttachment> &files);
