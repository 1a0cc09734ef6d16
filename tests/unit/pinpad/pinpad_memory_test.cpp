// SPDX-License-Identifier: MIT
// Without memory for a command's buffers the call fails and sends nothing.
#include <functional>

#include <gwq/pinpad/entry.h>
#include <gwq/pinpad/keys.h>
#include <gwq/pinpad/settings.h>
#include "support/failing_memory.h"
#include "unit/pinpad/pinpad_rig.h"

namespace gwq::test {
namespace {

constexpr int kBaud = 9600;

class MemoryRig : public PinPadRig {
 public:
  char* Text(std::string_view text) { return In(text); }

  GuardedBuffer out_{1021, kFill};
  int number_ = kUntouched;
};

struct Call {
  const char* name;
  std::function<int(MemoryRig& rig)> call;
  int result;
  int drains;
  // How the last of its own log lines begins when the last block is refused; empty for none.
  std::string_view last_line;
};

class PinPadMemory : public MemoryRig, public testing::WithParamInterface<Call> {};

// With the first block refused, then the second, and so on until the call needs no more.
TEST_P(PinPadMemory, ThatIsWantingEndsTheCallWithNothingSent) {
  int refusals = 0;
  for (int blocks = 0; blocks < 8; ++blocks) {
    const OutOfMemory wanting(blocks);
    const int result = GetParam().call(*this);
    if (OutOfMemory::Refused() == 0) break;
    ++refusals;
    EXPECT_EQ(result, GetParam().result) << blocks;
    EXPECT_EQ(usb_.Count("out"), 0) << blocks;
  }
  EXPECT_GT(refusals, 0);
  EXPECT_TRUE(out_.AllAre(kFill));
  EXPECT_EQ(number_, kUntouched);
}

TEST_P(PinPadMemory, ForTheFrameIsAskedForInItsTurn) {
  Lines lines;
  int drains = 0;
  for (int blocks = 0; blocks < 8; ++blocks) {
    const LogCapture log;
    const OutOfMemory wanting(blocks);
    const int opened = usb_.Count("open");
    GetParam().call(*this);
    if (OutOfMemory::Refused() == 0) break;
    drains = usb_.Count("open") - opened;
    lines = OwnMessages(log);
  }
  EXPECT_EQ(drains, GetParam().drains);
  EXPECT_THAT(lines.empty() ? std::string() : lines.back(), testing::StartsWith(GetParam().last_line));
  EXPECT_EQ(lines.empty(), GetParam().last_line.empty());
}

INSTANTIATE_TEST_SUITE_P(
    All, PinPadMemory,
    testing::Values(
        Call{"SetEndRule", [](MemoryRig&) { return PN_SetEndRule(0, nullptr, kBaud, 1); }, -1, 1, ""},
        Call{"GetPinLen", [](MemoryRig& rig) { return PN_GetPinLen(0, nullptr, kBaud, &rig.number_); }, -1, 1,
             ""},
        Call{"ReadDeviceId",
             [](MemoryRig& rig) { return PN_ReadDeviceId(0, nullptr, kBaud, rig.out_.text()); }, -1, 1,
             "PN_ReadDeviceId  iRet=-1"},
        Call{
            "CreateFactor",
            [](MemoryRig& rig) { return PN_CreateAndGetPinPadFactor(0, nullptr, kBaud, 1, rig.out_.text()); },
            -1, 0, ""},
        Call{"PublicKey",
             [](MemoryRig& rig) { return PN_ObtainPublicKey(0, nullptr, kBaud, 1, 8, rig.out_.text()); }, -1,
             1, "TransProcOnlyRead iRet="},
        Call{"Digest",
             [](MemoryRig& rig) {
               return PN_ObtainDigest(0, nullptr, kBaud, 4, rig.Text("abc"), rig.out_.text());
             },
             -1, 0, "PN_ObtainDigest  iHashAlgo=4"},
        Call{"WorkingKey",
             [](MemoryRig& rig) {
               return PN_DownloadPinPadWK(0, nullptr, kBaud, rig.Text("F"), nullptr, rig.Text("11"),
                                          rig.Text("V"));
             },
             -1, 1, "TransProcOnlyRead iRet="},
        Call{"GetPin",
             [](MemoryRig& rig) { return PN_GetPin(0, nullptr, kBaud, 30, &rig.number_, rig.out_.text()); },
             -1, 0, "PN_GetPin"},
        Call{"GetPinShowing",
             [](MemoryRig& rig) {
               return GetPinblockShowString(0, nullptr, kBaud, rig.out_.data(), &rig.number_, 30,
                                            rig.Text("text"));
             },
             -1, 0, "GetPinblockShowString"},
        Call{"GetInNo",
             [](MemoryRig& rig) {
               return PN_GetInNo(0, nullptr, kBaud, 30, 0, 0, rig.Text("text"), rig.out_.text());
             },
             -24, 1, "TransProcOnlyRead iRet="}),
    kByName);

}  // namespace
}  // namespace gwq::test
