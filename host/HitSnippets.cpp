// Reading a page of hits' messages again for their snippets.
#include "host/HitSnippets.h"

#include "host/MessageLoader.h"
#include "host/Snippet.h"
#include "host/reader/Charset.h"

#include <string_view>

const char kChangedSnippet[] =
    "(its mailbox was written since the index was made: run mhhost index to see it again)";
const char kUnreadableSnippet[] = "(its mailbox can't be read now)";

namespace {

// Without words to mark, a snippet is the text's start, cut before a character it would split
// (the reader's text is valid UTF-8).
constexpr size_t kLeadLength = 100;

std::string leadOf(const std::string &text) {
  return text.substr(0, validUtf8Prefix(std::string_view(text).substr(0, kLeadLength)));
}

} // namespace

void addSnippets(IndexDb &db, const SearchQuery &query, std::vector<SearchHit> &hits) {
  const SnippetMaker maker(db.engine(), query.match, query.markStart, query.markEnd);
  MailboxFile file;
  ReadMessage message;
  for (SearchHit &hit : hits) {
    const StoredRead read =
        readStoredMessage(file, framingOfKey(hit.agentKey),
                          StoredPlace{hit.path, hit.offset, hit.length, hit.hash}, message);
    if (read != StoredRead::Read) {
      hit.snippet = read == StoredRead::Changed ? kChangedSnippet : kUnreadableSnippet;
      continue;
    }
    // The first field that holds a word of the query, in the index's order of columns.
    const std::string attachments = attachmentNames(message);
    const std::string &text = searchedText(message);
    const std::pair<const char *, const std::string *> fields[] = {
        {"body", &text},     {"subject", &message.subject}, {"from", &message.from},
        {"to", &message.to}, {"cc", &message.cc},           {"attachment", &attachments}};
    hit.snippet.clear();
    for (const auto &[column, field] : fields)
      if (hit.snippet.empty())
        hit.snippet = maker.snippet(*field, column);
    if (hit.snippet.empty())
      hit.snippet = leadOf(text);
  }
}
