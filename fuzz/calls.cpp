// SPDX-License-Identifier: MIT
#include "calls.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <numeric>
#include <tuple>
#include <type_traits>

#include <gwq/extra.h>
#include <gwq/gwq.h>
#include "machine.h"
#include "support/device_calls.h"

namespace gwq::fuzz {

using test::kFileCalls;
using test::kLaterCalls;
using test::kTerminalCalls;
using test::kTransactionCalls;
using test::kUnlimited;
using test::Row;
using test::Waits;
namespace kinds = test::kinds;

char* Arguments::Room(std::size_t count, bool zeroed) {
  owned_.push_back(std::make_unique<char[]>(count));
  if (!zeroed) std::memset(owned_.back().get(), 0xA5, count);
  return owned_.back().get();
}

char* Arguments::Text(const std::string& text) {
  char* copy = Room(text.size() + 1, false);
  std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

unsigned char* Arguments::Bytes(std::span<const std::uint8_t> bytes) {
  auto* copy = reinterpret_cast<unsigned char*>(Room(bytes.size(), false));
  std::copy(bytes.begin(), bytes.end(), copy);
  return copy;
}

char* Arguments::Limited(std::size_t size) {
  char* room = Room(size, true);
  if (size > 1) std::memset(room, 'x', size / 2);  // the text that the library clears
  limited_before_.assign(room, size);
  limited_ = room;
  return room;
}

void Arguments::RequireLimitedUntouched() const {
  if (limited_ == nullptr) return;
  Require(std::equal(limited_before_.begin(), limited_before_.end(), limited_),
          "an output that is too small was written to");
}

namespace {

// ------------------------------------------------------------------ the host's predicates

// A predicate has no context: what it does next stands here.
struct Host {
  Input script{nullptr, 0};
  int depth = 0;
};
thread_local Host t_host;

int HostileEnd(unsigned char* data, int count);

void Exchange(int port, GwqEndOfRead end) {
  constexpr int kMaximum = 100;
  std::array<char, kMaximum + 1024> answer{};
  std::array command = std::to_array("\x1B[0GETVERSION");
  int length = kMaximum;
  TransProcByEnd(port, 9600, command.data(), 0, answer.data(), &length, end, 1000);
}

void Pull() {
  std::array command = std::to_array("\x1B[0PULLFILE\x02/tmp/hw.txt\x03");
  std::array path = std::to_array("/tmp/nested");
  TransProcHW(0, command.data(), 1000, path.data());
}

// Answers that no predicate should give, cancels, and exchanges of its own.
int Act(unsigned action, unsigned char* data, int count) {
  switch (action) {
    case 1:
      return 0;
    case 2:
      return INT_MIN;
    case 3:
      return -1;
    case 4:
      return CancelRead();
    case 5:
      CancelWrite();
      return 1;
    case 6:
      return ICC_CancelReadTransPort() + 1;
    case 7:
      Exchange(0, nullptr);
      return 1;
    case 8:
      Exchange(1, &EndOfRead2);
      return 1;
    case 9:
      Exchange(0, &HostileEnd);
      return 1;
    case 10:
      Pull();
      return 1;
    case 11:
      return MP_CancelCurrentOperation(nullptr, nullptr, 9600, 0);
    case 12:
      return MP_CancleEvaluate(nullptr, nullptr, 9600) + 1;
    case 13:
      return ICC_CloseTransPort() + 1;
    case 14:
      std::fill_n(data, count, std::uint8_t{0xFF});
      return 1;
    default:
      return 1;
  }
}

int HostileEnd(unsigned char* data, int count) {
  constexpr int kDeepest = 3;
  Require(count >= 0, "a predicate is asked about fewer than no bytes");
  volatile unsigned sum = 0;
  for (int i = 0; i < count; ++i) sum = sum + data[i];
  if (t_host.script.Empty() || t_host.depth >= kDeepest) return 1;
  ++t_host.depth;
  const int answer =
      Machine::Current()->InHostsCode([&] { return Act(t_host.script.Byte() % 16U, data, count); });
  --t_host.depth;
  return answer;
}

// What is told must be true as far as anybody can say; then the host does what its predicates do.
void HostileListener(int transfer, const char* file, long long done, long long total, void* user) {
  Require(user == &t_host, "a callback gets another user");
  Require(transfer >= GWQ_TRANSFER_PUSH && transfer <= GWQ_TRANSFER_FIRMWARE, "a transfer of no kind");
  Require(std::strlen(file) < (1U << 20U) && done >= 0 && total >= 0, "a transfer of no size");
  std::array<unsigned char, 1> nothing{};
  HostileEnd(nothing.data(), 0);
}

// ------------------------------------------------------------------ arguments

constexpr std::size_t kAnyFile = 1U << 20U;  // more than the input can have the terminal send
constexpr std::size_t kReport = 1024;

struct Int {
  static int Make(Arguments& a) { return a.input().Int(); }
};
struct Char {
  static char Make(Arguments& a) { return static_cast<char>(a.input().Byte()); }
};
struct Unsigned {
  static unsigned Make(Arguments& a) { return a.input().Byte(); }
};
// The terminal on USB more often than anything else.
struct Port {
  static int Make(Arguments& a) {
    const unsigned choice = a.input().Byte();
    return choice < 160 ? 0 : choice < 220 ? 1 : a.input().Int();
  }
};
using Baud = Int;
struct Seconds {
  static int Make(Arguments& a) {
    const int seconds = a.input().Int();
    a.Wait(seconds);
    return seconds;
  }
};
struct Milliseconds {
  static int Make(Arguments& a) {
    const int ms = a.input().Int();
    a.Wait(ms / 1000);
    return ms;
  }
};
// The pull's wait, which each of its reports may take anew.
struct MillisecondsPerReport {
  static int Make(Arguments& a) {
    const int ms = a.input().Int() % 10'000;
    return ms;
  }
};
template <auto value>
struct Is {
  static auto Make(Arguments&) { return value; }
};

template <typename G>
struct OrNull {
  static auto Make(Arguments& a) {
    const auto made = G::Make(a);
    return a.input().Byte() == 255 ? nullptr : made;
  }
};
struct Given {
  static char* Make(Arguments& a) { return a.Text(a.input().Text()); }
};
struct Text {
  static char* Make(Arguments& a) {
    char* text = Given::Make(a);
    return a.input().Byte() > 250 ? nullptr : text;
  }
};
template <std::size_t N>
struct Out {
  static char* Make(Arguments& a) { return a.Room(N, false); }
};
template <std::size_t N>
struct Zeroed {
  static char* Make(Arguments& a) { return a.Room(N, true); }
};
template <std::size_t N>
struct OutBytes {
  static unsigned char* Make(Arguments& a) { return reinterpret_cast<unsigned char*>(a.Room(N, false)); }
};
template <typename T>
struct OutOf {
  static T* Make(Arguments& a) { return reinterpret_cast<T*>(a.Room(sizeof(T), false)); }
};
using IntOut = OutOf<int>;
struct IntInOut {
  static int* Make(Arguments& a) {
    int* value = IntOut::Make(a);
    *value = a.input().Int();
    return value;
  }
};
// The output whose size the contract does not pass: with room for any file, or with exactly as much
// as the caller tells.
struct FileOut {
  static char* Make(Arguments& a) {
    const unsigned null = a.input().Byte();
    const int room = a.input().Byte() < 128 ? 0 : std::min(a.input().Int(), 1 << 16);
    GWQ_SetOutputRoom(0);
    if (null == 255) return nullptr;
    if (GWQ_SetOutputRoom(room) != 0 || room == 0) return a.Room(kAnyFile, true);
    return a.Limited(static_cast<std::size_t>(room));
  }
};
struct LinePath {
  static const char* Make(Arguments&) { return "/dev/ttyS1"; }
};
using Null = Is<nullptr>;

// How an argument of each kind in the shared table is drawn.
template <typename Kind>
struct MakerOf;
template <>
struct MakerOf<kinds::Null> : Null {};
template <>
struct MakerOf<kinds::Port> : Port {};
template <>
struct MakerOf<kinds::Baud> : Baud {};
template <>
struct MakerOf<kinds::Channel> : Char {};
template <>
struct MakerOf<kinds::Unused> : Int {};
template <int low, int high>
struct MakerOf<kinds::Number<low, high>> : Int {};
template <int... values>
struct MakerOf<kinds::OneOf<values...>> : Int {};
template <>
struct MakerOf<kinds::Destination> : Int {};
template <>
struct MakerOf<kinds::Seconds> : Seconds {};
template <>
struct MakerOf<kinds::AnySeconds> : Seconds {};
template <typename Kind>
requires(kinds::kIsText<Kind>) struct MakerOf<Kind> : Text {
};
template <std::size_t size>
struct MakerOf<kinds::Out<size>> : OrNull<Out<size>> {};
template <std::size_t size>
struct MakerOf<kinds::OutBytes<size>> : OrNull<OutBytes<size>> {};
template <std::size_t size>
struct MakerOf<kinds::Zeroed<size>> : OrNull<Zeroed<size>> {};
template <typename T>
struct MakerOf<kinds::OutOf<T>> : OrNull<OutOf<T>> {};
template <int low, int high>
struct MakerOf<kinds::InOut<low, high>> : OrNull<IntInOut> {};
template <>
struct MakerOf<kinds::FileOut> : FileOut {};

template <auto F, typename... Makers>
void Do(Arguments& a) {
  const std::tuple arguments{Makers::Make(a)...};  // in this order with every compiler
  if constexpr (std::is_same_v<decltype(std::apply(F, arguments)), int>) {
    if (std::apply(F, arguments) == GWQ_TOO_SMALL) a.RequireLimitedUntouched();
  } else {
    std::apply(F, arguments);
  }
}

// ------------------------------------------------------------------ arguments that belong together

std::size_t Count(int length) {
  return static_cast<std::size_t>(std::max(length, 0));
}

int Small(Arguments& a) {
  return std::min(a.input().Int(), 1 << 16);
}

void Find(Arguments& a) {
  const int room = Small(a);
  char* const places = a.Room(std::min<std::size_t>(Count(room), 100) * sizeof(GwqTerminalPlace), false);
  GWQ_FindTerminals(reinterpret_cast<GwqTerminalPlace*>(places), std::min(room, 100));
}

struct Command {
  char* bytes;
  int length;
};

// A length of 0, or none that is true for a text, is the library's business; one above what is there is not.
Command MakeCommand(Arguments& a) {
  const std::string text = a.input().Text();
  const unsigned choice = a.input().Byte();
  char* bytes = a.Text(text);
  if (choice == 255) return {nullptr, static_cast<int>(text.size())};
  return {bytes, choice == 254 ? -1 : choice > 128 ? 0 : static_cast<int>(text.size())};
}

// Room for an answer as the engine wants it.
struct Answer {
  char* bytes;
  int* length;
};
Answer MakeAnswer(Arguments& a) {
  int* length = IntOut::Make(a);
  *length = Small(a);
  char* bytes = a.Room(Count(*length) + kReport, true);
  const unsigned choice = a.input().Byte();
  return {choice == 255 ? nullptr : bytes, choice == 254 ? nullptr : length};
}

GwqEndOfRead MakeEnd(Arguments& a) {
  static constexpr std::array<GwqEndOfRead, 8> kEnds{nullptr,     &EndOfRead2,      &EndOfRead3,
                                                     &EndOfRead,  &EndOfCondition4, &EndOfConditionD,
                                                     &HostileEnd, &HostileEnd};
  return kEnds[a.input().Byte() % kEnds.size()];
}

template <auto F>
void Transact(Arguments& a) {
  const int port = Port::Make(a);
  const Command command = MakeCommand(a);
  const Answer answer = MakeAnswer(a);
  F(port, 9600, command.bytes, command.length, answer.bytes, answer.length, Milliseconds::Make(a));
}

void TransactByEnd(Arguments& a) {
  const int port = Port::Make(a);
  const Command command = MakeCommand(a);
  const Answer answer = MakeAnswer(a);
  const GwqEndOfRead end = MakeEnd(a);
  TransProcByEnd(port, 9600, command.bytes, command.length, answer.bytes, answer.length, end,
                 Milliseconds::Make(a));
}

void ListenToProgress(Arguments& a) {
  GWQ_SetProgress(a.input().Byte() % 4 == 0 ? nullptr : &HostileListener, &t_host);
}

void OnlySend(Arguments& a) {
  const int port = Port::Make(a);
  const Command command = MakeCommand(a);
  TransProcOnlySend(port, 9600, command.bytes, command.length, Milliseconds::Make(a));
}

void OnlyRead(Arguments& a) {
  const int port = Port::Make(a);
  const Answer answer = MakeAnswer(a);
  TransProcOnlyRead(port, 9600, answer.bytes, answer.length, Milliseconds::Make(a));
}

void Pull(Arguments& a) {
  const Command command = MakeCommand(a);
  const int timeout_ms = MillisecondsPerReport::Make(a);
  PullFile(0, '9', 9600, timeout_ms, command.length, command.bytes, Text::Make(a));
}

void PullHw(Arguments& a) {
  const Command command = MakeCommand(a);
  const int timeout_ms = MillisecondsPerReport::Make(a);
  TransProcHW(command.length, command.bytes, timeout_ms, Text::Make(a));
}

TransMssionLinux_t* MakeDescriptor(Arguments& a) {
  auto* port = reinterpret_cast<TransMssionLinux_t*>(a.Room(sizeof(TransMssionLinux_t), true));
  port->nLinkType = a.input().Byte() % 4 == 3 ? a.input().Int() : a.input().Byte() % 2;
  port->nVid = 0x1209;
  port->nPid = 1 + a.input().Byte() % 3;
  port->nBaud = a.input().Int();
  std::memcpy(port->szTtyName, "/dev/ttyS3", 10);
  port->nTimeOut = a.input().Int();
  port->pfnEndOfRead = MakeEnd(a);
  return a.input().Byte() == 255 ? nullptr : port;
}

// Whose fields stand where the raw copy expects them: a time-out, a predicate, a link type.
void SetRawParameters(Arguments& a) {
  struct Raw {
    int timeout_s;
    int unused;
    GwqEndOfRead end;
    int type;
    int parameter;
  };
  const Raw raw{a.input().Int(), 0, MakeEnd(a), a.input().Int() % 4, 0};
  TransMssionLinux_t* port = MakeDescriptor(a);
  if (port != nullptr) std::memcpy(static_cast<void*>(port), &raw, sizeof raw);
  SetBackUpParam(port);
}

template <auto F>
void WithDescriptor(Arguments& a) {
  F(MakeDescriptor(a));
}

struct Block {
  unsigned char* bytes;
  int length;
};
Block MakeBlock(Arguments& a) {
  const std::string text = a.input().Text();
  unsigned char* bytes = a.Bytes({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  const unsigned choice = a.input().Byte();
  if (choice == 255) return {nullptr, static_cast<int>(text.size())};
  return {bytes, choice == 254 ? a.input().Int() % 2 - 1 : static_cast<int>(text.size())};
}

template <auto F>
void WriteBlock(Arguments& a) {
  const Block block = MakeBlock(a);
  F(block.bytes, block.length);
}

void WriteDataBlock(Arguments& a) {
  const Block block = MakeBlock(a);
  WriteData(block.length, block.bytes);
}

// A read's buffer, zeroed for predicates that look for the end of a text.
unsigned char* ReadRoom(Arguments& a, int maximum, std::size_t beyond) {
  const std::size_t size = std::max(Count(maximum) + beyond, beyond + (beyond == 0 ? 0 : 1));
  char* room = a.Room(size, true);
  return a.input().Byte() == 255 ? nullptr : reinterpret_cast<unsigned char*>(room);
}

template <auto F, std::size_t beyond>
void ReadLink(Arguments& a) {
  const int maximum = Small(a);
  unsigned char* room = ReadRoom(a, maximum, beyond);
  const int timeout_s = Seconds::Make(a);
  F(room, maximum, timeout_s, MakeEnd(a));
}

template <auto F>
void ReadInUse(Arguments& a) {
  const int maximum = Small(a);
  F(ReadRoom(a, maximum, kReport - 1), maximum);
}

// A line that the caller has opened, or none.
template <auto F>
void GiveLine(Arguments& a) {
  Machine::Current()->DisownLines();
  F(a.input().Byte() % 2 == 0 ? -1 : Machine::Current()->OpenLine());
}

template <auto F>
void SetLine(Arguments& a) {
  const int line = Machine::Current()->OpenLine();
  const int baud = a.input().Int();
  F(a.input().Byte() % 4 == 0 ? -1 : line, baud);
  Machine::Current()->CloseLine(line);
}

template <auto F>
void ResetLine(Arguments& /*a*/) {
  const int line = Machine::Current()->OpenLine();
  F(line);
  Machine::Current()->CloseLine(line);
}

// The context is the caller's to release.
template <auto F>
void WithContext(Arguments& /*a*/) {
  const int before = Machine::Current()->Holds().contexts;
  F();
  Machine::Current()->ForgetContexts(before);
}

void Account(Arguments& a) {
  const Block block = MakeBlock(a);
  PN_SetAccount(Port::Make(a), nullptr, 9600, block.bytes, block.length);
}

void StringBlock(Arguments& a) {
  const std::string info = a.input().Text();
  int* length = IntOut::Make(a);
  *length = a.input().Byte() == 255 ? -1 : static_cast<int>(info.size());
  unsigned char* bytes = a.Bytes({reinterpret_cast<const std::uint8_t*>(info.data()), info.size()});
  char* answer = a.Room(4096, false);
  const int seconds = Seconds::Make(a);
  const unsigned null = a.input().Byte();
  const int algorithm = a.input().Int();
  char* file = FileOut::Make(a);
  const int before = *length;
  const int status = PN_GetStringBlock(0, nullptr, 9600, seconds, algorithm,
                                       null == 255 ? nullptr : reinterpret_cast<const char*>(bytes), file,
                                       null == 253 ? nullptr : length, null == 252 ? nullptr : answer);
  if (status != GWQ_TOO_SMALL) return;
  a.RequireLimitedUntouched();
  Require(*length == before, "a size told of a file that did not fit");
}

void ReadPinInClear(Arguments& a) {
  const int port = Port::Make(a);
  const int mode = a.input().Int();
  const int seconds = Seconds::Make(a);
  const int size = Small(a);
  GWQ_ReadPin(port, 9600, mode, seconds, a.Room(Count(size), false), size);
}

void LogBytes(Arguments& a) {
  const Block block = MakeBlock(a);
  ICC_DPrintDataHexToFile(Text::Make(a), block.bytes, block.length);
}

void ListFiles(Arguments& a) {
  const int port = Port::Make(a);
  const int type = a.input().Int();
  const int capacity = Small(a);
  char* list = a.Room(Count(capacity), false);
  GetVideoList(port, '9', 9600, type, a.input().Byte() == 255 ? nullptr : list, capacity);
}

void FindHeadPhoto(Arguments& a) {
  int* length = IntOut::Make(a);
  *length = Small(a);
  char* list = a.Room(Count(*length) + 1, false);
  const unsigned null = a.input().Byte();
  MP_FindHeadPhoto(nullptr, nullptr, 9600, null == 255 ? nullptr : list, null == 254 ? nullptr : length);
}

void SendPiece(Arguments& a) {
  const Block block = MakeBlock(a);
  const int type = a.input().Int();
  const int total = a.input().Byte();
  const int index = a.input().Byte();
  DownFile(type, total, index, block.bytes, block.length, Text::Make(a));
}

void BuildRecord(Arguments& a) {
  const Block block = MakeBlock(a);
  auto* out = reinterpret_cast<unsigned char*>(a.Room(Count(block.length) + 9, false));
  const int total = a.input().Int();
  GetDownParam3(total, a.input().Int(), block.bytes, block.length, out);
}

void Describe(Arguments& a) {
  char* request = Text::Make(a);
  int* length = IntOut::Make(a);
  *length = Small(a);
  char* out = a.Room(Count(*length), false);
  const unsigned null = a.input().Byte();
  DEV_CommCall(request, a.input().Int(), null == 255 ? nullptr : out, null == 254 ? nullptr : length);
}

void Base64OfFile(Arguments& a) {
  char* path = Text::Make(a);
  int* length = IntOut::Make(a);
  *length = Small(a);
  char* out = a.Room(Count(*length), false);
  const unsigned null = a.input().Byte();
  GetBase46FromFile(path, null == 255 ? nullptr : out, null == 254 ? nullptr : length);
}

void FileOfBase64(Arguments& a) {
  const Block block = MakeBlock(a);
  WriteBase64ToFile(Text::Make(a), reinterpret_cast<const char*>(block.bytes), block.length);
}

void WriteFile(Arguments& a) {
  const Block block = MakeBlock(a);
  WriteFileData(Text::Make(a), block.bytes, block.length);
}

void ReadFile(Arguments& a) {
  char* path = Text::Make(a);
  auto* room = reinterpret_cast<unsigned char*>(a.Room(Count(get_file_size(path)), false));
  ReadFileData(a.input().Byte() == 255 ? nullptr : room, path, "rb");
}

// Also in place, and with either missing.
template <auto F>
void NameOf(Arguments& a) {
  const std::string path = a.input().Text();
  char* const in = a.Text(path);
  const unsigned choice = a.input().Byte();
  F(choice == 255 ? nullptr : in, choice == 254   ? nullptr
                                  : choice == 253 ? in
                                                  : a.Room(path.size() + 1, false));
}

void FullPath(Arguments& a) {
  const std::string name = a.input().Text();
  const unsigned choice = a.input().Byte();
  GetFullPath(choice == 255 ? nullptr : a.Text(name),
              choice == 254 ? nullptr : a.Room(256 + name.size(), false), a.input().Int());
}

// ------------------------------------------------------------------ the calls

// A function whose arguments belong together; null for the others.
using Way = void (*)(Arguments& arguments);
template <auto F>
constexpr Way kOwnWay = nullptr;
template <>
constexpr Way kOwnWay<PN_SetAccount> = &Account;
template <>
constexpr Way kOwnWay<PN_GetStringBlock> = &StringBlock;
template <>
constexpr Way kOwnWay<GWQ_ReadPin> = &ReadPinInClear;
template <>
constexpr Way kOwnWay<DEV_CommCall> = &Describe;
template <>
constexpr Way kOwnWay<GetVideoList> = &ListFiles;
template <>
constexpr Way kOwnWay<DownFile> = &SendPiece;
template <>
constexpr Way kOwnWay<MP_FindHeadPhoto> = &FindHeadPhoto;
template <>
constexpr Way kOwnWay<PullFile> = &Pull;
template <>
constexpr Way kOwnWay<TransProcHW> = &PullHw;
template <>
constexpr Way kOwnWay<TransProc> = &Transact<TransProc>;
template <>
constexpr Way kOwnWay<TransProcByEnd> = &TransactByEnd;
template <>
constexpr Way kOwnWay<TransProcForEva> = &Transact<TransProcForEva>;
template <>
constexpr Way kOwnWay<TransProcForInfo> = &Transact<TransProcForInfo>;
template <>
constexpr Way kOwnWay<TransProcOnlyWrite> = &Transact<TransProcOnlyWrite>;
template <>
constexpr Way kOwnWay<TransProcOnlySend> = &OnlySend;
template <>
constexpr Way kOwnWay<TransProcOnlyRead> = &OnlyRead;
template <>
constexpr Way kOwnWay<GWQ_SetProgress> = &ListenToProgress;
template <>
constexpr Way kOwnWay<GWQ_FindTerminals> = &Find;

constexpr int OwnSeconds(const Waits& waits) {
  const int customer_s = waits.customer_s.value_or(0);
  if (waits.each_read_s > 0) return customer_s;  // which each exchange may take
  return std::accumulate(waits.asks_s.begin(), waits.asks_s.end(), customer_s);
}

template <auto F, typename... Kinds>
constexpr Call CallOf(const Row<F, Kinds...>& row) {
  constexpr Way kWay = [] {
    if constexpr (kOwnWay<F> != nullptr) {
      return kOwnWay<F>;
    } else {
      return &Do<F, MakerOf<Kinds>...>;
    }
  }();
  return {row.name, OwnSeconds(row.waits), row.waits.each_read_s, false, kWay};
}

constexpr Call CallOf(const Call& call) {
  return call;
}

// Sessions on file name a call by its place here: a new one comes at the end of kLaterCalls.
// clang-format off
constexpr auto kCalls = std::apply(
    [](const auto&... rows) { return std::array{CallOf(rows)...}; },
    std::tuple_cat(kTerminalCalls, std::tuple{
        Call{"GetDownParam3", 0, 0, false, &BuildRecord}
    }, kFileCalls, std::tuple{
        Call{"GetFileName", 0, 0, false, &NameOf<GetFileName>},
        Call{"GetFileNameEx", 0, 0, false, &NameOf<GetFileNameEx>},
        Call{"GetFileExtendName", 0, 0, false, &NameOf<GetFileExtendName>},
        Call{"GetFileExtenName", 0, 0, false, &NameOf<GetFileExtenName>},
        Call{"get_file_size", 0, 0, false, &Do<get_file_size, Text>},
        Call{"WriteFileData", 0, 0, false, &WriteFile},
        Call{"ReadFileData", 0, 0, false, &ReadFile},
        Call{"GetBase46FromFile", 0, 0, false, &Base64OfFile},
        Call{"WriteBase64ToFile", 0, 0, false, &FileOfBase64}
    }, kTransactionCalls, std::tuple{
        Call{"WriteData", 0, 0, false, &WriteDataBlock},
        Call{"ICC_OpenTransPort", 0, 0, true, &WithDescriptor<ICC_OpenTransPort>},
        Call{"ICC_OpenLinuxTransPort", 0, 0, true, &WithDescriptor<ICC_OpenLinuxTransPort>},
        Call{"ICC_ChangeTermParam", 0, 0, true, &WithDescriptor<ICC_ChangeTermParam>},
        Call{"ICC_ChangeLinuxTermParam", 0, 0, true, &WithDescriptor<ICC_ChangeLinuxTermParam>},
        Call{"SetBackUpParam", 0, 0, true, &SetRawParameters},
        Call{"ICC_WriteDataToTransPort", 0, 0, false, &WriteBlock<ICC_WriteDataToTransPort>},
        Call{"ICC_WriteDataToLinuxTransPort", 0, 0, false, &WriteBlock<ICC_WriteDataToLinuxTransPort>},
        Call{"ICC_ReadDataFromTransPort", kUnlimited, 0, false, &ReadInUse<ICC_ReadDataFromTransPort>},
        Call{"ICC_ReadDataFromLinuxTransPort", kUnlimited, 0, false, &ReadInUse<ICC_ReadDataFromLinuxTransPort>},
        Call{"ICC_CloseTransPort", 0, 0, false, &Do<ICC_CloseTransPort>},
        Call{"ICC_CloseLinuxTransPort", 0, 0, false, &Do<ICC_CloseLinuxTransPort>},
        Call{"ICC_CancelReadTransPort", 0, 0, false, &Do<ICC_CancelReadTransPort>},
        Call{"ICC_CancelReadLinuxTransPort", 0, 0, false, &Do<ICC_CancelReadLinuxTransPort>},
        Call{"ICC_OpenLinuxCom", 0, 0, true, &Do<ICC_OpenLinuxCom, LinePath, Baud>},
        Call{"ICC_CloseLinuxCom", 0, 0, false, &Do<ICC_CloseLinuxCom>},
        Call{"ICC_WriteLinuxCom", 0, 0, false, &WriteBlock<ICC_WriteLinuxCom>},
        Call{"ICC_ReadLinuxCom", 0, 0, false, &ReadLink<ICC_ReadLinuxCom, 0>},
        Call{"ICC_CancelLinuxComRead", 0, 0, false, &Do<ICC_CancelLinuxComRead>},
        Call{"SendDataToTransPort", 0, 0, false, &WriteBlock<SendDataToTransPort>},
        Call{"SetComFd", 0, 0, true, &GiveLine<SetComFd>},
        Call{"SetComAttr", 0, 0, false, &SetLine<SetComAttr>},
        Call{"RestoreComAttr", 0, 0, false, &ResetLine<RestoreComAttr>},
        Call{"ICC_OpenLinuxHid", 0, 0, true, &Do<ICC_OpenLinuxHid, Is<0x1209>, Int>},
        Call{"ICC_CloseLinuxHid", 0, 0, false, &Do<ICC_CloseLinuxHid>},
        Call{"ICC_WriteLinuxHid", 0, 0, false, &WriteBlock<ICC_WriteLinuxHid>},
        Call{"ICC_ReadLinuxHid", 0, 0, false, &ReadLink<ICC_ReadLinuxHid, kReport - 1>},
        Call{"ICC_CancelLinuxHidRead", 0, 0, false, &Do<ICC_CancelLinuxHidRead>},
        Call{"ICC_OpenLinuxSdt", 0, 0, true, &Do<ICC_OpenLinuxSdt, Is<0x1209>, Int>},
        Call{"ICC_CloseLinuxSdt", 0, 0, true, &Do<ICC_CloseLinuxSdt>},
        Call{"ICC_WriteLinuxSdt", 0, 0, false, &WriteBlock<ICC_WriteLinuxSdt>},
        Call{"ICC_ReadLinuxSdt", 0, 0, false, &ReadLink<ICC_ReadLinuxSdt, kReport - 1>},
        Call{"ICC_CancelLinuxSdtRead", 0, 0, false, &Do<ICC_CancelLinuxSdtRead>},
        Call{"ICC_OpenLinuxAux", 0, 0, true, &Do<ICC_OpenLinuxAux, Int, Int, Baud, Int>},
        Call{"ICC_CloseLinuxAux", 0, 0, false, &Do<ICC_CloseLinuxAux, Int>},
        Call{"ICC_WriteLinuxAux", 0, 0, false, &WriteBlock<ICC_WriteLinuxAux>},
        Call{"ICC_ReadLinuxAux", 0, 0, false, &ReadLink<ICC_ReadLinuxAux, 0>},
        Call{"ICC_CancelLinuxAuxRead", 0, 0, false, &Do<ICC_CancelLinuxAuxRead>},
        Call{"ICC_OpenLinux", 0, 0, true, &Do<ICC_OpenLinux, LinePath, Baud>},
        Call{"ICC_CloseLinux", 0, 0, false, &Do<ICC_CloseLinux>},
        Call{"ICC_WriteLinux", 0, 0, false, &WriteBlock<ICC_WriteLinux>},
        Call{"ICC_ReadLinux", 0, 0, false, &ReadLink<ICC_ReadLinux, 0>},
        Call{"VK_OpenAuxPort", 0, 0, false, &Do<VK_OpenAuxPort, Int, Int, Baud, Int>},
        Call{"VK_CloseAuxPort", 0, 0, false, &Do<VK_CloseAuxPort, Int>},
        Call{"VK_SendDataToTransPort", 0, 0, false, &WriteBlock<VK_SendDataToTransPort>},
        Call{"SetAuxFd", 0, 0, true, &GiveLine<SetAuxFd>},
        Call{"ClearReceiveBuffer", 0, 0, false, &Do<ClearReceiveBuffer>},
        Call{"SetTerm", 0, 0, false, &SetLine<SetTerm>},
        Call{"ResetAux", 0, 0, false, &ResetLine<ResetAux>},
        Call{"ClearInvisibleCharInStr", 0, 0, false, &Do<ClearInvisibleCharInStr, Text>},
        Call{"ICC_INIT_LIBUSB", 0, 0, false, &WithContext<ICC_INIT_LIBUSB>},
        Call{"ICC_UINIT_LIBUSB", 0, 0, false, &WithContext<ICC_UINIT_LIBUSB>},
        Call{"test_init", 0, 0, false, &WithContext<test_init>},
        Call{"test_deinit", 0, 0, false, &WithContext<test_deinit>},
        Call{"SetDebugFlag", 0, 0, false, &Do<SetDebugFlag, Unsigned>},
        Call{"ICC_DPrintDataHexToFile", 0, 0, false, &LogBytes},
        Call{"DelOutTimeLogFile", 0, 0, false, &Do<DelOutTimeLogFile>},
        Call{"pGetLogPath", 0, 0, false, &Do<pGetLogPath>},
        Call{"GetModuleCurPath", 0, 0, false, &Do<GetModuleCurPath, OrNull<Out<256>>>},
        Call{"GetFullPath", 0, 0, false, &FullPath},
        Call{"GetTempPath", 0, 0, false, &Do<GetTempPath, Int, OrNull<Out<5>>>},
        Call{"GetAbsDays", 0, 0, false, &Do<GetAbsDays, Int, Int, Int>},
        Call{"GetProfileString", 0, 0, false, &Do<GetProfileString, Text, Text, Text, OrNull<Out<100>>>},
        Call{"GWQ_SetOutputRoom", 0, 0, false, &Do<GWQ_SetOutputRoom, Int>}
    }, kLaterCalls));
// clang-format on

}  // namespace

std::span<const Call> Calls() {
  return kCalls;
}

void BeHost(Arguments& arguments) {
  Input input = arguments.input();
  t_host.script = Input(input.Take(16));
}

}  // namespace gwq::fuzz
