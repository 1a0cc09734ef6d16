// SPDX-License-Identifier: MIT
// The machine around the library while a fuzzer runs it: USB, serial lines, files, memory and the
// clock, all in the input's hand and without a second of real time. For programs linked with the
// --wrap options of fuzz/CMakeLists.txt; what another thread calls, or this one while no Machine is
// alive, goes to the system.
//
// Whatever must never happen (a double close, a read that outlives its time-out, something left
// open) ends the process.
#pragma once

#include <cstdint>
#include <cstdio>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace gwq::fuzz {

using Bytes = std::vector<std::uint8_t>;

[[noreturn]] void Fail(const std::string& what);

inline void Require(bool holds, const char* what) {
  if (!holds) Fail(what);
}

// What can be made to go wrong.
enum class Fault : std::uint8_t {
  kMemory,
  kUsbInit,
  kUsbList,
  kUsbDescriptor,
  kUsbOpen,
  kUsbDriver,
  kUsbClaim,
  kUsbIn,
  kUsbOut,
  kOpen,
  kRead,
  kWrite,
  kLineSettings,
  kFile,
  kTime,
  kClock,
  kCancel,  // not a failure: a cancel from outside in the middle of a transfer
  kPoll,
  kStuck,      // the line takes no bytes for a while
  kInterrupt,  // a signal ends a pause, a read or a write
  kStatus,     // stat and its kind fail, or tell of another user's file
  kStream,     // an open file cannot be read or written any more, or not be closed without an error
  kTempName,
  kDirectory,
  kEncoding,
  kThread,
  kCount
};

struct Held {
  std::size_t handles;
  std::size_t lists;
  std::size_t lines;
  int contexts;
};

class Machine {
 public:
  // `present` says what is plugged in: bits 0 and 1 the terminal under its two identities, bit 2
  // the serial lines.
  explicit Machine(unsigned present);
  ~Machine();
  Machine(const Machine&) = delete;
  Machine& operator=(const Machine&) = delete;

  static Machine* Current();
  // Nothing of what this thread calls from now on is the library's.
  static void Leave();

  // How the loader tells where the library is: by its whole path, by a relative one, not at all, by
  // one that is too long.
  void LoadFrom(unsigned manner) { loaded_from_ = manner; }
  [[nodiscard]] unsigned LoadedFrom() const { return loaded_from_; }

  // The call of that kind after so many others fails, in a manner that `value` chooses.
  void Plan(Fault fault, unsigned after, int value);
  std::optional<int> Strikes(Fault fault);

  // What the terminal says next: at once, or when it has been sent something since it last spoke.
  void Answer(Bytes bytes, bool when_asked);
  static void PutFile(const std::string& path, std::string_view content);
  // Where a path of the library is on this system; nothing for one that could lead outside.
  static std::optional<std::string> Place(std::string_view path);

  // The line belongs to the caller now, who may leave it open.
  void DisownLines() { lines_.clear(); }
  int OpenLine();
  [[nodiscard]] Held Holds() const;
  void ForgetContexts(int contexts) { contexts_ = contexts; }
  void RequireNothingHeld() const;

  // Fake milliseconds that went by, without those in which the device took no bytes, and without
  // the pause after a cancel of a link that hosts drive themselves.
  [[nodiscard]] std::int64_t SpentMs() const { return spent_ms_; }
  [[nodiscard]] std::int64_t WallMs() const { return wall_ms_; }
  [[nodiscard]] std::int64_t Reads() const { return reads_; }
  [[nodiscard]] std::int64_t Reports() const { return reports_; }
  // What set back clocks may have added to reads.
  [[nodiscard]] std::int64_t SlackMs() const { return slack_ms_; }

  // Runs a read of a link and sees that it ends in time.
  template <typename Read>
  int Timed(int timeout_s, Read read);

  // The host's code within a read: its time is not the read's.
  template <typename Code>
  int InHostsCode(Code code);

  // For the functions that stand in for the system's.
  void Sleep(std::int64_t ms);
  std::int64_t Seconds();
  int TransferIn(unsigned char* data, int length, unsigned timeout_ms, int* transferred);
  int TransferOut(int length, int* transferred);
  int ReadLine(void* buffer, std::size_t size);
  int WriteLine(std::size_t size);
  int Poll(int timeout_ms);
  int PollForBytes(int timeout_ms);
  // False when a signal ends it, with what is left of it in `ms`.
  bool Pause(std::int64_t& ms);
  std::FILE* Opened(std::FILE* stream);
  bool IsStream(std::FILE* stream) const { return streams_.contains(stream); }
  void ForgetStream(std::FILE* stream) { streams_.erase(stream); }
  bool IsLine(int fd) const { return lines_.contains(fd); }
  void CloseLine(int fd) { lines_.erase(fd); }

  struct Usb;
  Usb& usb() { return *usb_; }
  int& contexts() { return contexts_; }
  [[nodiscard]] unsigned present() const { return present_; }

 private:
  struct Planned {
    Fault fault;
    unsigned after;
    int value;
  };
  struct Spoken {
    Bytes bytes;
    bool when_asked;
  };

  [[nodiscard]] bool IsSilent() const;
  // Takes up to `size` bytes of what the terminal says; nothing when it is silent, which takes its time.
  std::size_t Listen(void* buffer, std::size_t size, std::int64_t idle_ms);
  void Idle(std::int64_t ms);

  unsigned present_;
  std::unique_ptr<Usb> usb_;
  std::vector<Planned> plans_;
  std::deque<Spoken> spoken_;
  std::set<int> lines_;
  std::set<std::FILE*> streams_;
  unsigned loaded_from_ = 0;
  int next_line_;
  int contexts_ = 0;
  int lowest_free_;
  bool asked_ = false;
  std::int64_t stuck_ms_ = 0;
  std::int64_t wall_ms_ = 0;
  std::int64_t spent_ms_ = 0;
  std::int64_t slack_ms_ = 0;
  std::int64_t reads_ = 0;
  std::int64_t reports_ = 0;
  std::int64_t read_ends_ms_ = 0;
  bool reading_ = false;
  int idle_polls_ = 0;
};

template <typename Read>
int Machine::Timed(int timeout_s, Read read) {
  constexpr std::int64_t kPollMs = 200;
  constexpr std::int64_t kPauseAfterErrorMs = 20;
  const std::int64_t allowed = std::int64_t{timeout_s < 0 ? 0 : timeout_s} * 1000 + 1000;
  const std::int64_t start = spent_ms_ - slack_ms_;
  const std::int64_t outer_ends_ms = read_ends_ms_;
  const bool outer_reading = reading_;
  read_ends_ms_ = spent_ms_ + allowed;
  idle_polls_ = 0;
  ++reads_;
  reading_ = true;
  const int result = read();
  reading_ = outer_reading;
  read_ends_ms_ = outer_ends_ms;
  const std::int64_t took = spent_ms_ - slack_ms_ - start;
  if (took > allowed + kPollMs + kPauseAfterErrorMs) {
    Fail("a read of " + std::to_string(timeout_s) + " s took " + std::to_string(took) + " ms");
  }
  return result;
}

template <typename Code>
int Machine::InHostsCode(Code code) {
  const bool outer_reading = reading_;
  const std::int64_t start = spent_ms_;
  reading_ = false;
  const int result = code();
  reading_ = outer_reading;
  slack_ms_ += spent_ms_ - start;
  return result;
}

}  // namespace gwq::fuzz
