// SPDX-License-Identifier: MIT
// Names, faults, and strokes.
#include <gtest/gtest.h>

#include "device/files/file_faults.h"
#include "device/files/file_names.h"
#include "device/screens/pen.h"
#include "faults/fault_script.h"
#include "support/temp_dir.h"
#include "unit/terminal/device/files/file_rig.h"

namespace gwq::terminal::test {

using namespace device;
using namespace faults;
namespace {

TEST(FileNames, AreGbkUnlessTheyAreUtf8) {
  EXPECT_EQ(NameFromHost("plain name.txt"), "plain name.txt");
  EXPECT_EQ(NameFromHost("\xD5\xC5\xC8\xFD"), "张三");
  EXPECT_EQ(NameFromHost("张三"), "张三");
  EXPECT_EQ(NameFromHost("\x94\x39\xDA\x33"), "\xF0\x9F\x92\xA9");  // four bytes in both
  EXPECT_EQ(NameFromHost("\xC4\xA3"), "\xC4\xA3");                  // both; UTF-8 it is
}

TEST(FileNames, WithoutSenseAreNoNames) {
  for (const std::string_view name :
       {std::string_view(), std::string_view("\xFF"), std::string_view("\xD5"), std::string_view("a\0b", 3),
        std::string_view("a\nb"), std::string_view("\x7F"), std::string_view("\xED\xA0\x80")})
    EXPECT_EQ(NameFromHost(name), std::nullopt) << name;
}

TEST(FileNames, GoBackToTheHostInGbk) {
  EXPECT_EQ(NameForHost("张三"), "\xD5\xC5\xC8\xFD");
  EXPECT_EQ(NameForHost("\xFF"), std::nullopt);
}

TEST(FileNames, AreShownInOneShortLine) {
  EXPECT_EQ(ShownName("/tmp/x"), "/tmp/x");
  EXPECT_EQ(ShownName("\xD5\xC5\xC8\xFD"), "张三");
  EXPECT_EQ(ShownName("a\nb"), "a.b");
  EXPECT_EQ(ShownName("\xFF\xFF"), "(2 bytes that are no text)");
  EXPECT_EQ(ShownName(std::string(61, 'x')), std::string(60, 'x') + "...");
  EXPECT_EQ(ShownName(std::string(59, 'x') + "张"), std::string(59, 'x') + "...");
}

TEST(FileSizes, AreShownInGroupsOfThree) {
  EXPECT_EQ(ShownSize(0), "0 bytes");
  EXPECT_EQ(ShownSize(1), "1 byte");
  EXPECT_EQ(ShownSize(999), "999 bytes");
  EXPECT_EQ(ShownSize(1000), "1,000 bytes");
  EXPECT_EQ(ShownSize(12345678), "12,345,678 bytes");
}

TEST(FaultScript, OfNothingHasNoFaults) {
  const FaultScript script = ParseFaults("{}");
  FaultCounter counter(script.faults);
  EXPECT_EQ(counter.Next("data"), Verdict::kNone);
  EXPECT_EQ(script.storage_limit, std::nullopt);
}

TEST(FaultScript, HoldsEveryMember) {
  const FaultScript script = ParseFaults(R"({
    // a comment
    "refuse": ["start"], "fail": ["data:2"], "ignore": ["PULLFILE", "end:1"],
    "storage_limit": 1000000, "accept_cut_packets": true,
    "pull": {"bad_check": ["data:1", "end"], "announce_length": 256001, "packet_type": 4,
             "stop_after_reports": 3, "empty_packets_first": [0, 1]}})");
  EXPECT_EQ(script.faults.refuse, std::vector<std::string>{"start"});
  EXPECT_EQ(script.faults.fail, std::vector<std::string>{"data:2"});
  EXPECT_EQ(script.faults.ignore, (std::vector<std::string>{"PULLFILE", "end:1"}));
  EXPECT_EQ(script.storage_limit, 1000000U);
  EXPECT_TRUE(script.faults.accept_cut_packets);
  EXPECT_EQ(script.faults.pull.bad_check, (std::vector<std::string>{"data:1", "end"}));
  EXPECT_EQ(script.faults.pull.announce_length, 256001U);
  EXPECT_EQ(script.faults.pull.packet_type, 4);
  EXPECT_EQ(script.faults.pull.stop_after_reports, 3U);
  EXPECT_EQ(script.faults.pull.empty_packets_first, (std::vector<std::uint8_t>{0, 1}));
}

TEST(FaultScript, WithAMistakeIsRefused) {
  for (const char* json :
       {"", "[]", "{", R"({"refused": []})", R"({"refuse": "start"})", R"({"refuse": ["begin"]})",
        R"({"refuse": ["start:0"]})", R"({"refuse": ["start:"]})", R"({"refuse": [1]})",
        R"({"storage_limit": -1})", R"({"accept_cut_packets": 1})", R"({"pull": []})",
        R"({"pull": {"packet_type": 256}})", R"({"pull": {"announce_length": 16777216}})",
        R"({"pull": {"bad_check": ["start"]}})", R"({"pull": {"empty_packets_first": [256]}})",
        R"({"pull": {"empty_packets_first": [0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0,0]}})"})
    EXPECT_THROW((void)ParseFaults(json), std::runtime_error) << json;
}

TEST(FaultScript, NamesNoMemberTwice) {
  for (const char* json :
       {R"({"refuse": ["HIDCHANGE"], "refuse": []})", R"({"pull": {"packet_type": 1, "packet_type": 2}})"})
    EXPECT_THROW((void)ParseFaults(json), std::runtime_error) << json;
}

TEST(FaultScript, FromAFileNamesTheFile) {
  const gwq::test::TempDir dir;
  gwq::test::WriteFile(dir / "faults.json", R"({"refuse": ["nothing"]})");
  try {
    (void)LoadFaults((dir / "faults.json").string());
    FAIL();
  } catch (const std::runtime_error& error) {
    EXPECT_NE(std::string(error.what()).find("faults.json: line 1: \"refuse\" knows no step \"nothing\""),
              std::string::npos)
        << error.what();
  }
  EXPECT_THROW((void)LoadFaults((dir / "missing").string()), std::runtime_error);
  EXPECT_THROW((void)LoadFaults(dir.Path().string()), std::runtime_error);
}

TEST(FaultCounter, CountsEachStepForItself) {
  FileFaults faults;
  faults.refuse = {"data:2"};
  FaultCounter counter(faults);
  EXPECT_EQ(counter.Next("data"), Verdict::kNone);
  EXPECT_EQ(counter.Next("end"), Verdict::kNone);
  EXPECT_EQ(counter.Next("data"), Verdict::kRefuse);
  EXPECT_EQ(counter.Next("data"), Verdict::kNone);
}

TEST(Signature, StrokesAreALineForEachPoint) {
  EXPECT_EQ(StrokeText({{1, 2, 300, 0}, {4, 5, 0, 8}}), "1,2,300,0\n4,5,0,8\n");
}

TEST(Signature, TimeOnlyRunsForwardAndEachStrokeEndsWithThePenUp) {
  const auto points = DefaultSignature();
  ASSERT_GT(points.size(), 100U);
  EXPECT_EQ(points.back().pressure, 0);
  int pen_ups = 0;
  for (std::size_t i = 1; i < points.size(); ++i) {
    EXPECT_GT(points[i].time_ms, points[i - 1].time_ms);
    pen_ups += points[i].pressure == 0 ? 1 : 0;
  }
  EXPECT_EQ(pen_ups, 3);
}

}  // namespace
}  // namespace gwq::terminal::test
