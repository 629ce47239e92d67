// Snippets from text the index does not keep: the words of a query, found with the index's own
// tokenizer (so that they fold and split as the index does), marked in the window of a text
// that holds most of them.
#pragma once

#include <sqlite3.h>

#include <array>
#include <string>
#include <vector>

// Calls `take` with where each word of `text`, which must be ASCII, starts and ends, as the
// index's tokenizer splits it: runs of letters and digits (which it folds to lower case). A
// word at a time through the tokenizer took most of a snippet's time.
template <typename Take> void eachAsciiWord(const std::string &text, Take take) {
  static constexpr auto kWordBytes = [] {
    std::array<bool, 256> bytes{};
    for (int c = 0; c < 256; ++c)
      bytes[c] = (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    return bytes;
  }();
  const auto isWord = [](char c) { return kWordBytes[static_cast<unsigned char>(c)]; };
  const size_t size = text.size();
  for (size_t at = 0;;) {
    while (at < size && !isWord(text[at]))
      ++at;
    const size_t start = at;
    while (at < size && isWord(text[at]))
      ++at;
    if (at == start)
      return;
    take(static_cast<int>(start), static_cast<int>(at));
  }
}

class SnippetMaker {
public:
  // `match` is a full-text expression as the query language writes it: its quoted words
  // (and prefixes, a quote followed by `*`) are what is marked.
  SnippetMaker(sqlite3 *db, const std::string &match, std::string markStart, std::string markEnd);
  SnippetMaker(const SnippetMaker &) = delete;
  SnippetMaker &operator=(const SnippetMaker &) = delete;
  ~SnippetMaker();

  // About a dozen words of `text`, the index's `column`, around the most of the query's words
  // (those without a column filter, and those for this column), marked; "..." where the text
  // goes on. Empty when no such word is in it.
  std::string snippet(const std::string &text, const std::string &column) const;

private:
  struct Token {
    int start, end;
    bool matches;
  };
  template <typename Take> void tokenize(const std::string &text, int flags, Take take) const;
  // Whether a word of the text, folded or ASCII in any case, is one of the query's.
  bool matches(const char *token, int size, const std::string &column) const;

  fts5_tokenizer api_ = {};
  Fts5Tokenizer *tokenizer_ = nullptr;
  struct Word {
    std::string text; // folded as the index folds it
    bool prefix;
    std::string column; // empty: any
  };
  std::vector<Word> words_;
  std::string markStart_, markEnd_;
};
