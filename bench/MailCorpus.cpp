// Realistic mail for the benchmarks, built from pools of lines made once per corpus.
#include "bench/MailCorpus.h"

#include <cmath>
#include <cstdio>

namespace {

const char *const kWords[] = {
    "the",      "report",  "meeting", "and",     "we",        "will",    "have",     "to",
    "review",   "numbers", "for",     "next",    "quarter",   "please",  "send",     "me",
    "your",     "notes",   "before",  "Friday",  "I",         "think",   "that",     "is",
    "a",        "good",    "idea",    "but",     "budget",    "team",    "project",  "schedule",
    "of",       "in",      "on",      "with",    "it",        "this",    "draft",    "version",
    "changes",  "section", "page",    "see",     "below",     "thanks",  "regards",  "agreed",
    "customer", "order",   "invoice", "shipped", "tomorrow",  "morning", "call",     "office",
    "server",   "update",  "release", "tested",  "works",     "fine",    "problem",  "fixed",
    "could",    "would",   "should",  "not",     "yet",       "already", "still",    "again",
    "about",    "from",    "into",    "after",   "while",     "because", "however,", "also",
    "right?",   "ok?",     "when?",   "(see",    "attached)", "-",       "2.5%",     "$120",
};
constexpr unsigned kWordCount = sizeof kWords / sizeof kWords[0];

const char *const kNames[] = {"Ann Lee",    "Bob Stone", "Carol Diaz", "Dan Wu",
                              "Eve Martin", "Frank Ode", "Gina Roth",  "Hal Berg",
                              "Ivy Chen",   "Jon Park",  "Kim Novak",  "Lou Grant"};
const char *const kDomains[] = {"example.org", "example.com", "example.net", "mail.example.org",
                                "lists.example.com"};
const char *const kMailers[] = {"Mail Desk 3.0", "Postcard 4.05 [en]", "Quill Mail 2.53",
                                "Relay Office 5.0"};
const char kBase64[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

constexpr size_t kPoolBytes = 1 << 20;

template <size_t N> const char *pick(BenchRandom &random, const char *const (&table)[N]) {
  return table[random.below(N)];
}

} // namespace

uint64_t BenchRandom::next() {
  uint64_t z = (state_ += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
}

size_t BenchRandom::logUniform(size_t low, size_t high) {
  const double unit = static_cast<double>(next() >> 11) / static_cast<double>(1ull << 53);
  return static_cast<size_t>(static_cast<double>(low) *
                             std::pow(static_cast<double>(high) / static_cast<double>(low), unit));
}

const std::vector<std::string> &MailCorpus::dates() {
  static const std::vector<std::string> forms = {
      "Thu, 15 Jan 1998 10:30:45 -0500",
      "Fri Jan 16 08:15:02 1998",
      "Wed, 7 May 1997 11:02:33 GMT",
      "Sat, 07 Feb 98 18:44:00 PST",
      "12 Jan 98 23:59",
      "Mon, 22 Jun 1998 09:05:17 +0200 (CEST)",
      "Tue, 3 Nov 1998 16:40:00 -0800",
      "Sun, 13 Dec 1998 21:12:09 +0000",
  };
  return forms;
}

MailCorpus::MailCorpus(uint64_t seed, const char *eol) : random_(seed), eol_(eol) {
  // Text: lines of 40 to 76 characters in paragraphs, with quoted lines and now and then a
  // line that starts with "From".
  for (LinePool *pool : {&text_, &fromText_}) {
    const bool allFrom = pool == &fromText_;
    while (pool->bytes.size() < kPoolBytes) {
      pool->starts.push_back(static_cast<uint32_t>(pool->bytes.size()));
      const uint32_t kind = random_.below(100);
      if (!allFrom && kind < 8) {
        pool->bytes += eol_; // a paragraph break
        continue;
      }
      std::string line;
      if (allFrom || kind == 8)
        line = random_.below(2) ? "From what I hear," : "From";
      else if (kind < 20)
        line = "> ";
      const size_t width = 40 + random_.below(37);
      while (line.size() < width) {
        if (!line.empty() && line.back() != ' ')
          line += ' ';
        line += kWords[random_.below(kWordCount)];
      }
      pool->bytes += line;
      pool->bytes += eol_;
    }
    pool->starts.push_back(static_cast<uint32_t>(pool->bytes.size()));
  }
  // Base64: 76 characters a line, as mail programs fold attachments.
  while (base64_.bytes.size() < kPoolBytes) {
    base64_.starts.push_back(static_cast<uint32_t>(base64_.bytes.size()));
    for (int i = 0; i < 76; ++i)
      base64_.bytes += kBase64[random_.below(64)];
    base64_.bytes += eol_;
  }
  base64_.starts.push_back(static_cast<uint32_t>(base64_.bytes.size()));
}

void MailCorpus::appendFromPool(const LinePool &pool, std::string &out, size_t bytes) {
  const size_t lines = pool.starts.size() - 1;
  size_t line = random_.below(static_cast<uint32_t>(lines));
  size_t appended = 0;
  while (appended < bytes) {
    // Whole lines from `line` on, up to the end of the pool or as many as are needed.
    size_t last = line;
    while (last < lines && pool.starts[last] - pool.starts[line] < bytes - appended)
      ++last;
    out.append(pool.bytes, pool.starts[line], pool.starts[last] - pool.starts[line]);
    appended += pool.starts[last] - pool.starts[line];
    line = last == lines ? 0 : last;
  }
}

void MailCorpus::appendText(std::string &out, size_t bytes) {
  appendFromPool(text_, out, bytes);
}

void MailCorpus::appendFromText(std::string &out, size_t bytes) {
  appendFromPool(fromText_, out, bytes);
}

void MailCorpus::appendBase64(std::string &out, size_t bytes) {
  appendFromPool(base64_, out, bytes);
}

void MailCorpus::appendAddress(std::string &out) {
  const char *name = pick(random_, kNames);
  out += name;
  out += " <";
  for (const char *p = name; *p; ++p)
    out += *p == ' ' ? '.' : static_cast<char>(*p | 0x20);
  out += '@';
  out += pick(random_, kDomains);
  out += '>';
}

void MailCorpus::appendWords(std::string &out, unsigned count) {
  for (unsigned i = 0; i < count; ++i) {
    if (i)
      out += ' ';
    out += kWords[random_.below(kWordCount)];
  }
}

namespace {

// The calendar date of a day counted from 1 January 1970 (proleptic Gregorian).
void civilFromDays(int64_t days, unsigned &year, unsigned &month, unsigned &date) {
  days += 719468;
  const int64_t era = days / 146097;
  const auto dayOfEra = static_cast<unsigned>(days - era * 146097);
  const unsigned yearOfEra =
      (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const unsigned dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const unsigned shiftedMonth = (5 * dayOfYear + 2) / 153;
  date = dayOfYear - (153 * shiftedMonth + 2) / 5 + 1;
  month = shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9;
  year = static_cast<unsigned>(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
}

} // namespace

std::string MailCorpus::nextDate() {
  static const char *const days[] = {"Thu", "Fri", "Sat", "Sun", "Mon", "Tue", "Wed"};
  static const char *const months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  static const char *const zones[] = {"-0500", "+0100", "+0000", "-0800", "GMT", "PST"};
  // Mail is kept in the order it came: two hours apart on average.
  clock_ += random_.below(4 * 3600);
  const int64_t dayNumber = static_cast<int64_t>(clock_ / 86400);
  unsigned year = 0, monthNumber = 0, date = 0;
  civilFromDays(dayNumber, year, monthNumber, date);
  const char *day = days[dayNumber % 7]; // 1 January 1970 was a Thursday
  const char *month = months[monthNumber - 1];
  const auto secondOfDay = static_cast<unsigned>(clock_ % 86400);
  const unsigned hour = secondOfDay / 3600, minute = secondOfDay / 60 % 60,
                 second = secondOfDay % 60;
  char text[64];
  switch (random_.below(4)) {
  case 0:
    std::snprintf(text, sizeof text, "%s, %u %s %u %02u:%02u:%02u %s", day, date, month, year, hour,
                  minute, second, zones[random_.below(6)]);
    break;
  case 1:
    std::snprintf(text, sizeof text, "%s %s %2u %02u:%02u:%02u %u", day, month, date, hour, minute,
                  second, year);
    break;
  case 2:
    std::snprintf(text, sizeof text, "%s, %02u %s %02u %02u:%02u:%02u %s", day, date, month,
                  year % 100, hour, minute, second, zones[random_.below(6)]);
    break;
  default:
    std::snprintf(text, sizeof text, "%s, %u %s %u %02u:%02u:%02u %s (%s)", day, date, month, year,
                  hour, minute, second, zones[random_.below(4)], "UTC");
    break;
  }
  return text;
}

void MailCorpus::appendTrace(std::string &out) {
  const std::string date = nextDate();
  const uint64_t number = ++messageNumber_;
  char scratch[160];
  out += "Return-Path: <";
  out += pick(random_, kNames)[0] == 'A' ? "ann" : "owner-list";
  out += "@example.org>" + eol_;
  const unsigned hops = 2 + random_.below(3);
  for (unsigned hop = 0; hop < hops; ++hop) {
    std::snprintf(scratch, sizeof scratch, "Received: from relay%u.%s (relay%u.%s [192.0.2.%u])",
                  hop, pick(random_, kDomains), hop, pick(random_, kDomains),
                  random_.below(250) + 1);
    out += scratch + eol_;
    std::snprintf(scratch, sizeof scratch, "\tby mx.example.org (relay 2.4) with ESMTP id %08X%04X",
                  random_.below(0x7FFFFFFF), hop);
    out += scratch + eol_;
    out += "\tfor <ann@example.org>; " + date + eol_;
  }
  std::snprintf(scratch, sizeof scratch, "Message-ID: <%llu.%08X@mail.example.org>",
                static_cast<unsigned long long>(number), random_.below(0x7FFFFFFF));
  out += scratch + eol_;
  out += "Date: " + date + eol_;
}

void MailCorpus::appendRecipients(std::string &out) {
  out += "To: ";
  const unsigned recipients = 1 + random_.below(4);
  for (unsigned i = 0; i < recipients; ++i) {
    if (i)
      out += "," + eol_ + "    ";
    appendAddress(out);
  }
  out += eol_;
  if (random_.below(2)) {
    out += "Cc: ";
    appendAddress(out);
    out += eol_;
  }
}

void MailCorpus::appendHeaders(std::string &out, bool multipart) {
  appendTrace(out);
  out += "From: ";
  appendAddress(out);
  out += eol_;
  appendRecipients(out);
  out += "Subject: ";
  if (random_.below(3) == 0)
    out += "Re: ";
  appendWords(out, 3 + random_.below(6));
  out += eol_;
  out += "MIME-Version: 1.0" + eol_;
  if (multipart) {
    char scratch[160];
    std::snprintf(scratch, sizeof scratch, "Content-Type: multipart/mixed; boundary=\"part%llu\"",
                  static_cast<unsigned long long>(messageNumber_));
    out += scratch + eol_;
  } else {
    out += "Content-Type: text/plain; charset=us-ascii" + eol_;
  }
  out += "X-Mailer: ";
  out += pick(random_, kMailers);
  out += eol_ + eol_;
}

void MailCorpus::appendMessage(std::string &out, size_t size) {
  const size_t begin = out.size();
  const bool multipart = size > 16 * 1024;
  appendHeaders(out, multipart);
  const size_t headerBytes = out.size() - begin;
  const size_t bodyBytes = size > headerBytes ? size - headerBytes : 0;
  if (!multipart) {
    appendText(out, bodyBytes);
    return;
  }
  const std::string boundary = "--part" + std::to_string(messageNumber_);
  out += "This is a multi-part message in MIME format." + eol_ + eol_ + boundary + eol_;
  out += "Content-Type: text/plain; charset=us-ascii" + eol_ + eol_;
  appendText(out, 1024 + random_.below(3072));
  out += boundary + eol_;
  out += "Content-Type: application/octet-stream; name=\"attachment.bin\"" + eol_;
  out += "Content-Transfer-Encoding: base64" + eol_;
  out += "Content-Disposition: attachment; filename=\"attachment.bin\"" + eol_ + eol_;
  const size_t used = out.size() - begin;
  appendBase64(out, size > used + 64 ? size - used - 64 : 0);
  out += boundary + "--" + eol_;
}
