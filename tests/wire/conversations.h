// SPDX-License-Identifier: MIT
// Every conversation that the library's and the terminal's tests share.
#pragma once

#include "wire/counter_conversations.h"
#include "wire/file_conversations.h"
#include "wire/pad_conversations.h"
#include "wire/screen_conversations.h"

namespace gwq::wire {

inline const std::vector<Conversation>& Conversations() {
  static const std::vector<Conversation> all = [] {
    std::vector<Conversation> joined;
    for (const auto area :
         {&CounterConversations, &PadConversations, &FileConversations, &EvaluationConversations,
          &InformationConversations, &DocumentConversations, &TerminalConversations}) {
      const std::vector<Conversation> some = area();
      joined.insert(joined.end(), some.begin(), some.end());
    }
    return joined;
  }();
  return all;
}

}  // namespace gwq::wire
