// SPDX-License-Identifier: MIT
#include "picture/drawing.h"

#include <numbers>
#include <stdexcept>
#include <utility>

namespace gwq::terminal::picture {
namespace {

constexpr const char* kFamily = "sans";
constexpr double kLineSpacing = 1.25;
constexpr int kTabWidth = 180;
constexpr int kTabs = 4;

cairo_status_t Append(void* closure, const unsigned char* data, unsigned int size) noexcept {
  try {
    auto& png = *static_cast<std::vector<std::uint8_t>*>(closure);
    png.insert(png.end(), data, data + size);
    return CAIRO_STATUS_SUCCESS;
  } catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;
  }
}

void SetFont(PangoLayout* layout, const TextStyle& style) {
  const std::unique_ptr<PangoFontDescription, FreedBy<pango_font_description_free>> font(
      pango_font_description_new());
  pango_font_description_set_family_static(font.get(), kFamily);
  pango_font_description_set_weight(font.get(), style.bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
  pango_font_description_set_absolute_size(font.get(), style.size * PANGO_SCALE);
  pango_layout_set_font_description(layout, font.get());
}

void SetTabs(PangoLayout* layout) {
  const std::unique_ptr<PangoTabArray, FreedBy<pango_tab_array_free>> tabs(pango_tab_array_new(kTabs, TRUE));
  for (int i = 0; i < kTabs; ++i) pango_tab_array_set_tab(tabs.get(), i, PANGO_TAB_LEFT, (i + 1) * kTabWidth);
  pango_layout_set_tabs(layout, tabs.get());
}

}  // namespace

Drawing::Drawing(int width, int height, const Colour& background)
    : surface_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height)),
      context_(cairo_create(surface_.get())) {
  SetColour(background);
  cairo_paint(Context());
}

void Drawing::SetColour(const Colour& colour, double alpha) const {
  cairo_set_source_rgba(Context(), colour.red, colour.green, colour.blue, alpha);
}

void Drawing::RoundedBox(double x, double y, double width, double height, double radius) const {
  constexpr double kQuarter = std::numbers::pi / 2;
  const double right = x + width - radius;
  const double bottom = y + height - radius;
  cairo_new_sub_path(Context());
  cairo_arc(Context(), right, y + radius, radius, -kQuarter, 0);
  cairo_arc(Context(), right, bottom, radius, 0, kQuarter);
  cairo_arc(Context(), x + radius, bottom, radius, kQuarter, 2 * kQuarter);
  cairo_arc(Context(), x + radius, y + radius, radius, 2 * kQuarter, 3 * kQuarter);
  cairo_close_path(Context());
}

void Drawing::FillBox(double x, double y, double width, double height, double radius,
                      const Colour& colour) const {
  RoundedBox(x, y, width, height, radius);
  SetColour(colour);
  cairo_fill(Context());
}

std::vector<std::uint8_t> Drawing::Png() const {
  std::vector<std::uint8_t> png;
  const bool drawn = cairo_status(Context()) == CAIRO_STATUS_SUCCESS;
  if (!drawn || cairo_surface_write_to_png_stream(surface_.get(), Append, &png) != CAIRO_STATUS_SUCCESS)
    throw std::runtime_error("the picture cannot be encoded");
  return png;
}

SetText::SetText(cairo_t* context, Layout layout, const Colour& colour)
    : context_(context), layout_(std::move(layout)), colour_(colour) {}

int SetText::Width() const {
  int width = 0;
  pango_layout_get_pixel_size(layout_.get(), &width, nullptr);
  return width;
}

int SetText::Height() const {
  int height = 0;
  pango_layout_get_pixel_size(layout_.get(), nullptr, &height);
  return height;
}

void SetText::Draw(double x, double y) const {
  cairo_set_source_rgb(context_, colour_.red, colour_.green, colour_.blue);
  cairo_move_to(context_, x, y);
  pango_cairo_show_layout(context_, layout_.get());
}

Typesetter::Typesetter(const Drawing& drawing)
    : context_(drawing.Context()),
      fonts_(pango_cairo_font_map_new()),
      pango_(pango_font_map_create_context(fonts_.get())) {
  const std::unique_ptr<cairo_font_options_t, FreedBy<cairo_font_options_destroy>> options(
      cairo_font_options_create());
  cairo_font_options_set_antialias(options.get(), CAIRO_ANTIALIAS_GRAY);
  cairo_font_options_set_hint_style(options.get(), CAIRO_HINT_STYLE_SLIGHT);
  cairo_font_options_set_hint_metrics(options.get(), CAIRO_HINT_METRICS_OFF);
  pango_cairo_context_set_font_options(pango_.get(), options.get());
  pango_context_set_language(pango_.get(), pango_language_from_string("zh-cn"));
}

SetText Typesetter::Paragraph(std::string_view text, const TextStyle& style, int width) const {
  Layout layout = Set(text, style, width);
  pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
  pango_layout_set_line_spacing(layout.get(), static_cast<float>(kLineSpacing));
  SetTabs(layout.get());
  return {context_, std::move(layout), style.colour};
}

SetText Typesetter::Label(std::string_view text, const TextStyle& style, int width) const {
  Layout layout = Set(text, style, width);
  pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
  pango_layout_set_ellipsize(layout.get(), PANGO_ELLIPSIZE_END);
  return {context_, std::move(layout), style.colour};
}

Layout Typesetter::Set(std::string_view text, const TextStyle& style, int width) const {
  Layout layout(pango_layout_new(pango_.get()));
  SetFont(layout.get(), style);
  pango_layout_set_width(layout.get(), width * PANGO_SCALE);
  const std::unique_ptr<char, FreedBy<g_free>> valid(
      g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
  pango_layout_set_text(layout.get(), valid.get(), -1);
  return layout;
}

}  // namespace gwq::terminal::picture

// For builds under AddressSanitizer: fontconfig keeps the pieces of its patterns as distances, not as
// pointers, so that what it still holds at the end looks lost. It is in this file because every
// program that draws has it.
#if defined(__SANITIZE_ADDRESS__)
#define GWQ_FINDS_LEAKS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define GWQ_FINDS_LEAKS 1
#endif
#endif
#ifdef GWQ_FINDS_LEAKS

extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so.1\n";
}
extern "C" const char* __lsan_default_options();
extern "C" const char* __lsan_default_options() {
  return "print_suppressions=0";
}

#endif
