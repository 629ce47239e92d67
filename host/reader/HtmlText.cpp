// HTML as the text a reader sees.
//
// gumbo builds the tree, but it is never given the page itself: gumbo reads a character at a
// time and makes a node of every inline tag, under 20 MB/s on ordinary mail, and its time,
// memory and stack grow with the nesting a hostile page can hold. So a tokenizer of our own
// reads the page, decodes its text and leaves out what a reader never sees, and hands gumbo a
// skeleton: only the tags that break lines, each stretch of text between them replaced by a
// two-character placeholder. The skeleton is a tenth of an ordinary page, and we choose how
// deep it nests. Walking gumbo's tree then puts the text back in the places gumbo gave it.
// Where the skeleton would pass its bounds, the rest of the page is rendered straight from
// our own tokens, without a tree.
#include "host/reader/HtmlText.h"

#include "host/reader/Charset.h"

#include <gumbo.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <string>
#include <strings.h>
#include <unordered_map>
#include <vector>

namespace {

// gumbo gets at most 256 open elements and 1 MiB of skeleton (~10 MB of mail, <70 MB of tree).
constexpr size_t kMaxOpen = 256;
constexpr size_t kMaxSkeleton = size_t{1} << 20;
// A page can name this many distinct entities gumbo has to look up; later ones stay as written.
constexpr size_t kMaxLookups = 64;
// No entity name is longer; the HTML rules match the longest name that prefixes the text.
constexpr size_t kMaxEntityName = 32;

bool isSpace(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r' || c == '\f';
}
bool isAlpha(char c) {
  return (c | 0x20) >= 'a' && (c | 0x20) <= 'z';
}
bool isAlnum(char c) {
  return isAlpha(c) || (c >= '0' && c <= '9');
}

// Placeholders: a run's number as two private-use characters, 11 bits each.
constexpr uint32_t kHighDigit = 0xE000, kLowDigit = 0xE800, kDigitBits = 11;

void appendPlaceholder(uint32_t run, std::string &out) {
  appendUtf8(out, kHighDigit + (run >> kDigitBits));
  appendUtf8(out, kLowDigit + (run & ((1u << kDigitBits) - 1)));
}

// How an element shapes the text around it.
enum class Kind : uint8_t {
  kInline,    // left out of the skeleton: its text joins its neighbours'
  kLine,      // on lines of its own
  kParagraph, // a blank line before and after, as browsers' margins show it
  kCell,      // a tab from the cell before it
  kBreak,     // br: ends the line, an empty one too
};

struct TagInfo {
  Kind kind;
  bool verbatim; // keeps its blanks and line ends
  bool empty;    // has no content and no end tag
};

TagInfo tagInfo(GumboTag tag) {
  switch (tag) {
  case GUMBO_TAG_P:
  case GUMBO_TAG_H1:
  case GUMBO_TAG_H2:
  case GUMBO_TAG_H3:
  case GUMBO_TAG_H4:
  case GUMBO_TAG_H5:
  case GUMBO_TAG_H6:
  case GUMBO_TAG_BLOCKQUOTE:
  case GUMBO_TAG_FIGURE:
  case GUMBO_TAG_DL:
    return {Kind::kParagraph, false, false};
  case GUMBO_TAG_PRE:
  case GUMBO_TAG_LISTING:
  case GUMBO_TAG_XMP:
  case GUMBO_TAG_PLAINTEXT:
    return {Kind::kParagraph, true, false};
  case GUMBO_TAG_HR:
    return {Kind::kParagraph, false, true};
  case GUMBO_TAG_BR:
    return {Kind::kBreak, false, true};
  case GUMBO_TAG_TD:
  case GUMBO_TAG_TH:
    return {Kind::kCell, false, false};
  case GUMBO_TAG_TEXTAREA:
    return {Kind::kLine, true, false};
  case GUMBO_TAG_ARTICLE:
  case GUMBO_TAG_SECTION:
  case GUMBO_TAG_NAV:
  case GUMBO_TAG_ASIDE:
  case GUMBO_TAG_HGROUP:
  case GUMBO_TAG_HEADER:
  case GUMBO_TAG_FOOTER:
  case GUMBO_TAG_ADDRESS:
  case GUMBO_TAG_MAIN:
  case GUMBO_TAG_DIV:
  case GUMBO_TAG_FIGCAPTION:
  case GUMBO_TAG_OL:
  case GUMBO_TAG_UL:
  case GUMBO_TAG_MENU:
  case GUMBO_TAG_DIR:
  case GUMBO_TAG_LI:
  case GUMBO_TAG_DT:
  case GUMBO_TAG_DD:
  case GUMBO_TAG_TABLE:
  case GUMBO_TAG_CAPTION:
  case GUMBO_TAG_TBODY:
  case GUMBO_TAG_THEAD:
  case GUMBO_TAG_TFOOT:
  case GUMBO_TAG_TR:
  case GUMBO_TAG_FORM:
  case GUMBO_TAG_FIELDSET:
  case GUMBO_TAG_LEGEND:
  case GUMBO_TAG_DETAILS:
  case GUMBO_TAG_SUMMARY:
  case GUMBO_TAG_CENTER:
  case GUMBO_TAG_SELECT:
  case GUMBO_TAG_OPTGROUP:
  case GUMBO_TAG_OPTION:
    return {Kind::kLine, false, false};
  default:
    return {Kind::kInline, false, false};
  }
}

// What the tokenizer does with an element's content.
enum class Content : uint8_t { kMarkup, kHidden, kRaw, kEscapable, kPlain };

Content contentOf(GumboTag tag) {
  switch (tag) {
  case GUMBO_TAG_SCRIPT:
  case GUMBO_TAG_STYLE:
  case GUMBO_TAG_TITLE:
  case GUMBO_TAG_IFRAME:
  case GUMBO_TAG_NOEMBED:
  case GUMBO_TAG_NOFRAMES:
    return Content::kHidden;
  case GUMBO_TAG_XMP:
    return Content::kRaw;
  case GUMBO_TAG_TEXTAREA:
    return Content::kEscapable;
  case GUMBO_TAG_PLAINTEXT:
    return Content::kPlain;
  default:
    return Content::kMarkup;
  }
}

GumboTag tagNamed(std::string_view name) {
  return name.size() <= 16 ? gumbo_tagn_enum(name.data(), static_cast<unsigned>(name.size()))
                           : GUMBO_TAG_UNKNOWN;
}

struct OutputDeleter {
  void operator()(GumboOutput *output) const {
    gumbo_destroy_output(&kGumboDefaultOptions, output);
  }
};
using ParsedPage = std::unique_ptr<GumboOutput, OutputDeleter>;

GumboOptions parseOptions() {
  GumboOptions options = kGumboDefaultOptions;
  options.max_errors = 0; // a skeleton is one long parse error; recording them costs time
  return options;
}

ParsedPage parse(std::string_view page) {
  const GumboOptions options = parseOptions();
  return ParsedPage(gumbo_parse_with_options(&options, page.data(), page.size()));
}

// Memory for gumbo, given back all at once: gumbo would otherwise free as it goes and take its
// tree down node by node, recursively; tag-heavy pages parse a third faster this way.
class Arena {
public:
  static void *allocate(void *userdata, size_t size) {
    auto &arena = *static_cast<Arena *>(userdata);
    size = (size + 15) & ~size_t{15};
    if (size > arena.left_) {
      const size_t block = std::max(size, kBlock);
      arena.blocks_.emplace_back(new char[block]);
      arena.next_ = arena.blocks_.back().get();
      arena.left_ = block;
    }
    void *memory = arena.next_;
    arena.next_ += size;
    arena.left_ -= size;
    return memory;
  }
  static void deallocate(void *, void *) {}

private:
  static constexpr size_t kBlock = 64 << 10;
  std::vector<std::unique_ptr<char[]>> blocks_;
  char *next_ = nullptr;
  size_t left_ = 0;
};

// Named character references. The common few are decoded here; gumbo holds the full table,
// and is asked about the others once each.
class Entities {
public:
  // Appends what "&" + `name` stands for in text; `name` is alphanumeric, with its ';'.
  void append(std::string_view name, std::string &out) {
    if (name == "nbsp;" || name == "nbsp") {
      out += "\xC2\xA0";
    } else if (name == "amp;" || name == "amp") {
      out += '&';
    } else if (name == "lt;" || name == "lt") {
      out += '<';
    } else if (name == "gt;" || name == "gt") {
      out += '>';
    } else if (name == "quot;" || name == "quot") {
      out += '"';
    } else {
      std::string key(name);
      auto found = known_.find(key);
      if (found == known_.end()) {
        if (known_.size() >= kMaxLookups) {
          out += '&';
          out += name;
          return;
        }
        found = known_.emplace(key, lookUp(name)).first;
      }
      out += found->second;
    }
  }

private:
  static std::string lookUp(std::string_view name) {
    // The leading letter keeps a reference to a blank from being dropped as leading space.
    std::string page = "x&";
    page += name;
    const ParsedPage parsed = parse(page);
    std::string text;
    const GumboVector &parts = parsed->root->v.element.children;
    for (unsigned i = 0; i < parts.length; ++i) {
      const auto *part = static_cast<const GumboNode *>(parts.data[i]);
      if (part->type != GUMBO_NODE_ELEMENT || part->v.element.tag != GUMBO_TAG_BODY)
        continue;
      const GumboVector &children = part->v.element.children;
      for (unsigned j = 0; j < children.length; ++j) {
        const auto *child = static_cast<const GumboNode *>(children.data[j]);
        if (child->type == GUMBO_NODE_TEXT || child->type == GUMBO_NODE_WHITESPACE)
          text += child->v.text.text;
      }
    }
    return text.empty() ? std::string("&").append(name) : text.substr(1);
  }

  std::unordered_map<std::string, std::string> known_;
};

// Appends `raw` (valid UTF-8) with its line ends as "\n", its NULs dropped and, when
// `references`, its character references decoded.
void appendText(std::string_view raw, bool references, Entities &entities, std::string &out) {
  const char *p = raw.data();
  const char *const end = p + raw.size();
  while (p < end) {
    const char *plain = p;
    while (p < end && *p != '&' && *p != '\r' && *p != '\0')
      ++p;
    out.append(plain, static_cast<size_t>(p - plain));
    if (p == end)
      break;
    if (*p == '\r') {
      out += '\n';
      p += p + 1 < end && p[1] == '\n' ? 2 : 1;
      continue;
    }
    if (*p == '\0' || !references) {
      if (*p != '\0')
        out += *p;
      ++p;
      continue;
    }
    const char *q = p + 1;
    if (q < end && *q == '#') {
      ++q;
      const bool hex = q < end && (*q | 0x20) == 'x';
      q += hex;
      const char *digits = q;
      uint32_t value = 0;
      for (; q < end; ++q) {
        const char c = *q;
        uint32_t digit;
        if (c >= '0' && c <= '9')
          digit = static_cast<uint32_t>(c - '0');
        else if (hex && (c | 0x20) >= 'a' && (c | 0x20) <= 'f')
          digit = static_cast<uint32_t>((c | 0x20) - 'a' + 10);
        else
          break;
        value = std::min<uint32_t>(value * (hex ? 16 : 10) + digit, 0x110000);
      }
      if (q == digits) { // "&#" with no number is text
        out.append(p, static_cast<size_t>(q - p));
        p = q;
        continue;
      }
      if (q < end && *q == ';')
        ++q;
      if (value >= 0x80 && value < 0xA0) // as browsers read them
        value = windows1252CodePoint(static_cast<unsigned char>(value));
      else if (value == 0 || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
        value = 0xFFFD;
      appendUtf8(out, value);
      p = q;
      continue;
    }
    while (q < end && isAlnum(*q) && q - p <= static_cast<ptrdiff_t>(kMaxEntityName))
      ++q;
    if (q == p + 1) {
      out += '&';
      ++p;
      continue;
    }
    if (q < end && *q == ';' && q - p <= static_cast<ptrdiff_t>(kMaxEntityName))
      ++q;
    entities.append(std::string_view(p + 1, static_cast<size_t>(q - p - 1)), out);
    p = q;
  }
}

// Writes text as a browser lays it out: blanks collapsed outside verbatim text, no blanks at
// the start or end of a line, no more than one empty line in a row, nothing before the first
// text or after the last.
class TextSink {
public:
  explicit TextSink(std::string &out) : out_(out) {}

  void lineBreak() { wanted_ = std::max(wanted_, 1); }
  void paragraphBreak() { wanted_ = 2; }
  void hardBreak() { wanted_ = std::min(std::max(wanted_, written_) + 1, 2); }
  void cellGap() { gap_ = '\t'; }

  void text(std::string_view s, bool verbatim) {
    const char *p = s.data();
    const char *const end = p + s.size();
    if (verbatim) {
      // Line ends at either end wait like breaks, so that none starts or ends the text.
      if (!started_)
        while (p < end && *p == '\n')
          ++p;
      const char *last = end;
      while (last > p && last[-1] == '\n')
        --last;
      if (last > p) {
        put(p, static_cast<size_t>(last - p));
        written_ = 0;
      }
      for (int i = 0; i < 2 && i < end - last; ++i)
        hardBreak();
      return;
    }
    while (p < end) {
      const char *word = p;
      while (p < end && !isBlank(p, end))
        ++p;
      if (p > word) {
        put(word, static_cast<size_t>(p - word));
        written_ = 0;
      }
      if (p == end)
        break;
      // A no-break space is a blank like any other here: mail lays out with runs of them,
      // and this text is read and searched, not laid out.
      while (p < end && isBlank(p, end))
        p += *p == '\xC2' ? 2 : 1;
      if (!gap_)
        gap_ = ' ';
    }
  }

private:
  static bool isBlank(const char *p, const char *end) {
    return isSpace(*p) || (*p == '\xC2' && p + 1 < end && p[1] == '\xA0');
  }

  void put(const char *p, size_t size) {
    if (started_) {
      for (; written_ < wanted_; ++written_)
        out_ += '\n';
      if (written_ == 0 && gap_)
        out_ += gap_;
    }
    started_ = true;
    wanted_ = 0;
    gap_ = 0;
    out_.append(p, size);
  }

  std::string &out_;
  bool started_ = false;
  int wanted_ = 0;  // line ends the next text needs before it
  int written_ = 0; // line ends the output ends with
  char gap_ = 0;    // the blank the next text needs before it, on the same line
};

// Elements and text, from gumbo's tree or straight from the tokens, into the sink.
class Renderer {
public:
  explicit Renderer(std::string &out) : sink_(out) {}

  void open(GumboTag tag) {
    const TagInfo info = tagInfo(tag);
    switch (info.kind) {
    case Kind::kLine:
      sink_.lineBreak();
      break;
    case Kind::kParagraph:
      sink_.paragraphBreak();
      break;
    case Kind::kCell:
      sink_.cellGap();
      break;
    case Kind::kBreak:
      sink_.hardBreak();
      break;
    case Kind::kInline:
      break;
    }
    verbatim_ += info.verbatim && !info.empty;
  }

  void close(GumboTag tag) {
    const TagInfo info = tagInfo(tag);
    if (info.kind == Kind::kLine)
      sink_.lineBreak();
    else if (info.kind == Kind::kParagraph)
      sink_.paragraphBreak();
    if (info.verbatim && verbatim_ > 0)
      --verbatim_;
  }

  void text(std::string_view s) { sink_.text(s, verbatim_ > 0); }

  // Where rendering goes on without a tree, inside `open` elements that keep their blanks.
  void setVerbatim(size_t open) { verbatim_ = open; }

private:
  TextSink sink_;
  size_t verbatim_ = 0; // open elements that keep their blanks
};

class Converter {
public:
  Converter(std::string_view html, std::string &out) : in_(html), renderer_(out) {}

  void run() {
    const size_t size = in_.size();
    while (pos_ < size) {
      const void *lt = std::memchr(in_.data() + pos_, '<', size - pos_);
      const size_t end =
          lt ? static_cast<size_t>(static_cast<const char *>(lt) - in_.data()) : size;
      if (end > pos_)
        onText(in_.substr(pos_, end - pos_), true);
      pos_ = end;
      if (pos_ < size)
        markup();
    }
    if (!direct_)
      renderSkeleton();
  }

private:
  // The tokenizer, at a '<'.
  void markup() {
    const size_t size = in_.size();
    const char next = pos_ + 1 < size ? in_[pos_ + 1] : '\0';
    if (isAlpha(next)) {
      startTag();
    } else if (next == '/' && pos_ + 2 < size && isAlpha(in_[pos_ + 2])) {
      endTag();
    } else if (next == '/' && pos_ + 2 < size && in_[pos_ + 2] == '>') {
      pos_ += 3;
    } else if (in_.compare(pos_, 4, "<!--") == 0) {
      comment();
    } else if ((next == '/' && pos_ + 2 < size) || next == '!' || next == '?') {
      skipPast('>'); // a bogus comment, a doctype or a CDATA section outside foreign content
    } else {
      onText(in_.substr(pos_, 1), false);
      ++pos_;
    }
  }

  void skipPast(char c) {
    const size_t at = in_.find(c, pos_);
    pos_ = at == std::string_view::npos ? in_.size() : at + 1;
  }

  void comment() {
    size_t p = pos_ + 4;
    if (in_.compare(p, 1, ">") == 0 || in_.compare(p, 2, "->") == 0) {
      pos_ = p + (in_[p] == '>' ? 1 : 2);
      return;
    }
    for (;;) {
      const size_t dashes = in_.find("--", p);
      if (dashes == std::string_view::npos) {
        pos_ = in_.size();
        return;
      }
      if (in_.compare(dashes + 2, 1, ">") == 0 || in_.compare(dashes + 2, 2, "!>") == 0) {
        pos_ = dashes + (in_[dashes + 2] == '>' ? 3 : 4);
        return;
      }
      p = dashes + 1;
    }
  }

  size_t nameEnd(size_t p) const {
    while (p < in_.size() && !isSpace(in_[p]) && in_[p] != '/' && in_[p] != '>')
      ++p;
    return p;
  }

  // Reads a tag's attributes from `p` to past its '>', noting an alt attribute when `alt`
  // isn't null. Returns npos when the page ends inside the tag, which then counts for nothing.
  size_t attributes(size_t p, std::string_view *alt) const {
    const size_t size = in_.size();
    bool haveAlt = false;
    for (;;) {
      while (p < size && (isSpace(in_[p]) || in_[p] == '/'))
        ++p;
      if (p == size)
        return std::string_view::npos;
      if (in_[p] == '>')
        return p + 1;
      const size_t name = p++;
      while (p < size && !isSpace(in_[p]) && in_[p] != '/' && in_[p] != '>' && in_[p] != '=')
        ++p;
      const std::string_view attribute = in_.substr(name, p - name);
      while (p < size && isSpace(in_[p]))
        ++p;
      std::string_view value;
      if (p < size && in_[p] == '=') {
        ++p;
        while (p < size && isSpace(in_[p]))
          ++p;
        if (p == size)
          return std::string_view::npos;
        if (in_[p] == '"' || in_[p] == '\'') {
          const size_t close = in_.find(in_[p], p + 1);
          if (close == std::string_view::npos)
            return std::string_view::npos;
          value = in_.substr(p + 1, close - p - 1);
          p = close + 1;
        } else {
          const size_t start = p;
          while (p < size && !isSpace(in_[p]) && in_[p] != '>')
            ++p;
          value = in_.substr(start, p - start);
        }
      }
      if (alt && !haveAlt && attribute.size() == 3 &&
          strncasecmp(attribute.data(), "alt", 3) == 0) {
        *alt = value;
        haveAlt = true; // the first of an attribute's repeats counts
      }
    }
  }

  void startTag() {
    const size_t end = nameEnd(pos_ + 1);
    const GumboTag tag = tagNamed(in_.substr(pos_ + 1, end - pos_ - 1));
    std::string_view alt;
    const bool image = tag == GUMBO_TAG_IMG || tag == GUMBO_TAG_IMAGE;
    const size_t after = attributes(end, image ? &alt : nullptr);
    if (after == std::string_view::npos) {
      pos_ = in_.size();
      return;
    }
    pos_ = after;
    if (image) {
      afterPre_ = false;
      onText(alt, true);
    } else {
      onStart(tag);
    }

    const Content content = contentOf(tag);
    if (content == Content::kMarkup)
      return;
    const size_t close = content == Content::kPlain ? in_.size() : endTagOf(tag, pos_);
    if (content != Content::kHidden)
      onText(in_.substr(pos_, close - pos_), content == Content::kEscapable);
    pos_ = close;
  }

  // Where the end tag that closes the raw content of a `tag` starting at `p` begins.
  size_t endTagOf(GumboTag tag, size_t p) const {
    const char *name = gumbo_normalized_tagname(tag);
    const size_t length = std::strlen(name);
    for (;;) {
      const size_t lt = in_.find("</", p);
      if (lt == std::string_view::npos)
        return in_.size();
      const size_t after = lt + 2 + length;
      if (after <= in_.size() && strncasecmp(in_.data() + lt + 2, name, length) == 0 &&
          (after == in_.size() || isSpace(in_[after]) || in_[after] == '/' || in_[after] == '>'))
        return lt;
      p = lt + 2;
    }
  }

  void endTag() {
    const size_t end = nameEnd(pos_ + 2);
    const GumboTag tag = tagNamed(in_.substr(pos_ + 2, end - pos_ - 2));
    const size_t after = attributes(end, nullptr);
    pos_ = after == std::string_view::npos ? in_.size() : after;
    if (after != std::string_view::npos)
      onEnd(tag);
  }

  // Token handlers.
  void onText(std::string_view raw, bool references) {
    if (template_ > 0)
      return;
    if (afterPre_ && !raw.empty()) {
      afterPre_ = false;
      // As the HTML rules have it, a line end right after <pre> is layout, not text.
      if (raw[0] == '\r')
        raw.remove_prefix(raw.size() > 1 && raw[1] == '\n' ? 2 : 1);
      else if (raw[0] == '\n')
        raw.remove_prefix(1);
    }
    if (direct_) {
      scratch_.clear();
      appendText(raw, references, entities_, scratch_);
      renderer_.text(scratch_);
    } else {
      appendText(raw, references, entities_, runText_);
    }
  }

  void onStart(GumboTag tag) {
    afterPre_ = false;
    if (tag == GUMBO_TAG_TEMPLATE)
      ++template_; // its content is inert until a script uses it
    if (template_ > 0 || tagInfo(tag).kind == Kind::kInline)
      return;
    if (!direct_)
      openInSkeleton(tag);
    if (direct_)
      renderer_.open(tag);
    afterPre_ = tag == GUMBO_TAG_PRE || tag == GUMBO_TAG_LISTING || tag == GUMBO_TAG_TEXTAREA;
  }

  void onEnd(GumboTag tag) {
    afterPre_ = false;
    if (tag == GUMBO_TAG_TEMPLATE && template_ > 0) {
      --template_;
      return;
    }
    if (template_ > 0)
      return;
    if (tag == GUMBO_TAG_BR) { // a </br> is read as a <br>
      onStart(tag);
      return;
    }
    if (tagInfo(tag).kind == Kind::kInline)
      return;
    if (direct_)
      renderer_.close(tag);
    else
      closeInSkeleton(tag);
  }

  // The skeleton. Every element in it is closed explicitly, children before parents, the
  // implied ends gumbo would find included: gumbo's open elements then stay a subset of ours,
  // and our bound on them bounds its.
  void openInSkeleton(GumboTag tag) {
    const TagInfo info = tagInfo(tag);
    endRun();
    if (info.kind != Kind::kBreak)
      closeTop({GUMBO_TAG_P});
    switch (tag) {
    case GUMBO_TAG_LI:
      closeTop({GUMBO_TAG_LI});
      break;
    case GUMBO_TAG_DT:
    case GUMBO_TAG_DD:
      closeTop({GUMBO_TAG_DT, GUMBO_TAG_DD});
      break;
    case GUMBO_TAG_TD:
    case GUMBO_TAG_TH:
      closeTop({GUMBO_TAG_TD, GUMBO_TAG_TH});
      break;
    case GUMBO_TAG_TBODY:
    case GUMBO_TAG_THEAD:
    case GUMBO_TAG_TFOOT:
    case GUMBO_TAG_TR:
      closeTop({GUMBO_TAG_TD, GUMBO_TAG_TH});
      closeTop({GUMBO_TAG_TR});
      if (tag != GUMBO_TAG_TR)
        closeTop({GUMBO_TAG_TBODY, GUMBO_TAG_THEAD, GUMBO_TAG_TFOOT});
      break;
    case GUMBO_TAG_OPTION:
    case GUMBO_TAG_OPTGROUP:
      closeTop({GUMBO_TAG_OPTION});
      if (tag == GUMBO_TAG_OPTGROUP)
        closeTop({GUMBO_TAG_OPTGROUP});
      break;
    case GUMBO_TAG_H1:
    case GUMBO_TAG_H2:
    case GUMBO_TAG_H3:
    case GUMBO_TAG_H4:
    case GUMBO_TAG_H5:
    case GUMBO_TAG_H6:
      closeTop(
          {GUMBO_TAG_H1, GUMBO_TAG_H2, GUMBO_TAG_H3, GUMBO_TAG_H4, GUMBO_TAG_H5, GUMBO_TAG_H6});
      break;
    default:
      break;
    }
    if (open_.size() >= kMaxOpen || skeleton_.size() >= kMaxSkeleton) {
      renderSkeleton();
      return;
    }
    skeleton_ += '<';
    skeleton_ += gumbo_normalized_tagname(tag);
    skeleton_ += '>';
    if (!info.empty) {
      open_.push_back(tag);
      ++openCount_[tag];
      openVerbatim_ += info.verbatim;
    }
  }

  void closeInSkeleton(GumboTag tag) {
    if (openCount_[tag] == 0) {
      if (tag == GUMBO_TAG_P) { // gumbo makes an empty paragraph of it, as browsers do
        endRun();
        skeleton_ += "</p>";
      }
      return;
    }
    endRun();
    GumboTag top;
    do {
      top = open_.back();
      closeTop({top});
    } while (top != tag);
  }

  void closeTop(std::initializer_list<GumboTag> tags) {
    if (open_.empty() || std::find(tags.begin(), tags.end(), open_.back()) == tags.end())
      return;
    const GumboTag tag = open_.back();
    open_.pop_back();
    --openCount_[tag];
    openVerbatim_ -= tagInfo(tag).verbatim;
    skeleton_ += "</";
    skeleton_ += gumbo_normalized_tagname(tag);
    skeleton_ += '>';
  }

  // Ends the run of text being gathered and puts its placeholder in the skeleton.
  void endRun() {
    if (runText_.size() == runStart_)
      return;
    // Blanks between two block tags count for nothing outside verbatim text, and pages
    // are full of them.
    if (openVerbatim_ == 0 && std::all_of(runText_.begin() + static_cast<ptrdiff_t>(runStart_),
                                          runText_.end(), [](char c) { return isSpace(c); })) {
      runText_.resize(runStart_);
      return;
    }
    appendPlaceholder(static_cast<uint32_t>(runEnds_.size()), skeleton_);
    runEnds_.push_back(runText_.size());
    runStart_ = runText_.size();
  }

  // Has gumbo build the skeleton's tree and renders it; the rest of the page is then
  // rendered directly.
  void renderSkeleton() {
    endRun();
    direct_ = true;
    if (!skeleton_.empty()) {
      Arena arena;
      GumboOptions options = parseOptions();
      options.allocator = Arena::allocate;
      options.deallocator = Arena::deallocate;
      options.userdata = &arena;
      walk(gumbo_parse_with_options(&options, skeleton_.data(), skeleton_.size())->root);
    }
    renderer_.setVerbatim(openVerbatim_);
    std::string().swap(skeleton_);
    std::string().swap(runText_);
    std::vector<size_t>().swap(runEnds_);
  }

  void walk(const GumboNode *root) {
    struct Step {
      const GumboNode *node;
      bool leaving;
    };
    std::vector<Step> steps{{root, false}};
    while (!steps.empty()) {
      const Step step = steps.back();
      steps.pop_back();
      const GumboNode *node = step.node;
      if (node->type == GUMBO_NODE_TEXT || node->type == GUMBO_NODE_WHITESPACE) {
        putRuns(node->v.text.text);
      } else if (node->type == GUMBO_NODE_ELEMENT) {
        if (step.leaving) {
          renderer_.close(node->v.element.tag);
          continue;
        }
        renderer_.open(node->v.element.tag);
        steps.push_back({node, true});
        const GumboVector &children = node->v.element.children;
        for (unsigned i = children.length; i-- > 0;)
          steps.push_back({static_cast<const GumboNode *>(children.data[i]), false});
      }
    }
  }

  // Renders the runs whose placeholders make up a text node.
  void putRuns(const char *text) {
    const auto *p = reinterpret_cast<const unsigned char *>(text);
    auto digit = [&p](uint32_t base) -> int64_t {
      if (p[0] != 0xEE || (p[1] & 0xC0) != 0x80 || (p[2] & 0xC0) != 0x80)
        return -1;
      const uint32_t c = 0xE000 + ((p[1] & 0x3Fu) << 6) + (p[2] & 0x3Fu);
      p += 3;
      return c >= base && c < base + (1u << kDigitBits) ? c - base : -1;
    };
    for (;;) {
      const int64_t high = digit(kHighDigit);
      const int64_t low = high < 0 ? -1 : digit(kLowDigit);
      if (low < 0)
        return;
      const size_t run = static_cast<size_t>(high << kDigitBits | low);
      if (run >= runEnds_.size())
        return;
      const size_t begin = run == 0 ? 0 : runEnds_[run - 1];
      renderer_.text(std::string_view(runText_).substr(begin, runEnds_[run] - begin));
    }
  }

  std::string_view in_;
  size_t pos_ = 0;
  size_t template_ = 0;   // open template elements
  bool afterPre_ = false; // the last token opened a pre, listing or textarea
  Entities entities_;

  bool direct_ = false;         // past the skeleton: rendering tokens as they come
  std::string skeleton_;        // what gumbo reads
  std::string runText_;         // the decoded text of the runs
  std::vector<size_t> runEnds_; // where each run ends in runText_
  size_t runStart_ = 0;         // where the run being gathered starts
  std::vector<GumboTag> open_;  // the skeleton's open elements
  size_t openCount_[GUMBO_TAG_LAST + 1] = {};
  size_t openVerbatim_ = 0;

  Renderer renderer_;
  std::string scratch_;
};

} // namespace

void appendHtmlText(std::string_view html, std::string &out) {
  std::string repaired;
  if (validUtf8Prefix(html) != html.size()) {
    appendUtf8OrWindows1252(html, repaired);
    html = repaired;
  }
  Converter(html, out).run();
}
