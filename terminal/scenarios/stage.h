// SPDX-License-Identifier: MIT
// Where a scenario is played: gives the terminals their customer, files and faults, makes the
// scripted events come, and writes down what happens.
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "device/device.h"
#include "device/files/file_system.h"
#include "device/screens/customer.h"
#include "scenarios/scenario.h"

namespace gwq::terminal::scenarios {

class Stage {
 public:
  // How events reach the terminals.
  struct EventHandlers {
    std::function<void()> unplug;
    std::function<void()> plug;
    std::function<void(const std::function<void(device::Device&, Time)>&)> use;  // with each device
  };

  // `now` tells the time on any thread; `wake` is called, on any, when NextDeadline has moved.
  // Throws when the history file cannot be written.
  Stage(Scenario scenario, const std::string& history_file, std::function<Time()> now,
        std::function<void()> wake);
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;
  ~Stage();

  // For each terminal. What is returned must not outlive the stage.
  [[nodiscard]] std::unique_ptr<device::Customer> MakeCustomer();
  [[nodiscard]] std::unique_ptr<device::FileSystem> Watch(device::FileSystem& files);
  [[nodiscard]] device::TraceSink Sink();
  [[nodiscard]] const Scenario& Script() const { return scenario_; }
  // How late each answer is now, in milliseconds; null when no event makes the line slow.
  [[nodiscard]] const std::atomic<Time::rep>* Slowness() const;

  // From now on the command runs.
  void Begin(EventHandlers handlers);
  [[nodiscard]] std::optional<Time> NextDeadline();
  // On the thread that may use the handlers.
  void Advance(Time now);

  // On any thread. What happens before the beginning does not count.
  void Note(Event occurred);

 private:
  class Watcher;
  class Files;
  using Lock = std::lock_guard<std::mutex>;

  bool Arm(const Event* occurred, Time now);
  void Do(const ScriptedEvent& event);
  void WalkAway();

  const Scenario scenario_;
  const std::function<Time()> now_;
  const std::function<void()> wake_;
  EventHandlers handlers_;
  std::atomic<bool> away_{false};
  std::atomic<Time::rep> slowness_{0};

  std::mutex mutex_;  // guards everything below
  int history_ = -1;
  std::optional<Time> began_;
  std::vector<std::uint64_t> seen_;  // of each event's trigger
  std::vector<std::pair<Time, const ScriptedEvent*>> due_;
};

}  // namespace gwq::terminal::scenarios
