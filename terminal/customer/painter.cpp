#include "customer/painter.h"

#include <algorithm>
#include <string_view>

#include "customer/canvas.h"
#include "customer/signature.h"

namespace gwq::terminal {
namespace {

constexpr int kWidth = 800;
constexpr int kHeight = 480;
constexpr int kMargin = 60;
constexpr int kTitleHeight = 56;
constexpr int kKeysTop = 390;
constexpr int kLineHeight = 24;
constexpr int kLetter = 10;
constexpr int kInkHeight = 8;

constexpr std::uint8_t kInk = 60;
constexpr std::uint8_t kTitleGrey = 200;
constexpr std::uint8_t kKeyGrey = 120;
constexpr std::uint8_t kWhite = 255;

bool BeginsCharacter(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
}

// How wide a text is. Characters of more than two bytes are as wide as two letters.
int WidthOf(std::string_view text) {
  int letters = 0;
  for (const char c : text) letters += BeginsCharacter(c) ? 1 + (static_cast<unsigned char>(c) >= 0xE0) : 0;
  return letters * kLetter;
}

// What a page says, without its tags.
std::string WithoutTags(std::string_view page) {
  std::string text;
  bool in_tag = false;
  for (const char c : page) {
    in_tag = in_tag || c == '<';
    if (!in_tag) text += c;
    in_tag = in_tag && c != '>';
  }
  return text;
}

// Sets text line by line, each letter as a piece of a bar.
class Page {
 public:
  explicit Page(Canvas& canvas) : canvas_(canvas) {}

  void Write(std::string_view text) {
    for (const char c : text) {
      if (y_ + kLineHeight > kKeysTop) return;
      Put(c);
    }
    NewLine();
  }

 private:
  void Put(char c) {
    if (c == '\n') return NewLine();
    const int width = WidthOf({&c, 1});
    if (x_ + width > kWidth - kMargin) NewLine();
    if (c != ' ' && c != '\r' && width > 0) canvas_.Box(x_, y_, width, kInkHeight, kInk);
    x_ += width;
  }
  void NewLine() {
    x_ = kMargin;
    y_ += kLineHeight;
  }

  Canvas& canvas_;
  int x_ = kMargin;
  int y_ = kTitleHeight + kLineHeight;
};

void DrawLabel(Canvas& canvas, int middle, int y, std::string_view text, std::uint8_t grey) {
  const int width = WidthOf(text);
  canvas.Box(middle - width / 2, y, width, kInkHeight, grey);
}

void DrawKeys(Canvas& canvas, const std::vector<ScreenKey>& keys) {
  constexpr int kKeyWidth = 140;
  constexpr int kKeyHeight = 60;
  const int count = static_cast<int>(keys.size());
  for (int i = 0; i < count; ++i) {
    const int middle = kWidth * (2 * i + 1) / (2 * count);
    canvas.Box(middle - kKeyWidth / 2, kKeysTop, kKeyWidth, kKeyHeight, kKeyGrey);
    DrawLabel(canvas, middle, kKeysTop + kKeyHeight / 2, keys[static_cast<std::size_t>(i)].label, kWhite);
  }
}

}  // namespace

std::vector<std::uint8_t> ScreenPng(const Screen& screen) {
  Canvas canvas(kWidth, kHeight);
  canvas.Box(0, 0, kWidth, kTitleHeight, kTitleGrey);
  DrawLabel(canvas, kWidth / 2, kTitleHeight / 2, screen.title, kInk);
  Page page(canvas);
  if (screen.teller) page.Write(screen.teller->name + "  " + screen.teller->number);
  page.Write(screen.kind == ScreenKind::kHtml ? WithoutTags(screen.text) : screen.text);
  page.Write(screen.second_text);
  for (const std::string& document : screen.documents) page.Write(document);
  DrawKeys(canvas, screen.keys);
  return canvas.Png();
}

std::vector<std::uint8_t> PngPainter::Signature(const std::vector<PenPoint>& points) const {
  return SignaturePng(points);
}

std::vector<std::uint8_t> PngPainter::Picture(const Screen& screen) const {
  return ScreenPng(screen);
}

}  // namespace gwq::terminal
