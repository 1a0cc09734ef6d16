// SPDX-License-Identifier: MIT
#include "umockdev/testbed.h"

#include <sys/un.h>

#include <filesystem>
#include <stdexcept>

#include "base/errors.h"
#include "umockdev/testbed_record.h"

namespace gwq::terminal::umockdev {
namespace {

// Turns GLib's way of reporting failure into ours.
void ThrowIfFailed(gboolean done, GError* error, const std::string& what) {
  if (done) return;
  const std::string reason = error != nullptr ? error->message : "no reason given";
  g_clear_error(&error);
  throw std::runtime_error(what + ": " + reason);
}

std::string Owned(gchar* text) {
  std::string copy = text;
  g_free(text);
  return copy;
}

// Has the host make the request itself. The testbed's own handler for nodes
// would refuse terminal settings.
gboolean PassToKernel(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer) {
  GError* error = nullptr;
  gint error_number = 0;
  const gint result = umockdev_ioctl_client_execute(client, &error_number, &error);
  if (error != nullptr) error_number = EIO;
  umockdev_ioctl_client_complete(client, error != nullptr ? -1 : result, error_number);
  g_clear_error(&error);
  return TRUE;
}

// A socket address that is too long would be cut off without a word.
void CheckSocketLength(const std::string& root) {
  const std::string socket = root + "/ioctl" + kUsbNode;
  if (socket.size() >= sizeof(sockaddr_un::sun_path))
    throw std::runtime_error("the temporary directory's path is too long: " + root);
}

}  // namespace

std::string SerialNode(int port) {
  return "/dev/ttyS" + std::to_string(port - 1);
}

Testbed::Testbed() : testbed_(umockdev_testbed_new()), kernel_requests_(umockdev_ioctl_base_new()) {
  g_signal_connect(kernel_requests_.get(), "handle-ioctl", G_CALLBACK(PassToKernel), nullptr);
  root_ = Owned(umockdev_testbed_get_root_dir(testbed_.get()));
  CheckSocketLength(root_);
  std::filesystem::create_directories(root_ + "/dev");
}

Testbed::~Testbed() = default;

void Testbed::AttachUsbNode(UMockdevIoctlBase* handler) {
  GError* error = nullptr;
  const gboolean done = umockdev_testbed_attach_ioctl(testbed_.get(), kUsbNode, handler, &error);
  ThrowIfFailed(done, error, "USB node");
}

ReapGate Testbed::Plug(usb::UsbId id) {
  GError* error = nullptr;
  const gboolean done = umockdev_testbed_add_from_string(testbed_.get(), TestbedRecord(id).c_str(), &error);
  ThrowIfFailed(done, error, "USB device");
  return ReapGate(root_ + kUsbNode);
}

void Testbed::Unplug() {
  // Removing says nothing to anybody and leaves the node, which is no file of the
  // testbed's any more; and a parent takes its child's directory along.
  std::filesystem::remove(root_ + kUsbNode);
  umockdev_testbed_uevent(testbed_.get(), kUsbInterfaceSysPath, "remove");
  umockdev_testbed_uevent(testbed_.get(), kUsbSysPath, "remove");
  umockdev_testbed_remove_device(testbed_.get(), kUsbInterfaceSysPath);
  umockdev_testbed_remove_device(testbed_.get(), kUsbSysPath);
}

void Testbed::LinkSerial(int port, const std::string& slave) {
  const std::string node = SerialNode(port);
  GError* error = nullptr;
  const gboolean done =
      umockdev_testbed_attach_ioctl(testbed_.get(), node.c_str(), kernel_requests_.get(), &error);
  ThrowIfFailed(done, error, node);
  std::filesystem::create_symlink(slave, root_ + node);
}

}  // namespace gwq::terminal::umockdev
