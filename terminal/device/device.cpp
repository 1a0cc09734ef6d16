// SPDX-License-Identifier: MIT
#include "device/device.h"

#include <algorithm>
#include <deque>
#include <initializer_list>
#include <utility>

#include "base/secret.h"
#include "device/description.h"
#include "device/files/file_commands.h"
#include "device/framed_commands.h"
#include "device/host_channel.h"
#include "device/pad/counter_commands.h"
#include "device/pad/key_entry.h"
#include "device/pad/pin_pad.h"
#include "device/screens/screen_commands.h"
#include "device/screens/screen_session.h"
#include "device/text_commands.h"
#include "protocol/command_reader.h"

namespace gwq::terminal::device {

using protocol::Row;
namespace {

// A host that never reads must not make the terminal grow: like any device with
// a small output buffer, it then loses its oldest answers.
constexpr std::size_t kMaxAnswers = 256;

// The earliest of those that there are.
std::optional<Time> Earliest(std::initializer_list<std::optional<Time>> times) {
  std::optional<Time> earliest;
  for (const auto& time : times) {
    if (time && (!earliest || *time < *earliest)) earliest = time;
  }
  return earliest;
}

std::string_view AsText(const SecretBytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

}  // namespace

class Device::Impl : private HostChannel {
 public:
  Impl(Line line, Customer& customer, Settings settings, TraceSink trace, Storage storage,
       const Painter* painter)
      : settings_(std::move(settings)),
        trace_(std::move(trace)),
        storage_(storage.files != nullptr ? storage.files : &no_files_),
        reader_(line, [this](protocol::Command&& command) { CarryOut(command); }),
        entry_(customer, *this),
        counter_(*this, entry_, settings_),
        files_(*this, reader_, *storage_, std::move(storage.faults), settings_),
        pad_(*this, entry_, counter_.Keys(), *storage_, storage.keys),
        screens_(customer, *this, *storage_, painter),
        screen_commands_(*this, screens_, entry_, *storage_, settings_),
        description_(*this, settings_) {
    counter_.AddTo(text_commands_);
    files_.AddTo(text_commands_);
    pad_.AddTo(text_commands_, framed_commands_);
    screen_commands_.AddTo(text_commands_);
    description_.AddTo(text_commands_);
  }

  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  ~Impl() override {
    for (Bytes& answer : answers_) Wipe(answer);
  }

  void Receive(std::span<const std::uint8_t> bytes, Time now) {
    Advance(now);
    reader_.Feed(bytes, now_);
    Advance(now_);
  }

  // In steps from one event to the next, so that everything happens at its own
  // time and in its own order however rarely the owner calls.
  void Advance(Time now) {
    for (auto next = NextDeadline(); next && *next <= now; next = NextDeadline()) {
      now_ = std::max(now_, *next);
      reader_.Advance(now_);
      entry_.Advance(now_);
      files_.Advance(now_);
      screens_.Advance(now_);
    }
    now_ = std::max(now_, now);
  }

  [[nodiscard]] std::optional<Time> NextDeadline() const {
    return Earliest(
        {reader_.NextDeadline(), entry_.NextDeadline(), files_.NextDeadline(), screens_.NextDeadline()});
  }

  [[nodiscard]] const ScreenSession& ShownScreens() const { return screens_; }
  [[nodiscard]] std::optional<EntryState> CurrentEntry() const { return entry_.Current(); }
  [[nodiscard]] FileSystem& Files() const { return *storage_; }

  void Act(ScreenAction action, Time now) {
    Advance(now);
    screens_.Act(std::move(action));
  }

  void Press(const PadKey& key, Time now) {
    Advance(now);
    entry_.Press(key);
  }

  [[nodiscard]] bool TakeWithdrawal() { return std::exchange(withdrawn_, false); }

  [[nodiscard]] std::optional<Bytes> TakeAnswer() {
    if (answers_.empty()) return std::nullopt;
    Bytes answer = std::move(answers_.front());
    answers_.pop_front();
    return answer;
  }

 private:
  [[nodiscard]] Time Now() const override { return now_; }

  void Answer(Bytes answer, const std::string& what) override {
    Trace(Answered{what});
    answers_.push_back(std::move(answer));
    if (answers_.size() <= kMaxAnswers) return;
    Wipe(answers_.front());
    answers_.pop_front();
    Note("an answer that nobody took is lost");
  }

  void Withdraw() override {
    withdrawn_ = true;
    for (Bytes& answer : answers_) Wipe(answer);
    answers_.clear();
  }

  void LetAnswersLapse() override { answers_lapse_ = true; }

  void Trace(TraceEvent::What what) override {
    Announce({});
    Emit(std::move(what));
  }

  void Describe(const std::string& detail) override { Announce(detail); }

  void Emit(TraceEvent::What what) {
    if (trace_) trace_({std::move(what), now_});
  }

  void Announce(const std::string& detail) {
    if (const protocol::CommandRow* command = std::exchange(unannounced_, nullptr))
      Emit(CommandReceived{command, detail});
  }

  void CarryOut(const protocol::Command& command) {
    if (std::exchange(answers_lapse_, false)) Withdraw();
    if (!protocol::KeepsPull(AsText(command.bytes))) files_.StopPull();
    Dispatch(command);
    Announce({});
  }

  void Dispatch(const protocol::Command& command) {
    switch (command.kind) {
      case protocol::Command::Kind::kText:
        return CarryOutText(AsText(command.bytes));
      case protocol::Command::Kind::kFrame:
        return CarryOutFrame(command.bytes);
      case protocol::Command::Kind::kNoise:
        return Refuse(Row("noise"), " (" + std::to_string(command.noise_size) + " bytes)");
    }
  }

  void CarryOutText(std::string_view command) {
    if (text_commands_.CarryOut(command, [this](const protocol::CommandRow& row) { unannounced_ = &row; }))
      return;
    Refuse(Row("unknown command"), " " + NameOf(command) + " (" + std::to_string(command.size()) + " bytes)");
  }

  void Refuse(const protocol::CommandRow& command, const std::string& detail) {
    Emit(CommandReceived{&command, detail});
    AnswerRefusal(*this);
  }

  // A framed command is a question of its own, so it ends an entry that waits.
  void CarryOutFrame(std::span<const std::uint8_t> frame) {
    Emit(CommandReceived{&Row("PIN-pad frame"), " (" + std::to_string(frame.size()) + " bytes)"});
    entry_.Stop();
    const auto on_command = [this](const protocol::CommandRow& row) { unannounced_ = &row; };
    if (auto answer = framed_commands_.CarryOut(frame, on_command)) AnswerFrame(*this, std::move(*answer));
  }

  Settings settings_;
  TraceSink trace_;
  Time now_{0};
  std::deque<Bytes> answers_;
  bool withdrawn_ = false;
  bool answers_lapse_ = false;
  const protocol::CommandRow* unannounced_ = nullptr;  // is carried out, and the trace does not have it yet
  NoFiles no_files_;
  FileSystem* storage_;
  protocol::CommandReader reader_;
  KeyEntry entry_;
  CounterCommands counter_;
  FileCommands files_;
  PinPad pad_;
  ScreenSession screens_;
  ScreenCommands screen_commands_;
  Description description_;
  TextCommands text_commands_;
  FramedCommands framed_commands_;
};

Device::Device(Line line, Customer& customer, Settings settings, TraceSink trace, Storage storage,
               const Painter* painter)
    : impl_(std::make_unique<Impl>(line, customer, std::move(settings), std::move(trace), std::move(storage),
                                   painter)) {}
Device::~Device() = default;
Device::Device(Device&&) noexcept = default;
Device& Device::operator=(Device&&) noexcept = default;

void Device::Receive(std::span<const std::uint8_t> bytes, Time now) {
  impl_->Receive(bytes, now);
}
void Device::Advance(Time now) {
  impl_->Advance(now);
}
std::optional<Time> Device::NextDeadline() const {
  return impl_->NextDeadline();
}
bool Device::TakeWithdrawal() {
  return impl_->TakeWithdrawal();
}
std::optional<Bytes> Device::TakeAnswer() {
  return impl_->TakeAnswer();
}
const Screen& Device::CurrentScreen() const {
  return impl_->ShownScreens().Current();
}
std::optional<Time> Device::ScreenClosesAt() const {
  return impl_->ShownScreens().ClosesAt();
}
std::uint64_t Device::ScreenChanges() const {
  return impl_->ShownScreens().Changes();
}
std::optional<EntryState> Device::CurrentEntry() const {
  return impl_->CurrentEntry();
}
void Device::Act(ScreenAction action, Time now) {
  impl_->Act(std::move(action), now);
}
void Device::Press(const PadKey& key, Time now) {
  impl_->Press(key, now);
}
FileSystem& Device::Files() const {
  return impl_->Files();
}

}  // namespace gwq::terminal::device
