// SPDX-License-Identifier: MIT
// Ratings, messages, keyed numbers and checkouts, with every answer that the customer can give.
#include <gtest/gtest.h>

#include <array>

#include "e2e/library/screens_rig.h"

namespace gwq::test {
namespace {

constexpr char kTeller[] = "王芳";

struct Expected {
  int status;
  unsigned output;
};

class TextScreens : public ScreenSession {
 protected:
  Expected Rate(int seconds) {
    unsigned rating = kUntouched;
    const int status =
        lib.Get<GWQ_StartEvaluator>()(port, kBaud, kTeller, "0123", 5, nullptr, seconds, &rating);
    return {status, rating};
  }

  Expected Inform(int seconds, const std::string& message) {
    unsigned key = kUntouched;
    const int status = lib.Get<GWQ_StartInfo>()(port, kBaud, seconds, message.c_str(), &key);
    return {status, key};
  }

  // The number and what stands behind it in a buffer of "#".
  std::string KeyNumber(int seconds, int mode, int status) {
    std::string number(2046, '#');
    const auto start = lib.Get<GWQ_StartKeyboard>();
    EXPECT_EQ(status, start(port, kBaud, seconds, mode, number.data()));
    return number.substr(0, number.find("##"));
  }

  static void Expect(const Expected& expected, const Expected& got, const char* what) {
    EXPECT_EQ(expected.status, got.status) << what;
    EXPECT_EQ(expected.output, got.output) << what;
  }

  void ExpectEveryRating() {
    for (const unsigned rating : {1U, 2U, 3U, 4U}) Expect({0, rating}, Rate(kSeconds), "key");
    Expect({0, 4}, Rate(1), "time-out of the customer");
    Expect({0, kUntouched}, Rate(kSeconds), "no key");
  }

  void ExpectEveryMessageKey() {
    for (const unsigned key : {0U, 1U}) Expect({0, key}, Inform(kSeconds, "请确认 Please confirm"), "key");
    Expect({0, 3}, Inform(1, "short time"), "time-out of the customer");
    Expect({0, 4}, Inform(kSeconds, std::string(30720, 'x')), "key 2");
    Expect({0, 4}, Inform(kSeconds, std::string(30721, 'x')), "no key");
    Expect({0, 4}, Inform(kSeconds, "m"), "refusal");
  }

  void ExpectEveryNumber(int walked_away) {
    EXPECT_EQ("42", KeyNumber(kSeconds, 0, 0));
    EXPECT_EQ("01234567890123456789012345678901", KeyNumber(kSeconds, 1, 0));
    EXPECT_EQ("", KeyNumber(kSeconds, 0, 0)) << "confirmed without a digit";
    EXPECT_EQ("", KeyNumber(kSeconds, 0, 0)) << "cancelled";
    EXPECT_EQ("", KeyNumber(kSeconds, 1, 0)) << "an answer of one byte";
    EXPECT_EQ("", KeyNumber(1, 1, walked_away));
  }

  void ExpectArgumentsAreLookedAt() {
    for (const int seconds : {0, 1000, -1}) {
      Expect({GWQ_BAD_ARGUMENT, kUntouched}, Rate(seconds), "rating");
      Expect({GWQ_BAD_ARGUMENT, kUntouched}, Inform(seconds, "m"), "message");
      EXPECT_EQ("", KeyNumber(seconds, 0, GWQ_BAD_ARGUMENT));
    }
    Expect({GWQ_BAD_ARGUMENT, kUntouched}, Inform(1, ""), "empty message");
    EXPECT_EQ("", KeyNumber(1, 2, GWQ_BAD_ARGUMENT));
  }

  int port = 0;
};

using TextScreensOnUsb = TextScreens;

class TextScreensOnSerial : public TextScreens {
 protected:
  TextScreensOnSerial() { port = kSerialPort; }
};

TEST_F(TextScreensOnUsb, GiveEveryAnswer) {
  ExpectArgumentsAreLookedAt();
  ExpectEveryRating();
  ExpectEveryMessageKey();
  ExpectEveryNumber(GWQ_READ_FAILED);
  EXPECT_EQ(0, OpenLinks());
}

TEST_F(TextScreensOnSerial, GiveEveryAnswer) {
  ExpectArgumentsAreLookedAt();
  ExpectEveryRating();
  ExpectEveryMessageKey();
  ExpectEveryNumber(GWQ_READ_FAILED);
  EXPECT_EQ(0, OpenLinks());
}

class Rating : public ScreenSession {
 protected:
  char Rate(int seconds) {
    std::array<char, 2> value{'#', '\0'};
    EXPECT_EQ(0, lib.Get<MP_StartEvaluate>()(nullptr, nullptr, kBaud, seconds, value.data()));
    return value[0];
  }

  int ShowCard(const char* name, int stars, const char* photo) {
    return lib.Get<MP_StartElectronicCard>()(nullptr, nullptr, kBaud, kSeconds, name, "0123", stars, photo);
  }

  int SetCard(const char* name, int stars, const char* photo) {
    return lib.Get<MP_SetEvaluateInfo>()(nullptr, nullptr, kBaud, name, "0123", stars, photo);
  }
};

TEST_F(Rating, GivesEveryAnswerBehindTheTellersCard) {
  EXPECT_EQ(0, ShowCard(kTeller, 6, "照片.jpg"));
  EXPECT_EQ(GWQ_BAD_ARGUMENT, ShowCard(nullptr, 6, nullptr));
  EXPECT_EQ(GWQ_BAD_ARGUMENT, ShowCard(kTeller, 7, nullptr));
  EXPECT_EQ(0, SetCard(kTeller, 0, nullptr));
  EXPECT_EQ(GWQ_BAD_ARGUMENT, SetCard(kTeller, -1, nullptr));
  for (const char key : {'1', '2', '3', '4'}) EXPECT_EQ(key, Rate(kSeconds));
  EXPECT_EQ('3', Rate(kSeconds)) << "the best";
  EXPECT_EQ('4', Rate(kSeconds)) << "no rating";
  EXPECT_EQ('4', Rate(1)) << "time-out of the customer";
  EXPECT_EQ('#', Rate(kSeconds)) << "no key";
  EXPECT_EQ('#', Rate(kSeconds)) << "an answer of one byte";
  EXPECT_EQ(0, lib.Get<MP_CancleEvaluate>()(nullptr, nullptr, kBaud));
  EXPECT_EQ(0, OpenLinks());
}

class Checkout : public ScreenSession {
 protected:
  std::string CheckOut(int seconds, int status, const std::string& first = "开户 Account opening",
                       const std::string& second = "工本费 5.00") {
    std::array<char, 2048> result{"untouched"};
    EXPECT_EQ(status, lib.Get<MP_CheckOut_All>()(nullptr, nullptr, kBaud, seconds, first.c_str(),
                                                 second.c_str(), result.data()));
    return result.data();
  }
};

TEST_F(Checkout, GivesEveryAnswer) {
  EXPECT_EQ("untouched", CheckOut(1000, GWQ_BAD_ARGUMENT));
  EXPECT_EQ("untouched", CheckOut(kSeconds, GWQ_BAD_ARGUMENT, ""));
  EXPECT_EQ("ok", CheckOut(kSeconds, 0));
  EXPECT_EQ("untouched", CheckOut(kSeconds, GWQ_CANCELLED));
  EXPECT_EQ("untouched", CheckOut(1, GWQ_NO_ANSWER)) << "time-out of the customer";
  EXPECT_EQ("untouched", CheckOut(kSeconds, GWQ_REFUSED));
  EXPECT_EQ("hello", CheckOut(kSeconds, 0, std::string(100000, 'x'), ""));
  EXPECT_EQ("", CheckOut(kSeconds, 0)) << "an answer without code and text";
  EXPECT_EQ(0, OpenLinks());
}

}  // namespace
}  // namespace gwq::test
