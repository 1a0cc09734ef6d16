// SPDX-License-Identifier: MIT
// Every call of gwq.hpp, against the virtual terminal.
#include <gmock/gmock.h>
#include <gwq/gwq.hpp>

#include <chrono>
#include <filesystem>
#include <fstream>
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

TEST(Client, TellsWhatACallFailedOf) {
  try {
    Terminal().ShowDocuments({"/nowhere/agreement.pdf"});
    FAIL();
  } catch (const Error& error) {
    EXPECT_STREQ(
        error.what(),
        "MP_ShowPDF: A document does not exist on this host. (GWQ_NO_FILE, status -15) A file on "
        "this machine cannot be used (No such file or directory): check its path, its rights and the "
        "free space.");
    EXPECT_EQ(error.failure().step, GWQ_STEP_LOCAL_FILE);
    EXPECT_EQ(error.failure().error, ENOENT);
    EXPECT_EQ(error.failure().bus, 0) << "it is not about the terminal";
    EXPECT_THAT(error.what(), testing::EndsWith(error.advice()));
    EXPECT_STREQ(error.advice(GWQ_CHINESE), error.failure().advice[GWQ_CHINESE]);
  }
}

TEST(Client, FindsTheTerminalWithoutOpeningIt) {
  const std::vector<GwqTerminalPlace> places = gwq::client::FindTerminals();
  ASSERT_EQ(places.size(), 1U);
  EXPECT_EQ(places[0].vendor, 0x1209);
  EXPECT_EQ(places[0].may_open, 1);
  EXPECT_EQ(places[0].holder, 0);
  EXPECT_THAT(places[0].port_path, StartsWith(std::to_string(places[0].bus) + "-"));
}

TEST(Client, TellsWhatAStatusMeans) {
  const Error error("MP_ShowPDF", GWQ_NO_FILE);
  EXPECT_STREQ(error.what(), "MP_ShowPDF: A document does not exist on this host. (GWQ_NO_FILE, status -15)");
  EXPECT_STREQ(error.cause(GWQ_CHINESE), "主机上不存在该文件。");
  EXPECT_STREQ(error.remedy(), "Check the documents' paths.");
  EXPECT_FALSE(error.cancelled());
  EXPECT_TRUE(Error("MP_ShowPDF", GWQ_CANCELLED).cancelled());
  EXPECT_TRUE(Error("PN_GetPinBlockShowString", GWQ_PIN_REFUSAL_1).cancelled());
  EXPECT_FALSE(Error("MP_ShowPDF", GWQ_PIN_REFUSAL_1).cancelled());
  constexpr bool kTimeIsOver = true;
  EXPECT_TRUE(Error("MP_SignPDF", GWQ_NO_ANSWER, kTimeIsOver).timed_out());
  EXPECT_TRUE(Error("PN_GetPinBlockShowString", GWQ_READ_FAILED, kTimeIsOver).timed_out());
  EXPECT_FALSE(Error("MP_SignPDF", GWQ_READ_FAILED, kTimeIsOver).timed_out());
  EXPECT_FALSE(Error("MP_ShowPDF", GWQ_NO_ANSWER, kTimeIsOver).timed_out());
  EXPECT_TRUE(Error("MP_ShowPDF", GWQ_NO_ANSWER, kTimeIsOver).no_answer());
  EXPECT_THAT(StatusOf([] { Terminal().ShowDocuments({"/nowhere/to-be-found.pdf"}); }), Eq(GWQ_NO_FILE));
}

TEST(Client, RefusesWhatTheLibraryWouldCut) {
  const Terminal terminal;
  EXPECT_THROW(terminal.ShowHtml(std::string("a\0b", 3)), std::invalid_argument);
  EXPECT_THROW(terminal.ShowDocuments({"/a|b.pdf"}), std::invalid_argument);
  EXPECT_THROW(terminal.ShowDocuments({Path(std::string("/").append(1023, 'a'))}), std::length_error);
}

template <typename Call>
void ExpectCancelled(Call call, std::chrono::milliseconds delay) {
  std::thread other([delay] {
    std::this_thread::sleep_for(delay);
    EXPECT_NO_THROW(Terminal().Cancel());
  });
  try {
    call(Terminal());
    ADD_FAILURE() << "the call was not cancelled";
  } catch (const Error& error) {
    EXPECT_TRUE(error.cancelled()) << error.what();
  }
  other.join();
}

TEST(ClientWaits, UntilAnotherThreadCancels) {
  ExpectCancelled([](const Terminal& terminal) { static_cast<void>(terminal.Rate(60)); },
                  std::chrono::seconds(2));
}

TEST(ClientWaits, UntilAnotherThreadCancelsASigningAndLeavesNoFiles) {
  const TempDir dir;
  ExpectCancelled(
      [&](const Terminal& terminal) {
        static_cast<void>(terminal.SignDocuments({kFiles / "agreement.pdf"}, dir / "signature.png",
                                                 "1,300,100", std::nullopt, 60));
      },
      std::chrono::seconds(3));
  EXPECT_TRUE(std::filesystem::is_empty(dir.Path()));
}

TEST(ClientWaits, UntilAnotherThreadCancelsAFileOnItsWay) {
  const TempDir dir;
  const Path file = dir / "large.pdf";
  std::ofstream(file) << "%PDF";
  std::filesystem::resize_file(file, 40'000'000);
  ExpectCancelled([&](const Terminal& terminal) { terminal.Push(file); }, std::chrono::milliseconds(700));
}

TEST(ClientWaits, ForACustomerWhoDoesNotComeBack) {
  const TempDir dir;
  try {
    static_cast<void>(Terminal().SignDocuments({kFiles / "agreement.pdf"}, dir / "signature.png", "1,300,100",
                                               std::nullopt, 1));
    ADD_FAILURE() << "somebody signed";
  } catch (const Error& error) {
    EXPECT_TRUE(error.timed_out());
    EXPECT_FALSE(error.no_answer());
    EXPECT_THAT(error.what(), HasSubstr("MP_SignPDF: The customer did not sign in time"));
  }
  EXPECT_TRUE(std::filesystem::is_empty(dir.Path()));
}

}  // namespace
