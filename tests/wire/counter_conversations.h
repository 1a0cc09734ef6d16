// SPDX-License-Identifier: MIT
// Conversations in the counter command set.
#pragma once

#include "wire/conversation.h"
#include "wire/frames.h"

namespace gwq::wire {

inline Exchanges LoadCounterKeys() {
  return {Exchange(kMasterKey, kKeyAccepted), Exchange(kWorkingKey, kKeyAccepted),
          Exchange(kActivate, kKeyAccepted)};
}

inline std::vector<Conversation> CounterConversations() {
  return {
      {"BuildDate", {Exchange(kGetVersion, kVersion20231114)}},
      {"FirmwareVersion", {Exchange(kGetFirmwareVersion, kFirmwareVersion)}},
      {"CounterPinLength", {Exchange(kPinLength14)}},
      {"CounterKeys", LoadCounterKeys() + Exchanges{Exchange(kResetKeys, kKeyAccepted)}},
      {"ActivatedKeyThatIsNotThere", {Exchange(kActivate, kKeyNotAccepted)}},
      {"ClearPin",
       {Exchange(kEntryOptions), Exchange(kEntryTimeout30), Exchange(kEntryMode0, kClearPin),
        Exchange(kLeaveEntry)}},
      {"ClearPinAgain",
       {Exchange(kEntryOptions), Exchange(kEntryTimeout30), Exchange(kEntryMode1, kClearPin),
        Exchange(kLeaveEntry)}},
      {"DesPinBlock", LoadCounterKeys() + Exchanges{Exchange(kEntryTimeout30), Exchange(kDesBlock, kBlock8),
                                                    Exchange(kLeaveEntry)}},
      {"AnsiPinBlock",
       LoadCounterKeys() + Exchanges{Exchange(kEntryTimeout30), Exchange(kAnsiBlock, kBlockOfAccount),
                                     Exchange(kLeaveEntry)}},
  };
}

}  // namespace gwq::wire
