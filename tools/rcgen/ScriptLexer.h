// Reading a resource script: the names that #define lines give, and the tokens of the text.
//
// Part of tuk_rcgen. An error prints "file:line: message" and ends the program with status 1.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <utility>

namespace rcgen {

[[noreturn]] inline void fail(const std::string &file, int line, const std::string &message) {
  std::fprintf(stderr, "%s:%d: %s\n", file.c_str(), line, message.c_str());
  std::exit(1);
}

// A character as an error message shows it: itself when printable, else in hex.
inline std::string shown(char c) {
  const unsigned char byte = static_cast<unsigned char>(c);
  char text[8];
  std::snprintf(text, sizeof text, std::isprint(byte) ? "%c" : "\\x%02X", byte);
  return text;
}

inline bool readText(const std::string &path, std::string &text) {
  std::ifstream in(path, std::ios::binary);
  if (!in)
    return false;
  std::ostringstream bytes;
  bytes << in.rdbuf();
  text = bytes.str();
  return true;
}

struct Define {
  std::string value;
  std::string file;
  int line;
};

// The names of #define lines, from the script and the headers it includes.
class Symbols {
public:
  // Handles one preprocessor line of `file`; `dir` is the folder that includes start from,
  // `depth` the number of includes that led to the file.
  void directive(const std::string &text, const std::string &file, int line, const std::string &dir,
                 int depth) {
    size_t pos = text.find('#') + 1;
    const std::string word = identifierAt(text, pos);
    skipSpace(text, pos);
    if (word == "include") {
      if (pos < text.size() && text[pos] == '<')
        return; // a system header: nothing of ours
      const size_t close = text.find('"', pos + 1);
      if (pos >= text.size() || text[pos] != '"' || close == std::string::npos)
        fail(file, line, "#include needs a \"file name\"");
      std::string name = text.substr(pos + 1, close - pos - 1);
      if (name.empty() || name[0] != '/')
        name = dir + name;
      readHeader(name, file, line, depth + 1);
    } else if (word == "define") {
      const std::string name = identifierAt(text, pos);
      if (name.empty())
        fail(file, line, "#define needs a name");
      if (pos < text.size() && text[pos] == '(')
        return; // a function-like macro: no resource refers to one
      std::string value = text.substr(pos);
      const size_t comment = std::min(value.find("//"), value.find("/*"));
      if (comment != std::string::npos)
        value.erase(comment);
      defines_[name] = Define{value, file, line};
    }
    // Other directives (#pragma, #if and the like) play no part in a table.
  }

  const Define *find(const std::string &name) const {
    const auto found = defines_.find(name);
    return found == defines_.end() ? nullptr : &found->second;
  }

private:
  static void skipSpace(const std::string &text, size_t &pos) {
    while (pos < text.size() && (text[pos] == ' ' || text[pos] == '\t'))
      ++pos;
  }

  static std::string identifierAt(const std::string &text, size_t &pos) {
    skipSpace(text, pos);
    const size_t start = pos;
    while (pos < text.size() &&
           (std::isalnum(static_cast<unsigned char>(text[pos])) || text[pos] == '_'))
      ++pos;
    return text.substr(start, pos - start);
  }

  // A header contributes its #define and #include lines; everything else in it is C.
  void readHeader(const std::string &path, const std::string &from, int fromLine, int depth) {
    std::string text;
    if (depth > 16)
      fail(from, fromLine, "#include nested too deeply");
    if (!readText(path, text))
      fail(from, fromLine, "cannot open include file '" + path + "'");
    const std::string dir = path.substr(0, path.rfind('/') + 1);
    std::istringstream lines(text);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
      const size_t first = line.find_first_not_of(" \t");
      if (first != std::string::npos && line[first] == '#')
        directive(line, path, number, dir, depth);
    }
  }

  std::map<std::string, Define> defines_;
};

enum class Kind { End, Name, Number, String, Punct };

struct Token {
  Kind kind = Kind::End;
  std::string text; // a name, the bytes of a string, a punctuation character
  int64_t number = 0;
  int line = 0;
};

// Splits a script, or the value of a #define, into tokens. Preprocessor lines of a script go
// to `symbols`; a lexer without symbols treats '#' as any other stray character.
class Lexer {
public:
  Lexer(std::string text, std::string file, int line, Symbols *symbols)
      : text_(std::move(text)), file_(std::move(file)), line_(line), symbols_(symbols) {
    if (text_.compare(0, 3, "\xEF\xBB\xBF") == 0)
      pos_ = 3; // a UTF-8 byte order mark
    dir_ = file_.substr(0, file_.rfind('/') + 1);
    next_ = scan();
  }

  const Token &peek() const { return next_; }
  Token take() {
    Token token = next_;
    next_ = scan();
    return token;
  }
  const std::string &file() const { return file_; }

private:
  char at(size_t offset = 0) const {
    return pos_ + offset < text_.size() ? text_[pos_ + offset] : '\0';
  }

  void skipSpaceAndComments() {
    for (;;) {
      const char c = at();
      if (c == '\n') {
        ++line_;
        ++pos_;
        lineStart_ = true;
      } else if (c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v') {
        ++pos_;
      } else if (c == '/' && at(1) == '/') {
        while (pos_ < text_.size() && at() != '\n')
          ++pos_;
      } else if (c == '/' && at(1) == '*') {
        const int start = line_;
        const size_t close = text_.find("*/", pos_ + 2);
        if (close == std::string::npos)
          fail(file_, start, "unterminated comment");
        line_ += static_cast<int>(std::count(text_.data() + pos_, text_.data() + close, '\n'));
        pos_ = close + 2;
      } else if (c == '#' && lineStart_ && symbols_ != nullptr) {
        std::string directive;
        const int start = line_;
        while (pos_ < text_.size() && at() != '\n') {
          if (at() == '\\' && (at(1) == '\n' || (at(1) == '\r' && at(2) == '\n'))) {
            pos_ = text_.find('\n', pos_) + 1; // a continued line
            ++line_;
            continue;
          }
          directive += text_[pos_++];
        }
        symbols_->directive(directive, file_, start, dir_, 0);
      } else {
        return;
      }
    }
  }

  Token scan() {
    skipSpaceAndComments();
    lineStart_ = false;
    Token token;
    token.line = line_;
    const char c = at();
    if (pos_ >= text_.size())
      return token;
    if (std::isalpha(static_cast<unsigned char>(c)) || c == '_') {
      token.kind = Kind::Name;
      while (std::isalnum(static_cast<unsigned char>(at())) || at() == '_')
        token.text += text_[pos_++];
    } else if (std::isdigit(static_cast<unsigned char>(c))) {
      token.kind = Kind::Number;
      token.number = scanNumber();
    } else if (c == '"') {
      token.kind = Kind::String;
      token.text = scanString();
    } else if (c != '\0' && std::strchr(",|{}()+-~", c) != nullptr) {
      token.kind = Kind::Punct;
      token.text = std::string(1, c);
      ++pos_;
    } else {
      fail(file_, line_, "unexpected character '" + shown(c) + "'");
    }
    return token;
  }

  int64_t scanNumber() {
    const bool hex = at() == '0' && (at(1) == 'x' || at(1) == 'X');
    const int base = hex ? 16 : 10;
    if (hex)
      pos_ += 2;
    int64_t value = 0;
    size_t digits = 0;
    for (;; ++pos_, ++digits) {
      const char d = static_cast<char>(std::tolower(static_cast<unsigned char>(at())));
      const int digit = std::isdigit(static_cast<unsigned char>(d)) ? d - '0'
                        : (hex && d >= 'a' && d <= 'f')             ? d - 'a' + 10
                                                                    : -1;
      if (digit < 0)
        break;
      value = value * base + digit;
      if (value > 0xFFFFFFFFLL)
        fail(file_, line_, "number too large");
    }
    if (digits == 0)
      fail(file_, line_, "malformed number");
    while (at() != '\0' && std::strchr("lLuU", at()) != nullptr)
      ++pos_; // C suffixes
    if (std::isalnum(static_cast<unsigned char>(at())) || at() == '_')
      fail(file_, line_, "malformed number");
    return value;
  }

  // A string literal: C escapes, and "" for a quote inside. Other bytes are kept as they are.
  std::string scanString() {
    const int start = line_;
    std::string bytes;
    for (++pos_;;) {
      if (pos_ >= text_.size() || at() == '\n')
        fail(file_, start, "unterminated string");
      const char c = text_[pos_++];
      if (c == '"') {
        if (at() != '"')
          return bytes;
        ++pos_;
        bytes += '"';
      } else if (c != '\\') {
        bytes += c;
      } else {
        bytes += scanEscape(start);
      }
    }
  }

  char scanEscape(int start) {
    const char e = at();
    if (pos_ >= text_.size() || e == '\n')
      fail(file_, start, "unterminated string");
    ++pos_;
    switch (e) {
    case 'n':
      return '\n';
    case 'r':
      return '\r';
    case 't':
      return '\t';
    case 'a':
      return '\a';
    case '\\':
      return '\\';
    case '"':
      return '"';
    case 'x': {
      int value = 0, digits = 0;
      for (; digits < 2 && std::isxdigit(static_cast<unsigned char>(at())); ++digits, ++pos_)
        value = value * 16 + (std::isdigit(static_cast<unsigned char>(at()))
                                  ? at() - '0'
                                  : std::tolower(static_cast<unsigned char>(at())) - 'a' + 10);
      if (digits == 0)
        fail(file_, line_, "\\x without hex digits");
      return static_cast<char>(value);
    }
    default:
      if (e >= '0' && e <= '7') {
        int value = e - '0';
        for (int digits = 1; digits < 3 && at() >= '0' && at() <= '7'; ++digits, ++pos_)
          value = value * 8 + (at() - '0');
        if (value > 0xFF)
          fail(file_, line_, "octal escape out of range");
        return static_cast<char>(value);
      }
      fail(file_, line_, "unknown escape '\\" + shown(e) + "'");
    }
  }

  std::string text_, file_, dir_;
  size_t pos_ = 0;
  int line_;
  bool lineStart_ = true;
  Symbols *symbols_;
  Token next_;
};

} // namespace rcgen
