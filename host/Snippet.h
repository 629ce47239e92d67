// Snippets from text the index does not keep: the words of a query, found with the index's own
// tokenizer (so that they fold and split as the index does), marked in the window of a text
// that holds most of them.
#pragma once

#include <sqlite3.h>

#include <string>
#include <vector>

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
