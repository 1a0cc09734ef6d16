// SPDX-License-Identifier: MIT
// The download of a file or firmware image to the terminal's boot program.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>

#include <gwq/diag/log.h>
#include <gwq/files/media.h>
#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include "codec/internal/transfer_packet.h"
#include "diag/internal/shared_word.h"
#include "files/internal/file.h"
#include "files/internal/path_list.h"
#include "files/internal/transfer.h"
#include "frame/internal/ask.h"
#include "frame/internal/operation.h"

namespace gwq {
namespace {

constexpr int kTimeoutMs = 3000;
constexpr std::size_t kPieceSize = 30300;

// The zero byte after the packet makes it a string at any length.
using DownloadPacket = std::array<char, kPacketHeaderSize + kPieceSize + 1>;

// On the heap, because 30 KB do not fit on the stack of a small thread.
using PacketMemory = std::unique_ptr<DownloadPacket, decltype(&std::free)>;

std::span<std::uint8_t> Payload(DownloadPacket& packet, std::size_t count) {
  return {reinterpret_cast<std::uint8_t*>(packet.data()) + kPacketHeaderSize, count};
}

void FillHeader(DownloadPacket& packet, PacketType type, std::size_t count) {
  WritePacketHeader(type, Payload(packet, count),
                    std::span<std::uint8_t, kPacketHeaderSize>(reinterpret_cast<std::uint8_t*>(packet.data()),
                                                               kPacketHeaderSize));
}

// Contract: a packet is sent as a string, so that it ends before its first zero byte; a file with
// zero bytes does not arrive as it is, and the call succeeds.
bool SendAsString(char* packet) {
  AnswerText<1024> answer;
  const int length = static_cast<int>(std::strlen(packet));
  const int result = Exchange(kAsk, kPushEndpoint, {packet, length}, {&EndOfRead2, kTimeoutMs},
                              {answer.data(), answer.length()});
  return result == GWQ_OK && answer.text().starts_with(kDoneAnswer);
}

bool SendModeChange() {
  if (SendAsString(ModeChange().data())) return true;
  ICC_DPrintLogToFile(" changge mode");
  return false;
}

bool SendStartPacket() {
  char packet[] = "\x02\x01\x00\x00\x00";
  return SendAsString(packet);
}

bool SendDataPacket(std::FILE* file, DownloadPacket& packet) {
  packet.fill('\0');
  const std::size_t count = std::fread(Payload(packet, kPieceSize).data(), 1, kPieceSize, file);
  FillHeader(packet, PacketType::kData, count);
  return SendAsString(packet.data());
}

bool SendEndPacket(int file_type, std::string_view name, DownloadPacket& packet) {
  packet.fill('\0');
  const auto payload = Payload(packet, std::min(name.size(), kMaxNameSize) + 1);
  payload[0] = static_cast<std::uint8_t>(file_type);
  name.copy(reinterpret_cast<char*>(payload.data()) + 1, payload.size() - 1);
  FillHeader(packet, PacketType::kEnd, payload.size());
  return SendAsString(packet.data());
}

// Contract: an empty file is sent as one data packet; the end of the file is checked before a read.
bool SendContent(std::FILE* file, DownloadPacket& packet) {
  while (std::feof(file) == 0 && std::ferror(file) == 0 && LoadShared(g_CancelWrite) == 0) {
    if (!SendDataPacket(file, packet)) return false;
  }
  return true;
}

// False for a directory, which fopen opens as well.
bool IsReadable(std::FILE* file) {
  const int first = std::fgetc(file);
  if (first != EOF) std::ungetc(first, file);
  const bool readable = std::ferror(file) == 0;
  if (readable && first == EOF) std::rewind(file);  // SendContent checks the end of file
  return readable;
}

std::string_view NameOnTerminal(const char* path, int file_type) {
  if (file_type == kFirmwareImage) return "update.dat";
  const char* name = AfterLast(path, '/');
  if (name != nullptr) ICC_DPrintLogToFile(" szFileName = %s", name);
  if (name == nullptr) name = AfterLast(path, '\\');
  return name == nullptr ? "" : name;
}

int Download(const char* path, int file_type) {
  const Operation operation;
  StoreShared(g_CancelWrite, 0);
  ICC_DPrintLogToFile("szFilePath%s", path);
  const File file = OpenFile(path, "rb");
  if (!file || !IsReadable(file.get())) {
    ICC_DPrintLogToFile("HIDDownLoad :fopen :FAIL ");
    return GWQ_NO_LOCAL_FILE;
  }
  const std::string_view name = NameOnTerminal(path, file_type);
  const PacketMemory packet(static_cast<DownloadPacket*>(std::calloc(sizeof(DownloadPacket), 1)), &std::free);
  if (!packet) return GWQ_TOO_SMALL;
  if (!SendModeChange() || !SendStartPacket() || !SendContent(file.get(), *packet)) return GWQ_REFUSED;
  if (std::ferror(file.get()) != 0) return GWQ_NO_LOCAL_FILE;  // no end packet for half a file
  const bool cancelled = LoadShared(g_CancelWrite) != 0;
  if (cancelled) ICC_DPrintLogToFile(" cancel write");
  // Contract: a cancelled download gets the same end packet as a complete one.
  if (!SendEndPacket(file_type, name, *packet)) return GWQ_REFUSED;
  const int result = cancelled ? GWQ_CANCELLED : GWQ_OK;
  ICC_DPrintLogToFile("HIDDownLoad nRet=%d ", result);
  return result;
}

}  // namespace
}  // namespace gwq

using namespace gwq;

int HIDDownLoad(const char* path, int fileType) {
  return Download(path, fileType);
}

int DownVideoFile(int port, char /*channel*/, int /*baud*/, int fileType, const char* path) {
  return port == 0 ? Download(path, fileType) : static_cast<int>(GWQ_BAD_ARGUMENT);
}
