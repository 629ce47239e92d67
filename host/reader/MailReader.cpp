// The reader: the top-level header block read here, a single text part decoded at once, and
// every other body handed to GMime and walked part by part.
#include "host/reader/MailReader.h"

#include "host/reader/Charset.h"
#include "host/reader/HeaderFields.h"
#include "host/reader/MailDates.h"
#include "host/reader/PartContent.h"
#include "host/reader/ReaderOptions.h"

#include <gmime/gmime.h>

#include <algorithm>
#include <memory>
#include <string>
#include <strings.h>
#include <vector>

namespace {

template <typename T> struct Unref {
  void operator()(T *object) const { g_object_unref(object); }
};
template <typename T> using GPtr = std::unique_ptr<T, Unref<T>>;

bool equalsNoCase(const char *text, const char *name) {
  return text != nullptr && strcasecmp(text, name) == 0;
}

std::string_view orEmpty(const char *text) {
  return text != nullptr ? std::string_view(text) : std::string_view();
}

// The fields of a header block that the reader keeps.
void readHeaderFields(const std::vector<HeaderField> &fields, ReadMessage &message) {
  message.subject = decodedValue(fieldValue(fields, "Subject"));
  message.from = decodedValue(fieldValue(fields, "From"));
  message.to = decodedValue(fieldValue(fields, "To"));
  message.cc = decodedValue(fieldValue(fields, "Cc"));
  message.dateText = unfoldedValue(fieldValue(fields, "Date"));
  message.hasDate = !message.dateText.empty() && parseHeaderDate(message.dateText, message.date);
  message.messageId = decodedValue(fieldValue(fields, "Message-ID"));
  message.inReplyTo = decodedValue(fieldValue(fields, "In-Reply-To"));
  message.references = decodedValue(fieldValue(fields, "References"));
}

// Feeds the content of a GMime stream to `decoder` a piece at a time.
void decodeStream(GMimeStream *stream, TransferDecoder &decoder, const TakeBytes &take) {
  g_mime_stream_reset(stream);
  char buffer[16384];
  for (;;) {
    const ssize_t got = g_mime_stream_read(stream, buffer, sizeof buffer);
    if (got <= 0)
      break;
    decoder.feed(std::string_view(buffer, static_cast<size_t>(got)), take);
  }
  decoder.finish(take);
}

// Walks a parsed MIME tree with a stack of its own: a nest of any depth costs heap, not
// stack.
class TreeWalk {
public:
  explicit TreeWalk(ReadMessage &message) : message_(message) {}

  void walk(GMimeObject *root) {
    pending_.push_back(root);
    while (!pending_.empty()) {
      GMimeObject *const part = pending_.back();
      pending_.pop_back();
      visit(part);
    }
  }

  std::string attachmentText;

private:
  void visit(GMimeObject *part) {
    if (GMIME_IS_MULTIPART(part))
      visitMultipart(GMIME_MULTIPART(part));
    else if (GMIME_IS_MESSAGE_PART(part))
      visitMessage(GMIME_MESSAGE_PART(part));
    else if (GMIME_IS_PART(part))
      visitLeaf(GMIME_PART(part));
  }

  void pushChildren(GMimeMultipart *multipart, int first, int last) {
    // Last child first: the stack gives them back in their order.
    for (int i = last; i >= first; --i)
      pending_.push_back(g_mime_multipart_get_part(multipart, i));
  }

  void visitMultipart(GMimeMultipart *multipart) {
    const int count = g_mime_multipart_get_count(multipart);
    if (count <= 0)
      return;
    const char *const subtype = g_mime_content_type_get_media_subtype(
        g_mime_object_get_content_type(GMIME_OBJECT(multipart)));
    if (equalsNoCase(subtype, "alternative")) {
      // The plain text where there is one; else the last, richest alternative.
      for (int i = 0; i < count; ++i) {
        GMimeObject *const child = g_mime_multipart_get_part(multipart, i);
        GMimeContentType *const type = g_mime_object_get_content_type(child);
        if (GMIME_IS_PART(child) && g_mime_content_type_is_type(type, "text", "plain")) {
          pending_.push_back(child);
          return;
        }
      }
      pending_.push_back(g_mime_multipart_get_part(multipart, count - 1));
    } else if (equalsNoCase(subtype, "signed")) {
      pushChildren(multipart, 0, 0); // the signature is no part of the text
    } else {
      pushChildren(multipart, 0, count - 1);
    }
  }

  void visitMessage(GMimeMessagePart *part) {
    GMimeMessage *const inner = g_mime_message_part_get_message(part);
    if (inner == nullptr)
      return;
    // An attached message: its headers as a reader sees them, then its text.
    GMimeHeaderList *const headers = g_mime_object_get_header_list(GMIME_OBJECT(inner));
    std::string &text = message_.text;
    if (!text.empty() && text.back() != '\n')
      text += '\n';
    for (const char *name : {"From", "To", "Cc", "Date", "Subject"}) {
      GMimeHeader *const header = g_mime_header_list_get_header(headers, name);
      if (header == nullptr)
        continue;
      text += name;
      text += ": ";
      text += decodedValue(orEmpty(g_mime_header_get_raw_value(header)));
      text += '\n';
    }
    if (GMimeObject *const body = g_mime_message_get_mime_part(inner))
      pending_.push_back(body);
  }

  void visitLeaf(GMimePart *part) {
    GMimeContentType *const type = g_mime_object_get_content_type(GMIME_OBJECT(part));
    const bool text = g_mime_content_type_is_type(type, "text", "*");
    const char *const disposition = g_mime_object_get_disposition(GMIME_OBJECT(part));
    const char *const filename = g_mime_part_get_filename(part);
    const bool attachment = !text || equalsNoCase(disposition, "attachment") ||
                            (filename != nullptr && *filename != '\0');
    GMimeDataWrapper *const content = g_mime_part_get_content(part);
    if (content == nullptr)
      return;
    TransferDecoder decoder(
        orEmpty(g_mime_content_encoding_to_string(g_mime_data_wrapper_get_encoding(content))));
    const std::unique_ptr<char, decltype(&g_free)> mimeType(g_mime_content_type_get_mime_type(type),
                                                            &g_free);
    MailAttachment found;
    std::string decoded;
    decodeStream(g_mime_data_wrapper_get_stream(content), decoder, [&](std::string_view piece) {
      found.size += piece.size();
      if (text)
        decoded.append(piece);
    });
    const std::string_view charset = orEmpty(g_mime_content_type_get_parameter(type, "charset"));
    if (!attachment) {
      appendPartText(decoded, orEmpty(mimeType.get()), charset, message_.text,
                     message_.attachments);
      return;
    }
    appendUtf8OrWindows1252(orEmpty(filename), found.name);
    blankControlCharacters(found.name);
    appendUtf8OrWindows1252(orEmpty(mimeType.get()), found.type);
    message_.attachments.push_back(std::move(found));
    if (text)
      appendPartText(decoded, orEmpty(mimeType.get()), charset, attachmentText,
                     message_.attachments);
  }

  ReadMessage &message_;
  std::vector<GMimeObject *> pending_;
};

// A body that is one text part, or has no Content-Type: decoded here, without a parse.
bool isSingleText(std::string_view contentType, std::string &mimeType, std::string &charset) {
  if (contentType.empty()) {
    mimeType = "text/plain";
    return true;
  }
  const std::string value = unfoldedValue(contentType);
  const GPtr<GMimeContentType> type(g_mime_content_type_parse(readerOptions(), value.c_str()));
  if (!type)
    return false;
  if (!g_mime_content_type_is_type(type.get(), "text", "*"))
    return false;
  const std::unique_ptr<char, decltype(&g_free)> name(g_mime_content_type_get_mime_type(type.get()),
                                                      &g_free);
  mimeType = orEmpty(name.get());
  charset = orEmpty(g_mime_content_type_get_parameter(type.get(), "charset"));
  return true;
}

void readRawBody(std::string_view body, ReadMessage &message) {
  message.decoded = false;
  message.text.clear();
  message.attachmentText.clear();
  message.attachments.clear();
  appendUtf8OrWindows1252(body, message.text);
}

} // namespace

void readMessage(std::string_view headerBlock, std::string_view body, ReadMessage &message) {
  message = ReadMessage();
  readerOptions(); // GMime set up
  const std::vector<HeaderField> fields = headerFields(headerBlock);
  readHeaderFields(fields, message);

  std::string mimeType, charset;
  const std::string disposition = unfoldedValue(fieldValue(fields, "Content-Disposition"));
  const bool attached = strncasecmp(disposition.c_str(), "attachment", 10) == 0;
  if (!attached && isSingleText(fieldValue(fields, "Content-Type"), mimeType, charset)) {
    TransferDecoder decoder(unfoldedValue(fieldValue(fields, "Content-Transfer-Encoding")));
    if (!decoder.decodes()) {
      appendPartText(body, mimeType, charset, message.text, message.attachments);
      return;
    }
    std::string decoded;
    const TakeBytes take = [&](std::string_view piece) { decoded.append(piece); };
    decoder.feed(body, take);
    decoder.finish(take);
    appendPartText(decoded, mimeType, charset, message.text, message.attachments);
    return;
  }

  // Everything else: a parse of the whole message, from one copy that the stream owns.
  GByteArray *const bytes = g_byte_array_sized_new(
      static_cast<guint>(std::min<size_t>(headerBlock.size() + body.size() + 4, G_MAXUINT)));
  const auto append = [bytes](std::string_view piece) {
    for (size_t at = 0; at < piece.size(); at += G_MAXUINT / 2) {
      const std::string_view part = piece.substr(at, G_MAXUINT / 2);
      g_byte_array_append(bytes, reinterpret_cast<const guint8 *>(part.data()),
                          static_cast<guint>(part.size()));
    }
  };
  append(headerBlock);
  if (!headerBlock.empty() && headerBlock.back() != '\n')
    append("\r\n\r\n");
  append(body);
  const GPtr<GMimeStream> stream(g_mime_stream_mem_new_with_byte_array(bytes));
  const GPtr<GMimeParser> parser(g_mime_parser_new_with_stream(stream.get()));
  g_mime_parser_set_format(parser.get(), GMIME_FORMAT_MESSAGE);
  const GPtr<GMimeMessage> parsed(g_mime_parser_construct_message(parser.get(), readerOptions()));
  GMimeObject *const root = parsed ? g_mime_message_get_mime_part(parsed.get()) : nullptr;
  if (root == nullptr) {
    readRawBody(body, message);
    return;
  }
  TreeWalk walk(message);
  walk.walk(root);
  message.attachmentText = std::move(walk.attachmentText);
  // A structure that gave nothing (a multipart without its boundary, say) loses no text:
  // the body stands for it as it is.
  if (message.text.empty() && message.attachments.empty() &&
      body.find_first_not_of(" \t\r\n") != std::string_view::npos)
    readRawBody(body, message);
}
