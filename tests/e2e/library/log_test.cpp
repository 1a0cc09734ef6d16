// What a session leaves in the log when it is on.
#include <gtest/gtest.h>

#include <array>
#include <string>

#include "e2e/library/library.h"

namespace gwq::test {
namespace {

TEST(LogOfASession, TellsCallAndExchangeInOrder) {
  const Library lib("[Gwq]\nLog=1\n");
  std::array<char, 9> date{};
  ASSERT_EQ(0, lib.build_date(0, 0, 9600, date.data()));
  const std::string log = lib.Log();
  std::size_t at = 0;
  for (const char* line :
       {"-- GWQ_GetVerBuildDate --\r\n", " TransProc  nPort=0\r\n", "\nOpen Device:1209,1, begin\n",
        "libusb_get_device_list:", "find target device!!\r\n", "libusb_open success ,nRet=0\r\n",
        "driver_active  Cnt1=1\n", "driver_active  Cnt2=0\n", "libusb_claim_interface  nRet=0\n",
        "Open device success!  End\n", "ICC_OpenTransPort: PID=1,VID=1209, nRet=0\r\n",
        " TransProc  nPor2=0\r\n", "[EndOfRead2] return 0\r\n", "\nClose Device Begin\r\n",
        "Close Device Success! End\n", "szData=V1.0.0|20240615\r\n", "VerBuildDate=20240615\r\n"}) {
    const std::size_t found = log.find(line, at);
    ASSERT_NE(std::string::npos, found) << "missing, or out of order: " << line << "\nin\n" << log;
    at = found + std::string(line).size();
  }
}

TEST(LogOfASession, IsNotWrittenWithoutTheSwitch) {
  const Library lib("[Gwq]\nLog=0\n");
  EXPECT_EQ(1, lib.takes_utf8());
  EXPECT_EQ("", lib.Log());
}

}  // namespace
}  // namespace gwq::test
