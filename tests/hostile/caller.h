// SPDX-License-Identifier: MIT
// Calls functions of the loaded library with random and extreme arguments. Every buffer is a heap
// block exactly as large as the headers say, so that AddressSanitizer sees the first byte beside
// it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace gwq::test {

// Where the calls are made.
struct Scene {
  std::function<std::int64_t()> now_ms;
  int serial_port = 0;        // 0: there is none
  int longest_wait_s = 1;     // for the customer
  std::size_t long_text = 0;  // bytes in the longest texts
  std::string directory;      // for local files
};

// The longest that a call may take: its time-outs, each to the change of the clock's second and the
// end of the transfer that is under way, and its pauses.
struct Limit {
  std::int64_t ms = 0;
  std::int64_t ms_per_report = 0;  // and this for each report that the terminal sends
};

Limit operator+(Limit a, Limit b);
Limit Exchange(std::int64_t timeout_ms);
Limit Pause(std::int64_t ms);

class Caller {
 public:
  Caller(Scene scene, std::uint64_t seed);

  // Of the next Run.
  void Take(void* symbol) { symbol_ = symbol; }

  // Forgets what the call before it may take.
  void Begin() {
    limit_ = {};
    seconds_ = 0;
  }
  // More of what the call may take, as its arguments tell.
  void Allow(Limit more) { limit_ = limit_ + more; }
  [[nodiscard]] Limit Allowed() const { return limit_; }
  // The customer's time that was drawn last.
  [[nodiscard]] int DrawnSeconds() const { return seconds_; }

  // `Function` is a pointer to a function of the symbol's type.
  template <typename Function, typename... Arguments>
  void Run(Arguments... arguments) {
    const std::int64_t before = scene_.now_ms();
    if constexpr (std::is_void_v<decltype(reinterpret_cast<Function>(symbol_)(arguments...))>) {
      reinterpret_cast<Function>(symbol_)(arguments...);
    } else {
      result_ = reinterpret_cast<Function>(symbol_)(arguments...);
    }
    took_ms_ = scene_.now_ms() - before;
  }

  [[nodiscard]] int Result() const { return result_; }
  [[nodiscard]] std::int64_t TookMs() const { return took_ms_; }
  // The buffers of a call go with the next one.
  void Forget() { blocks_.clear(); }

  std::uint64_t Below(std::uint64_t limit) { return random_() % limit; }
  bool Once(std::uint64_t in) { return Below(in) == 0; }
  template <typename T>
  T OneOf(std::initializer_list<T> values) {
    return *std::next(values.begin(), static_cast<std::ptrdiff_t>(Below(values.size())));
  }

  int Port();
  int Baud();
  // Mostly from `low` to `high`, else beside it or extreme.
  int Int(int low, int high);
  // Mostly a time that the customer gets; never one longer than the scene allows, but for what is refused.
  int Seconds();
  // The same for a function that refuses nothing.
  int AnySeconds() { return seconds_ = OneOf({-1, 0, 1, static_cast<int>(1 + Below(Longest()))}); }

  // Text of the terminal's kind, mostly short; sometimes NULL if `null` is set.
  char* Text(bool null = true);
  char* Digits();
  char* Hex();
  char* Path();      // of a local file, which mostly exists
  char* PathList();  // the same, several
  char* NewPath();   // of one to be written
  char* Command();
  char* Copy(std::string_view text);

  // `size` zeroed bytes.
  char* Out(std::size_t size);
  unsigned char* OutBytes(std::size_t size) { return reinterpret_cast<unsigned char*>(Out(size)); }
  // None for a size below zero.
  char* OutOfSize(int size) { return Out(static_cast<std::size_t>(size < 0 ? 0 : size)); }
  template <typename T>
  T* OutOf(T value = {}) {
    return static_cast<T*>(std::memcpy(Out(sizeof(T)), &value, sizeof(T)));
  }

 private:
  [[nodiscard]] std::uint64_t Longest() const { return static_cast<std::uint64_t>(scene_.longest_wait_s); }
  std::string RandomText(std::size_t length, int kind);
  std::string SomePath();

  Scene scene_;
  std::mt19937_64 random_;
  void* symbol_ = nullptr;
  Limit limit_;
  int seconds_ = 0;
  int result_ = 0;
  std::int64_t took_ms_ = 0;
  std::vector<std::unique_ptr<char[]>> blocks_;
};

}  // namespace gwq::test
