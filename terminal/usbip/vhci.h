// SPDX-License-Identifier: MIT
// The kernel's virtual USB host controller, module vhci_hcd, by its files in /sys.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

namespace gwq::terminal::usbip {

class Vhci {
 public:
  // `root` is where /sys and /dev are.
  explicit Vhci(const std::filesystem::path& root = "/");

  // Throws when there is none that we may use; the text says what to do.
  void Check() const;

  // Has the kernel plug a high-speed device in at a free port, which is returned. Its commands come from the
  // other end of `socket`, without a handshake. Throws when no port is free.
  [[nodiscard]] unsigned Attach(int socket, std::uint32_t device_id) const;
  // How the kernel calls the device at a port, such as 3-1; empty as long as it knows none.
  [[nodiscard]] std::string DeviceAt(unsigned port) const;
  // Programs can open this device and use its interface.
  [[nodiscard]] bool IsReady(const std::string& device) const;
  // Neither the port nor programs have this device, which may have no name, any more.
  [[nodiscard]] bool IsGone(unsigned port, const std::string& device) const;

 private:
  const std::filesystem::path controller_;
  const std::filesystem::path devices_;  // of all USB buses
  const std::filesystem::path nodes_;
};

}  // namespace gwq::terminal::usbip
