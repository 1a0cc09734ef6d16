// SPDX-License-Identifier: MIT
#include "device/screens/screen_session.h"

#include <algorithm>
#include <span>
#include <utility>

#include "protocol/marks.h"

namespace gwq::terminal::device {
namespace {

constexpr const char* kSignaturePath = "/tmp/hw.png";
constexpr const char* kStrokesPath = "/tmp/hw.txt";
constexpr const char* kPicturePath = "/tmp/capture.png";

// What a keypad answers begins with a character of no meaning to the host.
constexpr char kKeypadLead = 'A';
constexpr char kKeyEnd = 'F';

int ChannelOf(ScreenKind kind) {
  switch (kind) {
    case ScreenKind::kTellerCard:
    case ScreenKind::kEvaluation:
      return kEvaluationChannel;
    case ScreenKind::kKeypad:
      return kKeypadChannel;
    default:
      return kInformationChannel;
  }
}

Screen IdleScreen() {
  Screen screen;
  screen.title = "Welcome";
  return screen;
}

// For the trace; what was typed stays out of it.
std::string ActionText(const ScreenAction& action) {
  switch (action.kind) {
    case ScreenAction::Kind::kKey:
      return "presses key " + action.text;
    case ScreenAction::Kind::kDigits:
      return "types " + std::to_string(action.text.size()) + " digits";
    case ScreenAction::Kind::kSign:
      return "signs (" + std::to_string(action.strokes.size()) + " points)";
    case ScreenAction::Kind::kConfirm:
      return "confirms";
    case ScreenAction::Kind::kCancel:
      return "cancels";
    case ScreenAction::Kind::kAnswer:
      return "has the terminal answer " + std::to_string(action.text.size()) + " bytes";
    case ScreenAction::Kind::kWalkAway:
      return "walks away";
  }
  return "does something";
}

std::span<const std::uint8_t> AsBytes(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

}  // namespace

ScreenSession::ScreenSession(Customer& customer, HostChannel& host, FileSystem& files, const Painter* painter)
    : customer_(customer), host_(host), files_(files), painter_(painter), current_(IdleScreen()) {}

void ScreenSession::Show(Screen screen) {
  host_.Describe({});  // those who watch the customer learn of the command first
  CloseAny();
  const bool takes_signature = screen.KeyFor(ScreenKey::Role::kSign) != nullptr;
  if (takes_signature) ForgetSignature();
  Put(std::move(screen));
  closes_at_ = host_.Now() + current_.time_left;
  if (current_.AsksCustomer()) AskCustomer();
}

void ScreenSession::Put(Screen screen) {
  current_ = std::move(screen);
  acts_at_.reset();
  closes_at_.reset();
  ++changes_;
  customer_.See(current_);
}

void ScreenSession::AskCustomer() {
  action_ = customer_.Respond(current_);
  const bool acts = action_.kind != ScreenAction::Kind::kWalkAway && action_.after < current_.time_left;
  if (acts) acts_at_ = host_.Now() + std::max(action_.after, Time{0});
}

void ScreenSession::Close(int channel) {
  if (ChannelOf(current_.kind) == channel) CloseAny();
}

void ScreenSession::CloseAny() {
  if (current_.kind == ScreenKind::kIdle) return;
  host_.Note(std::string("screen ").append(NameOf(current_.kind)).append(" closed by the host"));
  Put(IdleScreen());
}

std::optional<Time> ScreenSession::NextDeadline() const {
  return acts_at_ ? acts_at_ : closes_at_;
}

void ScreenSession::Advance(Time now) {
  const auto deadline = NextDeadline();
  if (!deadline || *deadline > now) return;
  if (acts_at_) return PerformScheduledAction();
  TimeOut();
}

void ScreenSession::TimeOut() {
  host_.Note(std::string("screen ").append(NameOf(current_.kind)).append(" timed out"));
  Finish(current_.late_answer.value_or(""), "time-out");
}

void ScreenSession::Act(ScreenAction action) {
  if (!current_.AsksCustomer()) return;
  action_ = std::move(action);
  PerformScheduledAction();
}

void ScreenSession::PerformScheduledAction() {
  acts_at_.reset();
  const auto answer = AnswerTo(action_);
  const std::string action = ActionText(action_);
  host_.Trace(CustomerActed{CustomerActed::Kind::kAtScreen, action});
  if (action_.kind == ScreenAction::Kind::kWalkAway) return;
  if (!answer) return host_.Note("the screen does not take that; it waits for its time-out");
  if (action_.kind == ScreenAction::Kind::kSign && !KeepSignature(action_.strokes)) {
    host_.Note("the signature cannot be kept");
    return Finish({protocol::kStx, protocol::kRefusalMark, protocol::kEtx}, "refusal");
  }
  if (current_.keeps_picture) KeepPicture();
  Finish(*answer, action);
}

const ScreenKey* ScreenSession::KeyOf(const ScreenAction& action) const {
  switch (action.kind) {
    case ScreenAction::Kind::kKey:
      return current_.KeyNamed(action.text);
    case ScreenAction::Kind::kDigits:
      return current_.kind == ScreenKind::kKeypad ? current_.KeyFor(ScreenKey::Role::kConfirm) : nullptr;
    case ScreenAction::Kind::kSign:
      return current_.KeyFor(ScreenKey::Role::kSign);
    case ScreenAction::Kind::kConfirm:
      return current_.KeyFor(ScreenKey::Role::kConfirm);
    case ScreenAction::Kind::kCancel:
      return current_.KeyFor(ScreenKey::Role::kCancel);
    case ScreenAction::Kind::kAnswer:
    case ScreenAction::Kind::kWalkAway:
      return nullptr;
  }
  return nullptr;
}

std::optional<std::string> ScreenSession::AnswerTo(const ScreenAction& action) const {
  if (action.kind == ScreenAction::Kind::kAnswer) return action.text;
  const ScreenKey* const key = KeyOf(action);
  if (key == nullptr) return std::nullopt;
  if (action.kind == ScreenAction::Kind::kDigits) return kKeypadLead + action.text + kKeyEnd;
  return key->answer;
}

// The screen is gone before its answer goes out.
void ScreenSession::Finish(const std::string& answer, const std::string& what) {
  const std::string name(NameOf(current_.kind));
  Put(IdleScreen());
  if (!answer.empty()) host_.Answer({answer.begin(), answer.end()}, name + ": " + what);
}

// What the host fetches after a signing screen is what was written on it, or nothing.
void ScreenSession::ForgetSignature() {
  for (const char* path : {kSignaturePath, kStrokesPath}) files_.Remove(path);
}

bool ScreenSession::KeepSignature(const std::vector<PenPoint>& strokes) {
  if (StoreFile(files_, kStrokesPath, AsBytes(StrokeText(strokes))) != FileResult::kDone) return false;
  return painter_ == nullptr ||
         StoreFile(files_, kSignaturePath, painter_->Signature(strokes)) == FileResult::kDone;
}

void ScreenSession::KeepPicture() {
  if (painter_ == nullptr) return;
  const FileResult result = StoreFile(files_, kPicturePath, painter_->Picture(current_, KeyOf(action_)));
  if (result != FileResult::kDone) host_.Note("the picture of the screen cannot be kept");
}

}  // namespace gwq::terminal::device
