// SPDX-License-Identifier: MIT
// A serial device in the test's hand: a pseudo-terminal, with the program's own open, close, read, write,
// poll, ioctl and tcflush in front of it. They pass everything on, except that a FakeTty
//   - is also found under a name such as "/dev/ttyS41",
//   - records what was asked for (a pseudo-terminal keeps 8 bits and no parity whatever it is told),
//   - answers an idle read at once and moves the test clock by the 0.1 s it would have taken, and an idle poll by
//     its time-out,
//   - fails when told to.
#pragma once

#include <sys/ioctl.h>
#include <sys/types.h>
#include <termio.h>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/bytes.h"

namespace gwq::test {

class FakeTty {
 public:
  explicit FakeTty(std::string alias = "");
  // The test fails for a descriptor of the device that was left open.
  ~FakeTty();
  FakeTty(const FakeTty&) = delete;
  FakeTty& operator=(const FakeTty&) = delete;

  [[nodiscard]] const std::string& Path() const;

  // From the device to the host. What stands there when the host sets the line up is flushed.
  void Send(std::string_view bytes);
  // Everything from the host to the device.
  [[nodiscard]] Bytes Received() const;
  // Called with what each write brought; what it returns is sent to the host.
  void Respond(std::function<std::string(const Bytes& written)> responder);

  // Called before each read, with its number from 0; free to use the library.
  void OnRead(std::function<void(int index)> hook);
  // Called before each poll for bytes, with its time-out; free to use the library.
  void OnPoll(std::function<void(int timeout_ms)> hook);
  // Every read from now on is possible at once and brings nothing.
  void HangUp();
  // Every read from now on fails.
  void FailReads();
  // The next writes, in order, move only so many bytes; -1 fails.
  void NextWritesMove(const std::vector<ssize_t>& counts);
  // What is written from now on stays in the line until that is full.
  void TakeNothing();
  // Every such request (TCGETA, TCSETAF) from now on fails.
  void FailIoctl(unsigned long request);

  // "open PATH 2", "TCGETA", "TCSETAF", "write 12", "tcflush 0", "close"; reads are left out.
  [[nodiscard]] std::vector<std::string> Calls() const;
  // What was passed with each TCSETAF.
  [[nodiscard]] std::vector<struct termio> Applied() const;
  // The device's present settings, and a way to change them.
  [[nodiscard]] struct termio Settings() const;
  void SetSettings(const struct termio& settings);
  // Bytes that wait in the device for the host.
  [[nodiscard]] int Waiting() const;

  struct State;

 private:
  std::shared_ptr<State> state_;
};

}  // namespace gwq::test
