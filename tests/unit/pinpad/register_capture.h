// SPDX-License-Identifier: MIT
// What the library leaves in the vector registers: whoever it calls next may save them, in memory
// that nobody wipes. A program that uses it is linked with
//     -Wl,--wrap=libusb_get_device_list,--wrap=libusb_open,--wrap=libusb_bulk_transfer,--wrap=GetHexString
// so that the calls of libusb are seen before any other instruction runs.
#pragma once

#include <string_view>

#include "support/bytes.h"

namespace gwq::test {

// While it lives, the conversion to hexadecimal text leaves the first 16 bytes of its input in
// every vector register that it may use, as another compiler, or another way of converting, could.
class FullRegisters {
 public:
  FullRegisters();
  ~FullRegisters();
  FullRegisters(const FullRegisters&) = delete;
  FullRegisters& operator=(const FullRegisters&) = delete;
};

// The registers are captured while it lives, and the captures forgotten with it: they hold what
// other tests look for in the program's memory.
class RegisterCapture {
 public:
  RegisterCapture();
  ~RegisterCapture();
  RegisterCapture(const RegisterCapture&) = delete;
  RegisterCapture& operator=(const RegisterCapture&) = delete;
};

// Captures the registers as they are now, as each of the calls does.
extern "C" void gwq_capture_registers();

// How many captures there are.
int CapturedRegisters();

// How many of them hold `length` characters of the text that follow each other.
int CapturesThatHold(std::string_view text, std::size_t length);

}  // namespace gwq::test
