// The framed commands: a body goes out in a frame, a status word with data comes back.
#pragma once

#include <span>
#include <string_view>

#include <gwq/frame/port.h>
#include "codec/internal/secret.h"
#include "frame/internal/ask.h"

namespace gwq {

class PadAnswer;

// A command's body under construction: the command's two bytes, then its arguments. What does not fit into
// the room, where a terminator is kept, is cut.
class PadBody {
 public:
  static constexpr std::size_t kUsualRoom = 256;
  explicit PadBody(int command, std::size_t room = kUsualRoom);

  PadBody& operator<<(std::string_view bytes);
  // The low byte of a number.
  PadBody& operator<<(int number);

  // False when there was no memory.
  explicit operator bool() const { return static_cast<bool>(bytes_); }

  // What the pad gets: everything before the first zero byte.
  [[nodiscard]] std::span<const unsigned char> Sent() const;

 private:
  SecretHeap<char> bytes_;
  std::size_t size_ = 0;
};

// A body packed for sending.
class PadFrame {
 public:
  explicit PadFrame(const PadBody& body);

  // False when there was no memory for the body or for its frame.
  explicit operator bool() const { return length_ > 0; }

 private:
  friend int AskPad(Line line, PadFrame& frame, int timeout_ms, PadAnswer& answer);

  SecretHeap<unsigned char> bytes_;
  int length_ = 0;
};

class PadAnswer {
 public:
  // The pad's status word, or GWQ_BAD_FRAME.
  [[nodiscard]] int status() const { return status_; }
  [[nodiscard]] std::span<const unsigned char> data() const {
    return {data_.data(), static_cast<std::size_t>(length_)};
  }
  // The answer as it came, frame and all.
  [[nodiscard]] std::string_view raw() const { return raw_.text(); }

 private:
  friend int AskPad(Line line, PadFrame& frame, int timeout_ms, PadAnswer& answer);
  void Unpack();

  AnswerText<1024> raw_;
  SecretArray<unsigned char, 1024> data_;
  int length_ = 0;
  int status_ = GWQ_BAD_FRAME;
};

// Sends a command and takes the answer apart. Returns the exchange's status.
int AskPad(Line line, PadFrame& frame, int timeout_ms, PadAnswer& answer);

// Packs a body and sends it. Returns the exchange's status, or -1 when there is no memory.
int AskPad(Line line, const PadBody& body, int timeout_ms, PadAnswer& answer);

// -14 for a status word that is not success and for a damaged answer.
inline int RefusedUnlessDone(int status) {
  return status == GWQ_OK ? GWQ_OK : GWQ_REFUSED;
}

// Copies data into a caller's buffer and terminates them.
void CopyOut(std::span<const unsigned char> data, char* out);

}  // namespace gwq
