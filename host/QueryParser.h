// The query language of mhhost search, read into what the index asks: a full-text expression
// of its words and the conditions on dates, folders, stores and ids beside it.
//
//   garden party              both words (arguments and words are ANDed)
//   "garden party"            the phrase
//   garden OR party, (a OR b) c, NOT draft, -draft, garden AND NOT draft
//   garden*                   a prefix
//   quarterly-report, ann@example.org, v2.1   words with punctuation: phrases of their parts
//   subject: from: to: cc: body: attachment:  a word, phrase or prefix in one field
//   date:1998  date:1998-03  date:1998-03-14  date:1997..1998-06  date:..1998  date:1998..
//   date:today  date:yesterday  date:7d..  date:2w..  date:3m..  date:1y..   (local time)
//   folder:Archive            a part of the mailbox's path
//   client:netscape           the store's client
//   id:42                     one message
//
// AND, OR and NOT are operators in any case. date:, folder:, client: and id: stand beside the
// words, not inside OR or parentheses.
#pragma once

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

struct ParsedQuery {
  // The full-text expression the index matches (FTS5), empty when the query has no word
  // that must be found.
  std::string match;
  // Full-text expressions of words that must not be found, where no word must be.
  std::vector<std::string> without;
  // Conditions beside the words, all of which must hold.
  bool dated = false;
  int64_t since = INT64_MIN, until = INT64_MAX; // true dates, UTC seconds, both included
  std::vector<std::string> folders;             // parts of the mailbox's path
  std::vector<std::string> clientTags;          // "MHNetscape"
  std::vector<int64_t> ids;
};

struct QueryError {
  size_t position = 0; // of the place in the query, in bytes
  std::string what;
};

// Reads `text`; `now` is what today and relative dates count from. False with `error`.
bool parseQuery(const std::string &text, time_t now, ParsedQuery &query, QueryError &error);
