// SPDX-License-Identifier: MIT
#include "machine.h"

#include <cjson/cJSON.h>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <iconv.h>
#include <libusb-1.0/libusb.h>
#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termio.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <utility>

#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include <gwq/links/aux_port.h>
#include <gwq/links/serial.h>
#include <gwq/links/usb_hid.h>
#include <gwq/links/usb_interrupt.h>
#include "support/temp_dir.h"
#include "usb_ids.h"

struct libusb_device {
  int vid;
  int pid;
};
struct libusb_device_handle {
  bool claimed = false;
};

extern "C" {
int __real_open(const char* path, int flags, ...);
int __real_close(int fd);
void* __real_malloc(std::size_t size);
}

namespace gwq::fuzz {
namespace {

constexpr std::time_t kStart = 1'709'600'000;  // 2024-03-05
constexpr int kFirstLine = 100'000;            // no descriptor of the system's
constexpr std::int64_t kPauseOfHosts = 100'000'000;
constexpr std::int64_t kStuckStepMs = 500;

thread_local Machine* t_machine = nullptr;

const test::TempDir& Root() {
  static const test::TempDir s_root;
  return s_root;
}

int LowestFree() {
  const int fd = __real_open("/dev/null", O_RDONLY);
  __real_close(fd);
  return fd;
}

bool g_root_changed = true;

// The library's directory, and documents of a caller.
void FillRoot() {
  if (!std::exchange(g_root_changed, false)) return;
  for (const auto& entry : std::filesystem::directory_iterator(Root().Path()))
    std::filesystem::remove_all(entry);
  for (const char* directory : {"tmp", "lib", "docs"}) std::filesystem::create_directory(Root() / directory);
  for (const char* name : {"docs/a.pdf", "docs/b.jpg", "docs/c.htm", "docs/update.dat"})
    test::WriteFile(Root() / name, name);
}

// libcjson is a library of its own, whose memory can fail all the same.
void* AllocateForJson(std::size_t size) {
  return t_machine != nullptr && t_machine->Strikes(Fault::kMemory) ? nullptr : __real_malloc(size);
}

// From outside, while a transfer waits; one of those that never wait themselves.
void Cancel(int value) {
  using Function = void (*)();
  static constexpr std::array<Function, 7> kCancels{[] { CancelRead(); },
                                                    [] { CancelWrite(); },
                                                    [] { ICC_CancelLinuxHidRead(); },
                                                    [] { ICC_CancelLinuxComRead(); },
                                                    [] { ICC_CancelLinuxSdtRead(); },
                                                    [] { ICC_CancelLinuxAuxRead(); },
                                                    [] { ICC_CancelReadTransPort(); }};
  kCancels[static_cast<unsigned>(value) % kCancels.size()]();
}

}  // namespace

struct Machine::Usb {
  std::vector<libusb_device> devices;
  std::set<libusb_device_handle*> handles;
  std::set<libusb_device**> lists;
};

void Fail(const std::string& what) {
  Machine::Leave();
  std::fprintf(stderr, "\n==fuzz== %s\n", what.c_str());
  std::abort();
}

Machine::Machine(unsigned present)
    : present_(present), usb_(std::make_unique<Usb>()), next_line_(kFirstLine) {
  FillRoot();
  lowest_free_ = LowestFree();
  for (unsigned i = 0; i < std::size(kUsbIdentities); ++i) {
    if ((present >> i & 1U) != 0) usb_->devices.push_back({kUsbIdentities[i].vid, kUsbIdentities[i].pid});
  }
  cJSON_Hooks hooks{.malloc_fn = &AllocateForJson, .free_fn = &std::free};
  cJSON_InitHooks(&hooks);
  t_machine = this;
}

Machine::~Machine() {
  Leave();
}

void Machine::Leave() {
  t_machine = nullptr;
}

Machine* Machine::Current() {
  return t_machine;
}

void Machine::Plan(Fault fault, unsigned after, int value) {
  plans_.push_back({fault, after, value});
}

std::optional<int> Machine::Strikes(Fault fault) {
  const auto plan =
      std::find_if(plans_.begin(), plans_.end(), [fault](const Planned& p) { return p.fault == fault; });
  if (plan == plans_.end()) return std::nullopt;
  if (plan->after-- > 0) return std::nullopt;
  const int value = plan->value;
  plans_.erase(plan);
  return value;
}

void Machine::Answer(Bytes bytes, bool when_asked) {
  spoken_.push_back({std::move(bytes), when_asked});
}

void Machine::PutFile(const std::string& path, std::string_view content) {
  g_root_changed = true;
  // What the library made there itself may be in the way.
  if (const auto place = Place(path)) std::ofstream(*place, std::ios::binary) << content;
}

std::optional<std::string> Machine::Place(std::string_view path) {
  const std::string root = Root().Path().string();
  if (path.find("..") != std::string_view::npos) return std::nullopt;
  if (path.starts_with(root)) return std::string(path);
  return root + "/" + std::string(path);
}

int Machine::OpenLine() {
  if ((present_ & 4U) == 0) return -1;
  lines_.insert(next_line_);
  return next_line_++;
}

Held Machine::Holds() const {
  return {usb_->handles.size(), usb_->lists.size(), lines_.size(), contexts_};
}

void Machine::RequireNothingHeld() const {
  Require(usb_->handles.empty(), "a USB device was left open");
  Require(usb_->lists.empty(), "a device list was not freed");
  Require(lines_.empty(), "a serial line was left open");
  Require(contexts_ == 0, "libusb contexts taken and released differ");
  Require(streams_.empty() && LowestFree() == lowest_free_, "a file was left open");
}

void Machine::Sleep(std::int64_t ms) {
  if (reading_ && ms < kPauseOfHosts) return Idle(ms);
  wall_ms_ += ms;
  if (ms < kPauseOfHosts) spent_ms_ += ms;
}

bool Machine::Pause(std::int64_t& ms) {
  const bool whole = !Strikes(Fault::kInterrupt);
  const std::int64_t slept = whole ? ms : ms / 2;
  Sleep(slept);
  ms -= slept;
  return whole;
}

// The clock may be set, forwards or back, or not be had at all.
std::int64_t Machine::Seconds() {
  if (const auto value = Strikes(Fault::kTime)) {
    const std::int64_t step = static_cast<std::int8_t>(*value);
    if (step == 0) {
      slack_ms_ += 1000;
      return -1;
    }
    wall_ms_ += step * 1000;
    slack_ms_ += std::max<std::int64_t>(-step, 1) * 1000;
  }
  return (kStart * 1000 + wall_ms_) / 1000;
}

// A long wait goes by in ever larger steps, never beyond its end.
void Machine::Idle(std::int64_t ms) {
  constexpr int kPolls = 20;
  const std::int64_t left = read_ends_ms_ - spent_ms_ - 2000;
  const std::int64_t step = ++idle_polls_ > kPolls ? std::max(ms, left / 4) : ms;
  wall_ms_ += step;
  spent_ms_ += step;
}

bool Machine::IsSilent() const {
  return spoken_.empty() || (spoken_.front().when_asked && !asked_);
}

std::size_t Machine::Listen(void* buffer, std::size_t size, std::int64_t idle_ms) {
  if (const auto value = Strikes(Fault::kCancel)) Cancel(*value);
  if (size == 0 || IsSilent()) {
    Idle(idle_ms);
    return 0;
  }
  Spoken& spoken = spoken_.front();
  const std::size_t count = std::min(size, spoken.bytes.size());
  if (count > 0) std::memcpy(buffer, spoken.bytes.data(), count);
  spoken.bytes.erase(spoken.bytes.begin(), spoken.bytes.begin() + static_cast<std::ptrdiff_t>(count));
  spoken.when_asked = false;
  if (spoken.bytes.empty()) {
    spoken_.pop_front();
    asked_ = false;
  }
  ++reports_;
  Idle(1);
  return count;
}

int Machine::TransferIn(unsigned char* data, int length, unsigned timeout_ms, int* transferred) {
  if (const auto value = Strikes(Fault::kUsbIn)) {
    static constexpr std::array kClaims{0, -1, 1025, 1 << 20, 16};
    *transferred = kClaims[static_cast<unsigned>(*value) / 16 % kClaims.size()];
    Idle(1);
    return -(*value & 15);
  }
  *transferred = static_cast<int>(Listen(data, static_cast<std::size_t>(length), timeout_ms));
  return *transferred == 0 ? static_cast<int>(LIBUSB_ERROR_TIMEOUT) : 0;
}

int Machine::TransferOut(int length, int* transferred) {
  asked_ = true;
  if (const auto value = Strikes(Fault::kUsbOut)) {
    wall_ms_ += 1000;
    *transferred = *value % 2 == 0 ? 0 : std::min(length, *value);
    return -(*value & 15);
  }
  *transferred = length;
  return 0;
}

int Machine::ReadLine(void* buffer, std::size_t size) {
  if (Strikes(Fault::kInterrupt)) {
    Idle(1);
    errno = EINTR;
    return -1;
  }
  if (Strikes(Fault::kRead)) {
    errno = EIO;
    return -1;
  }
  return static_cast<int>(Listen(buffer, size, 100));
}

int Machine::WriteLine(std::size_t size) {
  asked_ = true;
  if (const auto value = Strikes(Fault::kStuck)) stuck_ms_ = kStuckStepMs * *value;
  if (stuck_ms_ > 0 || Strikes(Fault::kInterrupt)) {
    errno = stuck_ms_ > 0 ? EAGAIN : EINTR;
    return -1;
  }
  if (const auto value = Strikes(Fault::kWrite)) {
    errno = EIO;
    return *value == 0 ? -1 : std::min(static_cast<int>(size), *value);
  }
  return static_cast<int>(size);
}

int Machine::PollForBytes(int timeout_ms) {
  if (const auto value = Strikes(Fault::kCancel)) Cancel(*value);
  if (const auto value = Strikes(Fault::kPoll)) {
    errno = EINTR;
    return *value % 2 - 1;
  }
  if (!IsSilent()) return 1;
  Idle(timeout_ms);
  return 0;
}

// Of a line that takes nothing, as a device on USB that does not: this time is not the read's.
int Machine::Poll(int timeout_ms) {
  if (const auto value = Strikes(Fault::kPoll)) {
    errno = EINTR;
    return *value % 2 - 1;
  }
  if (stuck_ms_ <= 0) return 1;
  const std::int64_t step = std::min<std::int64_t>(stuck_ms_, timeout_ms);
  stuck_ms_ -= step;
  wall_ms_ += step;
  return stuck_ms_ > 0 ? 0 : 1;
}

std::FILE* Machine::Opened(std::FILE* stream) {
  if (stream != nullptr) streams_.insert(stream);
  return stream;
}

}  // namespace gwq::fuzz

using gwq::fuzz::Fault;
using gwq::fuzz::Machine;

namespace {

Machine* Running() {
  return Machine::Current();
}

bool Struck(Fault fault) {
  return Running() != nullptr && Running()->Strikes(fault);
}

// Calls `real` with where the path is now; `failure` for one that is refused.
template <typename Result, typename Real>
Result Elsewhere(const char* path, Result failure, Real real) {
  if (Running() == nullptr) return real(path);
  const auto place = Machine::Place(path);
  if (place && !Struck(Fault::kOpen)) return real(place->c_str());
  errno = EACCES;
  return failure;
}

// What stat tells: the truth, nothing, or that the file is another user's.
int Told(int result, struct stat* status) {
  const auto fault = Running() == nullptr ? std::nullopt : Running()->Strikes(Fault::kStatus);
  if (!fault) return result;
  if (*fault % 2 == 1) {
    if (result != 0) *status = {};  // it has come there at this moment
    status->st_uid = geteuid() + 1;
    return 0;
  }
  errno = EIO;
  return -1;
}

// From now on the file can be neither read nor written, but for what is in its buffer.
void BreakIfStruck(std::FILE* stream) {
  if (Running() == nullptr || !Running()->IsStream(stream) || !Struck(Fault::kStream)) return;
  const int broken = __real_open("/", O_RDONLY | O_DIRECTORY);
  dup2(broken, fileno(stream));
  __real_close(broken);
}

}  // namespace

// ------------------------------------------------------------------ the system

extern "C" {

void* __real_calloc(std::size_t count, std::size_t size);
void* __wrap_malloc(std::size_t size) {
  return Struck(Fault::kMemory) ? nullptr : __real_malloc(size);
}
void* __wrap_calloc(std::size_t count, std::size_t size) {
  return Struck(Fault::kMemory) ? nullptr : __real_calloc(count, size);
}

std::time_t __real_time(std::time_t* out);
std::time_t __wrap_time(std::time_t* out) {
  if (Running() == nullptr) return __real_time(out);
  const std::time_t now = Running()->Seconds();
  if (out != nullptr) *out = now;
  return now;
}

int __real_clock_gettime(clockid_t clock, std::timespec* out);
int __wrap_clock_gettime(clockid_t clock, std::timespec* out) {
  if (Running() == nullptr) return __real_clock_gettime(clock, out);
  if (clock == CLOCK_MONOTONIC) {
    *out = {Running()->WallMs() / 1000, static_cast<long>(Running()->WallMs() % 1000 * 1'000'000)};
    return 0;
  }
  if (Struck(Fault::kClock)) return -1;
  *out = {Running()->Seconds(), static_cast<long>(Running()->WallMs() % 1000 * 1'000'000)};
  return 0;
}

unsigned __real_sleep(unsigned seconds);
unsigned __wrap_sleep(unsigned seconds) {
  if (Running() == nullptr) return __real_sleep(seconds);
  Running()->Sleep(std::int64_t{seconds} * 1000);
  return 0;
}

int __real_nanosleep(const std::timespec* wanted, std::timespec* left);
int __wrap_nanosleep(const std::timespec* wanted, std::timespec* left) {
  if (Running() == nullptr) return __real_nanosleep(wanted, left);
  std::int64_t ms = std::int64_t{wanted->tv_sec} * 1000 + wanted->tv_nsec / 1'000'000;
  if (Running()->Pause(ms)) return 0;
  *left = {ms / 1000, static_cast<long>(ms % 1000 * 1'000'000)};
  errno = EINTR;
  return -1;
}

int __real_poll(pollfd* lines, nfds_t count, int timeout_ms);
int __wrap_poll(pollfd* lines, nfds_t count, int timeout_ms) {
  if (Running() == nullptr) return __real_poll(lines, count, timeout_ms);
  gwq::fuzz::Require(count == 1 && timeout_ms >= 0, "a poll without an end");
  if (lines->events != POLLIN) return Running()->Poll(timeout_ms);
  return Running()->PollForBytes(timeout_ms);
}

// One thread calls here, and whoever has the turn already never waits for it.
int __wrap_pthread_cond_timedwait(pthread_cond_t* /*condition*/, pthread_mutex_t* /*mutex*/,
                                  const std::timespec* /*until*/) {
  gwq::fuzz::Fail("a wait for another thread's turn");
}

int __real_pthread_setspecific(pthread_key_t key, const void* value);
int __wrap_pthread_setspecific(pthread_key_t key, const void* value) {
  return Struck(Fault::kThread) ? ENOMEM : __real_pthread_setspecific(key, value);
}

iconv_t __real_iconv_open(const char* to, const char* from);
iconv_t __wrap_iconv_open(const char* to, const char* from) {
  if (!Struck(Fault::kEncoding)) return __real_iconv_open(to, from);
  errno = ENOMEM;
  return reinterpret_cast<iconv_t>(-1);  // NOLINT(performance-no-int-to-ptr): what iconv_open returns
}

std::tm* __real_localtime_r(const std::time_t* time, std::tm* out);
std::tm* __wrap_localtime_r(const std::time_t* time, std::tm* out) {
  return Struck(Fault::kClock) ? nullptr : __real_localtime_r(time, out);
}

int __wrap_open(const char* path, int flags, ...) {
  va_list rest;
  va_start(rest, flags);
  const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0;
  va_end(rest);
  const auto real = [flags, mode](const char* place) { return __real_open(place, flags, mode); };
  if (Running() != nullptr && (flags & O_CREAT) != 0) gwq::fuzz::g_root_changed = true;
  if (Running() == nullptr || !std::string_view(path).starts_with("/dev/")) return Elsewhere(path, -1, real);
  return Struck(Fault::kOpen) ? -1 : Running()->OpenLine();
}

int __wrap_close(int fd) {
  if (Running() == nullptr || fd < gwq::fuzz::kFirstLine) return __real_close(fd);
  if (!Running()->IsLine(fd)) return -1;
  Running()->CloseLine(fd);
  return 0;
}

ssize_t __real_read(int fd, void* buffer, std::size_t size);
ssize_t __wrap_read(int fd, void* buffer, std::size_t size) {
  if (Running() == nullptr) return __real_read(fd, buffer, size);
  if (Running()->IsLine(fd)) return Running()->ReadLine(buffer, size);
  errno = EBADF;
  return -1;
}

ssize_t __real_write(int fd, const void* data, std::size_t size);
ssize_t __wrap_write(int fd, const void* data, std::size_t size) {
  if (Running() == nullptr) return __real_write(fd, data, size);
  if (Running()->IsLine(fd)) return Running()->WriteLine(size);
  if (fd < 3 || fd >= gwq::fuzz::kFirstLine || Struck(Fault::kWrite)) {
    errno = fd < 3 || fd >= gwq::fuzz::kFirstLine ? EBADF : ENOSPC;
    return -1;
  }
  return __real_write(fd, data, size);
}

int __real_fcntl(int fd, int command, ...);
int __wrap_fcntl(int fd, int command, ...) {
  va_list rest;
  va_start(rest, command);
  const int argument = va_arg(rest, int);
  va_end(rest);
  if (Running() == nullptr || fd < gwq::fuzz::kFirstLine) return __real_fcntl(fd, command, argument);
  return !Running()->IsLine(fd) || Struck(Fault::kLineSettings) ? -1 : 0;
}

int __real_ioctl(int fd, unsigned long request, ...);
int __wrap_ioctl(int fd, unsigned long request, ...) {
  va_list rest;
  va_start(rest, request);
  void* argument = va_arg(rest, void*);
  va_end(rest);
  if (Running() == nullptr) return __real_ioctl(fd, request, argument);
  if (!Running()->IsLine(fd) || Struck(Fault::kLineSettings)) return -1;
  if (request == TCGETA) *static_cast<struct termio*>(argument) = {};
  return 0;
}

int __real_tcflush(int fd, int queue);
int __wrap_tcflush(int fd, int queue) {
  return Running() == nullptr ? __real_tcflush(fd, queue) : 0;
}

int __real_ttyname_r(int fd, char* name, std::size_t size);
int __wrap_ttyname_r(int fd, char* name, std::size_t size) {
  if (Running() == nullptr) return __real_ttyname_r(fd, name, size);
  if (Struck(Fault::kOpen)) return ENOTTY;
  std::snprintf(name, size, "/dev/pts/7");
  return 0;
}

std::FILE* __real_fopen(const char* path, const char* mode);
std::FILE* __wrap_fopen(const char* path, const char* mode) {
  // What libFuzzer keeps of a find, in a mode of its own, is not the library's.
  if (Running() == nullptr || std::strcmp(mode, "w") == 0) return __real_fopen(path, mode);
  const auto fault = Running()->Strikes(Fault::kFile);
  // A disk that is full, a file that opens and cannot be read, one that does not open.
  if (fault && *fault % 3 == 1) {
    return Running()->Opened(__real_fopen(*mode == 'r' ? "/" : "/dev/full", mode));
  }
  if (fault) return nullptr;
  if (*mode != 'r') gwq::fuzz::g_root_changed = true;
  return Running()->Opened(
      Elsewhere<std::FILE*>(path, nullptr, [mode](const char* place) { return __real_fopen(place, mode); }));
}

std::FILE* __real_fdopen(int fd, const char* mode);
std::FILE* __wrap_fdopen(int fd, const char* mode) {
  if (Running() == nullptr) return __real_fdopen(fd, mode);
  return Struck(Fault::kFile) ? nullptr : Running()->Opened(__real_fdopen(fd, mode));
}

int __real_fclose(std::FILE* stream);
int __wrap_fclose(std::FILE* stream) {
  if (Running() == nullptr || !Running()->IsStream(stream)) return __real_fclose(stream);
  BreakIfStruck(stream);
  Running()->ForgetStream(stream);
  return __real_fclose(stream);
}

std::size_t __real_fread(void* data, std::size_t size, std::size_t count, std::FILE* stream);
std::size_t __wrap_fread(void* data, std::size_t size, std::size_t count, std::FILE* stream) {
  BreakIfStruck(stream);
  return __real_fread(data, size, count, stream);
}

std::size_t __real_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* stream);
std::size_t __wrap_fwrite(const void* data, std::size_t size, std::size_t count, std::FILE* stream) {
  BreakIfStruck(stream);
  return __real_fwrite(data, size, count, stream);
}

char* __real_fgets(char* line, int size, std::FILE* stream);
char* __wrap_fgets(char* line, int size, std::FILE* stream) {
  BreakIfStruck(stream);
  return __real_fgets(line, size, stream);
}

int __real_fseek(std::FILE* stream, long offset, int whence);
int __wrap_fseek(std::FILE* stream, long offset, int whence) {
  return Struck(Fault::kStatus) ? -1 : __real_fseek(stream, offset, whence);
}

long __real_ftell(std::FILE* stream);
long __wrap_ftell(std::FILE* stream) {
  return Struck(Fault::kStatus) ? -1 : __real_ftell(stream);
}

// Made where the machine's other files are, and known to the library under the name that it asked for.
int __real_mkostemp(char* name, int flags);
int __wrap_mkostemp(char* name, int flags) {
  if (Running() == nullptr) return __real_mkostemp(name, flags);
  auto place = Machine::Place(name);
  if (!place || Struck(Fault::kTempName)) return -1;
  const int fd = __real_mkostemp(place->data(), flags);
  place->copy(name, std::strlen(name), place->size() - std::strlen(name));
  gwq::fuzz::g_root_changed = true;
  return fd;
}

char* __real_getcwd(char* path, std::size_t size);
char* __wrap_getcwd(char* path, std::size_t size) {
  if (Running() == nullptr) return __real_getcwd(path, size);
  if (Struck(Fault::kDirectory)) return nullptr;
  std::snprintf(path, size, "/");
  return path;
}

int __real_unlink(const char* path);
int __wrap_unlink(const char* path) {
  gwq::fuzz::g_root_changed = true;
  return Elsewhere(path, -1, &__real_unlink);
}

int __real_remove(const char* path);
int __wrap_remove(const char* path) {
  gwq::fuzz::g_root_changed = true;
  return Elsewhere(path, -1, &__real_remove);
}

int __real_access(const char* path, int mode);
int __wrap_access(const char* path, int mode) {
  return Elsewhere(path, -1, [mode](const char* place) { return __real_access(place, mode); });
}

int __real_faccessat(int directory, const char* path, int mode, int flags);
int __wrap_faccessat(int directory, const char* path, int mode, int flags) {
  return Elsewhere(path, -1,
                   [=](const char* place) { return __real_faccessat(directory, place, mode, flags); });
}

ssize_t __real_readlink(const char* path, char* target, std::size_t size);
ssize_t __wrap_readlink(const char* path, char* target, std::size_t size) {
  return Elsewhere<ssize_t>(path, -1,
                            [=](const char* place) { return __real_readlink(place, target, size); });
}

int __real_mkdir(const char* path, mode_t mode);
int __wrap_mkdir(const char* path, mode_t mode) {
  gwq::fuzz::g_root_changed = true;
  return Elsewhere(path, -1, [mode](const char* place) { return __real_mkdir(place, mode); });
}

DIR* __real_opendir(const char* path);
DIR* __wrap_opendir(const char* path) {
  return Elsewhere<DIR*>(path, nullptr, &__real_opendir);
}

int __real_stat(const char* path, struct stat* status);
int __wrap_stat(const char* path, struct stat* status) {
  return Elsewhere(path, -1,
                   [status](const char* place) { return Told(__real_stat(place, status), status); });
}

int __real_lstat(const char* path, struct stat* status);
int __wrap_lstat(const char* path, struct stat* status) {
  return Elsewhere(path, -1,
                   [status](const char* place) { return Told(__real_lstat(place, status), status); });
}

int __real_fstat(int fd, struct stat* status);
int __wrap_fstat(int fd, struct stat* status) {
  return Told(__real_fstat(fd, status), status);
}

int __real_fchmod(int fd, mode_t mode);
int __wrap_fchmod(int fd, mode_t mode) {
  return Struck(Fault::kStatus) ? -1 : __real_fchmod(fd, mode);
}

int __real_dladdr(const void* address, Dl_info* info);
int __wrap_dladdr(const void* address, Dl_info* info) {
  if (Running() == nullptr) return __real_dladdr(address, info);
  static const std::string s_strFile = gwq::fuzz::Root() / "lib/libgwq.so";
  static const std::string s_strTooLong = "/" + std::string(300, 'l') + "/libgwq.so";
  const std::array<const char*, 4> files{s_strFile.c_str(), "lib/libgwq.so", nullptr, s_strTooLong.c_str()};
  *info = {};
  info->dli_fname = files[Running()->LoadedFrom() % files.size()];
  return info->dli_fname == nullptr ? 0 : 1;
}

// ------------------------------------------------------------------ reads of the links

#define GWQ_FUZZ_TIMED_READ(name)                                                                       \
  int __real_##name(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end);               \
  int __wrap_##name(unsigned char* buffer, int maximum, int timeout_s, GwqEndOfRead end) {              \
    return Running()->Timed(timeout_s, [&] { return __real_##name(buffer, maximum, timeout_s, end); }); \
  }
GWQ_FUZZ_TIMED_READ(_ZN3gwq16ICC_ReadLinuxHidEPhiiPFiS0_iE)
GWQ_FUZZ_TIMED_READ(_ZN3gwq16ICC_ReadLinuxComEPhiiPFiS0_iE)
GWQ_FUZZ_TIMED_READ(_ZN3gwq16ICC_ReadLinuxSdtEPhiiPFiS0_iE)
GWQ_FUZZ_TIMED_READ(_ZN3gwq13ICC_ReadLinuxEPhiiPFiS0_iE)
GWQ_FUZZ_TIMED_READ(_ZN3gwq16ICC_ReadLinuxAuxEPhiiPFiS0_iE)

// Drains: a second is their limit.
#define GWQ_FUZZ_TIMED_DRAIN(name)                                                      \
  int __real_##name(int silence_ms);                                                    \
  int __wrap_##name(int silence_ms) {                                                   \
    gwq::fuzz::Require(silence_ms > 0 && silence_ms <= 1000, "a drain without an end"); \
    return Running()->Timed(0, [&] { return __real_##name(silence_ms); });              \
  }
GWQ_FUZZ_TIMED_DRAIN(_ZN3gwq11DrainUsbHidEi)
GWQ_FUZZ_TIMED_DRAIN(_ZN3gwq11DrainSerialEi)

// ------------------------------------------------------------------ libusb

int libusb_init(libusb_context** /*context*/) {
  if (Running() == nullptr) return 0;
  if (Struck(Fault::kUsbInit)) return LIBUSB_ERROR_NO_MEM;
  ++Running()->contexts();
  return 0;
}

void libusb_exit(libusb_context* /*context*/) {
  if (Running() != nullptr) --Running()->contexts();
}

ssize_t libusb_get_device_list(libusb_context* /*context*/, libusb_device*** list) {
  if (const auto value = Running()->Strikes(Fault::kUsbList))
    return *value % 2 == 0 ? 0 : LIBUSB_ERROR_NO_MEM;
  auto& usb = Running()->usb();
  *list = new libusb_device*[usb.devices.size() + 1]();
  std::transform(usb.devices.begin(), usb.devices.end(), *list,
                 [](libusb_device& device) { return &device; });
  usb.lists.insert(*list);
  return static_cast<ssize_t>(usb.devices.size());
}

void libusb_free_device_list(libusb_device** list, int unreference) {
  gwq::fuzz::Require(Running()->usb().lists.erase(list) == 1, "a device list freed that is none");
  gwq::fuzz::Require(unreference == 1, "devices of a list not released");
  delete[] list;
}

int libusb_get_device_descriptor(libusb_device* device, libusb_device_descriptor* descriptor) {
  *descriptor = {};
  if (Struck(Fault::kUsbDescriptor)) return LIBUSB_ERROR_IO;
  descriptor->idVendor = static_cast<std::uint16_t>(device->vid);
  descriptor->idProduct = static_cast<std::uint16_t>(device->pid);
  return 0;
}

std::uint8_t libusb_get_bus_number(libusb_device* /*device*/) {
  return 255;
}

std::uint8_t libusb_get_device_address(libusb_device* /*device*/) {
  return 127;
}

// As deep as hubs go.
int libusb_get_port_numbers(libusb_device* /*device*/, std::uint8_t* ports, int room) {
  constexpr int kDepth = 7;
  gwq::fuzz::Require(room >= kDepth, "no room for the ports of the deepest device");
  std::fill_n(ports, kDepth, std::uint8_t{255});
  return kDepth;
}

int libusb_open(libusb_device* /*device*/, libusb_device_handle** handle) {
  if (Struck(Fault::kUsbOpen)) return LIBUSB_ERROR_ACCESS;
  gwq::fuzz::Require(!Running()->usb().lists.empty(), "a device opened that is in no list");
  *handle = new libusb_device_handle;
  Running()->usb().handles.insert(*handle);
  return 0;
}

void libusb_close(libusb_device_handle* handle) {
  gwq::fuzz::Require(Running()->usb().handles.erase(handle) == 1, "a device closed that is not open");
  delete handle;
}

int libusb_kernel_driver_active(libusb_device_handle* /*handle*/, int /*interface*/) {
  const auto value = Running()->Strikes(Fault::kUsbDriver);
  return value ? *value % 3 - 1 : 0;
}

int libusb_detach_kernel_driver(libusb_device_handle* /*handle*/, int /*interface*/) {
  return Struck(Fault::kUsbDriver) ? static_cast<int>(LIBUSB_ERROR_NOT_SUPPORTED) : 0;
}

int libusb_claim_interface(libusb_device_handle* handle, int /*interface*/) {
  if (Struck(Fault::kUsbClaim)) return LIBUSB_ERROR_BUSY;
  handle->claimed = true;
  return 0;
}

int libusb_bulk_transfer(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data,
                         int length, int* transferred, unsigned timeout_ms) {
  *transferred = 0;
  gwq::fuzz::Require(Running()->usb().handles.contains(handle), "a transfer on a device that is not open");
  gwq::fuzz::Require(handle->claimed, "a transfer on an interface that is not claimed");
  if ((endpoint & 0x80U) != 0) return Running()->TransferIn(data, length, timeout_ms, transferred);
  return Running()->TransferOut(length, transferred);
}

int libusb_interrupt_transfer(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data,
                              int length, int* transferred, unsigned timeout_ms) {
  return libusb_bulk_transfer(handle, endpoint, data, length, transferred, timeout_ms);
}

}  // extern "C"
