// Marking a query's words in a text with the full-text engine's tokenizer.
#include "host/Snippet.h"

#include <algorithm>

namespace {

// Words in a snippet, as the index's snippets had them.
constexpr size_t kWindow = 16;

fts5_api *fts5Of(sqlite3 *db) {
  fts5_api *api = nullptr;
  sqlite3_stmt *statement = nullptr;
  if (sqlite3_prepare_v2(db, "SELECT fts5(?1)", -1, &statement, nullptr) == SQLITE_OK) {
    sqlite3_bind_pointer(statement, 1, &api, "fts5_api_ptr", nullptr);
    sqlite3_step(statement);
  }
  sqlite3_finalize(statement);
  return api;
}

struct QuotedString {
  std::string text;
  bool prefix;        // a `*` follows it
  std::string column; // a column filter ahead of it: `"subject" : "word"`
};

// The quoted strings of an expression that stand for words to be found: not a column's name,
// nor what follows NOT (a word, or a group in parentheses).
std::vector<QuotedString> quotedStrings(const std::string &expression) {
  std::vector<QuotedString> found;
  std::string column;
  bool negated = false;  // the next word or group follows NOT
  int negatedDepth = -1; // the depth of the group NOT stands before, while in it
  int depth = 0;
  for (size_t at = 0; at < expression.size(); ++at) {
    const char c = expression[at];
    if (c == '(' || c == ')') {
      depth += c == '(' ? 1 : -1;
      if (c == '(' && negated) {
        negatedDepth = depth;
        negated = false;
      } else if (c == ')' && depth < negatedDepth) {
        negatedDepth = -1;
      }
      continue;
    }
    if (expression.compare(at, 4, "NOT ") == 0) {
      negated = true;
      at += 3;
      continue;
    }
    if (c != '"')
      continue;
    std::string text;
    for (++at; at < expression.size(); ++at) {
      if (expression[at] == '"' && at + 1 < expression.size() && expression[at + 1] == '"')
        text += expression[++at];
      else if (expression[at] == '"')
        break;
      else
        text += expression[at];
    }
    const size_t next = expression.find_first_not_of(' ', at + 1);
    const char following = next != std::string::npos ? expression[next] : '\0';
    if (following == ':') {
      column = text;
      continue;
    }
    if (!negated && negatedDepth < 0)
      found.push_back(QuotedString{text, following == '*', column});
    negated = false;
    column.clear();
  }
  return found;
}

} // namespace

template <typename Take>
void SnippetMaker::tokenize(const std::string &text, int flags, Take take) const {
  const auto callback = [](void *context, int, const char *token, int size, int start,
                           int end) -> int {
    (*static_cast<Take *>(context))(token, size, start, end);
    return SQLITE_OK;
  };
  api_.xTokenize(tokenizer_, &take, flags, text.data(), static_cast<int>(text.size()), callback);
}

SnippetMaker::SnippetMaker(sqlite3 *db, const std::string &match, std::string markStart,
                           std::string markEnd)
    : markStart_(std::move(markStart)), markEnd_(std::move(markEnd)) {
  fts5_api *const fts5 = fts5Of(db);
  void *userData = nullptr;
  const char *arguments[] = {"remove_diacritics", "2"};
  if (fts5 == nullptr || fts5->xFindTokenizer(fts5, "unicode61", &userData, &api_) != SQLITE_OK ||
      api_.xCreate(userData, arguments, 2, &tokenizer_) != SQLITE_OK) {
    tokenizer_ = nullptr;
    return;
  }
  for (const QuotedString &quoted : quotedStrings(match))
    tokenize(quoted.text, FTS5_TOKENIZE_QUERY, [&](const char *token, int size, int, int) {
      words_.push_back(
          Word{std::string(token, static_cast<size_t>(size)), quoted.prefix, quoted.column});
    });
}

SnippetMaker::~SnippetMaker() {
  if (tokenizer_ != nullptr)
    api_.xDelete(tokenizer_);
}

bool SnippetMaker::matches(const char *token, int size, const std::string &column) const {
  // The query's words are folded; ASCII letters of the text are folded here, and a folded
  // token's are lower case already.
  const auto folded = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; };
  const size_t length = static_cast<size_t>(size);
  for (const Word &word : words_) {
    const size_t wanted = word.text.size();
    if (length < wanted || (!word.prefix && length != wanted))
      continue;
    size_t same = 0;
    while (same < wanted && folded(token[same]) == word.text[same])
      ++same;
    if (same == wanted && (word.column.empty() || word.column == column))
      return true;
  }
  return false;
}

std::string SnippetMaker::snippet(const std::string &text, const std::string &column) const {
  if (tokenizer_ == nullptr || words_.empty())
    return std::string();
  std::vector<Token> tokens;
  tokens.reserve(text.size() / 6); // about a word's length and a blank
  if (std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; }))
    eachAsciiWord(text, [&](int start, int end) {
      tokens.push_back(Token{start, end, matches(text.data() + start, end - start, column)});
    });
  else
    tokenize(text, FTS5_TOKENIZE_DOCUMENT, [&](const char *token, int size, int start, int end) {
      tokens.push_back(Token{start, end, matches(token, size, column)});
    });
  // The first window with the most marked words.
  size_t best = 0, bestCount = 0, count = 0;
  for (size_t i = 0; i < tokens.size(); ++i) {
    count += tokens[i].matches ? 1 : 0;
    if (i >= kWindow)
      count -= tokens[i - kWindow].matches ? 1 : 0;
    const size_t first = i + 1 >= kWindow ? i + 1 - kWindow : 0;
    if (count > bestCount) {
      bestCount = count;
      best = first;
    }
  }
  if (bestCount == 0)
    return std::string();
  // The marked words in the middle of the window, as far as the text allows.
  size_t firstMark = best, lastMark = best;
  for (size_t i = best; i < std::min(tokens.size(), best + kWindow); ++i)
    if (tokens[i].matches) {
      firstMark = tokens[firstMark].matches ? firstMark : i;
      lastMark = i;
    }
  const size_t room = (kWindow - (lastMark - firstMark + 1)) / 2;
  best = std::min(firstMark - std::min(firstMark, room),
                  tokens.size() - std::min(tokens.size(), kWindow));
  const size_t last = std::min(tokens.size(), best + kWindow) - 1;
  std::string out = best > 0 ? "..." : "";
  for (size_t i = best; i <= last; ++i) {
    if (i > best)
      out.append(text, static_cast<size_t>(tokens[i - 1].end),
                 static_cast<size_t>(tokens[i].start - tokens[i - 1].end));
    const std::string word(text, static_cast<size_t>(tokens[i].start),
                           static_cast<size_t>(tokens[i].end - tokens[i].start));
    out += tokens[i].matches ? markStart_ + word + markEnd_ : word;
  }
  return out + (last + 1 < tokens.size() ? "..." : "");
}
