// SPDX-License-Identifier: MIT
#include "usb/usb_terminal.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "recording/recorder.h"
#include "usb/usb_control.h"
#include "usb/usb_descriptors.h"

namespace gwq::terminal::usb {
namespace {

constexpr std::size_t kMaxReports = 4096;

// Finishes a transfer before its time, with what it has moved.
void Abandon(Urb& urb, int status) {
  urb.Finish(status, std::max(urb.received.size(), urb.moved));
}

// Whatever a host calls its transfers, the endpoints are interrupt endpoints, and so does the
// kernel see them.
void RecordBegin(recording::Recorder* recorder, const UsbClient& client, const Urb& urb) {
  if (recorder == nullptr) return;
  const bool control = urb.kind == Urb::Kind::kControl;
  recorder->Begin({&client, urb.id},
                  {control ? recording::TransferType::kControl : recording::TransferType::kInterrupt,
                   urb.endpoint, urb.payload});
}

}  // namespace

UsbTerminal::UsbTerminal(UsbId id, const Wiring& wiring, const Clock& clock,
                         std::function<void()> deadline_moved)
    : id_(id),
      clock_(clock),
      deadline_moved_(std::move(deadline_moved)),
      recorder_(wiring.recorder),
      line_(wiring.line),
      faults_(wiring.faults) {}

// What a host's thread did last is seen here: its owner ends it by ways that sanitizers do not know.
UsbTerminal::~UsbTerminal() {
  const Lock lock(mutex_);
}

void UsbTerminal::Plug(ReapSignal reapable) {
  const Lock lock(mutex_);
  reapable_ = std::move(reapable);
  interface_.Reset();
  reports_.clear();
  plugged_ = true;
  if (recorder_ != nullptr) recorder_->Plugged(*Descriptor(id_, 1, 0), *Descriptor(id_, 2, 0));
}

void UsbTerminal::Unplug() {
  const Lock lock(mutex_);
  plugged_ = false;
  wants_unplug_ = false;
  for (UsbClient* client : clients_) {
    client->unplugged = true;
    FinishAllWaiting(*client, -ESHUTDOWN);
  }
  interface_.Reset();
  SignalReapable();
}

std::optional<Time> UsbTerminal::NextDeadline() {
  const Lock lock(mutex_);
  return line_.NextDeadline();
}

void UsbTerminal::Advance(Time now) {
  const Lock lock(mutex_);
  line_.Advance(now);
  CollectAnswers();
  PassReports();
}

void UsbTerminal::Use(const std::function<void(Time now)>& action) {
  const Lock lock(mutex_);
  const Time now = clock_.Now();
  action(now);
  line_.Advance(now);
  CollectAnswers();
  PassReports();
}

void UsbTerminal::Connect(UsbClient& client) {
  const Lock lock(mutex_);
  client.unplugged = !plugged_;
  clients_.insert(&client);
}

void UsbTerminal::Disconnect(UsbClient& client) {
  const Lock lock(mutex_);
  FinishAllWaiting(client, -ENOENT);
  clients_.erase(&client);
  if (interface_.Owner() == &client) interface_.Release(client, 0);
  SignalReapable();
}

bool UsbTerminal::IsUnplugged(const UsbClient& client) {
  const Lock lock(mutex_);
  return client.unplugged;
}

std::string_view UsbTerminal::Driver() {
  const Lock lock(mutex_);
  return interface_.Driver();
}

int UsbTerminal::DetachDriver() {
  const Lock lock(mutex_);
  if (UsbClient* owner = interface_.Owner()) FinishAllWaiting(*owner, -ENOENT);
  SignalReapable();
  return interface_.Detach();
}

int UsbTerminal::AttachDriver() {
  const Lock lock(mutex_);
  return interface_.Attach();
}

int UsbTerminal::Claim(UsbClient& client, unsigned interface_number) {
  const Lock lock(mutex_);
  return interface_.Claim(client, interface_number);
}

int UsbTerminal::Release(UsbClient& client, unsigned interface_number) {
  const Lock lock(mutex_);
  const int error = interface_.Release(client, interface_number);
  if (error == 0) FinishAllWaiting(client, -ENOENT);
  SignalReapable();
  return error;
}

int UsbTerminal::Submit(UsbClient& client, Urb urb) {
  const Lock lock(mutex_);
  if (urb.kind == Urb::Kind::kIsochronous) return EINVAL;
  if (urb.kind == Urb::Kind::kControl) {
    RecordBegin(recorder_, client, urb);
    FinishControl(client, std::move(urb));
    return 0;
  }
  if (urb.endpoint != kEndpointOut && urb.endpoint != kEndpointIn) return ENOENT;
  // usbfs claims for a host that forgot to.
  if (const int error = interface_.Claim(client, 0); error != 0) return error;
  RecordBegin(recorder_, client, urb);
  if (ApplyFault(client, urb)) {
    // has been dealt with
  } else if (urb.endpoint == kEndpointOut) {
    FinishOut(client, std::move(urb));
  } else {
    client.waiting.push_back(std::move(urb));
  }
  PassReports();
  return 0;
}

int UsbTerminal::Discard(UsbClient& client, Urb::Id id) {
  const Lock lock(mutex_);
  const auto is_meant = [id](const Urb& urb) { return urb.id == id; };
  for (std::deque<Urb>* list : {&client.waiting, &client.hanging}) {
    const auto found = std::find_if(list->begin(), list->end(), is_meant);
    if (found == list->end()) continue;
    Abandon(*found, -ENOENT);
    Complete(client, std::move(*found));
    list->erase(found);
    SignalReapable();
    return 0;
  }
  return EINVAL;
}

std::optional<Urb> UsbTerminal::Reap(UsbClient& client) {
  const Lock lock(mutex_);
  if (client.finished.empty()) return std::nullopt;
  std::optional<Urb> urb(std::move(client.finished.front()));
  client.finished.pop_front();
  SignalReapable();
  return urb;
}

bool UsbTerminal::WantsUnplug() {
  const Lock lock(mutex_);
  return wants_unplug_;
}

// True when a hostile terminal lets the transfer come to nothing.
bool UsbTerminal::ApplyFault(UsbClient& client, Urb& urb) {
  if (faults_ == nullptr) return false;
  const faults::Transfer transfer = urb.endpoint == kEndpointOut ? faults_->NextOut() : faults_->NextIn();
  switch (transfer.fate) {
    case faults::TransferFate::kPasses:
      return false;
    case faults::TransferFate::kHangs:
      Hang(client, std::move(urb), transfer.part);
      return true;
    case faults::TransferFate::kFails:
      urb.Finish(-EPIPE, 0);
      Complete(client, std::move(urb));
      return true;
    case faults::TransferFate::kUnplugs:
      Hang(client, std::move(urb), 0);
      wants_unplug_ = true;
      deadline_moved_();
      return true;
  }
  return false;
}

void UsbTerminal::Hang(UsbClient& client, Urb urb, double part) {
  if (urb.endpoint == kEndpointOut) {
    const auto moved = static_cast<std::size_t>(part * static_cast<double>(urb.payload.size()));
    ReceiveReports(std::span(urb.payload).first(moved));
    urb.Finish(0, moved);
  }
  client.hanging.push_back(std::move(urb));
}

void UsbTerminal::FinishOut(UsbClient& client, Urb urb) {
  ReceiveReports(urb.payload);
  urb.Finish(0, urb.payload.size());
  Complete(client, std::move(urb));
}

void UsbTerminal::FinishControl(UsbClient& client, Urb urb) {
  const std::optional<ControlRequest> request = ControlRequest::Parse(urb.payload);
  const std::optional<Bytes> answer = request ? AnswerControl(id_, *request) : std::nullopt;
  if (!answer) {
    urb.Finish(-EPIPE, 0);
  } else if ((request->type & 0x80) == 0) {
    if (request->IsSetReport()) ReceiveReports(request->data);
    urb.Finish(0, request->data.size());
  } else {
    urb.Collect(*answer);
    urb.FinishWithCollected(0);
  }
  Complete(client, std::move(urb));
  PassReports();
}

void UsbTerminal::Complete(UsbClient& client, Urb urb) {
  if (recorder_ != nullptr) recorder_->End({&client, urb.id}, {urb.status, urb.moved, urb.received});
  client.finished.push_back(std::move(urb));
}

void UsbTerminal::FinishAllWaiting(UsbClient& client, int status) {
  for (std::deque<Urb>* list : {&client.waiting, &client.hanging}) {
    for (Urb& urb : *list) {
      Abandon(urb, status);
      Complete(client, std::move(urb));
    }
    list->clear();
  }
}

// A transfer longer than a report arrives as several.
void UsbTerminal::ReceiveReports(std::span<const std::uint8_t> bytes) {
  const std::optional<Time> before = line_.NextDeadline();
  while (!bytes.empty()) {
    const std::size_t size = std::min(bytes.size(), kReportSize);
    line_.Receive(bytes.first(size), clock_.Now());
    bytes = bytes.subspan(size);
  }
  CollectAnswers();
  if (line_.NextDeadline() != before) deadline_moved_();
}

// Cuts answers into reports, the last one padded with zeros.
void UsbTerminal::CollectAnswers() {
  if (line_.TakeWithdrawal()) reports_.clear();
  while (const std::optional<Bytes> answer = line_.TakeAnswer()) {
    if (!plugged_) continue;  // nobody is at the other end of the cable
    for (std::size_t offset = 0; offset < answer->size(); offset += kReportSize) {
      const auto first = answer->begin() + static_cast<std::ptrdiff_t>(offset);
      const std::size_t size = std::min(kReportSize, answer->size() - offset);
      Bytes report(first, first + static_cast<std::ptrdiff_t>(size));
      report.resize(kReportSize);
      if (reports_.size() >= kMaxReports) reports_.pop_front();  // a host that asks and never reads
      reports_.push_back(std::move(report));
    }
  }
}

void UsbTerminal::PassReports() {
  UsbClient* client = interface_.Owner();
  while (client != nullptr && !client->waiting.empty() &&
         (!reports_.empty() || client->waiting.front().Room() == 0)) {
    FillOldest(*client);
  }
  SignalReapable();
}

// Moves one report into the oldest waiting transfer. A transfer with less room
// than a report fails, as on a bus, and the report is lost.
void UsbTerminal::FillOldest(UsbClient& client) {
  Urb& urb = client.waiting.front();
  int status = 0;
  if (urb.Room() >= kReportSize) {
    urb.Collect(reports_.front());
    reports_.pop_front();
  } else if (urb.Room() > 0) {
    reports_.pop_front();
    status = -EOVERFLOW;
  }
  if (status == 0 && urb.Room() > 0) return;
  urb.FinishWithCollected(status);
  Complete(client, std::move(urb));
  client.waiting.pop_front();
}

void UsbTerminal::SignalReapable() {
  if (!reapable_) return;
  reapable_(std::any_of(clients_.begin(), clients_.end(),
                        [](const UsbClient* client) { return !client->finished.empty(); }));
}

}  // namespace gwq::terminal::usb
