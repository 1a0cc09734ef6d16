// SPDX-License-Identifier: MIT
#include "usbip/vhci.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "base/errors.h"
#include "base/unique_fd.h"
#include "usbip/usbip_protocol.h"

namespace gwq::terminal::usbip {
namespace {

// A line of the controller's status:
//   hub port sta spd dev      sockfd local_busid
//   hs  0000 006 003 00010005 000009 3-1
struct Port {
  static constexpr unsigned kFree = 4;
  static constexpr unsigned kUsed = 6;

  std::string hub;
  unsigned number = 0;
  unsigned state = 0;
  std::string device;
};

std::optional<Port> ReadPort(const std::string& line) {
  std::istringstream fields(line);
  Port port;
  std::string unused;
  fields >> port.hub >> port.number >> port.state >> unused >> unused >> unused >> port.device;
  if (!fields) return std::nullopt;
  return port;
}

// Those for devices of up to high speed.
std::vector<Port> ReadPorts(const std::filesystem::path& controller) {
  std::ifstream status(controller / "status");
  std::vector<Port> ports;
  for (std::string line; std::getline(status, line);) {
    const std::optional<Port> port = ReadPort(line);
    if (port && port->hub == "hs") ports.push_back(*port);
  }
  return ports;
}

std::optional<Port> FindPort(const std::filesystem::path& controller, unsigned number) {
  for (const Port& port : ReadPorts(controller)) {
    if (port.number == number) return port;
  }
  return std::nullopt;
}

// Nothing if there is no number.
std::optional<unsigned> ReadNumber(const std::filesystem::path& path) {
  std::ifstream file(path);
  unsigned number = 0;
  if (file >> number) return number;
  return std::nullopt;
}

UniqueFd OpenToAttach(const std::filesystem::path& controller) {
  const std::filesystem::path path = controller / "attach";
  UniqueFd attach(open(path.c_str(), O_WRONLY | O_CLOEXEC));
  if (attach) return attach;
  if (errno == ENOENT)
    throw std::runtime_error(
        "the kernel has no virtual USB host controller: load its module with \"sudo modprobe vhci-hcd\"");
  if (errno == EACCES || errno == EPERM)
    throw std::runtime_error(path.string() + " may not be written: run this as root");
  ThrowErrno(path.string());
}

}  // namespace

Vhci::Vhci(const std::filesystem::path& root)
    : controller_(root / "sys/devices/platform/vhci_hcd.0"),
      devices_(root / "sys/bus/usb/devices"),
      nodes_(root / "dev/bus/usb") {}

void Vhci::Check() const {
  OpenToAttach(controller_);
}

unsigned Vhci::Attach(int socket, std::uint32_t device_id) const {
  const UniqueFd attach = OpenToAttach(controller_);
  for (const Port& port : ReadPorts(controller_)) {
    if (port.state != Port::kFree) continue;
    const std::string request = std::to_string(port.number) + " " + std::to_string(socket) + " " +
                                std::to_string(device_id) + " " + std::to_string(kHighSpeed);
    if (write(attach.Get(), request.data(), request.size()) >= 0) return port.number;
    if (errno != EBUSY)
      ThrowErrno("the kernel does not take the terminal at port " + std::to_string(port.number));
  }
  throw std::runtime_error(
      "no port of the kernel's virtual USB host controller is free: see \"usbip port\", and free one with "
      "\"sudo usbip detach -p PORT\"");
}

std::string Vhci::DeviceAt(unsigned port) const {
  const std::optional<Port> found = FindPort(controller_, port);
  return found && found->state == Port::kUsed ? found->device : "";
}

bool Vhci::IsReady(const std::string& device) const {
  if (device.empty() || !std::filesystem::exists(devices_ / (device + ":1.0"))) return false;
  const std::optional<unsigned> bus = ReadNumber(devices_ / device / "busnum");
  const std::optional<unsigned> number = ReadNumber(devices_ / device / "devnum");
  if (!bus || !number) return false;
  char node[32];
  std::snprintf(node, sizeof node, "%03u/%03u", *bus, *number);
  return std::filesystem::exists(nodes_ / node);
}

bool Vhci::IsGone(unsigned port, const std::string& device) const {
  const std::optional<Port> found = FindPort(controller_, port);
  return (!found || found->state == Port::kFree) &&
         (device.empty() || !std::filesystem::exists(devices_ / device));
}

}  // namespace gwq::terminal::usbip
