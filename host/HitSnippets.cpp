// Reading a page of hits' messages again for their snippets.
#include "host/HitSnippets.h"

#include "host/MessageLoader.h"

#include <memory>

const char kChangedSnippet[] =
    "(its mailbox was written since the index was made: run mhhost index to see it again)";
const char kUnreadableSnippet[] = "(its mailbox can't be read now)";

namespace {

// Without words to mark, a snippet is the text's start, cut at a character's first byte.
constexpr size_t kLeadLength = 100;

std::string leadOf(const std::string &text) {
  size_t end = std::min(text.size(), kLeadLength);
  while (end < text.size() && end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
    --end;
  return text.substr(0, end);
}

} // namespace

void addSnippets(IndexDb &db, const SearchQuery &query, std::vector<SearchHit> &hits) {
  MailboxFile file;
  std::vector<std::unique_ptr<ReadMessage>> messages;
  std::vector<ShownMessage> shown;
  for (SearchHit &hit : hits) {
    std::unique_ptr<ReadMessage> message(new ReadMessage);
    const StoredRead read =
        readStoredMessage(file, framingOfKey(hit.agentKey),
                          StoredPlace{hit.path, hit.offset, hit.length, hit.hash}, *message);
    if (read != StoredRead::Read) {
      hit.snippet = read == StoredRead::Changed ? kChangedSnippet : kUnreadableSnippet;
      continue;
    }
    hit.snippet = leadOf(searchedText(*message));
    shown.push_back(ShownMessage{hit.id, message.get()});
    messages.push_back(std::move(message));
  }
  const std::map<int64_t, std::string> marked = db.snippets(query, shown);
  for (SearchHit &hit : hits) {
    const auto found = marked.find(hit.id);
    if (found != marked.end())
      hit.snippet = found->second;
  }
}
