// Encoded words, extended parameters and boundaries of the generated MIME mail.
#include "bench/MimeHeaders.h"

#include "bench/MimeEncoding.h"

#include <algorithm>
#include <cstdio>

namespace {

struct Person {
  const char *name; // UTF-8
  const char *mailbox;
};
// Some beyond ISO-8859-1, which then only UTF-8 encoded words can carry.
const Person kPeople[] = {
    {"Jürgen Müller", "juergen.mueller@de.example.org"},
    {"Zoë Dubois", "zoe.dubois@fr.example.org"},
    {"José Álvarez", "jose.alvarez@es.example.com"},
    {"Søren Østergård", "soeren@dk.example.net"},
    {"Françoise Lefèvre", "f.lefevre@fr.example.org"},
    {"Björn Åström", "bjorn.astrom@se.example.com"},
    {"Łukasz Wójcik", "lukasz.wojcik@pl.example.net"},
    {"Günther Schäfer – Müller & Söhne Büroausstattung", "g.schaefer@example.com"},
    {"Renée Côté", "renee.cote@ca.example.org"},
    {"Þóra Sigurðardóttir", "thora@is.example.net"},
    {"Antonín Dvořák", "dvorak@cz.example.org"},
    {"Ana Muñoz (Facturación)", "facturacion@es.example.com"},
};

const char *const kSubjects[] = {
    "Änderung der Öffnungszeiten über die Feiertage",
    "Rückfrage zur Rechnung für März",
    "Réunion de l'équipe – ordre du jour",
    "Angebot für Bücherregale und Schreibtischstühle",
    "Bestätigung Ihrer Bestellung",
    "Prüfbericht Größe und Gewicht",
    "Reunión de mañana: cambios en el año fiscal",
    "Grüße aus Zürich",
    "Café am Freitag?",
    "Übersicht der Änderungen im Entwurf, bitte vor dem nächsten Termin lesen",
    "Protokoll der Sitzung vom 12.03. – Entwürfe für Köln und Malmö",
    "Smörgåsbord för hela teamet på fredag",
};

// File names without their extension; the first few plain ASCII, as many are.
const char *const kAsciiFiles[] = {"invoice-4711", "scan0042", "notes", "minutes 1998-03-12",
                                   "IMG_2041"};
const char *const kFiles[] = {"Prüfbericht März 1998",
                              "Übersicht Änderungen",
                              "Angebot für Müller & Söhne",
                              "Résumé – Zoë Dubois",
                              "Quittung Café Größenwahn",
                              "Straßenplan Köln",
                              "Präsentation Q3 (endgültig, überarbeitet)",
                              "Jahresübersicht der Bestellungen und Rücksendungen 1998",
                              "Tilbud på møbler"};

template <size_t N> const char *pick(BenchRandom &random, const char *const (&table)[N]) {
  return table[random.below(N)];
}

WordEncoding encodingFor(const std::string &text, BenchRandom &random) {
  const uint32_t draw = random.below(10);
  if (draw < 3 && fitsLatin1(text))
    return WordEncoding::Latin1Q;
  return draw < 5 ? WordEncoding::Utf8Q : WordEncoding::Utf8Base64;
}

bool ascii(const std::string &text) {
  for (char c : text)
    if (static_cast<unsigned char>(c) & 0x80)
      return false;
  return true;
}

// An extended parameter: "name*=UTF-8''..." or, when long, continued as "name*0*=",
// "name*1*=" and so on, each on a line of its own.
void appendExtendedParameter(std::string &out, const char *name, const std::string &value,
                             const std::string &eol) {
  std::string encoded = "UTF-8''";
  encodePercent(encoded, value);
  if (encoded.size() <= 60) {
    out += std::string(";") + eol + "\t" + name + "*=" + encoded;
    return;
  }
  size_t at = 0;
  for (unsigned section = 0; at < encoded.size(); ++section) {
    size_t end = std::min(at + 40, encoded.size());
    // An escape is never split between two sections.
    if (end < encoded.size() && encoded[end - 1] == '%')
      end -= 1;
    else if (end < encoded.size() && encoded[end - 2] == '%')
      end -= 2;
    out += std::string(";") + eol + "\t" + name + "*" + std::to_string(section) + "*=";
    out.append(encoded, at, end - at);
    at = end;
  }
}

void appendEncodedParameter(std::string &out, const char *name, const std::string &value,
                            BenchRandom &random, const std::string &eol) {
  out += std::string(";") + eol + "\t" + name + "=\"";
  encodeWords(out, value, encodingFor(value, random), eol + "\t");
  out += '"';
}

} // namespace

void appendEncodedAddress(std::string &out, BenchRandom &random, const std::string &eol) {
  const Person &person = kPeople[random.below(sizeof kPeople / sizeof kPeople[0])];
  encodeWords(out, person.name, encodingFor(person.name, random), eol + " ");
  out += " <";
  out += person.mailbox;
  out += '>';
}

const char *subjectMark(BenchRandom &random) {
  static const char *const marks[] = {"", "", "", "Re: ", "AW: ", "Fwd: ", "WG: ", "RE: "};
  return pick(random, marks);
}

void appendEncodedSubject(std::string &out, BenchRandom &random, const std::string &eol) {
  out += subjectMark(random);
  const std::string subject = pick(random, kSubjects);
  if (random.below(5) < 3) {
    encodeWords(out, subject, encodingFor(subject, random), eol + " ");
    return;
  }
  // Plain words as they are, each run of words that needs it as one encoded word (white
  // space between two encoded words is dropped), the field folded before 76 characters.
  const WordEncoding encoding = encodingFor(subject, random);
  size_t column = out.size() - out.rfind('\n') - 1; // npos + 1 is 0
  size_t at = 0;
  while (at < subject.size()) {
    size_t end = subject.find(' ', at);
    if (end == std::string::npos)
      end = subject.size();
    std::string token = subject.substr(at, end - at);
    if (!ascii(token)) {
      // Take in the words that follow while they need encoding too.
      while (end < subject.size()) {
        size_t next = subject.find(' ', end + 1);
        if (next == std::string::npos)
          next = subject.size();
        if (ascii(subject.substr(end + 1, next - end - 1)))
          break;
        end = next;
      }
      token.clear();
      encodeWords(token, subject.substr(at, end - at), encoding, eol + " ");
    }
    if (at > 0) {
      const size_t width = std::min(token.find_first_of("\r\n"), token.size());
      if (column + 1 + width > 76) {
        out += eol;
        column = 0;
      }
      out += ' ';
      ++column;
    }
    out += token;
    const size_t lastBreak = token.rfind('\n');
    column = lastBreak == std::string::npos ? column + token.size() : token.size() - lastBreak - 1;
    at = end + 1;
  }
}

void appendAttachmentHeaders(std::string &out, BenchRandom &random, const std::string &eol,
                             const char *type, const char *extension) {
  // Plainly, as encoded words (in both fields), or as an extended filename beside an
  // encoded-word name for the readers that know only the older form.
  const uint32_t style = random.below(3);
  const std::string name =
      std::string(style == 0 ? pick(random, kAsciiFiles) : pick(random, kFiles)) + "." + extension;
  out += std::string("Content-Type: ") + type;
  if (style == 0)
    out += ";" + eol + "\tname=\"" + name + "\"";
  else
    appendEncodedParameter(out, "name", name, random, eol);
  out += eol + "Content-Transfer-Encoding: base64" + eol;
  out += std::string("Content-Disposition: ") +
         (type[0] == 'i' && random.below(2) ? "inline" : "attachment");
  if (style == 0)
    out += ";" + eol + "\tfilename=\"" + name + "\"";
  else if (style == 1)
    appendEncodedParameter(out, "filename", name, random, eol);
  else
    appendExtendedParameter(out, "filename", name, eol);
  out += eol + eol;
}

std::string makeBoundary(BenchRandom &random, unsigned depth) {
  const uint64_t bits = random.next();
  const auto high = static_cast<unsigned>(bits >> 32), low = static_cast<unsigned>(bits);
  char text[80];
  switch (random.below(4)) {
  case 0:
    std::snprintf(text, sizeof text, "----=_Boundary_%03u_%04X_%08X.%08X", depth, low & 0xFFFF,
                  high, low);
    break;
  case 1:
    std::snprintf(text, sizeof text, "=_alt%u_%08x%08x_=", depth, high, low);
    break;
  case 2:
    std::snprintf(text, sizeof text, "------------%u%010u%010u", depth, high, low);
    break;
  default:
    std::snprintf(text, sizeof text, "b%u_%08x%08x%04x", depth, high, low, low >> 16);
    break;
  }
  return text;
}
