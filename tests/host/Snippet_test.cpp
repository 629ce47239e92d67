// Snippets from the query language's expressions, made with the index's own tokenizer.
#include "host/QueryParser.h"
#include "host/Snippet.h"
#include <cctype>
#include <gtest/gtest.h>
#include <memory>
#include <random>

namespace {
std::string snippetOf(const std::string &query, const std::string &text,
                      const std::string &column = "body") {
  sqlite3 *opened = nullptr;
  sqlite3_open(":memory:", &opened);
  const std::unique_ptr<sqlite3, int (*)(sqlite3 *)> db(opened, sqlite3_close);
  ParsedQuery parsed;
  QueryError error;
  EXPECT_TRUE(parseQuery(query, 0, parsed, error)) << error.what;
  return SnippetMaker(db.get(), parsed.match, "[", "]").snippet(text, column);
}

TEST(SnippetTest, MarksTheQuerysWordsInAWindowOfSixteenWords) {
  EXPECT_EQ("The [Résumé] is [ready]", snippetOf("resume READY", "The Résumé is ready"));
  EXPECT_EQ("[quarterly]-[report] and [reporting]",
            snippetOf("quarterly-report report*", "quarterly-report and reporting"));
  // A word in one field is marked there only.
  EXPECT_EQ("", snippetOf("subject:draft", "a draft"));
  EXPECT_EQ("a [draft]", snippetOf("subject:draft", "a draft", "subject"));
  // Words that must not be found are not marked; a text without the words has no snippet.
  EXPECT_EQ("[cat] and dog", snippetOf("cat -dog", "cat and dog"));
  EXPECT_EQ("[cat] and dog or [fern]",
            snippetOf("(cat OR fern) NOT (dog OR moss)", "cat and dog or fern"));
  EXPECT_EQ("", snippetOf("fern", "cat and dog"));
  // A window of sixteen words around the most matches.
  std::string text;
  for (int i = 0; i < 40; ++i)
    text += "w" + std::to_string(i) + (i == 20 || i == 22 ? " hit " : " ");
  const std::string snippet = snippetOf("hit", text);
  EXPECT_EQ("...w15 w16 w17 w18 w19 w20 [hit] w21 w22 [hit] w23 w24 w25 w26 w27 w28...", snippet);
  EXPECT_EQ("w0 w1 [hit]", snippetOf("hit", "w0 w1 hit"));
}

// ASCII text is split without the engine, as the engine splits it: checked against
// the words the full-text table itself keeps of random ASCII, every byte below 128 in it.
TEST(SnippetTest, AsciiWordsAreTheIndexsOwn) {
  sqlite3 *opened = nullptr;
  sqlite3_open(":memory:", &opened);
  const std::unique_ptr<sqlite3, int (*)(sqlite3 *)> db(opened, sqlite3_close);
  ASSERT_EQ(SQLITE_OK,
            sqlite3_exec(db.get(),
                         "CREATE VIRTUAL TABLE t USING fts5(x, tokenize = 'unicode61 "
                         "remove_diacritics 2'); CREATE VIRTUAL TABLE v USING fts5vocab(t, "
                         "instance)",
                         nullptr, nullptr, nullptr));
  std::mt19937 random(7);
  const std::string common = "aZ9 _'-.\t\n\x01\x7f";
  for (int round = 0; round < 200; ++round) {
    std::string text;
    for (int i = 0; i < 64; ++i)
      text += random() % 2 ? common[random() % common.size()] : static_cast<char>(random() % 128);
    sqlite3_exec(db.get(), "DELETE FROM t", nullptr, nullptr, nullptr);
    sqlite3_stmt *insert = nullptr;
    sqlite3_prepare_v2(db.get(), "INSERT INTO t(rowid, x) VALUES(1, ?)", -1, &insert, nullptr);
    sqlite3_bind_blob(insert, 1, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
    ASSERT_EQ(SQLITE_DONE, sqlite3_step(insert));
    sqlite3_finalize(insert);
    std::vector<std::string> engine, ours;
    sqlite3_stmt *select = nullptr;
    sqlite3_prepare_v2(db.get(), "SELECT term FROM v ORDER BY offset", -1, &select, nullptr);
    while (sqlite3_step(select) == SQLITE_ROW)
      engine.emplace_back(reinterpret_cast<const char *>(sqlite3_column_text(select, 0)));
    sqlite3_finalize(select);
    eachAsciiWord(text, [&](int start, int end) {
      std::string word = text.substr(static_cast<size_t>(start), static_cast<size_t>(end - start));
      for (char &c : word)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      ours.push_back(word);
    });
    EXPECT_EQ(ours, engine) << text;
  }
}

} // namespace
