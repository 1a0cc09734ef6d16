// SPDX-License-Identifier: MIT
// What a host is told of a failed call, put together from the call's note when the host asks.
#include <libusb-1.0/libusb.h>

#include <array>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

#include <gwq/extra.h>
#include <gwq/status.h>
#include "diag/internal/failure.h"
#include "links/internal/device_holder.h"
#include "links/internal/remedy.h"
#include "usb_ids.h"

namespace gwq {
namespace {

template <std::size_t N>
void Copy(std::string_view text, char (&out)[N]) {
  text.copy(out, N - 1);
}

void SetAdvice(GwqFailure& failure, const char* english, const char* chinese) {
  Copy(english, failure.advice[GWQ_ENGLISH]);
  Copy(chinese, failure.advice[GWQ_CHINESE]);
}

template <typename... Values>
void FormatAdvice(GwqFailure& failure, const char* english, const char* chinese, Values... values) {
  std::snprintf(failure.advice[GWQ_ENGLISH], sizeof failure.advice[GWQ_ENGLISH], english, values...);
  std::snprintf(failure.advice[GWQ_CHINESE], sizeof failure.advice[GWQ_CHINESE], chinese, values...);
}

// What the status asks for in general.
void SetRemedy(GwqFailure& failure) {
  SetAdvice(failure, RemedyOf(failure.function, failure.status, GWQ_ENGLISH),
            RemedyOf(failure.function, failure.status, GWQ_CHINESE));
}

// "1209:0001, 1209:0002"
std::array<char, 64> Identities() {
  std::array<char, 64> text{};
  std::size_t length = 0;
  for (const UsbIdentity& identity : kUsbIdentities) {
    length += static_cast<std::size_t>(
        std::snprintf(text.data() + length, text.size() - length, "%s%04x:%04x", length == 0 ? "" : ", ",
                      static_cast<unsigned>(identity.vid), static_cast<unsigned>(identity.pid)));
  }
  return text;
}

bool IsSerial(const GwqFailure& failure) {
  return failure.tty[0] != '\0';
}

void AdviseToPlugIn(GwqFailure& failure) {
  if (IsSerial(failure)) {
    return FormatAdvice(failure,
                        "%s is not there: check the port number, and that the adapter is plugged in.",
                        "%s 不存在：请检查端口号，并确认转接器已插好。", failure.tty);
  }
  if (failure.bus != 0) {
    return SetAdvice(failure, "The terminal vanished while it was opened: check its cable and power.",
                     "终端在打开过程中断开：请检查连接线和电源。");
  }
  if (failure.error != 0) {
    return FormatAdvice(failure,
                        "The USB devices cannot be listed (%s): check that this system, or its container, "
                        "has access to USB.",
                        "无法列出 USB 设备（%s）：请检查系统或容器是否可以访问 USB。", failure.error_text);
  }
  FormatAdvice(failure, "No terminal is plugged in: check its cable and power; lsusb must show one of %s.",
               "没有插上终端：请检查连接线和电源；lsusb 应显示 %s 之一。", Identities().data());
}

void AdviseToPermit(GwqFailure& failure) {
  if (IsSerial(failure)) {
    return FormatAdvice(failure,
                        "This user may not open %s: add the user to the group dialout, and log in again.",
                        "当前用户无权打开 %s：请将用户加入 dialout 组，然后重新登录。", failure.tty);
  }
  FormatAdvice(
      failure,
      "This user may not open %.63s: install the udev rule 70-gwq.rules, or add the user to the group "
      "plugdev; then log in again and plug the terminal in again.",
      "当前用户无权打开 %.63s：请安装 udev 规则 70-gwq.rules，或将用户加入 plugdev "
      "组，然后重新登录并重新插上终端。",
      UsbNode(failure.bus, failure.address).data());
}

void AdviseToRelease(GwqFailure& failure) {
  if (failure.kernel_driver != 0) {
    return FormatAdvice(failure,
                        "The kernel's driver could not be detached from the terminal (%s): unload that "
                        "driver, or plug the terminal in again.",
                        "无法从终端分离内核驱动（%s）：请卸载该驱动，或重新插上终端。", failure.error_text);
  }
  if (failure.holder != 0) {
    return FormatAdvice(failure, "The device is held by process %d (%s): end it, and call again.",
                        "设备被进程 %d（%s）占用：请退出该进程，然后重新调用。", failure.holder,
                        failure.holder_name);
  }
  SetAdvice(failure, "Another program holds the device: end it, and call again.",
            "设备被其他程序占用：请退出该程序，然后重新调用。");
}

// For a step whose error tells more than the status.
void AdviseByError(GwqFailure& failure, const char* english, const char* chinese) {
  if (failure.error == 0) return SetRemedy(failure);
  FormatAdvice(failure, english, chinese, failure.error_text);
}

void Advise(GwqFailure& failure) {
  switch (failure.step) {
    case GWQ_STEP_FIND:
      return AdviseToPlugIn(failure);
    case GWQ_STEP_PERMISSION:
      return AdviseToPermit(failure);
    case GWQ_STEP_CLAIM:
      return AdviseToRelease(failure);
    case GWQ_STEP_OPEN:
      return AdviseByError(failure,
                           "The device is there and cannot be opened or set up (%s): check that it is the "
                           "right one, and plug it in again.",
                           "设备存在但无法打开或设置（%s）：请确认设备正确，并重新插上。");
    case GWQ_STEP_SEND:
      return AdviseByError(failure,
                           "The device did not take the command (%s): check its cable and power, and call "
                           "again.",
                           "设备没有接收命令（%s）：请检查连接线和电源，然后重新调用。");
    case GWQ_STEP_WAIT:
      return AdviseByError(failure,
                           "The answer could not be read (%s): check the device's cable and power, and call "
                           "again.",
                           "无法读取应答（%s）：请检查设备的连接线和电源，然后重新调用。");
    case GWQ_STEP_LOCAL_FILE:
      return AdviseByError(failure,
                           "A file on this machine cannot be used (%s): check its path, its rights and the "
                           "free space.",
                           "本机文件无法使用（%s）：请检查路径、权限和剩余空间。");
    default:
      return SetRemedy(failure);
  }
}

// "1-2.3": the bus, and the port of each hub on the way.
void SetPortPath(const UsbPlace& place, char (&out)[32]) {
  char mark = '-';
  int length = std::snprintf(out, sizeof out, "%u", unsigned{place.bus});
  for (const unsigned port : place.ports) {
    if (port == 0) break;
    length += std::snprintf(out + length, sizeof out - static_cast<std::size_t>(length), "%c%u", mark, port);
    mark = '.';
  }
}

void SetError(const FailureNote& note, GwqFailure& failure) {
  failure.error_source = note.error_source;
  failure.error = note.error;
  if (note.error_source == GWQ_ERROR_LIBUSB) {
    Copy(libusb_strerror(static_cast<libusb_error>(note.error)), failure.error_text);
  } else if (note.error_source == GWQ_ERROR_SYSTEM) {
    std::array<char, sizeof failure.error_text> room{};
    Copy(strerror_r(note.error, room.data(), room.size()), failure.error_text);
  }
}

void SetPlaceOf(const DevicePlace& place, GwqFailure& failure) {
  Copy(place.tty.data(), failure.tty);
  if (place.usb.bus == 0) return;
  failure.bus = place.usb.bus;
  failure.address = place.usb.address;
  failure.vendor = place.usb.vendor;
  failure.product = place.usb.product;
  SetPortPath(place.usb, failure.port_path);
}

void SetHolder(GwqFailure& failure) {
  const Holder holder =
      FindHolder(IsSerial(failure) ? failure.tty : UsbNode(failure.bus, failure.address).data());
  failure.holder = holder.pid;
  Copy(holder.name.data(), failure.holder_name);
}

}  // namespace
}  // namespace gwq

using namespace gwq;

int GWQ_GetFailure(GwqFailure* failure) {
  if (failure == nullptr) return GWQ_BAD_ARGUMENT;
  *failure = {};
  const Failure& last = LastFailure();
  if (last.function == nullptr) return GWQ_OK;
  failure->status = last.status;
  failure->step = last.note.step;
  failure->kernel_driver = last.note.kernel_driver ? 1 : 0;
  Copy(last.function, failure->function);
  SetError(last.note, *failure);
  SetPlaceOf(last.note.place, *failure);
  if (failure->step == GWQ_STEP_CLAIM && failure->kernel_driver == 0) SetHolder(*failure);
  Advise(*failure);
  return GWQ_OK;
}
