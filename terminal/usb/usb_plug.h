// SPDX-License-Identifier: MIT
// The plug at the host's end of the USB cable.
#pragma once

namespace gwq::terminal::usb {

class UsbPlug {
 public:
  UsbPlug() = default;
  UsbPlug(const UsbPlug&) = delete;
  UsbPlug& operator=(const UsbPlug&) = delete;
  virtual ~UsbPlug() = default;

  [[nodiscard]] virtual bool IsIn() const = 0;
  virtual void PlugIn() = 0;
  virtual void PullOut() = 0;
};

}  // namespace gwq::terminal::usb
