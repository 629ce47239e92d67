// Putting the generated MIME mail together from MimeText's paragraphs and MimeHeaders' fields.
#include "bench/MimeCorpus.h"

#include "bench/MimeEncoding.h"
#include "bench/MimeHeaders.h"

namespace {

const char *const kMailers[] = {"Mail Desk 5.2 (HTML)", "Postcard 6.1.3", "Quill Mail 4.0",
                                "Relay Office 12.0.4"};

template <size_t N> const char *pick(BenchRandom &random, const char *const (&table)[N]) {
  return table[random.below(N)];
}

size_t left(size_t size, size_t used) {
  return size > used ? size - used : 0;
}

// The start of a file of the type, in a multiple of 57 bytes so that its base64 is whole
// lines that the pool's lines of random base64 continue.
std::string fileStart(const std::string &start) {
  std::string bytes = start;
  bytes.resize((bytes.size() + 56) / 57 * 57, '\n');
  return bytes;
}

} // namespace

MimeCorpus::MimeCorpus(MailCorpus &mail, uint64_t seed)
    : mail_(mail), random_(seed ^ 0x4D494D45ull), eol_(mail.eol()), text_(random_, eol_) {
  encodeBase64Lines(pdfHead_,
                    fileStart("%PDF-1.4\n%\xE2\xE3\xCF\xD3\n1 0 obj\n<< /Type /Catalog /Pages "
                              "2 0 R >>\nendobj\n2 0 obj\n<< /Type /Pages /Kids [3 0 R] "
                              "/Count 1 >>\nendobj\n3 0 obj\n<< /Length 4 0 R /Filter "
                              "/FlateDecode >>\nstream\n"),
                    eol_);
  encodeBase64Lines(pdfTail_, "\nendstream\nendobj\ntrailer\n<< /Root 1 0 R >>\n%%EOF\n", eol_);
  encodeBase64Lines(
      pngHead_,
      fileStart(std::string("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\x02\x80\0\0\x01\xe0\x08\x06\0\0\0"
                            "\x5b\x1c\x2a\x9d",
                            33)),
      eol_);
  encodeBase64Lines(pngTail_, std::string("\0\0\0\0IEND\xae\x42\x60\x82", 12), eol_);
}

void MimeCorpus::appendMultipartType(std::string &out, const char *subtype,
                                     const std::string &boundary) {
  out += std::string("Content-Type: multipart/") + subtype + ";";
  out += random_.below(3) ? eol_ + "\t" : std::string(" ");
  out += "boundary=\"" + boundary + "\"" + eol_;
}

void MimeCorpus::appendTextType(std::string &out, const char *type, const char *encoding) {
  static const char *const charsets[] = {"utf-8", "UTF-8", "\"utf-8\"", "\"UTF-8\""};
  out += std::string("Content-Type: ") + type + ";";
  out += random_.below(2) ? eol_ + "\t" : std::string(" ");
  out += std::string("charset=") + pick(random_, charsets) + eol_;
  out += std::string("Content-Transfer-Encoding: ") + encoding + eol_;
}

void MimeCorpus::appendHeaderBlock(std::string &out, Body body, const std::string &boundary,
                                   bool windows1252) {
  mail_.appendTrace(out);
  out += "From: ";
  if (random_.below(3) == 0)
    appendEncodedAddress(out, random_, eol_);
  else
    mail_.appendAddress(out);
  out += eol_;
  mail_.appendRecipients(out);
  out += "Subject: ";
  if (random_.below(3) == 0) {
    appendEncodedSubject(out, random_, eol_);
  } else {
    out += subjectMark(random_);
    mail_.appendWords(out, 3 + random_.below(6));
  }
  out += eol_;
  out += "MIME-Version: 1.0" + eol_;
  switch (body) {
  case Body::Alternative:
    appendMultipartType(out, "alternative", boundary);
    break;
  case Body::Mixed:
    appendMultipartType(out, "mixed", boundary);
    break;
  case Body::EightBit:
    out += windows1252 ? "Content-Type: text/plain; charset=\"Windows-1252\""
                       : "Content-Type: text/plain; charset=iso-8859-1";
    out += eol_;
    // Older mail programs wrote 8-bit text without saying so.
    if (random_.below(4))
      out += "Content-Transfer-Encoding: 8bit" + eol_;
    break;
  case Body::Base64Text:
    appendTextType(out, "text/plain", "base64");
    break;
  }
  if (random_.below(2))
    out += std::string("Content-Language: ") + (random_.below(2) ? "de-DE" : "fr-FR") + eol_;
  out += std::string("X-Mailer: ") + pick(random_, kMailers) + eol_ + eol_;
}

void MimeCorpus::appendAlternative(std::string &out, const std::string &boundary, size_t budget) {
  // A small message gets the bare document; the others that of their writer.
  const size_t style = budget < 3000 ? 0 : 1 + random_.below(2);
  const std::string &head = text_.htmlHeads()[style];
  const std::string &tail = text_.htmlTails()[style];
  const size_t first = random_.below(static_cast<uint32_t>(text_.paragraphs()));
  const size_t count = text_.fit(first, left(budget, 360 + head.size() + tail.size()),
                                 {MimeText::QuotedPrintable, MimeText::HtmlBase64});
  out += "--" + boundary + eol_;
  appendTextType(out, "text/plain", "quoted-printable");
  out += eol_;
  text_.append(MimeText::QuotedPrintable, out, first, count);
  out += "--" + boundary + eol_;
  appendTextType(out, "text/html", "base64");
  out += eol_ + head;
  text_.append(MimeText::HtmlBase64, out, first, count);
  out += tail;
  out += "--" + boundary + "--" + eol_;
}

void MimeCorpus::appendQuotedText(std::string &out, size_t budget) {
  const size_t first = random_.below(static_cast<uint32_t>(text_.paragraphs()));
  appendTextType(out, "text/plain", "quoted-printable");
  out += eol_;
  text_.append(MimeText::QuotedPrintable, out, first,
               text_.fit(first, left(budget, 120), {MimeText::QuotedPrintable}));
}

void MimeCorpus::appendAttachment(std::string &out, size_t budget) {
  const uint32_t kind = random_.below(100);
  const size_t begin = out.size();
  if (kind < 25) {
    appendAttachmentHeaders(out, random_, eol_, "text/plain; charset=UTF-8", "txt");
    const std::string &tail =
        text_.textTails()[random_.below(static_cast<uint32_t>(text_.textTails().size()))];
    const size_t first = random_.below(static_cast<uint32_t>(text_.paragraphs()));
    text_.append(
        MimeText::TextBase64, out, first,
        text_.fit(first, left(budget, out.size() - begin + tail.size()), {MimeText::TextBase64}));
    out += tail;
    return;
  }
  const bool pdf = kind < 70;
  appendAttachmentHeaders(out, random_, eol_, pdf ? "application/pdf" : "image/png",
                          pdf ? "pdf" : "png");
  const std::string &head = pdf ? pdfHead_ : pngHead_;
  const std::string &tail = pdf ? pdfTail_ : pngTail_;
  out += head;
  mail_.appendBase64(out, left(budget, out.size() - begin + tail.size()));
  out += tail;
}

void MimeCorpus::appendMessage(std::string &out, size_t size) {
  const size_t begin = out.size();
  const uint32_t draw = random_.below(100);
  const Body body = draw < 50   ? Body::Alternative
                    : draw < 70 ? Body::Mixed
                    : draw < 85 ? Body::EightBit
                                : Body::Base64Text;
  const bool multipart = body == Body::Alternative || body == Body::Mixed;
  const std::string boundary = multipart ? makeBoundary(random_, 0) : std::string();
  const bool windows1252 = random_.below(2) != 0;
  appendHeaderBlock(out, body, boundary, windows1252);
  if (multipart) {
    if (random_.below(10) < 7)
      out += "This is a multi-part message in MIME format." + eol_;
    out += eol_;
  }
  const auto budget = [&] { return left(size, out.size() - begin); };

  switch (body) {
  case Body::Alternative:
    appendAlternative(out, boundary, budget());
    break;
  case Body::Mixed: {
    // The text takes a quarter to three fifths; the attachments share the rest.
    const size_t textBudget = budget() * (25 + random_.below(36)) / 100;
    out += "--" + boundary + eol_;
    if (random_.below(5) < 3) {
      const std::string inner = makeBoundary(random_, 1);
      appendMultipartType(out, "alternative", inner);
      out += eol_;
      appendAlternative(out, inner, textBudget);
      out += eol_;
    } else {
      appendQuotedText(out, textBudget);
    }
    const unsigned attachments = 1 + random_.below(2);
    for (unsigned i = 0; i < attachments; ++i) {
      out += "--" + boundary + eol_;
      const size_t rest = left(budget(), (attachments - i) * (boundary.size() + 8));
      appendAttachment(out, i + 1 == attachments ? rest : rest * (3 + random_.below(5)) / 10);
    }
    out += "--" + boundary + "--" + eol_;
    break;
  }
  case Body::EightBit: {
    const MimeText::Form form = windows1252 ? MimeText::Windows1252 : MimeText::Latin1;
    const size_t first = random_.below(static_cast<uint32_t>(text_.paragraphs()));
    text_.append(form, out, first, text_.fit(first, budget(), {form}));
    break;
  }
  case Body::Base64Text: {
    const std::string &tail =
        text_.textTails()[random_.below(static_cast<uint32_t>(text_.textTails().size()))];
    const size_t first = random_.below(static_cast<uint32_t>(text_.paragraphs()));
    text_.append(MimeText::TextBase64, out, first,
                 text_.fit(first, left(budget(), tail.size()), {MimeText::TextBase64}));
    out += tail;
    break;
  }
  }
  // Some writers leave a blank line after the closing boundary.
  if (multipart && random_.below(4) == 0)
    out += eol_;
}
