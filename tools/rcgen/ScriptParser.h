// The grammar of a resource script: STRINGTABLE, DIALOG and DIALOGEX with their statements,
// and the style expressions, into the string and dialog lists of a table.
//
// Part of tuk_rcgen. An error prints "file:line: message" and ends the program with status 1.
#pragma once

#include "ScriptLexer.h"
#include "ScriptNames.h"

#include <algorithm>
#include <vector>

namespace rcgen {

inline bool sameKeyword(const std::string &word, const char *keyword) {
  if (word.size() != std::strlen(keyword))
    return false;
  for (size_t i = 0; i < word.size(); ++i)
    if (std::toupper(static_cast<unsigned char>(word[i])) != keyword[i])
      return false;
  return true;
}

struct StringEntry {
  uint32_t id;
  std::string text;
};

struct Item {
  int32_t id;
  std::string className, text;
  int16_t x, y, cx, cy;
  uint32_t style, exStyle;
};

struct Dialog {
  uint32_t id = 0, style = 0, exStyle = 0;
  int16_t x = 0, y = 0, cx = 0, cy = 0;
  std::string caption, fontName;
  uint16_t pointSize = 0;
  uint8_t charset = 1; // DEFAULT_CHARSET
  bool extended = false;
  std::vector<Item> items;
};

struct Resources {
  std::vector<StringEntry> strings;
  std::vector<Dialog> dialogs;
};

// Bits that a style expression sets, and bits that its NOT terms take away.
struct Style {
  int64_t set = 0, cleared = 0;
  uint32_t over(int64_t base) const { return static_cast<uint32_t>((base & ~cleared) | set); }
};

class Parser {
public:
  Parser(Lexer &lexer, const Symbols &symbols) : lex_(lexer), symbols_(symbols) {}

  Resources parse() {
    Resources out;
    while (lex_.peek().kind != Kind::End) {
      const Token &token = lex_.peek();
      if (token.kind == Kind::Name && sameKeyword(token.text, "STRINGTABLE")) {
        lex_.take();
        parseStringTable(out);
      } else if (token.kind == Kind::Name && sameKeyword(token.text, "LANGUAGE")) {
        lex_.take();
        skipValues(2);
      } else if (token.kind == Kind::Name && symbols_.find(token.text) == nullptr) {
        fail(lex_.file(), token.line, "unknown keyword '" + token.text + "'");
      } else {
        parseDialog(out);
      }
    }
    return out;
  }

private:
  bool atKeyword(const char *keyword) const {
    return lex_.peek().kind == Kind::Name && sameKeyword(lex_.peek().text, keyword);
  }
  bool atPunct(char c) const { return lex_.peek().kind == Kind::Punct && lex_.peek().text[0] == c; }
  bool atBegin() const { return atKeyword("BEGIN") || atPunct('{'); }
  bool atEnd() const { return atKeyword("END") || atPunct('}'); }

  [[noreturn]] void failHere(const std::string &message) const {
    fail(lex_.file(), lex_.peek().line, message);
  }

  void expectComma() {
    if (!atPunct(','))
      failHere("expected ','");
    lex_.take();
  }

  void skipMemoryOptions() {
    static const char *const kOptions[] = {"DISCARDABLE", "MOVEABLE", "FIXED",
                                           "PURE",        "IMPURE",   "PRELOAD",
                                           "LOADONCALL",  "SHARED",   "NONSHARED"};
    while (std::any_of(std::begin(kOptions), std::end(kOptions),
                       [this](const char *option) { return atKeyword(option); }))
      lex_.take();
  }

  void skipValues(int count) {
    for (int i = 0; i < count; ++i) {
      if (i > 0)
        expectComma();
      value();
    }
  }

  // The help context id that may end a DIALOGEX header or control; a template here has none.
  void skipHelpId() {
    if (atPunct(',')) {
      lex_.take();
      value();
    }
  }

  void expectBegin() {
    if (!atBegin())
      failHere(lex_.peek().kind == Kind::Name ? "unknown keyword '" + lex_.peek().text + "'"
                                              : "expected BEGIN");
    lex_.take();
  }

  std::string text() {
    if (lex_.peek().kind != Kind::String)
      failHere("expected a string");
    std::string bytes = lex_.take().text;
    while (lex_.peek().kind == Kind::String)
      bytes += lex_.take().text; // adjacent literals join
    return bytes;
  }

  // term := '-' term | '~' term | '(' style ')' | number | name
  int64_t term() {
    const Token token = lex_.take();
    if (token.kind == Kind::Number)
      return token.number;
    if (token.kind == Kind::Punct && token.text == "-")
      return -term();
    if (token.kind == Kind::Punct && token.text == "~")
      return ~term() & 0xFFFFFFFFLL;
    if (token.kind == Kind::Punct && token.text == "(") {
      const int64_t inner = value();
      if (!atPunct(')'))
        failHere("expected ')'");
      lex_.take();
      return inner;
    }
    if (token.kind == Kind::Name)
      return nameValue(token);
    fail(lex_.file(), token.line,
         token.kind == Kind::End ? "unexpected end of script" : "expected a number or a name");
  }

  int64_t nameValue(const Token &token) {
    if (const Define *define = symbols_.find(token.text)) {
      if (++depth_ > 32)
        fail(define->file, define->line, "'" + token.text + "' refers to itself");
      Lexer valueLexer(define->value, define->file, define->line, nullptr);
      if (valueLexer.peek().kind == Kind::End)
        fail(lex_.file(), token.line, "'" + token.text + "' has no value");
      Parser valueParser(valueLexer, symbols_);
      valueParser.depth_ = depth_;
      const int64_t result = valueParser.value();
      if (valueLexer.peek().kind != Kind::End)
        fail(define->file, define->line, "the value of '" + token.text + "' is not a number");
      --depth_;
      return result;
    }
    for (const StandardName &standard : kStandardNames)
      if (token.text == standard.name)
        return standard.value;
    fail(lex_.file(), token.line, "undefined name '" + token.text + "'");
  }

  // style := ['NOT'] sum ('|' ['NOT'] sum)*   with sum := term (('+' | '-') term)*
  Style style() {
    Style result;
    for (;;) {
      const bool negated = atKeyword("NOT");
      if (negated)
        lex_.take();
      int64_t sum = term();
      while (atPunct('+') || atPunct('-'))
        sum = lex_.take().text == "+" ? sum + term() : sum - term();
      if (negated) {
        result.cleared |= sum;
        result.set &= ~sum;
      } else {
        result.set |= sum;
      }
      if (!atPunct('|'))
        return result;
      lex_.take();
    }
  }

  int64_t value() {
    const int line = lex_.peek().line;
    const Style result = style();
    if (result.cleared != 0)
      fail(lex_.file(), line, "NOT belongs in a style");
    return result.set;
  }

  int64_t valueIn(int64_t low, int64_t high, const char *what) {
    const int line = lex_.peek().line;
    const int64_t result = value();
    if (result < low || result > high)
      fail(lex_.file(), line, std::string(what) + " out of range");
    return result;
  }

  int16_t coordinate() { return static_cast<int16_t>(valueIn(-32768, 32767, "coordinate")); }

  void rectangle(int16_t &x, int16_t &y, int16_t &cx, int16_t &cy) {
    x = coordinate();
    expectComma();
    y = coordinate();
    expectComma();
    cx = coordinate();
    expectComma();
    cy = coordinate();
  }

  void parseStringTable(Resources &out) {
    skipMemoryOptions();
    while (atKeyword("LANGUAGE") || atKeyword("CHARACTERISTICS") || atKeyword("VERSION"))
      skipValues(sameKeyword(lex_.take().text, "LANGUAGE") ? 2 : 1);
    expectBegin();
    while (!atEnd()) {
      if (lex_.peek().kind == Kind::End)
        failHere("STRINGTABLE without END");
      const int line = lex_.peek().line;
      const uint32_t id = static_cast<uint32_t>(valueIn(0, 0xFFFF, "string id"));
      if (atPunct(','))
        lex_.take();
      if (!stringLines_.emplace(id, line).second)
        fail(lex_.file(), line,
             "duplicate string id " + std::to_string(id) + " (first at line " +
                 std::to_string(stringLines_[id]) + ")");
      out.strings.push_back(StringEntry{id, text()});
    }
    lex_.take();
  }

  void parseDialog(Resources &out) {
    Dialog dialog;
    const int line = lex_.peek().line;
    dialog.id = static_cast<uint32_t>(valueIn(0, 0xFFFF, "dialog id"));
    if (atKeyword("DIALOGEX"))
      dialog.extended = true;
    else if (!atKeyword("DIALOG"))
      failHere(lex_.peek().kind == Kind::Name ? "unknown keyword '" + lex_.peek().text + "'"
                                              : "expected DIALOG or DIALOGEX");
    lex_.take();
    if (!dialogLines_.emplace(dialog.id, line).second)
      fail(lex_.file(), line,
           "duplicate dialog id " + std::to_string(dialog.id) + " (first at line " +
               std::to_string(dialogLines_[dialog.id]) + ")");
    skipMemoryOptions();
    rectangle(dialog.x, dialog.y, dialog.cx, dialog.cy);
    if (dialog.extended)
      skipHelpId();
    int64_t styleBits = 0x80880000; // WS_POPUP | WS_BORDER | WS_SYSMENU, unless STYLE says
    bool hasCaption = false, hasFont = false;
    while (!atBegin()) {
      const Token keyword = lex_.take();
      const std::string &word = keyword.text;
      if (keyword.kind == Kind::Name && sameKeyword(word, "STYLE")) {
        styleBits = style().over(0);
      } else if (keyword.kind == Kind::Name && sameKeyword(word, "EXSTYLE")) {
        dialog.exStyle = style().over(0);
      } else if (keyword.kind == Kind::Name && sameKeyword(word, "CAPTION")) {
        dialog.caption = text();
        hasCaption = true;
      } else if (keyword.kind == Kind::Name && sameKeyword(word, "FONT")) {
        dialog.pointSize = static_cast<uint16_t>(valueIn(0, 0xFFFF, "point size"));
        expectComma();
        dialog.fontName = text();
        hasFont = true;
        for (int extra = 0; extra < 3 && atPunct(','); ++extra) {
          lex_.take();
          const int64_t number = value(); // weight and italic are not kept
          if (extra == 2)
            dialog.charset = static_cast<uint8_t>(number);
        }
      } else if (keyword.kind == Kind::Name && sameKeyword(word, "LANGUAGE")) {
        skipValues(2);
      } else if (keyword.kind == Kind::Name &&
                 (sameKeyword(word, "CHARACTERISTICS") || sameKeyword(word, "VERSION"))) {
        skipValues(1);
      } else {
        fail(lex_.file(), keyword.line,
             keyword.kind == Kind::End ? "DIALOG without BEGIN" : "unknown keyword '" + word + "'");
      }
    }
    lex_.take();
    dialog.style = static_cast<uint32_t>(styleBits | (hasCaption ? 0x00C00000 : 0) |
                                         (hasFont ? 0x40 : 0)); // WS_CAPTION, DS_SETFONT
    while (!atEnd())
      dialog.items.push_back(control(dialog.extended));
    lex_.take();
    out.dialogs.push_back(std::move(dialog));
  }

  Item control(bool extended) {
    const Token keyword = lex_.take();
    if (keyword.kind != Kind::Name)
      fail(lex_.file(), keyword.line,
           keyword.kind == Kind::End ? "DIALOG without END" : "expected a control");
    Item item{};
    if (sameKeyword(keyword.text, "CONTROL")) {
      item.text = text();
      expectComma();
      item.id = static_cast<int32_t>(valueIn(INT32_MIN, UINT32_MAX, "control id"));
      expectComma();
      item.className = className();
      expectComma();
      const Style explicitStyle = style();
      expectComma();
      item.style = explicitStyle.over(kChildVisible);
      return placed(item, extended, false);
    }
    const auto kind =
        std::find_if(std::begin(kControlKinds), std::end(kControlKinds),
                     [&](const ControlKind &k) { return sameKeyword(keyword.text, k.keyword); });
    if (kind == std::end(kControlKinds))
      fail(lex_.file(), keyword.line, "unknown keyword '" + keyword.text + "'");
    item.className = kind->className;
    if (kind->hasText) {
      item.text = text();
      expectComma();
    }
    item.id = static_cast<int32_t>(valueIn(INT32_MIN, UINT32_MAX, "control id"));
    expectComma();
    item.style = static_cast<uint32_t>(kind->defaultStyle);
    return placed(item, extended, true);
  }

  // x, y, cx, cy, then for a statement with a default style [, style [, exstyle [, help id]]]
  // and for CONTROL [, exstyle [, help id]].
  Item placed(Item item, bool extended, bool styleMayFollow) {
    rectangle(item.x, item.y, item.cx, item.cy);
    if (styleMayFollow && atPunct(',')) {
      lex_.take();
      item.style = style().over(item.style);
    }
    if (atPunct(',')) {
      lex_.take();
      item.exStyle = style().over(0);
    }
    if (extended)
      skipHelpId();
    return item;
  }

  // The class of a CONTROL: a string or a bare name; the three known ones upper-cased.
  std::string className() {
    std::string name = lex_.peek().kind == Kind::Name ? lex_.take().text : text();
    for (const char *known : {"BUTTON", "EDIT", "STATIC"})
      if (sameKeyword(name, known))
        name = known;
    return name;
  }

  Lexer &lex_;
  const Symbols &symbols_;
  int depth_ = 0;
  std::map<uint32_t, int> stringLines_, dialogLines_;
};

} // namespace rcgen
