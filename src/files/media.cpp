#include <gwq/files/media.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include <gwq/codec/text_forms.h>
#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include "codec/internal/split_form.h"
#include "frame/internal/arguments.h"
#include "frame/internal/ask.h"
#include "frame/internal/exchange.h"

namespace gwq {
namespace {

constexpr int kListTimeoutMs = 10000;
constexpr int kDeleteTimeoutMs = 3000;
constexpr int kPieceLinkTimeoutMs = 5000;
constexpr int kPieceSize = 1024;
constexpr std::size_t kRecordOverhead = 9;

// False when the name does not fit: cut, it would delete another file.
template <std::size_t N>
bool BuildDelete(CommandText<N>& command, int file_type, const char* name) {
  command << "\x1B[0DELETE\x02" << file_type << "|" << OrEmpty(name) << "\x03";
  return !command.IsCut();
}

// Sends the whole zero-padded buffer, as these commands do.
template <std::size_t N>
int AskWithWholeBuffer(Line line, CommandText<N>& command, AnswerText<4096>& answer, int timeout_ms) {
  return TransProc(line.port, line.baud, command.data(), static_cast<int>(N), answer.data(), answer.length(),
                   timeout_ms);
}

void WriteLittleEndian(int value, unsigned char* out) {
  for (unsigned i = 0; i < 4; ++i)
    out[i] = static_cast<unsigned char>(static_cast<unsigned>(value) >> (8 * i));
}

// The split form of a piece's record as it goes into the command.
template <std::size_t N>
void AppendPiece(CommandText<N>& command, int total, int remaining, std::span<const unsigned char> piece) {
  SecretArray<unsigned char, kPieceSize + kRecordOverhead> record;
  const int size =
      GetDownParam3(total, remaining, piece.data(), static_cast<int>(piece.size()), record.data());
  SecretArray<char, 2 * (kPieceSize + kRecordOverhead)> split;
  const int length = HexAsc1Split(record.data(), size, split.data(), static_cast<int>(split.size()));
  command << std::string_view(split.data(), static_cast<std::size_t>(length));
}

int SendPieces(int file_type, std::string_view text, const char* name) {
  const int total = static_cast<int>((text.size() + kPieceSize - 1) / kPieceSize);
  int result = GWQ_OK;
  for (int index = 1; index <= total;
       ++index, text.remove_prefix(std::min<std::size_t>(kPieceSize, text.size()))) {
    const std::string_view piece = text.substr(0, kPieceSize);
    const auto bytes = AsBytes(piece);
    result = DownFile(file_type, total, index, bytes.data(), static_cast<int>(bytes.size()), name);
  }
  return result;
}

}  // namespace
}  // namespace gwq

int GetVideoList(int port, char /*channel*/, int baud, int fileType, char* out, int capacity) {
  gwq::CommandText<4096> command;
  gwq::AnswerText<4096> answer;
  command << "\x1B[0GETFILELIST\x02" << fileType << "\x03";
  const int result = gwq::AskWithWholeBuffer({port, baud}, command, answer, gwq::kListTimeoutMs);
  if (result != GWQ_OK) return result;
  const std::string_view list = gwq::WithoutMarks(answer.text());
  if (out == nullptr || capacity < static_cast<int>(list.size())) return GWQ_TOO_SMALL;
  list.copy(out, list.size());
  return GWQ_OK;
}

int DownVideoInfo(int /*port*/, char /*channel*/, int baud, int fileType, const char* text,
                  const char* name) {
  const gwq::ExchangeTurn turn(0);
  const gwq::OpenLink link(turn, {0, baud, gwq::kPieceLinkTimeoutMs, &EndOfRead2}, true);
  if (!link) return GWQ_NOT_OPENED;
  return gwq::SendPieces(fileType, text == nullptr ? "" : text, name);
}

int DownFile(int fileType, int total, int index, const unsigned char* data, int count, const char* name) {
  gwq::CommandText<4096> command;
  const auto piece = gwq::BytesOf(data, std::min(count, gwq::kPieceSize));
  command << "\x1B[0DOWNLOAD\x02" << fileType << "|" << gwq::OrEmpty(name) << "|";
  if (command.size() > gwq::kPieceSize) return GWQ_BAD_ARGUMENT;  // the end of the name would not be sent
  // Both come from the caller, whatever they are: the difference wraps around.
  const auto remaining = static_cast<int>(static_cast<unsigned>(total) - static_cast<unsigned>(index));
  gwq::AppendPiece(command, total, remaining, piece);
  command << "\x03";
  if (WriteData(gwq::kPieceSize, reinterpret_cast<unsigned char*>(command.data())) != GWQ_OK)
    return GWQ_SEND_FAILED;
  gwq::AnswerText<1024> answer;
  auto* bytes = reinterpret_cast<unsigned char*>(answer.data());
  // A read that brings something counts as failed; callers live with it.
  if (ICC_ReadDataFromTransPort(bytes, *answer.length()) != 0) return GWQ_READ_FAILED;
  if (std::string_view(answer.data(), gwq::kDoneAnswer.size()) == gwq::kDoneAnswer) return GWQ_OK;
  ICC_DPrintLogToFile(" read fail ");
  return GWQ_REFUSED;
}

int GetDownParam3(int total, int remaining, const unsigned char* data, int count, unsigned char* out) {
  if (out == nullptr) return 0;
  const auto bytes = gwq::BytesOf(data, count);
  const int size = static_cast<int>(bytes.size());
  gwq::WriteLittleEndian(total, out);
  gwq::WriteLittleEndian(remaining, out + 4);
  std::copy(bytes.begin(), bytes.end(), out + 8);
  out[8 + size] = GetXorValue(0, out, 8 + size);
  return size + static_cast<int>(gwq::kRecordOverhead);
}

int DelVideoFile(int port, char /*channel*/, int baud, int fileType, const char* name) {
  gwq::CommandText<4096> command;
  gwq::AnswerText<4096> answer;
  if (!gwq::BuildDelete(command, fileType, name)) return GWQ_BAD_ARGUMENT;
  return gwq::AskWithWholeBuffer({port, baud}, command, answer, gwq::kDeleteTimeoutMs);
}

int DelAllVideoFile(int port, char /*channel*/, int baud, int fileType) {
  gwq::CommandText<1024> command;
  gwq::AnswerText<4096> answer;
  gwq::BuildDelete(command, fileType, "*");
  return gwq::AskWithWholeBuffer({port, baud}, command, answer, gwq::kDeleteTimeoutMs);
}

int DeleteMediaFile(int port, char /*channel*/, int baud, int fileType, const char* name) {
  gwq::CommandText<4096> command;
  if (!gwq::BuildDelete(command, fileType, name)) return GWQ_BAD_ARGUMENT;
  return Tell({port, baud}, command, gwq::kDeleteTimeoutMs);
}
