#include <gwq/files/push.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <gwq/codec/packet.h>
#include <gwq/diag/log.h>
#include <gwq/files/host_files.h>
#include <gwq/frame/port.h>
#include "codec/internal/transfer_packet.h"
#include "files/internal/file.h"
#include "files/internal/path_list.h"
#include "frame/internal/arguments.h"
#include "frame/internal/ask.h"
#include "frame/internal/operation.h"

unsigned char m_szBuf[200000];
unsigned char m_szCMD[204800];

namespace gwq {
namespace {

constexpr int kStepTimeoutMs = 5000;
constexpr int kEndTimeoutMs = 30000;
constexpr int kNamedFile = 255;
constexpr std::size_t kLongestName = 1022;

// One step of a push: a packet, and an acknowledgement that may be a refusal.
int Step(Line line, std::span<unsigned char> packet, int timeout_ms) {
  AnswerText<1024> answer;
  const int result = TransProc(line.port, line.baud, reinterpret_cast<char*>(packet.data()),
                               static_cast<int>(packet.size()), answer.data(), answer.length(), timeout_ms);
  if (result != GWQ_OK) return result;
  return CheckAndGetResponse(answer.bytes().data(), *answer.length());
}

int ChangeMode(Line line) {
  unsigned char command[] = "\x1B[0HIDCHANGE";
  const int result = Step(line, std::span(command).first(sizeof command - 1), kStepTimeoutMs);
  ICC_DPrintLogToFile("Z11DownLoadFile Z11ChangeMode nRet=%d", result);
  return result;
}

// An empty start packet, and one zero byte behind it, which the terminal expects.
int StartDownload(Line line) {
  unsigned char packet[kPacketHeaderSize + 1] = {};
  WritePacketHeader(PacketType::kStart, {}, std::span(packet).first<kPacketHeaderSize>());
  const int result = Step(line, packet, kStepTimeoutMs);
  ICC_DPrintLogToFile("Z11DownLoadFile Z11StartDownload nRet=%d", result);
  return result;
}

// Completes a packet in whose first `count` bytes behind the header the payload stands already.
std::span<unsigned char> Packed(std::span<unsigned char> room, PacketType type, std::size_t count) {
  const std::span<unsigned char> packet = room.first(kPacketHeaderSize + count);
  WritePacketHeader(type, packet.subspan(kPacketHeaderSize), packet.first<kPacketHeaderSize>());
  return packet;
}

int SendPiece(Line line, std::size_t count) {
  ICC_DPrintLogToFile(" Z11SendFile nCount=%d", static_cast<int>(count));
  std::memcpy(m_szCMD + kPacketHeaderSize, m_szBuf, count);
  return Step(line, Packed(m_szCMD, PacketType::kData, count), kStepTimeoutMs);
}

bool IsEmpty(std::FILE* file) {
  const int first = std::fgetc(file);
  if (first == EOF) return true;
  std::ungetc(first, file);
  return false;
}

// The end of the file is looked for before each read: a size that is a multiple of the piece ends with an
// empty data packet, which the terminal accepts; an empty file sends none.
int SendPieces(Line line, std::FILE* file) {
  if (IsEmpty(file)) return std::ferror(file) != 0 ? GWQ_BAD_ARGUMENT : GWQ_OK;
  while (std::feof(file) == 0) {
    const std::size_t count = std::fread(m_szBuf, 1, sizeof m_szBuf, file);
    if (std::ferror(file) != 0) return GWQ_BAD_ARGUMENT;
    if (const int result = SendPiece(line, count); result < 0) return result;
  }
  return GWQ_OK;
}

int OpenAndSend(Line line, const char* path) {
  ICC_DPrintLogToFile(" Z11SendFile szFilePath=%s", path);
  const File file = OpenFile(path, "rb");
  if (file) return SendPieces(line, file.get());
  ICC_DPrintLogToFile(" Z11SendFile open file faild");
  return GWQ_BAD_ARGUMENT;
}

int SendFile(Line line, const char* path) {
  const int result = OpenAndSend(line, path);
  ICC_DPrintLogToFile("Z11DownLoadFile Z11SendFile nRet=%d", result);
  return result;
}

int EndDownload(Line line, int type, std::string_view name) {
  ICC_DPrintLogToFile("Z11EndDownload szTempName=%.*s", static_cast<int>(name.size()), name.data());
  ICC_DPrintLogToFile("cmdEnd type=%d\r\n", type);
  std::array<unsigned char, kPacketHeaderSize + 1 + kLongestName> packet{};
  packet[kPacketHeaderSize] = static_cast<unsigned char>(type);
  name.copy(reinterpret_cast<char*>(packet.data()) + kPacketHeaderSize + 1, name.size());
  const int result = Step(line, Packed(packet, PacketType::kEnd, name.size() + 1), kEndTimeoutMs);
  ICC_DPrintLogToFile("Z11DownLoadFile Z11EndDownload nRet=%d", result);
  return result;
}

int Push(Line line, int type, const char* path, std::string_view name) {
  if (name.size() > kLongestName) return GWQ_BAD_ARGUMENT;
  int result = ChangeMode(line);
  if (result >= 0) result = StartDownload(line);
  if (result >= 0) result = SendFile(line, path);
  if (result >= 0) result = EndDownload(line, type, name);
  return std::min(result, 0);
}

// Pushes one listed file and adds its place on the terminal to `places`.
int PushListed(const char* path, CommandText<4096>& places) {
  if (access(path, F_OK) != 0) {
    ICC_DPrintLogToFile("File Not Exist");
    return GWQ_NO_FILE;
  }
  CommandText<1024 + 8> place;
  place << "/tmp/" << BaseName(path);
  places << place.text() << "|";
  ICC_DPrintLogToFile("szFilePathGBK=%s", path);
  ICC_DPrintLogToFile("szDevicePathGBK=%s", place.data());
  return Z11DownLoadFile(0, '9', 9600, kNamedFile, path, place.data());
}

}  // namespace
}  // namespace gwq

int Z11DownLoadFile(int port, char /*channel*/, int baud, int type, const char* localPath, const char* name) {
  const gwq::Operation operation;
  const std::string_view stored = type == gwq::kNamedFile ? gwq::OrEmpty(name) : gwq::BaseName(localPath);
  return gwq::Push({port, baud}, type, localPath, stored);
}

int Z11DownLoadHead(int port, char /*channel*/, int baud, int type, const char* localPath, const char* name) {
  const gwq::Operation operation;
  return gwq::Push({port, baud}, type, localPath, gwq::OrEmpty(name));
}

int pushFileToZ11(const char* pathList, char* outList) {
  const gwq::Operation operation;
  ICC_DPrintLogToFile("pushFileToZ11");
  if (pathList == nullptr || outList == nullptr) return GWQ_BAD_ARGUMENT;
  std::array<char, 1024> copy{};
  std::string_view(pathList).copy(copy.data(), copy.size() - 1);
  gwq::CommandText<4096> places;
  gwq::PathList paths(copy.data());
  while (const char* path = paths.Next()) {
    if (const int result = gwq::PushListed(path, places); result != GWQ_OK) return result;
  }
  const std::string_view list = places.text();
  list.copy(outList, std::max<std::size_t>(list.size(), 1) - 1);
  return GWQ_OK;
}
