// The query language, form by form: what reaches the full-text index, and the conditions beside it.
#include "host/QueryParser.h"
#include <gtest/gtest.h>
#include <tuple>

namespace {
time_t localTime(int year, int month, int day) {
  struct tm fields = {};
  fields.tm_year = year - 1900, fields.tm_mon = month - 1, fields.tm_mday = day;
  fields.tm_isdst = -1;
  return mktime(&fields);
}

const time_t kNow = localTime(1998, 3, 14) + time_t{12} * 3600; // noon, 14 March 1998

TEST(QueryParserTest, WordsOperatorsAndFieldsBecomeOneQuotedExpression) {
  const std::pair<const char *, const char *> cases[] = {
      {"garden party", "\"garden\" AND \"party\""},
      {"\"garden party\"", "\"garden party\""},
      {"garden or party", "(\"garden\" OR \"party\")"},
      {"garden OR party AND tea", "(\"garden\" OR (\"party\" AND \"tea\"))"},
      {"(a OR b) c", "(\"a\" OR \"b\") AND \"c\""},
      {"garden -draft", "(\"garden\") NOT (\"draft\")"},
      {"garden and not draft NOT final", "(\"garden\") NOT (\"draft\" OR \"final\")"},
      {"(a -b) OR c", "(((\"a\") NOT (\"b\")) OR \"c\")"},
      {"garden*", "\"garden\" *"},
      {"quarterly-report v2.1", "\"quarterly-report\" AND \"v2.1\""},
      {"ann@example.org", "\"ann@example.org\""},
      {"Subject:report from:\"Ann Lee\" attachment:invoice*",
       "\"subject\" : \"report\" AND \"from\" : \"Ann Lee\" AND \"attachment\" : \"invoice\" *"},
      {"re:status", "\"re:status\""}, // no field: a word
  };
  for (const auto &[text, match] : cases) {
    ParsedQuery query;
    QueryError error;
    ASSERT_TRUE(parseQuery(text, kNow, query, error)) << text << ": " << error.what;
    EXPECT_EQ(query.match, match) << text;
  }
  // Only words that must be missing: no expression to match, the words to leave out.
  ParsedQuery query;
  QueryError error;
  ASSERT_TRUE(parseQuery("NOT draft -final", kNow, query, error));
  EXPECT_EQ(query.match, "");
  EXPECT_EQ(query.without, (std::vector<std::string>{"\"draft\"", "\"final\""}));
}

TEST(QueryParserTest, DatesFoldersClientsAndIdsStandBeside) {
  // Each condition, its first second, and the one after its last (0: open).
  const std::tuple<const char *, time_t, time_t> dates[] = {
      {"date:1998", localTime(1998, 1, 1), localTime(1999, 1, 1)},
      {"date:1998-03", localTime(1998, 3, 1), localTime(1998, 4, 1)},
      {"date:1998-03-14", localTime(1998, 3, 14), localTime(1998, 3, 15)},
      {"date:1997..1998-06", localTime(1997, 1, 1), localTime(1998, 7, 1)},
      {"date:today", localTime(1998, 3, 14), localTime(1998, 3, 15)},
      {"date:yesterday", localTime(1998, 3, 13), localTime(1998, 3, 14)},
      {"date:7d..", localTime(1998, 3, 7), 0},
      {"date:2w..", localTime(1998, 2, 28), 0},
      {"date:3m..", localTime(1997, 12, 14), 0},
      {"date:1y..", localTime(1997, 3, 14), 0},
      {"date:..1997", 0, localTime(1998, 1, 1)},
  };
  for (const auto &[text, since, until] : dates) {
    ParsedQuery query;
    QueryError error;
    ASSERT_TRUE(parseQuery(std::string("garden ") + text, kNow, query, error)) << text;
    EXPECT_TRUE(query.dated);
    EXPECT_EQ(query.match, "\"garden\"");
    EXPECT_EQ(query.since, since != 0 ? since : INT64_MIN) << text;
    EXPECT_EQ(query.until, until != 0 ? until - 1 : INT64_MAX) << text;
  }
  ParsedQuery query;
  QueryError error;
  ASSERT_TRUE(parseQuery("folder:Archive client:Netscape id:42", kNow, query, error));
  EXPECT_EQ(query.match, "");
  EXPECT_EQ(query.folders, std::vector<std::string>{"Archive"});
  EXPECT_EQ(query.clientTags, std::vector<std::string>{"MHNetscape"});
  EXPECT_EQ(query.ids, std::vector<int64_t>{42});
}

TEST(QueryParserTest, AnyInputIsAQueryOrAnErrorAtAPlaceInIt) {
  for (const char *bad : {"", "(((", ")", "AND", "a OR", "\"", "date:", "date:1998..1997",
                          "date:19", "id:x", "(a OR folder:x)", "NOT date:1998"}) {
    ParsedQuery query;
    QueryError error;
    EXPECT_FALSE(parseQuery(bad, kNow, query, error)) << bad;
    EXPECT_LE(error.position, std::string(bad).size()) << bad;
    EXPECT_FALSE(error.what.empty()) << bad;
  }
  ParsedQuery query;
  QueryError error;
  EXPECT_FALSE(parseQuery(std::string(100000, '('), kNow, query, error));
  EXPECT_EQ(error.what, "the query nests too deep");
}
} // namespace
