// SPDX-License-Identifier: MIT
#include "picture/html_text.h"

#include <gtest/gtest.h>

#include <random>
#include <utility>

namespace gwq::terminal {

using namespace picture;

namespace {

using namespace std::string_literals;

// A line as one text, so that the tables below stay readable: "^" room above, "#" heading, ">" a
// list's depth, the marker, then the text.
std::string Shown(const PageLine& line) {
  std::string shown = line.begins_block ? "^" : "";
  shown.append(static_cast<std::size_t>(line.heading), '#');
  shown.append(static_cast<std::size_t>(line.depth), '>');
  if (!line.marker.empty()) shown.append("[").append(line.marker).append("]");
  return shown.append(line.kind == PageLine::Kind::kRule ? "----" : line.text);
}

std::vector<std::string> Shown(const Page& page) {
  std::vector<std::string> lines;
  for (const PageLine& line : page) lines.push_back(Shown(line));
  return lines;
}

struct HtmlCase {
  std::string html;
  std::vector<std::string> lines;
};

class HtmlReading : public testing::TestWithParam<HtmlCase> {};

TEST_P(HtmlReading, ReadsAsItsLines) {
  EXPECT_EQ(Shown(ReadHtml(GetParam().html)), GetParam().lines) << GetParam().html;
}

INSTANTIATE_TEST_SUITE_P(
    Lines, HtmlReading,
    testing::Values(HtmlCase{"", {}}, HtmlCase{" \r\n\t ", {}}, HtmlCase{"a", {"a"}},
                    HtmlCase{"  a \n\t b  ", {"a b"}}, HtmlCase{"a<br>b<BR/>c<br />d", {"a", "b", "c", "d"}},
                    HtmlCase{"a<br><br>b", {"a", "", "b"}}, HtmlCase{"<p>a</p><p>b<p>c", {"a", "^b", "^c"}},
                    HtmlCase{"<div>a</div><div><div>b</div></div>c", {"a", "b", "c"}},
                    HtmlCase{"a<b>b</b> <i>c</i><span>d</span>", {"ab cd"}},
                    HtmlCase{"<pre>a  b\n c</pre>d  e", {"a  b", " c", "^d e"}},
                    HtmlCase{"a<hr>b", {"a", "^----", "^b"}}, HtmlCase{"<p>客户\t您好</p>", {"客户 您好"}}));

INSTANTIATE_TEST_SUITE_P(Headings, HtmlReading,
                         testing::Values(HtmlCase{"<h1>a</h1>b", {"#a", "^b"}},
                                         HtmlCase{"a<H3 class=x>b</H3>", {"a", "^###b"}},
                                         HtmlCase{"<h6>a<br>b</h6>c", {"######a", "######b", "^c"}},
                                         HtmlCase{"<h7>a</h7><header>b</header>", {"a", "^b"}}));

INSTANTIATE_TEST_SUITE_P(Lists, HtmlReading,
                         testing::Values(HtmlCase{"<ul><li>a</li><li>b</li></ul>c", {">[•]a", ">[•]b", "^c"}},
                                         HtmlCase{"<ol><li>a<li>b</ol>", {">[1.]a", ">[2.]b"}},
                                         HtmlCase{"<ol><li>a<ul><li>b</ul><li>c</ol>",
                                                  {">[1.]a", ">>[•]b", ">[2.]c"}},
                                         HtmlCase{"<li>a<br>more</li>b", {"[•]a", "more", "b"}},
                                         HtmlCase{"</ul></ol><ul><li></ul>a", {"a"}}));

INSTANTIATE_TEST_SUITE_P(
    Tables, HtmlReading,
    testing::Values(HtmlCase{"<table><tr><th>a</th><td>b</td></tr><tr><td>c<td>d</table>", {"a\tb", "c\td"}},
                    HtmlCase{"<tr> <td> a </td> <td> b </td> </tr>", {"a\tb"}}));

INSTANTIATE_TEST_SUITE_P(Entities, HtmlReading,
                         testing::Values(HtmlCase{"&lt;p&gt; &amp;amp; &quot;x&quot; &apos;",
                                                  {"<p> &amp; \"x\" '"}},
                                         HtmlCase{"a&nbsp;&nbsp;b", {"a\u00A0\u00A0b"}},
                                         HtmlCase{"&#65;&#x42;&#X43;&#24352;&#x1F600;&#233;", {"ABC张😀é"}},
                                         HtmlCase{"&ldquo;a&rdquo; &frac12; &Eacute;", {"“a” ½ É"}},
                                         HtmlCase{"a&#0;&#xD800;&#x110000;&#9999999;b", {"ab"}},
                                         HtmlCase{"a&#10;b&#32;c", {"a b c"}},
                                         HtmlCase{"&unknown; & &; A&B &amp", {"&unknown; & &; A&B &amp"}}));

INSTANTIATE_TEST_SUITE_P(Hidden, HtmlReading,
                         testing::Values(HtmlCase{"a<script>if (x<y) '<p>';</script>b", {"ab"}},
                                         HtmlCase{"<head><title>t</title><STYLE>p{}</Style ></head>a", {"a"}},
                                         HtmlCase{"a<script>x</scrip></p>", {"a"}},
                                         HtmlCase{"a<!-- <p>x</p> -->b", {"ab"}}, HtmlCase{"a<!-- b", {"a"}},
                                         HtmlCase{"<!DOCTYPE html><?xml v?>a", {"a"}}));

INSTANTIATE_TEST_SUITE_P(Damaged, HtmlReading,
                         testing::Values(HtmlCase{"a < b <3 <<", {"a < b <3 <<"}}, HtmlCase{"a<p", {"a"}},
                                         HtmlCase{"a<", {"a<"}}, HtmlCase{"a</", {"a"}},
                                         HtmlCase{"<p title=\"1 > 0\">a", {"a"}},
                                         HtmlCase{"<p title='>\">'>a", {"a"}}, HtmlCase{"<p title=\"a>b", {}},
                                         HtmlCase{"a\0b"s, {"a\uFFFDb"}},
                                         HtmlCase{"\xFF\xC3<br>\x80", {"\uFFFD\uFFFD", "\uFFFD"}},
                                         HtmlCase{"</p></div></h1>a</b>", {"a"}},
                                         HtmlCase{"<" + std::string(1000, 'p') + ">a", {"a"}}));

std::size_t BytesOf(const Page& page) {
  std::size_t bytes = 0;
  for (const PageLine& line : page) bytes += line.text.size();
  return bytes;
}

std::string Repeated(std::string_view part, std::size_t bytes) {
  std::string text;
  while (text.size() < bytes) text += part;
  return text;
}

TEST(HtmlPage, EndsWhereNoScreenIsLongEnough) {
  constexpr std::size_t kBytes = std::size_t{2} << 20;
  for (const char* part : {"a", "客", "<br>", "<p>a", "<ul><li>", "<h1>", "&amp;", "&", "<", "<a ", "<a '",
                           "<!--", "<script>", "</", "<td>", "a\n", "<table><tr><td>x"}) {
    const std::string html = Repeated(part, kBytes);
    for (const Page& page : {ReadHtml(html), ReadPlainText(html)}) {
      EXPECT_LE(BytesOf(page), 2 * kMaxPageBytes) << part;
      EXPECT_LE(page.size(), kMaxPageLines + 1) << part;
    }
  }
}

TEST(HtmlPage, IsReadWhateverItsBytes) {
  constexpr std::string_view kBytes("<>/!-&;#x\"' \n\tpbrhliuold1\0\xE5\xBC\xFF", 29);
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    std::string html(random() % 64, '\0');
    for (char& c : html) c = kBytes[random() % kBytes.size()];
    EXPECT_LE(BytesOf(ReadHtml(html)), 4 * html.size());
  }
}

TEST(PlainText, IsLinesWithTheirSpace) {
  const auto shown = [](std::string_view text) { return Shown(ReadPlainText(text)); };
  EXPECT_EQ(shown(""), std::vector<std::string>{});
  EXPECT_EQ(shown("a  <b>\r\n\n &amp;"), (std::vector<std::string>{"a  <b>", "", " &amp;"}));
  EXPECT_EQ(shown("a\tb\x01"s + "c\0d"s), (std::vector<std::string>{"a b c d"}));
}

}  // namespace
}  // namespace gwq::terminal
