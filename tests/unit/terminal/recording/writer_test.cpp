// SPDX-License-Identifier: MIT
#include "recording/writer.h"

#include <gtest/gtest.h>

#include <string>

#include "base/hex.h"
#include "support/temp_dir.h"
#include "unit/terminal/recording/samples.h"

namespace gwq::terminal::test {

using namespace recording;
namespace {

using gwq::test::ReadFile;
using gwq::test::TempDir;

std::string HexOf(const std::string& content) {
  return ToHexText(ToBytes(content));
}

// clang-format off
constexpr const char* kStart =
    // section header
    "0A0D0D0A" "30000000" "4D3C2B1A" "01000000" "FFFFFFFFFFFFFFFF"
    "0400" "0C00" "6777712D7465726D696E616C" "00000000" "30000000"
    // interface 0: usbmon, "usb", microseconds
    "01000000" "28000000" "DC000000" "00000000" "02000300" "75736200" "09000100" "06000000" "00000000" "28000000"
    // interface 1: user 0, "serial"
    "01000000" "2C000000" "93000000" "00000000" "02000600" "73657269616C0000" "09000100" "06000000" "00000000"
    "2C000000";
// clang-format on

TEST(Pcapng, HasTheseBytes) {
  const TempDir dir;
  RecordingFile file(dir / "session.pcapng");
  PcapngWriter writer(file);
  WireTransfer out = Usb(0x0000000500000007, false, "**cd", {{0, 2}});
  writer.Begin(out, 9);
  WireTransfer in = Usb(3'000'002, true, "xy");
  in.length = 1024;
  in.status = -75;
  writer.End(in, 10);
  WireTransfer serial = Usb(1, true, "z");
  serial.wire = Wire::kSerial;
  writer.End(serial, 0);
  const std::string written = HexOf(ReadFile(dir / "session.pcapng"));
  EXPECT_EQ(written.substr(0, std::string(kStart).size()), kStart);
  const std::string packets = written.substr(std::string(kStart).size());
  // 0x500000007 microseconds are 21474 s and 836487 us
  // clang-format off
  EXPECT_EQ(packets,
            "06000000" "78000000" "00000000" "05000000" "07000000" "44000000" "44000000"
            "0900000000000000" "53" "01" "02" "05" "0100" "2D" "00" "E253000000000000" "87C30C00"
            "8DFFFFFF" "04000000" "04000000" "0000000000000000" "00000000" "00000000" "00000000" "00000000"
            "2A2A6364" "01000A00" "6D61736B656420302B320000" "00000000" "78000000"
            // completion towards the host
            "06000000" "64000000" "00000000" "00000000" "C2C62D00" "42000000" "42000000"
            "0A00000000000000" "43" "01" "81" "05" "0100" "2D" "00" "0300000000000000" "02000000"
            "B5FFFFFF" "02000000" "02000000" "0000000000000000" "00000000" "00000000" "00000000" "00000000"
            "78790000" "64000000"
            // serial
            "06000000" "24000000" "01000000" "00000000" "01000000" "02000000" "02000000" "017A0000" "24000000");
  // clang-format on
}

TEST(Text, HasTheseLines) {
  const TempDir dir;
  RecordingFile file(dir / "session.txt");
  TextWriter writer(file, 1'000'000);
  writer.Begin(Usb(1'500'000, false, "ab"), 1);
  writer.End(Usb(1'500'000, false, "ab"), 1);
  EXPECT_EQ(ReadFile(dir / "session.txt"), "# gwq-terminal recording 1\n0.500000 usb out 02 2 \"ab\"\n");
}

TEST(Writers, TellTextByItsName) {
  EXPECT_TRUE(IsTextName("a.txt"));
  EXPECT_FALSE(IsTextName("a.pcapng"));
  EXPECT_FALSE(IsTextName("txt"));
}

}  // namespace
}  // namespace gwq::terminal::test
