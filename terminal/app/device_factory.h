// SPDX-License-Identifier: MIT
// Makes the terminals that a command line asks for.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/options.h"
#include "app/trace_writer.h"
#include "base/endpoint.h"
#include "base/private_dir.h"
#include "device/device.h"
#include "device/screens/customer.h"
#include "faults/fault_script.h"
#include "faults/faulty_line.h"
#include "picture/painter.h"
#include "recording/recorder.h"
#include "recording/recording.h"
#include "recording/replayed_line.h"
#include "scenarios/stage.h"
#include "store/file_store.h"

namespace gwq::terminal::app {

// One terminal, as the transport of its line needs it.
struct Unit {
  Endpoint& line;
  faults::FaultyLine* faults = nullptr;     // null: replayed, with the faults that were recorded
  device::Device* device = nullptr;         // null: replayed
  recording::Recorder* recorder = nullptr;  // null: nobody records
};

// Owns its units, and what they lean on.
class DeviceFactory {
 public:
  // With a `stage`, which must outlive the factory, customer and faults are its own.
  explicit DeviceFactory(const TerminalOptions& options, scenarios::Stage* stage = nullptr)
      : customer_file_(options.customer_file),
        storage_dir_(options.storage_dir),
        keys_dir_(options.keys_dir),
        faults_file_(options.faults_file),
        hostile_(options.hostile),
        tzg_(options.tzg),
        stage_(stage),
        trace_(options.trace),
        replay_(options.replay) {
    if (!options.record.file.empty())
      recorder_ = std::make_unique<recording::Recorder>(options.record.file, options.record.secrets);
  }

  // Each device has a customer of its own, and files of its own unless there is a
  // storage directory. Throws when that or one of the scripts is no good. With a `page` the
  // customer is a person, and sees there what happens.
  [[nodiscard]] Unit Make(Line line, const std::string& line_name, const device::TraceSink& page = {});

  // The terminals that a replay has; other options as they are. Throws when there can be no such replay.
  [[nodiscard]] TerminalOptions AdaptToRecording(TerminalOptions options);
  // Tells how the replay went; true if the hosts did all that is recorded, or nothing is replayed.
  [[nodiscard]] bool FinishReplay();

 private:
  [[nodiscard]] Unit MakeDevice(Line line, const std::string& line_name, const device::TraceSink& page);
  [[nodiscard]] Unit MakeReplayed(recording::Wire wire, const std::string& line_name);
  [[nodiscard]] std::unique_ptr<device::Customer> MakeCustomer() const;
  [[nodiscard]] device::Settings MakeSettings() const;
  [[nodiscard]] faults::FaultScript Faults() const;
  [[nodiscard]] faults::FaultyLine LineOf(device::Device& device, Line line) const;
  [[nodiscard]] std::string StorageDir();
  [[nodiscard]] device::Storage MakeStorage();
  [[nodiscard]] device::FileSystem* MakeKeyFiles();

  std::string customer_file_;
  std::string storage_dir_;
  std::string keys_dir_;
  std::string faults_file_;
  std::optional<faults::FaultRates> hostile_;
  bool tzg_;
  scenarios::Stage* stage_;
  TraceWriter trace_;
  std::unique_ptr<recording::Recorder> recorder_;
  recording::ReplayOptions replay_;
  recording::Recording recording_;
  picture::PngPainter painter_;
  std::vector<std::unique_ptr<device::Customer>> customers_;
  std::vector<std::unique_ptr<PrivateDir>> fresh_dirs_;
  std::vector<std::unique_ptr<store::FileStore>> stores_;
  std::vector<std::unique_ptr<device::FileSystem>> watched_;
  std::vector<std::unique_ptr<device::Device>> devices_;
  std::vector<std::unique_ptr<faults::FaultyLine>> lines_;
  std::vector<std::unique_ptr<recording::ReplayedLine>> replayed_;
};

}  // namespace gwq::terminal::app
