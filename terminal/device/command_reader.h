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
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>

#include "device/device.h"
#include "device/secret.h"

namespace gwq::terminal {

// A command as it came, its marks included. Secret, because it may load a key.
struct Command {
  enum class Kind { kText, kFrame, kNoise };
  Kind kind = Kind::kNoise;
  SecretBytes bytes;           // empty for noise
  std::size_t noise_size = 0;  // how many bytes of noise there were
};

class CommandReader {
 public:
  using Sink = std::function<void(Command&&)>;

  static constexpr std::size_t kReportSize = 1024;
  static constexpr std::size_t kMaxCommand = std::size_t{1} << 20;
  // Silence that ends a command without an end mark ...
  static constexpr Time kGap{20};
  // ... and silence after which the rest of a marked one will not come any more.
  static constexpr Time kPatience{1000};

  CommandReader(Line line, Sink sink);

  // On a USB line `bytes` begins at the start of a report.
  void Feed(std::span<const std::uint8_t> bytes, Time now);
  void Advance(Time now);
  [[nodiscard]] std::optional<Time> NextDeadline() const;

 private:
  enum class State { kIdle, kText, kPayload, kFrame, kNoise, kSkip };

  void FeedReports(std::span<const std::uint8_t> bytes);
  void Take(std::uint8_t byte);
  void Begin(std::uint8_t byte);
  void TakeText(std::uint8_t byte);
  void TakeNoise(std::uint8_t byte);
  void TakeUntilEtx(std::uint8_t byte);
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
};

}  // namespace gwq::terminal
