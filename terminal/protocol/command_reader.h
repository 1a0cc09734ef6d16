// SPDX-License-Identifier: MIT
// Cuts what the host sends into commands.
//
//   ESC text                 ends at zero padding, at a short USB report, at the
//                            next command, or where the line falls silent
//   ESC text STX data ETX    ends at ETX
//   ESC letter data CR LF    ends at LF
//   STX nibbles ETX          a PIN-pad frame
//   0x81, 0x82, 0x83         each a command of its own
//
// A command may come in any number of pieces. Bytes that begin none of these are
// reported as one piece of noise, as is a command longer than any real one.
//
// While a file is expected, packets (transfer_packet.h) are read too. Their length
// says where they end, so they may hold any byte; zeros between them are padding.
//
//              ExpectPackets                    STX, type
//   (commands) -------------> (between packets) ---------> (in a packet)
//        ^                          |     ^                  |      |
//        |  any other command,      |     +------------------+      |
//        |  EndPackets, silence     |        length reached         | silence:
//        +--------------------------+                               | cut, and no more expected
//        +----------------------------------------------------------+
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "base/secret.h"
#include "base/types.h"
#include "protocol/transfer_packet.h"

namespace gwq::terminal::protocol {

// A command as it came, its marks included. Secret, because it may load a key.
struct Command {
  enum class Kind { kText, kFrame, kNoise };
  Kind kind = Kind::kNoise;
  SecretBytes bytes;           // empty for noise
  std::size_t noise_size = 0;  // how many bytes of noise there were
};

// Takes packets as they come.
class PacketSink {
 public:
  virtual void BeginPacket(const PacketHeader& header) = 0;
  virtual void TakePayload(std::span<const std::uint8_t> piece) = 0;
  virtual void EndPacket() = 0;
  // No packet is expected any more, for a reason other than EndPackets.
  virtual void PacketsOver(const char* why) = 0;

 protected:
  ~PacketSink() = default;
};

class CommandReader {
 public:
  using Sink = std::function<void(Command&&)>;

  static constexpr std::size_t kReportSize = 1024;
  // Room for a page of 2 MB, which doubles in split form.
  static constexpr std::size_t kMaxCommand = (std::size_t{4} << 20) + kReportSize;
  // Silence that ends a command without an end mark ...
  static constexpr Time kGap{20};
  // ... and silence after which the rest of a marked one will not come any more.
  static constexpr Time kPatience{1000};
  // ... and silence between packets after which no more are expected.
  static constexpr Time kPacketPatience{30000};

  CommandReader(Line line, Sink sink);

  // On a USB line `bytes` begins at the start of a report.
  void Feed(std::span<const std::uint8_t> bytes, Time now);
  void Advance(Time now);
  [[nodiscard]] std::optional<Time> NextDeadline() const;

  // From the next byte on; also out of a Sink. `sink` must outlive the reader.
  void ExpectPackets(PacketSink& sink) { packets_ = &sink; }
  void EndPackets() { packets_ = nullptr; }

 private:
  enum class State { kIdle, kText, kPayload, kFrame, kNoise, kSkip, kPacketHeader, kPacketBody };

  void FeedReports(std::span<const std::uint8_t> bytes);
  void TakeAll(std::span<const std::uint8_t> bytes);
  void Take(std::uint8_t byte);
  void Begin(std::uint8_t byte);
  void TakeText(std::uint8_t byte);
  void TakeNoise(std::uint8_t byte);
  void TakeUntilEtx(std::uint8_t byte);
  void TakePacketHeader(std::uint8_t byte);
  [[nodiscard]] std::size_t TakePacketBody(std::span<const std::uint8_t> bytes);
  void FinishPacket();
  void StopPackets(const char* why);
  void Store(std::uint8_t byte);
  void Finish();
  void Emit(Command::Kind kind);
  [[nodiscard]] bool EndsBySilence() const;

  Line line_;
  Sink sink_;
  State state_ = State::kIdle;
  SecretBytes bytes_;
  std::size_t noise_size_ = 0;
  Time last_byte_{0};
  PacketSink* packets_ = nullptr;
  std::array<std::uint8_t, kPacketHeaderSize> header_{};
  std::size_t header_size_ = 0;
  std::size_t body_left_ = 0;
};

}  // namespace gwq::terminal::protocol
