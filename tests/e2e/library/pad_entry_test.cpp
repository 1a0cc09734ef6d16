// SPDX-License-Identifier: MIT
// PINs and numbers that the customer keys on the PIN pad.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "e2e/library/pad_rig.h"

namespace gwq::test {
namespace {

using std::chrono::milliseconds;

constexpr char kAccount[] = "6225880123456789";
constexpr char kLongAccount[] = "6225880123456789012";
constexpr char kTwelveDigits[] = "622588012345";

// The customer keys the first of 12345678901234.
class PadBlocks : public Pad {
 protected:
  void ExpectPin(const Entry& entry, const Request& request, const std::string& account) {
    ASSERT_EQ(0, entry.status);
    EXPECT_EQ(std::string("12345678901234").substr(0, static_cast<std::size_t>(request.length)),
              PinIn(entry.block, request.algorithm, account).value_or("no PIN"));
    std::string factor;
    EXPECT_EQ(0, ReadFactor(factor));
    EXPECT_EQ(factor, entry.factor);
  }

  void ExpectPlain(const Request& request, const std::string& bound_to) {
    Prepare(request.algorithm, request.length);
    ExpectPin(GetPinBlock(request), request, bound_to);
  }

  void ExpectShowing(Request request, const std::string& bound_to) {
    request.shown = "Please key your PIN";
    Prepare(request.algorithm, request.length);
    ExpectPin(GetPinBlockShowing(request), request, bound_to);
  }
};

TEST_F(PadBlocks, OfFourDigitsAreBoundToTheAccount) {
  ExpectPlain({Algorithm::kTripleDes, 4, 1, kAccount}, kAccount);
}

TEST_F(PadBlocks, OfTwelveDigitsAreBoundToALongAccountInSm4) {
  ExpectShowing({Algorithm::kSm4, 12, 1, kLongAccount}, kLongAccount);
}

TEST_F(PadBlocks, OfSixDigitsOfType6AreBoundToNone) {
  ExpectPlain({Algorithm::kSm4, 6, 6, kAccount}, "");
}

TEST_F(PadBlocks, OfFourteenDigitsOfType5AreBoundToNoneWhateverTheAccount) {
  ExpectShowing({Algorithm::kTripleDes, 14, 5, "no digits"}, "");
}

// The check digit is thought to be behind the twelve.
TEST_F(PadBlocks, AreBoundToAllOfTwelveAccountDigits) {
  ExpectShowing({Algorithm::kTripleDes, 6, 1, kTwelveDigits}, std::string(kTwelveDigits).append("0"));
}

TEST_F(PadBlocks, AreBoundToNothingOfAShortAccount) {
  ExpectShowing({Algorithm::kTripleDes, 6, 1, "62258"}, "");
}

class PadChecks : public Pad {
 protected:
  void SetUp() override { Prepare(Algorithm::kTripleDes, 6); }

  static constexpr Request kGood{Algorithm::kTripleDes, 6, 1, kAccount};

  static Request With(int Request::*member, int value) {
    Request request = kGood;
    request.*member = value;
    return request;
  }
  static Request With(Algorithm algorithm) { return {algorithm, 6, 1, kAccount}; }
  static Request With(const char* account) { return {Algorithm::kTripleDes, 6, 1, account}; }
};

TEST_F(PadChecks, TypeAndLengthMustFitTogether) {
  for (const Request& request :
       {With(&Request::type, 2), With(&Request::length, 15), Request{Algorithm::kTripleDes, 4, 6},
        Request{Algorithm::kTripleDes, 3, 5}}) {
    EXPECT_EQ(GWQ_BAD_ARGUMENT, GetPinBlock(request).status);
    EXPECT_EQ(GWQ_BAD_ARGUMENT, GetPinBlockShowing(request).status);
  }
}

TEST_F(PadChecks, ThePadMustBeSetToTheType) {
  EXPECT_EQ(GWQ_BAD_ARGUMENT, GetPinBlock(With(Algorithm::kSm4)).status);
  EXPECT_EQ(GWQ_BAD_ARGUMENT, GetPinBlockShowing(With(Algorithm::kSm4)).status);
}

TEST_F(PadChecks, ThePadMustBeSetToTheLength) {
  EXPECT_EQ(GWQ_BAD_ARGUMENT, GetPinBlock(With(&Request::length, 8)).status);
  EXPECT_EQ(GWQ_BAD_ARGUMENT, GetPinBlockShowing(With(&Request::length, 8)).status);
}

TEST_F(PadChecks, TheSoundModeMustNotExceedTwo) {
  EXPECT_EQ(GWQ_BAD_ARGUMENT, GetPinBlock(With(&Request::sound_mode, 3)).status);
  EXPECT_EQ(GWQ_BAD_ARGUMENT, GetPinBlockShowing(With(&Request::sound_mode, 3)).status);
}

TEST_F(PadChecks, ASoundThatThePadRefusesIsRefused) {
  const Entry entry = GetPinBlockShowing(With(&Request::sound_mode, -2));
  EXPECT_EQ(GWQ_REFUSED, entry.status);
  EXPECT_EQ("", entry.factor);
}

TEST_F(PadChecks, TheAccountMustBeThereAndAllDigits) {
  EXPECT_EQ(GWQ_BAD_ACCOUNT, GetPinBlock(With(nullptr)).status);
  EXPECT_EQ(GWQ_BAD_ACCOUNT, GetPinBlockShowing(With("62258801234A6789")).status);
}

using PadWithoutKey = Pad;

TEST_F(PadWithoutKey, RefusesEntriesAndData) {
  std::string file;
  std::string answer;
  ASSERT_EQ(0, Frame("\x30\x10").status);
  EXPECT_EQ(GWQ_PIN_REFUSAL_3, GetPin().status);
  EXPECT_EQ(GWQ_PIN_REFUSAL_3, GetPinShowing("Please key your PIN").status);
  EXPECT_EQ(GWQ_NO_ENCRYPTION_KEY, StringBlock(kTripleDes, "text", file, answer));
  EXPECT_EQ("", file + answer);
}

using PadNumbers = Pad;

TEST_F(PadNumbers, AreAsManyDigitsAsAreAskedFor) {
  std::string number;
  ASSERT_EQ(0, AskNumber(4, number));
  EXPECT_EQ("3101", number);
  ASSERT_EQ(0, AskNumber(0, number));
  EXPECT_EQ("310115199001012345", number);
}

TEST_F(PadNumbers, OutOfRangeAreNotAskedFor) {
  std::string number;
  EXPECT_EQ(GWQ_BAD_ARGUMENT, AskNumber(21, number));
  EXPECT_EQ(GWQ_BAD_ARGUMENT, AskNumber(6, number, 1000));
}

// The customer cancels first and walks away from then on, as a PIN is asked for and as a number is.
using PadGivenUp = Pad;

TEST_F(PadGivenUp, TellsCancelAndTimeOutApartForAPinAndLeavesANumberEmpty) {
  Prepare(Algorithm::kTripleDes, 6);
  std::string number = "before";
  EXPECT_EQ(GWQ_PIN_REFUSAL_1, GetPin().status);
  const Entry timed_out = GetPinShowing("Please key your PIN", 1);
  EXPECT_EQ(GWQ_NO_ANSWER, timed_out.status);
  EXPECT_EQ("", timed_out.block);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(0, AskNumber(6, number, 1));
    EXPECT_EQ("", number);
  }
}

// The customer walks away, and the application cancels.
class PadCancelled : public Pad {
 protected:
  int CancelledEntry(milliseconds after) {
    int status = 0;
    std::thread reader([&] { status = GetPin(60).status; });
    std::this_thread::sleep_for(after);
    EXPECT_EQ(0, lib.cancel_read());
    reader.join();
    return status;
  }
};

// The drain before the entry may take a second; the entry then waits for the customer.
TEST_F(PadCancelled, EndsTheEntryOnUsbAndTheNextCallWorks) {
  Prepare(Algorithm::kTripleDes, 6);
  EXPECT_EQ(GWQ_CANCELLED, CancelledEntry(milliseconds(1500)));
  int type = -1;
  EXPECT_EQ(0, GetType(type));
  EXPECT_EQ(kTripleDes, type);
}

// A cancelled serial read is a failed read to the engine, on purpose.
TEST_F(PadCancelled, EndsTheEntryOnSerialAsAFailedRead) {
  port = kSerialPort;
  Prepare(Algorithm::kTripleDes, 6);
  EXPECT_EQ(GWQ_READ_FAILED, CancelledEntry(milliseconds(300)));
  int type = -1;
  EXPECT_EQ(0, GetType(type));
  EXPECT_EQ(kTripleDes, type);
}

// Run with a trace, in which the session looks for the texts.
using PadShownText = Pad;

TEST_F(PadShownText, ReachesThePadWithTheEntryAlsoWhenItNeedsSeveralReports) {
  Prepare(Algorithm::kTripleDes, 6);
  for (const std::string& text : {std::string("Please key your PIN"), std::string(3000, 'x')}) {
    const Entry entry = GetPinShowing(text.c_str());
    ASSERT_EQ(0, entry.status);
    EXPECT_EQ("123456", PinIn(entry.block, Algorithm::kTripleDes));
  }
}

}  // namespace
}  // namespace gwq::test
