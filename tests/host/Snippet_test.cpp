// Snippets from the query language's expressions, made with the index's own tokenizer.
#include "host/QueryParser.h"
#include "host/Snippet.h"
#include <gtest/gtest.h>
#include <memory>

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

} // namespace
