// SPDX-License-Identifier: MIT
// A directory that plays /sys and /dev of a kernel with the module vhci_hcd.
#pragma once

#include <cstdio>
#include <filesystem>
#include <initializer_list>
#include <string>

#include "support/temp_dir.h"

namespace gwq::terminal::test {

class FakeVhci {
 public:
  FakeVhci() {
    std::filesystem::create_directories(Controller());
    std::filesystem::create_directories(Devices());
    gwq::test::WriteFile(Controller() / "attach", "");
    SetPorts({"hs  0000 004 000 00000000 000000 0-0", "ss  0008 004 000 00000000 000000 0-0"});
  }

  [[nodiscard]] const std::filesystem::path& Root() const { return dir_.Path(); }
  [[nodiscard]] std::filesystem::path Controller() const {
    return dir_.Path() / "sys/devices/platform/vhci_hcd.0";
  }
  [[nodiscard]] std::filesystem::path Devices() const { return dir_.Path() / "sys/bus/usb/devices"; }

  void SetPorts(std::initializer_list<std::string> lines) const {
    std::string status = "hub port sta spd dev      sockfd local_busid\n";
    for (const std::string& line : lines) status += line + "\n";
    gwq::test::WriteFile(Controller() / "status", status);
  }

  // What was written to attach since the last time.
  [[nodiscard]] std::string TakeRequest() const {
    std::string request = gwq::test::ReadFile(Controller() / "attach");
    gwq::test::WriteFile(Controller() / "attach", "");
    return request;
  }

  // The device 3-1 as it is in /sys, with its interface, and in /dev.
  void AddDevice() const {
    std::filesystem::create_directories(Devices() / "3-1");
    gwq::test::WriteFile(Devices() / "3-1/busnum", "3\n");
    gwq::test::WriteFile(Devices() / "3-1/devnum", "17\n");
  }
  void AddInterface() const { std::filesystem::create_directories(Devices() / "3-1:1.0"); }
  void AddNode() const {
    std::filesystem::create_directories(dir_.Path() / "dev/bus/usb/003");
    gwq::test::WriteFile(dir_.Path() / "dev/bus/usb/003/017", "");
  }
  void RemoveDevice() const {
    for (const char* name : {"3-1", "3-1:1.0"}) std::filesystem::remove_all(Devices() / name);
    std::filesystem::remove_all(dir_.Path() / "dev");
  }

 private:
  gwq::test::TempDir dir_;
};

}  // namespace gwq::terminal::test
