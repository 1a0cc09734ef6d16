// The download of a file or firmware image as the terminal's boot program takes it.
#include <algorithm>
#include <array>
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

// A zero byte behind the packet, so that it is always a text.
using Packet = std::array<char, kPacketHeaderSize + kPieceSize + 1>;

// 30 KB, which the stack of a small thread does not have. Null when there was no memory.
using PacketMemory = std::unique_ptr<Packet, decltype(&std::free)>;

PacketMemory MakePacket() {
  return {static_cast<Packet*>(std::calloc(sizeof(Packet), 1)), &std::free};
}

std::span<std::uint8_t> Payload(Packet& packet, std::size_t count) {
  return {reinterpret_cast<std::uint8_t*>(packet.data()) + kPacketHeaderSize, count};
}

// Sends what is text of the packet: it is cut at its first zero byte, as this download is built.
bool Send(char* packet) {
  AnswerText<1024> answer;
  const int length = static_cast<int>(std::strlen(packet));
  const int result = Exchange(kAsk, kPushEndpoint, {packet, length}, {&EndOfRead2, kTimeoutMs},
                              {answer.data(), answer.length()});
  return result == GWQ_OK && answer.text().starts_with(kDoneAnswer);
}

void Complete(Packet& packet, PacketType type, std::size_t count) {
  WritePacketHeader(type, Payload(packet, count),
                    std::span<std::uint8_t, kPacketHeaderSize>(reinterpret_cast<std::uint8_t*>(packet.data()),
                                                               kPacketHeaderSize));
}

bool ChangeMode() {
  if (Send(ModeChange().data())) return true;
  ICC_DPrintLogToFile(" changge mode");
  return false;
}

bool Start() {
  char packet[] = "\x02\x01\x00\x00\x00";
  return Send(packet);
}

bool cmdDownLoad(std::FILE* file, Packet& packet) {
  packet.fill('\0');
  const std::size_t count = std::fread(Payload(packet, kPieceSize).data(), 1, kPieceSize, file);
  Complete(packet, PacketType::kData, count);
  return Send(packet.data());
}

bool cmdEnd(int file_type, std::string_view name, Packet& packet) {
  packet.fill('\0');
  const auto payload = Payload(packet, std::min(name.size(), kMaxNameSize) + 1);
  payload[0] = static_cast<std::uint8_t>(file_type);
  name.copy(reinterpret_cast<char*>(payload.data()) + 1, payload.size() - 1);
  Complete(packet, PacketType::kEnd, payload.size());
  return Send(packet.data());
}

// False when the terminal did not take a piece.
bool SendPieces(std::FILE* file, Packet& packet) {
  while (std::feof(file) == 0 && std::ferror(file) == 0 && LoadShared(g_CancelWrite) == 0) {
    if (!cmdDownLoad(file, packet)) return false;
  }
  return true;
}

// A directory opens as well.
bool IsReadable(std::FILE* file) {
  const int first = std::fgetc(file);
  if (first != EOF) std::ungetc(first, file);
  const bool readable = std::ferror(file) == 0;
  if (readable && first == EOF) std::rewind(file);  // the end of the file is looked for before each piece
  return readable;
}

std::string_view NameOnTerminal(const char* path, int file_type) {
  if (file_type == kFirmwareImage) return "update.dat";
  const char* slash = std::strrchr(path, '/');
  const char* mark = slash == nullptr ? std::strrchr(path, '\\') : slash;
  const std::string_view name = mark == nullptr ? "" : mark + 1;
  if (slash != nullptr) ICC_DPrintLogToFile(" szFileName = %s", slash + 1);
  return name;
}

}  // namespace
}  // namespace gwq

int HIDDownLoad(const char* path, int fileType) {
  const gwq::Operation operation;
  gwq::StoreShared(g_CancelWrite, 0);
  ICC_DPrintLogToFile("szFilePath%s", path);
  const gwq::File file = gwq::OpenFile(path, "rb");
  if (!file || !gwq::IsReadable(file.get())) {
    ICC_DPrintLogToFile("HIDDownLoad :fopen :FAIL ");
    return GWQ_NO_LOCAL_FILE;
  }
  const std::string_view name = gwq::NameOnTerminal(path, fileType);
  const gwq::PacketMemory packet = gwq::MakePacket();
  if (!packet) return GWQ_TOO_SMALL;
  if (!gwq::ChangeMode() || !gwq::Start() || !gwq::SendPieces(file.get(), *packet)) return GWQ_REFUSED;
  if (std::ferror(file.get()) != 0) return GWQ_NO_LOCAL_FILE;  // half a file must not pass for a whole one
  const bool cancelled = gwq::LoadShared(g_CancelWrite) != 0;
  if (cancelled) ICC_DPrintLogToFile(" cancel write");
  const int result = cancelled ? GWQ_CANCELLED : GWQ_OK;
  if (!gwq::cmdEnd(fileType, name, *packet)) return GWQ_REFUSED;
  ICC_DPrintLogToFile("HIDDownLoad nRet=%d ", result);
  return result;
}

int DownVideoFile(int port, char /*channel*/, int /*baud*/, int fileType, const char* path) {
  return port == 0 ? HIDDownLoad(path, fileType) : static_cast<int>(GWQ_BAD_ARGUMENT);
}
