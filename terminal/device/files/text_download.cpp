// SPDX-License-Identifier: MIT
#include "device/files/text_download.h"

#include <optional>
#include <span>
#include <utility>

#include "device/files/file_names.h"
#include "protocol/split_form.h"
#include "protocol/transfer_packet.h"

namespace gwq::terminal::device {
namespace {

constexpr std::size_t kNumberSize = 4;
constexpr std::size_t kFrontSize = 2 * kNumberSize;

std::uint32_t ReadNumber(std::span<const std::uint8_t> bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = kNumberSize; i > 0; --i) number = number << 8 | bytes[i - 1];
  return number;
}

}  // namespace

struct TextDownload::Piece {
  std::uint32_t total = 0;
  std::uint32_t index = 0;
  SecretBytes record;
  [[nodiscard]] std::span<const std::uint8_t> Content() const {
    return std::span(record).subspan(kFrontSize, record.size() - kFrontSize - 1);
  }

  static std::optional<Piece> Read(std::string_view split_record) {
    auto record = protocol::MergeSplit(
        {reinterpret_cast<const std::uint8_t*>(split_record.data()), split_record.size()});
    if (!record || record->size() <= kFrontSize || protocol::FoldXor(*record) != 0) return std::nullopt;
    const std::uint32_t total = ReadNumber(*record);
    const std::uint32_t remaining = ReadNumber(std::span(*record).subspan(kNumberSize));
    if (remaining >= total) return std::nullopt;
    return Piece{total, total - remaining, std::move(*record)};
  }
};

TextDownload::Result TextDownload::Take(int type, std::string_view name, std::string_view split_record) {
  const auto path = PlaceFor(type, name);
  if (!path) return {FileResult::kBadPath, "no good name"};
  const auto piece = Piece::Read(split_record);
  if (!piece) return {FileResult::kBadPath, "a damaged piece"};
  const std::string text = "piece " + std::to_string(piece->index) + " of " + std::to_string(piece->total) +
                           ", " + ShownSize(piece->Content().size());
  if (piece->index == 1) {
    const FileResult begun = Begin(*path, *piece);
    if (begun != FileResult::kDone) return {begun, text};
  }
  if (!Fits(*path, *piece)) return {FileResult::kBadPath, text + ", out of its turn"};
  return {Add(*piece), text};
}

bool TextDownload::Fits(const std::string& path, const Piece& piece) const {
  return writer_ && path == path_ && piece.total == total_ && piece.index == next_;
}

FileResult TextDownload::Begin(const std::string& path, const Piece& piece) {
  writer_.reset();
  writer_ = files_.Create();
  path_ = path;
  total_ = piece.total;
  next_ = 1;
  return writer_ ? FileResult::kDone : FileResult::kFailed;
}

FileResult TextDownload::Add(const Piece& piece) {
  if (!writer_->Append(piece.Content())) return Drop(FileResult::kFailed);
  if (next_ == total_) return Drop(writer_->StoreAs(path_));
  ++next_;
  return FileResult::kDone;
}

FileResult TextDownload::Drop(FileResult why) {
  writer_.reset();
  return why;
}

}  // namespace gwq::terminal::device
