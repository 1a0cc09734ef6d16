// SPDX-License-Identifier: MIT
#include <gwq/links/aux_port.h>

#include <termio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstring>
#include <string_view>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "diag/internal/log_gbk.h"
#include "links/internal/aux_dialect.h"
#include "links/internal/long_pause.h"
#include "links/internal/read_gate.h"
#include "links/internal/read_until.h"
#include "links/internal/terminal_line.h"
#include "links/internal/unique_fd.h"

GwqAuxOp g_AuxOp;

namespace gwq {
namespace {

constexpr const char* kLockKeyboard = "\x1B[2h";
constexpr const char* kUnlockKeyboard = "\x1B[2l";

constinit TerminalLine g_line;
constinit ReadGate g_gate;

void SendBytes(const char* bytes, std::size_t count) {
  g_line.Write(reinterpret_cast<const unsigned char*>(bytes), static_cast<int>(count));
}

void SendText(const char* text) {
  SendBytes(text, std::strlen(text));
}

// The lengths are exported data, which the host may have set to any value.
// Contract: a prefix or suffix that cannot be written is not reported.
template <std::size_t N>
void SendAround(const char (&bytes)[N], int32_t length) {
  if (length > 0) SendBytes(bytes, std::min(static_cast<std::size_t>(length), N));
}

void CopyCounted(std::string_view text, char* bytes, int32_t& length) {
  std::memcpy(bytes, text.data(), text.size());
  length = static_cast<int32_t>(text.size());
}

void ChooseDialect(int type) {
  const AuxWrapping wrapping = AuxWrappingOf(type);
  g_AuxOp = {};
  g_AuxOp.nType = type;
  CopyCounted(wrapping.prefix, g_AuxOp.szPrefix, g_AuxOp.nPrefixLen);
  CopyCounted(wrapping.suffix, g_AuxOp.szSuffix, g_AuxOp.nSuffixLen);
}

bool IsKnownDialect(int type) {
  return type == kAuxFirst || type == kAuxSecond || type == kAuxThird || type == kAuxFifth;
}

bool IsInvisible(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

}  // namespace

int SetTerm(int fd, int baud) {
  const int result = g_line.SetUp(fd, baud);
  if (result == 0) ICC_DPrintLogToFile("SetTerm  RET_SUCCESS\n");
  return result;
}

int ResetAux(int fd) {
  ICC_DPrintLogToFile(" ResetAux \n");
  return g_line.Restore(fd);
}

// Contract: a line that is already open is closed without restoring its settings.
int ICC_OpenLinux(const char* path, int baud) {
  g_line.Close();
  UniqueFd fd = OpenTerminal(path);
  if (!fd) return GWQ_NOT_OPENED;
  if (SetTerm(fd.get(), baud) != 0) return GWQ_LINK_UNUSABLE;
  g_line.Use(fd.release());
  LogGbk(Gbk("ICC_OpenLinux : 打开终端\n"));
  return 0;
}

int ICC_CloseLinux() {
  if (!g_line.IsOpen()) return 0;
  ResetAux(g_line.fd());
  g_line.Close();
  g_gate.Reset();
  LogGbk(Gbk("ICC_CloseLinux :关闭终端\n"));
  return 0;
}

int VK_SendDataToTransPort(unsigned char* data, int length) {
  return g_line.Write(data, length);
}

int ICC_WriteLinux(unsigned char* data, int length) {
  if (data == nullptr || length < 1) return GWQ_LINK_BAD_ARGUMENT;
  return VK_SendDataToTransPort(data, length);
}

int ICC_ReadLinux(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
  if (!g_line.IsOpen() || buffer == nullptr) return GWQ_LINK_BAD_ARGUMENT;
  const ReadGate::Reading reading(g_gate);
  const auto read_some = [&](int count) {
    const int got = g_line.Read(buffer + count, maximum - count);
    // Contract: dumps the start of the buffer with this read's count.
    ICC_DPrintDataHexToFile("ICC_ReadLinux =", buffer, got);
    return got;
  };
  const int result = ReadUntil(ReadEnd(maximum, timeout_s, end), g_gate, buffer, read_some, &AfterLongPause);
  LogGbk(Gbk("ICC_ReadLinu :从辅口得到数据\n"));
  return result;
}

int VK_OpenAuxPort(int type, int port, int baud, int lock) {
  if (port < 1) return GWQ_LINK_BAD_ARGUMENT;
  ChooseDialect(type);
  SendText(AuxSwitchOn(type, port, baud).data());
  // Contract: dialect 2 never locks the keyboard, though VK_CloseAuxPort unlocks it.
  if (type == kAuxSecond || lock == 0) return 0;
  LogGbk(Gbk("VK_OpenAuxPort : 打开辅口，锁住键盘\n"));
  SendText(kLockKeyboard);
  return 0;
}

// Contract: an unknown dialect becomes the first one, in g_AuxOp too.
int VK_CloseAuxPort(int lock) {
  if (!IsKnownDialect(g_AuxOp.nType)) g_AuxOp.nType = kAuxFirst;
  SendText(AuxSwitchOff(g_AuxOp.nType));
  if (lock == 0) return 0;
  LogGbk(Gbk(" VK_CloseAuxPort ：关闭辅口 ，解锁键盘\n"));
  SendText(kUnlockKeyboard);
  return 0;
}

// Contract: a port below 1 is GWQ_LINK_UNUSABLE, not a bad argument, after the terminal has been
// opened.
int ICC_OpenLinuxAux(int type, int port, int baud, int lock) {
  std::array<char, PATH_MAX> name{};
  if (ttyname_r(STDOUT_FILENO, name.data(), name.size()) != 0) name[0] = '\0';
  ClearInvisibleCharInStr(name.data());
  ICC_DPrintLogToFile("LinuxOpenPort szTtyName =%s\r\n", name.data());
  ICC_DPrintLogToFile("LinuxOpenPort %d, %d, %d, %d\r\n", type, port, baud, lock);
  if (const int result = ICC_OpenLinux(name.data(), baud); result != 0) return result;
  if (VK_OpenAuxPort(type, port, baud, lock) == 0) return 0;
  ResetAux(g_line.fd());
  g_line.Close();
  return GWQ_LINK_UNUSABLE;
}

int ICC_CloseLinuxAux(int lock) {
  if (!g_line.IsOpen()) return 0;
  VK_CloseAuxPort(lock);
  return ICC_CloseLinux();
}

int ICC_WriteLinuxAux(unsigned char* data, int length) {
  if (data == nullptr || length < 1) return GWQ_LINK_BAD_ARGUMENT;
  SendAround(g_AuxOp.szPrefix, g_AuxOp.nPrefixLen);
  const int result = ICC_WriteLinux(data, length);
  SendAround(g_AuxOp.szSuffix, g_AuxOp.nSuffixLen);
  return result;
}

int ICC_ReadLinuxAux(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
  return ICC_ReadLinux(buffer, maximum, timeout_s, end);
}

int ICC_CancelLinuxAuxRead() {
  if (!g_line.IsOpen()) return GWQ_LINK_NO_DEVICE;
  g_gate.Cancel();
  return 0;
}

}  // namespace gwq

using namespace gwq;

void ClearInvisibleCharInStr(char* text) {
  ICC_DPrintLogToFile("ClearInvisibleCharInStr  \n");
  if (text == nullptr) return;
  *std::remove_if(text, text + std::strlen(text), &IsInvisible) = '\0';
}

// Contract: replaces the descriptor without closing the one before it.
void SetAuxFd(int fd) {
  g_line.Use(fd);
  ICC_DPrintLogToFile("SetAuxFd  setg_AuxFd\n");
}

void ClearReceiveBuffer() {
  if (!g_line.IsOpen()) return;
  tcflush(g_line.fd(), TCIFLUSH);
  ICC_DPrintLogToFile("ClearReceiveBuffer  tcflush(g_AuxFd, TCIFLUSH) \n");
}
