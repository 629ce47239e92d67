// Ranking and drawing the real-shaped mail's words.
#include "bench/RealVocabulary.h"

#include "bench/MailCorpus.h"

#include <algorithm>
#include <cmath>
#include <unordered_set>

namespace {

// The top of the ranking: English as it is written in mail, roughly by frequency.
const char *const kCommon[] = {
    "the",      "to",      "and",    "of",     "a",     "I",       "in",      "is",      "that",
    "for",      "you",     "it",     "we",     "on",    "be",      "this",    "with",    "have",
    "are",      "not",     "as",     "will",   "at",    "can",     "if",      "but",     "or",
    "from",     "all",     "so",     "your",   "by",    "would",   "there",   "an",      "was",
    "what",     "they",    "do",     "about",  "me",    "my",      "just",    "one",     "our",
    "which",    "out",     "has",    "should", "some",  "also",    "more",    "when",    "think",
    "like",     "could",   "get",    "been",   "know",  "any",     "no",      "up",      "them",
    "time",     "other",   "only",   "then",   "new",   "how",     "need",    "see",     "were",
    "work",     "here",    "use",    "now",    "into",  "make",    "their",   "these",   "because",
    "than",     "people",  "thanks", "please", "first", "way",     "well",    "good",    "over",
    "still",    "same",    "much",   "did",    "us",    "who",     "another", "change",  "week",
    "after",    "before",  "next",   "file",   "list",  "meeting", "report",  "project", "problem",
    "question", "might",   "sure",   "where",  "going", "very",    "data",    "each",    "while",
    "both",     "many",    "under",  "right",  "help",  "day",     "look",    "number",  "again",
    "last",     "point",   "since",  "let",    "send",  "find",    "group",   "system",  "today",
    "those",    "version", "team",   "case",   "part",  "working", "through", "without", "though",
    "thing",    "year",    "yet",    "long",   "means", "agree",   "maybe",   "done",
};

// Syllables to make the rest from: onsets, vowels and codas weighted by repeating entries,
// and endings that make a stem look like a noun, verb or adjective.
const char *const kOnsets[] = {"b",  "c",  "d",  "f",  "g",  "h",  "j",  "k",  "l",  "m",
                               "n",  "p",  "r",  "s",  "t",  "v",  "w",  "z",  "br", "ch",
                               "cl", "cr", "dr", "fl", "fr", "gl", "gr", "pl", "pr", "sc",
                               "sh", "sl", "sp", "st", "th", "tr", "",   "",   "s",  "t"};
const char *const kVowels[] = {"a", "e", "i", "o",  "u",  "a",  "e",  "i",
                               "o", "a", "e", "ai", "ea", "ee", "ou", "oo"};
const char *const kCodas[] = {"",   "",   "",   "",   "n",  "r",  "s",  "t",  "l", "m",
                              "nd", "nt", "st", "rk", "ll", "ck", "ng", "rt", "x", "p"};
const char *const kEndings[] = {"",     "",     "",     "",    "",    "",    "",
                                "s",    "s",    "ed",   "er",  "ing", "ly",  "al",
                                "tion", "ment", "ness", "ive", "ous", "able"};

template <size_t N> const char *pick(BenchRandom &random, const char *const (&table)[N]) {
  return table[random.below(N)];
}

// A word of one to three syllables; rarer ranks run longer, as in a language.
std::string makeWord(BenchRandom &random, size_t rank) {
  std::string word;
  const unsigned syllables = 1 + random.below(rank < 1500 ? 2 : 3);
  for (unsigned i = 0; i < syllables; ++i) {
    word += pick(random, kOnsets);
    word += pick(random, kVowels);
    if (i + 1 == syllables || random.below(3) == 0)
      word += pick(random, kCodas);
  }
  return word + pick(random, kEndings);
}

} // namespace

const RealVocabulary &RealVocabulary::shared() {
  static const RealVocabulary vocabulary;
  return vocabulary;
}

RealVocabulary::RealVocabulary() {
  std::unordered_set<std::string> taken;
  for (const char *word : kCommon)
    if (taken.insert(word).second)
      words_.push_back(word);
  BenchRandom random(0x766F6361ull);
  while (words_.size() < kRanked + kNames) {
    std::string word = makeWord(random, words_.size());
    if (word.size() >= 3 && taken.insert(word).second)
      words_.push_back(std::move(word));
  }

  std::vector<double> weights(kRanked);
  double total = 0;
  for (size_t rank = 0; rank < kRanked; ++rank)
    total += weights[rank] = std::pow(static_cast<double>(rank + 1), -1.05);
  double below = 0;
  for (size_t rank = 0; rank < kRanked; ++rank) {
    below += weights[rank];
    bounds_.push_back(static_cast<uint32_t>(std::min(4294967295.0, below / total * 4294967296.0)));
  }
}

size_t RealVocabulary::draw(uint32_t random) const {
  const auto found = std::upper_bound(bounds_.begin(), bounds_.end(), random);
  return std::min(static_cast<size_t>(found - bounds_.begin()), kRanked - 1);
}
