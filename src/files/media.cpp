// SPDX-License-Identifier: MIT
// The media that the terminal stores, for any use: list, send as text in pieces, delete.
// What the idle screen, the teller's card and the firmware make of it is in media_functions.cpp.
#include <gwq/files/media.h>

#include <algorithm>
#include <span>
#include <string_view>

#include <gwq/codec/text_forms.h>
#include <gwq/diag/log.h>
#include <gwq/frame/port.h>
#include "codec/internal/split_form.h"
#include "diag/internal/shared_word.h"
#include "files/internal/transfer.h"
#include "frame/internal/arguments.h"
#include "frame/internal/ask.h"
#include "frame/internal/exchange.h"
#include "frame/internal/progress.h"

namespace gwq {
namespace {

constexpr int kListTimeoutMs = 10000;
constexpr int kDeleteTimeoutMs = 3000;
constexpr int kPieceLinkTimeoutMs = 5000;
constexpr int kPieceSize = 1024;
constexpr std::size_t kRecordOverhead = 9;

// Contract: the full buffer of N bytes is sent, zero padding included.
// Refuses a name that is cut, because it would delete another file.
template <std::size_t N>
int AskWithWholeBuffer(Endpoint endpoint, Command<N>& command, int timeout_ms, AnswerText<4096>& answer) {
  if (command.IsCut()) return GWQ_BAD_ARGUMENT;
  return Exchange(kAsk, endpoint, {command.data(), static_cast<int>(N)}, {&EndOfRead2, timeout_ms},
                  {answer.data(), answer.length()});
}

void WriteLittleEndian(int value, unsigned char* out) {
  for (unsigned i = 0; i < 4; ++i)
    out[i] = static_cast<unsigned char>(static_cast<unsigned>(value) >> (8 * i));
}

// Contract: a byte count above 0 is GWQ_READ_FAILED, so that a piece that the terminal has
// confirmed is reported as failed.
int ReadPieceAnswer() {
  AnswerText<1024> answer;
  auto* bytes = reinterpret_cast<unsigned char*>(answer.data());
  if (ICC_ReadDataFromTransPort(bytes, *answer.length()) != 0) return GWQ_READ_FAILED;
  if (std::string_view(answer.data(), kDoneAnswer.size()) == kDoneAnswer) return GWQ_OK;
  ICC_DPrintLogToFile(" read fail ");
  return GWQ_REFUSED;
}

// The pieces after this one. Any numbers are accepted: the difference wraps around.
int RemainingPieces(int total, int index) {
  return static_cast<int>(static_cast<unsigned>(total) - static_cast<unsigned>(index));
}

// Writes total, remaining, the piece, and the XOR of all of these. Returns the record's size.
int WritePieceRecord(int total, int remaining, std::span<const unsigned char> piece, unsigned char* out) {
  const int size = static_cast<int>(piece.size());
  WriteLittleEndian(total, out);
  WriteLittleEndian(remaining, out + 4);
  std::copy(piece.begin(), piece.end(), out + 8);
  out[8 + size] = GetXorValue(0, out, 8 + size);
  return size + static_cast<int>(kRecordOverhead);
}

// Sends the piece's record in split form.
int SendTextPiece(int file_type, int total, int index, std::span<const unsigned char> piece,
                  const char* name) {
  SecretArray<unsigned char, kPieceSize + kRecordOverhead> record;
  const int size = WritePieceRecord(total, RemainingPieces(total, index), piece, record.data());
  SecretArray<char, 2 * (kPieceSize + kRecordOverhead)> split;
  const int length = HexAsc1Split(record.data(), size, split.data(), static_cast<int>(split.size()));
  Command<4096> command(Channel::kDevice, "DOWNLOAD");
  command.Fields('|', file_type, OrEmpty(name),
                 std::string_view(split.data(), static_cast<std::size_t>(length)));
  // Contract: only the first 1024 bytes of the command are sent, so that a piece of more than about
  // 490 bytes arrives without its end.
  const int piece_at = command.size() - 1 - length;
  if (command.IsCut() || piece_at > kPieceSize) return GWQ_BAD_ARGUMENT;
  if (WriteOnLink(reinterpret_cast<unsigned char*>(command.data()), kPieceSize) < kPieceSize)
    return GWQ_SEND_FAILED;
  return ReadPieceAnswer();
}

// Contract: a piece that fails does not end the call; the caller gets the status of the last one.
int SendTextPieces(int file_type, std::string_view text, const char* name, Progress& progress) {
  const int total = static_cast<int>((text.size() + kPieceSize - 1) / kPieceSize);
  int result = GWQ_OK;
  for (int index = 1; index <= total; ++index) {
    if (Progress::Cancelled()) return GWQ_CANCELLED;
    const std::string_view piece = text.substr(0, kPieceSize);
    result = SendTextPiece(file_type, total, index, AsBytes(piece), name);
    text.remove_prefix(piece.size());
    progress.Add(piece.size());
    if (progress.IsDue() && !progress.Tell()) return GWQ_READ_FAILED;
  }
  return result;
}

int SendTextOnUsb(int baud, int file_type, std::string_view text, const char* name, Progress& progress) {
  const ExchangeTurn turn(0);
  const OpenLink link(turn, {0, baud}, {&EndOfRead2, kPieceLinkTimeoutMs}, true);
  return link ? SendTextPieces(file_type, text, name, progress) : static_cast<int>(GWQ_NOT_OPENED);
}

}  // namespace

int DeleteOnTerminal(Endpoint endpoint, int type, std::string_view name) {
  Command<4096> command(Channel::kDevice, "DELETE");
  command.Fields('|', type, name);
  return command.IsCut() ? static_cast<int>(GWQ_BAD_ARGUMENT) : Tell(endpoint, command, kDeleteTimeoutMs);
}

int GetVideoList(int port, char /*channel*/, int baud, int fileType, char* out, int capacity) {
  Command<4096> command(Channel::kDevice, "GETFILELIST");
  AnswerText<4096> answer;
  const int result = AskWithWholeBuffer({port, baud}, command.Fields('|', fileType), kListTimeoutMs, answer);
  if (result != GWQ_OK) return result;
  const std::string_view list = WithoutMarks(answer.text());
  if (out == nullptr || capacity < static_cast<int>(list.size())) return GWQ_TOO_SMALL;
  // Contract: no terminator is written; the caller passes a zeroed buffer.
  list.copy(out, list.size());
  return GWQ_OK;
}

// Contract: USB; the port argument is ignored.
int DownVideoInfo(int /*port*/, char /*channel*/, int baud, int fileType, const char* text,
                  const char* name) {
  if (Progress::IsWanted()) StoreShared(g_CancelWrite, 0);
  const std::string_view all = OrEmpty(text);
  Progress progress(GWQ_TRANSFER_MEDIA, name, static_cast<long long>(all.size()));
  return progress.End(SendTextOnUsb(baud, fileType, all, name, progress));
}

int DownFile(int fileType, int total, int index, const unsigned char* data, int count, const char* name) {
  return SendTextPiece(fileType, total, index, BytesOf(data, std::min(count, kPieceSize)), name);
}

// Contract: unlike in MP_DelHeadFile a refusal is success, because the answer is not checked.
int DelVideoFile(int port, char /*channel*/, int baud, int fileType, const char* name) {
  Command<4096> command(Channel::kDevice, "DELETE");
  AnswerText<4096> answer;
  return AskWithWholeBuffer({port, baud}, command.Fields('|', fileType, OrEmpty(name)), kDeleteTimeoutMs,
                            answer);
}

int DelAllVideoFile(int port, char /*channel*/, int baud, int fileType) {
  Command<1024> command(Channel::kDevice, "DELETE");
  AnswerText<4096> answer;
  return AskWithWholeBuffer({port, baud}, command.Fields('|', fileType, "*"), kDeleteTimeoutMs, answer);
}

int DeleteMediaFile(int port, char /*channel*/, int baud, int fileType, const char* name) {
  return DeleteOnTerminal({port, baud}, fileType, OrEmpty(name));
}

}  // namespace gwq

using namespace gwq;

int GetDownParam3(int total, int remaining, const unsigned char* data, int count, unsigned char* out) {
  if (out == nullptr) return 0;
  return WritePieceRecord(total, remaining, BytesOf(data, count), out);
}
