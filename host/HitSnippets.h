// The snippets of a page of hits, made from their messages, which the index does not copy.
#pragma once

#include "host/IndexDb.h"

#include <vector>

// The snippet of a hit whose mailbox was written since it was indexed: its bytes are not
// where they were, and what the index says of it may be out of date.
extern const char kChangedSnippet[];
// The snippet of a hit whose mailbox file can't be read now.
extern const char kUnreadableSnippet[];

// Fills in each hit's snippet: the words of `query` marked in the message's text, or, for a
// query without words, the text's start.
void addSnippets(IndexDb &db, const SearchQuery &query, std::vector<SearchHit> &hits);
