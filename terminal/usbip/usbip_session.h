// SPDX-License-Identifier: MIT
// A USB/IP client's conversation with the terminal, without any I/O: bytes in, bytes out.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "usb/usb_id.h"
#include "usb/usb_plug.h"
#include "usb/usb_terminal.h"
#include "usbip/usbip_protocol.h"

namespace gwq::terminal::usbip {

// The terminal's plug. One client at a time may import what is plugged in; to the terminal this
// is like being plugged into the client's machine, without any of the answers meant for another.
class UsbIpPlug final : public usb::UsbPlug {
 public:
  // `terminal` must outlive the plug and be used by nothing else.
  UsbIpPlug(usb::UsbId id, usb::UsbTerminal& terminal) : id_(id), terminal_(terminal) {}

  [[nodiscard]] usb::UsbId Id() const { return id_; }
  [[nodiscard]] usb::UsbTerminal& Terminal() const { return terminal_; }
  [[nodiscard]] bool IsIn() const override { return in_; }
  void PlugIn() override { in_ = true; }
  // The importer's session is over then.
  void PullOut() override;

  [[nodiscard]] usbip::ImportStatus Import(usb::UsbClient& client);
  void Release(usb::UsbClient& client);

 private:
  const usb::UsbId id_;
  usb::UsbTerminal& terminal_;
  bool in_ = true;
  usb::UsbClient* importer_ = nullptr;
};

class UsbIpSession {
 public:
  static constexpr std::size_t kMaxPending = 1024;  // transfers
  static constexpr std::size_t kMaxPendingBytes = std::size_t{16} << 20U;

  // `plug` must outlive the session.
  explicit UsbIpSession(UsbIpPlug& plug) : plug_(plug) {}
  UsbIpSession(const UsbIpSession&) = delete;
  UsbIpSession& operator=(const UsbIpSession&) = delete;
  ~UsbIpSession() { End(); }

  // For a client that needs no handshake: commands come at once. False when it cannot have the terminal.
  [[nodiscard]] bool Import();
  // Any bytes at all are allowed, in pieces of any size.
  void Receive(std::span<const std::uint8_t> bytes);
  // The client is gone.
  void End();
  // What is to be sent, with what the terminal has finished by now.
  [[nodiscard]] Bytes TakeReplies();

  [[nodiscard]] bool IsImported() const { return imported_; }
  // Nothing more will be served: the connection is to be closed once the replies are sent.
  [[nodiscard]] bool IsOver() const { return over_; }
  // Why, if it was not the client's wish; else empty.
  [[nodiscard]] const std::string& Complaint() const { return complaint_; }

 private:
  // Each serves what `bytes` begin with and tells how many that were; 0 if some are missing yet.
  std::size_t Serve(std::span<const std::uint8_t> bytes);
  std::size_t ServeOperation(std::span<const std::uint8_t> bytes);
  std::size_t ServeCommand(std::span<const std::uint8_t> bytes);
  std::size_t ServeSubmit(const usbip::Submit& submit, std::span<const std::uint8_t> data);

  void ServeImport(const std::string& bus_id);
  [[nodiscard]] usbip::ImportStatus TryImport();
  void SubmitTransfer(const usbip::Submit& submit, std::span<const std::uint8_t> data);
  void UnlinkTransfer(const usbip::Unlink& unlink);
  void Collect();
  std::optional<usb::Urb> Reap();
  void Reply(const Bytes& bytes) { replies_.insert(replies_.end(), bytes.begin(), bytes.end()); }
  void Fail(const std::string& complaint);

  UsbIpPlug& plug_;
  usb::UsbClient client_;
  Bytes input_;  // the beginning of a message
  Bytes replies_;
  std::size_t pending_ = 0;  // transfers, and their bytes
  std::size_t pending_bytes_ = 0;
  bool imported_ = false;
  bool over_ = false;
  std::string complaint_;
};

}  // namespace gwq::terminal::usbip
