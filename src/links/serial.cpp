// SPDX-License-Identifier: MIT
#include <gwq/links/serial.h>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "codec/internal/secret.h"
#include "links/internal/lifetime.h"
#include "links/internal/link_entries.h"
#include "links/internal/read_gate.h"
#include "links/internal/read_until.h"
#include "links/internal/terminal_line.h"
#include "links/internal/unique_fd.h"

namespace gwq {
namespace {

constinit TerminalLine g_line;
constinit ReadGate g_gate;

}  // namespace

// Contract: a closed port is GWQ_LINK_WRITE here, but GWQ_LINK_BAD_ARGUMENT in SendDataToTransPort.
int WriteSerial(unsigned char* data, int length, const WriteEnd& end) {
  if (data == nullptr || length < 1) return GWQ_LINK_BAD_ARGUMENT;
  const int sent = g_line.Write(data, length, end);
  return sent >= 0 ? sent : GWQ_LINK_WRITE;
}

// The log shows it as the read that it stands for.
int DrainSerial(int silence_ms) {
  if (!g_line.IsOpen()) return GWQ_LINK_BAD_ARGUMENT;
  ICC_DPrintLogToFile(" ICC_ReadLinuxCom nTimeOut=%d", 0);
  const ReadGate::Reading reading(g_gate);
  SecretArray<unsigned char, 1024> scratch;
  const auto skip_some = [&scratch](int timeout_ms) {
    return g_line.ReadWithin(timeout_ms, scratch.data(), static_cast<int>(scratch.size()));
  };
  return DrainUntilSilent(silence_ms, g_gate, skip_some, GWQ_CANCELLED);
}

// Does not restore the settings: the parent still uses the device.
void ResetSerialLink() {
  g_line.Close();
  g_gate.Reset();
}

int SetComAttr(int fd, int baud) {
  return g_line.SetUp(fd, baud);
}

int RestoreComAttr(int fd) {
  return g_line.Restore(fd);
}

// Contract: a port that is already open is closed without restoring its settings.
int ICC_OpenLinuxCom(const char* path, int baud) {
  g_line.Close();
  ICC_DPrintLogToFile("ICC_OpenLinuxCom szTtyName=%s", path);
  UniqueFd fd = OpenTerminal(path);
  if (!fd) return GWQ_NOT_OPENED;
  if (SetComAttr(fd.get(), baud) != 0) return GWQ_LINK_UNUSABLE;
  g_line.Use(fd.release());
  return 0;
}

int ICC_CloseLinuxCom() {
  if (!g_line.IsOpen()) return 0;
  RestoreComAttr(g_line.fd());
  g_line.Close();
  g_gate.Reset();
  return 0;
}

int SendDataToTransPort(unsigned char* data, int length) {
  return g_line.Write(data, length);
}

int ICC_WriteLinuxCom(unsigned char* data, int length) {
  return WriteSerial(data, length, {});
}

int ICC_ReadLinuxCom(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
  if (!g_line.IsOpen() || buffer == nullptr) return GWQ_LINK_BAD_ARGUMENT;
  ICC_DPrintLogToFile(" ICC_ReadLinuxCom nTimeOut=%d", timeout_s);
  const ReadGate::Reading reading(g_gate);
  const auto read_some = [&](int count) { return g_line.Read(buffer + count, maximum - count); };
  return ReadUntil(ReadEnd(maximum, timeout_s, end), g_gate, buffer, read_some, [] { return GWQ_CANCELLED; });
}

int ICC_CancelLinuxComRead() {
  if (!g_line.IsOpen()) return GWQ_LINK_NO_DEVICE;
  g_gate.Cancel();
  return 0;
}

}  // namespace gwq

using namespace gwq;

// Contract: replaces the descriptor without closing the one before it.
void SetComFd(int fd) {
  g_line.Use(fd);
}
