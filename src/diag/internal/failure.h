// SPDX-License-Identifier: MIT
// What the calling thread's calls fail of. Each place notes its failure where it happens; the end
// of the call keeps the note that explains its status. GWQ_GetFailure tells it.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include <gwq/extra.h>

namespace gwq {

// A device on USB; bus 0: not known.
struct UsbPlace {
  std::uint8_t bus = 0;
  std::uint8_t address = 0;
  std::uint16_t vendor = 0;
  std::uint16_t product = 0;
  std::array<std::uint8_t, 8> ports{};  // from the root hub to the device; 0 ends them
};

// The device that a call uses.
struct DevicePlace {
  UsbPlace usb{};
  std::array<char, 64> tty{};  // empty: not a serial line
};

struct FailureNote {
  int step = GWQ_STEP_NONE;  // without one the rest says nothing
  int error_source = GWQ_ERROR_NONE;
  int error = 0;
  bool kernel_driver = false;  // the kernel's driver could not be detached
  DevicePlace place{};
};

struct ThreadFailure;

// A call that failed; `function` is NULL when none has.
struct Failure {
  const char* function = nullptr;
  int status = 0;
  FailureNote note{};
};

// The calling thread's last failed call.
const Failure& LastFailure();

// The device that the thread's next notes are about; the USB one is to be filled in, its ports are 0.
UsbPlace& NewUsbPlace();
void SetTty(std::string_view path);

// Notes a failure for the thread's call. Of one exchange the first note counts, because the others
// follow from it; only a device that was not found is replaced, because the next identity may be
// there.
void NoteFailure(int step, int error_source, int error, bool kernel_driver = false);
inline void NoteSystemFailure(int step, int error) {
  NoteFailure(step, GWQ_ERROR_SYSTEM, error);
}
inline void NoteUsbFailure(int step, int error) {
  NoteFailure(step, GWQ_ERROR_LIBUSB, error);
}

// Takes back what an exchange noted whose result does not count.
void ForgetFailure();

// What an exchange means for the notes of its call.
enum class ExchangeRole {
  kAnswered,  // success shows that the failures before it did no harm
  kSent       // may clean up after a failure, which stays noted
};

class ExchangeFailure {
 public:
  explicit ExchangeFailure(ExchangeRole role);
  // Sees the exchange's result, and returns it.
  [[nodiscard]] int Ended(int result) const;

 private:
  ThreadFailure& thread_;
  ExchangeRole role_;
};

// What a call's result says.
enum class CallKind {
  kDevice,  // a failure is negative
  kPinPad,  // positive: a status word of the pad, which is a failure as well
  kLink     // as kDevice, but for GWQ_LINK_BAD_ARGUMENT
};

// An exported function, from its beginning to its result. Only a thread's outermost call counts: it
// gets the thread's record, and any other one NULL.
ThreadFailure* BeginCall();
// Returns the result.
int EndCall(ThreadFailure* call, const char* function, CallKind kind, int result);

}  // namespace gwq
