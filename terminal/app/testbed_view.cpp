// SPDX-License-Identifier: MIT
#include <dlfcn.h>

#include <stdexcept>

#include "app/command_view.h"
#include "umockdev/testbed.h"
#include "umockdev/testbed_plug.h"

namespace gwq::terminal::app {
namespace {

class TestbedView final : public CommandView {
 public:
  TestbedView(TerminalHost& host, std::optional<int> serial_port) : serial_port_(serial_port) {
    if (host.Usb() != nullptr) plug_.emplace(testbed_, *host.Usb(), host.Identity());
    if (host.Serial() != nullptr) testbed_.LinkSerial(*serial_port, host.Serial()->Path());
  }

  [[nodiscard]] usb::UsbPlug* Plug() override { return plug_ ? &*plug_ : nullptr; }
  [[nodiscard]] Variables Environment() const override {
    Variables variables{{"UMOCKDEV_DIR", testbed_.RootDir()}};
    if (serial_port_) variables.emplace_back(kSerialPathVariable, umockdev::SerialNode(*serial_port_));
    return variables;
  }

 private:
  const std::optional<int> serial_port_;
  std::optional<umockdev::TestbedPlug> plug_;  // destroyed after the testbed, whose thread uses it
  umockdev::Testbed testbed_;
};

}  // namespace

// Without the library a command would see no terminal, and the linker only warns.
void CheckTestbed() {
  if (void* library = dlopen(kTestbedPreload, RTLD_LAZY | RTLD_LOCAL)) {
    dlclose(library);
    return;
  }
  throw std::runtime_error(std::string(dlerror()) + " (install umockdev, or use --pty or --usbip)");
}

std::unique_ptr<CommandView> MakeTestbedView(TerminalHost& host, std::optional<int> serial_port) {
  return std::make_unique<TestbedView>(host, serial_port);
}

}  // namespace gwq::terminal::app
