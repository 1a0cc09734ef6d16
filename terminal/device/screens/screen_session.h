// SPDX-License-Identifier: MIT
// The screen that is shown, from its appearance to its end.
//
//               Show          acts, time-out: answers, as the screen says
//   (idle) ---------> (shown) ------------------------------------------> (idle)
//                      | Show: replaced, without an answer
//                      | Close: closed, without an answer
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "base/types.h"
#include "device/files/file_system.h"
#include "device/host_channel.h"
#include "device/screens/customer.h"
#include "device/screens/painter.h"
#include "device/screens/screen.h"

namespace gwq::terminal::device {

// The commands that close screens name a channel of the terminal.
inline constexpr int kInformationChannel = 2;
inline constexpr int kEvaluationChannel = 4;
inline constexpr int kKeypadChannel = 5;

class ScreenSession {
 public:
  // All must outlive this object. Without a painter no pictures are kept.
  ScreenSession(Customer& customer, HostChannel& host, FileSystem& files, const Painter* painter);

  // Asks the customer, once, if the screen offers a key.
  void Show(Screen screen);
  // Closes the screen if it belongs to this channel.
  void Close(int channel);
  void CloseAny();

  // What the customer does now. Cancels the customer's scheduled action.
  void Act(ScreenAction action);

  void Advance(Time now);
  [[nodiscard]] std::optional<Time> NextDeadline() const;

  [[nodiscard]] const Screen& Current() const { return current_; }
  [[nodiscard]] std::optional<Time> ClosesAt() const { return closes_at_; }
  [[nodiscard]] std::uint64_t Changes() const { return changes_; }

 private:
  void Put(Screen screen);
  void AskCustomer();
  void TimeOut();
  void PerformScheduledAction();
  // The key that the action presses; nullptr when the screen has none for it.
  [[nodiscard]] const ScreenKey* KeyOf(const ScreenAction& action) const;
  // What the host is told; nothing when the screen does not take the action.
  [[nodiscard]] std::optional<std::string> AnswerTo(const ScreenAction& action) const;
  void Finish(const std::string& answer, const std::string& what);

  void ForgetSignature();
  [[nodiscard]] bool KeepSignature(const std::vector<PenPoint>& strokes);
  void KeepPicture();

  Customer& customer_;
  HostChannel& host_;
  FileSystem& files_;
  const Painter* painter_;
  Screen current_;
  ScreenAction action_;
  std::optional<Time> acts_at_;    // nothing when the time-out comes first
  std::optional<Time> closes_at_;  // nothing on the idle screen
  std::uint64_t changes_ = 0;
};

}  // namespace gwq::terminal::device
