// How long mhhost search takes, parse and search together, as a person at a terminal waits
// for it: a fixed set of queries of every form of the query language, each run as a process
// of its own on an index already made, reported as p50 and p99.
#pragma once

#include <string>
#include <vector>

// What the queries are made of: words of the store's mail, a year it holds, a word of its
// senders' addresses and a folder.
struct QueryWords {
  std::vector<std::string> words;
  std::string year, senderWord, folder;
};

// The everyday store's (MailCorpus's).
QueryWords everydayQueryWords();

// Prints one line: the number of queries, p50, p99 and the slowest, in milliseconds.
void measureQueries(const std::string &mhhost, const std::string &registry,
                    const std::string &database, const std::string &client,
                    const QueryWords &words);
