// SPDX-License-Identifier: MIT
#include <gwq/pinpad/counter.h>
#include <gwq/screens/terminal_control.h>
#include "unit/conversations/calls.h"

namespace gwq::test {
namespace {

constexpr int kBaud = 9600;

void LoadKeys() {
  EXPECT_EQ(GWQ_UpdateMKey(0, kBaud, 3, wire::kNewMasterKeyHex, wire::kOldMasterKeyHex), 0);
  EXPECT_EQ(GWQ_DownLoadWKey(0, kBaud, 3, 10, wire::kWorkingKeyHex), 0);
  EXPECT_EQ(GWQ_ActiveWKey(0, kBaud, 3, 10), 0);
}

void ReadClearPin(int mode) {
  Output pin(15);
  EXPECT_EQ(GWQ_ReadPin(0, kBaud, mode, 30, pin.text(), 15), 0);
  pin.ExpectBytes(BytesOf("4711"));
}

}  // namespace

Calls CounterCalls() {
  return {
      {"BuildDate",
       [](Host&) {
         Output date(8);
         EXPECT_EQ(GWQ_GetVerBuildDate(0, '9', kBaud, date.text()), 0);
         date.ExpectBytes(BytesOf("20231114"));
       }},
      {"FirmwareVersion",
       [](Host&) {
         Output common(1024);
         Output own(1024);
         EXPECT_EQ(MP_GetFirmwareVersion(nullptr, nullptr, 0, 0, common.text(), own.text()), 0);
         common.ExpectText("V1.2");
         own.ExpectText("P20231114");
       }},
      {"CounterPinLength", [](Host&) { EXPECT_EQ(GWQ_SetPinLen(0, kBaud, 14), 0); }},
      {"CounterKeys",
       [](Host&) {
         LoadKeys();
         EXPECT_EQ(GWQ_ResetKey(0, kBaud), 0);
       }},
      {"ActivatedKeyThatIsNotThere", [](Host&) { EXPECT_EQ(GWQ_ActiveWKey(0, kBaud, 3, 10), -14); }},
      {"ClearPin", [](Host&) { ReadClearPin(0); }},
      {"ClearPinAgain", [](Host&) { ReadClearPin(1); }},
      {"DesPinBlock",
       [](Host&) {
         LoadKeys();
         Output block(1025);
         EXPECT_EQ(GWQ_ReadPinDES(0, kBaud, 1, 3, 30, block.text()), 0);
         block.ExpectBytes(BytesOf(wire::kBlock8Hex));
       }},
      {"AnsiPinBlock",
       [](Host&) {
         LoadKeys();
         Output block(1025);
         EXPECT_EQ(GWQ_ReadPinAnsi(0, kBaud, 1, 2, 30, "6222021234567890", block.text()), 0);
         block.ExpectBytes(BytesOf(wire::kBlockOfAccountHex));
       }},
  };
}

}  // namespace gwq::test
