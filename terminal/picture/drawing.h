// SPDX-License-Identifier: MIT
// A picture to draw on, and text to set on it.
#pragma once

#include <cairo.h>
#include <pango/pangocairo.h>

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace gwq::terminal::picture {

template <auto kFree>
struct FreedBy {
  template <typename T>
  void operator()(T* object) const {
    kFree(object);
  }
};

struct Colour {
  double red = 0;
  double green = 0;
  double blue = 0;
};

// As designers write it: 0xRRGGBB.
constexpr Colour Rgb(unsigned code) {
  return {((code >> 16) & 0xFF) / 255.0, ((code >> 8) & 0xFF) / 255.0, (code & 0xFF) / 255.0};
}

class Drawing {
 public:
  Drawing(int width, int height, const Colour& background);

  [[nodiscard]] cairo_t* Context() const { return context_.get(); }
  void SetColour(const Colour& colour, double alpha = 1) const;
  // Adds it to the path.
  void RoundedBox(double x, double y, double width, double height, double radius) const;
  void FillBox(double x, double y, double width, double height, double radius, const Colour& colour) const;

  // Throws std::runtime_error if the encoder fails.
  [[nodiscard]] std::vector<std::uint8_t> Png() const;

 private:
  std::unique_ptr<cairo_surface_t, FreedBy<cairo_surface_destroy>> surface_;
  std::unique_ptr<cairo_t, FreedBy<cairo_destroy>> context_;
};

struct TextStyle {
  double size = 0;  // pixels
  bool bold = false;
  Colour colour;
};

using Layout = std::unique_ptr<PangoLayout, FreedBy<g_object_unref>>;

// A piece of text that has been set. Its typesetter must outlive it.
class SetText {
 public:
  SetText(cairo_t* context, Layout layout, const Colour& colour);

  [[nodiscard]] int Width() const;
  [[nodiscard]] int Height() const;
  // With its left upper corner there.
  void Draw(double x, double y) const;

 private:
  cairo_t* context_;
  Layout layout_;
  Colour colour_;
};

// Keeps its fonts to itself: nothing is left behind on the thread that draws.
class Typesetter {
 public:
  explicit Typesetter(const Drawing& drawing);

  // Wraps at `width`. What is no UTF-8 shows as replacement characters.
  [[nodiscard]] SetText Paragraph(std::string_view text, const TextStyle& style, int width) const;
  // One line, its end left out where it is too long.
  [[nodiscard]] SetText Label(std::string_view text, const TextStyle& style, int width) const;

 private:
  [[nodiscard]] Layout Set(std::string_view text, const TextStyle& style, int width) const;

  cairo_t* context_;
  std::unique_ptr<PangoFontMap, FreedBy<g_object_unref>> fonts_;
  std::unique_ptr<PangoContext, FreedBy<g_object_unref>> pango_;
};

}  // namespace gwq::terminal::picture
