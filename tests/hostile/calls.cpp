// SPDX-License-Identifier: MIT
#include "hostile/calls.h"

#include <algorithm>

#include <gwq/extra.h>
#include <gwq/gwq.h>
#include "support/device_calls.h"
#include "usb_ids.h"

namespace gwq::test {
namespace {

constexpr std::size_t kFile = 1'000'000;  // of which the size is not passed
constexpr std::size_t kSlack = 1024;

Limit Customer(int seconds, int margin_s) {
  return Exchange((std::int64_t{std::clamp(seconds, 0, 999)} + margin_s) * 1000);
}

Limit Drained() {
  return Exchange(100);
}

// Every report may be waited for, and is followed by a pause.
Limit Pulled(std::int64_t timeout_ms) {
  const std::int64_t each = Exchange(timeout_ms).ms + 10;
  return {.ms = 2 * each, .ms_per_report = each};
}

Limit PushedFile() {
  return Exchange(5000) + Exchange(5000) + Exchange(5000) + Exchange(5000) + Exchange(30'000);
}

// A path list of random length.
Limit PushedFiles(const char* list) {
  Limit limit;
  const auto files = 1 + std::count(list, list + std::strlen(list), '|');
  for (std::ptrdiff_t i = 0; i < files; ++i) limit = limit + PushedFile();
  return limit;
}

GwqEndOfRead SomeEnd(Caller& c) {
  return c.OneOf<GwqEndOfRead>({nullptr, [](unsigned char*, int) { return 1; },
                                [](unsigned char*, int count) { return count > 0 ? 0 : 1; }});
}

// A transaction's arguments: most take the same.
struct Transaction {
  explicit Transaction(Caller& c)
      : port(c.Port()),
        baud(c.Baud()),
        command(c.Once(20) && port == 0 ? nullptr : c.Command()),
        length(command == nullptr ? 0 : static_cast<int>(std::strlen(command))),
        most(c.OneOf({1, 3, 1023, 1024, 1025, 4096, 0, -1})),
        answer(c.Once(20) ? nullptr : c.Out(static_cast<std::size_t>(std::max(most, 0)) + kSlack)),
        answer_length(c.OutOf(most)),
        timeout_ms(c.OneOf({-1, 0, 999, 1000, c.AnySeconds() * 1000})) {}

  int port;
  int baud;
  char* command;
  int length;
  int most;
  char* answer;
  int* answer_length;
  int timeout_ms;
};

template <auto F>
void Transact(Caller& c) {
  const Transaction t(c);
  c.Allow(Exchange(t.timeout_ms));
  c.Run<decltype(F)>(t.port, t.baud, t.command, t.length, t.answer, t.answer_length, t.timeout_ms);
}

void TransactByEnd(Caller& c) {
  const Transaction t(c);
  c.Allow(Exchange(t.timeout_ms));
  c.Run<decltype(&TransProcByEnd)>(t.port, t.baud, t.command, t.length, t.answer, t.answer_length, SomeEnd(c),
                                   t.timeout_ms);
}

void OnlySend(Caller& c) {
  const Transaction t(c);
  c.Allow(Exchange(0));
  c.Run<decltype(&TransProcOnlySend)>(t.port, t.baud, t.command, t.length, t.timeout_ms);
}

void OnlyRead(Caller& c) {
  const Transaction t(c);
  c.Allow(Exchange(t.timeout_ms));
  c.Run<decltype(&TransProcOnlyRead)>(t.port, t.baud, t.answer, t.answer_length, t.timeout_ms);
}

void PullHw(Caller& c) {
  char* command = c.Command();
  const int timeout_ms = c.OneOf({-1, 0, 1000});
  c.Allow(Pulled(timeout_ms));
  c.Run<decltype(&TransProcHW)>(static_cast<int>(std::strlen(command)), command, timeout_ms,
                                c.Once(20) ? nullptr : c.NewPath());
}

void Pull(Caller& c) {
  char* command = c.OneOf({c.Copy("\x1B[0PULLFILE\x02/tmp/hw.png\x03"), c.Command()});
  const int timeout_ms = c.OneOf({-1, 0, 1000});
  c.Allow(Pulled(timeout_ms));
  c.Run<decltype(&PullFile)>(c.Port(), 'x', c.Baud(), timeout_ms, static_cast<int>(std::strlen(command)),
                             command, c.Once(20) ? nullptr : c.NewPath());
}

void ReadPinInClear(Caller& c) {
  const int seconds = c.Seconds();
  const int size = c.OneOf({0, 4, 6, 14, 2048, 2049, -1});
  c.Run<decltype(&GWQ_ReadPin)>(c.Port(), c.Baud(), c.Int(0, 1), seconds, c.OutOfSize(size), size);
}

void StringBlock(Caller& c) {
  const int seconds = c.AnySeconds();
  const int length = c.OneOf({0, 1, 16, 300, 20480, 20481});
  c.Run<decltype(&PN_GetStringBlock)>(c.Port(), c.Text(), c.Baud(), seconds, c.Int(0, 1), c.OutOfSize(length),
                                      c.Out(kFile), c.OutOf(length), c.Out(4096));
}

void Account(Caller& c) {
  const auto length = c.OneOf<std::size_t>({0, 1, 12, 19, 252, 253, 300});
  unsigned char* account = c.OutBytes(length);
  std::fill_n(account, length, '7');
  c.Run<decltype(&PN_SetAccount)>(c.Port(), c.Text(), c.Baud(), account, static_cast<int>(length));
}

// The pad's RSA keys are made when they are first asked for, which takes it a moment.
void PublicKey(Caller& c) {
  const bool sm2 = !c.Once(10);
  c.Run<decltype(&PN_ObtainPublicKey)>(c.Port(), c.Text(), c.Baud(), sm2 ? 2 : c.Int(1, 2),
                                       sm2 ? 256 : c.OneOf({0, -1, 512, 1024, 2048}), c.Out(2041));
}

void Describe(Caller& c) {
  char* json = c.OneOf({c.Copy(R"({"RequestBaudRate":9600,"RequestTimeOut":"7"})"),
                        c.Copy(R"({"RequestBaudRate":1e300})"), c.Copy("[[[{"), c.Text()});
  const int size = c.OneOf({0, 1, 200, 400, 8192, -1});
  c.Run<decltype(&DEV_CommCall)>(json, c.Int(0, 1), c.OutOfSize(size), c.OutOf(size));
}

void ListFiles(Caller& c) {
  const int size = c.OneOf({0, 1, 20, 4096, -1});
  c.Run<decltype(&GetVideoList)>(c.Port(), 'x', c.Baud(), c.Int(0, 4), c.OutOfSize(size), size);
}

void SendInfo(Caller& c) {
  char* text = c.Text();
  c.Allow(Pause(0));
  for (std::size_t at = 0; text != nullptr && at < std::strlen(text); at += 1024) c.Allow(Exchange(5000));
  c.Run<decltype(&DownVideoInfo)>(c.Port(), 'x', c.Baud(), c.Int(0, 4), text, c.Text());
}

void SendPiece(Caller& c) {
  const int count = c.OneOf({0, 1, 1024, 1025, 3000});
  c.Run<decltype(&DownFile)>(c.Int(0, 4), c.Int(0, 3), c.Int(0, 3),
                             c.OutBytes(static_cast<std::size_t>(count)), count, c.Text());
}

void FindHeadPhoto(Caller& c) {
  const int capacity = c.OneOf({0, 1, 20, 1024});
  c.Run<decltype(&MP_FindHeadPhoto)>(nullptr, nullptr, c.Baud(),
                                     c.Out(static_cast<std::size_t>(capacity) + 1), c.OutOf(capacity));
}

template <auto F>
void OpenUsb(Caller& c) {
  c.Run<decltype(F)>(kUsbIdentities[0].vid, c.OneOf({kUsbIdentities[0].pid, -1}));
}

template <auto F>
void WriteUsb(Caller& c) {
  const auto size = c.OneOf<std::size_t>({0, 1, 1024, 1025, 5000});
  c.Run<decltype(F)>(c.OutBytes(size), static_cast<int>(size));
}

template <auto F>
void ReadUsb(Caller& c) {
  const int most = c.OneOf({1, 1024, 3000});
  const int seconds = c.AnySeconds();
  c.Allow(Exchange(std::int64_t{seconds} * 1000));
  c.Run<decltype(F)>(c.OutBytes(static_cast<std::size_t>(most) + kSlack - 1), most, seconds, SomeEnd(c));
}

// The outputs here have room for any file.
void SetOutputRoom(Caller& c) {
  c.Run<decltype(&GWQ_SetOutputRoom)>(c.OneOf({-1, 0}));
}

// Reads what it is told, so that the sanitizers see whether it is there.
void Listen(int transfer, const char* file, long long done, long long total, void* /*user*/) {
  static thread_local volatile std::size_t t_told = 0;
  t_told = t_told + static_cast<std::size_t>(transfer) + std::strlen(file) +
           static_cast<std::size_t>(done + total);
}

void SetProgress(Caller& c) {
  c.Run<decltype(&GWQ_SetProgress)>(c.OneOf<GwqProgress>({nullptr, &Listen}), nullptr);
}

void FindTerminals(Caller& c) {
  const int room = std::clamp(c.Int(0, 3), -1, 3);
  const auto places = static_cast<std::size_t>(std::max(room, 0));
  c.Run<decltype(&GWQ_FindTerminals)>(
      reinterpret_cast<GwqTerminalPlace*>(c.Out(places * sizeof(GwqTerminalPlace))), room);
}

// ------------------------------------------------------------------ an argument of each kind

std::nullptr_t Draw(Caller& /*c*/, kinds::Null /*kind*/) {
  return nullptr;
}
int Draw(Caller& c, kinds::Port /*kind*/) {
  return c.Port();
}
int Draw(Caller& c, kinds::Baud /*kind*/) {
  return c.Baud();
}
char Draw(Caller& /*c*/, kinds::Channel /*kind*/) {
  return 'x';
}
int Draw(Caller& /*c*/, kinds::Unused /*kind*/) {
  return 0;
}
template <int low, int high>
int Draw(Caller& c, kinds::Number<low, high> /*kind*/) {
  return c.Int(low, high);
}
template <int... values>
int Draw(Caller& c, kinds::OneOf<values...> /*kind*/) {
  return c.OneOf({values...});
}
int Draw(Caller& c, kinds::Destination /*kind*/) {
  return c.OneOf({255, c.Int(0, 4)});
}
int Draw(Caller& c, kinds::Seconds /*kind*/) {
  return c.Seconds();
}
int Draw(Caller& c, kinds::AnySeconds /*kind*/) {
  return c.AnySeconds();
}
char* Draw(Caller& c, kinds::Text /*kind*/) {
  return c.Text();
}
char* Draw(Caller& c, kinds::Digits /*kind*/) {
  return c.Digits();
}
char* Draw(Caller& c, kinds::DigitsOrText /*kind*/) {
  return c.OneOf({c.Digits(), c.Text()});
}
char* Draw(Caller& c, kinds::Hex /*kind*/) {
  return c.Hex();
}
char* Draw(Caller& c, kinds::Algorithm /*kind*/) {
  return c.OneOf({c.Copy("1"), c.Copy("2"), c.Text()});
}
char* Draw(Caller& c, kinds::Path /*kind*/) {
  return c.Path();
}
char* Draw(Caller& c, kinds::PathOrNull /*kind*/) {
  return c.OneOf<char*>({c.Path(), nullptr});
}
char* Draw(Caller& c, kinds::PathList /*kind*/) {
  char* paths = c.PathList();
  c.Allow(PushedFiles(paths));
  return paths;
}
char* Draw(Caller& c, kinds::NewPath /*kind*/) {
  return c.NewPath();
}
char* Draw(Caller& c, kinds::RemotePath /*kind*/) {
  return c.OneOf({c.Copy("/tmp/pushed"), c.Copy("head.jpg"), c.Text()});
}
template <std::size_t size>
char* Draw(Caller& c, kinds::Out<size> /*kind*/) {
  return c.Out(size);
}
template <std::size_t size>
unsigned char* Draw(Caller& c, kinds::OutBytes<size> /*kind*/) {
  return c.OutBytes(size);
}
template <std::size_t size>
char* Draw(Caller& c, kinds::Zeroed<size> /*kind*/) {
  return c.Out(size);
}
template <typename T>
T* Draw(Caller& c, kinds::OutOf<T> /*kind*/) {
  return c.OutOf<T>();
}
template <int low, int high>
int* Draw(Caller& c, kinds::InOut<low, high> /*kind*/) {
  return c.OutOf(c.Int(low, high));
}
char* Draw(Caller& c, kinds::FileOut /*kind*/) {
  return c.Out(kFile);
}

// ------------------------------------------------------------------ the calls

// A function whose arguments belong together, or are worth more than any of their kind; null for the others.
using Way = void (*)(Caller& caller);
template <auto F>
constexpr Way kOwnWay = nullptr;
template <>
constexpr Way kOwnWay<PN_SetAccount> = &Account;
template <>
constexpr Way kOwnWay<PN_GetStringBlock> = &StringBlock;
template <>
constexpr Way kOwnWay<PN_ObtainPublicKey> = &PublicKey;
template <>
constexpr Way kOwnWay<GWQ_ReadPin> = &ReadPinInClear;
template <>
constexpr Way kOwnWay<DEV_CommCall> = &Describe;
template <>
constexpr Way kOwnWay<GetVideoList> = &ListFiles;
template <>
constexpr Way kOwnWay<DownVideoInfo> = &SendInfo;
template <>
constexpr Way kOwnWay<DownFile> = &SendPiece;
template <>
constexpr Way kOwnWay<MP_FindHeadPhoto> = &FindHeadPhoto;
template <>
constexpr Way kOwnWay<PullFile> = &Pull;
template <>
constexpr Way kOwnWay<TransProcHW> = &PullHw;
template <>
constexpr Way kOwnWay<TransProc> = &Transact<&TransProc>;
template <>
constexpr Way kOwnWay<TransProcByEnd> = &TransactByEnd;
template <>
constexpr Way kOwnWay<TransProcForEva> = &Transact<&TransProcForEva>;
template <>
constexpr Way kOwnWay<TransProcForInfo> = &Transact<&TransProcForInfo>;
template <>
constexpr Way kOwnWay<TransProcOnlyWrite> = &Transact<&TransProcOnlyWrite>;
template <>
constexpr Way kOwnWay<TransProcOnlySend> = &OnlySend;
template <>
constexpr Way kOwnWay<TransProcOnlyRead> = &OnlyRead;
template <>
constexpr Way kOwnWay<GWQ_SetProgress> = &SetProgress;
template <>
constexpr Way kOwnWay<GWQ_FindTerminals> = &FindTerminals;

template <auto F, typename... Kinds>
void Drawn(Caller& c) {
  const std::tuple arguments{Draw(c, Kinds{})...};  // in this order with every compiler
  std::apply([&c](auto... drawn) { c.Run<decltype(F)>(drawn...); }, arguments);
}

template <auto F, typename... Kinds>
constexpr Call CallOf(const Row<F, Kinds...>& row) {
  if constexpr (kOwnWay<F> != nullptr) {
    return {row.name, row.waits, kOwnWay<F>};
  } else {
    return {row.name, row.waits, &Drawn<F, Kinds...>};
  }
}

constexpr auto kCalls = std::apply(
    [](const auto&... rows) {
      return std::array{
          CallOf(rows)...,
          Call{"ICC_OpenLinuxHid", {}, &OpenUsb<&ICC_OpenLinuxHid>},
          Call{"ICC_WriteLinuxHid", {}, &WriteUsb<&ICC_WriteLinuxHid>},
          Call{"ICC_ReadLinuxHid", {}, &ReadUsb<&ICC_ReadLinuxHid>},
          Call{"ICC_CloseLinuxHid", {}, &Drawn<ICC_CloseLinuxHid>},
          Call{"ICC_OpenLinuxSdt", {}, &OpenUsb<&ICC_OpenLinuxSdt>},
          Call{"ICC_WriteLinuxSdt", {}, &WriteUsb<&ICC_WriteLinuxSdt>},
          Call{"ICC_ReadLinuxSdt", {}, &ReadUsb<&ICC_ReadLinuxSdt>},
          Call{"ICC_CloseLinuxSdt", {}, &Drawn<ICC_CloseLinuxSdt>},
          Call{"GWQ_SetOutputRoom", {}, &SetOutputRoom},
      };
    },
    std::tuple_cat(kTerminalCalls, kFileCalls, kTransactionCalls, kLaterCalls));

constexpr std::int64_t MsOf(int seconds) {
  return std::int64_t{seconds} * 1000;
}

Limit LimitOf(const Waits& waits, int seconds) {
  Limit limit = Pause(waits.pause_ms);
  for (int i = 0; i < waits.drains; ++i) limit = limit + Drained();
  for (int i = 0; i < waits.sends; ++i) limit = limit + Exchange(0);
  for (const int ask_s : waits.asks_s) {
    if (ask_s > 0) limit = limit + Exchange(MsOf(std::min(ask_s, 999)));
  }
  if (waits.customer_s) limit = limit + Customer(seconds, *waits.customer_s);
  for (int i = 0; i < waits.pushes; ++i) limit = limit + PushedFile();
  for (int i = 0; i < waits.pulls; ++i) limit = limit + Pulled(MsOf(kPullS));
  for (int i = 0; i < waits.most_reads; ++i) limit = limit + Exchange(MsOf(waits.each_read_s));
  return limit;
}

}  // namespace

std::span<const Call> DeviceCalls() {
  return kCalls;
}

Limit Make(const Call& call, Caller& caller) {
  caller.Begin();
  call.make(caller);
  return LimitOf(call.waits, caller.DrawnSeconds()) + caller.Allowed();
}

}  // namespace gwq::test
