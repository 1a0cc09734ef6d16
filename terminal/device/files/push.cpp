// SPDX-License-Identifier: MIT
#include "device/files/push.h"

#include <string_view>

#include "device/files/file_names.h"

namespace gwq::terminal::device {

using protocol::Row;
namespace {

// A type and a path, with room to spare.
constexpr std::size_t kMaxEndPayload = 4096;

}  // namespace

void AnswerVerdict(HostChannel& host, Verdict verdict) {
  if (verdict == Verdict::kRefuse) return AnswerRefusal(host);
  if (verdict == Verdict::kFail) return AnswerFailure(host);
  host.Note("not answered, as scripted");
}

void Push::ChangeMode() {
  faults_.StartTransfer();
  const Verdict verdict = faults_.Next("HIDCHANGE");
  if (verdict != Verdict::kNone) return AnswerVerdict(host_, verdict);
  writer_.reset();
  reader_.ExpectPackets(*this);
  AnswerDone(host_);
}

void Push::BeginPacket(const protocol::PacketHeader& header) {
  header_ = header;
  folded_ = 0;
  appended_ = true;
  end_payload_.clear();
}

void Push::TakePayload(std::span<const std::uint8_t> piece) {
  folded_ = protocol::FoldXor(piece, folded_);
  if (header_.Is(protocol::PacketType::kData) && writer_ && appended_) appended_ = writer_->Append(piece);
  const bool keep = header_.Is(protocol::PacketType::kEnd) && header_.length <= kMaxEndPayload;
  if (keep) end_payload_.insert(end_payload_.end(), piece.begin(), piece.end());
}

void Push::EndPacket() {
  if (header_.Is(protocol::PacketType::kStart))
    return Conclude(Row("push: start packet"), {}, Judge("start", &Push::Start));
  if (header_.Is(protocol::PacketType::kData))
    return Conclude(Row("push: data packet"), " " + ShownSize(header_.length), Judge("data", &Push::Data));
  if (!header_.Is(protocol::PacketType::kEnd))
    return Conclude(Row("push: packet of type"), " " + std::to_string(header_.type),
                    {Verdict::kRefuse, "there is none"});
  Conclude(Row("push: end packet"), {}, Judge("end", &Push::End));
  reader_.EndPackets();
  writer_.reset();
}

void Push::PacketsOver(const char* why) {
  const bool unfinished = writer_ != nullptr;
  writer_.reset();
  host_.Note(std::string("push: over (") + why + (unfinished ? "), the file is dropped" : ")"));
}

Push::Outcome Push::Judge(const std::string& step, Outcome (Push::*own)()) {
  const Verdict scripted = faults_.Next(step);
  if (scripted != Verdict::kNone) return {scripted, "goes wrong as scripted"};
  if (!CheckHolds()) return {Verdict::kRefuse, "wrong check byte"};
  return (this->*own)();
}

// A host that cuts its packets at the first zero byte loses the length with it,
// which begins with one, and what follows is padding.
bool Push::IsCut() const {
  return faults_.Script().accept_cut_packets && header_.length == 0;
}

bool Push::CheckHolds() const {
  return folded_ == header_.check || IsCut();
}

Push::Outcome Push::Start() {
  size_ = 0;
  writer_.reset();
  writer_ = files_.Create();
  if (!writer_) return {Verdict::kFail, "nothing can be stored"};
  return {Verdict::kNone, "ok"};
}

Push::Outcome Push::Data() {
  if (!writer_) return {Verdict::kRefuse, "without a start packet"};
  if (!appended_) return {Verdict::kFail, "there is no room for it"};
  size_ += header_.length;
  return {Verdict::kNone, "ok"};
}

Push::Outcome Push::End() {
  if (!writer_) return {Verdict::kRefuse, "without a start packet"};
  if (end_payload_.empty() && IsCut()) return {Verdict::kNone, "cut, nothing is stored"};
  if (end_payload_.empty()) return {Verdict::kRefuse, "without a usable name"};
  const std::string_view payload(reinterpret_cast<const char*>(end_payload_.data()), end_payload_.size());
  return Store(end_payload_.front(), payload.substr(1));
}

Push::Outcome Push::Store(int type, std::string_view name) {
  const std::string file = std::string("type ") + std::to_string(type) + " " + ShownName(name);
  const auto path = PlaceFor(type, name);
  const FileResult result = path ? writer_->StoreAs(*path) : FileResult::kBadPath;
  if (result == FileResult::kBadPath) return {Verdict::kRefuse, file + " is no good name"};
  if (result != FileResult::kDone) return {Verdict::kFail, file + " cannot be stored"};
  return {Verdict::kNone, file + " stored, " + ShownSize(size_)};
}

void Push::Conclude(const protocol::CommandRow& packet, const std::string& detail, const Outcome& outcome) {
  host_.Trace(CommandReceived{&packet, detail + ", " + outcome.text});
  if (outcome.verdict == Verdict::kNone) return AnswerDone(host_);
  writer_.reset();
  AnswerVerdict(host_, outcome.verdict);
}

}  // namespace gwq::terminal::device
