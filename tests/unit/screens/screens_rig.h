// The terminal on USB for the customer's screens, with the clock in hand.
#pragma once

#include <string>

#include <gwq/frame/transaction.h>
#include "support/guarded_buffer.h"
#include "unit/files/files_rig.h"
#include "wire/screen_frames.h"

namespace gwq::test {

class ScreensRig : public FilesRig {
 protected:
  // A cancel with the transfer out of this number makes its exchange fail with -10.
  void FailSending(int index) {
    usb_.OnTransfer([index](const Transfer& transfer) {
      if (!transfer.in && transfer.index == index) CancelRead();
    });
  }
  // A cancel with the transfer in of this number makes its exchange fail with -23.
  void CancelReading(int index) {
    usb_.OnTransfer([index](const Transfer& transfer) {
      if (transfer.in && transfer.index == index) CancelRead();
    });
  }
  // From the transfer of this number on nothing is there any more.
  void UnplugAt(bool in, int index) {
    usb_.OnTransfer([this, in, index](const Transfer& transfer) {
      if (transfer.in == in && transfer.index == index) usb_.Unplug();
    });
  }

  // The seconds since the test began.
  static std::time_t Elapsed() { return Now() - kStart; }

  static constexpr int kDrainSeconds = 1;
};

inline std::string Split(std::string_view text) {
  std::string split;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    split.push_back(static_cast<char>(0x30 + byte / 16));
    split.push_back(static_cast<char>(0x30 + byte % 16));
  }
  return split;
}

// Texts from nothing to a megabyte, of all byte values but zero.
inline std::string LongText(std::size_t size) {
  std::string text(size, '\0');
  for (std::size_t i = 0; i < size; ++i) text[i] = static_cast<char>(1 + (i * 7 + i / 255) % 255);
  return text;
}

}  // namespace gwq::test
