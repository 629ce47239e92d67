// Realistic mail for the benchmarks: header blocks as mail servers write them, text bodies
// with quotes and lines that start with "From", and base64 attachments.
//
// Everything is drawn from a seeded generator, so that one seed gives the same bytes on every
// run and machine.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

// A small, fast generator (splitmix64): the benchmarks need repeatable, not secure, numbers.
class BenchRandom {
public:
  explicit BenchRandom(uint64_t seed) : state_(seed) {}
  uint64_t next();
  // A number in [0, bound).
  uint32_t below(uint32_t bound) { return static_cast<uint32_t>(next() % bound); }
  // A size between `low` and `high`, spread evenly over the logarithm: as many messages of
  // 1 to 2 KB as of 512 KB to 1 MB.
  size_t logUniform(size_t low, size_t high);

private:
  uint64_t state_;
};

class MailCorpus {
public:
  // `eol` is the line end of every line made: "\r\n" or "\n".
  MailCorpus(uint64_t seed, const char *eol);

  // A message of about `size` bytes (never less than its header block): a header block, a
  // blank line and a body. Bodies over 16 KB carry a base64 attachment.
  void appendMessage(std::string &out, size_t size);
  // A header block with its blank line.
  void appendHeaders(std::string &out, bool multipart);
  // The fields a header block starts with, as the servers on the way wrote them:
  // Return-Path, Received, Message-ID and Date.
  void appendTrace(std::string &out);
  // The To and, on about half, the Cc field.
  void appendRecipients(std::string &out);
  // "Name <mailbox>", in ASCII.
  void appendAddress(std::string &out);
  // `count` words, ASCII, separated by spaces.
  void appendWords(std::string &out, unsigned count);
  // Appends whole lines of text, at least `bytes` of them. About one line in a hundred
  // starts with "From", as in a mailbox whose writer escapes nothing.
  void appendText(std::string &out, size_t bytes);
  // The same, with every line starting with "From": the worst text for a scan that stops at
  // each "From".
  void appendFromText(std::string &out, size_t bytes);
  // Appends whole base64 lines, at least `bytes` of them.
  void appendBase64(std::string &out, size_t bytes);

  const std::string &eol() const { return eol_; }

  // The date texts that messages carry, in the forms mail programs write.
  static const std::vector<std::string> &dates();

private:
  struct LinePool {
    std::string bytes;
    std::vector<uint32_t> starts; // the offset of each line; one more entry marks the end
  };
  void appendFromPool(const LinePool &pool, std::string &out, size_t bytes);
  // A date a little later than the last, in one of the forms of dates().
  std::string nextDate();

  BenchRandom random_;
  std::string eol_;
  LinePool text_;
  LinePool fromText_; // text whose lines all start with "From"
  LinePool base64_;
  uint64_t messageNumber_ = 0;
  uint64_t clock_ = 788918400; // seconds from 1970 to the first date: 1 January 1995
};
