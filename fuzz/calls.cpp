#include "calls.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <tuple>

#include <gwq/extra.h>
#include <gwq/frame/load.h>
#include <gwq/gwq.h>
#include "machine.h"

namespace gwq::fuzz {

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
// The output whose size the contract does not pass: with room for any file, or with exactly as much as the caller tells.
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
using Void = Is<static_cast<void*>(nullptr)>;
using None = Is<static_cast<const char*>(nullptr)>;

template <auto F, typename... Makers>
void Do(Arguments& a) {
  std::apply(F, std::tuple{Makers::Make(a)...});  // in this order with every compiler
}

template <auto F, typename... Makers>
void DoLimited(Arguments& a) {
  const int status = std::apply(F, std::tuple{Makers::Make(a)...});
  if (status == GWQ_TOO_SMALL) a.RequireLimitedUntouched();
}

// ------------------------------------------------------------------ arguments that belong together

std::size_t Count(int length) {
  return static_cast<std::size_t>(std::max(length, 0));
}

int Small(Arguments& a) {
  return std::min(a.input().Int(), 1 << 16);
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

constexpr int kUnlimited = INT_MAX;  // the read itself is timed, and there is one
constexpr int kPush = 30;            // the longest wait of a push
constexpr int kPull = 3;

// clang-format off
constexpr Call kCalls[] = {
    {"PN_GetEnType", 2, 0, false, &Do<PN_GetEnType, Port, Text, Baud, OrNull<IntOut>>},
    {"PN_SetEnType", 2, 0, false, &Do<PN_SetEnType, Port, Text, Baud, Int>},
    {"PN_GetPinLen", 2, 0, false, &Do<PN_GetPinLen, Port, Text, Baud, OrNull<IntOut>>},
    {"PN_SetPinLen", 2, 0, false, &Do<PN_SetPinLen, Port, Text, Baud, Int>},
    {"PN_SetEndRule", 2, 0, false, &Do<PN_SetEndRule, Port, Text, Baud, Int>},
    {"PN_SetFillType", 2, 0, false, &Do<PN_SetFillType, Port, Text, Baud, Text>},
    {"PN_SetPinMoe", 2, 0, false, &Do<PN_SetPinMoe, Port, Text, Baud, Int>},
    {"PN_SetSoundType", 2, 0, false, &Do<PN_SetSoundType, Port, Text, Baud, Int>},
    {"PN_SetAccount", 2, 0, false, &Account},
    {"PN_ReadDeviceId", 3, 0, false, &Do<PN_ReadDeviceId, Port, Text, Baud, OrNull<Out<1021>>>},
    {"PN_WriteDeviceId", 3, 0, false, &Do<PN_WriteDeviceId, Port, Text, Baud, Text>},
    {"PN_SetPinPadParameter", 8, 0, false, &Do<PN_SetPinPadParameter, Port, Text, Baud, Int, Int, Int, Text>},
    {"PN_GetPin", 2, 0, false, &Do<PN_GetPin, Port, Text, Baud, Seconds, OrNull<IntOut>, OrNull<Out<1021>>>},
    {"GetPinblockShowString", 2, 0, false,
     &Do<GetPinblockShowString, Port, Text, Baud, OrNull<OutBytes<1021>>, OrNull<IntOut>, Seconds, Text>},
    {"PN_GetPinBlock", 14, 0, false,
     &Do<PN_GetPinBlock, Port, Text, Baud, Seconds, Int, Int, Int, Text, OrNull<Out<1021>>, OrNull<Out<1021>>, OrNull<IntInOut>>},
    {"PN_GetPinBlockShowString", 14, 0, false,
     &Do<PN_GetPinBlockShowString, Port, Text, Baud, Seconds, Int, Int, Int, Text, OrNull<Out<1021>>, OrNull<Out<1021>>,
         OrNull<IntInOut>, Text>},
    {"PN_GetStringBlock", 3, kPull, false, &StringBlock},
    {"PN_GetInNo", 2, 0, false, &Do<PN_GetInNo, Port, Text, Baud, Seconds, Int, Int, Text, OrNull<Out<1024>>>},
    {"PN_GetPinPadFactor", 2, 0, false, &Do<PN_GetPinPadFactor, Port, Text, Baud, OrNull<Out<1021>>>},
    {"PN_CreateAndGetPinPadFactor", 4, 0, false, &Do<PN_CreateAndGetPinPadFactor, Port, Text, Baud, Int, OrNull<Out<1021>>>},
    {"PN_ObtainFactor", 4, 0, false, &Do<PN_ObtainFactor, Port, Text, Baud, Text, OrNull<Out<1021>>>},
    {"PN_ObtainPublicKey", 6, 0, false, &Do<PN_ObtainPublicKey, Port, Text, Baud, Int, Int, OrNull<Out<2041>>>},
    {"PN_ObtainDigest", 3, 0, false, &Do<PN_ObtainDigest, Port, Text, Baud, Int, Text, OrNull<Out<1021>>>},
    {"PN_DownloadPinPadWK", 4, 0, false, &Do<PN_DownloadPinPadWK, Port, Text, Baud, Text, Text, Text, Text>},
    {"GWQ_SetPinLen", 0, 0, false, &Do<GWQ_SetPinLen, Port, Baud, Int>},
    {"GWQ_UpdateMKey", 3, 0, false, &Do<GWQ_UpdateMKey, Port, Baud, Int, Text, Text>},
    {"GWQ_ResetKey", 3, 0, false, &Do<GWQ_ResetKey, Port, Baud>},
    {"GWQ_DownLoadWKey", 3, 0, false, &Do<GWQ_DownLoadWKey, Port, Baud, Int, Int, Text>},
    {"GWQ_ActiveWKey", 3, 0, false, &Do<GWQ_ActiveWKey, Port, Baud, Int, Int>},
    {"GWQ_ReadPin", 6, 0, false, &ReadPinInClear},
    {"GWQ_ReadPinDES", 6, 0, false, &Do<GWQ_ReadPinDES, Port, Baud, Int, Int, Seconds, OrNull<Zeroed<1025>>>},
    {"GWQ_ReadPinAnsi", 6, 0, false, &Do<GWQ_ReadPinAnsi, Port, Baud, Int, Int, Seconds, Text, OrNull<Zeroed<1025>>>},
    {"GWQ_GetVerBuildDate", 2, 0, false, &Do<GWQ_GetVerBuildDate, Port, Char, Baud, OrNull<Zeroed<9>>>},
    {"CheckUtf8version", 2, 0, false, &Do<CheckUtf8version>},
    {"MP_StartElectronicCard", 2, 0, false, &Do<MP_StartElectronicCard, Void, Void, Baud, Seconds, Text, Text, Int, Text>},
    {"MP_SetEvaluateInfo", 2, 0, false, &Do<MP_SetEvaluateInfo, Void, Void, Baud, Text, Text, Int, Text>},
    {"MP_StartEvaluate", 3, 0, false, &Do<MP_StartEvaluate, Void, Void, Baud, Seconds, OrNull<Out<1>>>},
    {"MP_CancleEvaluate", 0, 0, false, &Do<MP_CancleEvaluate, Void, Void, Baud>},
    {"GWQ_StartEvaluator", 3, 0, false, &Do<GWQ_StartEvaluator, Port, Baud, Text, Text, Int, Text, Seconds, OrNull<OutOf<unsigned>>>},
    {"GWQ_StartInfo", 3, 0, false, &Do<GWQ_StartInfo, Port, Baud, Seconds, Text, OrNull<OutOf<unsigned>>>},
    {"GWQ_StartKeyboard", 0, 0, false, &Do<GWQ_StartKeyboard, Port, Baud, Seconds, Int, OrNull<Zeroed<2046>>>},
    {"MP_StartInfoHtml", 4, 0, false, &Do<MP_StartInfoHtml, Void, Void, Baud, Seconds, Int, Text, OrNull<IntOut>, Int>},
    {"MP_StartInfoHtmlScreenshot", 4, kPull, false,
     &Do<MP_StartInfoHtmlScreenshot, Void, Text, Baud, Seconds, Int, Text, Text, OrNull<IntOut>>},
    {"MP_StartInfoHtmlEx", 3, kPush, false, &Do<MP_StartInfoHtmlEx, Void, Void, Baud, Seconds, Text, Text, OrNull<Out<2046>>>},
    {"MP_ShowPDF", 0, kPush, false, &Do<MP_ShowPDF, Void, Void, Baud, Seconds, Text>},
    {"MP_ConfirmPDF", 3, kPush, false, &Do<MP_ConfirmPDF, Void, Void, Baud, Seconds, Text, OrNull<IntOut>>},
    {"MP_SignPDF", 3, kPush, false, &DoLimited<MP_SignPDF, Void, Text, Baud, Seconds, Text, Text, Text, FileOut>},
    {"MP_SignPDF_Voice", 3, kPush, false,
     &DoLimited<MP_SignPDF_Voice, Void, Text, Baud, Seconds, Text, Text, Text, Text, FileOut>},
    {"MP_Sign_With_TZG", 3, kPush, false,
     &DoLimited<MP_Sign_With_TZG, Void, Text, Baud, Seconds, Text, Text, Text, Text, Int, Int, FileOut>},
    {"GWQ_StartSign", 3, kPush, false, &Do<GWQ_StartSign, Port, Baud, Seconds, Text, Text, Text>},
    {"MP_CheckOut_All", 3, 0, false, &Do<MP_CheckOut_All, Void, Void, Baud, Seconds, Text, Text, OrNull<Out<2046>>>},
    {"MP_GetFirmwareVersion", 1, 0, false, &Do<MP_GetFirmwareVersion, Void, Void, Int, Int, OrNull<Out<2046>>, OrNull<Out<2046>>>},
    {"MP_CancelCurrentOperation", 2, 0, false, &Do<MP_CancelCurrentOperation, Void, Void, Baud, Int>},
    {"DEV_CommCall", 11, 0, false, &Describe},
    {"GetVideoList", 10, 0, false, &ListFiles},
    {"DownVideoInfo", 0, 5, false, &Do<DownVideoInfo, Port, Char, Baud, Int, Text, Text>},
    {"DownFile", kUnlimited, 0, false, &SendPiece},
    {"GetDownParam3", 0, 0, false, &BuildRecord},
    {"DelVideoFile", 3, 0, false, &Do<DelVideoFile, Port, Char, Baud, Int, Text>},
    {"DelAllVideoFile", 3, 0, false, &Do<DelAllVideoFile, Port, Char, Baud, Int>},
    {"DeleteMediaFile", 0, 0, false, &Do<DeleteMediaFile, Port, Char, Baud, Int, Text>},
    {"DownVideoFile", 0, 3, false, &Do<DownVideoFile, Port, Char, Baud, Int, Text>},
    {"HIDDownLoad", 0, 3, false, &Do<HIDDownLoad, Text, Int>},
    {"MP_FindHeadPhoto", 10, 0, false, &FindHeadPhoto},
    {"MP_DelHeadFile", 3, 0, false, &Do<MP_DelHeadFile, None, None, Baud, Text>},
    {"MP_DownHeadFile", 0, kPush, false, &Do<MP_DownHeadFile, None, Text, Baud, Text, Text>},
    {"MP_SetBarcodePic", 0, kPush, false, &Do<MP_SetBarcodePic, None, None, Baud, Text>},
    {"MP_GetFileList", 3, 0, false, &Do<MP_GetFileList, None, None, Baud, None, Int, OrNull<Out<1024>>>},
    {"MP_DownloadFile", 0, kPush, false, &Do<MP_DownloadFile, None, None, Baud, None, Int, Text, Int>},
    {"Z11DownLoadFile", 0, kPush, false, &Do<Z11DownLoadFile, Port, Char, Baud, Int, Text, Text>},
    {"Z11DownLoadHead", 0, kPush, false, &Do<Z11DownLoadHead, Port, Char, Baud, Int, Text, Text>},
    {"pushFileToZ11", 0, kPush, false, &Do<pushFileToZ11, Text, OrNull<Zeroed<4096>>>},
    {"PullFile", 0, 9, false, &Pull},
    {"TransProcHW", 0, 9, false, &PullHw},
    {"GetFileName", 0, 0, false, &NameOf<GetFileName>},
    {"GetFileNameEx", 0, 0, false, &NameOf<GetFileNameEx>},
    {"GetFileExtendName", 0, 0, false, &NameOf<GetFileExtendName>},
    {"GetFileExtenName", 0, 0, false, &NameOf<GetFileExtenName>},
    {"get_file_size", 0, 0, false, &Do<get_file_size, Text>},
    {"WriteFileData", 0, 0, false, &WriteFile},
    {"ReadFileData", 0, 0, false, &ReadFile},
    {"GetBase46FromFile", 0, 0, false, &Base64OfFile},
    {"WriteBase64ToFile", 0, 0, false, &FileOfBase64},
    {"TransProc", 0, 0, false, &Transact<TransProc>},
    {"TransProcByEnd", 0, 0, false, &TransactByEnd},
    {"TransProcForEva", 0, 0, false, &Transact<TransProcForEva>},
    {"TransProcForInfo", 0, 0, false, &Transact<TransProcForInfo>},
    {"TransProcOnlyWrite", 0, 0, false, &Transact<TransProcOnlyWrite>},
    {"TransProcOnlySend", 0, 0, false, &OnlySend},
    {"TransProcOnlyRead", 0, 0, false, &OnlyRead},
    {"CancelRead", 0, 0, false, &Do<CancelRead>},
    {"CancelWrite", 0, 0, false, &Do<CancelWrite>},
    {"WriteData", 0, 0, false, &WriteDataBlock},
    {"ICC_OpenTransPort", 0, 0, true, &WithDescriptor<ICC_OpenTransPort>},
    {"ICC_OpenLinuxTransPort", 0, 0, true, &WithDescriptor<ICC_OpenLinuxTransPort>},
    {"ICC_ChangeTermParam", 0, 0, true, &WithDescriptor<ICC_ChangeTermParam>},
    {"ICC_ChangeLinuxTermParam", 0, 0, true, &WithDescriptor<ICC_ChangeLinuxTermParam>},
    {"SetBackUpParam", 0, 0, true, &SetRawParameters},
    {"ICC_WriteDataToTransPort", 0, 0, false, &WriteBlock<ICC_WriteDataToTransPort>},
    {"ICC_WriteDataToLinuxTransPort", 0, 0, false, &WriteBlock<ICC_WriteDataToLinuxTransPort>},
    {"ICC_ReadDataFromTransPort", kUnlimited, 0, false, &ReadInUse<ICC_ReadDataFromTransPort>},
    {"ICC_ReadDataFromLinuxTransPort", kUnlimited, 0, false, &ReadInUse<ICC_ReadDataFromLinuxTransPort>},
    {"ICC_CloseTransPort", 0, 0, false, &Do<ICC_CloseTransPort>},
    {"ICC_CloseLinuxTransPort", 0, 0, false, &Do<ICC_CloseLinuxTransPort>},
    {"ICC_CancelReadTransPort", 0, 0, false, &Do<ICC_CancelReadTransPort>},
    {"ICC_CancelReadLinuxTransPort", 0, 0, false, &Do<ICC_CancelReadLinuxTransPort>},
    {"ICC_OpenLinuxCom", 0, 0, true, &Do<ICC_OpenLinuxCom, LinePath, Baud>},
    {"ICC_CloseLinuxCom", 0, 0, false, &Do<ICC_CloseLinuxCom>},
    {"ICC_WriteLinuxCom", 0, 0, false, &WriteBlock<ICC_WriteLinuxCom>},
    {"ICC_ReadLinuxCom", 0, 0, false, &ReadLink<ICC_ReadLinuxCom, 0>},
    {"ICC_CancelLinuxComRead", 0, 0, false, &Do<ICC_CancelLinuxComRead>},
    {"SendDataToTransPort", 0, 0, false, &WriteBlock<SendDataToTransPort>},
    {"SetComFd", 0, 0, true, &GiveLine<SetComFd>},
    {"SetComAttr", 0, 0, false, &SetLine<SetComAttr>},
    {"RestoreComAttr", 0, 0, false, &ResetLine<RestoreComAttr>},
    {"ICC_OpenLinuxHid", 0, 0, true, &Do<ICC_OpenLinuxHid, Is<0x1209>, Int>},
    {"ICC_CloseLinuxHid", 0, 0, false, &Do<ICC_CloseLinuxHid>},
    {"ICC_WriteLinuxHid", 0, 0, false, &WriteBlock<ICC_WriteLinuxHid>},
    {"ICC_ReadLinuxHid", 0, 0, false, &ReadLink<ICC_ReadLinuxHid, kReport - 1>},
    {"ICC_CancelLinuxHidRead", 0, 0, false, &Do<ICC_CancelLinuxHidRead>},
    {"ICC_OpenLinuxSdt", 0, 0, true, &Do<ICC_OpenLinuxSdt, Is<0x1209>, Int>},
    {"ICC_CloseLinuxSdt", 0, 0, true, &Do<ICC_CloseLinuxSdt>},
    {"ICC_WriteLinuxSdt", 0, 0, false, &WriteBlock<ICC_WriteLinuxSdt>},
    {"ICC_ReadLinuxSdt", 0, 0, false, &ReadLink<ICC_ReadLinuxSdt, kReport - 1>},
    {"ICC_CancelLinuxSdtRead", 0, 0, false, &Do<ICC_CancelLinuxSdtRead>},
    {"ICC_OpenLinuxAux", 0, 0, true, &Do<ICC_OpenLinuxAux, Int, Int, Baud, Int>},
    {"ICC_CloseLinuxAux", 0, 0, false, &Do<ICC_CloseLinuxAux, Int>},
    {"ICC_WriteLinuxAux", 0, 0, false, &WriteBlock<ICC_WriteLinuxAux>},
    {"ICC_ReadLinuxAux", 0, 0, false, &ReadLink<ICC_ReadLinuxAux, 0>},
    {"ICC_CancelLinuxAuxRead", 0, 0, false, &Do<ICC_CancelLinuxAuxRead>},
    {"ICC_OpenLinux", 0, 0, true, &Do<ICC_OpenLinux, LinePath, Baud>},
    {"ICC_CloseLinux", 0, 0, false, &Do<ICC_CloseLinux>},
    {"ICC_WriteLinux", 0, 0, false, &WriteBlock<ICC_WriteLinux>},
    {"ICC_ReadLinux", 0, 0, false, &ReadLink<ICC_ReadLinux, 0>},
    {"VK_OpenAuxPort", 0, 0, false, &Do<VK_OpenAuxPort, Int, Int, Baud, Int>},
    {"VK_CloseAuxPort", 0, 0, false, &Do<VK_CloseAuxPort, Int>},
    {"VK_SendDataToTransPort", 0, 0, false, &WriteBlock<VK_SendDataToTransPort>},
    {"SetAuxFd", 0, 0, true, &GiveLine<SetAuxFd>},
    {"ClearReceiveBuffer", 0, 0, false, &Do<ClearReceiveBuffer>},
    {"SetTerm", 0, 0, false, &SetLine<SetTerm>},
    {"ResetAux", 0, 0, false, &ResetLine<ResetAux>},
    {"ClearInvisibleCharInStr", 0, 0, false, &Do<ClearInvisibleCharInStr, Text>},
    {"ICC_INIT_LIBUSB", 0, 0, false, &WithContext<ICC_INIT_LIBUSB>},
    {"ICC_UINIT_LIBUSB", 0, 0, false, &WithContext<ICC_UINIT_LIBUSB>},
    {"test_init", 0, 0, false, &WithContext<test_init>},
    {"test_deinit", 0, 0, false, &WithContext<test_deinit>},
    {"SetDebugFlag", 0, 0, false, &Do<SetDebugFlag, Unsigned>},
    {"ICC_DPrintDataHexToFile", 0, 0, false, &LogBytes},
    {"DelOutTimeLogFile", 0, 0, false, &Do<DelOutTimeLogFile>},
    {"pGetLogPath", 0, 0, false, &Do<pGetLogPath>},
    {"GetModuleCurPath", 0, 0, false, &Do<GetModuleCurPath, OrNull<Out<256>>>},
    {"GetFullPath", 0, 0, false, &FullPath},
    {"GetTempPath", 0, 0, false, &Do<GetTempPath, Int, OrNull<Out<5>>>},
    {"GetAbsDays", 0, 0, false, &Do<GetAbsDays, Int, Int, Int>},
    {"GetProfileString", 0, 0, false, &Do<GetProfileString, Text, Text, Text, OrNull<Out<100>>>},
    {"GWQ_SetOutputRoom", 0, 0, false, &Do<GWQ_SetOutputRoom, Int>},
};
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
