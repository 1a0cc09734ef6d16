// SPDX-License-Identifier: MIT
#include "picture/html_text.h"

#include <libxml/HTMLparser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include "picture/drawing.h"

namespace gwq::terminal::picture {
namespace {

constexpr std::string_view kBullet = "•";

bool IsSpace(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte <= ' ' || byte == 0x7F;
}

template <std::size_t N>
bool IsOneOf(const std::array<std::string_view, N>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

// Gathers lines, with their space as a browser does it.
class Lines {
 public:
  [[nodiscard]] bool Full() const { return bytes_ >= kMaxPageBytes || page_.size() >= kMaxPageLines; }

  void Space() { space_ = !line_.text.empty() && line_.text.back() != '\t'; }
  void Add(std::string_view text) {
    if (std::exchange(space_, false)) line_.text += ' ';
    line_.text += text;
    bytes_ += text.size();
  }
  void Cell() {
    space_ = false;
    if (!line_.text.empty()) line_.text += '\t';
  }

  // Ends the line, even an empty one.
  void Break() {
    space_ = false;
    PageLine next;
    next.heading = line_.heading;
    next.depth = line_.depth;
    page_.push_back(std::exchange(line_, std::move(next)));
  }
  // Ends the line if there is something in it.
  void End() {
    if (!line_.text.empty()) Break();
    line_.marker.clear();
  }
  void EndBlock() {
    End();
    line_.begins_block = !page_.empty();
  }
  void Rule() {
    EndBlock();
    line_.kind = PageLine::Kind::kRule;
    Break();
    line_.begins_block = true;
  }

  void SetHeading(int heading) { line_.heading = heading; }
  void SetDepth(std::size_t depth) { line_.depth = static_cast<int>(depth); }
  void SetMarker(std::string marker) { line_.marker = std::move(marker); }

  Page Take() {
    End();
    return std::move(page_);
  }

 private:
  Page page_;
  PageLine line_;
  bool space_ = false;
  std::size_t bytes_ = 0;
};

// What libxml2 finds on a page, as lines.
class Setter {
 public:
  [[nodiscard]] bool Full() const { return lines_.Full(); }

  void Begin(std::string_view tag) {
    if (IsHidden(tag)) ++hidden_;
    if (tag == "pre") preformatted_ = true;
    if (tag == "br") return lines_.Break();
    if (tag == "hr") return lines_.Rule();
    if (tag == "li") return BeginItem();
    if (tag == "td" || tag == "th") return lines_.Cell();
    if (IsList(tag)) return BeginList(tag == "ol");
    EndLine(tag);
    if (IsHeading(tag)) lines_.SetHeading(tag[1] - '0');
  }

  void End(std::string_view tag) {
    if (IsHidden(tag)) --hidden_;
    if (tag == "pre") preformatted_ = false;
    if (tag == "li") return lines_.End();
    if (IsList(tag)) return EndList();
    EndLine(tag);
    if (IsHeading(tag)) lines_.SetHeading(0);
  }

  void Text(std::string_view text) {
    if (hidden_ > 0) return;
    for (std::size_t i = 0; i < text.size() && !Full(); ++i) Character(text.substr(i, 1));
  }

  Page Take() { return lines_.Take(); }

 private:
  static bool IsHidden(std::string_view tag) { return tag == "script" || tag == "style" || tag == "title"; }
  static bool IsList(std::string_view tag) { return tag == "ul" || tag == "ol"; }
  static bool IsHeading(std::string_view tag) {
    return tag.size() == 2 && tag[0] == 'h' && tag[1] >= '1' && tag[1] <= '6';
  }

  void EndLine(std::string_view tag) {
    constexpr std::array<std::string_view, 13> kSpaced{
        "p",       "table",   "blockquote", "pre",    "dl",     "form",   "fieldset",
        "section", "article", "header",     "footer", "figure", "address"};
    constexpr std::array<std::string_view, 10> kPlain{"div",  "tr",     "dt",     "dd",  "body",
                                                      "main", "option", "legend", "nav", "center"};
    if (IsHeading(tag) || IsOneOf(kSpaced, tag)) return lines_.EndBlock();
    if (IsOneOf(kPlain, tag)) lines_.End();
  }

  void BeginList(bool numbered) {
    EndLineOfList();
    lists_.push_back(numbered ? 1 : 0);
    lines_.SetDepth(lists_.size());
  }
  void EndList() {
    EndLineOfList();
    if (!lists_.empty()) lists_.pop_back();
    lines_.SetDepth(lists_.size());
    if (lists_.empty()) lines_.EndBlock();
  }
  void EndLineOfList() { lists_.empty() ? lines_.EndBlock() : lines_.End(); }

  void BeginItem() {
    lines_.End();
    const bool numbered = !lists_.empty() && lists_.back() > 0;
    lines_.SetMarker(numbered ? std::to_string(lists_.back()++).append(".") : std::string(kBullet));
  }

  void Character(std::string_view character) {
    const char c = character[0];
    if (preformatted_ && c == '\n') return lines_.Break();
    if (preformatted_ && c == ' ') return lines_.Add(character);
    if (IsSpace(c)) return lines_.Space();
    lines_.Add(character);
  }

  Lines lines_;
  std::vector<int> lists_;  // what the next item's number is; 0: it gets a bullet
  int hidden_ = 0;
  bool preformatted_ = false;
};

std::string_view View(const xmlChar* text) {
  return reinterpret_cast<const char*>(text);
}

struct Parsing {
  Setter setter;
  htmlParserCtxtPtr context = nullptr;

  // A page may be long; what no screen takes is not read.
  void StopWhenFull() const {
    if (setter.Full()) xmlStopParser(context);
  }
};

htmlSAXHandler Handler() {
  htmlSAXHandler handler{};
  handler.startElement = [](void* parsing, const xmlChar* name, const xmlChar** /*attributes*/) {
    static_cast<Parsing*>(parsing)->setter.Begin(View(name));
    static_cast<Parsing*>(parsing)->StopWhenFull();
  };
  handler.endElement = [](void* parsing, const xmlChar* name) {
    static_cast<Parsing*>(parsing)->setter.End(View(name));
  };
  handler.characters = [](void* parsing, const xmlChar* text, int length) {
    static_cast<Parsing*>(parsing)->setter.Text(View(text).substr(0, static_cast<std::size_t>(length)));
    static_cast<Parsing*>(parsing)->StopWhenFull();
  };
  handler.ignorableWhitespace = handler.characters;
  return handler;
}

}  // namespace

Page ReadHtml(std::string_view html) {
  // Without this, libxml2 takes what is not UTF-8 for Latin-1.
  const std::unique_ptr<char, FreedBy<g_free>> valid(
      g_utf8_make_valid(html.data(), static_cast<gssize>(html.size())));
  const std::string_view text = valid.get();
  if (text.empty()) return {};
  const auto release = [](htmlParserCtxtPtr context) { htmlFreeParserCtxt(context); };
  const std::unique_ptr<htmlParserCtxt, decltype(release)> context(
      htmlCreateMemoryParserCtxt(text.data(), static_cast<int>(text.size())));
  if (!context) throw std::bad_alloc();
  Parsing parsing{.setter = {}, .context = context.get()};
  *context->sax = Handler();
  context->userData = &parsing;
  htmlCtxtUseOptions(context.get(), HTML_PARSE_NONET | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING);
  xmlSwitchEncoding(context.get(), XML_CHAR_ENCODING_UTF8);
  htmlParseDocument(context.get());
  return parsing.setter.Take();
}

Page ReadPlainText(std::string_view text) {
  Lines lines;
  for (std::size_t i = 0; i < text.size() && !lines.Full(); ++i) {
    if (text[i] == '\n') {
      lines.Break();
    } else if (text[i] == ' ' || !IsSpace(text[i])) {
      lines.Add(text.substr(i, 1));
    } else if (text[i] != '\r') {
      lines.Space();
    }
  }
  return lines.Take();
}

}  // namespace gwq::terminal::picture
