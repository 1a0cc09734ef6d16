// SPDX-License-Identifier: MIT
// What gwq.hpp itself does about signatures and time-outs, above a library that the test plays.
#include <gmock/gmock.h>
#include <gwq/gwq.hpp>

#include <algorithm>
#include <cstring>
#include <functional>
#include <future>
#include <thread>

#include "support/temp_dir.h"

namespace {

struct Library {
  std::vector<std::string> signatures;  // one for each call
  int status = GWQ_OK;
  std::function<void()> while_signing = [] {};
  std::function<int()> cancel = [] { return GWQ_OK; };
  std::vector<std::string> calls;
  GwqFailure failure{};
  int terminals = 0;
};

Library library;

}  // namespace

int GWQ_GetFailure(GwqFailure* failure) {
  *failure = library.failure;
  return GWQ_OK;
}

int GWQ_FindTerminals(GwqTerminalPlace* places, int room) {
  for (int i = 0; i < std::min(library.terminals, room); ++i) places[i].address = i + 2;
  return library.terminals;
}

int MP_SignPDF(void* /*ignored*/, const char* /*link*/, int /*baud*/, int /*timeout*/,
               const char* /*documents*/, const char* /*location*/, const char* picture, char* /*data*/) {
  library.calls.emplace_back("sign");
  library.while_signing();
  std::ofstream(picture) << "picture";
  if (library.status != GWQ_OK) return library.status;
  std::ofstream(std::filesystem::path(picture).parent_path() / "hw.data") << library.signatures.front();
  library.signatures.erase(library.signatures.begin());
  return GWQ_OK;
}

int MP_SignPDF_Voice(void* ignored, const char* link, int baud, int timeout, const char* documents,
                     const char* location, const char* /*voice*/, const char* picture, char* data) {
  return MP_SignPDF(ignored, link, baud, timeout, documents, location, picture, data);
}

int PN_GetPinBlockShowString(int /*port*/, const char* /*reserved*/, int /*baud*/, int /*timeout*/,
                             int /*algorithm*/, int /*sound*/, int /*kind*/, const char* /*account*/,
                             char* /*factor*/, void* /*block*/, int* /*length*/, const char* /*shown*/) {
  return library.status;
}

int MP_CancelCurrentOperation(void* /*ignored1*/, void* /*ignored2*/, int /*baud*/, int /*ignored3*/) {
  library.calls.emplace_back("cancel");
  return library.cancel();
}

namespace {

using gwq::client::Error;
using gwq::client::OldSignature;
using gwq::client::PinRequest;
using gwq::client::Terminal;
using gwq::test::ReadFile;
using gwq::test::TempDir;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int kOverBeforeItBegins = -2;  // any call is longer than that and the library's margin

class ClientSigning : public testing::Test {
 protected:
  void SetUp() override { library = Library(); }

  std::string Sign(int seconds = 60, const char* picture = "signature.png") const {
    return Terminal().SignDocuments({"/a.pdf"}, dir_ / picture, "1,300,100", std::nullopt, seconds).strokes;
  }
  [[nodiscard]] bool NothingIsLeft() const { return std::filesystem::is_empty(dir_.Path()); }

  TempDir dir_;
};

TEST_F(ClientSigning, FindsHoweverManyTerminalsThereAre) {
  for (const int count : {0, 1, 4, 5, 30}) {
    library.terminals = count;
    const std::vector<GwqTerminalPlace> places = gwq::client::FindTerminals();
    ASSERT_EQ(places.size(), static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) EXPECT_EQ(places[static_cast<std::size_t>(i)].address, i + 2);
  }
}

constexpr char kHeld[] = "The device is held by process 4711 (other): end it, and call again.";

GwqFailure Held(const char* function) {
  GwqFailure failure{};
  failure.status = GWQ_NOT_OPENED;
  failure.step = GWQ_STEP_CLAIM;
  failure.holder = 4711;
  std::strcpy(failure.function, function);
  std::strcpy(failure.advice[GWQ_ENGLISH], kHeld);
  return failure;
}

TEST_F(ClientSigning, ThatFailsTellsWhatItFailedOf) {
  library.status = GWQ_NOT_OPENED;
  library.failure = Held("MP_SignPDF");
  try {
    Sign();
    FAIL();
  } catch (const Error& error) {
    EXPECT_THAT(error.what(), testing::EndsWith(std::string("(GWQ_NOT_OPENED, status -3) ") + kHeld));
    EXPECT_STREQ(error.advice(), kHeld);
    EXPECT_EQ(error.failure().holder, 4711);
  }
}

TEST_F(ClientSigning, ThatFailsDoesNotTellWhatAnotherCallFailedOf) {
  library.status = GWQ_NOT_OPENED;
  library.failure = Held("MP_ShowPDF");
  try {
    Sign();
    FAIL();
  } catch (const Error& error) {
    EXPECT_THAT(error.what(), testing::EndsWith("(GWQ_NOT_OPENED, status -3)"));
    EXPECT_STREQ(error.advice(), error.remedy());
    EXPECT_EQ(error.failure().step, GWQ_STEP_NONE);
  }
}

TEST_F(ClientSigning, ThatFailsLeavesNoSignatureOfAnEarlierCustomer) {
  std::ofstream(dir_ / "signature.png") << "earlier";
  std::ofstream(dir_ / "hw.data") << "earlier";
  library.status = GWQ_NO_ANSWER;
  EXPECT_THROW(Sign(), Error);
  EXPECT_TRUE(NothingIsLeft());
}

Error FailureOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const Error& error) {
    return error;
  }
  ADD_FAILURE() << "the call succeeds";
  return {"", GWQ_OK};
}

TEST_F(ClientSigning, IsTimedOutOnlyWhenTheCustomersTimeIsOver) {
  library.status = GWQ_NO_ANSWER;
  const Error refused = FailureOf([this] { Sign(); });
  EXPECT_FALSE(refused.timed_out()) << "a file that the terminal refuses at once";
  EXPECT_TRUE(refused.no_answer());
  EXPECT_STREQ(refused.what(),
               "MP_SignPDF: The terminal refused or failed before the customer's time was over. "
               "(GWQ_NO_ANSWER, status -2)");
  EXPECT_THAT(refused.cause(GWQ_CHINESE), HasSubstr("终端拒绝或失败"));
  const Error over = FailureOf([this] { Sign(kOverBeforeItBegins); });
  EXPECT_TRUE(over.timed_out());
  EXPECT_FALSE(over.no_answer());
  EXPECT_THAT(over.what(), HasSubstr("MP_SignPDF: The customer did not sign in time"));
}

TEST(ClientPin, IsTimedOutOnlyWhenTheTimeThatThePadGotIsOver) {
  PinRequest request;
  const auto ask = [&request] { static_cast<void>(Terminal().PinBlock(request)); };
  for (const int status : {GWQ_NO_ANSWER, GWQ_READ_FAILED}) {
    library = Library();
    library.status = status;
    request.seconds = 60;
    EXPECT_FALSE(FailureOf(ask).timed_out()) << status;
    EXPECT_EQ(FailureOf(ask).no_answer(), status == GWQ_NO_ANSWER);
    request.seconds = 0x100;  // of which the pad gets 0
    EXPECT_TRUE(FailureOf(ask).timed_out()) << status;
  }
}

TEST_F(ClientSigning, DoesNotBeginWhereTheFilesCannotBeWritten) {
  EXPECT_THROW(Sign(60, "none/signature.png"), std::filesystem::filesystem_error);
  std::filesystem::create_directory(dir_ / "hw.data");
  EXPECT_THROW(Sign(), std::filesystem::filesystem_error);
  EXPECT_FALSE(std::filesystem::exists(dir_ / "signature.png"));
  EXPECT_THAT(library.calls, IsEmpty());
}

TEST_F(ClientSigning, ThatACancelFellIntoIsCancelledThoughTheLibrarySaysSuccess) {
  library.signatures = {"old"};
  library.while_signing = [] { Terminal().Cancel(); };
  try {
    Sign();
    ADD_FAILURE();
  } catch (const Error& error) {
    EXPECT_TRUE(error.cancelled());
  }
  EXPECT_TRUE(NothingIsLeft());
}

TEST_F(ClientSigning, BeginsOnceACancelOfAnotherCallIsOver) {
  library.signatures = {"new"};
  std::promise<void> begun;
  library.cancel = [&] {
    begun.set_value();
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    library.calls.emplace_back("cancel is over");
    return GWQ_OK;
  };
  std::thread other([] { Terminal().Cancel(); });
  begun.get_future().wait();
  EXPECT_EQ(Sign(), "new");
  other.join();
  EXPECT_THAT(library.calls, ElementsAre("cancel", "cancel is over", "sign"));
}

TEST_F(ClientSigning, AfterSilenceIsNotThatOfTheTimeBefore) {
  library.signatures = {"before", "before", "before", "another"};
  EXPECT_EQ(Sign(), "before");
  for (int i = 0; i < 2; ++i) {
    try {
      Sign(kOverBeforeItBegins);
      ADD_FAILURE();
    } catch (const OldSignature& error) {
      EXPECT_THAT(error.what(), HasSubstr("MP_SignPDF: The terminal kept silent"));
      EXPECT_EQ(error.status(), GWQ_REFUSED);
    }
    EXPECT_TRUE(NothingIsLeft());
  }
  EXPECT_EQ(Sign(kOverBeforeItBegins), "another");
}

TEST_F(ClientSigning, MayBeLikeTheLastOneWhereTheTerminalAnswered) {
  library.signatures = {"alike", "alike"};
  EXPECT_EQ(Sign(), "alike");
  EXPECT_EQ(Sign(), "alike");
  EXPECT_EQ(ReadFile(dir_ / "hw.data"), "alike");
}

TEST_F(ClientSigning, CancelDoesNotAskForTheCloseCommandsAnswer) {
  for (const int status : {GWQ_OK, GWQ_NO_ANSWER, GWQ_SEND_FAILED, GWQ_READ_FAILED, GWQ_CANCELLED}) {
    library.cancel = [status] { return status; };
    EXPECT_NO_THROW(Terminal().Cancel());
  }
  library.cancel = [] { return GWQ_NOT_OPENED; };
  EXPECT_THROW(Terminal().Cancel(), Error);
}

}  // namespace
