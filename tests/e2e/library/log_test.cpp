// SPDX-License-Identifier: MIT
// What a session leaves in the log when it is on.
#include <gtest/gtest.h>

#include <array>
#include <initializer_list>
#include <string>

#include "e2e/library/pad_rig.h"

namespace gwq::test {
namespace {

constexpr char kLogOn[] = "[Gwq]\nLog=1\n";

void ExpectInOrder(const std::string& log, std::initializer_list<std::string> lines) {
  std::size_t at = 0;
  for (const std::string& line : lines) {
    const std::size_t found = log.find(line, at);
    ASSERT_NE(std::string::npos, found) << "missing, or out of order: " << line << "\nin\n" << log;
    at = found + line.size();
  }
}

TEST(LogOfASession, TellsCallAndExchangeInOrder) {
  const Library lib(kLogOn);
  std::array<char, 9> date{};
  ASSERT_EQ(0, lib.build_date(0, 0, 9600, date.data()));
  ExpectInOrder(lib.Log(),
                {"-- GWQ_GetVerBuildDate --\r\n", " TransProc  nPort=0\r\n", "\nOpen Device:1209,1, begin\n",
                 "libusb_get_device_list:", "find target device!!\r\n", "libusb_open success ,nRet=0\r\n",
                 "driver_active  Cnt1=1\n", "driver_active  Cnt2=0\n", "libusb_claim_interface  nRet=0\n",
                 "Open device success!  End\n", "ICC_OpenTransPort: PID=1,VID=1209, nRet=0\r\n",
                 " TransProc  nPor2=0\r\n", "[EndOfRead2] return 0\r\n", "\nClose Device Begin\r\n",
                 "Close Device Success! End\n", "szData=V1.0.0|20240615\r\n", "VerBuildDate=20240615\r\n"});
}

TEST(LogOfASession, IsNotWrittenWithoutTheSwitch) {
  const Library lib("[Gwq]\nLog=0\n");
  EXPECT_EQ(1, lib.takes_utf8());
  EXPECT_EQ("", lib.Log());
}

class LogOfAPinSession : public Pad {
 protected:
  LogOfAPinSession() : Pad(kLogOn) {}
};

TEST_F(LogOfAPinSession, TellsKeyLoadAndEntryStepByStep) {
  Prepare(Algorithm::kTripleDes, 6);
  std::string factor;
  ASSERT_EQ(0, ObtainFactor("1", factor));
  const auto [new_key, form] = NewKeyUnderMaster(Algorithm::kTripleDes);
  const std::string verify = example::VerifyKey(new_key, Algorithm::kTripleDes);
  ASSERT_EQ(0, LoadKey(factor, "1", ToHex(form), verify));
  ASSERT_EQ(GWQ_BAD_ARGUMENT, GetPinBlock({Algorithm::kSm4, 6, 1, "6225880123456789"}).status);
  ASSERT_EQ(0, GetPinBlockShowing({Algorithm::kTripleDes, 6, 1, "6225880123456789", 0, "PIN?"}).status);
  ExpectInOrder(lib.Log(), {"PN_ObtainFactor\r\n",
                            "szWKType=1\r\n",
                            " TransProcOnlyRead  nPort=0\r\n",
                            "TransProcOnlyRead iRet=-11\r\n",
                            " TransProc  nPort=0\r\n",
                            " TransProc  nPort=0\r\n",
                            "PN_ObtainFactor iRet=0\r\n",
                            "PN_DownloadPinPadWK\r\n",
                            "szPinPadFactor=" + factor,
                            ",encWKData=" + ToHex(form),
                            ",szVerifyKey=" + verify,
                            "TransProcOnlyRead iRet=-11\r\n",
                            "TransProcOnlyRead iRet=-11\r\n",
                            "TransProc  iRet=0,\r\n",
                            "UnPackData  iRet=12292,\r\n",
                            "UnPackData  szRes[0]=0,\r\n",
                            "PN_DownloadPinPadWK iRet=0\r\n",
                            "PN_GetPinBlock\r\n",
                            "iAlgoType=1,nModex=0,iPinType=1,szAccountNo=6225880123456789,pnPinLen=6\r\n",
                            "TransProcOnlyRead iRet=-11\r\n",
                            "[PN_GetEnType] iRet=0\r\n",
                            "[PN_GetEnType] ERROR\r\n",
                            "[PN_GetPinBlockShowString]\r\n",
                            "iBaud:115200\r\n",
                            "nTimeout:30\r\n",
                            "iAlgoType:0\r\n",
                            "nModex:0\r\n",
                            "iPinType:1\r\n",
                            "szAccountNo:6225880123456789\r\n",
                            "szShowString:PIN?\r\n",
                            "[PN_GetEnType] iRet=0\r\n",
                            "[PN_GetPinLen] iRet=0\r\n",
                            "[PN_SetPinMoe] iRet=0\r\n",
                            "[PN_SetSoundType] iRet=0\r\n",
                            "[PN_SetAccount] iRet=0\r\n",
                            "GetPinblockShowString\r\n",
                            " TransProcOnlyRead  nPort=0\r\n",
                            "TransProc iRet=0\r\n",
                            "UnPackData iRet=0\r\n",
                            "GetPinblockShowString iRet=0\r\n",
                            "[out]Return:0\r\n"});
}

}  // namespace
}  // namespace gwq::test
