// A strict reader of flat JSON objects.
#include "tests/host/JsonLine.h"

#include <cstdlib>

namespace {

class Reader {
public:
  explicit Reader(const std::string &text) : text_(text) {}

  bool object(JsonObject &out) {
    skipBlanks();
    if (!take('{'))
      return false;
    skipBlanks();
    if (take('}'))
      return end();
    for (;;) {
      std::string key;
      skipBlanks();
      if (!string(key))
        return false;
      skipBlanks();
      if (!take(':'))
        return false;
      skipBlanks();
      if (peek() == '"') {
        std::string value;
        if (!string(value))
          return false;
        out.strings[key] = value;
      } else {
        long long value = 0;
        if (!number(value))
          return false;
        out.numbers[key] = value;
      }
      skipBlanks();
      if (take('}'))
        return end();
      if (!take(','))
        return false;
    }
  }

private:
  char peek() const { return at_ < text_.size() ? text_[at_] : '\0'; }
  bool take(char c) {
    if (peek() != c || at_ >= text_.size())
      return false;
    ++at_;
    return true;
  }
  void skipBlanks() {
    while (peek() == ' ')
      ++at_;
  }
  bool end() {
    skipBlanks();
    return at_ == text_.size();
  }

  static void appendUtf8(std::string &out, unsigned code) {
    if (code < 0x80) {
      out += static_cast<char>(code);
    } else if (code < 0x800) {
      out += static_cast<char>(0xC0 | code >> 6);
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
      out += static_cast<char>(0xE0 | code >> 12);
      out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    }
  }

  bool string(std::string &out) {
    if (!take('"'))
      return false;
    while (at_ < text_.size()) {
      const unsigned char c = static_cast<unsigned char>(text_[at_++]);
      if (c == '"')
        return true;
      if (c < 0x20)
        return false; // a control character must be escaped
      if (c != '\\') {
        out += static_cast<char>(c);
        continue;
      }
      const char escape = peek();
      ++at_;
      switch (escape) {
      case '"':
        out += '"';
        break;
      case '\\':
        out += '\\';
        break;
      case '/':
        out += '/';
        break;
      case 'b':
        out += '\b';
        break;
      case 'f':
        out += '\f';
        break;
      case 'n':
        out += '\n';
        break;
      case 'r':
        out += '\r';
        break;
      case 't':
        out += '\t';
        break;
      case 'u': {
        if (at_ + 4 > text_.size())
          return false;
        const std::string hex = text_.substr(at_, 4);
        char *end = nullptr;
        const unsigned long code = std::strtoul(hex.c_str(), &end, 16);
        if (end != hex.c_str() + 4)
          return false;
        appendUtf8(out, static_cast<unsigned>(code));
        at_ += 4;
        break;
      }
      default:
        return false;
      }
    }
    return false;
  }

  bool number(long long &value) {
    const size_t start = at_;
    if (peek() == '-')
      ++at_;
    while (peek() >= '0' && peek() <= '9')
      ++at_;
    if (at_ == start || (at_ == start + 1 && text_[start] == '-'))
      return false;
    value = std::strtoll(text_.substr(start, at_ - start).c_str(), nullptr, 10);
    return true;
  }

  const std::string &text_;
  size_t at_ = 0;
};

} // namespace

bool parseJsonLine(const std::string &line, JsonObject &object) {
  return Reader(line).object(object);
}
