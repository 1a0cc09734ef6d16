// Every function that waits for the customer, cancelled again and again from a second thread: while it is known
// to wait, and at moments of no choice.
//
//   GWQ_TEST_CYCLES  cancels of each function
//   GWQ_TEST_SEED    repeats a run's moments
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <random>
#include <thread>

#include "bank_pad.h"
#include "e2e/library/screens_rig.h"

namespace gwq::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// From the moment in which the flag is set; a USB read looks at it every 200 ms.
constexpr milliseconds kEndOfRead{500};

// The customer never answers: what is not cancelled ends after this and the host's margin.
constexpr int kPatience = 20;

int NumberIn(const char* variable, int otherwise) {
  const char* text = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
  return text == nullptr ? otherwise : std::atoi(text);
}

// A call in a thread of its own.
class Call {
 public:
  explicit Call(std::function<int()> function)
      : thread_([this, function = std::move(function)] {
          status_ = function();
          at_ = Clock::now();
          ended_ = true;
        }) {}
  ~Call() { Join(); }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  [[nodiscard]] bool Ended() const { return ended_; }
  void Join() {
    if (thread_.joinable()) thread_.join();
  }
  // Once joined.
  [[nodiscard]] int status() const { return status_; }
  [[nodiscard]] milliseconds After(Clock::time_point start) const {
    return std::chrono::duration_cast<milliseconds>(at_ - start);
  }

 private:
  int status_ = 0;
  Clock::time_point at_;
  std::atomic<bool> ended_{false};
  std::thread thread_;
};

// A function that waits for the customer.
struct Waiting {
  const char* name;
  std::string question;  // in the command whose answer it awaits
  std::function<int()> call;
  int cancelled = GWQ_CANCELLED;  // its status after a cancelled wait
  milliseconds beyond{0};         // what it may take for what it goes on to after a cancelled wait
};

enum class Way { kCancelRead, kCancleEvaluate, kCancelCurrentOperation };
constexpr std::array kWays{Way::kCancelRead, Way::kCancleEvaluate, Way::kCancelCurrentOperation};

class Cancelled : public ScreenSession {
 protected:
  Cancelled() { printf("seed %u\n", seed_); }
  ~Cancelled() override {
    printf("%d cancels, the slowest took %d ms; at random moments %d were lost and repeated\n",
           cancels_.load(), static_cast<int>(slowest_.count()), lost_);
  }

  void CancelAgainAndAgain(const Waiting& waiting) {
    SCOPED_TRACE(waiting.name);
    for (int i = 0; i < cycles_ && !HasFailure(); ++i) {
      const Way way = kWays.at(static_cast<std::size_t>(i / 2) % kWays.size());
      if (i % 2 == 0) {
        CancelTheWait(waiting, way);
      } else {
        CancelAtAnyMoment(waiting, way);
      }
    }
  }

  // Waits until the call waits for the customer.
  virtual void AwaitWaiting() {
    ASSERT_TRUE(AwaitReadOfAnswer(milliseconds(10'000)));
    EXPECT_EQ(1, OpenLinks());
  }

  virtual void ExpectNextCallWorks() { EXPECT_EQ(1, lib.takes_utf8()); }

  bool has_usb = true;

 private:
  milliseconds Random(int most) { return milliseconds(std::uniform_int_distribution(0, most)(random_)); }

  // Returns when the flag was set, or was about to be.
  Clock::time_point Cancel(Way way) {
    constexpr milliseconds kPauseBefore{200};
    ++cancels_;
    const Clock::time_point start = Clock::now();
    switch (way) {
      case Way::kCancelRead:
        EXPECT_EQ(0, lib.cancel_read());
        return start;
      case Way::kCancleEvaluate:
        EXPECT_EQ(0, cancel_evaluate(nullptr, nullptr, kBaud));
        return start;
      default:
        closed_ = cancel_current(nullptr, nullptr, kBaud, 0);
        return start + kPauseBefore;
    }
  }

  void CancelTheWait(const Waiting& waiting, Way way) {
    WatchForQuestion(waiting.question);
    Call call(waiting.call);
    AwaitWaiting();
    std::this_thread::sleep_for(Random(200));
    EXPECT_FALSE(call.Ended());
    const Clock::time_point cancelled = Cancel(way);
    if (way == Way::kCancelCurrentOperation) {
      EXPECT_EQ(has_usb ? 0 : GWQ_NOT_OPENED, closed_);
    }
    call.Join();
    EXPECT_EQ(waiting.cancelled, call.status());
    const milliseconds took = call.After(cancelled);
    EXPECT_LT(took, kEndOfRead + waiting.beyond);
    slowest_ = std::max(slowest_, took);
    EXPECT_EQ(0, OpenLinks());
    ExpectNextCallWorks();
  }

  // A cancel between two exchanges is lost: then it is repeated, which ends one exchange after the other. One between a
  // command and its read is lost too, and stands in the way of others: then the link itself is told.
  void CancelAtAnyMoment(const Waiting& waiting, Way way) {
    constexpr milliseconds kRepeated{1500};
    Call call(waiting.call);
    std::this_thread::sleep_for(Random(500));
    const Clock::time_point start = Clock::now();
    std::thread canceller([&] { Cancel(way); });
    RepeatUntilEnded(call, start + kEndOfRead + waiting.beyond + milliseconds(200));
    canceller.join();
    call.Join();
    EXPECT_THAT(call.status(), testing::AnyOf(GWQ_CANCELLED, GWQ_SEND_FAILED, GWQ_READ_FAILED, GWQ_REFUSED));
    EXPECT_LT(call.After(start), kEndOfRead + kRepeated + waiting.beyond);
    EXPECT_EQ(0, OpenLinks());
    DropAnswers();
    ExpectNextCallWorks();
  }

  void RepeatUntilEnded(const Call& call, Clock::time_point from) {
    constexpr milliseconds kPause{10};
    constexpr milliseconds kBetween{50};
    while (!call.Ended() && Clock::now() < from) std::this_thread::sleep_for(kPause);
    if (!call.Ended()) ++lost_;
    for (; !call.Ended(); std::this_thread::sleep_for(kBetween)) {
      lib.cancel_read();
      cancel_link();
    }
  }

  // An exchange that was cut short may have left its answer.
  void DropAnswers() {
    std::array<char, 2048> answer{};
    int length = 1024;
    lib.trans_proc_only_read(0, kBaud, answer.data(), &length, 100);
  }

  decltype(&ICC_CancelReadTransPort) cancel_link =
      lib.Get<decltype(&ICC_CancelReadTransPort)>("ICC_CancelReadTransPort");
  decltype(&MP_CancleEvaluate) cancel_evaluate = lib.Get<decltype(&MP_CancleEvaluate)>("MP_CancleEvaluate");
  decltype(&MP_CancelCurrentOperation) cancel_current =
      lib.Get<decltype(&MP_CancelCurrentOperation)>("MP_CancelCurrentOperation");
  int cycles_ = NumberIn("GWQ_TEST_CYCLES", 10);
  unsigned seed_ =
      static_cast<unsigned>(NumberIn("GWQ_TEST_SEED", static_cast<int>(std::random_device{}() >> 1U)));
  std::mt19937 random_{seed_};
  std::atomic<int> cancels_{0};
  int closed_ = 0;  // the status of the last MP_CancelCurrentOperation
  int lost_ = 0;
  milliseconds slowest_{0};
};

class CancelledTextScreens : public Cancelled {
 protected:
  Waiting Evaluator() {
    return {"GWQ_StartEvaluator", "\x1B[4R",
            [this, start = lib.Get<decltype(&GWQ_StartEvaluator)>("GWQ_StartEvaluator")] {
              unsigned rating = 0;
              return start(port, kBaud, "n", "1", 1, nullptr, kPatience, &rating);
            }};
  }

  Waiting Info() {
    return {"GWQ_StartInfo", "\x1B[2A\x02",
            [this, start = lib.Get<decltype(&GWQ_StartInfo)>("GWQ_StartInfo")] {
              unsigned key = 0;
              return start(port, kBaud, kPatience, "message", &key);
            }};
  }

  Waiting Keyboard() {
    return {"GWQ_StartKeyboard", "\x1BGM",
            [this, start = lib.Get<decltype(&GWQ_StartKeyboard)>("GWQ_StartKeyboard")] {
              std::array<char, 2046> number{};
              return start(port, kBaud, kPatience, 0, number.data());
            }};
  }

  Waiting ReadPin() {
    return {"GWQ_ReadPin", "\x1B", [this] {
              std::array<char, 16> pin{};
              return lib.read_pin(port, kBaud, 0, kPatience, pin.data(), 15);
            }};
  }

  int port = 0;
};

using CancelledTexts = CancelledTextScreens;

class CancelledPad : public CancelledTextScreens {
 protected:
  // Without one the pad asks nobody for a PIN.
  void LoadWorkingKey() {
    ASSERT_EQ(
        0, lib.Get<decltype(&PN_SetPinPadParameter)>("PN_SetPinPadParameter")(0, kLink, kBaud, 0, 6, 0, "F"));
    std::array<char, 4096> modulus{};
    std::array<char, 1024> factor{};
    ASSERT_EQ(0, lib.Get<decltype(&PN_ObtainPublicKey)>("PN_ObtainPublicKey")(0, kLink, kBaud, 1, 2048,
                                                                              modulus.data()));
    ASSERT_EQ(0, lib.Get<decltype(&PN_ObtainFactor)>("PN_ObtainFactor")(0, kLink, kBaud, "1", factor.data()));
    const example::Key key = example::NewKey();
    ASSERT_EQ(0,
              lib.Get<decltype(&PN_DownloadPinPadWK)>("PN_DownloadPinPadWK")(
                  0, kLink, kBaud, factor.data(), "1", example::EncipherForRsa(key, modulus.data()).c_str(),
                  example::VerifyKey(key, example::Algorithm::kTripleDes).c_str()));
  }
};

using CancelledPages = Cancelled;

TEST_F(CancelledTexts, EvaluateEnds) {
  const auto start = lib.Get<decltype(&MP_StartEvaluate)>("MP_StartEvaluate");
  CancelAgainAndAgain({"MP_StartEvaluate", "STARTEVALUTF8", [start] {
                         char value = 0;
                         return start(nullptr, nullptr, kBaud, kPatience, &value);
                       }});
}

TEST_F(CancelledTexts, EvaluatorEnds) {
  CancelAgainAndAgain(Evaluator());
}

TEST_F(CancelledTexts, InfoEnds) {
  CancelAgainAndAgain(Info());
}

TEST_F(CancelledTexts, KeyboardEnds) {
  CancelAgainAndAgain(Keyboard());
}

TEST_F(CancelledPages, HtmlEnds) {
  const auto start = lib.Get<decltype(&MP_StartInfoHtml)>("MP_StartInfoHtml");
  CancelAgainAndAgain({"MP_StartInfoHtml", "\x1B[2AUTF8", [start] {
                         int result = 0;
                         return start(nullptr, nullptr, kBaud, kPatience, 1, "page", &result, 1);
                       }});
}

TEST_F(CancelledPages, ScreenshotEnds) {
  const auto start = lib.Get<decltype(&MP_StartInfoHtmlScreenshot)>("MP_StartInfoHtmlScreenshot");
  const std::string picture = Local("page.png");
  CancelAgainAndAgain({"MP_StartInfoHtmlScreenshot", "STARTSCREENSHOTUTF8", [start, picture] {
                         int result = 0;
                         return start(nullptr, kLink, kBaud, kPatience, 1, "page", picture.c_str(), &result);
                       }});
}

TEST_F(CancelledPages, PageFileEnds) {
  const auto start = lib.Get<decltype(&MP_StartInfoHtmlEx)>("MP_StartInfoHtmlEx");
  CancelAgainAndAgain({"MP_StartInfoHtmlEx", "YCSTARTINFOHTMLEXUTF8", [start] {
                         std::array<char, 2048> result{};
                         return start(nullptr, nullptr, kBaud, kPatience, "", "page", result.data());
                       }});
}

TEST_F(CancelledPages, CheckoutEnds) {
  const auto start = lib.Get<decltype(&MP_CheckOut_All)>("MP_CheckOut_All");
  CancelAgainAndAgain({"MP_CheckOut_All", "YCCHECKOUTALLUTF8", [start] {
                         std::array<char, 2048> result{};
                         return start(nullptr, nullptr, kBaud, kPatience, "a", "b", result.data());
                       }});
}

// After a cancelled wait they fetch the signature all the same, of which there is none.
class CancelledDocuments : public Cancelled {
 protected:
  static constexpr milliseconds kFetching{700};

  std::string document = Document("a.pdf");
  std::string picture = Local("sig.png");
  std::string data = std::string(1 << 16, '\0');
};

using CancelledSignatures = CancelledDocuments;

TEST_F(CancelledDocuments, ConfirmEndsUndecided) {
  const auto confirm = lib.Get<decltype(&MP_ConfirmPDF)>("MP_ConfirmPDF");
  CancelAgainAndAgain({"MP_ConfirmPDF", "YCNEWSTARTFILE", [this, confirm] {
                         int decision = 0;
                         const int status =
                             confirm(nullptr, nullptr, kBaud, kPatience, document.c_str(), &decision);
                         EXPECT_EQ(2, decision);
                         return status;
                       }});
}

TEST_F(CancelledDocuments, SignEnds) {
  const auto sign = lib.Get<decltype(&MP_SignPDF)>("MP_SignPDF");
  CancelAgainAndAgain({"MP_SignPDF", "YCNEWSTARTSIGN",
                       [this, sign] {
                         return sign(nullptr, kLink, kBaud, kPatience, document.c_str(), "1", picture.c_str(),
                                     data.data());
                       },
                       GWQ_REFUSED, kFetching});
}

TEST_F(CancelledDocuments, HandSignatureEnds) {
  const auto sign = lib.Get<decltype(&GWQ_StartSign)>("GWQ_StartSign");
  CancelAgainAndAgain({"GWQ_StartSign", "HANDSIGN",
                       [this, sign] {
                         return sign(0, kBaud, kPatience, document.c_str(), picture.c_str(),
                                     Local("sig.txt").c_str());
                       },
                       GWQ_REFUSED, kFetching});
}

TEST_F(CancelledSignatures, VoiceEnds) {
  const auto sign = lib.Get<decltype(&MP_SignPDF_Voice)>("MP_SignPDF_Voice");
  CancelAgainAndAgain({"MP_SignPDF_Voice", "YCNEWSTARTSIGN",
                       [this, sign] {
                         return sign(nullptr, kLink, kBaud, kPatience, document.c_str(), "1", "v",
                                     picture.c_str(), data.data());
                       },
                       GWQ_REFUSED, kFetching});
}

// In this mode a wait without an answer counts as a failure, and nothing is fetched.
TEST_F(CancelledSignatures, TzgEnds) {
  const auto sign = lib.Get<decltype(&MP_Sign_With_TZG)>("MP_Sign_With_TZG");
  CancelAgainAndAgain({"MP_Sign_With_TZG", "YCNEWSTARTZGTSIGN",
                       [this, sign] {
                         return sign(nullptr, kLink, kBaud, kPatience, document.c_str(), "1", "v",
                                     picture.c_str(), 0, 3, data.data());
                       },
                       GWQ_REFUSED});
}

TEST_F(CancelledPad, PinBlockEnds) {
  ASSERT_NO_FATAL_FAILURE(LoadWorkingKey());
  const auto get = lib.Get<decltype(&PN_GetPin)>("PN_GetPin");
  // Its command is the only one of the call.
  CancelAgainAndAgain({"PN_GetPin", std::string(1, '\x03'), [get] {
                         int length = 0;
                         std::array<char, 1100> block{};
                         return get(0, kLink, kBaud, kPatience, &length, block.data());
                       }});
}

TEST_F(CancelledPad, NumberEnds) {
  const auto get = lib.Get<decltype(&PN_GetInNo)>("PN_GetInNo");
  CancelAgainAndAgain({"PN_GetInNo", "GETINNO", [get] {
                         std::array<char, 1100> number{};
                         return get(0, kLink, kBaud, kPatience, 6, 0, "卡号", number.data());
                       }});
}

TEST_F(CancelledPad, ClearPinEnds) {
  CancelAgainAndAgain(ReadPin());
}

// A cancelled serial read is a failed read to the engine, on purpose.
class CancelledOnSerial : public CancelledTextScreens {
 protected:
  CancelledOnSerial() {
    port = kSerialPort;
    has_usb = false;
  }

  // Nothing is drained there: what comes before the wait are a few short commands, each with the port open for less.
  void AwaitWaiting() override {
    constexpr milliseconds kPoll{10};
    constexpr int kPollsInAWait = 30;
    int open = 0;
    for (int polls = 0; open < kPollsInAWait && polls < 1000; ++polls) {
      std::this_thread::sleep_for(kPoll);
      open = OpenLinks() == 1 ? open + 1 : 0;
    }
    EXPECT_EQ(open, kPollsInAWait);
  }

  void ExpectNextCallWorks() override { EXPECT_EQ(0, lib.reset_key(port, kBaud)); }

  static Waiting AsFailedRead(Waiting waiting) {
    waiting.cancelled = GWQ_READ_FAILED;
    return waiting;
  }
};

TEST_F(CancelledOnSerial, EvaluatorEnds) {
  CancelAgainAndAgain(AsFailedRead(Evaluator()));
}

TEST_F(CancelledOnSerial, InfoEnds) {
  CancelAgainAndAgain(AsFailedRead(Info()));
}

TEST_F(CancelledOnSerial, KeyboardEnds) {
  CancelAgainAndAgain(AsFailedRead(Keyboard()));
}

TEST_F(CancelledOnSerial, ClearPinEnds) {
  CancelAgainAndAgain(AsFailedRead(ReadPin()));
}

}  // namespace
}  // namespace gwq::test
