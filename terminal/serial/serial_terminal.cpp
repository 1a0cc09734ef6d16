// SPDX-License-Identifier: MIT
#include "serial/serial_terminal.h"

#include <fcntl.h>
#include <stdlib.h>
#include <termios.h>

#include <array>

#include "base/errors.h"
#include "recording/recorder.h"

namespace gwq::terminal::serial {
namespace {

std::string SlavePath(int master) {
  std::array<char, 128> path{};
  if (ptsname_r(master, path.data(), path.size()) != 0) ThrowErrno("ptsname");
  return path.data();
}

void MakeRaw(int fd) {
  termios settings{};
  Checked(tcgetattr(fd, &settings), "tcgetattr");
  cfmakeraw(&settings);
  cfsetspeed(&settings, B9600);
  Checked(tcsetattr(fd, TCSANOW, &settings), "tcsetattr");
}

}  // namespace

PtyPair::PtyPair()
    : master(Checked(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC), "posix_openpt")) {
  Checked(grantpt(master.Get()), "grantpt");
  Checked(unlockpt(master.Get()), "unlockpt");
  slave_path = SlavePath(master.Get());
  slave.Reset(Checked(open(slave_path.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), slave_path));
  MakeRaw(slave.Get());
}

void SerialTerminal::Join(EventLoop& loop) {
  watch_ = loop.OnReady(pty_.master.Get(), [this](unsigned ready) {
    if ((ready & ~EventLoop::kOut) != 0) ReadLine();
    if ((ready & EventLoop::kOut) != 0) WriteLine();
  });
  joined_ = true;
  loop.Add(*this);
}

void SerialTerminal::Advance(Time now) {
  line_.Advance(now);
  CollectAnswers();
}

void SerialTerminal::Use(const std::function<void(Time now)>& action) {
  const Time now = clock_.Now();
  action(now);
  line_.Advance(now);
  CollectAnswers();
}

void SerialTerminal::ReadLine() {
  std::array<std::uint8_t, 4096> buffer{};
  const ssize_t count = read(pty_.master.Get(), buffer.data(), buffer.size());
  if (count <= 0) return;
  Record(false, std::span(buffer).first(static_cast<std::size_t>(count)));
  line_.Receive(std::span(buffer).first(static_cast<std::size_t>(count)), clock_.Now());
  CollectAnswers();
}

void SerialTerminal::Record(bool to_host, std::span<const std::uint8_t> bytes) {
  if (recorder_ != nullptr) recorder_->Serial(to_host, bytes);
}

void SerialTerminal::CollectAnswers() {
  if (line_.TakeWithdrawal()) unsent_.clear();
  while (const std::optional<Bytes> answer = line_.TakeAnswer())
    unsent_.insert(unsent_.end(), answer->begin(), answer->end());
  WriteLine();
}

void SerialTerminal::WriteLine() {
  if (!unsent_.empty()) SendSome();
  if (joined_) watch_.Want(EventLoop::kIn | (unsent_.empty() ? 0U : EventLoop::kOut));
}

void SerialTerminal::SendSome() {
  const ssize_t count = write(pty_.master.Get(), unsent_.data(), unsent_.size());
  if (count <= 0) return;
  Record(true, std::span(unsent_).first(static_cast<std::size_t>(count)));
  unsent_.erase(unsent_.begin(), unsent_.begin() + count);
}

}  // namespace gwq::terminal::serial
