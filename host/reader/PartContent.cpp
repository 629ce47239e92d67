// Transfer encodings through GMime's decoders, then the charset and HTML.
#include "host/reader/PartContent.h"

#include "host/reader/Charset.h"
#include "host/reader/HtmlText.h"
#include "host/reader/Uuencoded.h"

#include <gmime/gmime.h>

#include <memory>
#include <strings.h>

namespace {
constexpr size_t kPiece = 64 * 1024;
} // namespace

void decodeTransfer(std::string_view encoded, std::string_view encoding,
                    const std::function<void(std::string_view)> &take) {
  const std::string name(encoding);
  const GMimeContentEncoding kind = g_mime_content_encoding_from_string(name.c_str());
  if (kind != GMIME_CONTENT_ENCODING_BASE64 && kind != GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE &&
      kind != GMIME_CONTENT_ENCODING_UUENCODE) {
    for (size_t at = 0; at < encoded.size(); at += kPiece)
      take(encoded.substr(at, kPiece));
    return;
  }
  GMimeEncoding state;
  g_mime_encoding_init_decode(&state, kind);
  if (kind == GMIME_CONTENT_ENCODING_UUENCODE) {
    // The decoder takes data lines only: what comes before them ends with the begin line.
    const size_t begin = encoded.compare(0, 6, "begin ") == 0 ? 0 : encoded.find("\nbegin ");
    if (begin == std::string_view::npos)
      return;
    const size_t data = encoded.find('\n', begin + 1);
    encoded.remove_prefix(data == std::string_view::npos ? encoded.size() : data + 1);
    state.state |= GMIME_UUDECODE_STATE_BEGIN;
  }
  // Decoding never makes more bytes than it reads, plus what the state carries over.
  const std::unique_ptr<char[]> out(new char[g_mime_encoding_outlen(&state, kPiece)]);
  for (size_t at = 0; at < encoded.size(); at += kPiece) {
    const std::string_view piece = encoded.substr(at, kPiece);
    const size_t made = g_mime_encoding_step(&state, piece.data(), piece.size(), out.get());
    if (made != 0)
      take(std::string_view(out.get(), made));
  }
  const size_t last = g_mime_encoding_flush(&state, nullptr, 0, out.get());
  if (last != 0)
    take(std::string_view(out.get(), last));
}

void appendPartText(std::string_view decoded, std::string_view mimeType, std::string_view charset,
                    std::string &out, std::vector<MailAttachment> &files) {
  if (!out.empty() && out.back() != '\n')
    out += '\n';
  std::string text;
  appendUtf8(decoded, charset, text);
  if (mimeType.size() == 9 && strncasecmp(mimeType.data(), "text/html", 9) == 0) {
    appendHtmlText(text, out);
    return;
  }
  takeUuencodedFiles(text, files);
  out += text;
}
