// SPDX-License-Identifier: MIT
#include "scenarios/stage.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <tuple>

#include "customer/agreeable.h"
#include "customer/scripted.h"

namespace gwq::terminal::scenarios {
namespace {

using Kind = Event::Kind;
using Action = ScriptedEvent::Action;

std::unique_ptr<device::Customer> ScriptedOrAgreeable(const Json& script) {
  if (script.is_null()) return std::make_unique<customer::AgreeableCustomer>();
  return customer::ReadCustomer(script);
}

bool Sets(const Trigger& trigger, const Event& occurred) {
  return trigger.kind == occurred.kind && (trigger.name.empty() || trigger.name == occurred.name);
}

}  // namespace

// The customer of the script, until they walk away.
class Stage::Watcher final : public device::Customer {
 public:
  Watcher(Stage& stage, std::unique_ptr<device::Customer> customer)
      : stage_(stage), customer_(std::move(customer)) {}

  device::PinAction KeyPin(const device::PinRequest& request) override {
    stage_.Note({Kind::kPinAsked, {}, {}, 0, {}});
    return stage_.away_ ? device::PinAction{device::PinAction::Kind::kWalkAway, {}, {}}
                        : customer_->KeyPin(request);
  }
  device::NumberAction KeyNumber(const device::NumberRequest& request) override {
    return stage_.away_ ? device::NumberAction{device::PinAction::Kind::kWalkAway, {}, {}}
                        : customer_->KeyNumber(request);
  }
  device::ScreenAction Respond(const device::Screen& screen) override {
    return stage_.away_ ? device::ScreenAction{} : customer_->Respond(screen);
  }
  void See(const device::Screen& screen) override {
    stage_.Note({Kind::kScreen, std::string(NameOf(screen.kind)), TextOn(screen), 0, {}});
  }

 private:
  Stage& stage_;
  std::unique_ptr<device::Customer> customer_;
};

// Another's files, with what is stored there noted.
class Stage::Files final : public device::FileSystem {
 public:
  Files(Stage& stage, device::FileSystem& files) : stage_(stage), files_(files) {}

  std::unique_ptr<device::FileReader> Open(const std::string& path) override { return files_.Open(path); }
  device::FileResult Remove(const std::string& path) override { return files_.Remove(path); }
  std::vector<std::string> List(const std::string& directory) override { return files_.List(directory); }
  std::unique_ptr<device::FileWriter> Create() override {
    auto writer = files_.Create();
    if (!writer) return nullptr;
    return std::make_unique<Writer>(stage_, std::move(writer));
  }

 private:
  class Writer final : public device::FileWriter {
   public:
    Writer(Stage& stage, std::unique_ptr<device::FileWriter> writer)
        : stage_(stage), writer_(std::move(writer)) {}

    bool Append(std::span<const std::uint8_t> bytes) override {
      size_ += bytes.size();
      return writer_->Append(bytes);
    }
    device::FileResult StoreAs(const std::string& path) override {
      const device::FileResult result = writer_->StoreAs(path);
      if (result == device::FileResult::kDone) stage_.Note({Kind::kStored, path, {}, size_, {}});
      return result;
    }

   private:
    Stage& stage_;
    std::unique_ptr<device::FileWriter> writer_;
    std::uint64_t size_ = 0;
  };

  Stage& stage_;
  device::FileSystem& files_;
};

Stage::Stage(Scenario scenario, const std::string& history_file, std::function<Time()> now,
             std::function<void()> wake)
    : scenario_(std::move(scenario)),
      now_(std::move(now)),
      wake_(std::move(wake)),
      history_(open(history_file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)),
      seen_(scenario_.events.size()) {
  if (history_ < 0) throw std::system_error(errno, std::generic_category(), history_file);
}

Stage::~Stage() {
  close(history_);
}

std::unique_ptr<device::Customer> Stage::MakeCustomer() {
  return std::make_unique<Watcher>(*this, ScriptedOrAgreeable(scenario_.customer));
}

std::unique_ptr<device::FileSystem> Stage::Watch(device::FileSystem& files) {
  return std::make_unique<Files>(*this, files);
}

device::TraceSink Stage::Sink() {
  return [this](const device::TraceEvent& event) {
    if (const auto* const received = std::get_if<device::CommandReceived>(&event.what))
      Note({Kind::kCommand, std::string(received->command->name), device::TextOf(event), 0, {}});
    const auto* const acted = std::get_if<device::CustomerActed>(&event.what);
    if (acted != nullptr && acted->kind == device::CustomerActed::Kind::kKeysPin)
      Note({Kind::kPinKeyed, {}, {}, 0, {}});
  };
}

const std::atomic<Time::rep>* Stage::Slowness() const {
  const auto slows = [](const ScriptedEvent& event) { return event.action == Action::kSlow; };
  return std::any_of(scenario_.events.begin(), scenario_.events.end(), slows) ? &slowness_ : nullptr;
}

void Stage::Begin(EventHandlers handlers) {
  handlers_ = std::move(handlers);
  const Lock lock(mutex_);
  began_ = now_();
  Arm(nullptr, *began_);
}

// Makes those events due that wait for it; nothing stands for the beginning.
bool Stage::Arm(const Event* occurred, Time now) {
  const std::size_t before = due_.size();
  for (std::size_t i = 0; i < scenario_.events.size(); ++i) {
    const ScriptedEvent& event = scenario_.events[i];
    const bool sets = occurred == nullptr ? !event.when.kind : Sets(event.when, *occurred);
    if (sets && ++seen_[i] == event.when.occurrence) due_.emplace_back(now + event.after, &event);
  }
  return due_.size() > before;
}

void Stage::Note(Event occurred) {
  bool armed = false;
  {
    const Lock lock(mutex_);
    if (!began_) return;
    const Time now = now_();
    occurred.at = now - *began_;
    const std::string line = HistoryLine(occurred);
    std::ignore = write(history_, line.data(), line.size());  // a history cut short is judged as it is
    armed = Arm(&occurred, now);
  }
  if (armed) wake_();
}

std::optional<Time> Stage::NextDeadline() {
  const Lock lock(mutex_);
  const auto next = std::min_element(due_.begin(), due_.end());
  if (next == due_.end()) return std::nullopt;
  return next->first;
}

// In the order of their times, and of the script where those are the same. The lock is free while
// an event comes, because what it does is noted.
void Stage::Advance(Time now) {
  while (true) {
    const ScriptedEvent* event = nullptr;
    {
      const Lock lock(mutex_);
      const auto next = std::min_element(due_.begin(), due_.end());
      if (next == due_.end() || next->first > now) return;
      event = next->second;
      due_.erase(next);
    }
    Do(*event);
  }
}

void Stage::Do(const ScriptedEvent& event) {
  switch (event.action) {
    case Action::kUnplug:
      return handlers_.unplug();
    case Action::kPlug:
      return handlers_.plug();
    case Action::kWalkAway:
      return WalkAway();
    case Action::kSlow:
      slowness_ = event.slowness.count();
      return;
  }
}

// What the customer was about to do they do not do any more; a first key takes back what they were
// going to key.
void Stage::WalkAway() {
  away_ = true;
  handlers_.use([](device::Device& device, Time now) {
    device.Act(device::ScreenAction{}, now);
    device.Press({device::PadKey::Kind::kClear, '0'}, now);
  });
}

}  // namespace gwq::terminal::scenarios
