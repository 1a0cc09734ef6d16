// SPDX-License-Identifier: MIT
// A customer's visit to the counter, from the teller's card to the rating: an information page is
// confirmed, a PIN is keyed, an agreement is shown, agreed to and signed, the business is checked
// out.
//
//   counter_visit FILES OUT
//
//   FILES  directory with agreement.pdf and welcome.html
//   OUT    directory for what comes back: the page as it was confirmed, the signature and its strokes, and the
//          terminal's description
//
// Exit status 0 when every step went as it should.
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "pin_entry.h"
#include "steps.h"

namespace {

namespace fs = std::filesystem;
using example::Check;
using example::Say;

constexpr int kBaud = 115200;
constexpr int kSeconds = 60;
constexpr char kLink[] = "9";
constexpr char kTeller[] = "王芳";
constexpr char kTellerNumber[] = "0123";
constexpr int kStars = 5;

std::string ContentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), {}};
}

// Width and height stand at the beginning of a PNG (ISO/IEC 15948), big-endian.
std::string PictureSize(const fs::path& path) {
  const std::string png = ContentOf(path);
  if (png.size() < 24 || png.compare(1, 3, "PNG") != 0)
    throw std::runtime_error(path.string() + " is no PNG");
  const auto number = [&png](std::size_t at) {
    unsigned value = 0;
    for (std::size_t i = at; i < at + 4; ++i) value = value << 8U | static_cast<unsigned char>(png[i]);
    return std::to_string(value);
  };
  return number(16) + " x " + number(20) + " pixels";
}

void ShowTeller() {
  Check("MP_StartElectronicCard",
        MP_StartElectronicCard(nullptr, nullptr, kBaud, kSeconds, kTeller, kTellerNumber, kStars, nullptr),
        "showing the teller's card");
  Say("teller's card",
      std::string(kTeller) + ", " + kTellerNumber + ", " + std::to_string(kStars) + " stars");
}

void ConfirmPage(const fs::path& page, const fs::path& picture) {
  example::CheckWritable(picture);
  int key = -1;
  Check("MP_StartInfoHtmlScreenshot",
        MP_StartInfoHtmlScreenshot(nullptr, kLink, kBaud, kSeconds, 1, ContentOf(page).c_str(),
                                   picture.c_str(), &key),
        "showing the information page");
  if (key != 0) throw std::runtime_error("the customer did not confirm the page");
  Say("information page, confirmed", PictureSize(picture));
}

void KeyPin() {
  const example::Key key = example::LoadWorkingKey(kBaud, example::Algorithm::kTripleDes);
  example::EnterPin(kBaud, "6225880123456789", key, example::Algorithm::kTripleDes);
}

void Agree(const fs::path& agreement) {
  Check("MP_ShowPDF", MP_ShowPDF(nullptr, nullptr, kBaud, kSeconds, agreement.c_str()),
        "showing the agreement");
  Say("agreement on the screen", agreement.filename());
  int decision = -1;
  Check("MP_ConfirmPDF", MP_ConfirmPDF(nullptr, nullptr, kBaud, kSeconds, agreement.c_str(), &decision),
        "asking for agreement");
  if (decision != 0) throw std::runtime_error("the customer does not agree");
  Say("the customer", "agrees");
}

void Sign(const fs::path& agreement, const fs::path& picture) {
  example::CheckWritable(picture);
  example::CheckWritable(picture.parent_path() / "hw.data");
  std::string strokes(1 << 20, '\0');
  Check("MP_SignPDF_Voice",
        MP_SignPDF_Voice(nullptr, kLink, kBaud, kSeconds, agreement.c_str(), "1,300,100", "请在屏幕上签名",
                         picture.c_str(), strokes.data()),
        "having the agreement signed");
  std::istringstream lines(strokes.c_str());
  std::size_t points = 0;
  for (std::string line; std::getline(lines, line);) ++points;
  Say("signature", PictureSize(picture) + ", " + std::to_string(points) + " points of the pen");
}

void CheckOut() {
  char result[2048] = "";
  Check("MP_CheckOut_All",
        MP_CheckOut_All(nullptr, nullptr, kBaud, kSeconds, "开户 Account opening", "工本费 5.00", result),
        "checking out");
  Say("checkout", result);
}

void Rate() {
  Check("MP_SetEvaluateInfo",
        MP_SetEvaluateInfo(nullptr, nullptr, kBaud, kTeller, kTellerNumber, kStars, nullptr),
        "setting the teller's card");
  char rating[2] = "";
  Check("MP_StartEvaluate", MP_StartEvaluate(nullptr, nullptr, kBaud, kSeconds, rating),
        "asking for a rating");
  Say("rating", rating);
}

void Describe(const fs::path& path) {
  std::string json(1 << 16, '\0');
  int length = static_cast<int>(json.size());
  Check("DEV_CommCall", DEV_CommCall(R"({"RequestBaudRate": 115200})", 0, json.data(), &length),
        "describing the terminal");
  json.resize(static_cast<std::size_t>(length));
  std::ofstream(path) << json << "\n";
  Say("the terminal's description", path.filename());
}

void Visit(const fs::path& files, const fs::path& out) {
  std::printf("A visit to the counter\n");
  ShowTeller();
  ConfirmPage(files / "welcome.html", out / "confirmed-page.png");
  KeyPin();
  Agree(files / "agreement.pdf");
  Sign(files / "agreement.pdf", out / "signature.png");
  CheckOut();
  Rate();
  Describe(out / "terminal.json");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: counter_visit FILES OUT\n");
    return 2;
  }
  return example::Run("counter_visit", [&] { Visit(fs::absolute(argv[1]), fs::absolute(argv[2])); });
}
