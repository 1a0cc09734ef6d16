// SPDX-License-Identifier: MIT
#include "app/device_factory.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "customer/agreeable.h"
#include "customer/live.h"
#include "customer/scripted.h"
#include "device/pad/key_pairs.h"
#include "store/initial_files.h"

namespace gwq::terminal::app {
namespace {

device::TraceSink Both(const device::TraceSink& one, const device::TraceSink& other) {
  if (!one || !other) return one ? one : other;
  return [one, other](const device::TraceEvent& event) {
    one(event);
    other(event);
  };
}

}  // namespace

std::unique_ptr<device::Customer> DeviceFactory::MakeCustomer() const {
  if (stage_ != nullptr) return stage_->MakeCustomer();
  if (customer_file_.empty()) return std::make_unique<customer::AgreeableCustomer>();
  return customer::LoadCustomer(customer_file_);
}

device::Settings DeviceFactory::MakeSettings() const {
  device::Settings settings;
  if (stage_ != nullptr) settings = stage_->Script().terminal.settings;
  settings.tzg = settings.tzg && tzg_;
  return settings;
}

faults::FaultScript DeviceFactory::Faults() const {
  if (stage_ != nullptr) return stage_->Script().faults;
  return faults_file_.empty() ? faults::FaultScript{} : faults::LoadFaults(faults_file_);
}

faults::FaultyLine DeviceFactory::LineOf(device::Device& device, Line line) const {
  const unsigned number = line == Line::kUsb ? 0 : 1;
  const auto* slowness = stage_ == nullptr ? nullptr : stage_->Slowness();
  if (slowness != nullptr)
    return {device, faults::Hostility(hostile_.value_or(faults::FaultRates{}), number), *slowness};
  return hostile_ ? faults::FaultyLine(device, faults::Hostility(*hostile_, number))
                  : faults::FaultyLine(device);
}

Unit DeviceFactory::Make(Line line, const std::string& line_name, const device::TraceSink& page) {
  Unit unit =
      replay_.file.empty()
          ? MakeDevice(line, line_name, page)
          : MakeReplayed(line == Line::kUsb ? recording::Wire::kUsb : recording::Wire::kSerial, line_name);
  unit.recorder = recorder_.get();
  return unit;
}

Unit DeviceFactory::MakeDevice(Line line, const std::string& line_name, const device::TraceSink& page) {
  customers_.push_back(page ? std::make_unique<customer::LiveCustomer>() : MakeCustomer());
  const device::TraceSink watching = stage_ == nullptr ? page : Both(stage_->Sink(), page);
  device::Device& device = *devices_.emplace_back(
      std::make_unique<device::Device>(line, *customers_.back(), MakeSettings(),
                                       Both(trace_.Sink(line_name), watching), MakeStorage(), &painter_));
  faults::FaultyLine& faults =
      *lines_.emplace_back(std::make_unique<faults::FaultyLine>(LineOf(device, line)));
  return {faults, &faults, &device};
}

TerminalOptions DeviceFactory::AdaptToRecording(TerminalOptions options) {
  if (replay_.file.empty()) return options;
  recording_ = recording::LoadRecording(replay_.file, replay_.device);
  const bool serial = recording_.Has(recording::Wire::kSerial);
  if (serial && !options.serial_port && !options.pty && !options.usbip)
    throw std::runtime_error(
        "the recording has a serial line; say with --serial N at which port it is to be, or --pty");
  if (!serial && (options.serial_port || options.pty))
    throw std::runtime_error("the recording has no serial line; leave --serial and --pty out");
  if (!recording_.Has(recording::Wire::kUsb)) options.usb.reset();
  if (options.usbip && !options.usb)
    throw std::runtime_error("the recording has no USB terminal; leave --usbip out");
  if (!serial && !options.usb) throw std::runtime_error("there is nothing in the recording");
  if (options.usb && recording_.identity)
    options.usb = usb::UsbId{recording_.identity->vendor, recording_.identity->product};
  return options;
}

Unit DeviceFactory::MakeReplayed(recording::Wire wire, const std::string& line_name) {
  std::vector<recording::WireTransfer> transfers;
  std::copy_if(recording_.transfers.begin(), recording_.transfers.end(), std::back_inserter(transfers),
               [wire](const recording::WireTransfer& transfer) { return transfer.wire == wire; });
  const auto report = [line_name](const std::string& text) {
    std::fprintf(stderr, "gwq-terminal: %s: %s\n", line_name.c_str(), text.c_str());
  };
  return {*replayed_.emplace_back(
      std::make_unique<recording::ReplayedLine>(std::move(transfers), replay_.fast, report))};
}

bool DeviceFactory::FinishReplay() {
  bool all = true;
  for (const auto& line : replayed_) all = line->Finish() && all;
  return all;
}

std::string DeviceFactory::StorageDir() {
  if (!storage_dir_.empty()) return storage_dir_;
  fresh_dirs_.push_back(std::make_unique<PrivateDir>());
  return fresh_dirs_.back()->Path();
}

// The limit is for hosts, not for what the terminal begins with.
device::Storage DeviceFactory::MakeStorage() {
  const faults::FaultScript script = Faults();
  const std::string directory = StorageDir();
  store::FileStore unlimited(directory);
  store::PutInitialFiles(unlimited);
  store::StoreLimits limits;
  limits.total = script.storage_limit.value_or(limits.total);
  stores_.push_back(std::make_unique<store::FileStore>(directory, limits));
  device::FileSystem* files = stores_.back().get();
  if (stage_ != nullptr) files = watched_.emplace_back(stage_->Watch(*files)).get();
  return {files, script.faults, MakeKeyFiles()};
}

device::FileSystem* DeviceFactory::MakeKeyFiles() {
  if (keys_dir_.empty()) return nullptr;
  stores_.push_back(std::make_unique<store::FileStore>(keys_dir_));
  device::FileSystem* files = stores_.back().get();
  if (const auto bad = device::KeyPairs(files).BadFile())
    throw std::runtime_error("key file " + keys_dir_ + "/" + *bad +
                             " does not hold the key pair of its name");
  return files;
}

}  // namespace gwq::terminal::app
