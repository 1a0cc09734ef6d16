// SPDX-License-Identifier: MIT
#include "picture/html_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <optional>
#include <utility>

namespace gwq::terminal {
namespace {

constexpr std::string_view kBullet = "•";
constexpr char32_t kReplacement = 0xFFFD;
constexpr std::size_t kLongestName = 10;  // of a tag or an entity that means something here

bool IsSpace(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte <= ' ' || byte == 0x7F;
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

template <std::size_t N>
bool IsOneOf(const std::array<std::string_view, N>& names, std::string_view name) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

void AppendUtf8(std::string& text, char32_t code) {
  const auto tail = [&](int shift) { text += static_cast<char>(0x80 | ((code >> shift) & 0x3F)); };
  if (code < 0x80) {
    text += static_cast<char>(code);
  } else if (code < 0x800) {
    text += static_cast<char>(0xC0 | (code >> 6));
  } else if (code < 0x10000) {
    text += static_cast<char>(0xE0 | (code >> 12));
  } else {
    text += static_cast<char>(0xF0 | (code >> 18));
  }
  if (code >= 0x10000) tail(12);
  if (code >= 0x800) tail(6);
  if (code >= 0x80) tail(0);
}

struct Entity {
  std::string_view name;
  char32_t code;
};
constexpr std::array<Entity, 18> kEntities{{{"amp", '&'},
                                            {"lt", '<'},
                                            {"gt", '>'},
                                            {"quot", '"'},
                                            {"apos", '\''},
                                            {"nbsp", 0xA0},
                                            {"ensp", 0x2002},
                                            {"emsp", 0x2003},
                                            {"yen", 0xA5},
                                            {"copy", 0xA9},
                                            {"reg", 0xAE},
                                            {"middot", 0xB7},
                                            {"times", 0xD7},
                                            {"ndash", 0x2013},
                                            {"mdash", 0x2014},
                                            {"bull", 0x2022},
                                            {"hellip", 0x2026},
                                            {"euro", 0x20AC}}};

// The number of "#65" or "#x41".
std::optional<char32_t> NumberOf(std::string_view name) {
  name.remove_prefix(1);
  const bool hex = name.starts_with('x') || name.starts_with('X');
  if (hex) name.remove_prefix(1);
  std::uint32_t code = 0;
  const char* const end = name.data() + name.size();
  const auto read = std::from_chars(name.data(), end, code, hex ? 16 : 10);
  if (read.ec == std::errc::invalid_argument || read.ptr != end) return std::nullopt;
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  const bool exists = read.ec == std::errc() && code != 0 && code <= 0x10FFFF && !surrogate;
  return exists ? static_cast<char32_t>(code) : kReplacement;
}

std::optional<char32_t> CodeOf(std::string_view name) {
  if (name.starts_with('#')) return NumberOf(name);
  const auto* const entity =
      std::find_if(kEntities.begin(), kEntities.end(), [&](const Entity& e) { return e.name == name; });
  if (entity == kEntities.end()) return std::nullopt;
  return entity->code;
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

struct Tag {
  std::string name;  // in small letters; cut, as no long one means anything
  bool closes = false;
};

class HtmlReader {
 public:
  explicit HtmlReader(std::string_view html) : rest_(html) {}

  Page Read() {
    while (!rest_.empty() && !lines_.Full()) {
      if (rest_[0] == '<' && BeginsTag()) {
        ReadTag();
      } else if (rest_[0] == '&') {
        ReadEntity();
      } else {
        ReadCharacter();
      }
    }
    return lines_.Take();
  }

 private:
  [[nodiscard]] bool BeginsTag() const {
    return rest_.size() > 1 && (IsLetter(rest_[1]) || rest_[1] == '/' || rest_[1] == '!' || rest_[1] == '?');
  }

  void Skip(std::size_t count) { rest_.remove_prefix(std::min(count, rest_.size())); }
  void SkipBehind(std::string_view mark) {
    const std::size_t at = rest_.find(mark);
    Skip(at == std::string_view::npos ? rest_.size() : at + mark.size());
  }
  // A ">" in quotes does not end a tag.
  void SkipTag() {
    char quote = '\0';
    std::size_t at = 0;
    for (; at < rest_.size() && (quote != '\0' || rest_[at] != '>'); ++at) {
      const char c = rest_[at];
      if (c == quote) {
        quote = '\0';
      } else if (quote == '\0' && (c == '"' || c == '\'')) {
        quote = c;
      }
    }
    Skip(at + 1);
  }

  void ReadTag() {
    if (rest_.starts_with("<!--")) return SkipBehind("-->");
    if (rest_[1] == '!' || rest_[1] == '?') return SkipBehind(">");
    Tag tag;
    tag.closes = rest_[1] == '/';
    Skip(tag.closes ? 2 : 1);
    while (!rest_.empty() && rest_[0] != '>' && rest_[0] != '/' && !IsSpace(rest_[0])) {
      if (tag.name.size() <= kLongestName) tag.name += Lower(rest_[0]);
      Skip(1);
    }
    SkipTag();
    Apply(tag);
  }

  void Apply(const Tag& tag) {
    constexpr std::array<std::string_view, 3> kHidden{"script", "style", "title"};
    constexpr std::array<std::string_view, 13> kSpaced{
        "p",       "table",   "blockquote", "pre",    "dl",     "form",   "fieldset",
        "section", "article", "header",     "footer", "figure", "address"};
    constexpr std::array<std::string_view, 10> kPlain{"div",  "tr",     "dt",     "dd",  "body",
                                                      "main", "option", "legend", "nav", "center"};
    if (!tag.closes && IsOneOf(kHidden, tag.name)) return SkipHidden(tag.name);
    if (tag.name == "pre") preformatted_ = !tag.closes;
    if (tag.name == "br") return lines_.Break();
    if (tag.name == "hr") return lines_.Rule();
    if (tag.name == "ul" || tag.name == "ol") return List(tag);
    if (tag.name == "li") return Item(tag);
    if ((tag.name == "td" || tag.name == "th") && !tag.closes) return lines_.Cell();
    if (tag.name.size() == 2 && tag.name[0] == 'h' && tag.name[1] >= '1' && tag.name[1] <= '6')
      return Heading(tag);
    if (IsOneOf(kSpaced, tag.name)) return lines_.EndBlock();
    if (IsOneOf(kPlain, tag.name)) lines_.End();
  }

  // To the end tag of the same name, however it is written.
  void SkipHidden(std::string_view name) {
    const auto same = [&](std::string_view text) {
      return text.size() >= name.size() &&
             std::equal(name.begin(), name.end(), text.begin(), [](char a, char b) { return a == Lower(b); });
    };
    do {
      SkipBehind("</");
    } while (!rest_.empty() && !same(rest_));
    SkipTag();
  }

  void Heading(const Tag& tag) {
    lines_.EndBlock();
    lines_.SetHeading(tag.closes ? 0 : tag.name[1] - '0');
  }

  void List(const Tag& tag) {
    if (lists_.empty()) {
      lines_.EndBlock();
    } else {
      lines_.End();
    }
    if (!tag.closes) {
      lists_.push_back(tag.name == "ol" ? 1 : 0);
    } else if (!lists_.empty()) {
      lists_.pop_back();
    }
    lines_.SetDepth(lists_.size());
    if (lists_.empty()) lines_.EndBlock();
  }

  void Item(const Tag& tag) {
    lines_.End();
    if (tag.closes) return;
    const bool numbered = !lists_.empty() && lists_.back() > 0;
    lines_.SetMarker(numbered ? std::to_string(lists_.back()++).append(".") : std::string(kBullet));
  }

  void ReadEntity() {
    const std::size_t end = rest_.substr(0, kLongestName + 1).find(';');
    const auto code = end == std::string_view::npos ? std::nullopt : CodeOf(rest_.substr(1, end - 1));
    if (!code) return ReadCharacter();
    Skip(end + 1);
    if (*code <= ' ' || *code == 0x7F) return lines_.Space();
    std::string text;
    AppendUtf8(text, *code);
    lines_.Add(text);
  }

  void ReadCharacter() {
    const char c = rest_[0];
    const std::string_view text = rest_.substr(0, 1);
    Skip(1);
    if (preformatted_ && c == '\n') return lines_.Break();
    if (preformatted_ && c == ' ') return lines_.Add(text);
    if (IsSpace(c)) return lines_.Space();
    lines_.Add(text);
  }

  std::string_view rest_;
  Lines lines_;
  std::vector<int> lists_;  // what the next item's number is; 0: it gets a bullet
  bool preformatted_ = false;
};

}  // namespace

Page ReadHtml(std::string_view html) {
  return HtmlReader(html).Read();
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

}  // namespace gwq::terminal
