// SPDX-License-Identifier: MIT
// Documents that are shown, agreed to and signed.
#include <gtest/gtest.h>

#include "picture/painter.h"
#include "unit/terminal/device/screens/screen_rig.h"

namespace gwq::terminal::test {

using namespace device;
using namespace picture;
namespace {

using Kind = ScreenAction::Kind;

const std::string kDocuments = "/tmp/a.pdf|/tmp/b.pdf";

std::string Command(std::string_view word, std::string_view arguments) {
  return std::string("\033[2").append(word).append("\x02").append(arguments).append("\x03");
}

// One way to have something signed: the command, and what must be there.
struct Signing {
  std::string command;
  ScreenKind kind;
};

std::vector<Signing> Signings() {
  return {{Command("YCNEWSTARTSIGN", "0|20|here|" + kDocuments), ScreenKind::kSigning},
          {Command("YCNEWSTARTZGTSIGN", "0|20|1|3|here|" + kDocuments), ScreenKind::kSigning},
          {Command("HANDSIGN", "1|20"), ScreenKind::kHandSign},
          {Command("HANDSIGN", "2|20"), ScreenKind::kHandSign},
          {Command("HANDSIGN", "3|20"), ScreenKind::kHandSign}};
}

struct DocumentRig : ScreenRig {
  explicit DocumentRig(Settings settings = {}) : ScreenRig(Line::kUsb, std::move(settings)) {
    for (const char* name : {"a.pdf", "b.pdf", "infoviewer.html", "infoviewer.jpg", "infoviewer.pdf"})
      Put(std::string("/tmp/") + name);
  }
};

TEST(Document, OnlyShownIsNotAnswered) {
  DocumentRig rig;
  const Screen screen = rig.Shown(Command("YCNEWSHOWFILE", "0|20|" + kDocuments));
  EXPECT_EQ(screen.kind, ScreenKind::kDocument);
  EXPECT_EQ(screen.documents, (std::vector<std::string>{"/tmp/a.pdf", "/tmp/b.pdf"}));
  EXPECT_FALSE(screen.AsksCustomer());
  rig.rig.Wait(20s);
  EXPECT_EQ(rig.Now().kind, ScreenKind::kIdle);
  EXPECT_EQ(rig.rig.Answer(), "(none)");
}

TEST(Document, OnlyShownButMissingIsNotAnsweredEither) {
  ScreenRig rig;
  EXPECT_EQ(rig.rig.Ask(Command("YCNEWSHOWFILE", "0|20|/tmp/a.pdf")), "(none)");
  EXPECT_EQ(rig.Now().kind, ScreenKind::kIdle);
}

TEST(Document, IsAgreedToOrNot) {
  DocumentRig rig;
  const std::string command = Command("YCNEWSTARTFILE", "0|20|" + kDocuments);
  EXPECT_EQ(rig.Shown(command).kind, ScreenKind::kConfirm);
  EXPECT_EQ(rig.Ask(command, Does(Kind::kConfirm)), wire::kDone);
  EXPECT_EQ(rig.Ask(command, Does(Kind::kCancel)), wire::kCustomerCancelled);
  EXPECT_EQ(rig.AskNobody(command, 20), wire::kCustomerTooLate);
}

TEST(Document, ThatIsMissingIsRefused) {
  DocumentRig rig;
  rig.store.files.erase("/tmp/infoviewer.jpg");
  for (const char* list : {"/tmp/none.pdf", "/tmp/a.pdf|/tmp/none.pdf", "", "|", "/tmp/a.pdf||/tmp/b.pdf"}) {
    EXPECT_EQ(rig.rig.Ask(Command("YCNEWSTARTFILE", std::string("0|20|").append(list))), wire::kRefused)
        << list;
    EXPECT_EQ(rig.rig.Ask(Command("YCNEWSTARTSIGN", std::string("0|20|x|").append(list))), wire::kRefused)
        << list;
    EXPECT_EQ(rig.rig.Ask(Command("YCNEWSTARTZGTSIGN", std::string("0|20|0|3|x|").append(list))),
              wire::kRefused);
  }
  for (const char* page : {"0|20", "2|20", "4|20"})
    EXPECT_EQ(rig.rig.Ask(Command("HANDSIGN", page)), wire::kRefused) << page;
  EXPECT_EQ(rig.Now().kind, ScreenKind::kIdle);
}

// The second half of this character is a "|".
TEST(Document, IsFoundByItsGbkName) {
  const std::string utf8 = "/tmp/\xE4\xBA\x85.pdf";
  const std::string gbk = "/tmp/\x81\x7C.pdf";
  DocumentRig rig;
  rig.Put(utf8);
  const Screen screen = rig.Shown(Command("YCNEWSTARTFILE", "0|20|" + gbk + "|/tmp/a.pdf"));
  EXPECT_EQ(screen.documents, (std::vector<std::string>{utf8, "/tmp/a.pdf"}));
}

TEST(Signing, ShowsWhatTheHostSaid) {
  DocumentRig rig;
  const Screen screen = rig.Shown(Command("YCNEWSTARTZGTSIGN", "0|20|1|3|here|" + kDocuments));
  EXPECT_EQ(screen.location, "here");
  EXPECT_EQ(screen.documents, (std::vector<std::string>{"/tmp/a.pdf", "/tmp/b.pdf"}));
  EXPECT_EQ(rig.Shown(Command("HANDSIGN", "2|20")).documents,
            std::vector<std::string>{"/tmp/infoviewer.jpg"});
}

TEST(Signing, KeepsWhatWasWritten) {
  for (const Signing& signing : Signings()) {
    DocumentRig rig;
    EXPECT_EQ(rig.Shown(signing.command).kind, signing.kind);
    ScreenAction signs = Does(Kind::kSign);
    signs.strokes = {{1, 2, 300, 0}, {4, 5, 0, 8}};
    EXPECT_EQ(rig.Ask(signing.command, signs), wire::kDone);
    EXPECT_EQ(rig.store.files.at("/tmp/hw.png"), "signature of 2 points");
    EXPECT_EQ(rig.store.files.at("/tmp/hw.txt"), "1,2,300,0\n4,5,0,8\n");
  }
}

TEST(Signing, LeavesNoSignatureWhenNobodySigned) {
  for (const Signing& signing : Signings()) {
    for (const bool cancels : {true, false}) {
      DocumentRig rig;
      rig.Put("/tmp/hw.png", "an older one");
      rig.Put("/tmp/hw.txt", "an older one");
      const std::string answer =
          cancels ? rig.Ask(signing.command, Does(Kind::kCancel)) : rig.AskNobody(signing.command, 20);
      EXPECT_EQ(answer, cancels ? wire::kCustomerCancelled : wire::kCustomerTooLate);
      EXPECT_FALSE(rig.store.files.contains("/tmp/hw.png"));
      EXPECT_FALSE(rig.store.files.contains("/tmp/hw.txt"));
    }
  }
}

TEST(Signing, WithoutRoomForTheSignatureFails) {
  DocumentRig rig;
  rig.store.room = 3;
  ScreenAction signs = Does(Kind::kSign);
  signs.strokes = DefaultSignature();
  EXPECT_EQ(rig.Ask(Signings()[0].command, signs), wire::kRefused);
}

TEST(Signing, NeedsMoreThanAConfirmation) {
  DocumentRig rig;
  rig.rig.customer.responses = {Does(Kind::kConfirm)};
  rig.rig.Send(Signings()[0].command);
  rig.rig.Wait(20s);
  EXPECT_EQ(rig.rig.Answer(), wire::kCustomerTooLate);
  EXPECT_FALSE(rig.store.files.contains("/tmp/hw.png"));
}

TEST(Signing, IsClosedByTheInformationScreensCommand) {
  for (const Signing& signing : Signings()) {
    DocumentRig rig;
    rig.Shown(signing.command);
    EXPECT_EQ(rig.rig.Ask(wire::kCloseInformation), "(none)");
    EXPECT_EQ(rig.Now().kind, ScreenKind::kIdle);
  }
}

TEST(Voice, IsSpokenAtTheNextSigningOnly) {
  DocumentRig rig;
  for (const char* text : {"\xC4\xE3\xBA\xC3", "\xE4\xBD\xA0\xE5\xA5\xBD"}) {
    EXPECT_EQ(rig.rig.Ask(Command("YCSETVOICECONTENT", text)), wire::kDone);
    EXPECT_EQ(rig.Shown(Signings()[0].command).voice, "\xE4\xBD\xA0\xE5\xA5\xBD");
    EXPECT_EQ(rig.Shown(Signings()[0].command).voice, "");
  }
}

// Hosts send the voice of a TZG signing without reading, and would take the answer
// for that of the signing.
TEST(Voice, AnswerThatNobodyReadLapses) {
  DocumentRig rig;
  rig.rig.Send(Command("YCSETVOICECONTENT", "hello"));
  EXPECT_EQ(rig.Ask(Signings()[1].command, Does(Kind::kCancel)), wire::kCustomerCancelled);
  EXPECT_TRUE(rig.rig.device().TakeWithdrawal());
}

TEST(Tzg, IsSupportedUnlessSwitchedOff) {
  DocumentRig with;
  EXPECT_EQ(with.rig.Ask(wire::kSupportsTzg), wire::kDone);
  Settings settings;
  settings.tzg = false;
  DocumentRig without(settings);
  EXPECT_EQ(without.rig.Ask(wire::kSupportsTzg), wire::kRefused);
  EXPECT_EQ(without.rig.Ask(Signings()[1].command), wire::kRefused);
  EXPECT_EQ(without.Ask(Signings()[0].command, Does(Kind::kCancel)), wire::kCustomerCancelled);
}

TEST(Signing, PictureIsTheSignatureDrawn) {
  MemoryFiles store;
  store.files["/tmp/a.pdf"] = "x";
  const PngPainter painter;
  Rig rig(Line::kUsb, {}, {&store, {}}, &painter);
  rig.Send(Command("YCNEWSTARTSIGN", "0|20|x|/tmp/a.pdf"));
  rig.Wait(200ms);
  EXPECT_EQ(rig.Answer(), wire::kDone);
  const auto drawn = painter.Signature(DefaultSignature());
  EXPECT_EQ(store.files.at("/tmp/hw.png"), ToText(drawn));
  EXPECT_EQ(store.files.at("/tmp/hw.txt"), StrokeText(DefaultSignature()));
}

}  // namespace
}  // namespace gwq::terminal::test
