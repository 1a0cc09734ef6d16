// SPDX-License-Identifier: MIT
// Documents and signatures with everything that the customer can do.
#include <gtest/gtest.h>

#include "e2e/library/png.h"
#include "e2e/library/screens_rig.h"

namespace gwq::test {
namespace {

constexpr char kDocumentText[] = "%PDF-1.4\n%%EOF\n";
constexpr char kPlace[] = "1,300,100";
constexpr char kSpoken[] = "请在屏幕上签名";
constexpr char kPictureOnTerminal[] = "/tmp/hw.png";
constexpr char kStrokesOnTerminal[] = "/tmp/hw.txt";
constexpr char kDrawnStrokes[] = "10,20,500,0\n300,90,0,8\n40,100,500,16\n60,100,0,24\n";

class Documents : public ScreenSession {
 protected:
  int Show(int seconds, const std::string& paths) {
    return lib.Get<MP_ShowPDF>()(nullptr, nullptr, kBaud, seconds, paths.c_str());
  }

  void ExpectDecision(int status, int decision, const std::string& paths, int seconds = kSeconds) {
    int got = kUntouched;
    EXPECT_EQ(status, lib.Get<MP_ConfirmPDF>()(nullptr, nullptr, kBaud, seconds, paths.c_str(), &got));
    EXPECT_EQ(decision, got);
  }

  static void ExpectOnTerminal(const std::string& name) {
    EXPECT_EQ(kDocumentText, ReadFile(OnTerminal("/tmp/" + name))) << name;
  }

  // Three documents, two of them with Chinese names.
  std::string Several() {
    return Document("a.pdf", kDocumentText) + "|" + Document("开户协议.pdf", kDocumentText) + "|" +
           Document("附件 二.pdf", kDocumentText);
  }

  static void ExpectSeveralOnTerminal() {
    for (const char* name : {"a.pdf", "开户协议.pdf", "附件 二.pdf"}) ExpectOnTerminal(name);
  }
};

using Agreements = Documents;

TEST_F(Agreements, AreShownAndGiveEveryDecision) {
  const std::string one = Document("one.pdf", kDocumentText);
  EXPECT_EQ(GWQ_BAD_ARGUMENT, Show(0, one));
  EXPECT_EQ(GWQ_BAD_ARGUMENT, Show(1000, one));
  EXPECT_EQ(GWQ_NO_FILE, Show(kSeconds, Local("missing.pdf")));
  EXPECT_EQ(0, Show(kSeconds, Several()));
  ExpectSeveralOnTerminal();
  ExpectDecision(GWQ_BAD_ARGUMENT, 2, "");
  ExpectDecision(GWQ_NO_FILE, 2, one + "|" + Local("missing.pdf"));
  ExpectDecision(0, 0, one);
  ExpectDecision(0, 1, one);
  ExpectDecision(GWQ_NO_ANSWER, 2, one, 1);
  ExpectDecision(GWQ_REFUSED, 2, one);
  ExpectDecision(0, kUntouched, one);
  // The terminal asks its customer only if it has all the documents of the list.
  ExpectDecision(0, 0, Several());
  EXPECT_EQ(0, OpenLinks());
}

// What all the functions that have documents signed do alike.
class Signatures : public Documents {
 protected:
  enum class How { kPlain, kVoice, kTzg };

  int Sign(const std::string& paths, int seconds = kSeconds) {
    strokes.assign(1 << 16, '\0');
    const std::string picture = Local("sig.png");
    switch (how) {
      case How::kPlain:
        return lib.Get<MP_SignPDF>()(nullptr, kLink, kBaud, seconds, paths.c_str(), kPlace, picture.c_str(),
                                     strokes.data());
      case How::kVoice:
        return lib.Get<MP_SignPDF_Voice>()(nullptr, kLink, kBaud, seconds, paths.c_str(), kPlace, kSpoken,
                                           picture.c_str(), strokes.data());
      default:
        return lib.Get<MP_Sign_With_TZG>()(nullptr, kLink, kBaud, seconds, paths.c_str(), kPlace, kSpoken,
                                           picture.c_str(), 0, 3, strokes.data());
    }
  }

  void ExpectSignature() {
    const std::string on_terminal = ReadFile(OnTerminal(kStrokesOnTerminal));
    EXPECT_FALSE(on_terminal.empty());
    EXPECT_EQ(on_terminal, strokes.c_str());
    EXPECT_EQ(on_terminal, ReadFile(data_file));
    EXPECT_EQ(ReadFile(OnTerminal(kPictureOnTerminal)), ReadFile(Local("sig.png")));
    const Picture picture = DecodePng(Local("sig.png"));
    EXPECT_EQ(480U, picture.width);
    EXPECT_EQ(160U, picture.height);
    EXPECT_TRUE(picture.HasInk());
  }

  void ForgetFiles() {
    std::filesystem::remove(Local("sig.png"));
    std::filesystem::remove(data_file);
  }

  void ExpectNoSignature(int status, int seconds = kSeconds) {
    ForgetFiles();
    EXPECT_EQ(status, Sign(Document("one.pdf", kDocumentText), seconds));
    EXPECT_STREQ("", strokes.c_str());
    EXPECT_FALSE(std::filesystem::exists(Local("sig.png")));
  }

  void ExpectEveryAnswer() {
    EXPECT_EQ(GWQ_BAD_ARGUMENT, Sign("one.pdf", 0));
    EXPECT_EQ(GWQ_BAD_ARGUMENT, Sign("one.pdf", 1000));
    EXPECT_EQ(GWQ_NO_FILE, Sign(Local("missing.pdf")));
    ForgetFiles();
    EXPECT_EQ(0, Sign(Several()));
    ExpectSeveralOnTerminal();
    ExpectSignature();
    EXPECT_EQ(0, Sign(Document("one.pdf", kDocumentText)));
    ExpectSignature();
    EXPECT_STREQ(kDrawnStrokes, strokes.c_str());
    ExpectNoSignature(GWQ_CANCELLED);
    ExpectNoSignature(GWQ_NO_ANSWER, 1);
    ExpectNoSignature(GWQ_REFUSED);
    // An answer of no meaning does not keep it from fetching the signature, of which there is none.
    ExpectNoSignature(GWQ_REFUSED);
    EXPECT_EQ(0, Sign(Document("one.pdf", kDocumentText)));
    ExpectSignature();
    EXPECT_EQ(0, OpenLinks());
  }

  How how = How::kPlain;
  std::filesystem::path data_file = Local("hw.data");
  std::string strokes;
};

using PlainSignatures = Signatures;

class VoiceSignatures : public Signatures {
 protected:
  VoiceSignatures() { how = How::kVoice; }
};

class TzgSignatures : public Signatures {
 protected:
  TzgSignatures() {
    how = How::kTzg;
    data_file = "/tmp/data.txt";
  }
};

class SignaturesWithoutTzg : public Signatures {
 protected:
  SignaturesWithoutTzg() { how = How::kTzg; }
};

TEST_F(PlainSignatures, ComeOrNotAsTheCustomerWants) {
  ExpectEveryAnswer();
}

TEST_F(VoiceSignatures, ComeOrNotAsTheCustomerWants) {
  ExpectEveryAnswer();
}

TEST_F(TzgSignatures, ComeOrNotAsTheCustomerWants) {
  ExpectEveryAnswer();
  EXPECT_FALSE(std::filesystem::exists(Local("hw.data")));
}

// The data then stand beside the picture.
TEST_F(SignaturesWithoutTzg, AreThoseWithAVoice) {
  ExpectEveryAnswer();
}

class HandSignatures : public Documents {
 protected:
  int Sign(const std::string& document, int seconds = kSeconds) {
    return lib.Get<GWQ_StartSign>()(5, kBaud, seconds, document.c_str(), Local("sig.png").c_str(),
                                    Local("sig.txt").c_str());
  }

  void ExpectSigned(const std::string& name, const std::string& place) {
    EXPECT_EQ(0, Sign(Document(name, name)));
    EXPECT_EQ(name, ReadFile(OnTerminal(place)));
    EXPECT_FALSE(ReadFile(Local("sig.txt")).empty());
    EXPECT_EQ(ReadFile(OnTerminal(kStrokesOnTerminal)), ReadFile(Local("sig.txt")));
    EXPECT_EQ(ReadFile(OnTerminal(kPictureOnTerminal)), ReadFile(Local("sig.png")));
    EXPECT_TRUE(DecodePng(Local("sig.png")).HasInk());
  }

  void ExpectNotSigned(int seconds) {
    for (const char* name : {"sig.png", "sig.txt"}) std::filesystem::remove(Local(name));
    EXPECT_EQ(GWQ_REFUSED, Sign(Document("a.pdf"), seconds));
    for (const char* name : {"sig.png", "sig.txt"}) EXPECT_FALSE(std::filesystem::exists(Local(name)));
  }
};

TEST_F(HandSignatures, ComeOrNotAsTheCustomerWants) {
  EXPECT_EQ(GWQ_BAD_ARGUMENT, Sign(Document("a.jpeg")));
  EXPECT_EQ(GWQ_BAD_ARGUMENT, Sign(Document("a.HTML")));
  EXPECT_EQ(GWQ_BAD_ARGUMENT, Sign(Document("a.pdf"), 1000));
  EXPECT_GT(0, Sign(Local("missing.pdf")));
  ExpectSigned("a.pdf", "/tmp/infoviewer.pdf");
  ExpectSigned("b.jpg", "/tmp/infoviewer.jpg");
  EXPECT_EQ("10,20,500,0\n300,90,0,8\n", ReadFile(Local("sig.txt")));
  ExpectSigned("页.html", "/tmp/infoviewer.html");
  ExpectNotSigned(kSeconds);
  ExpectNotSigned(1);
  ExpectNotSigned(kSeconds);
  EXPECT_EQ(0, OpenLinks());
}

}  // namespace
}  // namespace gwq::test
