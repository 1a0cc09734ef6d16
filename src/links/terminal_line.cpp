#include "links/terminal_line.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "diag/shared_word.h"

namespace gwq::tty {
namespace {

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

}  // namespace

int SetUp(int fd, int baud, struct termio& saved) {
  if (fd == kClosed) return kBadArgument;
  if (ioctl(fd, TCGETA, &saved) != 0) return kSettingsFailed;
  struct termio raw = RawSettings(saved, baud);
  return ioctl(fd, TCSETAF, &raw) == 0 ? 0 : kSettingsFailed;
}

int Restore(int fd, const struct termio& saved) {
  if (fd == kClosed) return kBadArgument;
  return ioctl(fd, TCSETAF, &saved) == 0 ? 0 : kSettingsFailed;
}

int Open(int& shared_fd, const char* path, int baud, int (*set_up)(int fd, int baud)) {
  Close(shared_fd);
  const int fd = path == nullptr ? kClosed : open(path, O_RDWR);  // may become the controlling terminal
  if (fd < 0) return kOpenFailed;
  StoreShared(shared_fd, fd);
  if (set_up(fd, baud) == 0) return 0;
  Close(shared_fd);
  return kSettingsFailed;
}

void Close(int& shared_fd) {
  const int fd = LoadShared(shared_fd);
  if (fd == kClosed) return;
  close(fd);
  StoreShared(shared_fd, kClosed);
}

int Write(int fd, const unsigned char* data, int length) {
  if (fd == kClosed || data == nullptr || length <= 0) return kBadArgument;
  int sent = 0;
  while (sent < length) {
    const ssize_t written = write(fd, data + sent, static_cast<std::size_t>(length - sent));
    if (written < 0) break;
    sent += static_cast<int>(written);
  }
  return sent;
}

// A negative room, from a maximum below 0, would count as a huge one.
ssize_t Read(int fd, unsigned char* buffer, int room) {
  return read(fd, buffer, static_cast<std::size_t>(std::max(room, 0)));
}

}  // namespace gwq::tty
