// SPDX-License-Identifier: MIT
#include "umockdev/usbfs_handler.h"

#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <map>
#include <memory>
#include <utility>

#include "umockdev/host_urb.h"

namespace gwq::terminal::umockdev {
namespace {

constexpr const char* kConnectionKey = "gwq-connection";

// Ties a UsbClient to the testbed's client object: the testbed drops that object
// when the host closes the node, which is the only news of a close that we get.
struct Connection {
  explicit Connection(usb::UsbTerminal& t) : terminal(t) { terminal.Connect(client); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() { terminal.Disconnect(client); }

  usb::UsbTerminal& terminal;
  usb::UsbClient client;
  std::multimap<usb::Urb::Id, HostUrb> submitted;  // and not reaped; oldest first
};

struct Result {
  long value = 0;
  int error = 0;
};

Result FromError(int error) {
  return error == 0 ? Result{} : Result{-1, error};
}

// One request: what it asks for and where in the host's memory its argument lies.
class Request {
 public:
  Request(UMockdevIoctlClient* client, Connection& connection)
      : argument_(umockdev_ioctl_client_get_arg(client)),
        code_(umockdev_ioctl_client_get_request(client)),
        terminal_(connection.terminal),
        client_(connection.client),
        submitted_(connection.submitted) {}

  Result Serve();

 private:
  using Data = GObjectPtr<UMockdevIoctlData>;

  // The argument's target, `size` bytes of the host's memory; null if unreadable.
  [[nodiscard]] Data Target(std::size_t size) const;
  template <typename T>
  [[nodiscard]] std::optional<T> Read() const;

  Result ServePlugged();
  Result Capabilities();
  Result GetDriver();
  Result DriverRequest();
  Result DisconnectClaim();
  Result Claim();
  Result Release();
  Result Submit();
  Result Discard();
  Result Reap();

  UMockdevIoctlData* argument_;
  gulong code_;
  usb::UsbTerminal& terminal_;
  usb::UsbClient& client_;
  std::multimap<usb::Urb::Id, HostUrb>& submitted_;
};

Request::Data Request::Target(std::size_t size) const {
  GError* error = nullptr;
  Data data(umockdev_ioctl_data_resolve(argument_, 0, size, &error));
  g_clear_error(&error);
  return data;
}

template <typename T>
std::optional<T> Request::Read() const {
  const Data data = Target(sizeof(T));
  if (!data) return std::nullopt;
  T value;
  std::memcpy(&value, data->data, sizeof value);
  return value;
}

template <typename T>
void Write(UMockdevIoctlData* data, std::size_t offset, const T& value) {
  T copy = value;
  umockdev_ioctl_data_update(data, offset, reinterpret_cast<guint8*>(&copy), sizeof copy);
}

Result Request::Serve() {
  // What was finished before, or by, an unplugging can still be reaped.
  if (code_ == USBDEVFS_REAPURB || code_ == USBDEVFS_REAPURBNDELAY) return Reap();
  if (terminal_.IsUnplugged(client_)) return FromError(ENODEV);
  return ServePlugged();
}

Result Request::ServePlugged() {
  switch (code_) {
    case USBDEVFS_GET_CAPABILITIES:
      return Capabilities();
    case USBDEVFS_GETDRIVER:
      return GetDriver();
    case USBDEVFS_IOCTL:
      return DriverRequest();
    case USBDEVFS_DISCONNECT_CLAIM:
      return DisconnectClaim();
    case USBDEVFS_CLAIMINTERFACE:
      return Claim();
    case USBDEVFS_RELEASEINTERFACE:
      return Release();
    case USBDEVFS_SUBMITURB:
      return Submit();
    case USBDEVFS_DISCARDURB:
      return Discard();
    case USBDEVFS_SETCONFIGURATION:
    case USBDEVFS_SETINTERFACE:
    case USBDEVFS_CLEAR_HALT:
    case USBDEVFS_RESETEP:
    case USBDEVFS_RESET:
      return {};  // the one configuration, no alternate setting, nothing ever halted
    default:
      return FromError(ENOTTY);
  }
}

Result Request::Capabilities() {
  const Data data = Target(sizeof(__u32));
  if (!data) return FromError(EFAULT);
  Write(
      data.get(), 0,
      __u32{USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_NO_PACKET_SIZE_LIM | USBDEVFS_CAP_REAP_AFTER_DISCONNECT});
  return {};
}

Result Request::GetDriver() {
  const std::string_view driver = terminal_.Driver();
  if (driver.empty()) return FromError(ENODATA);
  const Data data = Target(sizeof(usbdevfs_getdriver));
  if (!data) return FromError(EFAULT);
  usbdevfs_getdriver answer{};
  std::memcpy(&answer.interface, data->data, sizeof answer.interface);
  driver.copy(answer.driver, sizeof answer.driver - 1);
  Write(data.get(), 0, answer);
  return {};
}

Result Request::DriverRequest() {
  const std::optional<usbdevfs_ioctl> inner = Read<usbdevfs_ioctl>();
  if (!inner) return FromError(EFAULT);
  if (inner->ifno != 0) return FromError(EINVAL);
  const auto code = static_cast<unsigned>(inner->ioctl_code);
  if (code == USBDEVFS_DISCONNECT) return FromError(terminal_.DetachDriver());
  if (code != USBDEVFS_CONNECT) return FromError(ENOTTY);
  const int error = terminal_.AttachDriver();
  return error == 0 ? Result{1, 0} : FromError(error);  // 1: a driver was found
}

Result Request::DisconnectClaim() {
  const std::optional<usbdevfs_disconnect_claim> wish = Read<usbdevfs_disconnect_claim>();
  if (!wish) return FromError(EFAULT);
  if (wish->interface != 0) return FromError(EINVAL);
  const std::string_view driver = terminal_.Driver();
  const std::string_view named(wish->driver, strnlen(wish->driver, sizeof wish->driver));
  if (!driver.empty()) {
    if ((wish->flags & USBDEVFS_DISCONNECT_CLAIM_IF_DRIVER) != 0 && named != driver) return FromError(EBUSY);
    if ((wish->flags & USBDEVFS_DISCONNECT_CLAIM_EXCEPT_DRIVER) != 0 && named == driver)
      return FromError(EBUSY);
    terminal_.DetachDriver();
  }
  return FromError(terminal_.Claim(client_, 0));
}

Result Request::Claim() {
  const std::optional<unsigned> number = Read<unsigned>();
  return FromError(number ? terminal_.Claim(client_, *number) : EFAULT);
}

Result Request::Release() {
  const std::optional<unsigned> number = Read<unsigned>();
  return FromError(number ? terminal_.Release(client_, *number) : EFAULT);
}

Result Request::Submit() {
  std::optional<HostUrb> urb = HostUrb::Fetch(argument_);
  if (!urb) return FromError(EFAULT);
  const int error = terminal_.Submit(client_, urb->Copy());
  if (error == 0) submitted_.emplace(urb->Id(), std::move(*urb));
  return FromError(error);
}

Result Request::Discard() {
  gulong address = 0;  // the argument itself, nothing behind it is read
  std::memcpy(&address, argument_->data, sizeof address);
  return FromError(terminal_.Discard(client_, address));
}

// The blocking form does not block either, see UsbfsHandler; a host that uses it
// is sent round once more, as by a signal.
Result Request::Reap() {
  const std::optional<usb::Urb> urb = terminal_.Reap(client_);
  if (!urb) {
    if (terminal_.IsUnplugged(client_)) return FromError(ENODEV);
    return FromError(code_ == USBDEVFS_REAPURB ? EINTR : EAGAIN);
  }
  auto submitted = submitted_.extract(submitted_.lower_bound(urb->id));
  const Data data = Target(sizeof(void*));
  if (!data || submitted.empty()) return FromError(EFAULT);
  submitted.mapped().Deliver(*urb, data.get());
  return {};
}

void DestroyConnection(gpointer connection) {
  delete static_cast<Connection*>(connection);
}

}  // namespace

UsbfsHandler::UsbfsHandler(usb::UsbTerminal& terminal)
    : terminal_(terminal), base_(umockdev_ioctl_base_new()) {
  g_signal_connect(base_.get(), "client-connected", G_CALLBACK(OnConnected), this);
  g_signal_connect(base_.get(), "handle-ioctl", G_CALLBACK(OnIoctl), this);
}

void UsbfsHandler::OnConnected(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer self) {
  auto connection = std::make_unique<Connection>(static_cast<UsbfsHandler*>(self)->terminal_);
  g_object_set_data_full(G_OBJECT(client), kConnectionKey, connection.release(), DestroyConnection);
}

gboolean UsbfsHandler::OnIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer) {
  auto* connection = static_cast<Connection*>(g_object_get_data(G_OBJECT(client), kConnectionKey));
  if (connection == nullptr) return FALSE;
  const Result result = Request(client, *connection).Serve();
  umockdev_ioctl_client_complete(client, result.value, result.error);
  return TRUE;
}

}  // namespace gwq::terminal::umockdev
