// SPDX-License-Identifier: MIT
// The customers: the agreeable one, and those that a file scripts.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <regex>
#include <stdexcept>

#include "customer/agreeable.h"
#include "customer/scripted.h"
#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {

using namespace device;
using namespace customer;
namespace {

// A directory of this test's own, gone with it.
class TempDir {
 public:
  TempDir() {
    std::string name = (std::filesystem::temp_directory_path() / "customer-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
    path_ = name;
  }
  ~TempDir() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  [[nodiscard]] std::string path() const { return path_.string(); }
  [[nodiscard]] std::string Write(std::string_view text) const {
    const auto file = path_ / "customer.json";
    std::ofstream(file) << text;
    return file.string();
  }

 private:
  std::filesystem::path path_;
};

std::unique_ptr<Customer> Load(std::string_view text) {
  const TempDir dir;
  return LoadCustomer(dir.Write(text));
}

// What LoadCustomer has to say about a file with this text.
// The line of each kind of mistake has a test of its own.
std::string WithoutLine(const std::string& what) {
  static const std::regex line("^line [0-9]+: ");
  return std::regex_replace(what, line, "");
}

std::string ErrorOf(std::string_view text) {
  const TempDir dir;
  const std::string path = dir.Write(text);
  try {
    LoadCustomer(path);
  } catch (const std::runtime_error& error) {
    const std::string prefix = "customer file " + path + ": ";
    const std::string what = error.what();
    EXPECT_EQ(what.substr(0, prefix.size()), prefix);
    return WithoutLine(what.substr(std::min(prefix.size(), what.size())));
  }
  return "(no error)";
}

TEST(Agreeable, KeysThePinAfterAMoment) {
  AgreeableCustomer customer;
  const PinAction action = customer.KeyPin({4, 12, 30s});
  EXPECT_EQ(action.kind, PinAction::Kind::kEnter);
  EXPECT_EQ(action.digits, "123456");
  EXPECT_EQ(action.after, 200ms);
}

TEST(Agreeable, KeysNoMoreThanThereIsRoomFor) {
  AgreeableCustomer customer;
  EXPECT_EQ(customer.KeyPin({4, 4, 30s}).digits, "1234");
  EXPECT_EQ(customer.KeyPin({0, 0, 30s}).digits, "");
  NumberRequest request;
  EXPECT_EQ(customer.KeyNumber(request).digits, "123456");
  request.max_digits = 3;
  EXPECT_EQ(customer.KeyNumber(request).digits, "123");
}

TEST(Agreeable, SatisfiesTheTerminalAtEveryPinLength) {
  for (int length = 1; length <= 14; ++length) {
    AgreeableCustomer customer;
    Device device(Line::kUsb, customer);
    device.Receive(ToBytes("\033[1;" + std::to_string(length) + "L"), 0ms);
    device.Receive(ToBytes("\x82"), 0ms);
    device.Advance(200ms);
    const auto room = static_cast<std::size_t>(length);
    EXPECT_EQ(device.TakeAnswer(), ToBytes(std::string("123456").substr(0, room) + "\r"));
  }
}

TEST(Scripted, GoesThroughItsStepsAndRepeatsTheLast) {
  const auto customer = Load(R"(
    // Comments are allowed.
    {"pin_entries": [
      {"pin": "1234", "after_ms": 300},
      {"cancel": true, "after_ms": 0},
      {"walk_away": true},  /* and so are these */
      {"pin": "55555"}]})");
  const PinRequest request{4, 12, 30s};
  const PinAction first = customer->KeyPin(request);
  EXPECT_EQ(first.kind, PinAction::Kind::kEnter);
  EXPECT_EQ(first.digits, "1234");
  EXPECT_EQ(first.after, 300ms);
  const PinAction second = customer->KeyPin(request);
  EXPECT_EQ(second.kind, PinAction::Kind::kCancel);
  EXPECT_EQ(second.after, 0ms);
  EXPECT_EQ(customer->KeyPin(request).kind, PinAction::Kind::kWalkAway);
  for (int i = 0; i < 3; ++i) {
    const PinAction last = customer->KeyPin(request);
    EXPECT_EQ(last.digits, "55555");
    EXPECT_EQ(last.after, 200ms);
  }
}

TEST(Scripted, KeysNumbersFromAListOfTheirOwn) {
  const auto customer = Load(R"({"pin_entries": [{"cancel": true}],
                                 "number_entries": [{"number": "12345678901234567890"}, {"walk_away": true}]})");
  EXPECT_EQ(customer->KeyNumber({}).digits, "12345678901234567890");
  EXPECT_EQ(customer->KeyPin({}).kind, PinAction::Kind::kCancel);
  EXPECT_EQ(customer->KeyNumber({}).kind, PinAction::Kind::kWalkAway);
  EXPECT_EQ(ErrorOf(R"({"number_entries": [{"pin": "1234"}]})"),
            "step 1: unknown member \"pin\" (known: number, cancel, walk_away, after_ms)");
  EXPECT_EQ(ErrorOf(R"({"number_entries": [{"number": "123456789012345678901"}]})"),
            "step 1: \"number\" must be 1 to 20 digits");
}

TEST(Scripted, IsAgreeableWhereItHasNoList) {
  EXPECT_EQ(Load(R"([{"cancel": true}])")->KeyNumber({}).digits, "123456");
  EXPECT_EQ(Load(R"({"number_entries": [{"cancel": true}]})")->KeyPin({}).digits, "123456");
}

TEST(Scripted, MayBeAListOnly) {
  EXPECT_EQ(Load(R"([{"pin": "4321"}])")->KeyPin({}).digits, "4321");
}

TEST(Scripted, FileThatIsMissingIsNamed) {
  const TempDir dir;
  const std::string path = dir.path() + "/none.json";
  try {
    LoadCustomer(path);
    FAIL() << "a missing file was loaded";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(std::string(error.what()),
              "customer file " + path + ": cannot be read: No such file or directory");
  }
}

TEST(Scripted, DirectoryIsNoFile) {
  const TempDir dir;
  try {
    LoadCustomer(dir.path());
    FAIL() << "a directory was loaded";
  } catch (const std::runtime_error& error) {
    EXPECT_EQ(std::string(error.what()), "customer file " + dir.path() + ": is a directory");
  }
}

TEST(Scripted, TextThatIsNoJsonIsPlaced) {
  EXPECT_NE(ErrorOf("[{\"pin\": \"1234\",\n  oops}]").find("line 2"), std::string::npos);
  EXPECT_NE(ErrorOf("").find("parse error"), std::string::npos);
}

TEST(Scripted, ShapeMustBeRight) {
  EXPECT_EQ(ErrorOf("7"), "must hold an object or a list of steps");
  EXPECT_EQ(ErrorOf("{}"), "has none of \"pin_entries\", \"number_entries\", \"screens\"");
  EXPECT_EQ(ErrorOf(R"({"pin_entries": [{"pin": "1"}], "number_entries": 1})"),
            "\"number_entries\" must be a list");
  EXPECT_EQ(ErrorOf(R"({"number_entries": []})"), "there must be at least one step");
  EXPECT_EQ(ErrorOf(R"({"pin_entries": {}})"), "\"pin_entries\" must be a list");
  EXPECT_EQ(ErrorOf(R"({"pin_entries": [], "pins": []})"),
            "unknown member \"pins\" (known: pin_entries, number_entries, screens)");
  EXPECT_EQ(ErrorOf("[]"), "there must be at least one step");
}

TEST(Scripted, BadStepsAreNumbered) {
  EXPECT_EQ(ErrorOf(R"([{"pin": "1234"}, 5])"), "step 2: is not an object");
  EXPECT_EQ(ErrorOf(R"([{"pni": "1234"}])"),
            "step 1: unknown member \"pni\" (known: pin, cancel, walk_away, after_ms)");
  const std::string one = "step 1: needs exactly one of \"pin\", \"cancel\", \"walk_away\"";
  EXPECT_EQ(ErrorOf("[{}]"), one);
  EXPECT_EQ(ErrorOf(R"([{"pin": "1234", "cancel": true}])"), one);
  EXPECT_EQ(ErrorOf(R"([{"cancel": false}])"), "step 1: \"cancel\" can only be true");
  EXPECT_EQ(ErrorOf(R"([{"walk_away": 1}])"), "step 1: \"walk_away\" can only be true");
  EXPECT_EQ(ErrorOf(R"([{"walk_away": true, "after_ms": 5}])"),
            "step 1: \"after_ms\" has no meaning beside \"walk_away\"");
}

TEST(Scripted, ValuesMustBeInRange) {
  EXPECT_EQ(ErrorOf(R"([{"pin": 1234}])"), "step 1: \"pin\" must be a text of digits");
  for (const char* pin : {"", "12a4", "123456789012345"}) {
    EXPECT_EQ(ErrorOf("[{\"pin\": \"" + std::string(pin) + "\"}]"), "step 1: \"pin\" must be 1 to 14 digits");
  }
  for (const char* delay : {"-1", "1.5", "\"5\"", "3600001", "18446744073709551615", "null"}) {
    EXPECT_EQ(ErrorOf("[{\"cancel\": true, \"after_ms\": " + std::string(delay) + "}]"),
              "step 1: \"after_ms\" must be a whole number from 0 to 3600000");
  }
}

}  // namespace
}  // namespace gwq::terminal::test
