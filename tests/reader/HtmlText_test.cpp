// HTML as the text a reader sees: what mail pages hold, and pages built to be deep or slow.
#include "host/reader/Charset.h"
#include "host/reader/HtmlText.h"
#include "tests/support/TestFiles.h"
#include <gtest/gtest.h>

namespace {
std::string textOf(std::string_view html) {
  std::string out;
  appendHtmlText(html, out);
  return out;
}

TEST(HtmlText, Conversions) {
  const std::pair<const char *, const char *> cases[] = {
      {"aard<b>vark</b> and <span><i>ant</i></span>eater", "aardvark and anteater"},
      {"<html><head><title>T</title><style>p{color:red}</style></head>"
       "<body>x<script>document.write('<p>y')</script>z</body></html>",
       "xz"},
      {"a<!-- <p>b</p> -->c<template><p>d</p></template>e<!--->f<!-->g", "acefg"},
      {"&nbsp;a&amp;b &uuml;&#x263A;&#150;&#0;&lt&notit; &bogus; &#; "
       "&CounterClockwiseContourIntegral;",
       "a&b \xC3\xBC\xE2\x98\xBA\xE2\x80\x93\xEF\xBF\xBD<\xC2\xACit; &bogus; &#; \xE2\x88\xB3"},
      {"  one \n\t two&nbsp;&nbsp; <br>  three  ", "one two\nthree"},
      {"a<div>b</div>c<p>d<p>e</p><h1>f</h1>g", "a\nb\nc\n\nd\n\ne\n\nf\n\ng"},
      {"a<br><br><br><br>b<hr>c", "a\n\nb\n\nc"},
      {"<p>x</p><pre>\n  y  z\n\n\n w\n</pre>v", "x\n\n  y  z\n\n\n w\n\nv"},
      {"<xmp><b>&amp;</b></xmp><textarea>1 &lt; 2</textarea>", "<b>&amp;</b>\n\n1 < 2"},
      {"<table><tr><td>a</td><td>b<tr><th>c<td>d</table>after", "a\tb\nc\td\nafter"},
      {"<table><tr><td>cell</td>moved</table>", "moved\ncell"},
      {"<ul><li>one<li>two<ol><li>three</ol></ul>", "one\ntwo\nthree"},
      {"see <img src=a.png alt='the logo'> and <a href=\"http://x.example/\">the site</a>",
       "see the logo and the site"},
      {"<p title='a>b' class=c>text</p><p/x>y", "text\n\ny"},
      {"<plaintext><p>&amp;", "<p>&amp;"},
      {"a</br>b<unknown>c</unknown>d</p>e", "a\nbcd\n\ne"},
  };
  for (const auto &[html, text] : cases)
    EXPECT_EQ(textOf(html), text) << html;
}

TEST(HtmlText, HostileShapesReturnValidText) {
  const std::string fiveMegabytes = repeated("words & \xFF\xC3 < ", (5 << 20) / 13);
  const std::string cases[] = {
      repeated("<div>", 1000000) + "end",
      repeated("<b><i>", 500000) + "end",
      repeated("<table><tr><td>", 300000) + "end",
      repeated("<div><table></div>", 300000) + "end",
      repeated("<p><b a=1><b a=2><b a=3></p>x", 200000) + "end",
      repeated("<ul><li>", 400000) + "end",
      repeated("<div></div>", 1000000) + "end",
      "<p><a href='" + fiveMegabytes,
      "<!--" + fiveMegabytes,
      "<pre>" + fiveMegabytes,
      fiveMegabytes + " end",
  };
  for (const std::string &html : cases) {
    const std::string text = textOf(html);
    EXPECT_EQ(validUtf8Prefix(text), text.size()) << html.substr(0, 40);
    const auto endsWithEnd = [](const std::string &s) {
      return s.size() >= 3 && s.compare(s.size() - 3, 3, "end") == 0;
    };
    EXPECT_TRUE(!endsWithEnd(html) || endsWithEnd(text)) << html.substr(0, 40);
  }
}
} // namespace
