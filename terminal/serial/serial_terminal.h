// SPDX-License-Identifier: MIT
// A terminal at the end of a serial line, which is a pseudo-terminal.
#pragma once

#include <functional>
#include <string>

#include "base/clock.h"
#include "base/endpoint.h"
#include "base/event_loop.h"
#include "base/unique_fd.h"

namespace gwq::terminal::recording {
class Recorder;
}

namespace gwq::terminal::serial {

// A pseudo-terminal that passes bytes as they are, until a host sets it otherwise.
struct PtyPair {
  PtyPair();

  UniqueFd master;
  UniqueFd slave;  // held open, so that the line stays up between two hosts
  std::string slave_path;
};

class SerialTerminal final : public Timed {
 public:
  // What is given must outlive this object. Without a recorder nothing is recorded.
  SerialTerminal(Endpoint& line, const Clock& clock, recording::Recorder* recorder = nullptr)
      : clock_(clock), line_(line), recorder_(recorder) {}

  // What a host opens.
  [[nodiscard]] const std::string& Path() const { return pty_.slave_path; }

  // Serves the line from `loop`, which must outlive this object.
  void Join(EventLoop& loop);

  // Does what is to be done with the unit or its line, and passes on what the unit answers.
  void Use(const std::function<void(Time now)>& action);

  std::optional<Time> NextDeadline() override { return line_.NextDeadline(); }
  void Advance(Time now) override;

 private:
  void ReadLine();
  void CollectAnswers();
  void WriteLine();
  void SendSome();
  void Record(bool to_host, std::span<const std::uint8_t> bytes);

  const Clock& clock_;
  Endpoint& line_;
  recording::Recorder* const recorder_;
  PtyPair pty_;
  Bytes unsent_;  // what the line had no room for yet
  EventLoop::Watch watch_;
  bool joined_ = false;
};

}  // namespace gwq::terminal::serial
