// SPDX-License-Identifier: MIT
// The machine's USB in the test's hand: a program that links gwq_scripted_usb defines the libusb functions
// that the library calls. What is plugged in, what each call answers, and the account of what the library
// holds open stand in the ScriptedUsb that is alive; without one the bus is empty.
//
// Two ways to use it, on one device or several:
//   a conversation   Expect / ExpectCommand / Answer, in the order they must happen; anything else that is
//   sent is a
//                    mismatch. While the next step is an Expect, reading brings nothing.
//   a free device    no Expect at all: everything sent is recorded, the answers come as they are asked for.
//
// A transfer in that brings nothing moves the test clock by its time-out, one out that moves nothing by its
// 1000 ms. All functions may be called from any thread.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "support/bytes.h"

namespace gwq::test {

struct UsbDevice {
  int vid = 0;
  int pid = 0;
  int descriptor_result = 0;
  int open_result = 0;
  int driver_active = 0;
  int detach_result = 0;
  int claim_result = 0;
  int bus = 1;
  int address = 5;
  std::array<std::uint8_t, 7> ports = {1};  // from the root hub to the device; 0 ends them
};

// A transfer that is about to begin.
struct Transfer {
  bool in;
  int index;  // among those of its direction, from 0
};

class ScriptedUsb {
 public:
  ScriptedUsb();
  // The test fails for a mismatch, for steps that did not happen, and for anything left open or listed.
  ~ScriptedUsb();
  ScriptedUsb(const ScriptedUsb&) = delete;
  ScriptedUsb& operator=(const ScriptedUsb&) = delete;

  ScriptedUsb& Plug(const UsbDevice& device);
  // The library's first identity.
  ScriptedUsb& PlugTerminal();
  // Everything vanishes: transfers fail at once, listings are empty.
  void Unplug();
  // Every libusb_init from now on gives this.
  void FailInit(int result);
  // Every listing from now on gives this in place of its count, and no list.
  void FailListing(ssize_t result);

  ScriptedUsb& Expect(const Bytes& bytes);
  // One Expect for each zero-padded report of the command.
  ScriptedUsb& ExpectCommand(std::string_view command);
  // One transfer, or none at all for the first `empty` reads and then one.
  ScriptedUsb& Answer(const Bytes& bytes, int empty = 0);
  ScriptedUsb& Answer(std::string_view text, int empty = 0) { return Answer(BytesOf(text), empty); }
  // The text in a report of 1024 bytes.
  ScriptedUsb& AnswerReport(std::string_view text, int empty = 0);
  // A transfer in that gives `result` and these bytes.
  ScriptedUsb& AnswerWithResult(const Bytes& bytes, int result);

  // The next transfer out, in order of the calls, moves only `count` bytes and gives `result`.
  ScriptedUsb& NextOutMoves(int count, int result = 0);

  // The next transfer, in either direction, claims to have moved `count` bytes, whatever it moved.
  ScriptedUsb& NextClaims(int count);

  // Called before each transfer, free to use the library and this object.
  void OnTransfer(std::function<void(const Transfer&)> hook);

  // Everything that went out.
  [[nodiscard]] Bytes Sent() const;
  // The calls in order, such as "open 1209:0001", "out 0x02 1024 1000ms", "in 0x81 1024 200ms",
  // "interrupt in 0x81 1024 200ms", "close".
  [[nodiscard]] std::vector<std::string> Calls() const;
  // How many calls begin with this.
  [[nodiscard]] int Count(std::string_view prefix) const;
  [[nodiscard]] bool Finished() const;

  struct State;

 private:
  std::shared_ptr<State> state_;
};

// Successful libusb_init and libusb_exit on the default context, the load hooks' included.
int UsbInits();
int UsbExits();

// Whether this thread is inside one of the functions defined here.
bool InsideScriptedUsb();

}  // namespace gwq::test
