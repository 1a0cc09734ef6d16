// SPDX-License-Identifier: MIT
// A terminal at the end of a USB cable, as usbfs shows it to hosts.
#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <set>

#include "base/clock.h"
#include "base/endpoint.h"
#include "base/event_loop.h"
#include "faults/faulty_line.h"
#include "usb/urb.h"
#include "usb/usb_id.h"
#include "usb/usb_interface.h"

namespace gwq::terminal::recording {
class Recorder;
}

namespace gwq::terminal::usb {

// Tells a host that waits, on any thread, whether there is something to reap.
using ReapSignal = std::function<void(bool reapable)>;

// One opening of the device node by a host.
struct UsbClient {
  bool unplugged = false;    // the device it opened is gone, even if a new one is there
  std::deque<Urb> waiting;   // for data from the terminal, oldest first
  std::deque<Urb> hanging;   // will never finish by themselves
  std::deque<Urb> finished;  // to be reaped, oldest first
};

// All members may be called on any thread, and none of them waits for a host.
// Those that return an int return 0 or the error number for the host.
class UsbTerminal final : public Timed {
 public:
  // What is at the other end of the cable, and must outlive this object.
  struct Wiring {
    Endpoint& line;
    faults::FaultyLine* faults = nullptr;     // what becomes of transfers; null: all of them pass
    recording::Recorder* recorder = nullptr;  // who records them; null when nobody does
  };

  // `deadline_moved` is called, on any thread, when NextDeadline has changed by
  // what a host did.
  UsbTerminal(UsbId id, const Wiring& wiring, const Clock& clock, std::function<void()> deadline_moved);
  ~UsbTerminal() override;

  // `reapable`, if any, is told when there is something to reap, and when there is nothing more.
  void Plug(ReapSignal reapable = {});
  void Unplug();

  std::optional<Time> NextDeadline() override;
  void Advance(Time now) override;

  // Does what is to be done with the unit or its line while no host uses them, and passes on what
  // the unit answers.
  void Use(const std::function<void(Time now)>& action);
  // A hostile terminal has dropped off the bus: its owner is to unplug it.
  [[nodiscard]] bool WantsUnplug();

  // A client must be disconnected before it is destroyed.
  void Connect(UsbClient& client);
  void Disconnect(UsbClient& client);

  [[nodiscard]] bool IsUnplugged(const UsbClient& client);
  [[nodiscard]] std::string_view Driver();
  int DetachDriver();
  int AttachDriver();
  int Claim(UsbClient& client, unsigned interface_number);
  int Release(UsbClient& client, unsigned interface_number);

  int Submit(UsbClient& client, Urb urb);
  int Discard(UsbClient& client, Urb::Id id);
  [[nodiscard]] std::optional<Urb> Reap(UsbClient& client);

 private:
  using Lock = std::lock_guard<std::mutex>;

  bool ApplyFault(UsbClient& client, Urb& urb);
  void Hang(UsbClient& client, Urb urb, double part);
  void FinishOut(UsbClient& client, Urb urb);
  void FinishControl(UsbClient& client, Urb urb);
  void Complete(UsbClient& client, Urb urb);
  void FinishAllWaiting(UsbClient& client, int status);
  void ReceiveReports(std::span<const std::uint8_t> bytes);
  void CollectAnswers();
  void PassReports();
  void FillOldest(UsbClient& client);
  void SignalReapable();

  const UsbId id_;
  const Clock& clock_;
  const std::function<void()> deadline_moved_;
  recording::Recorder* const recorder_;

  std::mutex mutex_;  // guards everything below, and every UsbClient
  Endpoint& line_;
  faults::FaultyLine* const faults_;
  bool plugged_ = false;
  bool wants_unplug_ = false;
  UsbInterface interface_;
  ReapSignal reapable_;
  std::set<UsbClient*> clients_;
  std::deque<Bytes> reports_;  // for the host, not yet taken
};

}  // namespace gwq::terminal::usb
