// SPDX-License-Identifier: MIT
// A session with the terminal on USB or, with --serial PATH, at a line. The same keys each time, so that
// recordings can be compared; says on standard output what was answered.
//
//   recorded_host [--serial PATH] [--other] [--drain] [--brief]
//
//   --other   asks for another account's PIN block at the end
//   --drain   reads in vain more often, and cuts what it sends into other transfers
//   --brief   soon gives up waiting for an answer
#include <fcntl.h>
#include <libusb.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kReport = 1024;
constexpr unsigned char kOut = 0x02;
constexpr unsigned char kIn = 0x81;
constexpr unsigned kPatientMs = 30'000;
constexpr unsigned kBriefMs = 4'000;
constexpr unsigned kDrainMs = 40;

class Line {
 public:
  Line() = default;
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;
  virtual ~Line() = default;
  virtual bool Send(const std::string& command) = 0;
  virtual std::string Receive(unsigned limit_ms) = 0;
};

class UsbLine final : public Line {
 public:
  explicit UsbLine(bool cuts) : cuts_(cuts) {
    libusb_init(&context_);
    libusb_device** list = nullptr;
    if (libusb_get_device_list(context_, &list) > 0) libusb_open(list[0], &handle_);
    libusb_free_device_list(list, 1);
    if (handle_ == nullptr) return;
    libusb_detach_kernel_driver(handle_, 0);
    libusb_claim_interface(handle_, 0);
  }
  ~UsbLine() override {
    if (handle_ != nullptr) libusb_close(handle_);
    libusb_exit(context_);
  }

  bool Send(const std::string& command) override {
    if (handle_ == nullptr) return false;
    std::array<unsigned char, kReport> report{};
    std::copy(command.begin(), command.end(), report.begin());
    const int first = cuts_ ? 600 : static_cast<int>(kReport);
    return Write(report.data(), first) && (!cuts_ || Write(report.data() + first, kReport - 600));
  }

  std::string Receive(unsigned limit_ms) override {
    if (handle_ == nullptr) return "";
    std::array<unsigned char, kReport> report{};
    int count = 0;
    libusb_interrupt_transfer(handle_, kIn, report.data(), kReport, &count, limit_ms);
    return {report.begin(), report.begin() + count};
  }

 private:
  bool Write(unsigned char* bytes, int size) {
    int count = 0;
    return libusb_interrupt_transfer(handle_, kOut, bytes, size, &count, kPatientMs) == 0 && count == size;
  }

  libusb_context* context_ = nullptr;
  libusb_device_handle* handle_ = nullptr;
  bool cuts_;
};

class SerialLine final : public Line {
 public:
  explicit SerialLine(const char* path) : fd_(open(path, O_RDWR | O_NOCTTY)) {}
  ~SerialLine() override { close(fd_); }

  bool Send(const std::string& command) override {
    return write(fd_, command.data(), command.size()) == static_cast<ssize_t>(command.size());
  }

  std::string Receive(unsigned limit_ms) override {
    pollfd readable{fd_, POLLIN, 0};
    std::array<char, kReport> piece{};
    if (poll(&readable, 1, static_cast<int>(limit_ms)) <= 0) return "";
    const ssize_t count = read(fd_, piece.data(), piece.size());
    return {piece.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
  }

 private:
  int fd_;
};

std::string Split(std::string_view bytes) {
  std::string text;
  for (const char byte : bytes) {
    const auto value = static_cast<unsigned char>(byte);
    text += static_cast<char>('0' + (value >> 4));
    text += static_cast<char>('0' + (value & 0x0F));
  }
  return text;
}

// Zero padding does not count.
void Print(const std::string& answer) {
  const std::size_t end = answer.find_last_not_of('\0');
  const std::string meant = end == std::string::npos ? "" : answer.substr(0, end + 1);
  for (const char byte : meant) std::printf("%02x", static_cast<unsigned>(static_cast<unsigned char>(byte)));
  std::printf("\n");
}

struct Habits {
  bool other = false;
  bool drains = false;
  bool brief = false;
};

bool Ask(Line& line, const std::string& command, const Habits& habits) {
  if (habits.drains) line.Receive(kDrainMs);
  if (!line.Send(command)) return false;
  const std::string answer = line.Receive(habits.brief ? kBriefMs : kPatientMs);
  Print(answer);
  return !answer.empty();
}

std::vector<std::string> Commands(bool other) {
  const std::string factory(16, '1');
  const std::string master = "\x01\x23\x45\x67\x89\xAB\xCD\xEF\xFE\xDC\xBA\x98\x76\x54\x32\x10";
  const std::string account = other ? "6225880123456780" : "6225880123456789";
  return {"\033[0GETVERSION",
          "\033R\r\n",
          "\033M" + Split("\x03" + factory + master) + "\r\n",
          "\033S" + Split("\x03\x07" + std::string("SECRET-WORK-KEY!")) + "\r\n",
          "\033A" + Split("\x03\x07") + "\r\n",
          "\x82",
          "\033F10\r\n",
          "\033I10" + account + "\r\n"};
}

}  // namespace

int main(int argc, char** argv) {
  Habits habits;
  const char* path = nullptr;
  for (int i = 1; i < argc; ++i) {
    habits.other = habits.other || std::strcmp(argv[i], "--other") == 0;
    habits.drains = habits.drains || std::strcmp(argv[i], "--drain") == 0;
    habits.brief = habits.brief || std::strcmp(argv[i], "--brief") == 0;
    if (std::strcmp(argv[i], "--serial") == 0) path = argv[++i];
  }
  std::unique_ptr<Line> line;
  if (path != nullptr) {
    line = std::make_unique<SerialLine>(path);
  } else {
    line = std::make_unique<UsbLine>(habits.drains);
  }
  for (const std::string& command : Commands(habits.other)) {
    if (!Ask(*line, command, habits)) return 9;
  }
  return 0;
}
