// The query language: a lexer, a recursive parser bounded in depth, and the translation of
// its tree into a full-text expression beside conditions.
#include "host/QueryParser.h"

#include "host/Clients.h"
#include "host/TimeText.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>
#include <strings.h>

namespace {

constexpr int kDeepest = 64; // parentheses inside parentheses

const char *const kTextFields[] = {"subject", "from", "to", "cc", "body", "attachment"};
const char *const kOtherFields[] = {"date", "folder", "client", "id"};

bool isOneOf(const std::string &name, const char *const (&names)[6]) {
  for (const char *candidate : names)
    if (strcasecmp(name.c_str(), candidate) == 0)
      return true;
  return false;
}

bool isOtherField(const std::string &name) {
  for (const char *candidate : kOtherFields)
    if (strcasecmp(name.c_str(), candidate) == 0)
      return true;
  return false;
}

std::string lowerCase(std::string text) {
  for (char &letter : text)
    letter = static_cast<char>(std::tolower(static_cast<unsigned char>(letter)));
  return text;
}

struct Token {
  enum Kind { Term, Open, Close, And, Or, Not, End } kind = End;
  std::string field; // lower case; empty for none
  std::string text;
  bool prefix = false;
  size_t position = 0;
};

class Lexer {
public:
  explicit Lexer(const std::string &text) : text_(text) {}

  bool next(Token &token, QueryError &error) {
    while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_])))
      ++at_;
    token = Token();
    token.position = at_;
    if (at_ == text_.size())
      return true;
    const char c = text_[at_];
    if (c == '(' || c == ')') {
      token.kind = c == '(' ? Token::Open : Token::Close;
      ++at_;
      return true;
    }
    if (c == '-' && at_ + 1 < text_.size() &&
        !std::isspace(static_cast<unsigned char>(text_[at_ + 1])) && text_[at_ + 1] != ')') {
      token.kind = Token::Not;
      ++at_;
      return true;
    }
    token.kind = Token::Term;
    if (c == '"')
      return phrase(token, error);
    const size_t start = at_;
    while (at_ < text_.size() && !std::isspace(static_cast<unsigned char>(text_[at_])) &&
           text_[at_] != '(' && text_[at_] != ')' && text_[at_] != '"')
      ++at_;
    std::string word = text_.substr(start, at_ - start);
    const size_t colon = word.find(':');
    if (colon != std::string::npos && colon > 0) {
      const std::string name = lowerCase(word.substr(0, colon));
      if (isOneOf(name, kTextFields) || isOtherField(name)) {
        token.field = name;
        word.erase(0, colon + 1);
        if (word.empty()) {
          if (at_ < text_.size() && text_[at_] == '"')
            return phrase(token, error);
          error = {start, name + ": wants a word, a phrase or a value right behind it"};
          return false;
        }
      }
    }
    if (token.field.empty() &&
        (strcasecmp(word.c_str(), "and") == 0 || strcasecmp(word.c_str(), "or") == 0 ||
         strcasecmp(word.c_str(), "not") == 0)) {
      token.kind = word.size() == 2               ? Token::Or
                   : std::tolower(word[0]) == 'a' ? Token::And
                                                  : Token::Not;
      return true;
    }
    if (word.size() > 1 && word.back() == '*' && !isOtherField(token.field)) {
      token.prefix = true;
      word.pop_back();
    }
    token.text = word;
    return true;
  }

private:
  bool phrase(Token &token, QueryError &error) {
    const size_t open = at_;
    const size_t close = text_.find('"', open + 1);
    if (close == std::string::npos) {
      error = {open, "a double quote is not closed"};
      return false;
    }
    token.text = text_.substr(open + 1, close - open - 1);
    at_ = close + 1;
    if (at_ < text_.size() && text_[at_] == '*') {
      token.prefix = true;
      ++at_;
    }
    return true;
  }

  const std::string &text_;
  size_t at_ = 0;
};

struct Node {
  enum Kind { Term, And, Or, Not } kind = Term;
  Token term;
  std::vector<std::unique_ptr<Node>> children;
  size_t position = 0;
  bool hasCondition() const {
    if (kind == Term)
      return isOtherField(term.field);
    for (const auto &child : children)
      if (child->hasCondition())
        return true;
    return false;
  }
};

class Parser {
public:
  Parser(const std::string &text, QueryError &error) : lexer_(text), error_(error) {}

  std::unique_ptr<Node> parse() {
    if (!advance())
      return nullptr;
    std::unique_ptr<Node> root = parseOr(0);
    if (root && token_.kind != Token::End) {
      error_ = {token_.position, token_.kind == Token::Close
                                     ? "this parenthesis closes none that was opened"
                                     : "this does not belong here"};
      return nullptr;
    }
    return root;
  }

private:
  bool advance() { return lexer_.next(token_, error_); }

  std::unique_ptr<Node> parseOr(int depth) {
    std::unique_ptr<Node> left = parseAnd(depth);
    if (!left || token_.kind != Token::Or)
      return left;
    auto any = std::make_unique<Node>();
    any->kind = Node::Or;
    any->position = left->position;
    any->children.push_back(std::move(left));
    while (token_.kind == Token::Or) {
      if (!advance())
        return nullptr;
      std::unique_ptr<Node> right = parseAnd(depth);
      if (!right)
        return nullptr;
      any->children.push_back(std::move(right));
    }
    return any;
  }

  bool startsUnary() const {
    return token_.kind == Token::Term || token_.kind == Token::Open || token_.kind == Token::Not;
  }

  std::unique_ptr<Node> parseAnd(int depth) {
    std::unique_ptr<Node> first = parseUnary(depth);
    if (!first)
      return nullptr;
    auto all = std::make_unique<Node>();
    all->kind = Node::And;
    all->position = first->position;
    all->children.push_back(std::move(first));
    while (token_.kind == Token::And || startsUnary()) {
      if (token_.kind == Token::And && !advance())
        return nullptr;
      std::unique_ptr<Node> next = parseUnary(depth);
      if (!next)
        return nullptr;
      all->children.push_back(std::move(next));
    }
    if (all->children.size() == 1)
      return std::move(all->children.front());
    return all;
  }

  std::unique_ptr<Node> parseUnary(int depth) {
    const size_t position = token_.position;
    if (token_.kind == Token::Not) {
      if (!advance())
        return nullptr;
      std::unique_ptr<Node> inner = parseUnary(depth + 1);
      if (!inner)
        return nullptr;
      auto negated = std::make_unique<Node>();
      negated->kind = Node::Not;
      negated->position = position;
      negated->children.push_back(std::move(inner));
      return negated;
    }
    if (depth > kDeepest) {
      error_ = {position, "the query nests too deep"};
      return nullptr;
    }
    if (token_.kind == Token::Open) {
      if (!advance())
        return nullptr;
      std::unique_ptr<Node> inner = parseOr(depth + 1);
      if (!inner)
        return nullptr;
      if (token_.kind != Token::Close) {
        error_ = {position, "this parenthesis is not closed"};
        return nullptr;
      }
      if (!advance())
        return nullptr;
      return inner;
    }
    if (token_.kind != Token::Term) {
      error_ = {position, token_.kind == Token::End ? "the query ends where a word was expected"
                          : token_.kind == Token::Close
                              ? "a word is missing before this parenthesis"
                              : "a word is missing before this operator"};
      return nullptr;
    }
    auto term = std::make_unique<Node>();
    term->term = token_;
    term->position = position;
    if (!advance())
      return nullptr;
    return term;
  }

  Lexer lexer_;
  QueryError &error_;
  Token token_;
};

// ---- dates

// A point of a date value as the span it names, [from, to).
bool dateSpan(const std::string &text, time_t now, int64_t &from, int64_t &to) {
  struct tm today = {};
  localtime_r(&now, &today);
  const int year = today.tm_year + 1900, month = today.tm_mon + 1, day = today.tm_mday;
  if (text == "today" || text == "yesterday") {
    const int back = text == "today" ? 0 : 1;
    from = localMoment(year, month, day - back);
    to = localMoment(year, month, day - back + 1);
    return true;
  }
  // 7d, 2w, 3m, 1y: that long ago, to now.
  if (text.size() >= 2 && std::string("dwmy").find(text.back()) != std::string::npos &&
      text.find_first_not_of("0123456789") == text.size() - 1 && text.size() <= 6) {
    const int count = std::stoi(text.substr(0, text.size() - 1));
    const char unit = text.back();
    from = unit == 'd'   ? localMoment(year, month, day - count)
           : unit == 'w' ? localMoment(year, month, day - 7 * count)
           : unit == 'm' ? localMoment(year, month - count, day)
                         : localMoment(year - count, month, day);
    to = localMoment(year, month, day + 1);
    return true;
  }
  int y = 0, m = 0, d = 0;
  char rest = 0;
  const int read = std::sscanf(text.c_str(), "%4d-%2d-%2d%c", &y, &m, &d, &rest);
  const bool wellFormed = (read == 1 && text.size() == 4) || (read == 2 && text.size() == 7) ||
                          (read == 3 && text.size() == 10);
  if (!wellFormed || y < 1900 || y > 2200 || (read >= 2 && (m < 1 || m > 12)) ||
      (read == 3 && (d < 1 || d > 31)))
    return false;
  from = localMoment(y, read >= 2 ? m : 1, read == 3 ? d : 1);
  to = read == 1   ? localMoment(y + 1, 1, 1)
       : read == 2 ? localMoment(y, m + 1, 1)
                   : localMoment(y, m, d + 1);
  return true;
}

bool dateRange(const std::string &value, time_t now, int64_t &since, int64_t &until) {
  const size_t dots = value.find("..");
  int64_t from = 0, to = 0, ignored = 0;
  if (dots == std::string::npos) {
    if (!dateSpan(value, now, from, to))
      return false;
    since = from;
    until = to - 1;
    return true;
  }
  const std::string first = value.substr(0, dots), last = value.substr(dots + 2);
  if (first.empty() && last.empty())
    return false;
  since = INT64_MIN;
  until = INT64_MAX;
  if (!first.empty() && !dateSpan(first, now, since, ignored))
    return false;
  if (!last.empty()) {
    if (!dateSpan(last, now, ignored, to))
      return false;
    until = to - 1;
  }
  return since <= until;
}

// ---- translation

std::string quoted(const std::string &text) {
  std::string out = "\"";
  for (const char c : text)
    out += c == '"' ? std::string("\"\"") : std::string(1, c);
  return out + "\"";
}

class Translator {
public:
  Translator(time_t now, ParsedQuery &query, QueryError &error)
      : now_(now), query_(query), error_(error) {}

  bool top(const Node &root) {
    std::vector<const Node *> items;
    if (root.kind == Node::And)
      for (const auto &child : root.children)
        items.push_back(child.get());
    else
      items.push_back(&root);
    std::vector<std::string> positive, negative;
    for (const Node *item : items) {
      const bool negated = item->kind == Node::Not;
      const Node &inner = negated ? *item->children.front() : *item;
      if (inner.kind == Node::Term && isOtherField(inner.term.field)) {
        if (negated)
          return fail(item->position, "NOT does not go with " + inner.term.field + ":");
        if (!condition(inner))
          return false;
        continue;
      }
      if (inner.hasCondition())
        return fail(inner.position, "date:, folder:, client: and id: stand beside the words, "
                                    "not inside parentheses or OR");
      std::string text;
      if (!fts(inner, text))
        return false;
      (negated ? negative : positive).push_back(text);
    }
    query_.match = join(positive, " AND ");
    if (!positive.empty() && !negative.empty())
      query_.match = "(" + query_.match + ") NOT (" + join(negative, " OR ") + ")";
    else if (positive.empty())
      query_.without = negative;
    return true;
  }

private:
  static std::string join(const std::vector<std::string> &parts, const char *between) {
    std::string text;
    for (const std::string &part : parts)
      text += (text.empty() ? "" : between) + part;
    return text;
  }

  bool fail(size_t position, const std::string &what) {
    error_ = {position, what};
    return false;
  }

  bool fts(const Node &node, std::string &out) {
    if (node.kind == Node::Term) {
      if (node.term.text.find_first_not_of(" \t") == std::string::npos)
        return fail(node.position, "an empty phrase finds nothing");
      out = (node.term.field.empty() ? "" : "\"" + node.term.field + "\" : ") +
            quoted(node.term.text) + (node.term.prefix ? " *" : "");
      return true;
    }
    if (node.kind == Node::Not)
      return fail(node.position, "NOT inside parentheses or OR needs a word beside it, as in "
                                 "(a NOT b)");
    std::vector<std::string> positive, negative;
    for (const auto &child : node.children) {
      const bool negated = node.kind == Node::And && child->kind == Node::Not;
      std::string text;
      if (!fts(negated ? *child->children.front() : *child, text))
        return false;
      (negated ? negative : positive).push_back(text);
    }
    if (positive.empty())
      return fail(node.position, "NOT inside parentheses needs a word beside it, as in (a NOT b)");
    out = "(" + join(positive, node.kind == Node::And ? " AND " : " OR ") + ")";
    if (!negative.empty())
      out = "(" + out + " NOT (" + join(negative, " OR ") + "))";
    return true;
  }

  bool condition(const Node &node) {
    const std::string &field = node.term.field, &value = node.term.text;
    if (field == "date") {
      int64_t since = 0, until = 0;
      if (!dateRange(value, now_, since, until))
        return fail(node.position, "date: wants a day, month or year (1998-03-14, 1998-03, "
                                   "1998), a range of them with .., or today, yesterday, 7d..");
      query_.dated = true;
      query_.since = std::max(query_.since, since);
      query_.until = std::min(query_.until, until);
    } else if (field == "folder") {
      query_.folders.push_back(value);
    } else if (field == "client") {
      const ClientInfo *const client = findClient(lowerCase(value));
      if (client == nullptr)
        return fail(node.position, "client: is one of " + clientNames());
      query_.clientTags.push_back(client->tag);
    } else {
      if (value.empty() || value.size() > 18 ||
          value.find_first_not_of("0123456789") != std::string::npos)
        return fail(node.position, "id: wants the number of a hit");
      query_.ids.push_back(std::stoll(value));
    }
    return true;
  }

  time_t now_;
  ParsedQuery &query_;
  QueryError &error_;
};

} // namespace

bool parseQuery(const std::string &typed, time_t now, ParsedQuery &query, QueryError &error) {
  query = ParsedQuery();
  // Control characters, a zero byte among them, are blanks: no word holds one.
  std::string text = typed;
  for (char &c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F)
      c = ' ';
  if (text.find_first_not_of(' ') == std::string::npos) {
    error = {0, "the query is empty"};
    return false;
  }
  Parser parser(text, error);
  const std::unique_ptr<Node> root = parser.parse();
  return root && Translator(now, query, error).top(*root);
}
