// SPDX-License-Identifier: MIT
#include <gwq/screens/checkout.h>
#include <gwq/screens/comm_call.h>
#include <gwq/screens/documents.h>
#include <gwq/screens/evaluation.h>
#include <gwq/screens/html.h>
#include <gwq/screens/information.h>
#include <gwq/screens/signing.h>
#include <gwq/screens/terminal_control.h>
#include "unit/conversations/calls.h"
#include "wire/document_frames.h"
#include "wire/screen_frames.h"

namespace gwq::test {
namespace {

constexpr int kBaud = 9600;
constexpr int kTimeout = 30;
constexpr const char* kPage = "hi";
constexpr const char* kLocation = "p1,x2";
constexpr const char* kVoice = "请签";

Calls EvaluationCalls() {
  return {
      {"TellerCard",
       [](Host&) {
         EXPECT_EQ(MP_StartElectronicCard(nullptr, nullptr, kBaud, kTimeout, "Li", "0123", 5, "li.jpg"), 0);
       }},
      {"TellerCardUnseen",
       [](Host&) { EXPECT_EQ(MP_SetEvaluateInfo(nullptr, nullptr, kBaud, "Li", "0123", 5, "li.jpg"), 0); }},
      {"Rating",
       [](Host&) {
         char value = 'x';
         EXPECT_EQ(MP_StartEvaluate(nullptr, nullptr, kBaud, kTimeout, &value), 0);
         EXPECT_EQ(value, '3');
       }},
      {"RatingAtTheCounter",
       [](Host&) {
         unsigned rating = 77;
         EXPECT_EQ(GWQ_StartEvaluator(0, kBaud, "Li", "0123", 5, "li.jpg", kTimeout, &rating), 0);
         EXPECT_EQ(rating, 3U);
       }},
  };
}

void ShowMessage(unsigned expected_key) {
  unsigned key = 77;
  EXPECT_EQ(GWQ_StartInfo(0, kBaud, kTimeout, "hi", &key), 0);
  EXPECT_EQ(key, expected_key);
}

void AskNumber(int mode) {
  Output number(16);
  EXPECT_EQ(GWQ_StartKeyboard(0, kBaud, kTimeout, mode, number.text()), 0);
  number.ExpectBytes(BytesOf("1234"));
}

void ShowPage(int mode) {
  int display = 77;
  EXPECT_EQ(MP_StartInfoHtml(nullptr, nullptr, kBaud, kTimeout, mode, kPage, &display, 7), 0);
  EXPECT_EQ(display, 0);
}

Calls InformationCalls() {
  return {
      {"Message", [](Host&) { ShowMessage(0); }},
      {"MessageThatIsCancelled", [](Host&) { ShowMessage(1); }},
      {"Keypad", [](Host&) { AskNumber(0); }},
      {"KeypadWithStars", [](Host&) { AskNumber(1); }},
      {"PageOnlyShown", [](Host&) { ShowPage(0); }},
      {"PageWithKeys", [](Host&) { ShowPage(1); }},
      {"PageThatIsCaptured",
       [](Host& host) {
         int display = 77;
         EXPECT_EQ(MP_StartInfoHtmlScreenshot(nullptr, nullptr, kBaud, kTimeout, 1, kPage,
                                              host.Path("page.png").c_str(), &display),
                   0);
         EXPECT_EQ(display, 0);
         EXPECT_EQ(ReadFile(host.Path("page.png")), wire::kCapturedPicture);
       }},
      {"PageAsAFile",
       [](Host&) {
         Output result(2046);
         EXPECT_EQ(
             MP_StartInfoHtmlEx(nullptr, nullptr, kBaud, kTimeout, "<>", "<html></html>", result.text()), 0);
         result.ExpectText("ok");
       }},
  };
}

void ConfirmDocuments(Host& host, int expected_decision) {
  int decision = 77;
  EXPECT_EQ(MP_ConfirmPDF(nullptr, nullptr, kBaud, kTimeout, host.MakeDocuments().c_str(), &decision), 0);
  EXPECT_EQ(decision, expected_decision);
}

Calls DocumentCalls() {
  return {
      {"ShownDocuments",
       [](Host& host) {
         EXPECT_EQ(MP_ShowPDF(nullptr, nullptr, kBaud, kTimeout, host.MakeDocuments().c_str()), 0);
       }},
      {"ConfirmedDocuments", [](Host& host) { ConfirmDocuments(host, 0); }},
      {"DocumentsThatAreDeclined", [](Host& host) { ConfirmDocuments(host, 1); }},
  };
}

// Where the application wants its signature.
struct Signature {
  explicit Signature(Host& host) : picture(host.Path("sig.png")) {}

  void Expect() const {
    EXPECT_EQ(ReadFile(picture), wire::kSignaturePicture);
    EXPECT_EQ(Readable(strokes.Content()), Readable(BytesOf(wire::kSignatureStrokes)));
  }

  std::string picture;
  Output strokes{wire::kSignatureStrokes.size()};
};

Calls SigningCalls() {
  return {
      {"SignedDocuments",
       [](Host& host) {
         Signature signature(host);
         *signature.strokes.text() = '\0';
         EXPECT_EQ(MP_SignPDF(nullptr, "9", kBaud, kTimeout, host.MakeDocuments().c_str(), kLocation,
                              signature.picture.c_str(), signature.strokes.text()),
                   0);
         signature.Expect();
       }},
      {"SignedDocumentsWithAVoice",
       [](Host& host) {
         Signature signature(host);
         EXPECT_EQ(MP_SignPDF_Voice(nullptr, "9", kBaud, kTimeout, host.MakeDocuments().c_str(), kLocation,
                                    kVoice, signature.picture.c_str(), signature.strokes.text()),
                   0);
         signature.Expect();
       }},
      {"SignedDocumentsInTzgMode",
       [](Host& host) {
         Signature signature(host);
         EXPECT_EQ(MP_Sign_With_TZG(nullptr, "9", kBaud, kTimeout, host.MakeDocuments().c_str(), kLocation,
                                    kVoice, signature.picture.c_str(), 0, 3, signature.strokes.text()),
                   0);
         signature.Expect();
       }},
      {"SignedPage",
       [](Host& host) {
         EXPECT_EQ(GWQ_StartSign(0, kBaud, kTimeout, host.MakeFile("page.pdf").c_str(),
                                 host.Path("sig.png").c_str(), host.Path("strokes.txt").c_str()),
                   0);
         EXPECT_EQ(ReadFile(host.Path("sig.png")), wire::kSignaturePicture);
         EXPECT_EQ(ReadFile(host.Path("strokes.txt")), wire::kSignatureStrokes);
       }},
  };
}

int CheckOut(Output& result) {
  return MP_CheckOut_All(nullptr, nullptr, kBaud, kTimeout, "<", ">", result.text());
}

Calls OtherCalls() {
  return {
      {"Checkout",
       [](Host&) {
         Output result(2047);
         EXPECT_EQ(CheckOut(result), 0);
         result.ExpectText("ok");
       }},
      {"CheckoutThatIsCancelled",
       [](Host&) {
         Output result(2047);
         EXPECT_EQ(CheckOut(result), -23);
         result.ExpectBytes({});
       }},
      {"CloseProgram", [](Host&) { EXPECT_EQ(MP_CancelCurrentOperation(nullptr, nullptr, kBaud, 0), 0); }},
      {"Description",
       [](Host&) {
         std::string text(32'768, '\0');
         int length = static_cast<int>(text.size());
         EXPECT_EQ(DEV_CommCall("{}", 0, text.data(), &length), 0);
         for (const char* member : {R"("DeviceVersion":	"V1.2")", R"("ProductionDate":	"2023-11-14")",
                                    R"("DeviceSN":	"st_00000001")", R"("DeviceModel":	"Z11")"})
           EXPECT_THAT(text, testing::HasSubstr(member));
       }},
  };
}

}  // namespace

Calls ScreenCalls() {
  Calls all = EvaluationCalls();
  for (Calls (*const area)() : {&InformationCalls, &DocumentCalls, &SigningCalls, &OtherCalls}) {
    Calls some = area();
    all.merge(some);
  }
  return all;
}

}  // namespace gwq::test
