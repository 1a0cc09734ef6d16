// SPDX-License-Identifier: MIT
#include "usbip/usbip_session.h"

#include <cerrno>
#include <utility>
#include <variant>

namespace gwq::terminal::usbip {
namespace {

// A control transfer begins with its setup packet, and has room for the answer behind it.
usb::Urb UrbOf(const usbip::Submit& submit, std::span<const std::uint8_t> data) {
  Bytes payload;
  if (submit.IsControl()) payload.assign(submit.setup.begin(), submit.setup.end());
  payload.insert(payload.end(), data.begin(), data.end());
  if (submit.IsIn()) payload.resize(payload.size() + submit.length);
  const usb::Urb::Kind kind = submit.IsControl() ? usb::Urb::Kind::kControl : usb::Urb::Kind::kData;
  return {submit.sequence, kind, submit.endpoint, std::move(payload)};
}

// The setup packet of a control transfer with data must name the direction that they take.
bool Contradicts(const usbip::Submit& submit) {
  return submit.IsControl() && submit.length > 0 && ((submit.setup[0] & 0x80) != 0) != submit.IsIn();
}

}  // namespace

void UsbIpPlug::PullOut() {
  in_ = false;
  terminal_.Unplug();
}

usbip::ImportStatus UsbIpPlug::Import(usb::UsbClient& client) {
  if (!in_) return usbip::ImportStatus::kNoDevice;
  if (importer_ != nullptr) return usbip::ImportStatus::kBusy;
  importer_ = &client;
  terminal_.Plug();
  terminal_.Connect(client);
  // The drivers are the client's affair.
  terminal_.DetachDriver();
  terminal_.Claim(client, 0);
  return usbip::ImportStatus::kDone;
}

void UsbIpPlug::Release(usb::UsbClient& client) {
  terminal_.Unplug();
  terminal_.Disconnect(client);
  importer_ = nullptr;
}

void UsbIpSession::Receive(std::span<const std::uint8_t> bytes) {
  if (over_) return;
  input_.insert(input_.end(), bytes.begin(), bytes.end());
  std::size_t used = 0;
  while (!over_) {
    const std::size_t count = Serve(std::span(input_).subspan(used));
    if (count == 0) break;
    used += count;
  }
  input_.erase(input_.begin(), input_.begin() + static_cast<std::ptrdiff_t>(used));
}

std::size_t UsbIpSession::Serve(std::span<const std::uint8_t> bytes) {
  return imported_ ? ServeCommand(bytes) : ServeOperation(bytes);
}

std::size_t UsbIpSession::ServeOperation(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < usbip::kOperationSize) return 0;
  const usbip::Operation operation = usbip::ParseOperation(bytes.first<usbip::kOperationSize>());
  if (operation.version != usbip::kVersion) {
    Fail("not version 1.1.1 of the protocol");
  } else if (operation.code == usbip::kListRequest) {
    Reply(usbip::ListReply(plug_.Id(), plug_.IsIn()));
    over_ = true;
  } else if (operation.code != usbip::kImportRequest) {
    Fail("an unknown request");
  } else {
    if (bytes.size() < usbip::kOperationSize + usbip::kBusIdSize) return 0;
    ServeImport(usbip::ParseBusId(bytes.subspan<usbip::kOperationSize, usbip::kBusIdSize>()));
    return usbip::kOperationSize + usbip::kBusIdSize;
  }
  return usbip::kOperationSize;
}

bool UsbIpSession::Import() {
  over_ = TryImport() != usbip::ImportStatus::kDone;
  return imported_;
}

usbip::ImportStatus UsbIpSession::TryImport() {
  const usbip::ImportStatus status = plug_.Import(client_);
  imported_ = status == usbip::ImportStatus::kDone;
  return status;
}

void UsbIpSession::ServeImport(const std::string& bus_id) {
  const usbip::ImportStatus status = bus_id == usbip::kBusId ? TryImport() : usbip::ImportStatus::kNoDevice;
  over_ = !imported_;
  Reply(imported_ ? usbip::ImportReply(plug_.Id()) : usbip::ImportRefusal(status));
}

std::size_t UsbIpSession::ServeCommand(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < usbip::kCommandSize) return 0;
  const usbip::Command command = usbip::ParseCommand(bytes.first<usbip::kCommandSize>());
  if (const auto* submit = std::get_if<usbip::Submit>(&command))
    return ServeSubmit(*submit, bytes.subspan(usbip::kCommandSize));
  if (const auto* unlink = std::get_if<usbip::Unlink>(&command)) UnlinkTransfer(*unlink);
  if (const auto* malformed = std::get_if<usbip::Malformed>(&command)) Fail(malformed->why);
  return usbip::kCommandSize;
}

std::size_t UsbIpSession::ServeSubmit(const usbip::Submit& submit, std::span<const std::uint8_t> data) {
  const std::size_t size = submit.IsIn() ? 0 : submit.length;
  if (data.size() < size) return 0;
  SubmitTransfer(submit, data.first(size));
  return usbip::kCommandSize + size;
}

void UsbIpSession::SubmitTransfer(const usbip::Submit& submit, std::span<const std::uint8_t> data) {
  if (Contradicts(submit)) return Reply(usbip::SubmitReply(submit.sequence, -EPIPE, 0, {}));
  usb::Urb urb = UrbOf(submit, data);
  const std::size_t size = urb.payload.size();
  if (pending_ >= kMaxPending || pending_bytes_ + size > kMaxPendingBytes)
    return Fail("too many transfers at a time");
  if (plug_.Terminal().Submit(client_, std::move(urb)) != 0)
    return Reply(usbip::SubmitReply(submit.sequence, -EPIPE, 0, {}));
  ++pending_;
  pending_bytes_ += size;
  Collect();
}

// One that has finished has had its reply already.
void UsbIpSession::UnlinkTransfer(const usbip::Unlink& unlink) {
  Collect();
  const bool waited = plug_.Terminal().Discard(client_, unlink.victim) == 0;
  if (waited) Reap();
  Reply(usbip::UnlinkReply(unlink.sequence, waited ? -ECONNRESET : 0));
}

std::optional<usb::Urb> UsbIpSession::Reap() {
  std::optional<usb::Urb> urb = plug_.Terminal().Reap(client_);
  if (urb) {
    --pending_;
    pending_bytes_ -= urb->payload.size();
  }
  return urb;
}

void UsbIpSession::Collect() {
  while (const std::optional<usb::Urb> urb = Reap()) {
    const auto sequence = static_cast<std::uint32_t>(urb->id);
    Reply(usbip::SubmitReply(sequence, urb->status, urb->moved, urb->received));
  }
}

Bytes UsbIpSession::TakeReplies() {
  if (imported_ && plug_.Terminal().IsUnplugged(client_)) End();
  if (imported_) Collect();
  return std::exchange(replies_, {});
}

void UsbIpSession::End() {
  over_ = true;
  if (std::exchange(imported_, false)) plug_.Release(client_);
}

void UsbIpSession::Fail(const std::string& complaint) {
  complaint_ = complaint;
  End();
}

}  // namespace gwq::terminal::usbip
