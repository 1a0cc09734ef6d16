// SPDX-License-Identifier: MIT
#include "frame/internal/exchange.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iterator>

#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include <gwq/status_codes.h>
#include "codec/internal/secret.h"
#include "codec/internal/secret_text.h"
#include "diag/internal/failure.h"
#include "frame/internal/cancel.h"
#include "frame/internal/dispatcher.h"
#include "frame/internal/operation.h"
#include "frame/internal/turn.h"
#include "usb_ids.h"

namespace gwq {
namespace {

constexpr int kHeadMark = 170;
constexpr int kChunkSize = 1024;

TransMssionLinux_t DescriptorFor(const AnswerEnd& end) {
  TransMssionLinux_t descriptor{};
  descriptor.nHead = kHeadMark;
  // Contract: truncated, so that 999 ms become 0 s.
  descriptor.nTimeOut = end.timeout_ms / 1000;
  descriptor.pfnEndOfRead = end.predicate;
  return descriptor;
}

bool OpenSerialPort(Endpoint endpoint, TransMssionLinux_t descriptor) {
  descriptor.nLinkType = GWQ_LINK_SERIAL;
  descriptor.nPortIndex = endpoint.port - 1;
  descriptor.nBaud = endpoint.baud;
  std::snprintf(descriptor.szTtyName, sizeof descriptor.szTtyName, "/dev/ttyS%d", endpoint.port - 1);
  return gwq::ICC_OpenTransPort(&descriptor) == 0;
}

bool OpenIdentity(TransMssionLinux_t descriptor, const UsbIdentity& identity, bool logs) {
  descriptor.nLinkType = GWQ_LINK_USB;
  descriptor.nPid = identity.pid;
  descriptor.nVid = identity.vid;
  const int result = gwq::ICC_OpenTransPort(&descriptor);
  if (logs) {
    ICC_DPrintLogToFile("ICC_OpenTransPort: PID=%x,VID=%x, nRet=%d", static_cast<unsigned>(identity.pid),
                        static_cast<unsigned>(identity.vid), result);
  }
  return result == 0;
}

// Contract: closes between the two identities although nothing is open; the log shows the close.
bool OpenUsbDevice(const TransMssionLinux_t& descriptor, bool logs) {
  for (const UsbIdentity& identity : kUsbIdentities) {
    if (OpenIdentity(descriptor, identity, logs)) return true;
    if (&identity != std::end(kUsbIdentities) - 1) ICC_CloseTransPort();
  }
  return false;
}

// The terminal reads USB in whole reports, so that the last chunk is padded with zeros; a serial
// line gets the command alone.
// Contract: length 0 means the text's length on port 0, but is an error on a serial port.
// Contract: a negative port opens USB, but sends without chunks.
bool Send(int port, const CommandBytes& command) {
  auto* const bytes = reinterpret_cast<unsigned char*>(command.bytes);
  if (port != 0) return WriteOnLink(bytes, command.length) >= command.length;
  if (bytes == nullptr) return false;
  const int length = command.length == 0 ? static_cast<int>(std::strlen(command.bytes)) : command.length;
  SecretArray<unsigned char, kChunkSize> chunk;
  for (int offset = 0; offset < length; offset += kChunkSize) {
    chunk.Wipe();
    std::memcpy(chunk.data(), bytes + offset,
                static_cast<std::size_t>(std::min(kChunkSize, length - offset)));
    // Contract: a negative result counts as sent; the missing answer is then the failure.
    const int written = WriteOnLink(chunk.data(), kChunkSize);
    if (written >= 0 && written < kChunkSize) return false;
    if (ReadCancelRequested()) return false;
  }
  return true;
}

// An answer that is read as text.
// Contract: its length is the string length, so that a zero byte ends it.
// Contract: only GWQ_LINK_CANCELLED becomes GWQ_CANCELLED; a cancelled serial read is a read
// failure.
class TextAnswer final : public Receiver {
 public:
  TextAnswer(AnswerRoom room, int read_failure) : room_(room), read_failure_(read_failure) {}

  int Receive(const ExchangeTurn& turn) override {
    const int result = ICC_ReadDataFromTransPort(reinterpret_cast<unsigned char*>(room_.text), *room_.length);
    if (turn.Lost()) return read_failure_;
    if (result == 0) return GWQ_NO_ANSWER;
    if (result < 0) return result == GWQ_LINK_CANCELLED ? static_cast<int>(GWQ_CANCELLED) : read_failure_;
    *room_.length = static_cast<int>(SecretLength(room_.text));
    return GWQ_OK;
  }

 private:
  AnswerRoom room_;
  int read_failure_;
};

int RunOnce(const ExchangeKind& kind, Endpoint endpoint, const CommandBytes& command, const AnswerEnd& end,
            Receiver* receiver) {
  const ExchangeTurn turn(endpoint.port);
  if (kind.opening_log != nullptr) ICC_DPrintLogToFile(kind.opening_log, endpoint.port);
  if (kind.ends_with_call && OperationCancelled()) return GWQ_CANCELLED;
  const OpenLink link(turn, endpoint, end, kind.logs_identities);
  if (!link) return GWQ_NOT_OPENED;
  if (kind.logs_before_send) ICC_DPrintLogToFile(" TransProc  nPor2=%d", endpoint.port);
  if (kind.sends && !Send(endpoint.port, command)) return GWQ_SEND_FAILED;
  return receiver == nullptr ? GWQ_OK : receiver->Receive(turn);
}

}  // namespace

// Contract: each kind has its own log lines, and only kAsk has a second one.
constexpr ExchangeKind kAsk{.opening_log = " TransProc  nPort=%d",
                            .logs_identities = true,
                            .logs_before_send = true,
                            .sends = true,
                            .ends_with_call = true};
constexpr ExchangeKind kTell{.opening_log = "TransProc nPort=%d \n",
                             .logs_identities = true,
                             .logs_before_send = false,
                             .sends = true,
                             .ends_with_call = false};  // a screen is closed even after a cancel
constexpr ExchangeKind kListen{.opening_log = " TransProcOnlyRead  nPort=%d",
                               .logs_identities = true,
                               .logs_before_send = false,
                               .sends = false,
                               .ends_with_call = true};

OpenLink::OpenLink(const ExchangeTurn& turn, Endpoint endpoint, const AnswerEnd& end, bool logs_identities)
    : turn_(turn), outer_(ParametersInUse()) {
  if (turn_.nested()) {
    UseParameters({end.timeout_ms / 1000, end.predicate, outer_.link_type, outer_.parameter});
    open_ = true;
    return;
  }
  const TransMssionLinux_t descriptor = DescriptorFor(end);
  open_ =
      endpoint.port > 0 ? OpenSerialPort(endpoint, descriptor) : OpenUsbDevice(descriptor, logs_identities);
  turn_.SetLinkOpen(open_);
}

OpenLink::~OpenLink() {
  if (!open_ || turn_.Lost()) return;
  if (turn_.nested()) {
    UseParameters(outer_);
    return;
  }
  ICC_CloseTransPort();
  turn_.SetLinkOpen(false);
}

int RunExchange(const ExchangeKind& kind, Endpoint endpoint, const CommandBytes& command,
                const AnswerEnd& end, Receiver* receiver) {
  const ExchangeFailure failure(receiver == nullptr ? ExchangeRole::kSent : ExchangeRole::kAnswered);
  return failure.Ended(RunOnce(kind, endpoint, command, end, receiver));
}

int Exchange(const ExchangeKind& kind, Endpoint endpoint, const CommandBytes& command, const AnswerEnd& end,
             AnswerRoom room, int read_failure) {
  TextAnswer answer(room, read_failure);
  const bool reads = room.text != nullptr && room.length != nullptr;
  return RunExchange(kind, endpoint, command, end, reads ? &answer : nullptr);
}

}  // namespace gwq
