// SPDX-License-Identifier: MIT
#include "diag/internal/failure.h"

#include <gwq/status_codes.h>

namespace gwq {

// Little of it is written by a call that succeeds.
struct ThreadFailure {
  const void* frame = nullptr;  // of the call that runs
  FailureNote note{};
  DevicePlace place{};
  bool in_exchange = false;  // `note` is of the exchange that runs
  bool keeps_note = false;   // the exchange that runs cleans up after the noted failure
  Failure last{};

  void Forget() { note.step = GWQ_STEP_NONE; }
  void ForgetPlace() {
    place.usb.bus = 0;
    place.tty[0] = '\0';
  }
  [[nodiscard]] bool HasNote() const { return note.step != GWQ_STEP_NONE; }
};

namespace {

constinit thread_local ThreadFailure t_failure;

// Where a failure happened that nothing has noted.
int StepOfExchange(int status) {
  switch (status) {
    case GWQ_NOT_OPENED:
      return GWQ_STEP_FIND;
    case GWQ_SEND_FAILED:
      return GWQ_STEP_SEND;
    case GWQ_REFUSED:
      return GWQ_STEP_ANSWER;
    default:
      return GWQ_STEP_WAIT;
  }
}

bool IsArgumentStatus(int status) {
  return status == GWQ_BAD_ARGUMENT || status == GWQ_BAD_ACCOUNT || status == GWQ_TOO_SMALL;
}

int StepOfStatus(int status) {
  if (IsArgumentStatus(status)) return GWQ_STEP_ARGUMENT;
  switch (status) {
    case GWQ_NOT_OPENED:  // without a note nothing was looked for: no path, or no link is open
    case GWQ_LINK_NO_DEVICE:
      return GWQ_STEP_ARGUMENT;
    case GWQ_NO_FILE:
    case GWQ_NO_LOCAL_FILE:
      return GWQ_STEP_LOCAL_FILE;
    case GWQ_SEND_FAILED:
    case GWQ_LINK_WRITE:
      return GWQ_STEP_SEND;
    case GWQ_NO_ANSWER:
    case GWQ_LINK_TIMEOUT:
    case GWQ_LINK_READ:
    case GWQ_EVALUATION_READ:
    case GWQ_READ_FAILED:
    case GWQ_CANCELLED:
    case GWQ_LINK_CANCELLED:
    case GWQ_NO_VERSION_ANSWER:
      return GWQ_STEP_WAIT;
    default:
      return GWQ_STEP_ANSWER;
  }
}

bool IsFailure(int result, CallKind kind) {
  return result < 0 || (result > 0 && kind == CallKind::kPinPad);
}

// Whether the status comes of the arguments, whatever an exchange before may have noted. A link
// has other statuses, and always notes what it fails of.
bool IsOfArguments(int status, const FailureNote& note, CallKind kind) {
  if (kind == CallKind::kLink) return note.step == GWQ_STEP_NONE && status == GWQ_LINK_BAD_ARGUMENT;
  return note.step != GWQ_STEP_LOCAL_FILE && IsArgumentStatus(status);
}

FailureNote NoteOf(int status, const ThreadFailure& thread, CallKind kind) {
  if (IsOfArguments(status, thread.note, kind)) return {.step = GWQ_STEP_ARGUMENT};
  if (thread.HasNote()) return thread.note;
  return {.step = StepOfStatus(status), .place = thread.place};
}

// Apart from their callers, which then save no registers for calls that succeed.
[[gnu::noinline, gnu::cold]] void KeepFailure(const char* function, CallKind kind, int status,
                                              ThreadFailure& thread) {
  thread.last = {function, status, NoteOf(status, thread, kind)};
}

[[gnu::noinline, gnu::cold]] void NoteExchange(int result, ThreadFailure& thread) {
  if (!thread.HasNote()) thread.note = {.step = StepOfExchange(result), .place = thread.place};
}

}  // namespace

const Failure& LastFailure() {
  return t_failure.last;
}

UsbPlace& NewUsbPlace() {
  ThreadFailure& thread = t_failure;
  thread.place.tty[0] = '\0';
  thread.place.usb.ports = {};
  return thread.place.usb;
}

void SetTty(std::string_view path) {
  ThreadFailure& thread = t_failure;
  thread.ForgetPlace();
  thread.place.tty[path.copy(thread.place.tty.data(), thread.place.tty.size() - 1)] = '\0';
}

void NoteFailure(int step, int error_source, int error, bool kernel_driver) {
  ThreadFailure& thread = t_failure;
  if (thread.keeps_note) return;
  if (thread.in_exchange && thread.HasNote() && thread.note.step != GWQ_STEP_FIND) return;
  const int source = error == 0 ? static_cast<int>(GWQ_ERROR_NONE) : error_source;
  const DevicePlace place = step == GWQ_STEP_LOCAL_FILE ? DevicePlace{} : thread.place;
  thread.note = {step, source, error, kernel_driver, place};
}

void ForgetFailure() {
  t_failure.Forget();
}

ExchangeFailure::ExchangeFailure(ExchangeRole role) : thread_(t_failure), role_(role) {
  thread_.keeps_note = role == ExchangeRole::kSent && thread_.HasNote();
  if (!thread_.keeps_note) thread_.Forget();
  thread_.ForgetPlace();
  thread_.in_exchange = true;
}

int ExchangeFailure::Ended(int result) const {
  if (result != GWQ_OK) [[unlikely]] {
    NoteExchange(result, thread_);
  } else if (role_ == ExchangeRole::kAnswered) {
    thread_.Forget();
  }
  thread_.in_exchange = false;
  thread_.keeps_note = false;
  return result;
}

// A call that a predicate of the host has jumped out of stays recorded, but this one's frame is
// then not below its frame.
ThreadFailure* BeginCall() {
  ThreadFailure& thread = t_failure;
  const void* const frame = __builtin_frame_address(0);
  if (thread.frame != nullptr && frame < thread.frame) return nullptr;
  thread.frame = frame;
  thread.Forget();
  thread.ForgetPlace();
  thread.in_exchange = false;
  thread.keeps_note = false;
  return &thread;
}

int EndCall(ThreadFailure* call, const char* function, CallKind kind, int result) {
  if (call == nullptr) return result;
  call->frame = nullptr;
  call->last.function = nullptr;
  if (IsFailure(result, kind)) [[unlikely]]
    KeepFailure(function, kind, result, *call);
  return result;
}

}  // namespace gwq
