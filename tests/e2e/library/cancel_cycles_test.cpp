// SPDX-License-Identifier: MIT
// Every function that waits for the customer, cancelled from a second thread: while it is known to
// wait, and then by one cancel at a random moment of its life, again and again.
//
//   GWQ_TEST_CYCLES       random moments of each function
//   GWQ_TEST_SEED         repeats a run's moments
//   GWQ_TEST_LONG_DRAINS  if 1, drains last as long as they do for a host
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <random>
#include <thread>

#include "bank_pad.h"
#include "e2e/library/screens_rig.h"
#include "support/host_file_turn.h"

namespace gwq::test {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// From the moment in which the flag is set; a USB read looks at it every 200 ms.
constexpr milliseconds kEndOfRead{500};

// What else a call may do once it is cancelled: a pause, a screen to close.
constexpr milliseconds kEndOfCall{1000};
constexpr milliseconds kReturn{1500};
constexpr milliseconds kLongestDrain{1200};

// The customer never answers: what is not cancelled ends after this and the host's margin.
constexpr int kPatience = 20;

// Pushed in several packets of many reports.
constexpr std::size_t kLargeFile = 700'000;
// Shown by a command of many reports.
constexpr std::size_t kLargePage = 100'000;

int NumberIn(const char* variable, int otherwise) {
  const char* text = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe)
  return text == nullptr ? otherwise : std::atoi(text);
}

milliseconds Ms(Clock::duration duration) {
  return std::chrono::duration_cast<milliseconds>(duration);
}

// A call in a thread of its own.
class Call {
 public:
  explicit Call(std::function<int()> function, Clock::time_point start = Clock::now())
      : thread_([this, start, function = std::move(function)] {
          std::this_thread::sleep_until(start);
          began_ = Clock::now();
          status_ = function();
          ended_ = Clock::now();
        }) {}
  ~Call() { Join(); }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  [[nodiscard]] bool Ended() const { return ended_.load() != Clock::time_point{}; }
  [[nodiscard]] bool BeganBefore(Clock::time_point moment) const {
    const Clock::time_point began = began_;
    return began != Clock::time_point{} && began < moment;
  }
  void Join() {
    if (thread_.joinable()) thread_.join();
  }
  // Once joined.
  [[nodiscard]] int status() const { return status_; }
  [[nodiscard]] milliseconds After(Clock::time_point start) const { return Ms(ended_.load() - start); }

 private:
  int status_ = 0;
  std::atomic<Clock::time_point> began_{};
  std::atomic<Clock::time_point> ended_{};
  std::thread thread_;
};

// A function that waits for the customer.
struct Waiting {
  const char* name;
  std::string question;  // in the command whose answer it awaits; empty if nobody is asked
  std::function<int()> call;
  int cancelled = GWQ_CANCELLED;     // its status after a cancelled wait
  milliseconds beyond{0};            // what it may take for what it goes on to after a cancelled wait
  int also_ends_with = GWQ_REFUSED;  // when it is cancelled before it waits, besides the usual statuses
};

enum class Way { kCancleEvaluate, kCancelCurrentOperation };

// What the cancels of a function came to.
struct Figures {
  int moments = 0;
  int cuts = 0;
  milliseconds slowest_evaluate{0};
  milliseconds slowest_current{0};
  milliseconds slowest_end{0};
  milliseconds slowest_after_cut{0};
};

class Cancelled : public ScreenSession {
 protected:
  Cancelled() {
    if (NumberIn("GWQ_TEST_LONG_DRAINS", 0) == 1) {
      LeaveDrainsLong();
      drain_of_cancel_ = kLongestDrain;
    }
    printf("seed %u\n", seed_);
  }

  void CancelAgainAndAgain(const Waiting& waiting) {
    SCOPED_TRACE(waiting.name);
    const milliseconds life = waiting.question.empty() ? Live(waiting) : CancelTheWait(waiting);
    Figures figures;
    while (figures.moments < cycles_ && !HasFailure()) {
      const Way way = figures.moments % 2 == 0 ? Way::kCancleEvaluate : Way::kCancelCurrentOperation;
      CancelAtAnyMoment(waiting, way, life, figures);
    }
    Tell(waiting, life, figures);
  }

  // Waits until the call waits for the customer.
  virtual void AwaitWaiting() {
    ASSERT_TRUE(AwaitReadOfAnswer(milliseconds(10'000)));
    EXPECT_EQ(1, OpenLinks());
  }

  virtual void ExpectNextCallWorks() { EXPECT_EQ(1, lib.takes_utf8()); }

  bool has_usb = true;

 private:
  static constexpr milliseconds kPauseBefore{200};  // of MP_CancelCurrentOperation, before it cancels
  static constexpr milliseconds kFirstMoment{10};

  milliseconds Random(milliseconds most) {
    return milliseconds(std::uniform_int_distribution<milliseconds::rep>(0, most.count())(random_));
  }

  // Returns how long the call took from its beginning until it waited.
  milliseconds CancelTheWait(const Waiting& waiting) {
    WatchForQuestion(waiting.question);
    const Clock::time_point start = Clock::now();
    Call call(waiting.call);
    AwaitWaiting();
    const milliseconds life = Ms(Clock::now() - start);
    std::this_thread::sleep_for(Random(milliseconds(200)));
    EXPECT_FALSE(call.Ended());
    const Clock::time_point cancelled = Clock::now();
    EXPECT_EQ(0, lib.cancel_read());
    call.Join();
    EXPECT_EQ(waiting.cancelled, call.status());
    EXPECT_LT(call.After(cancelled), kEndOfRead + waiting.beyond);
    EXPECT_EQ(0, OpenLinks());
    ExpectNextCallWorks();
    return life;
  }

  // ... until it ended by itself.
  static milliseconds Live(const Waiting& waiting) {
    const Clock::time_point start = Clock::now();
    EXPECT_EQ(0, waiting.call());
    return Ms(Clock::now() - start);
  }

  struct Cancel {
    Way way;
    Clock::time_point cancelled;  // or a little later
    milliseconds returned;
    int status;
    bool cut = false;

    [[nodiscard]] bool ClosesAfterCut() const { return way == Way::kCancelCurrentOperation && cut; }
  };

  // `moment` is when the call is to be cancelled.
  Cancel CancelAt(Clock::time_point moment, Way way) {
    const milliseconds before = way == Way::kCancelCurrentOperation ? kPauseBefore : milliseconds(0);
    std::this_thread::sleep_until(moment - before);
    const Clock::time_point asked = Clock::now();
    const int status = way == Way::kCancelCurrentOperation ? cancel_current(nullptr, nullptr, kBaud, 0)
                                                           : cancel_evaluate(nullptr, nullptr, kBaud);
    return {way, asked + before, Ms(Clock::now() - asked), status};
  }

  // The one cancel ends the call, wherever in its life it falls.
  void CancelAtAnyMoment(const Waiting& waiting, Way way, milliseconds life, Figures& figures) {
    constexpr milliseconds kIntoTheWait{300};
    const int cuts = CutCommands();
    const Clock::time_point start = Clock::now() + kPauseBefore;
    Call call(waiting.call, start);
    Cancel cancel = CancelAt(start + kFirstMoment + Random(life + kIntoTheWait), way);
    if (!call.BeganBefore(cancel.cancelled)) return EndWithoutCounting(call);
    call.Join();
    cancel.cut = CutCommands() > cuts;
    const milliseconds ended = call.After(cancel.cancelled);
    Count(figures, cancel, ended);
    ExpectEnded(waiting, call.status(), ended);
    ExpectReturned(cancel);
    EXPECT_EQ(0, OpenLinks());
    ExpectNextCallWorksOnceItIsQuiet(cancel.cut);
  }

  // This machine was busy with something else.
  void EndWithoutCounting(const Call& call) {
    constexpr milliseconds kBetween{50};
    for (; !call.Ended(); std::this_thread::sleep_for(kBetween)) cancel_evaluate(nullptr, nullptr, kBaud);
  }

  void ExpectEnded(const Waiting& waiting, int status, milliseconds ended) const {
    EXPECT_THAT(status, testing::AnyOf(GWQ_CANCELLED, GWQ_SEND_FAILED, GWQ_READ_FAILED, GWQ_REFUSED,
                                       waiting.also_ends_with));
    if (!waiting.question.empty()) {
      EXPECT_GE(ended, milliseconds(0)) << "by itself";
    }
    EXPECT_LT(ended, kEndOfCall + waiting.beyond + drain_of_cancel_);
  }

  // The terminal takes what follows a command that was cut for the rest of it, the command to close too.
  void ExpectReturned(const Cancel& cancel) const {
    constexpr milliseconds kUnanswered{3200};
    if (cancel.ClosesAfterCut()) {
      EXPECT_LT(cancel.returned, kReturn + kUnanswered);
      return;
    }
    const bool opens = has_usb || cancel.way == Way::kCancleEvaluate;
    EXPECT_LT(cancel.returned, kReturn);
    EXPECT_EQ(opens ? GWQ_OK : GWQ_NOT_OPENED, cancel.status);
  }

  // An exchange that was cancelled may have left its answer, of which a drain takes a report, and
  // the terminal waits a second for the rest of a command.
  void ExpectNextCallWorksOnceItIsQuiet(bool cut) {
    constexpr milliseconds kPatienceOfTerminal{1100};
    if (cut) std::this_thread::sleep_for(kPatienceOfTerminal);
    while (Drain() == GWQ_OK) continue;
    ExpectNextCallWorks();
  }

  int Drain() {
    std::array<char, 2048> answer{};
    int length = 1024;
    return lib.trans_proc_only_read(0, kBaud, answer.data(), &length, 100);
  }

  static void Count(Figures& figures, const Cancel& cancel, milliseconds ended) {
    milliseconds& slowest = cancel.ClosesAfterCut()              ? figures.slowest_after_cut
                            : cancel.way == Way::kCancleEvaluate ? figures.slowest_evaluate
                                                                 : figures.slowest_current;
    slowest = std::max(slowest, cancel.returned);
    figures.slowest_end = std::max(figures.slowest_end, ended);
    figures.cuts += cancel.cut ? 1 : 0;
    ++figures.moments;
  }

  static void Tell(const Waiting& waiting, milliseconds life, const Figures& figures) {
    const auto ms = [](milliseconds time) { return static_cast<int>(time.count()); };
    printf(
        "%s, which waits after %d ms, cancelled at %d moments: ended after %d ms at most\n"
        "  MP_CancleEvaluate returned after %d ms, MP_CancelCurrentOperation after %d ms; %d cut commands, "
        "after "
        "which it returned after %d ms\n",
        waiting.name, ms(life), figures.moments, ms(figures.slowest_end), ms(figures.slowest_evaluate),
        ms(figures.slowest_current), figures.cuts, ms(figures.slowest_after_cut));
  }

  decltype(&MP_CancleEvaluate) cancel_evaluate = lib.Get<MP_CancleEvaluate>();
  decltype(&MP_CancelCurrentOperation) cancel_current = lib.Get<MP_CancelCurrentOperation>();
  int cycles_ = NumberIn("GWQ_TEST_CYCLES", 4);
  unsigned seed_ =
      static_cast<unsigned>(NumberIn("GWQ_TEST_SEED", static_cast<int>(std::random_device{}() >> 1U)));
  std::mt19937 random_{seed_};
  milliseconds drain_of_cancel_{0};  // which a cancelled call may have to await before it closes its screen
};

// A zero byte would cut it short on its way.
std::string KeyUnderFactoryKey() {
  example::Key factory_key{};
  factory_key.fill(0x31);
  while (true) {
    const auto enciphered = example::Encipher(example::NewKey(), factory_key);
    if (std::find(enciphered.begin(), enciphered.end(), 0) == enciphered.end())
      return example::Hex(enciphered);
  }
}

class CancelledTextScreens : public Cancelled {
 protected:
  Waiting Evaluator() {
    return {"GWQ_StartEvaluator", "\x1B[4R", [this, start = lib.Get<GWQ_StartEvaluator>()] {
              unsigned rating = 0;
              return start(port, kBaud, "n", "1", 1, nullptr, kPatience, &rating);
            }};
  }

  Waiting Info() {
    return {"GWQ_StartInfo", "\x1B[2A\x02", [this, start = lib.Get<GWQ_StartInfo>()] {
              unsigned key = 0;
              return start(port, kBaud, kPatience, "message", &key);
            }};
  }

  Waiting Keyboard() {
    return {"GWQ_StartKeyboard", "\x1BGM", [this, start = lib.Get<GWQ_StartKeyboard>()] {
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

  Waiting ReadPinDes() {
    return {"GWQ_ReadPinDES",
            "\x1B"
            "F",
            [this] {
              std::array<char, 1100> block{};
              return lib.read_pin_des(port, kBaud, 0, 0, kPatience, block.data());
            }};
  }

  Waiting ReadPinAnsi() {
    return {"GWQ_ReadPinAnsi", "\x1BI", [this] {
              std::array<char, 1100> block{};
              return lib.read_pin_ansi(port, kBaud, 0, 0, kPatience, "6225880012345678", block.data());
            }};
  }

  // Without one the terminal asks nobody for a PIN block.
  void LoadCounterKey() {
    ASSERT_EQ(0, lib.reset_key(port, kBaud));
    const std::string key = KeyUnderFactoryKey();
    ASSERT_EQ(0, lib.load_working_key(port, kBaud, 0, 15, key.c_str()));
    ASSERT_EQ(0, lib.activate_working_key(port, kBaud, 0, 15));
  }

  int port = 0;
};

using CancelledTexts = CancelledTextScreens;
using CancelledPad = CancelledTextScreens;

class CancelledPinBlocks : public Cancelled {
 protected:
  static constexpr int kTripleDes = 0;
  static constexpr int kDigits = 6;
  static constexpr int kBound = 1;  // to the account

  // Without one the pad asks nobody for a PIN.
  void LoadWorkingKey() {
    ASSERT_EQ(0, lib.Get<PN_SetPinPadParameter>()(0, kLink, kBaud, kTripleDes, kDigits, 0, "F"));
    std::array<char, 4096> modulus{};
    std::array<char, 1024> factor{};
    ASSERT_EQ(0, lib.Get<PN_ObtainPublicKey>()(0, kLink, kBaud, 1, 2048, modulus.data()));
    ASSERT_EQ(0, lib.Get<PN_ObtainFactor>()(0, kLink, kBaud, "1", factor.data()));
    const example::Key key = example::NewKey();
    ASSERT_EQ(
        0, lib.Get<PN_DownloadPinPadWK>()(0, kLink, kBaud, factor.data(), "1",
                                          example::EncipherForRsa(key, modulus.data()).c_str(),
                                          example::VerifyKey(key, example::Algorithm::kTripleDes).c_str()));
  }
};

using CancelledPages = Cancelled;

TEST_F(CancelledTexts, EvaluateEnds) {
  const auto start = lib.Get<MP_StartEvaluate>();
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
  const auto start = lib.Get<MP_StartInfoHtml>();
  CancelAgainAndAgain({"MP_StartInfoHtml", "\x1B[2AUTF8", [start] {
                         int result = 0;
                         return start(nullptr, nullptr, kBaud, kPatience, 1, "page", &result, 1);
                       }});
}

TEST_F(CancelledPages, ScreenshotEnds) {
  const auto start = lib.Get<MP_StartInfoHtmlScreenshot>();
  const std::string page(kLargePage, 'x');
  const std::string picture = Local("page.png");
  CancelAgainAndAgain({"MP_StartInfoHtmlScreenshot", "STARTSCREENSHOTUTF8", [start, page, picture] {
                         int result = 0;
                         return start(nullptr, kLink, kBaud, kPatience, 1, page.c_str(), picture.c_str(),
                                      &result);
                       }});
}

TEST_F(CancelledPages, PageFileEnds) {
  const auto start = lib.Get<MP_StartInfoHtmlEx>();
  const std::string page(kLargeFile, 'x');
  CancelAgainAndAgain({"MP_StartInfoHtmlEx", "YCSTARTINFOHTMLEXUTF8", [start, page] {
                         std::array<char, 2048> result{};
                         return start(nullptr, nullptr, kBaud, kPatience, "", page.c_str(), result.data());
                       }});
}

TEST_F(CancelledPages, CheckoutEnds) {
  const auto start = lib.Get<MP_CheckOut_All>();
  CancelAgainAndAgain({"MP_CheckOut_All", "YCCHECKOUTALLUTF8", [start] {
                         std::array<char, 2048> result{};
                         return start(nullptr, nullptr, kBaud, kPatience, "a", "b", result.data());
                       }});
}

// After a cancelled wait they fetch the signature all the same, of which there is none.
class CancelledDocuments : public Cancelled {
 protected:
  static constexpr milliseconds kFetching{700};

  std::string document = Document("a.pdf", std::string(kLargeFile, 'x'));
  std::string picture = Local("sig.png");
  std::string data = std::string(1 << 16, '\0');
};

using CancelledSignatures = CancelledDocuments;

TEST_F(CancelledDocuments, ConfirmEndsUndecided) {
  const auto confirm = lib.Get<MP_ConfirmPDF>();
  CancelAgainAndAgain({"MP_ConfirmPDF", "YCNEWSTARTFILE", [this, confirm] {
                         int decision = 0;
                         const int status =
                             confirm(nullptr, nullptr, kBaud, kPatience, document.c_str(), &decision);
                         EXPECT_EQ(2, decision);
                         return status;
                       }});
}

TEST_F(CancelledDocuments, SignEnds) {
  const auto sign = lib.Get<MP_SignPDF>();
  CancelAgainAndAgain({"MP_SignPDF", "YCNEWSTARTSIGN",
                       [this, sign] {
                         return sign(nullptr, kLink, kBaud, kPatience, document.c_str(), "1", picture.c_str(),
                                     data.data());
                       },
                       GWQ_REFUSED, kFetching});
}

TEST_F(CancelledDocuments, HandSignatureEnds) {
  const auto sign = lib.Get<GWQ_StartSign>();
  CancelAgainAndAgain({"GWQ_StartSign", "HANDSIGN",
                       [this, sign] {
                         return sign(0, kBaud, kPatience, document.c_str(), picture.c_str(),
                                     Local("sig.txt").c_str());
                       },
                       GWQ_REFUSED, kFetching});
}

TEST_F(CancelledSignatures, VoiceEnds) {
  const auto sign = lib.Get<MP_SignPDF_Voice>();
  CancelAgainAndAgain({"MP_SignPDF_Voice", "YCNEWSTARTSIGN",
                       [this, sign] {
                         return sign(nullptr, kLink, kBaud, kPatience, document.c_str(), "1", "v",
                                     picture.c_str(), data.data());
                       },
                       GWQ_REFUSED, kFetching});
}

// Nobody is asked, but a large file takes its time.
class CancelledPushes : public CancelledDocuments {
 protected:
  std::string large = Document("large.pdf", std::string(3 * kLargeFile, 'x'));
};

TEST_F(CancelledPushes, PushEnds) {
  const auto push = lib.Get<Z11DownLoadFile>();
  CancelAgainAndAgain(
      {.name = "Z11DownLoadFile",
       .question = "",
       .call = [this, push] { return push(0, '9', kBaud, 255, large.c_str(), "/tmp/large.pdf"); },
       .also_ends_with = GWQ_OK});
}

TEST_F(CancelledPushes, ShowEnds) {
  const auto show = lib.Get<MP_ShowPDF>();
  CancelAgainAndAgain(
      {.name = "MP_ShowPDF",
       .question = "",
       .call = [this, show] { return show(nullptr, nullptr, kBaud, kPatience, large.c_str()); },
       .also_ends_with = GWQ_OK});
}

// In this mode a wait without an answer counts as a failure, and nothing is fetched.
TEST_F(CancelledSignatures, TzgEnds) {
  const auto sign = lib.Get<MP_Sign_With_TZG>();
  CancelAgainAndAgain({"MP_Sign_With_TZG", "YCNEWSTARTZGTSIGN",
                       [this, sign] {
                         return sign(nullptr, kLink, kBaud, kPatience, document.c_str(), "1", "v",
                                     picture.c_str(), 0, 3, data.data());
                       },
                       GWQ_REFUSED});
}

// The commands that ask for the PIN, with the time of the wait in their split form.
constexpr char kPinCommand[] = "300514";
constexpr char kShowingPinCommand[] = "403014";

TEST_F(CancelledPinBlocks, PinEnds) {
  ASSERT_NO_FATAL_FAILURE(LoadWorkingKey());
  const auto get = lib.Get<PN_GetPin>();
  CancelAgainAndAgain({"PN_GetPin", kPinCommand, [get] {
                         int length = 0;
                         std::array<char, 1100> block{};
                         return get(0, kLink, kBaud, kPatience, &length, block.data());
                       }});
}

TEST_F(CancelledPinBlocks, PinBesideATextEnds) {
  ASSERT_NO_FATAL_FAILURE(LoadWorkingKey());
  const auto get = lib.Get<GetPinblockShowString>();
  CancelAgainAndAgain({"GetPinblockShowString", kShowingPinCommand, [get] {
                         int length = 0;
                         std::array<unsigned char, 1100> block{};
                         return get(0, kLink, kBaud, block.data(), &length, kPatience, "Your PIN");
                       }});
}

TEST_F(CancelledPinBlocks, PinBlockEnds) {
  ASSERT_NO_FATAL_FAILURE(LoadWorkingKey());
  const auto get = lib.Get<PN_GetPinBlock>();
  CancelAgainAndAgain({"PN_GetPinBlock", kPinCommand, [get] {
                         int length = kDigits;
                         std::array<char, 1100> factor{};
                         std::array<char, 1100> block{};
                         return get(0, kLink, kBaud, kPatience, kTripleDes, 0, kBound, "6225880012345678",
                                    factor.data(), block.data(), &length);
                       }});
}

// A mode that could not be set is a bad argument to it.
TEST_F(CancelledPinBlocks, PinBlockBesideATextEnds) {
  ASSERT_NO_FATAL_FAILURE(LoadWorkingKey());
  const auto get = lib.Get<PN_GetPinBlockShowString>();
  CancelAgainAndAgain({.name = "PN_GetPinBlockShowString",
                       .question = kShowingPinCommand,
                       .call =
                           [get] {
                             int length = kDigits;
                             std::array<char, 1100> factor{};
                             std::array<char, 1100> block{};
                             return get(0, kLink, kBaud, kPatience, kTripleDes, 0, kBound, "6225880012345678",
                                        factor.data(), block.data(), &length, "Your PIN");
                           },
                       .also_ends_with = GWQ_BAD_ARGUMENT});
}

using CancelledEnciphering = CancelledPinBlocks;

// Nobody is asked; what it does takes its time all the same.
TEST_F(CancelledEnciphering, Ends) {
  ASSERT_NO_FATAL_FAILURE(LoadWorkingKey());
  const HostFileTurn turn("/tmp/enctemp.data");
  const auto encipher = lib.Get<PN_GetStringBlock>();
  CancelAgainAndAgain({.name = "PN_GetStringBlock",
                       .question = "",
                       .call =
                           [encipher] {
                             const std::string text(4000, 'x');
                             std::string file(1 << 15, '\0');
                             std::array<char, 5000> answer{};
                             int length = static_cast<int>(text.size());
                             return encipher(0, kLink, kBaud, kPatience, kTripleDes, text.c_str(),
                                             file.data(), &length, answer.data());
                           },
                       .also_ends_with = GWQ_OK});
}

TEST_F(CancelledPad, NumberEnds) {
  const auto get = lib.Get<PN_GetInNo>();
  CancelAgainAndAgain({"PN_GetInNo", "GETINNO", [get] {
                         std::array<char, 1100> number{};
                         return get(0, kLink, kBaud, kPatience, 6, 0, "卡号", number.data());
                       }});
}

TEST_F(CancelledPad, ClearPinEnds) {
  CancelAgainAndAgain(ReadPin());
}

TEST_F(CancelledPad, DesBlockEnds) {
  ASSERT_NO_FATAL_FAILURE(LoadCounterKey());
  CancelAgainAndAgain(ReadPinDes());
}

TEST_F(CancelledPad, AnsiBlockEnds) {
  ASSERT_NO_FATAL_FAILURE(LoadCounterKey());
  CancelAgainAndAgain(ReadPinAnsi());
}

// A cancelled serial read is a failed read to the engine, on purpose.
class CancelledOnSerial : public CancelledTextScreens {
 protected:
  CancelledOnSerial() {
    port = kSerialPort;
    has_usb = false;
  }

  // Nothing is drained there: what comes before the wait are a few short commands, each with the
  // port open for less.
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

  void ExpectNextCallWorks() override { LoadCounterKey(); }

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

TEST_F(CancelledOnSerial, DesBlockEnds) {
  ASSERT_NO_FATAL_FAILURE(LoadCounterKey());
  CancelAgainAndAgain(AsFailedRead(ReadPinDes()));
}

TEST_F(CancelledOnSerial, AnsiBlockEnds) {
  ASSERT_NO_FATAL_FAILURE(LoadCounterKey());
  CancelAgainAndAgain(AsFailedRead(ReadPinAnsi()));
}

}  // namespace
}  // namespace gwq::test
