// SPDX-License-Identifier: MIT
// The teller's card and the rating, on USB and on a serial port.
#include <gwq/screens/evaluation.h>

#include <climits>
#include <optional>

#include "support/fake_tty.h"
#include "support/iconv_text.h"
#include "unit/screens/screens_rig.h"

namespace gwq::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Card {
  const char* name = "Li";
  const char* number = "0123";
  int stars = 5;
  const char* photo = "li.jpg";
};

class Evaluation : public FilesRig {
 protected:
  static int ShowCard(const Card& card = {}, int timeout = 30) {
    return MP_StartElectronicCard(nullptr, nullptr, 9600, timeout, card.name, card.number, card.stars,
                                  card.photo);
  }
  static int SetCard(const Card& card = {}) {
    return MP_SetEvaluateInfo(nullptr, nullptr, 9600, card.name, card.number, card.stars, card.photo);
  }
  int Rate(int timeout = 30) { return MP_StartEvaluate(nullptr, nullptr, 9600, timeout, value_.text()); }
  int CounterRate(const Card& card = {}, int timeout = 30, int port = 0) {
    return GWQ_StartEvaluator(port, 9600, card.name, card.number, card.stars, card.photo, timeout, &rating_);
  }

  void ExpectRating() { usb_.ExpectCommand(wire::kEvaluationTime30).ExpectCommand(wire::kStartRating); }
  void ExpectCounterRating() {
    usb_.ExpectCommand(wire::kCounterCard)
        .ExpectCommand(wire::kEvaluationTime30)
        .ExpectCommand(wire::kStartCounterRating);
  }
  void ExpectClose() { usb_.ExpectCommand(wire::kCloseEvaluation); }

  [[nodiscard]] bool ValueIsUntouched() const { return value_.Content() == Bytes{'x'}; }
  [[nodiscard]] char Value() const { return static_cast<char>(value_.Content()[0]); }

  static constexpr unsigned kUntouched = 77;

  GuardedBuffer value_{1, 'x'};
  unsigned rating_ = kUntouched;
};

// ------------------------------------------------------------------ the cards of the MP_ functions

TEST_F(Evaluation, CardIsShownOnceItsTimeIsSet) {
  usb_.ExpectCommand(wire::kEvaluationTime30).ExpectCommand(wire::kShowCard);
  const LogCapture log;
  EXPECT_EQ(ShowCard(), 0);
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_StartElectronicCard"));
  EXPECT_EQ(Elapsed(), kDrainSeconds) << "no answer is awaited";
}

TEST_F(Evaluation, CardIsSetWithoutATime) {
  usb_.ExpectCommand(wire::kSetCard);
  const LogCapture log;
  EXPECT_EQ(SetCard(), 0);
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_SetEvaluateInfo"));
}

TEST_F(Evaluation, EveryFunctionDrainsUsbFirst) {
  usb_.Answer("B0F").ExpectCommand(wire::kEvaluationTime30).ExpectCommand(wire::kShowCard);
  EXPECT_EQ(ShowCard(), 0);
  usb_.Answer("B0F").ExpectCommand(wire::kSetCard);
  EXPECT_EQ(SetCard(), 0);
  usb_.Answer("B0F");
  ExpectRating();
  usb_.Answer(wire::kKey2);
  ExpectClose();
  EXPECT_EQ(Rate(), 0);
  usb_.Answer("B0F");
  ExpectCounterRating();
  usb_.Answer(wire::kKey2);
  ExpectClose();
  EXPECT_EQ(CounterRate(), 0);
  EXPECT_EQ(Value(), '2');
  EXPECT_EQ(rating_, 2U);
}

TEST_F(Evaluation, CardTakesAnyTimeout) {
  for (const auto& [timeout, command] : {std::pair{0, "\x1B[4;0T"},
                                         {1000, "\x1B[4;1000T"},
                                         {-1, "\x1B[4;-1T"},
                                         {INT_MIN, "\x1B[4;-2147483648T"}}) {
    usb_.ExpectCommand(command).ExpectCommand(wire::kShowCard);
    EXPECT_EQ(ShowCard({}, timeout), 0);
  }
}

TEST_F(Evaluation, StarsFrom0To6AreSent) {
  for (int stars = 0; stars <= 6; ++stars) {
    const std::string fields = "\x02Li|0123|" + std::to_string(stars) + "|li.jpg\x03";
    std::string command = "\x1B[4SETEVALINFOUTF8";
    usb_.ExpectCommand(command.append(fields));
    EXPECT_EQ(SetCard({.stars = stars}), 0);
  }
}

TEST_F(Evaluation, BadStarsOrNoNameAreRefusedBeforeAnythingIsSent) {
  const LogCapture log;
  for (const int stars : {-1, 7, INT_MIN, INT_MAX}) {
    EXPECT_EQ(ShowCard({.stars = stars}), -1);
    EXPECT_EQ(SetCard({.stars = stars}), -1);
    EXPECT_EQ(CounterRate({.stars = stars}), -1);
  }
  EXPECT_EQ(ShowCard({.name = nullptr}), -1);
  EXPECT_EQ(SetCard({.name = nullptr}), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  EXPECT_EQ(log.Messages().size(), 10U) << "the MP_ functions have written their names, and that is all";
  EXPECT_EQ(log.Messages().front(), "MP_StartElectronicCard");
  EXPECT_EQ(log.Messages().back(), "MP_SetEvaluateInfo");
}

TEST_F(Evaluation, NoPhotoMeansTheTellersNumber) {
  usb_.ExpectCommand("\x1B[4SETEVALINFOUTF8\x02Li|0123|5|0123.jpg\x03");
  EXPECT_EQ(SetCard({.photo = nullptr}), 0);
  usb_.ExpectCommand(wire::kEvaluationTime30).ExpectCommand("\x1B[4OPINFODPUTF8\x02Li|0123|5|0123.jpg\x03");
  EXPECT_EQ(ShowCard({.photo = nullptr}), 0);
}

TEST_F(Evaluation, EmptyPhotoNameIsAName) {
  usb_.ExpectCommand("\x1B[4SETEVALINFOUTF8\x02Li|0123|5|\x03");
  EXPECT_EQ(SetCard({.photo = ""}), 0);
}

TEST_F(Evaluation, NoNumberIsAnEmptyOne) {
  usb_.ExpectCommand(
      "\x1B[4SETEVALINFOUTF8\x02|"
      "|5|.jpg\x03");
  EXPECT_EQ(SetCard({.name = "", .number = nullptr, .photo = nullptr}), 0);
}

TEST_F(Evaluation, PhotoNameGoesInGbkAndTheOtherFieldsAsTheyAre) {
  const std::string photo = InGbk("王小明.jpg");
  std::string command = "\x1B[4SETEVALINFOUTF8\x02王|零1|5|";
  usb_.ExpectCommand(command.append(photo).append("\x03"));
  EXPECT_EQ(SetCard({.name = "王", .number = "零1", .photo = "王小明.jpg"}), 0);
}

TEST_F(Evaluation, AtMost256BytesOfThePhotosGbkNameAreUsed) {
  struct Row {
    std::string photo;
    std::string sent;
  };
  std::string wide;
  for (int i = 0; i < 200; ++i) wide += "明";
  const std::vector<Row> rows = {
      {std::string(255, 'p'), std::string(255, 'p')},
      {std::string(256, 'p'), std::string(256, 'p')},
      {std::string(257, 'p'), std::string(256, 'p')},
      {std::string(100'000, 'p'), std::string(256, 'p')},
      {wide, InGbk(wide).substr(0, 256)},
      {std::string("p").append(wide), InGbk(std::string("p").append(wide)).substr(0, 255)}};
  for (const Row& row : rows) {
    std::string command = "\x1B[4SETEVALINFOUTF8\x02Li|0123|5|";
    usb_.ExpectCommand(command.append(row.sent).append("\x03"));
    EXPECT_EQ(SetCard({.photo = row.photo.c_str()}), 0);
  }
}

TEST_F(Evaluation, PhotoNameThatIsNotUtf8EndsWhereItStopsBeing) {
  usb_.ExpectCommand("\x1B[4SETEVALINFOUTF8\x02Li|0123|5|ab\x03");
  EXPECT_EQ(SetCard({.photo = "ab\xFF"
                              "cd"}),
            0);
}

TEST_F(Evaluation, CardThatFillsItsCommandIsSentAndALongerOneIsRefusedBeforeAnythingIs) {
  const std::string word = "\x1B[4SETEVALINFOUTF8\x02";
  const std::string rest = "|0123|5|p.jpg\x03";
  const std::string name(1023 - word.size() - rest.size(), 'n');
  usb_.ExpectCommand(word + name + rest);
  EXPECT_EQ(SetCard({.name = name.c_str(), .photo = "p.jpg"}), 0);
  const std::size_t calls = usb_.Calls().size();
  const std::string longer = name + "n";
  EXPECT_EQ(SetCard({.name = longer.c_str(), .photo = "p.jpg"}), -1);
  EXPECT_EQ(ShowCard({.name = std::string(1023, 'n').c_str(), .photo = "p.jpg"}), -1);
  EXPECT_EQ(CounterRate({.name = std::string(1023, 'n').c_str(), .photo = "p.jpg"}), -1);
  EXPECT_EQ(CounterRate({.photo = std::string(2000, 'p').c_str()}), -1);
  EXPECT_EQ(usb_.Calls().size(), calls);
}

TEST_F(Evaluation, NumberThatMakesItsPhotosNameTooLongIsRefused) {
  const std::string number(253, '7');
  EXPECT_EQ(SetCard({.number = number.c_str(), .photo = nullptr}), -1);
  EXPECT_EQ(ShowCard({.number = number.c_str(), .photo = nullptr}), -1);
  usb_.ExpectCommand("\x1B[4SETEVALINFOUTF8\x02Li|" + number.substr(1) + "|5|" + number.substr(1) +
                     ".jpg\x03");
  EXPECT_EQ(SetCard({.number = number.substr(1).c_str(), .photo = nullptr}), 0);
}

TEST_F(Evaluation, AbsentTerminalIsMinus3FromTheDrain) {
  usb_.Unplug();
  EXPECT_EQ(ShowCard(), -3);
  EXPECT_EQ(SetCard(), -3);
  EXPECT_EQ(Rate(), -3);
  EXPECT_EQ(usb_.Count("list"), 6) << "one attempt with each identity, and no more";
  EXPECT_EQ(CounterRate(), -3);
  EXPECT_EQ(usb_.Count("list"), 12) << "drain, card and time-out";
  EXPECT_TRUE(ValueIsUntouched());
  EXPECT_EQ(rating_, kUntouched);
}

TEST_F(Evaluation, OtherResultsOfTheDrainAreIgnored) {
  CancelReading(0);
  usb_.ExpectCommand(wire::kSetCard);
  EXPECT_EQ(SetCard(), 0);
}

TEST_F(Evaluation, CardThatCannotBeSentIsMinus14) {
  usb_.ExpectCommand(wire::kEvaluationTime30).ExpectCommand(wire::kShowCard).ExpectCommand(wire::kSetCard);
  FailSending(1);
  EXPECT_EQ(ShowCard(), -14);
  FailSending(2);
  EXPECT_EQ(SetCard(), -14);
}

TEST_F(Evaluation, CardIsMinus3WhenTheTerminalIsGoneByThen) {
  usb_.ExpectCommand(wire::kEvaluationTime30);
  usb_.OnTransfer([this](const Transfer& transfer) {
    if (!transfer.in) usb_.FailListing(0);
  });
  EXPECT_EQ(ShowCard(), -3);
}

TEST_F(Evaluation, CardsTimeThatCannotBeSentIsReturnedAsItIs) {
  usb_.ExpectCommand(wire::kEvaluationTime30);
  FailSending(0);
  EXPECT_EQ(ShowCard(), -10);
}

TEST_F(Evaluation, CardsTimeIsMinus3WhenTheTerminalIsGoneByThen) {
  Fail(Failure::kNotOpened, 0);
  EXPECT_EQ(ShowCard(), -3);
}

// ------------------------------------------------------------------ MP_StartEvaluate

struct Key {
  std::string_view answer;
  char value;
  unsigned rating;
};

std::string NameOf(const Key& each) {
  return Readable(BytesOf(each.answer));
}

class RatingKeys : public Evaluation, public testing::WithParamInterface<Key> {};

TEST_P(RatingKeys, ReachTheCaller) {
  ExpectRating();
  usb_.Answer(GetParam().answer, 3);
  ExpectClose();
  EXPECT_EQ(Rate(), 0);
  EXPECT_EQ(Value(), GetParam().value);
  ExpectCounterRating();
  usb_.Answer(GetParam().answer, 3);
  ExpectClose();
  EXPECT_EQ(CounterRate(), 0);
  EXPECT_EQ(rating_, GetParam().rating);
}

INSTANTIATE_TEST_SUITE_P(All, RatingKeys,
                         testing::Values(Key{"B1F", '1', 1}, Key{"B2F", '2', 2}, Key{"B3F", '3', 3},
                                         Key{"B0F", '4', 4}, Key{"B0FxF", '4', 4}, Key{"B4F", 'x', 77},
                                         Key{"F", 'x', 77}, Key{"B1xF", 'x', 77}, Key{"b1F", 'x', 77},
                                         Key{"1F", 'x', 77}, Key{"AB1F", 'x', 77},
                                         Key{"\x02U\x03"
                                             "F",
                                             'x', 77}));

TEST_F(Evaluation, LongestAnswerIsNoRating) {
  ExpectRating();
  usb_.Answer(Bytes(1023, 'B')).Answer(Bytes(1024, 'B'));
  ExpectClose();
  EXPECT_EQ(Rate(), 0);
  EXPECT_TRUE(ValueIsUntouched());
}

TEST_F(Evaluation, RatingLogsItsLinesInOrder) {
  ExpectRating();
  usb_.Answer("B0F");
  ExpectClose();
  const LogCapture log;
  EXPECT_EQ(Rate(), 0);
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_StartEvaluate", "szEvalValue=4"));
  const auto all = log.Messages();
  const auto value = std::find(all.begin(), all.end(), "szEvalValue=4");
  EXPECT_EQ(*(value + 1), "TransProc nPort=0 \n") << "before the screen is closed";
}

TEST_F(Evaluation, UnknownRatingLogsWhatTheCallersOutputHolds) {
  ExpectRating();
  usb_.Answer("B9F");
  ExpectClose();
  const LogCapture log;
  EXPECT_EQ(Rate(), 0);
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_StartEvaluate", "szEvalValue=x"));
}

TEST_F(Evaluation, SilenceIsMinus11AfterTheTimeAnd3SecondsAndTheScreenIsClosed) {
  usb_.ExpectCommand("\x1B[4;2T").ExpectCommand(wire::kStartRating);
  ExpectClose();
  const LogCapture log;
  EXPECT_EQ(Rate(2), -11);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 6) << "more than 2 + 3 whole seconds";
  EXPECT_TRUE(ValueIsUntouched());
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_StartEvaluate"));
}

TEST_F(Evaluation, RatingTakesAnyTimeout) {
  for (const auto& [timeout, command] :
       {std::pair{0, "\x1B[4;0T"}, {1000, "\x1B[4;1000T"}, {INT_MAX, "\x1B[4;2147483647T"}}) {
    usb_.ExpectCommand(command).ExpectCommand(wire::kStartRating).Answer(wire::kKey1);
    ExpectClose();
    EXPECT_EQ(Rate(timeout), 0);
  }
}

TEST_F(Evaluation, TimesThatPassAnIntAreCut) {
  usb_.ExpectCommand("\x1B[4;2147483647T").ExpectCommand(wire::kStartRating).Answer(wire::kKey1, 100);
  ExpectClose();
  EXPECT_EQ(Rate(INT_MAX), 0) << "20 seconds are waited for it";
  usb_.ExpectCommand("\x1B[4;-2147483648T").ExpectCommand(wire::kStartRating);
  ExpectClose();
  EXPECT_EQ(Rate(INT_MIN), -11);
}

TEST_F(Evaluation, CancelledRatingIsMinus23AndTheScreenIsClosed) {
  ExpectRating();
  ExpectClose();
  CancelReading(2);
  EXPECT_EQ(Rate(), -23);
  EXPECT_TRUE(ValueIsUntouched());
}

TEST_F(Evaluation, RatingCommandThatCannotBeSentIsStillFollowedByClosing) {
  ExpectRating();
  ExpectClose();
  FailSending(1);
  EXPECT_EQ(Rate(), -10);
}

TEST_F(Evaluation, TimeThatCannotBeSentIsMinus14AndNothingMoreIsSent) {
  usb_.ExpectCommand(wire::kEvaluationTime30);
  FailSending(0);
  EXPECT_EQ(Rate(), -14);
  EXPECT_TRUE(ValueIsUntouched());
}

TEST_F(Evaluation, TimeIsMinus3WhenTheTerminalIsGoneByThen) {
  Fail(Failure::kNotOpened, 0);
  EXPECT_EQ(Rate(), -3);
}

TEST_F(Evaluation, ClosingThatFailsDoesNotMatter) {
  ExpectRating();
  usb_.Answer(wire::kKey3);
  ExpectClose();
  FailSending(2);
  EXPECT_EQ(Rate(), 0);
  EXPECT_EQ(Value(), '3');
}

TEST_F(Evaluation, OutputsMayBeNull) {
  ExpectRating();
  usb_.Answer(wire::kKey1);
  ExpectClose();
  EXPECT_EQ(MP_StartEvaluate(nullptr, nullptr, 9600, 30, nullptr), 0);
  ExpectCounterRating();
  usb_.Answer(wire::kKey1);
  ExpectClose();
  EXPECT_EQ(GWQ_StartEvaluator(0, 9600, "Li", "0123", 5, "li.jpg", 30, nullptr), 0);
}

// ------------------------------------------------------------------ MP_CancleEvaluate

TEST_F(Evaluation, CancelIsAlways0AndLogsTheDrainsResult) {
  const LogCapture log;
  EXPECT_EQ(MP_CancleEvaluate(nullptr, nullptr, 9600), 0);
  usb_.Answer("B0F");
  EXPECT_EQ(MP_CancleEvaluate(nullptr, nullptr, 9600), 0);
  usb_.Unplug();
  EXPECT_EQ(MP_CancleEvaluate(nullptr, nullptr, 9600), 0);
  EXPECT_THAT(OwnMessages(log), ElementsAre("MP_CancleEvaluate", "nRet=-11", "MP_CancleEvaluate", "nRet=0",
                                            "MP_CancleEvaluate", "nRet=-3"));
  EXPECT_THAT(usb_.Sent(), IsEmpty());
}

// ------------------------------------------------------------------ GWQ_StartEvaluator

TEST_F(Evaluation, CounterRatingWritesNothingToTheLog) {
  ExpectCounterRating();
  usb_.Answer(wire::kKey1);
  ExpectClose();
  const LogCapture log;
  EXPECT_EQ(CounterRate(), 0);
  EXPECT_THAT(OwnMessages(log), IsEmpty());
}

TEST_F(Evaluation, CounterRatingTakes1To999Seconds) {
  for (const int timeout : {0, 1000, -1, INT_MIN, INT_MAX}) EXPECT_EQ(CounterRate({}, timeout), -1);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
  for (const auto& [timeout, command] : {std::pair{1, "\x1B[4;1T"}, {999, "\x1B[4;999T"}}) {
    usb_.ExpectCommand(wire::kCounterCard).ExpectCommand(command).ExpectCommand(wire::kStartCounterRating);
    usb_.Answer(wire::kKey1);
    ExpectClose();
    EXPECT_EQ(CounterRate({}, timeout), 0);
  }
}

TEST_F(Evaluation, CounterCardTakesThePhotoNameAsItIs) {
  usb_.ExpectCommand("\x1B[4H\x02|0123|0|王.jpg\x03").ExpectCommand(wire::kEvaluationTime30);
  usb_.ExpectCommand(wire::kStartCounterRating).Answer(wire::kKey1);
  ExpectClose();
  EXPECT_EQ(CounterRate({.name = nullptr, .stars = 0, .photo = "王.jpg"}), 0);
  usb_.ExpectCommand("\x1B[4H\x02Li|0123|5|0123.jpg\x03").ExpectCommand(wire::kEvaluationTime30);
  usb_.ExpectCommand(wire::kStartCounterRating).Answer(wire::kKey1);
  ExpectClose();
  EXPECT_EQ(CounterRate({.photo = nullptr}), 0);
}

TEST_F(Evaluation, CounterCardThatCannotBeSentDoesNotMatter) {
  ExpectCounterRating();
  usb_.Answer(wire::kKey1);
  ExpectClose();
  FailSending(0);
  EXPECT_EQ(CounterRate(), 0);
  EXPECT_EQ(rating_, 1U);
}

TEST_F(Evaluation, CounterRatingsTimeThatCannotBeSentIsReturnedAsItIs) {
  usb_.ExpectCommand(wire::kCounterCard).ExpectCommand(wire::kEvaluationTime30);
  FailSending(1);
  EXPECT_EQ(CounterRate(), -10);
  EXPECT_EQ(rating_, kUntouched);
}

TEST_F(Evaluation, SilentCounterRatingIsMinus11AndTheScreenIsClosed) {
  usb_.ExpectCommand(wire::kCounterCard).ExpectCommand("\x1B[4;1T").ExpectCommand(wire::kStartCounterRating);
  ExpectClose();
  EXPECT_EQ(CounterRate({}, 1), -11);
  EXPECT_EQ(Elapsed(), kDrainSeconds + 5);
  EXPECT_EQ(rating_, kUntouched);
}

TEST_F(Evaluation, CancelledCounterRatingIsMinus23AndTheScreenIsClosed) {
  ExpectCounterRating();
  ExpectClose();
  CancelReading(3);
  EXPECT_EQ(CounterRate(), -23);
}

TEST_F(Evaluation, CounterRatingOnASerialPortIsNotDrained) {
  FakeTty tty("/dev/ttyS41");
  tty.Respond([](const Bytes& written) -> std::string {
    return written == BytesOf(wire::kStartCounterRating) ? "B0F" : "";
  });
  EXPECT_EQ(CounterRate({}, 30, 42), 0);
  EXPECT_EQ(Elapsed(), 0) << "a drain would take a second";
  EXPECT_EQ(rating_, 4U);
  const std::string all = std::string(wire::kCounterCard)
                              .append(wire::kEvaluationTime30)
                              .append(wire::kStartCounterRating)
                              .append(wire::kCloseEvaluation);
  EXPECT_EQ(Readable(tty.Received()), Readable(BytesOf(all)));
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

TEST_F(Evaluation, CounterRatingOnAnAbsentSerialPortIsMinus3) {
  EXPECT_EQ(CounterRate({}, 30, 143), -3);
  EXPECT_THAT(usb_.Calls(), IsEmpty());
}

}  // namespace
}  // namespace gwq::test
