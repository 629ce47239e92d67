// The text of the generated MIME mail: paragraphs in German, French, Spanish and English,
// full of the letters beyond ASCII that such mail carries, with greetings, quoted replies,
// small tables and signatures. Each paragraph is made once and kept in every form a message
// carries text in, so that a message is put together from slices of ready bytes and the
// text and HTML alternatives of a message say the same.
#pragma once

#include "bench/MailCorpus.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

class MimeText {
public:
  enum Form {
    QuotedPrintable, // UTF-8 text in quoted-printable, the store's line ends
    HtmlBase64,      // UTF-8 HTML in base64, whole lines
    TextBase64,      // UTF-8 text with CRLF line ends in base64, whole lines
    Latin1,          // ISO-8859-1 text, 8-bit, the store's line ends
    Windows1252,     // windows-1252 text, 8-bit, the store's line ends
    kForms
  };

  // `eol` ends the lines of what is written into a message as it is: quoted-printable,
  // base64 and 8-bit text alike.
  MimeText(BenchRandom &random, const std::string &eol);

  size_t paragraphs() const { return pools_[0].starts.size() - 1; }
  size_t length(Form form, size_t paragraph) const;
  // How many paragraphs from `first` on (going round past the last) fit in `budget` in the
  // forms named together: at least one.
  size_t fit(size_t first, size_t budget, std::initializer_list<Form> forms) const;
  // Appends `count` paragraphs from `first` on in one form.
  void append(Form form, std::string &out, size_t first, size_t count) const;

  // An HTML document's start in base64, whole lines, and the matching end (with the same
  // index), which may end in a short line with padding. The first pair is the shortest.
  const std::vector<std::string> &htmlHeads() const { return htmlHeads_; }
  const std::vector<std::string> &htmlTails() const { return htmlTails_; }
  // The last lines of a text in base64, to follow TextBase64 paragraphs.
  const std::vector<std::string> &textTails() const { return textTails_; }

private:
  struct Pool {
    std::string bytes;
    std::vector<uint32_t> starts; // each paragraph's offset; one more entry marks the end
  };
  struct Paragraph;
  void add(const Paragraph &paragraph, BenchRandom &random);

  std::string eol_;
  Pool pools_[kForms];
  std::vector<std::string> htmlHeads_, htmlTails_, textTails_;
};
