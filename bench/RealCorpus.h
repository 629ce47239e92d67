// Mail shaped like a person's, to measure a host beside its peers on what it will meet:
// header blocks as servers and mail programs write them (Return-Path, two to four folded
// Received lines, Date, From, To, Cc on a third, Subject, Message-ID, the MIME fields), a
// quarter of the messages replies that quote the one they answer, a fifth from mailing lists
// (List-Id), bodies of prose in RealVocabulary's words wrapped at 72 columns, and a signature
// on every message. Dates increase through a store as a client appends its mail.
//
// One seed gives the same bytes on every run and machine.
#pragma once

#include "bench/MailCorpus.h"
#include "bench/RealVocabulary.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class RealCorpus {
public:
  // A store's mail spans 1 January 1995 to 1 January 2024 however many messages it holds,
  // so that a store of a million is not dated centuries ahead; mail that comes after the
  // store is dated from its end on.
  static constexpr uint64_t kFirstDate = 788918400;
  static constexpr uint64_t kLastDate = 1704067200;

  // Messages dated from `firstDate` (seconds from 1970) on, `meanGap` seconds apart on
  // average, every line ended by `eol`.
  RealCorpus(uint64_t seed, const char *eol, uint64_t firstDate, uint64_t meanGap);

  // A size as mail comes: lognormal, median 4 KB and mean about 5 KB, within [low, high].
  size_t nextSize(size_t low, size_t high);
  // A message of about `size` bytes, never less than its header block, a paragraph and its
  // signature.
  void appendMessage(std::string &out, size_t size);

private:
  struct Person {
    std::string name, address, domain, signature;
    int zoneMinutes;
  };
  struct MailingList {
    std::string name, address, id;
  };
  // What a reply takes from the message it answers.
  struct Answerable {
    std::string messageId, references, subject, sender, date, text;
  };
  // Who writes to whom, on which list, answering which message.
  struct Envelope {
    const Person *sender = nullptr;
    const Person *to = nullptr;
    const MailingList *list = nullptr;
    const Answerable *answered = nullptr;
  };

  const Person &someone();
  std::string date(uint64_t time, int zoneMinutes) const;
  void appendReceived(std::string &out, const Person &sender, uint64_t time);
  void appendToken(std::string &out, unsigned length);
  void appendWord(std::string &out, bool capital);
  // Sentences of prose, unwrapped, until `words` holds `sentences` of them or `bytes`.
  void makeParagraph(std::string &words, unsigned sentences, size_t bytes);
  // `words` in lines of at most 72 characters, each starting with `prefix`.
  void appendWrapped(std::string &out, const std::string &words, const char *prefix);
  // The fields, from the trace to the blank line; `made` takes the subject and ids.
  void appendHeaderBlock(std::string &out, const Envelope &mail, Answerable &made);
  // Greeting, quote, prose up to about `end` in `out`, and the signature; `made` takes the
  // first paragraph.
  void appendBody(std::string &out, const Envelope &mail, size_t end, Answerable &made);

  const RealVocabulary &vocabulary_;
  BenchRandom random_;
  std::string eol_;
  std::vector<Person> people_; // the first is the person whose store it is
  std::vector<MailingList> lists_;
  std::vector<Answerable> recent_; // the latest messages, in a ring, that replies answer
  uint64_t clock_;
  uint64_t meanGap_;
  uint64_t messageNumber_ = 0;
  size_t lastRank_ = 0; // of the word written last
  std::string paragraph_;
};
