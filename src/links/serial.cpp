#include "links/serial.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <termio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <ctime>

#include "diag/log.h"
#include "diag/shared_word.h"
#include "links/read_end.h"

namespace gwq {
namespace {

constexpr int kOpenFailed = -3;
constexpr int kSettingsFailed = -1;
constexpr int kBadArgument = -2;
constexpr int kWriteFailed = -5;
constexpr int kReadError = -6;
constexpr int kNotOpen = -7;
constexpr int kCancelled = -23;
constexpr int kClosed = -1;

int g_ComFd = kClosed;
struct termio g_OldTermio {};
int g_bComReading = 0;
int g_bComCancel = 0;

struct Speed {
  int baud;
  unsigned short code;
};

constexpr std::array kSpeeds{Speed{300, B300},     Speed{1200, B1200},   Speed{2400, B2400},
                             Speed{4800, B4800},   Speed{9600, B9600},   Speed{19200, B19200},
                             Speed{38400, B38400}, Speed{57600, B57600}, Speed{115200, B115200}};

// Bauds that are not in the table mean 9600, on purpose.
unsigned short SpeedCode(int baud) {
  const auto* const found =
      std::find_if(kSpeeds.begin(), kSpeeds.end(), [baud](const Speed& s) { return s.baud == baud; });
  return found == kSpeeds.end() ? static_cast<unsigned short>(B9600) : found->code;
}

// Raw 8N1 at the given speed; a read returns after 0.1 s at most, possibly with nothing.
struct termio RawSettings(const struct termio& saved, int baud) {
  struct termio raw = saved;
  raw.c_iflag &= static_cast<unsigned short>(~(ISTRIP | INLCR | IGNCR | ICRNL | IXON));
  raw.c_oflag &= static_cast<unsigned short>(~OPOST);
  raw.c_cflag = static_cast<unsigned short>(SpeedCode(baud) | CS8 | CREAD | CLOCAL);
  raw.c_lflag &= static_cast<unsigned short>(~(ISIG | ICANON | ECHO | NOFLSH));
  raw.c_cc[VMIN] = 0;
  raw.c_cc[VTIME] = 1;
  raw.c_cc[VQUIT] = 0x7F;
  return raw;
}

// The range is checked, for a length of 0 leaves the read to the device's settings and a negative one
// would count as a huge one.
ssize_t ReadSome(int fd, unsigned char* buffer, int room) {
  return read(fd, buffer, static_cast<std::size_t>(std::max(room, 0)));
}

int ReadUntilEnd(unsigned char* buffer, int maximum, const ReadEnd& end) {
  int count = 0;
  while (true) {
    if (LoadShared(g_bComCancel) != 0) return kCancelled;
    const ssize_t got = ReadSome(LoadShared(g_ComFd), buffer + count, maximum - count);
    if (got < 0) return kReadError;
    count += static_cast<int>(got);
    if (const auto result = end.Reached(buffer, count)) return *result;
  }
}

}  // namespace
}  // namespace gwq

using gwq::g_ComFd;
using gwq::kClosed;
using gwq::LoadShared;
using gwq::StoreShared;

int SetComAttr(int fd, int baud) {
  if (fd == kClosed) return gwq::kBadArgument;
  if (ioctl(fd, TCGETA, &gwq::g_OldTermio) != 0) return gwq::kSettingsFailed;
  struct termio raw = gwq::RawSettings(gwq::g_OldTermio, baud);
  return ioctl(fd, TCSETAF, &raw) == 0 ? 0 : gwq::kSettingsFailed;
}

int RestoreComAttr(int fd) {
  if (fd == kClosed) return gwq::kBadArgument;
  return ioctl(fd, TCSETAF, &gwq::g_OldTermio) == 0 ? 0 : gwq::kSettingsFailed;
}

int ICC_OpenLinuxCom(const char* path, int baud) {
  // A re-open leaves the settings of the port before as they are.
  if (LoadShared(g_ComFd) != kClosed) close(LoadShared(g_ComFd));
  ICC_DPrintLogToFile("ICC_OpenLinuxCom szTtyName=%s", path);
  const int fd = path == nullptr ? kClosed : open(path, O_RDWR);  // may become the controlling terminal
  StoreShared(g_ComFd, fd < 0 ? kClosed : fd);
  if (fd < 0) return gwq::kOpenFailed;
  if (SetComAttr(fd, baud) == 0) return 0;
  close(fd);
  StoreShared(g_ComFd, kClosed);
  return gwq::kSettingsFailed;
}

int ICC_CloseLinuxCom() {
  const int fd = LoadShared(g_ComFd);
  if (fd == kClosed) return 0;
  RestoreComAttr(fd);
  close(fd);
  StoreShared(g_ComFd, kClosed);
  return 0;
}

int SendDataToTransPort(const unsigned char* data, int length) {
  const int fd = LoadShared(g_ComFd);
  if (fd == kClosed || data == nullptr || length <= 0) return gwq::kBadArgument;
  int sent = 0;
  while (sent < length) {
    const ssize_t written = write(fd, data + sent, static_cast<std::size_t>(length - sent));
    if (written < 0) break;
    sent += static_cast<int>(written);
  }
  return sent;
}

int ICC_WriteLinuxCom(const unsigned char* data, int length) {
  if (data == nullptr || length < 1) return gwq::kBadArgument;
  const int sent = SendDataToTransPort(data, length);
  return sent >= 0 ? sent : gwq::kWriteFailed;
}

int ICC_ReadLinuxCom(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {
  if (LoadShared(g_ComFd) == kClosed || buffer == nullptr) return gwq::kBadArgument;
  ICC_DPrintLogToFile(" ICC_ReadLinuxCom nTimeOut=%d", timeout_s);
  StoreShared(gwq::g_bComCancel, 0);
  StoreShared(gwq::g_bComReading, 1);
  const int result = gwq::ReadUntilEnd(buffer, maximum, gwq::ReadEnd(maximum, timeout_s, end));
  StoreShared(gwq::g_bComReading, 0);
  return result;
}

int ICC_CancelLinuxComRead() {
  if (LoadShared(g_ComFd) == kClosed) return gwq::kNotOpen;
  if (LoadShared(gwq::g_bComReading) == 1) StoreShared(gwq::g_bComCancel, 1);
  return 0;
}

void SetComFd(int fd) {
  StoreShared(g_ComFd, fd);
}
