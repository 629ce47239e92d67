// The words of the real-shaped mail: 5,000 of them ranked as a language ranks its words, the
// commonest English words first and the rest made up from syllables, drawn with Zipf-like
// frequencies (rank r about as often as 1/r^1.05). So a common word is in nearly every
// message and a rare one in a few of a hundred, as in a person's mail, which is what a
// search's cost depends on.
//
// Made from a fixed seed and no files: the same words on every run and machine, whatever
// seed a store is written with, so that a benchmark can name the word of a given rank.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

class RealVocabulary {
public:
  static const RealVocabulary &shared();

  // The ranked words; 0 is the commonest.
  size_t size() const { return kRanked; }
  const std::string &word(size_t rank) const { return words_[rank]; }
  // A rank, drawn by frequency from 32 random bits.
  size_t draw(uint32_t random) const;
  // Made-up words that are never drawn, for the names of companies, domains and lists: a
  // search for a ranked word then finds it in the text, not in every address of a sender.
  const std::string &name(size_t index) const { return words_[kRanked + index % kNames]; }

  static constexpr size_t kRanked = 5000;
  static constexpr size_t kNames = 200;

private:
  RealVocabulary();

  std::vector<std::string> words_;
  std::vector<uint32_t> bounds_; // the draws below bounds_[r] and not below bounds_[r - 1] pick r
};
