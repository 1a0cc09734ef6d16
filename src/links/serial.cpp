#include <gwq/links/serial.h>

#include "links/internal/serial_write.h"

#include <termio.h>

#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "diag/internal/shared_word.h"
#include "links/internal/lifetime.h"
#include "links/internal/read_end.h"
#include "links/internal/terminal_line.h"

namespace gwq {
namespace {

int g_ComFd = tty::kClosed;
struct termio g_OldTermio {};
int g_bComReading = 0;
int g_bComCancel = 0;

int ReadUntilEnd(unsigned char* buffer, int maximum, const ReadEnd& end) {
  int count = 0;
  while (true) {
    if (LoadShared(g_bComCancel) != 0) return GWQ_CANCELLED;
    const ssize_t got = tty::Read(LoadShared(g_ComFd), buffer + count, maximum - count);
    if (got < 0) return GWQ_LINK_READ;
    count += static_cast<int>(got);
    if (const auto result = end.Reached(buffer, count)) return *result;
  }
}

}  // namespace

// The settings stay as they are: the parent still uses the device.
void ForgetSerialLink() {
  tty::Close(g_ComFd);
  g_bComReading = 0;
}

}  // namespace gwq

using gwq::g_ComFd;
using gwq::LoadShared;
using gwq::StoreShared;
namespace tty = gwq::tty;

int SetComAttr(int fd, int baud) {
  return tty::SetUp(fd, baud, gwq::g_OldTermio);
}

int RestoreComAttr(int fd) {
  return tty::Restore(fd, gwq::g_OldTermio);
}

int ICC_OpenLinuxCom(const char* path, int baud) {
  tty::Close(g_ComFd);
  ICC_DPrintLogToFile("ICC_OpenLinuxCom szTtyName=%s", path);
  return tty::Open(g_ComFd, path, baud, &SetComAttr);
}

int ICC_CloseLinuxCom() {
  if (LoadShared(g_ComFd) == tty::kClosed) return 0;
  RestoreComAttr(LoadShared(g_ComFd));
  tty::Close(g_ComFd);
  StoreShared(gwq::g_bComReading, 0);  // of a read that a predicate has jumped out of
  return 0;
}

int SendDataToTransPort(unsigned char* data, int length) {
  return tty::Write(LoadShared(g_ComFd), data, length);
}

int gwq::WriteSerial(unsigned char* data, int length, const tty::WriteEnd& end) {
  if (data == nullptr || length < 1) return GWQ_LINK_BAD_ARGUMENT;
  const int sent = tty::Write(LoadShared(g_ComFd), data, length, end);
  return sent >= 0 ? sent : GWQ_LINK_WRITE;
}

int ICC_WriteLinuxCom(unsigned char* data, int length) {
  return gwq::WriteSerial(data, length, {});
}

int ICC_ReadLinuxCom(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
  if (LoadShared(g_ComFd) == tty::kClosed || buffer == nullptr) return GWQ_LINK_BAD_ARGUMENT;
  ICC_DPrintLogToFile(" ICC_ReadLinuxCom nTimeOut=%d", timeout_s);
  const int outer_reading =
      LoadShared(gwq::g_bComReading);  // 1 for a read that the outer one's predicate makes
  StoreShared(gwq::g_bComCancel, 0);
  StoreShared(gwq::g_bComReading, 1);
  const int result = gwq::ReadUntilEnd(buffer, maximum, gwq::ReadEnd(maximum, timeout_s, end));
  StoreShared(gwq::g_bComReading, outer_reading);
  return result;
}

int ICC_CancelLinuxComRead() {
  if (LoadShared(g_ComFd) == tty::kClosed) return GWQ_LINK_NO_DEVICE;
  if (LoadShared(gwq::g_bComReading) == 1) StoreShared(gwq::g_bComCancel, 1);
  return 0;
}

void SetComFd(int fd) {
  StoreShared(g_ComFd, fd);
}
