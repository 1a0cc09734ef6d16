// SPDX-License-Identifier: MIT
#include "app/terminal_host.h"

#include <csignal>
#include <cstdio>
#include <utility>

namespace gwq::terminal::app {

void IgnoreOutputSignals() {
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGTTOU, SIG_IGN);
}

void AnnounceHostility(const TerminalOptions& options) {
  if (options.hostile)
    std::fprintf(stderr, "gwq-terminal: hostile %s\n", faults::RatesText(*options.hostile).c_str());
}

// Makes a scenario's events come.
class TerminalHost::StageTimer final : public Timed {
 public:
  explicit StageTimer(scenarios::Stage& stage) : stage_(stage) {}
  std::optional<Time> NextDeadline() override { return stage_.NextDeadline(); }
  void Advance(Time now) override { stage_.Advance(now); }

 private:
  scenarios::Stage& stage_;
};

TerminalHost::TerminalHost(const TerminalOptions& asked)
    : stage_(MakeStage(asked)), devices_(asked, stage_.get()), options_(devices_.AdaptToRecording(asked)) {
  // The page belongs to one terminal.
  const device::TraceSink page = options_.page_port ? page_trace_.Sink() : device::TraceSink{};
  if (options_.usb) AddUsb(page);
  if (options_.serial_port || options_.pty) AddSerial(options_.usb ? device::TraceSink{} : page);
}

TerminalHost::~TerminalHost() = default;

std::unique_ptr<scenarios::Stage> TerminalHost::MakeStage(const TerminalOptions& options) {
  if (options.scenario_file.empty()) return nullptr;
  return std::make_unique<scenarios::Stage>(
      scenarios::LoadScenario(options.scenario_file), options.history_file, [this] { return clock_.Now(); },
      [this] { loop_.Wake(); });
}

void TerminalHost::AddUsb(const device::TraceSink& page) {
  const Unit& unit = usb_unit_.emplace(devices_.Make(Line::kUsb, "usb", page));
  const usb::UsbTerminal::Wiring wiring{unit.line, unit.faults, unit.recorder};
  usb_ = std::make_unique<usb::UsbTerminal>(*options_.usb, wiring, clock_, [this] { loop_.Wake(); });
  loop_.Add(*usb_);
}

void TerminalHost::AddSerial(const device::TraceSink& page) {
  const Unit& unit = serial_unit_.emplace(devices_.Make(Line::kSerial, "serial", page));
  serial_ = std::make_unique<serial::SerialTerminal>(unit.line, clock_, unit.recorder);
  serial_->Join(loop_);
}

void TerminalHost::Open(usb::UsbPlug* plug) {
  plug_ = plug;
  SetPlugged(true);
  if (usb_ && (options_.hostile || options_.page_port)) {
    cable_ = std::make_unique<usb::LooseCable>(
        *usb_, clock_, [this] { SetPlugged(false); }, [this] { SetPlugged(true); });
    loop_.Add(*cable_);
  }
  if (options_.page_port) OpenPage(*options_.page_port);
  if (stage_) BeginStage();
}

void TerminalHost::SetPlugged(bool plugged) {
  if (plug_ == nullptr || plug_->IsIn() == plugged) return;
  plugged ? plug_->PlugIn() : plug_->PullOut();
  if (stage_)
    stage_->Note(
        {plugged ? scenarios::Event::Kind::kPlugged : scenarios::Event::Kind::kUnplugged, {}, {}, 0, {}});
}

void TerminalHost::OpenPage(std::uint16_t port) {
  page_ = web::OpenCustomerPage(port, PageTerminalHere(), page_trace_, loop_);
  std::fprintf(stderr, "gwq-terminal: you are the customer at %s\n", page_->Address().c_str());
}

// What is replayed was recorded with its faults.
template <typename Transport>
void TerminalHost::SetRates(Transport& transport, const Unit& unit, const faults::FaultRates& rates) {
  if (unit.faults != nullptr) transport.Use([&](Time) { unit.faults->SetRates(rates); });
}

web::PageTerminal TerminalHost::PageTerminalHere() {
  const faults::FaultRates rates = options_.hostile.value_or(faults::FaultRates{});
  if (!usb_)
    return {[this](const DeviceAction& action) { UseSerial(action); },
            [] { return true; },
            {},
            [this](const faults::FaultRates& changed) { SetRates(*serial_, *serial_unit_, changed); },
            rates};
  return {[this](const DeviceAction& action) { UseUsb(action); }, [this] { return plug_->IsIn(); },
          [this](bool plugged) { SetPlugged(plugged); },
          [this](const faults::FaultRates& changed) { SetRates(*usb_, *usb_unit_, changed); }, rates};
}

void TerminalHost::BeginStage() {
  const auto use = [this](const DeviceAction& action) {
    UseUsb(action);
    UseSerial(action);
  };
  stage_->Begin({[this] { SetPlugged(false); }, [this] { SetPlugged(true); }, use});
  stage_timer_ = std::make_unique<StageTimer>(*stage_);
  loop_.Add(*stage_timer_);
}

// A replayed terminal is no unit that could be used.
void TerminalHost::UseUsb(const DeviceAction& action) {
  if (usb_ && usb_unit_->device != nullptr) usb_->Use([&](Time now) { action(*usb_unit_->device, now); });
}

void TerminalHost::UseSerial(const DeviceAction& action) {
  if (serial_ && serial_unit_->device != nullptr)
    serial_->Use([&](Time now) { action(*serial_unit_->device, now); });
}

}  // namespace gwq::terminal::app
