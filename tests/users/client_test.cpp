// Every call of gwq.hpp, against the virtual terminal.
#include <gmock/gmock.h>
#include <gwq.hpp>

#include <atomic>
#include <chrono>
#include <thread>

#include "support/temp_dir.h"

namespace {

using gwq::client::Error;
using gwq::client::Media;
using gwq::client::Path;
using gwq::client::PinRequest;
using gwq::client::Signature;
using gwq::client::Terminal;
using gwq::test::ReadFile;
using gwq::test::TempDir;
using testing::AllOf;
using testing::AnyOf;
using testing::Eq;
using testing::HasSubstr;
using testing::Optional;
using testing::StartsWith;

const Path kFiles = GWQ_EXAMPLE_FILES;

template <typename Call>
int StatusOf(Call call) {
  try {
    call();
    return GWQ_OK;
  } catch (const Error& error) {
    return error.status();
  }
}

TEST(Client, DescribesTheTerminal) {
  EXPECT_THAT(Terminal().Describe(), AllOf(HasSubstr("\"DeviceSN\""), HasSubstr("st_00000001")));
}

TEST(Client, ShowsScreensAndTakesAnswers) {
  const Terminal terminal;
  terminal.ShowTeller({"王芳", "0123", 5});
  terminal.SetTeller({"王芳", "0123", 5, "photo.jpg"});
  EXPECT_THAT(terminal.Rate(), Optional(3));
  EXPECT_THAT(terminal.Inform("您好"), Eq(0U));
  terminal.ShowHtml("<html><body>offer</body></html>");
  EXPECT_THAT(terminal.AskHtml("<html><body>agree?</body></html>"), Eq(0));
  EXPECT_THAT(terminal.AskNumber("请输入手机号码", 30, 11), Eq("123456"));
  EXPECT_THAT(terminal.CheckOut("Account opening", "5.00"), Eq("ok"));
}

TEST(Client, HasDocumentsSigned) {
  const TempDir dir;
  const Terminal terminal;
  terminal.ShowDocuments({kFiles / "agreement.pdf", kFiles / "welcome.html"});
  EXPECT_TRUE(terminal.ConfirmDocuments({kFiles / "agreement.pdf"}));
  const Path picture = dir / "signature.png";
  for (const char* voice : {static_cast<const char*>(nullptr), "请签名"}) {
    std::filesystem::remove(picture);
    const Signature signature =
        terminal.SignDocuments({kFiles / "agreement.pdf"}, picture, "1,300,100",
                               voice == nullptr ? std::nullopt : std::optional<std::string>(voice));
    EXPECT_THAT(signature.picture, Eq(picture));
    EXPECT_THAT(ReadFile(picture), StartsWith("\x89PNG"));
    EXPECT_THAT(signature.strokes, AllOf(HasSubstr("\n"), Eq(ReadFile(dir / "hw.data"))));
  }
}

TEST(Client, MovesFiles) {
  const TempDir dir;
  const Terminal terminal;
  EXPECT_THAT(terminal.Push(kFiles / "agreement.pdf"), Eq("/tmp/agreement.pdf"));
  terminal.Pull("/tmp/agreement.pdf", dir / "back.pdf");
  EXPECT_THAT(ReadFile(dir / "back.pdf"), Eq(ReadFile(kFiles / "agreement.pdf")));
  EXPECT_THAT(terminal.List(Media::kPictures), Eq(""));
}

TEST(Client, TellsThatThereIsNoWorkingKey) {
  const Terminal terminal;
  terminal.SetPinEntry(0, 6);
  EXPECT_THAT(terminal.PublicKey(1, 2048).size(), Eq(512U));
  EXPECT_THAT(terminal.NewFactor().size(), Eq(16U));
  PinRequest request;
  EXPECT_THAT(StatusOf([&] { return terminal.PinBlock(request).size(); }), Eq(GWQ_PIN_REFUSAL_3));
  request.account = "no number";
  EXPECT_THAT(StatusOf([&] { return terminal.PinBlock(request).size(); }), Eq(GWQ_BAD_ACCOUNT));
}

TEST(Client, TellsWhatAStatusMeans) {
  const Error error("MP_ShowPDF", GWQ_NO_FILE);
  EXPECT_STREQ(error.what(), "MP_ShowPDF: A file is missing. (GWQ_NO_FILE, status -15)");
  EXPECT_STREQ(error.cause(GWQ_CHINESE), "文件不存在。");
  EXPECT_STREQ(error.remedy(), "Check the paths that were given.");
  EXPECT_FALSE(error.cancelled());
  EXPECT_TRUE(Error("MP_ShowPDF", GWQ_CANCELLED).cancelled());
  EXPECT_THAT(StatusOf([] { Terminal().ShowDocuments({"/nowhere/to-be-found.pdf"}); }), Eq(GWQ_NO_FILE));
}

TEST(Client, RefusesWhatTheLibraryWouldCut) {
  const Terminal terminal;
  EXPECT_THROW(terminal.ShowHtml(std::string("a\0b", 3)), std::invalid_argument);
  EXPECT_THROW(terminal.ShowDocuments({"/a|b.pdf"}), std::invalid_argument);
  EXPECT_THROW(terminal.ShowDocuments({Path(std::string("/").append(1023, 'a'))}), std::length_error);
}

// A cancel that comes before the rating waits is lost, so it is repeated on both levels.
TEST(ClientWaits, UntilAnotherThreadCancels) {
  const Terminal terminal;
  std::atomic<bool> over = false;
  std::thread other([&] {
    while (!over) {
      CancelRead();
      ICC_CancelReadTransPort();
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    terminal.Cancel();
  });
  try {
    static_cast<void>(terminal.Rate(60));
    ADD_FAILURE() << "there was a rating";
  } catch (const Error& error) {
    // The others for one that meets a command on its way: the rating's own, or the time limit's before it.
    EXPECT_THAT(error.status(), AnyOf(GWQ_CANCELLED, GWQ_SEND_FAILED, GWQ_REFUSED));
  }
  over = true;
  other.join();
}

}  // namespace
