// SPDX-License-Identifier: MIT
#include "picture/painter.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "picture/drawing.h"
#include "picture/html_text.h"
#include "picture/signature.h"

namespace gwq::terminal::picture {
namespace {

constexpr int kWidth = 800;
constexpr int kHeight = 480;
constexpr int kMargin = 24;
constexpr int kHeaderHeight = 64;
constexpr int kCardTop = kHeaderHeight + 20;
constexpr int kCardWidth = kWidth - 2 * kMargin;
constexpr int kCardPadding = 26;
constexpr int kKeyHeight = 56;
constexpr int kKeysTop = kHeight - kMargin - kKeyHeight;
constexpr int kRadius = 10;

constexpr Colour kNavy = Rgb(0x17365C);
constexpr Colour kDeepNavy = Rgb(0x0F2442);
constexpr Colour kAccent = Rgb(0x2A6FBB);
constexpr Colour kAccentPressed = Rgb(0x174C86);
constexpr Colour kGold = Rgb(0xD9A441);
constexpr Colour kBackground = Rgb(0xEDF1F6);
constexpr Colour kWhite = Rgb(0xFFFFFF);
constexpr Colour kBorder = Rgb(0xD3DBE5);
constexpr Colour kInk = Rgb(0x22303F);
constexpr Colour kPaleInk = Rgb(0x5C6B7D);
constexpr Colour kPressedGrey = Rgb(0xDCE3EC);

constexpr double kBodySize = 19;

class ScreenPicture {
 public:
  ScreenPicture() : drawing_(kWidth, kHeight, kBackground), type_(drawing_) {}

  std::vector<std::uint8_t> Draw(const device::Screen& screen, const device::ScreenKey* pressed) {
    if (screen.kind == device::ScreenKind::kIdle) {
      DrawWelcome(screen.title);
    } else {
      DrawHeader(screen.title);
      DrawCard(screen);
      DrawKeys(screen.keys, pressed);
    }
    return drawing_.Png();
  }

 private:
  void DrawWelcome(std::string_view title);
  void DrawHeader(std::string_view title);
  void DrawCard(const device::Screen& screen);
  void DrawPage(const Page& page);
  void DrawLine(const PageLine& line);
  void DrawTeller(const device::TellerCard& teller);
  void FadeOut();
  void DrawKeys(const std::vector<device::ScreenKey>& keys, const device::ScreenKey* pressed);
  void DrawKey(const device::ScreenKey& key, double x, double width, bool pressed);
  void DrawTick(double x, double y, const Colour& colour);
  void FillFromTop(double height);

  Drawing drawing_;
  Typesetter type_;
  double card_bottom_ = 0;
  double y_ = 0;  // where the next line of the page goes
};

// From navy to a deeper one.
void ScreenPicture::FillFromTop(double height) {
  const std::unique_ptr<cairo_pattern_t, FreedBy<cairo_pattern_destroy>> shade(
      cairo_pattern_create_linear(0, 0, 0, height));
  cairo_pattern_add_color_stop_rgb(shade.get(), 0, kNavy.red, kNavy.green, kNavy.blue);
  cairo_pattern_add_color_stop_rgb(shade.get(), 1, kDeepNavy.red, kDeepNavy.green, kDeepNavy.blue);
  cairo_set_source(drawing_.Context(), shade.get());
  cairo_rectangle(drawing_.Context(), 0, 0, kWidth, height);
  cairo_fill(drawing_.Context());
}

void ScreenPicture::DrawWelcome(std::string_view title) {
  FillFromTop(kHeight);
  const SetText text = type_.Label(title, {46, false, kWhite}, kCardWidth);
  text.Draw((kWidth - text.Width()) / 2.0, (kHeight - text.Height()) / 2.0 - 12);
  drawing_.FillBox(kWidth / 2.0 - 32, kHeight / 2.0 + 38, 64, 4, 2, kGold);
}

void ScreenPicture::DrawHeader(std::string_view title) {
  FillFromTop(kHeaderHeight);
  drawing_.FillBox(kMargin, 20, 4, kHeaderHeight - 40, 2, kGold);
  const SetText text = type_.Label(title, {23, true, kWhite}, kCardWidth - 24);
  text.Draw(kMargin + 18, (kHeaderHeight - text.Height()) / 2.0);
}

Page PageOf(const device::Screen& screen) {
  Page page = screen.kind == device::ScreenKind::kHtml ? ReadHtml(screen.text) : ReadPlainText(screen.text);
  Page second = ReadPlainText(screen.second_text);
  if (!second.empty()) second.front().begins_block = !page.empty();
  page.insert(page.end(), second.begin(), second.end());
  for (const std::string& document : screen.documents) {
    PageLine line;
    line.text = document;
    line.marker = "•";
    line.depth = 1;
    page.push_back(std::move(line));
  }
  return page;
}

void ScreenPicture::DrawCard(const device::Screen& screen) {
  card_bottom_ = screen.AsksCustomer() ? kKeysTop - 20 : kHeight - kMargin;
  const double height = card_bottom_ - kCardTop;
  drawing_.RoundedBox(kMargin, kCardTop + 2, kCardWidth, height, kRadius);
  drawing_.SetColour(kDeepNavy, 0.07);
  cairo_fill(drawing_.Context());
  drawing_.FillBox(kMargin, kCardTop, kCardWidth, height, kRadius, kWhite);

  cairo_save(drawing_.Context());
  drawing_.RoundedBox(kMargin, kCardTop, kCardWidth, height, kRadius);
  cairo_clip(drawing_.Context());
  y_ = kCardTop + kCardPadding - 8;
  if (screen.teller) DrawTeller(*screen.teller);
  DrawPage(PageOf(screen));
  cairo_restore(drawing_.Context());

  drawing_.RoundedBox(kMargin + 0.5, kCardTop + 0.5, kCardWidth - 1, height - 1, kRadius);
  drawing_.SetColour(kBorder);
  cairo_set_line_width(drawing_.Context(), 1);
  cairo_stroke(drawing_.Context());
}

void ScreenPicture::DrawPage(const Page& page) {
  for (const PageLine& line : page) {
    if (y_ >= card_bottom_) break;
    DrawLine(line);
  }
  if (y_ > card_bottom_ - 10) FadeOut();
}

TextStyle StyleOf(const PageLine& line) {
  constexpr std::array<double, 7> kSizes{kBodySize, 27, 24, 21, kBodySize, kBodySize, kBodySize};
  const auto level = static_cast<std::size_t>(std::clamp(line.heading, 0, 6));
  return {kSizes.at(level), level > 0, level > 0 ? kNavy : kInk};
}

void ScreenPicture::DrawLine(const PageLine& line) {
  constexpr int kIndent = 26;
  constexpr int kDeepest = 6;
  const double left = kMargin + kCardPadding;
  const int room = kCardWidth - 2 * kCardPadding;
  if (line.begins_block) y_ += 10;
  if (line.kind == PageLine::Kind::kRule) {
    drawing_.FillBox(left, y_, room, 1, 0.5, kBorder);
    y_ += 2;
    return;
  }
  const int indent = kIndent * std::clamp(line.depth, line.marker.empty() ? 0 : 1, kDeepest);
  const TextStyle style = StyleOf(line);
  const SetText text = type_.Paragraph(line.text, style, room - indent);
  text.Draw(left + indent, y_);
  if (!line.marker.empty()) {
    const SetText marker = type_.Label(line.marker, {style.size, false, kAccent}, kIndent * 2);
    marker.Draw(left + indent - marker.Width() - 8, y_);
  }
  y_ += text.Height() + 5;
}

void ScreenPicture::DrawTeller(const device::TellerCard& teller) {
  const double left = kMargin + kCardPadding;
  const SetText name = type_.Label(teller.name, {27, true, kNavy}, kCardWidth - 2 * kCardPadding);
  name.Draw(left, y_);
  y_ += name.Height() + 4;
  const SetText number = type_.Label(teller.number, {kBodySize, false, kPaleInk}, kCardWidth / 2);
  number.Draw(left, y_);
  std::string stars;
  for (int i = 0; i < device::kMaxStars; ++i) stars += i < teller.stars ? "★" : "☆";
  y_ += number.Height() + 4;
  const SetText row = type_.Label(stars, {26, false, kGold}, kCardWidth / 2);
  row.Draw(left, y_);
  y_ += row.Height() + 12;
}

// There is more than the screen takes.
void ScreenPicture::FadeOut() {
  constexpr double kFade = 44;
  const std::unique_ptr<cairo_pattern_t, FreedBy<cairo_pattern_destroy>> fade(
      cairo_pattern_create_linear(0, card_bottom_ - kFade, 0, card_bottom_ - 6));
  cairo_pattern_add_color_stop_rgba(fade.get(), 0, 1, 1, 1, 0);
  cairo_pattern_add_color_stop_rgba(fade.get(), 1, 1, 1, 1, 1);
  cairo_set_source(drawing_.Context(), fade.get());
  cairo_rectangle(drawing_.Context(), kMargin, card_bottom_ - kFade, kCardWidth, kFade);
  cairo_fill(drawing_.Context());
}

void ScreenPicture::DrawKeys(const std::vector<device::ScreenKey>& keys, const device::ScreenKey* pressed) {
  constexpr double kGap = 16;
  constexpr double kWidest = 240;
  const auto count = static_cast<double>(keys.size());
  const double width = std::min(kWidest, (kCardWidth + kGap) / count - kGap);
  double x = (kWidth - count * (width + kGap) + kGap) / 2;
  for (const device::ScreenKey& key : keys) {
    DrawKey(key, x, width, pressed != nullptr && pressed->name == key.name);
    x += width + kGap;
  }
}

void ScreenPicture::DrawKey(const device::ScreenKey& key, double x, double width, bool pressed) {
  const bool filled =
      key.role == device::ScreenKey::Role::kConfirm || key.role == device::ScreenKey::Role::kSign;
  const Colour ink = filled ? kWhite : kNavy;
  if (pressed) {
    drawing_.RoundedBox(x - 5, kKeysTop - 5, width + 10, kKeyHeight + 10, kRadius + 5);
    drawing_.SetColour(kAccent, 0.35);
    cairo_fill(drawing_.Context());
  }
  const Colour face = filled ? (pressed ? kAccentPressed : kAccent) : (pressed ? kPressedGrey : kWhite);
  drawing_.FillBox(x, kKeysTop, width, kKeyHeight, kRadius, face);
  if (!filled) {
    drawing_.RoundedBox(x + 0.5, kKeysTop + 0.5, width - 1, kKeyHeight - 1, kRadius);
    drawing_.SetColour(pressed ? kAccent : kBorder);
    cairo_set_line_width(drawing_.Context(), 1);
    cairo_stroke(drawing_.Context());
  }
  const double tick = pressed ? 28 : 0;
  const SetText label = type_.Label(key.label, {20, true, ink}, std::max(1, static_cast<int>(width - 56)));
  const double left = x + (width - label.Width() - tick) / 2;
  label.Draw(left + tick, kKeysTop + (kKeyHeight - label.Height()) / 2.0);
  if (pressed) DrawTick(left, kKeysTop + kKeyHeight / 2.0, ink);
}

void ScreenPicture::DrawTick(double x, double y, const Colour& colour) {
  drawing_.SetColour(colour);
  cairo_set_line_width(drawing_.Context(), 3);
  cairo_set_line_cap(drawing_.Context(), CAIRO_LINE_CAP_ROUND);
  cairo_set_line_join(drawing_.Context(), CAIRO_LINE_JOIN_ROUND);
  cairo_move_to(drawing_.Context(), x + 1, y);
  cairo_line_to(drawing_.Context(), x + 7, y + 6);
  cairo_line_to(drawing_.Context(), x + 18, y - 7);
  cairo_stroke(drawing_.Context());
}

}  // namespace

std::vector<std::uint8_t> ScreenPng(const device::Screen& screen, const device::ScreenKey* pressed) {
  return ScreenPicture().Draw(screen, pressed);
}

std::vector<std::uint8_t> PngPainter::Signature(const std::vector<device::PenPoint>& points) const {
  return SignaturePng(points);
}

std::vector<std::uint8_t> PngPainter::Picture(const device::Screen& screen,
                                              const device::ScreenKey* pressed) const {
  return ScreenPng(screen, pressed);
}

}  // namespace gwq::terminal::picture
