// Transfer encodings through GMime's decoders, then the charset and HTML.
#include "host/reader/PartContent.h"

#include "host/reader/Charset.h"
#include "host/reader/HtmlText.h"
#include "host/reader/Uuencoded.h"

#include <gmime/gmime.h>

#include <algorithm>
#include <memory>
#include <strings.h>

namespace {
constexpr size_t kPiece = size_t{64} * 1024;
} // namespace

TransferDecoder::TransferDecoder(std::string_view encoding) {
  const std::string name(encoding);
  const GMimeContentEncoding kind = g_mime_content_encoding_from_string(name.c_str());
  decoding_ = kind == GMIME_CONTENT_ENCODING_BASE64 ||
              kind == GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE ||
              kind == GMIME_CONTENT_ENCODING_UUENCODE;
  if (!decoding_)
    return;
  g_mime_encoding_init_decode(&state_, kind);
  beforeBegin_ = kind == GMIME_CONTENT_ENCODING_UUENCODE;
  // Decoding never makes more bytes than it reads, plus what the state carries over.
  out_.reset(new char[g_mime_encoding_outlen(&state_, kPiece)]);
}

void TransferDecoder::feed(std::string_view encoded, const TakeBytes &take) {
  while (beforeBegin_ && !encoded.empty()) {
    const size_t end = encoded.find('\n');
    line_.append(encoded.substr(0, std::min(end, kPiece)));
    if (end == std::string_view::npos) {
      if (line_.size() > kPiece)
        line_.erase(6); // a line this long is no begin line; its start is enough to tell
      return;
    }
    encoded.remove_prefix(end + 1);
    if (line_.compare(0, 6, "begin ") == 0) {
      beforeBegin_ = false;
      state_.state |= GMIME_UUDECODE_STATE_BEGIN;
    }
    line_.clear();
  }
  for (size_t at = 0; at < encoded.size(); at += kPiece)
    step(encoded.substr(at, kPiece), take);
}

void TransferDecoder::step(std::string_view encoded, const TakeBytes &take) {
  if (!decoding_) {
    take(encoded);
    return;
  }
  const size_t made = g_mime_encoding_step(&state_, encoded.data(), encoded.size(), out_.get());
  if (made != 0)
    take(std::string_view(out_.get(), made));
}

void TransferDecoder::finish(const TakeBytes &take) {
  if (!decoding_ || beforeBegin_)
    return;
  const size_t last = g_mime_encoding_flush(&state_, nullptr, 0, out_.get());
  if (last != 0)
    take(std::string_view(out_.get(), last));
}

void appendPartText(std::string_view decoded, std::string_view mimeType, std::string_view charset,
                    std::string &out, std::vector<MailAttachment> &files) {
  if (!out.empty() && out.back() != '\n')
    out += '\n';
  if (mimeType.size() == 9 && strncasecmp(mimeType.data(), "text/html", 9) == 0) {
    std::string html;
    appendUtf8(decoded, charset, html);
    appendHtmlText(html, out);
    return;
  }
  const size_t start = out.size();
  appendUtf8(decoded, charset, out);
  takeUuencodedFiles(out, start, files);
}
