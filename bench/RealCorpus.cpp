// Putting real-shaped messages together: people, lists, trace fields, threads and prose.
#include "bench/RealCorpus.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

const char *const kFirstNames[] = {"Ann",    "Bob",    "Carol", "David",  "Emma", "Frank", "Grace",
                                   "Henry",  "Irene",  "Jack",  "Karen",  "Leo",  "Maria", "Nick",
                                   "Olivia", "Paul",   "Quinn", "Rachel", "Sam",  "Tina",  "Umar",
                                   "Vera",   "Walter", "Xenia", "Yusuf",  "Zoe",  "Alice", "Brian",
                                   "Chloe",  "Daniel", "Elena", "Felix"};
const char *const kLastNames[] = {
    "Lee",   "Stone",  "Diaz",   "Wu",        "Martin",  "Okafor", "Roth",     "Berg",
    "Chen",  "Park",   "Novak",  "Lindqvist", "Schmidt", "Rossi",  "Kowalski", "Tanaka",
    "Silva", "Murphy", "Hughes", "Nguyen",    "Fischer", "Jensen", "Moreau",   "Costa",
    "Walsh", "Bauer",  "Kim",    "Patel",     "Evans",   "Larsen", "Ortiz",    "Hale"};
const char *const kTitles[] = {"Senior engineer", "Project manager",    "Sales",
                               "Operations",      "Research associate", "Support lead",
                               "Head of finance", "Consultant"};
const char *const kCompanySuffixes[] = {" Systems", " Ltd", " GmbH", " Inc.", " Labs", " Group"};
const char *const kTopLevel[] = {".com", ".org", ".net", ".co.uk", ".de", ".io"};
const char *const kCharsets[] = {"us-ascii", "utf-8", "UTF-8", "iso-8859-1"};
const char kTokenLetters[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";

constexpr unsigned kPeople = 300;
constexpr unsigned kDomains = 40;
constexpr unsigned kLists = 8;
constexpr unsigned kRecent = 64;
constexpr size_t kLineWidth = 72;

template <size_t N> const char *pick(BenchRandom &random, const char *const (&table)[N]) {
  return table[random.below(N)];
}

std::string lowered(std::string text) {
  for (char &c : text)
    c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::string capitalized(std::string text) {
  text[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[0])));
  return text;
}

} // namespace

RealCorpus::RealCorpus(uint64_t seed, const char *eol, uint64_t firstDate, uint64_t meanGap)
    : vocabulary_(RealVocabulary::shared()), random_(seed ^ 0x7265616Cull), eol_(eol),
      clock_(firstDate), meanGap_(std::max<uint64_t>(meanGap, 1)) {
  // The same people and lists whatever the seed: mail that comes later is from them too.
  BenchRandom cast(0x70656F70ull);
  std::vector<std::string> domains, companies;
  for (unsigned i = 0; i < kDomains; ++i) {
    domains.push_back(vocabulary_.name(i) + pick(cast, kTopLevel));
    companies.push_back(capitalized(vocabulary_.name(i)) + pick(cast, kCompanySuffixes));
  }
  for (unsigned i = 0; i < kPeople; ++i) {
    const std::string first = pick(cast, kFirstNames), last = pick(cast, kLastNames);
    const unsigned at = cast.below(kDomains);
    Person person;
    person.name = first + " " + last;
    person.domain = domains[at];
    person.address = lowered(cast.below(3) ? first + "." + last : first.substr(0, 1) + last) + "@" +
                     person.domain;
    person.signature =
        "-- " + eol_ + person.name + eol_ + pick(cast, kTitles) + ", " + companies[at] + eol_;
    if (cast.below(2)) {
      char phone[32];
      std::snprintf(phone, sizeof phone, "+1 555 01%02u", cast.below(100));
      person.signature += phone + eol_;
    }
    static const int zones[] = {-480, -300, -240, 0, 60, 120, 330, 540};
    person.zoneMinutes = zones[cast.below(sizeof zones / sizeof zones[0])];
    people_.push_back(std::move(person));
  }
  for (unsigned i = 0; i < kLists; ++i) {
    const std::string name = vocabulary_.name(kDomains + i) + (i % 2 ? "-users" : "-dev");
    const std::string host = "lists." + domains[cast.below(kDomains)];
    lists_.push_back(
        {name, name + "@" + host, capitalized(name) + " discussion <" + name + "." + host + ">"});
  }
}

size_t RealCorpus::nextSize(size_t low, size_t high) {
  const auto unit = [this] {
    return (static_cast<double>(random_.next() >> 11) + 1) / static_cast<double>(1ull << 53);
  };
  // Box-Muller: a normal number from two uniform ones.
  const double normal = std::sqrt(-2 * std::log(unit())) * std::cos(6.283185307179586 * unit());
  const double size = 4000 * std::exp(0.7 * normal);
  return std::clamp(static_cast<size_t>(size), low, high);
}

const RealCorpus::Person &RealCorpus::someone() {
  return people_[1 + random_.below(kPeople - 1)];
}

std::string RealCorpus::date(uint64_t time, int zoneMinutes) const {
  const auto local = static_cast<time_t>(static_cast<int64_t>(time) + zoneMinutes * 60);
  struct tm parts {};
  ::gmtime_r(&local, &parts);
  char text[64];
  const size_t length = std::strftime(text, sizeof text, "%a, %d %b %Y %H:%M:%S", &parts);
  const int minutes = std::abs(zoneMinutes);
  std::snprintf(text + length, sizeof text - length, " %c%02d%02d", zoneMinutes < 0 ? '-' : '+',
                minutes / 60, minutes % 60);
  return text;
}

void RealCorpus::appendToken(std::string &out, unsigned length) {
  for (unsigned i = 0; i < length; ++i)
    out += kTokenLetters[random_.below(sizeof kTokenLetters - 1)];
}

void RealCorpus::appendReceived(std::string &out, const Person &sender, uint64_t time) {
  const Person &owner = people_[0];
  const unsigned hops = 2 + random_.below(3);
  char scratch[192];
  for (unsigned hop = hops; hop-- > 0;) {
    const std::string &from = hop == 0 ? sender.domain : owner.domain;
    std::snprintf(scratch, sizeof scratch, "Received: from mail%u.%s (mail%u.%s [198.51.100.%u])",
                  hop, from.c_str(), hop, from.c_str(), 1 + random_.below(250));
    out += scratch + eol_;
    if (random_.below(2)) {
      out +=
          "\tby mx" + std::to_string(hop + 1) + "." + owner.domain + " (Postfix) with ESMTPS id ";
      appendToken(out, 12);
    } else {
      out += "\tby smtp." + owner.domain + " with esmtps (Exim 4.96)" + eol_ +
             "\t(envelope-from <" + sender.address + ">)" + eol_ + "\tid ";
      appendToken(out, 6);
      out += '-';
      appendToken(out, 6);
    }
    out += eol_ + "\tfor <" + owner.address + ">; " + date(time + hop, owner.zoneMinutes) + eol_;
  }
}

void RealCorpus::appendWord(std::string &out, bool capital) {
  // No word twice in a row ("the the"), and no sentence that starts with "from": a line
  // that starts with "From " would need escaping in a mailbox.
  size_t rank = lastRank_;
  while (rank == lastRank_ || (capital && vocabulary_.word(rank) == "from"))
    rank = vocabulary_.draw(static_cast<uint32_t>(random_.next()));
  lastRank_ = rank;
  const std::string &word = vocabulary_.word(rank);
  const size_t start = out.size();
  out += word;
  if (capital)
    out[start] = static_cast<char>(std::toupper(static_cast<unsigned char>(out[start])));
}

void RealCorpus::makeParagraph(std::string &words, unsigned sentences, size_t bytes) {
  words.clear();
  for (unsigned sentence = 0; sentence < sentences && words.size() < bytes; ++sentence) {
    if (!words.empty())
      words += ' ';
    const unsigned length = 4 + random_.below(15);
    for (unsigned i = 0; i < length; ++i) {
      if (i) {
        words += random_.below(12) == 0 ? ", " : " ";
        if (random_.below(50) == 0) {
          words += std::to_string(random_.below(2000)) + ' ';
        }
      }
      appendWord(words, i == 0);
    }
    const unsigned end = random_.below(40);
    words += end < 4 ? '?' : end == 4 ? '!' : '.';
  }
}

void RealCorpus::appendWrapped(std::string &out, const std::string &words, const char *prefix) {
  const size_t prefixLength = std::char_traits<char>::length(prefix);
  out += prefix;
  size_t lineLength = prefixLength;
  for (size_t pos = 0; pos < words.size();) {
    size_t end = words.find(' ', pos);
    if (end == std::string::npos)
      end = words.size();
    const size_t length = end - pos;
    if (lineLength > prefixLength && lineLength + 1 + length > kLineWidth) {
      out += eol_;
      out += prefix;
      lineLength = prefixLength;
    } else if (lineLength > prefixLength) {
      out += ' ';
      ++lineLength;
    }
    out.append(words, pos, length);
    lineLength += length;
    pos = end + 1;
  }
  out += eol_;
}

void RealCorpus::appendHeaderBlock(std::string &out, const Envelope &mail, Answerable &made) {
  const Person &sender = *mail.sender;
  out += "Return-Path: <" +
         (mail.list ? mail.list->name + "-bounces@" +
                          mail.list->address.substr(mail.list->address.find('@') + 1)
                    : sender.address) +
         ">" + eol_;
  appendReceived(out, sender, clock_);
  out += "Date: " + made.date + eol_;
  out += "From: " + sender.name + " <" + sender.address + ">" + eol_;
  if (mail.list) {
    out += "To: " + mail.list->address + eol_;
  } else {
    out += "To: " + mail.to->name + " <" + mail.to->address + ">";
    for (unsigned more = random_.below(4) == 0 ? 1 + random_.below(2) : 0; more > 0; --more) {
      const Person &other = someone();
      out += "," + eol_ + "    " + other.name + " <" + other.address + ">";
    }
    out += eol_;
  }
  if (random_.below(3) == 0) {
    const Person &copied = someone();
    out += "Cc: " + copied.name + " <" + copied.address + ">" + eol_;
  }

  if (mail.answered) {
    made.subject = mail.answered->subject;
  } else {
    made.subject = mail.list ? "[" + mail.list->name + "] " : "";
    const unsigned words = 2 + random_.below(6);
    for (unsigned i = 0; i < words; ++i) {
      if (i)
        made.subject += ' ';
      appendWord(made.subject, i == 0);
    }
  }
  out += "Subject: " + std::string(mail.answered ? "Re: " : "") + made.subject + eol_;
  char id[160];
  std::snprintf(id, sizeof id, "<%llx.%llu.%08x@mail.%s>", static_cast<unsigned long long>(clock_),
                static_cast<unsigned long long>(messageNumber_), random_.below(0x7FFFFFFF),
                sender.domain.c_str());
  made.messageId = id;
  out += "Message-ID: " + made.messageId + eol_;
  if (mail.answered) {
    const Answerable &answered = *mail.answered;
    out += "In-Reply-To: " + answered.messageId + eol_;
    made.references = answered.references.empty() ? answered.messageId
                                                  : answered.references + " " + answered.messageId;
    // Long threads keep their root and the latest few, as mail programs trim them.
    if (std::count(made.references.begin(), made.references.end(), ' ') > 3) {
      const size_t second = made.references.find(' ') + 1;
      made.references.erase(second, made.references.find(' ', second) + 1 - second);
    }
    std::string folded = made.references;
    for (size_t space = folded.find(' '); space != std::string::npos;
         space = folded.find(' ', space + eol_.size() + 1))
      folded.insert(space, eol_);
    out += "References: " + folded + eol_;
  }
  out += "MIME-Version: 1.0" + eol_;
  const char *charset = pick(random_, kCharsets);
  out += std::string("Content-Type: text/plain; charset=") + charset;
  out += random_.below(4) == 0 ? "; format=flowed" + eol_ : eol_;
  // Plain ASCII prose with lines under 76 characters and no "=" reads the same in any of
  // these encodings.
  const char *encoding = charset[0] == 'i'       ? "8bit"
                         : random_.below(5) == 0 ? "quoted-printable"
                                                 : "7bit";
  out += std::string("Content-Transfer-Encoding: ") + encoding + eol_;
  if (mail.list)
    out += "List-Id: " + mail.list->id + eol_;
  out += eol_;
}

void RealCorpus::appendBody(std::string &out, const Envelope &mail, size_t end, Answerable &made) {
  if (!mail.list && random_.below(2))
    out += "Hi " + mail.to->name.substr(0, mail.to->name.find(' ')) + "," + eol_ + eol_;
  if (mail.answered) {
    out += "On " + mail.answered->date + ", " + mail.answered->sender + " wrote:" + eol_;
    appendWrapped(out, mail.answered->text, "> ");
    out += eol_;
  }
  const std::string &signature = mail.sender->signature;
  const size_t proseEnd = std::max(end, out.size() + 1) - signature.size();
  for (bool first = true; first || out.size() < proseEnd; first = false) {
    if (!first)
      out += eol_;
    makeParagraph(paragraph_, 2 + random_.below(5),
                  proseEnd > out.size() + 1 ? proseEnd - out.size() : 1);
    appendWrapped(out, paragraph_, "");
    // A reply quotes the start of the message it answers.
    if (first)
      made.text =
          paragraph_.size() <= 600 ? paragraph_ : paragraph_.substr(0, paragraph_.rfind(' ', 600));
  }
  out += eol_ + signature;
}

void RealCorpus::appendMessage(std::string &out, size_t size) {
  const size_t begin = out.size();
  clock_ += 1 + random_.below(static_cast<uint32_t>(std::min<uint64_t>(2 * meanGap_, 1u << 31)));
  ++messageNumber_;
  Envelope mail;
  if (random_.below(5) == 0)
    mail.list = &lists_[random_.below(kLists)];
  const Person &owner = people_[0];
  mail.sender = !mail.list && random_.below(8) == 0 ? &owner : &someone();
  mail.to = mail.sender == &owner ? &someone() : &owner;
  if (!recent_.empty() && random_.below(4) == 0)
    mail.answered = &recent_[random_.below(static_cast<uint32_t>(recent_.size()))];

  Answerable made;
  made.sender = mail.sender->name;
  made.date = date(clock_, mail.sender->zoneMinutes);
  appendHeaderBlock(out, mail, made);
  appendBody(out, mail, begin + size, made);
  if (recent_.size() < kRecent)
    recent_.push_back(std::move(made));
  else
    recent_[messageNumber_ % kRecent] = std::move(made);
}
