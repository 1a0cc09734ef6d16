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
#include <utility>

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
#include "frame/internal/progress.h"

namespace gwq {
namespace {

constexpr int kTimeoutMs = 3000;
constexpr std::size_t kPieceSize = 30300;

// The zero byte after the packet makes it a string at any length.
using DownloadPacket = std::array<char, kPacketHeaderSize + kPieceSize + 1>;

// On the heap, because 30 KB do not fit on the stack of a small thread.
using PacketMemory = std::unique_ptr<DownloadPacket, decltype(&std::free)>;

PacketMemory AllocatePacket() {
  return {static_cast<DownloadPacket*>(std::calloc(sizeof(DownloadPacket), 1)), &std::free};
}

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

bool SendDataPacket(std::FILE* file, DownloadPacket& packet, Progress& progress) {
  packet.fill('\0');
  const std::size_t count = std::fread(Payload(packet, kPieceSize).data(), 1, kPieceSize, file);
  FillHeader(packet, PacketType::kData, count);
  if (!SendAsString(packet.data())) return false;
  progress.Add(count);
  return true;
}

bool SendEndPacket(int file_type, std::string_view name, DownloadPacket& packet) {
  packet.fill('\0');
  const auto payload = Payload(packet, std::min(name.size(), kMaxNameSize) + 1);
  payload[0] = static_cast<std::uint8_t>(file_type);
  name.copy(reinterpret_cast<char*>(payload.data()) + 1, payload.size() - 1);
  FillHeader(packet, PacketType::kEnd, payload.size());
  return SendAsString(packet.data());
}

// Nothing of the library's is open or allocated while the host is told.
int Tell(Progress& progress, const char* path, File& file, PacketMemory& packet) {
  const auto tell = [&] {
    packet.reset();
    progress.Tell();
  };
  if (!RunWhileClosed(file, path, "rb", tell)) return GWQ_NO_LOCAL_FILE;
  if (!packet) packet = AllocatePacket();
  return packet ? GWQ_OK : GWQ_TOO_SMALL;
}

// Contract: an empty file is sent as one data packet; the end of the file is checked before a read.
int SendContent(const char* path, File& file, PacketMemory& packet, Progress& progress) {
  while (std::feof(file.get()) == 0 && std::ferror(file.get()) == 0 && LoadShared(g_CancelWrite) == 0) {
    if (!SendDataPacket(file.get(), *packet, progress)) return GWQ_REFUSED;
    if (!progress.IsDue() || std::feof(file.get()) != 0) continue;
    if (const int result = Tell(progress, path, file, packet); result != GWQ_OK) return result;
  }
  return std::ferror(file.get()) != 0 ? GWQ_NO_LOCAL_FILE : GWQ_OK;  // no end packet for half a file
}

// False for a directory, which fopen opens as well.
bool IsReadable(std::FILE* file) {
  const int first = std::fgetc(file);
  if (first != EOF) std::ungetc(first, file);
  const bool readable = std::ferror(file) == 0;
  if (!readable) NoteFileFailure();
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

int Transfer(const char* path, int file_type, File file, Progress& progress) {
  const std::string_view name = NameOnTerminal(path, file_type);
  PacketMemory packet = AllocatePacket();
  if (!packet) return GWQ_TOO_SMALL;
  if (!SendModeChange() || !SendStartPacket()) return GWQ_REFUSED;
  if (const int result = SendContent(path, file, packet, progress); result != GWQ_OK) return result;
  const bool cancelled = LoadShared(g_CancelWrite) != 0;
  if (cancelled) ICC_DPrintLogToFile(" cancel write");
  // Contract: a cancelled download gets the same end packet as a complete one.
  if (!SendEndPacket(file_type, name, *packet)) return GWQ_REFUSED;
  const int result = cancelled ? GWQ_CANCELLED : GWQ_OK;
  ICC_DPrintLogToFile("HIDDownLoad nRet=%d ", result);
  return result;
}

File OpenReadable(const char* path) {
  File file = OpenFile(path, "rb");
  return file && IsReadable(file.get()) ? std::move(file) : File();
}

int Download(const char* path, int file_type) {
  const Operation operation;
  StoreShared(g_CancelWrite, 0);
  ICC_DPrintLogToFile("szFilePath%s", path);
  Progress progress(file_type == kFirmwareImage ? GWQ_TRANSFER_FIRMWARE : GWQ_TRANSFER_MEDIA, path,
                    Progress::IsWanted() ? SizeToTell(path) : 0);
  File file = OpenReadable(path);
  if (!file) {
    ICC_DPrintLogToFile("HIDDownLoad :fopen :FAIL ");
    return progress.End(GWQ_NO_LOCAL_FILE);
  }
  return progress.End(Transfer(path, file_type, std::move(file), progress));
}

}  // namespace

int HIDDownLoad(const char* path, int fileType) {
  return Download(path, fileType);
}

int DownVideoFile(int port, char /*channel*/, int /*baud*/, int fileType, const char* path) {
  return port == 0 ? Download(path, fileType) : static_cast<int>(GWQ_BAD_ARGUMENT);
}

}  // namespace gwq
