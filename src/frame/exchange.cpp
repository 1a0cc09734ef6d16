#include "frame/internal/exchange.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include <gwq/diag/log.h>
#include <gwq/frame/transaction.h>
#include "codec/internal/secret.h"
#include "frame/internal/cancel.h"
#include "frame/internal/operation.h"

namespace gwq {
namespace {

constexpr int kHeadMark = 170;
constexpr int kChunkSize = 1024;

TransMssionLinux_t DescriptorFor(const Target& target) {
  TransMssionLinux_t descriptor{};
  descriptor.nHead = kHeadMark;
  descriptor.nTimeOut = target.timeout_ms / 1000;
  descriptor.pfnEndOfRead = target.predicate;
  return descriptor;
}

bool OpenSerialPort(const Target& target) {
  TransMssionLinux_t descriptor = DescriptorFor(target);
  descriptor.nLinkType = GWQ_LINK_SERIAL;
  descriptor.nPortIndex = target.port - 1;
  descriptor.nBaud = target.baud;
  std::snprintf(descriptor.szTtyName, sizeof descriptor.szTtyName, "/dev/ttyS%d", target.port - 1);
  return ICC_OpenTransPort(&descriptor) == 0;
}

bool OpenIdentity(const Target& target, const UsbIdentity& identity, bool logs) {
  TransMssionLinux_t descriptor = DescriptorFor(target);
  descriptor.nLinkType = GWQ_LINK_USB;
  descriptor.nPid = identity.pid;
  descriptor.nVid = identity.vid;
  const int result = ICC_OpenTransPort(&descriptor);
  if (logs) {
    ICC_DPrintLogToFile("ICC_OpenTransPort: PID=%x,VID=%x, nRet=%d", static_cast<unsigned>(identity.pid),
                        static_cast<unsigned>(identity.vid), result);
  }
  return result == 0;
}

bool OpenUsbDevice(const Target& target, bool logs) {
  for (const UsbIdentity& identity : kUsbIdentities) {
    if (OpenIdentity(target, identity, logs)) return true;
    if (&identity != std::end(kUsbIdentities) - 1) ICC_CloseTransPort();
  }
  return false;
}

// A chunk counts as sent unless the link says that 0 to 1023 bytes of it went out: a negative result passes,
// on purpose, and the missing answer then tells.
bool SendChunk(unsigned char* chunk) {
  const int written = ICC_WriteDataToTransPort(chunk, kChunkSize);
  const bool sent_short = static_cast<std::uint64_t>(static_cast<std::int64_t>(written)) < kChunkSize;
  return !sent_short && !ReadCancelRequested();
}

bool SendInChunks(const Command& command) {
  if (command.bytes == nullptr) return false;
  const int length = command.length == 0 ? static_cast<int>(std::strlen(command.bytes)) : command.length;
  SecretArray<unsigned char, kChunkSize> chunk;
  for (int offset = 0; offset < length; offset += min(kChunkSize, length - offset)) {
    chunk.Wipe();
    std::memcpy(chunk.data(), command.bytes + offset,
                static_cast<std::size_t>(min(kChunkSize, length - offset)));
    if (!SendChunk(chunk.data())) return false;
  }
  return true;
}

bool Send(int port, const Command& command) {
  if (port == 0) return SendInChunks(command);
  auto* bytes = reinterpret_cast<unsigned char*>(command.bytes);
  return ICC_WriteDataToTransPort(bytes, command.length) >= command.length;
}

}  // namespace

OpenLink::OpenLink(const ExchangeTurn& turn, const Target& target, bool logs_identities)
    : turn_(turn), outer_(ParametersInUse()) {
  if (turn_.nested()) {
    UseParameters({target.timeout_ms / 1000, target.predicate, outer_.link_type, outer_.parameter});
    open_ = true;
    return;
  }
  open_ = target.port > 0 ? OpenSerialPort(target) : OpenUsbDevice(target, logs_identities);
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

int RunExchange(const Member& member, const Target& target, const Command& command, Receiver* receiver) {
  const ExchangeTurn turn(target.port);
  if (member.opening_log != nullptr) ICC_DPrintLogToFile(member.opening_log, target.port);
  if (member.ends_with_call && OperationCancelled()) return GWQ_CANCELLED;
  const OpenLink link(turn, target, member.logs_identities);
  if (!link) return GWQ_NOT_OPENED;
  if (member.logs_before_send) ICC_DPrintLogToFile(" TransProc  nPor2=%d", target.port);
  if (member.sends && !Send(target.port, command)) return GWQ_SEND_FAILED;
  return receiver == nullptr ? GWQ_OK : receiver->Receive(turn);
}

}  // namespace gwq
