// SPDX-License-Identifier: MIT
// The library over the real libusb, with the virtual terminal on the other side; run under
// gwq-terminal. The terminal is another process: an exchange is measured by this process's own
// time, a push, which never waits long, by the clock's.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <gwq/codec/packet.h>
#include <gwq/files/push.h>
#include <gwq/frame/transaction.h>
#include "bare_exchange.h"
#include "side.h"
#include "usb_ids.h"

namespace gwq::bench {
namespace {

constexpr std::size_t kPushed = 10'000'000;
constexpr std::size_t kPiece = 200'000;
constexpr std::size_t kHeader = 6;
constexpr int kVid = kUsbIdentities[0].vid;
constexpr int kPid = kUsbIdentities[0].pid;

// A benchmark of something that failed would lie.
void Require(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "gwq_bench_usb: %s failed\n", what);
  std::exit(1);
}

void Exchange() {
  char command[] = "\x1B[0GETVERSION";
  std::array<char, 4096 + 1024> answer{};
  int length = 4096;
  const int result =
      TransProc(0, 9600, command, static_cast<int>(sizeof command - 1), answer.data(), &length, 2000);
  Require(result == 0 && answer[0] == 0x02, "the exchange");
}

void Bare() {
  std::array<char, BARE_REPORT> answer{};
  const int read = BareExchange(kVid, kPid, "\x1B[0GETVERSION", answer.data());
  Require(read > 0 && answer[0] == 0x02, "the bare exchange");
}

using Packet = std::vector<unsigned char>;

Packet WholeReports(Packet packet) {
  packet.resize((packet.size() + BARE_REPORT - 1) / BARE_REPORT * BARE_REPORT);
  return packet;
}

Packet TransferPacket(unsigned char type, const Packet& payload) {
  const std::size_t size = payload.size();
  Packet packet(kHeader + size);
  packet[0] = 0x02;
  packet[1] = type;
  packet[2] = getLRC(payload.data(), static_cast<int>(size));
  for (std::size_t i = 0; i < 3; ++i) packet[3 + i] = static_cast<unsigned char>(size >> (16 - 8 * i));
  std::copy(payload.begin(), payload.end(), packet.begin() + kHeader);
  return WholeReports(packet);
}

Packet FromText(unsigned char first, std::string_view text) {
  Packet packet(1 + text.size(), first);
  std::copy(text.begin(), text.end(), packet.begin() + 1);
  return packet;
}

// All that a push of this content sends.
std::vector<Packet> PushedPackets(const Packet& content) {
  std::vector<Packet> packets = {WholeReports(FromText(0x1B, "[0HIDCHANGE")), TransferPacket(1, {})};
  for (auto at = content.begin();; at += static_cast<std::ptrdiff_t>(kPiece)) {
    const auto left = static_cast<std::size_t>(content.end() - at);
    packets.push_back(
        TransferPacket(2, Packet(at, at + static_cast<std::ptrdiff_t>(std::min(left, kPiece)))));
    if (left < kPiece) break;
  }
  packets.push_back(TransferPacket(3, FromText(255, "/tmp/bench")));
  return packets;
}

struct Pushed {
  Pushed() : content(kPushed, 'x'), packets(PushedPackets(content)) {
    for (const Packet& packet : packets) bare.push_back({packet.data(), packet.size() / BARE_REPORT});
    std::snprintf(path.data(), path.size(), "%s", "/tmp/gwq-bench-XXXXXX");
    const int fd = mkstemp(path.data());
    std::FILE* const file = fdopen(fd, "wb");
    Require(file != nullptr && std::fwrite(content.data(), 1, content.size(), file) == content.size(),
            "writing the file to push");
    std::fclose(file);
  }
  ~Pushed() { std::remove(path.data()); }
  Pushed(const Pushed&) = delete;
  Pushed& operator=(const Pushed&) = delete;

  Packet content;
  std::vector<Packet> packets;
  std::vector<BarePacket> bare;
  std::array<char, 64> path{};
};

Pushed& ThePushed() {
  static Pushed s_pushed;
  return s_pushed;
}

void Push() {
  Require(Z11DownLoadFile(0, '9', 9600, 255, ThePushed().path.data(), "/tmp/bench") == 0, "the push");
}

void BareLoop() {
  Require(BarePush(kVid, kPid, ThePushed().bare.data(), ThePushed().bare.size()) == 0, "the bare push");
}

// A read that nothing answers; its processor time is this process's alone.
void Wait() {
  std::array<char, 1024 + 1024> answer{};
  int length = 1024;
  Require(TransProcOnlyRead(0, 9600, answer.data(), &length, 2000) == -11, "waiting in vain");
}

const bool kRegistered = [] {
  Side("exchange, virtual terminal", 0, "gwq", &Exchange);
  Side("exchange, virtual terminal", 0, "bare C", &Bare);
  Side("push of 10 MB, virtual terminal", kPushed, "gwq", &Push)->UseRealTime()->Iterations(1);
  Side("push of 10 MB, virtual terminal", kPushed, "bare C", &BareLoop)->UseRealTime()->Iterations(1);
  Side("waiting", 0, "gwq", &Wait)->MeasureProcessCPUTime()->Iterations(1);
  return true;
}();

}  // namespace
}  // namespace gwq::bench
