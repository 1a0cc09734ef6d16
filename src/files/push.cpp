// SPDX-License-Identifier: MIT
#include <gwq/files/push.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <span>
#include <string_view>

#include <gwq/codec/packet.h>
#include <gwq/diag/log.h>
#include <gwq/status_codes.h>
#include "codec/internal/transfer_packet.h"
#include "files/internal/file.h"
#include "files/internal/path_list.h"
#include "files/internal/transfer.h"
#include "frame/internal/arguments.h"
#include "frame/internal/ask.h"
#include "frame/internal/operation.h"
#include "frame/internal/progress.h"

// Exported work buffers of a push: a piece of the file, and the data packet around it.
unsigned char m_szBuf[200000];
unsigned char m_szCMD[204800];

namespace gwq {
namespace {

constexpr int kStepTimeoutMs = 5000;
constexpr int kEndTimeoutMs = 30000;

// Sends one packet or command of a push and checks its acknowledgement.
int PushStep(Endpoint endpoint, CommandBytes bytes, int timeout_ms) {
  AnswerText<1024> answer;
  const int result =
      Exchange(kAsk, endpoint, bytes, {&EndOfRead2, timeout_ms}, {answer.data(), answer.length()});
  if (result != GWQ_OK) return result;
  return CheckAndGetResponse(answer.bytes().data(), *answer.length());
}

CommandBytes AsCommand(std::span<unsigned char> packet) {
  return {reinterpret_cast<char*>(packet.data()), static_cast<int>(packet.size())};
}

// Writes the header of a packet whose payload, `count` bytes, follows the header's place in `room`.
CommandBytes CompletePacket(std::span<unsigned char> room, PacketType type, std::size_t count) {
  const std::span<unsigned char> packet = room.first(kPacketHeaderSize + count);
  WritePacketHeader(type, packet.subspan(kPacketHeaderSize), packet.first<kPacketHeaderSize>());
  return AsCommand(packet);
}

int PushModeChange(Endpoint endpoint) {
  auto command = ModeChange();
  const int result = PushStep(endpoint, {command.data(), command.size()}, kStepTimeoutMs);
  ICC_DPrintLogToFile("Z11DownLoadFile Z11ChangeMode nRet=%d", result);
  return result;
}

// Contract: one zero byte follows the empty start packet; the terminal expects it.
int PushStart(Endpoint endpoint) {
  unsigned char packet[kPacketHeaderSize + 1] = {};
  WritePacketHeader(PacketType::kStart, {}, std::span(packet).first<kPacketHeaderSize>());
  const int result = PushStep(endpoint, AsCommand(packet), kStepTimeoutMs);
  ICC_DPrintLogToFile("Z11DownLoadFile Z11StartDownload nRet=%d", result);
  return result;
}

bool IsAtEnd(std::FILE* file) {
  const int next = std::fgetc(file);
  if (next != EOF) std::ungetc(next, file);
  return next == EOF;
}

int PushPiece(Endpoint endpoint, std::size_t count) {
  ICC_DPrintLogToFile(" Z11SendFile nCount=%d", static_cast<int>(count));
  std::memcpy(m_szCMD + kPacketHeaderSize, m_szBuf, count);
  const CommandBytes packet = CompletePacket(m_szCMD, PacketType::kData, count);
  return std::min(PushStep(endpoint, packet, kStepTimeoutMs), 0);
}

// Contract: a file whose size is a multiple of the piece size ends with an empty data packet, which
// the terminal accepts; an empty file sends none.
int PushPieces(Endpoint endpoint, const char* path, File& file, Progress& progress) {
  if (IsAtEnd(file.get())) return GWQ_OK;
  while (true) {
    const std::size_t count = std::fread(m_szBuf, 1, sizeof m_szBuf, file.get());
    if (std::ferror(file.get()) != 0) return NoteFileFailure(), GWQ_BAD_ARGUMENT;
    if (const int result = PushPiece(endpoint, count); result < 0) return result;
    progress.Add(count);
    if (std::feof(file.get()) != 0) return GWQ_OK;
    if (progress.IsDue() && !RunWhileClosed(file, path, "rb", [&progress] { progress.Tell(); })) {
      return GWQ_BAD_ARGUMENT;
    }
    if (Progress::Cancelled()) return GWQ_CANCELLED;
  }
}

int PushContent(Endpoint endpoint, const char* path, Progress& progress) {
  ICC_DPrintLogToFile(" Z11SendFile szFilePath=%s", path);
  File file = OpenFile(path, "rb");
  if (!file) ICC_DPrintLogToFile(" Z11SendFile open file faild");
  int result = file ? PushPieces(endpoint, path, file, progress) : static_cast<int>(GWQ_BAD_ARGUMENT);
  if (file && std::ferror(file.get()) != 0) result = GWQ_BAD_ARGUMENT;
  ICC_DPrintLogToFile("Z11DownLoadFile Z11SendFile nRet=%d", result);
  return result;
}

int PushEnd(Endpoint endpoint, int type, std::string_view name) {
  ICC_DPrintLogToFile("Z11EndDownload szTempName=%.*s", static_cast<int>(name.size()), name.data());
  ICC_DPrintLogToFile("cmdEnd type=%d\r\n", type);
  std::array<unsigned char, kPacketHeaderSize + 1 + kMaxNameSize> packet{};
  packet[kPacketHeaderSize] = static_cast<unsigned char>(type);
  name.copy(reinterpret_cast<char*>(packet.data()) + kPacketHeaderSize + 1, name.size());
  const CommandBytes bytes = CompletePacket(packet, PacketType::kEnd, name.size() + 1);
  const int result = PushStep(endpoint, bytes, kEndTimeoutMs);
  ICC_DPrintLogToFile("Z11DownLoadFile Z11EndDownload nRet=%d", result);
  return result;
}

int PushListed(const char* path, TerminalPaths& on_terminal) {
  if (!FileExists(path)) {
    ICC_DPrintLogToFile("File Not Exist");
    return GWQ_NO_FILE;
  }
  SecretText<1024 + 8> remote;
  remote << "/tmp/" << BaseName(path);
  on_terminal << (on_terminal.size() == 0 ? "" : "|") << remote.text();
  ICC_DPrintLogToFile("szFilePathGBK=%s", path);
  ICC_DPrintLogToFile("szDevicePathGBK=%s", remote.data());
  return PushFile(kPushEndpoint, kNamedFile, path, remote.text());
}

}  // namespace

int PushFile(Endpoint endpoint, int type, const char* path, std::string_view name) {
  if (name.size() > kMaxNameSize) return GWQ_BAD_ARGUMENT;
  if (Progress::Cancelled()) return GWQ_CANCELLED;
  Progress progress(TransferOf(type), path, Progress::IsWanted() ? SizeToTell(path) : 0);
  int result = Progress::Cancelled() ? static_cast<int>(GWQ_CANCELLED) : PushModeChange(endpoint);
  if (result >= 0) result = PushStart(endpoint);
  if (result >= 0) result = PushContent(endpoint, path, progress);
  if (result >= 0 && Progress::Cancelled()) result = GWQ_CANCELLED;
  if (result >= 0) result = PushEnd(endpoint, type, name);
  return progress.End(std::min(result, 0));
}

int PushList(const char* paths, TerminalPaths& on_terminal) {
  ICC_DPrintLogToFile("pushFileToZ11");
  if (paths == nullptr) return GWQ_BAD_ARGUMENT;
  // Contract: the first 1023 bytes of the list count; the rest is not pushed.
  std::array<char, 1024> copy{};
  std::string_view(paths).copy(copy.data(), copy.size() - 1);
  PathList rest(copy.data());
  while (const char* path = rest.Next()) {
    if (const int result = PushListed(path, on_terminal); result != GWQ_OK) return result;
  }
  return GWQ_OK;
}

// Contract: `name` is ignored for a type other than 255; the name is then that of the local file.
int Z11DownLoadFile(int port, char /*channel*/, int baud, int type, const char* localPath, const char* name) {
  const Operation operation;
  return PushFile({port, baud}, type, localPath, type == kNamedFile ? OrEmpty(name) : BaseName(localPath));
}

int Z11DownLoadHead(int port, char /*channel*/, int baud, int type, const char* localPath, const char* name) {
  const Operation operation;
  return PushFile({port, baud}, type, localPath, OrEmpty(name));
}

int pushFileToZ11(const char* pathList, char* outList) {
  const Operation operation;
  TerminalPaths on_terminal;
  const int result = PushList(outList == nullptr ? nullptr : pathList, on_terminal);
  // Contract: no terminator is written; the caller passes a zeroed buffer.
  if (result == GWQ_OK) on_terminal.text().copy(outList, on_terminal.text().size());
  return result;
}

}  // namespace gwq
