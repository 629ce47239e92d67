// The paragraphs of the generated MIME mail and their forms.
#include "bench/MimeText.h"

#include "bench/MimeEncoding.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

// Every word within ISO-8859-1, so that any of them can go into a Latin-1 encoded word.
const char *const kWords[] = {
    "für",        "Grüße",    "Änderung", "Übersicht", "Größe",       "Straße",      "Bücher",
    "Prüfung",    "schön",    "müssen",   "können",    "Bestätigung", "Lösung",      "Rückfrage",
    "Vorschläge", "Gespräch", "nächste",  "Woche",     "Termin",      "Angebot",     "Rechnung",
    "bitte",      "danke",    "und",      "die",       "der",         "das",         "mit",
    "wir",        "ist",      "nicht",    "auch",      "noch",        "heute",       "morgen",
    "Büro",       "Kollegen", "Entwurf",  "Zahlen",    "Quartal",     "café",        "déjà",
    "réunion",    "été",      "très",     "élève",     "à",           "la",          "le",
    "et",         "pour",     "prêt",     "reçu",      "Noël",        "naïve",       "garçon",
    "façade",     "año",      "señor",    "mañana",    "niño",        "smörgåsbord", "Øre",
    "fjärran",    "the",      "report",   "meeting",   "and",         "we",          "review",
    "numbers",    "please",   "send",     "notes",     "project",     "budget",      "team",
    "schedule",   "thanks",   "update",   "release",   "from",        "about",       "Zoë",
    "Jürgen",     "Müller",   "Köln",     "Zürich",    "Malmö",       "São",         "Paulo",
    "Ærø",        "Þórsmörk", "1998",     "3,5 %",     "12.03.",      "(siehe",      "Anhang)",
};
constexpr unsigned kWordCount = sizeof kWords / sizeof kWords[0];

const char *const kGreetings[] = {
    "Hallo Jürgen,", "Liebe Zoë,", "Bonjour Françoise,",     "Hi Ann,", "Sehr geehrte Frau Müller,",
    "Hola José,",    "Hej Björn,", "Guten Tag Herr Schäfer,"};
const char *const kClosings[] = {
    "Mit freundlichen Grüßen", "Viele Grüße", "Bien à vous", "Best regards",
    "Saludos cordiales",       "Hälsningar"};
const char *const kSigners[] = {"Jürgen Müller", "Zoë Dubois", "Françoise Lefèvre",
                                "Björn Åström",  "Ana Muñoz",  "Günther Schäfer"};
const char *const kItems[] = {"Bücherregal",         "Schreibtischstühle", "Kaffeemaschine",
                              "Drucker\u00ADpapier", "Lösungsmittel",      "Crème brûlée",
                              "Aktenordner (blau)",  "Kühlschrank"};
const char *const kCellHeads[][3] = {{"Artikel", "Menge", "Preis"},
                                     {"Position", "Anzahl", "Betrag"},
                                     {"Désignation", "Qté", "Prix"}};

// Named entities as HTML mail writers put them; other characters go as numbers.
const char *const kEntities[][2] = {
    {"ä", "&auml;"},   {"ö", "&ouml;"},   {"ü", "&uuml;"},   {"Ä", "&Auml;"},   {"Ö", "&Ouml;"},
    {"Ü", "&Uuml;"},   {"ß", "&szlig;"},  {"é", "&eacute;"}, {"è", "&egrave;"}, {"à", "&agrave;"},
    {"ç", "&ccedil;"}, {"ñ", "&ntilde;"}, {"€", "&euro;"},   {"–", "&ndash;"},  {"…", "&hellip;"},
    {"„", "&bdquo;"},  {"“", "&ldquo;"},  {"”", "&rdquo;"},  {"’", "&rsquo;"},
};

const char *const kHtmlHeads[] = {
    "<html><body>\r\n",
    "<html>\r\n<head>\r\n<meta http-equiv=\"Content-Type\" content=\"text/html; "
    "charset=utf-8\">\r\n</head>\r\n<body dir=\"ltr\">\r\n<div style=\"font-family:Arial,"
    "Helvetica,sans-serif;font-size:10pt;color:#000000\">\r\n",
    "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\">\r\n<html><head>\r\n"
    "<meta http-equiv=\"content-type\" content=\"text/html; charset=UTF-8\">\r\n"
    "<style type=\"text/css\">\r\n<!--\r\np.body, li.body, div.body {margin:0cm; "
    "margin-bottom:.0001pt; font-size:11.0pt; font-family:\"Calibri\",sans-serif;}\r\n"
    "a:link {color:#0563C1; text-decoration:underline;}\r\n"
    "blockquote {margin:0 0 0 .8ex; border-left:1px #ccc solid; padding-left:1ex;}\r\n"
    "-->\r\n</style>\r\n<!-- converted from rich text -->\r\n</head>\r\n"
    "<body lang=\"DE\" link=\"#0563C1\" vlink=\"#954F72\">\r\n<div class=\"body\">\r\n",
};
const char *const kHtmlTails[] = {
    "</body></html>\r\n",
    "</div>\r\n</body>\r\n</html>\r\n",
    "<p class=\"body\">&nbsp;</p>\r\n</div>\r\n</body></html>",
};
const char *const kTextTails[] = {"\r\n", "Gesendet von unterwegs\r\n", "Envoyé de mon téléphone",
                                  "-- \r\nJürgen\r\n"};

constexpr size_t kPoolBytes = size_t{384} << 10;

template <size_t N> const char *pick(BenchRandom &random, const char *const (&table)[N]) {
  return table[random.below(N)];
}

std::string capitalized(std::string word) {
  if (!word.empty() && word[0] >= 'a' && word[0] <= 'z')
    word[0] = static_cast<char>(word[0] - 'a' + 'A');
  return word;
}

std::string sentence(BenchRandom &random) {
  std::string text;
  const unsigned words = 4 + random.below(11);
  for (unsigned i = 0; i < words; ++i) {
    if (i)
      text += random.below(20) == 0 ? " – " : " ";
    std::string word = kWords[random.below(kWordCount)];
    if (i == 0)
      word = capitalized(word);
    switch (random.below(40)) {
    case 0:
      word.insert(0, "„").append("“");
      break;
    case 1:
      word.insert(0, "“").append("”");
      break;
    case 2:
      word += "’s";
      break;
    case 3: {
      char price[32];
      std::snprintf(price, sizeof price, "%u,%02u €", random.below(900) + 1, random.below(100));
      word = price;
      break;
    }
    default:
      break;
    }
    text += word;
  }
  static const char *const ends[] = {".", ".", ".", ".", "?", "!", "…", ":"};
  return text + pick(random, ends);
}

std::vector<std::string> wrapped(const std::string &text, size_t width) {
  std::vector<std::string> lines;
  std::string line;
  for (size_t at = 0; at <= text.size();) {
    size_t space = text.find(' ', at);
    if (space == std::string::npos)
      space = text.size();
    if (!line.empty() && line.size() + 1 + (space - at) > width) {
      lines.push_back(line);
      line.clear();
    }
    if (!line.empty())
      line += ' ';
    line.append(text, at, space - at);
    at = space + 1;
  }
  if (!line.empty())
    lines.push_back(line);
  return lines;
}

// `text` in HTML: markup characters as entities and, with `named`, the letters beyond ASCII
// too, as some writers do.
std::string escaped(const std::string &text, bool named) {
  std::string out;
  for (size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (c == '&' || c == '<' || c == '>' || c == '"') {
      out += c == '&' ? "&amp;" : c == '<' ? "&lt;" : c == '>' ? "&gt;" : "&quot;";
      ++at;
      continue;
    }
    if (!named || (static_cast<unsigned char>(c) & 0x80) == 0) {
      out += c;
      ++at;
      continue;
    }
    const char *entity = nullptr;
    size_t length = 0;
    for (const auto &pair : kEntities) {
      length = std::strlen(pair[0]);
      if (text.compare(at, length, pair[0]) == 0) {
        entity = pair[1];
        break;
      }
    }
    if (entity) {
      out += entity;
      at += length;
    } else {
      // Any other letter goes as the number of its code point.
      const auto lead = static_cast<unsigned char>(c);
      length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
      unsigned point = lead & (0x7F >> length);
      for (size_t i = 1; i < length && at + i < text.size(); ++i)
        point = point << 6 | (static_cast<unsigned char>(text[at + i]) & 0x3F);
      out += "&#" + std::to_string(point) + ";";
      at += length;
    }
  }
  return out;
}

std::string htmlOfProse(const std::string &text, BenchRandom &random, bool named) {
  static const char *const opens[] = {"<p class=\"body\">", "<p>", "<div>"};
  const unsigned wrapper = random.below(3);
  std::string html = opens[wrapper];
  size_t at = 0;
  bool sentenceEnded = false;
  while (at <= text.size()) {
    size_t space = text.find(' ', at);
    if (space == std::string::npos)
      space = text.size();
    const std::string word = escaped(text.substr(at, space - at), named);
    if (at > 0)
      html += sentenceEnded && random.below(3) == 0 ? "&nbsp; " : " ";
    const uint32_t markup = random.below(100);
    if (markup < 6) {
      html += "<b>" + word + "</b>";
    } else if (markup < 10) {
      html += "<span style=\"color:#1F497D\">" + word + "</span>";
    } else if (markup < 12) {
      html += "<a href=\"https://www.example.com/portal/doc?id=" +
              std::to_string(random.below(100000)) + "&amp;lang=de\">" + word + "</a>";
    } else if (markup < 14) {
      html += "<i>" + word + "</i>";
    } else if (markup < 15) {
      html += "<font face=\"Arial\" size=\"2\">" + word + "</font>";
    } else {
      html += word;
    }
    sentenceEnded = !word.empty() && std::strchr(".?!:", word.back()) != nullptr;
    at = space + 1;
  }
  html += wrapper == 2 ? "</div>" : "</p>";
  return html;
}

// `raw` with spaces put in before its last `keep` bytes (a line end, or the end of a line and
// a blank one), so that its length is a multiple of 57 and its base64 whole lines.
std::string paddedFor57(std::string raw, size_t keep) {
  raw.insert(raw.size() - keep, (57 - raw.size() % 57) % 57, ' ');
  return raw;
}

} // namespace

struct MimeText::Paragraph {
  std::vector<std::string> lines; // as a reader sees them, wrapped
  std::string longLine;           // prose as one line, as HTML mail's text part carries it
  std::string html;               // one line, without its line end
};

MimeText::MimeText(BenchRandom &random, const std::string &eol) : eol_(eol) {
  for (Pool &pool : pools_)
    pool.starts.push_back(0);
  while (pools_[TextBase64].bytes.size() < kPoolBytes) {
    Paragraph paragraph;
    const bool named = random.below(4) == 0;
    const uint32_t kind = random.below(100);
    if (kind < 68) {
      std::string prose;
      const unsigned sentences = 1 + random.below(4);
      for (unsigned i = 0; i < sentences; ++i)
        prose += (i ? " " : "") + sentence(random);
      paragraph.lines = wrapped(prose, 72);
      paragraph.longLine = prose;
      paragraph.html = htmlOfProse(prose, random, named);
    } else if (kind < 80) {
      // A quoted reply: hard line ends, as the reply's writer wrapped it.
      std::string prose;
      for (unsigned i = 0, n = 2 + random.below(3); i < n; ++i)
        prose += (i ? " " : "") + sentence(random);
      paragraph.html = "<blockquote type=\"cite\">";
      for (const std::string &line : wrapped(prose, 68)) {
        paragraph.lines.push_back("> " + line);
        paragraph.html += escaped(line, named) + "<br>";
      }
      paragraph.html += "</blockquote>";
    } else if (kind < 85) {
      const auto &heads = kCellHeads[random.below(3)];
      paragraph.html = "<table border=\"1\" cellspacing=\"0\" cellpadding=\"4\" "
                       "style=\"border-collapse:collapse\"><tr>";
      char line[160];
      std::snprintf(line, sizeof line, "%-24s %8s %12s", heads[0], heads[1], heads[2]);
      paragraph.lines.push_back(line);
      for (const char *head : heads)
        paragraph.html += std::string("<th>") + escaped(head, named) + "</th>";
      paragraph.html += "</tr>";
      for (unsigned row = 0, rows = 2 + random.below(3); row < rows; ++row) {
        const char *item = pick(random, kItems);
        const unsigned count = 1 + random.below(20);
        char price[32];
        std::snprintf(price, sizeof price, "%u,%02u", random.below(900) + 1, random.below(100));
        std::snprintf(line, sizeof line, "%-24s %8u %10s €", item, count, price);
        paragraph.lines.push_back(line);
        paragraph.html += "<tr><td>" + escaped(item, named) + "</td><td align=\"right\">" +
                          std::to_string(count) + "</td><td align=\"right\">" + price +
                          "&nbsp;&euro;</td></tr>";
      }
      paragraph.html += "</table>";
    } else if (kind < 93) {
      const std::string greeting = pick(random, kGreetings);
      paragraph.lines.push_back(greeting);
      paragraph.html =
          random.below(2)
              ? "<p class=\"body\">" + escaped(greeting, named) + "</p><p class=\"body\">&nbsp;</p>"
              : "<div>" + escaped(greeting, named) + "</div><div><br></div>";
    } else {
      const std::string closing = pick(random, kClosings);
      const std::string signer = pick(random, kSigners);
      char phone[40];
      std::snprintf(phone, sizeof phone, "Tel. +49 30 %07u", random.below(10000000));
      paragraph.lines = {"-- ", closing, signer, phone, "https://www.example.org/"};
      std::string htmlPhone = phone;
      for (size_t space = htmlPhone.find(' '); space != std::string::npos;
           space = htmlPhone.find(' '))
        htmlPhone.replace(space, 1, "&nbsp;");
      paragraph.html = "<div>-- <br>" + escaped(closing, named) + "<br><b>" +
                       escaped(signer, named) + "</b><br>" + htmlPhone +
                       "<br><a href=\"https://www.example.org/\">www.example.org</a></div>";
    }
    add(paragraph, random);
  }

  for (const char *head : kHtmlHeads)
    encodeBase64Lines(htmlHeads_.emplace_back(), paddedFor57(head, 2), eol_);
  for (const char *tail : kHtmlTails)
    encodeBase64Lines(htmlTails_.emplace_back(), tail, eol_);
  for (const char *tail : kTextTails)
    encodeBase64Lines(textTails_.emplace_back(), tail, eol_);
}

void MimeText::add(const Paragraph &paragraph, BenchRandom &random) {
  // Most HTML mail writers put a paragraph on one line of the text part, which its
  // quoted-printable then breaks softly; the others wrap it.
  std::string &qp = pools_[QuotedPrintable].bytes;
  if (!paragraph.longLine.empty() && random.below(5) < 3)
    encodeQuotedPrintableLine(qp, paragraph.longLine, eol_);
  else
    for (const std::string &line : paragraph.lines)
      encodeQuotedPrintableLine(qp, line, eol_);
  qp += eol_;

  encodeBase64Lines(pools_[HtmlBase64].bytes, paddedFor57(paragraph.html + "\r\n", 2), eol_);

  std::string crlf, local;
  for (const std::string &line : paragraph.lines) {
    crlf += line + "\r\n";
    local += line + eol_;
  }
  encodeBase64Lines(pools_[TextBase64].bytes, paddedFor57(crlf + "\r\n", 4), eol_);
  local += eol_;
  pools_[Latin1].bytes += toSingleByte(local, false);
  pools_[Windows1252].bytes += toSingleByte(local, true);

  for (Pool &pool : pools_)
    pool.starts.push_back(static_cast<uint32_t>(pool.bytes.size()));
}

size_t MimeText::length(Form form, size_t paragraph) const {
  const std::vector<uint32_t> &starts = pools_[form].starts;
  return starts[paragraph + 1] - starts[paragraph];
}

size_t MimeText::fit(size_t first, size_t budget, std::initializer_list<Form> forms) const {
  const size_t count = paragraphs();
  size_t taken = 0, used = 0;
  while (taken < count) {
    const size_t paragraph = (first + taken) % count;
    size_t bytes = 0;
    for (Form form : forms)
      bytes += length(form, paragraph);
    if (taken > 0 && used + bytes > budget)
      break;
    used += bytes;
    ++taken;
  }
  return taken;
}

void MimeText::append(Form form, std::string &out, size_t first, size_t count) const {
  const Pool &pool = pools_[form];
  const size_t total = paragraphs();
  while (count > 0) {
    const size_t run = std::min(count, total - first);
    out.append(pool.bytes, pool.starts[first], pool.starts[first + run] - pool.starts[first]);
    count -= run;
    first = 0;
  }
}
