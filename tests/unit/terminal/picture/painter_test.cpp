// SPDX-License-Identifier: MIT
#include "picture/painter.h"

#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <random>
#include <string>

#include "picture/signature.h"

namespace gwq::terminal {

using namespace device;
using namespace picture;
namespace {

using Role = ScreenKey::Role;
using Png = std::vector<std::uint8_t>;

constexpr unsigned kWhite = 255;

struct Decoded {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> grey;

  [[nodiscard]] unsigned At(int x, int y) const {
    return grey.at(static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                   static_cast<std::size_t>(x));
  }
  // How many pixels of a part are darker than that.
  [[nodiscard]] int Darker(int left, int top, int right, int bottom, unsigned than = 128) const {
    int dark = 0;
    for (int y = std::max(top, 0); y < std::min(bottom, height); ++y) {
      for (int x = std::max(left, 0); x < std::min(right, width); ++x) dark += At(x, y) < than ? 1 : 0;
    }
    return dark;
  }
};

Decoded Decode(const Png& png) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  EXPECT_NE(png_image_begin_read_from_memory(&image, png.data(), png.size()), 0) << image.message;
  image.format = PNG_FORMAT_GRAY;
  Decoded decoded{static_cast<int>(image.width), static_cast<int>(image.height),
                  std::vector<std::uint8_t>(PNG_IMAGE_SIZE(image))};
  EXPECT_NE(png_image_finish_read(&image, nullptr, decoded.grey.data(), 0, nullptr), 0) << image.message;
  return decoded;
}

Screen HtmlScreen(std::string html) {
  Screen screen;
  screen.kind = ScreenKind::kHtml;
  screen.title = "Information";
  screen.text = std::move(html);
  screen.keys = {{Role::kConfirm, "0", "Confirm", "B0F"}, {Role::kCancel, "1", "Cancel", "B1F"}};
  return screen;
}

// The page between the header and the keys; its border is left out.
int InkOfPage(const Screen& screen) {
  const Decoded picture = Decode(ScreenPng(screen));
  EXPECT_EQ(picture.width, 800);
  EXPECT_EQ(picture.height, 480);
  return picture.Darker(30, 90, 770, 375);
}

TEST(ScreenPicture, OfEveryKindHasTheSizeOfTheScreen) {
  for (int kind = 0; kind <= static_cast<int>(ScreenKind::kCheckout); ++kind) {
    Screen screen = HtmlScreen("some words");
    screen.kind = static_cast<ScreenKind>(kind);
    const Decoded picture = Decode(ScreenPng(screen));
    EXPECT_EQ(picture.width, 800) << kind;
    EXPECT_EQ(picture.height, 480) << kind;
  }
}

TEST(ScreenPicture, HasInkWhereThereIsTextAndOnlyThere) {
  EXPECT_EQ(InkOfPage(HtmlScreen("")), 0);
  EXPECT_EQ(InkOfPage(HtmlScreen("<p> </p><script>some words</script><!-- some words -->")), 0);
  EXPECT_GT(InkOfPage(HtmlScreen("some words")), 100);
  EXPECT_GT(InkOfPage(HtmlScreen("请确认")), 100);
}

TEST(ScreenPicture, OfAHeadingHasMoreInk) {
  EXPECT_GT(InkOfPage(HtmlScreen("<h1>some words</h1>")), InkOfPage(HtmlScreen("some words")) * 3 / 2);
}

TEST(ScreenPicture, SetsDifferentTextsDifferently) {
  EXPECT_NE(ScreenPng(HtmlScreen("100.00")), ScreenPng(HtmlScreen("900.00")));
  EXPECT_NE(ScreenPng(HtmlScreen("张三")), ScreenPng(HtmlScreen("李四")));
  EXPECT_EQ(ScreenPng(HtmlScreen("<p class=\"x\">张三</p>")), ScreenPng(HtmlScreen("张三")));
}

TEST(ScreenPicture, DependsOnEverythingThatIsShown) {
  Screen screen;
  screen.kind = ScreenKind::kCheckout;
  Png before = ScreenPng(screen);
  const auto expect_another = [&](const char* what) {
    const Png now = ScreenPng(screen);
    EXPECT_NE(now, before) << what;
    before = now;
  };
  screen.title = "some words";
  expect_another("title");
  screen.text = "some words";
  expect_another("text");
  screen.second_text = "some words";
  expect_another("second text");
  screen.documents = {"/tmp/a.pdf"};
  expect_another("documents");
  screen.teller = TellerCard{"name", "number", 3, {}, {}};
  expect_another("teller");
  screen.teller->stars = 4;
  expect_another("stars");
  screen.keys = HtmlScreen("").keys;
  expect_another("keys");
  screen.keys[1].label = "Back";
  expect_another("label");
}

TEST(ScreenPicture, MarksThePressedKeyAndNothingElse) {
  const Screen screen = HtmlScreen("some words");
  const Decoded none = Decode(ScreenPng(screen));
  const Decoded confirmed = Decode(ScreenPng(screen, &screen.keys[0]));
  const Decoded cancelled = Decode(ScreenPng(screen, &screen.keys[1]));
  const auto differ = [&](const Decoded& a, int left, int top, int right) {
    for (int y = top; y < 480; ++y) {
      for (int x = left; x < right; ++x) {
        if (a.At(x, y) != none.At(x, y)) return true;
      }
    }
    return false;
  };
  EXPECT_TRUE(differ(confirmed, 0, 390, 400));
  EXPECT_FALSE(differ(confirmed, 400, 390, 800));
  EXPECT_FALSE(differ(cancelled, 0, 390, 400));
  EXPECT_TRUE(differ(cancelled, 400, 390, 800));
  EXPECT_TRUE(std::equal(none.grey.begin(), none.grey.begin() + 800 * 390, confirmed.grey.begin()));
}

TEST(ScreenPicture, CutsLongTextAboveTheKeys) {
  const Decoded few = Decode(ScreenPng(HtmlScreen("a")));
  for (const char* part : {"<p>some words ", "some words ", "长文", "W", "<h1>W"}) {
    std::string html;
    while (html.size() < (std::size_t{2} << 20)) html += part;
    const Decoded many = Decode(ScreenPng(HtmlScreen(html)));
    EXPECT_TRUE(std::equal(few.grey.begin() + 800 * 384, few.grey.end(), many.grey.begin() + 800 * 384))
        << part;
    EXPECT_GT(many.Darker(30, 300, 770, 350), 100) << part;
  }
}

TEST(ScreenPicture, IsDrawnWhateverThePageIs) {
  using namespace std::string_literals;
  std::string nested;
  for (int i = 0; i < 50'000; ++i) nested += "<ul><li><div><table><tr><td>";
  EXPECT_GT(InkOfPage(HtmlScreen(nested + "deep")), 0);
  EXPECT_GT(InkOfPage(HtmlScreen("<p>unclosed <b <i")), 0);
  EXPECT_GT(InkOfPage(HtmlScreen("a\xFF\xC3(\xE5\xBC b\0c\xED\xA0\x80"s)), 0);
  EXPECT_GT(InkOfPage(HtmlScreen(std::string(1000, '\xE5'))), 0);
  EXPECT_GT(InkOfPage(HtmlScreen("a&#x202E;b&#x2028;c&#x2029;d&#x200B;")), 0);
  EXPECT_EQ(InkOfPage(HtmlScreen(std::string(100'000, '\f'))), 0);
}

TEST(ScreenPicture, IsDrawnOfRandomPages) {
  std::mt19937 random(1);
  for (int i = 0; i < 50; ++i) {
    Screen screen = HtmlScreen({});
    for (std::string* text : {&screen.text, &screen.second_text, &screen.title, &screen.keys[0].label}) {
      text->resize(random() % 300);
      for (char& c : *text) c = static_cast<char>(random());
    }
    EXPECT_GE(InkOfPage(screen), 0);
  }
}

TEST(ScreenPicture, TakesAnyNumberOfKeysAndLongLabels) {
  Screen screen = HtmlScreen("some words");
  screen.title = std::string(1000, 't');
  for (const std::size_t count : {1U, 3U, 20U, 200U}) {
    screen.keys.assign(count, {Role::kPlain, "1", std::string(100, 'l'), ""});
    EXPECT_GT(InkOfPage(screen), 100) << count;
  }
}

TEST(Signature, IsAPictureOfItsStrokes) {
  const auto points = DefaultSignature();
  const Decoded picture = Decode(SignaturePng(points));
  ASSERT_EQ(picture.width, kSignatureWidth);
  ASSERT_EQ(picture.height, kSignatureHeight);
  for (const PenPoint& point : points) {
    EXPECT_GT(picture.Darker(point.x - 1, point.y - 1, point.x + 2, point.y + 2), 0)
        << point.x << ", " << point.y;
  }
  EXPECT_EQ(picture.At(0, 0), kWhite);
  EXPECT_EQ(picture.Darker(0, 0, kSignatureWidth, 20, kWhite), 0);
}

TEST(Signature, IsThickerWhereThePenIsPressed) {
  const auto ink = [](int pressure) {
    return Decode(SignaturePng({{20, 80, pressure, 0}, {200, 80, pressure, 8}, {400, 80, 0, 16}}))
        .Darker(0, 0, kSignatureWidth, kSignatureHeight);
  };
  EXPECT_GT(ink(500), ink(1) * 5 / 4);
  EXPECT_GT(ink(1023), ink(500) * 5 / 4);
}

TEST(Signature, HasNoLineWhereThePenIsUp) {
  const Decoded picture =
      Decode(SignaturePng({{20, 80, 500, 0}, {100, 80, 0, 8}, {300, 80, 500, 16}, {400, 80, 0, 24}}));
  EXPECT_GT(picture.Darker(20, 70, 100, 90), 0);
  EXPECT_EQ(picture.Darker(110, 0, 290, kSignatureHeight, kWhite), 0);
  EXPECT_GT(picture.Darker(300, 70, 400, 90), 0);
}

TEST(Signature, IsDrawnOfAnyPoints) {
  constexpr int kFar = 2'000'000'000;
  EXPECT_EQ(Decode(SignaturePng({})).Darker(0, 0, kSignatureWidth, kSignatureHeight, kWhite), 0);
  EXPECT_GT(Decode(SignaturePng({{40, 100, 0, 0}})).Darker(38, 98, 43, 103, kWhite), 0);
  EXPECT_GT(Decode(SignaturePng({{40, 100, 900, 0}})).Darker(38, 98, 43, 103), 0);
  EXPECT_EQ(Decode(SignaturePng({{-kFar, -kFar, 9, 0}, {kFar, kFar, kFar, 8}, {0, kFar, 0, 16}})).width,
            kSignatureWidth);
}

}  // namespace
}  // namespace gwq::terminal
