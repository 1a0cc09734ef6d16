// SPDX-License-Identifier: MIT
// Which terminals the system's files show, and who has a device file open.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gwq/extra.h>
#include <gwq/status_codes.h>
#include "links/internal/device_holder.h"
#include "links/internal/terminal_places.h"
#include "support/as_user.h"
#include "support/temp_dir.h"
#include "usb_ids.h"

namespace gwq::test {
namespace {

namespace fs = std::filesystem;

std::string Hexadecimal(int number) {
  std::array<char, 8> text{};
  std::snprintf(text.data(), text.size(), "%04x\n", static_cast<unsigned>(number));
  return text.data();
}

// The part of a system's files that is read.
class System {
 public:
  System() {
    fs::create_directories(Devices());
    fs::permissions(root_.Path(), fs::perms(0755));
    Plug("usb1", 0x1d6b, 2, 1, 1);
    fs::create_directory(Devices() / "1-0:1.0");
  }

  void Plug(const std::string& port, int vendor, int product, int bus, int address) {
    const fs::path entry = Devices() / port;
    fs::create_directory(entry);
    WriteFile(entry / "idVendor", Hexadecimal(vendor));
    WriteFile(entry / "idProduct", Hexadecimal(product));
    WriteFile(entry / "busnum", std::to_string(bus) + "\n");
    WriteFile(entry / "devnum", std::to_string(address) + "\n");
    fs::create_directories(Node(bus, address).parent_path());
    WriteFile(Node(bus, address), "");
  }
  void PlugTerminal(const std::string& port, int bus, int address, int identity = 0) {
    Plug(port, kUsbIdentities[identity].vid, kUsbIdentities[identity].pid, bus, address);
  }

  [[nodiscard]] std::string Root() const { return root_.Path(); }
  [[nodiscard]] fs::path Devices() const { return root_ / "sys/bus/usb/devices"; }
  [[nodiscard]] fs::path Node(int bus, int address) const {
    return UsbNode(bus, address, Root().c_str()).data();
  }

  [[nodiscard]] std::vector<GwqTerminalPlace> List(std::size_t room = 4) const {
    std::vector<GwqTerminalPlace> places(room + 1);
    places[room].bus = -1;
    const int count = ListTerminals(Root().c_str(), {places.data(), room});
    EXPECT_EQ(places[room].bus, -1) << "written beyond the room";
    places.resize(std::min(static_cast<std::size_t>(count), room));
    return places;
  }

 private:
  TempDir root_;
};

// Another process that has a file open.
class OtherProcess {
 public:
  explicit OtherProcess(const fs::path& file) {
    std::array<int, 2> ready{};
    EXPECT_EQ(pipe(ready.data()), 0);
    pid_ = fork();
    if (pid_ == 0) {
      const int fd = open(file.c_str(), O_RDWR);
      const char done = fd >= 0 ? 'y' : 'n';
      if (write(ready[1], &done, 1) == 1) pause();
      _exit(0);
    }
    char done = 'n';
    EXPECT_EQ(read(ready[0], &done, 1), 1);
    EXPECT_EQ(done, 'y');
    close(ready[0]);
    close(ready[1]);
  }
  ~OtherProcess() {
    kill(pid_, SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
  OtherProcess(const OtherProcess&) = delete;
  OtherProcess& operator=(const OtherProcess&) = delete;

  [[nodiscard]] int Pid() const { return pid_; }

 private:
  pid_t pid_;
};

TEST(TerminalPlaces, WithoutTerminalsThereAreNone) {
  const System system;
  EXPECT_TRUE(system.List().empty());
}

TEST(TerminalPlaces, WithoutUsbThereAreNone) {
  const TempDir nothing;
  std::array<GwqTerminalPlace, 2> places{};
  EXPECT_EQ(ListTerminals(nothing.Path().c_str(), places), 0);
}

TEST(TerminalPlaces, OfBothIdentitiesInOrderOfBusAndAddress) {
  System system;
  system.PlugTerminal("2-1", 2, 3);
  system.PlugTerminal("1-1.4.2", 1, 17, 1);
  system.PlugTerminal("1-3", 1, 9);
  system.Plug("1-2", kUsbIdentities[0].vid, 0x7777, 1, 4);
  system.Plug("1-5", 0x7777, kUsbIdentities[0].pid, 1, 5);
  const auto places = system.List();
  ASSERT_EQ(places.size(), 3U);
  EXPECT_STREQ(places[0].port_path, "1-3");
  EXPECT_STREQ(places[1].port_path, "1-1.4.2");
  EXPECT_STREQ(places[2].port_path, "2-1");
  EXPECT_EQ(places[1].bus, 1);
  EXPECT_EQ(places[1].address, 17);
  EXPECT_EQ(places[1].vendor, kUsbIdentities[1].vid);
  EXPECT_EQ(places[1].product, kUsbIdentities[1].pid);
  for (const GwqTerminalPlace& place : places) EXPECT_EQ(place.holder, 0);
}

TEST(TerminalPlaces, CountsAllAndWritesTheFirstOnesThatFit) {
  System system;
  for (int address = 9; address >= 2; --address) {
    system.PlugTerminal("1-" + std::to_string(address), 1, address);
  }
  EXPECT_EQ(ListTerminals(system.Root().c_str(), {}), 8);
  for (std::size_t room : {1U, 2U, 7U, 8U, 9U}) {
    const auto places = system.List(room);
    ASSERT_EQ(places.size(), std::min<std::size_t>(room, 8));
    for (std::size_t i = 0; i < places.size(); ++i) EXPECT_EQ(places[i].address, static_cast<int>(i) + 2);
  }
}

TEST(TerminalPlaces, UnpluggedWhileItIsReadIsLeftOut) {
  System system;
  system.PlugTerminal("1-1", 1, 5);
  fs::remove(system.Devices() / "1-1" / "busnum");
  EXPECT_TRUE(system.List().empty());
}

TEST(TerminalPlaces, TellWhetherThisUserMayOpen) {
  System system;
  system.PlugTerminal("1-1", 1, 5);
  system.PlugTerminal("1-2", 1, 6);
  system.PlugTerminal("1-3", 1, 7);
  ASSERT_EQ(chmod(system.Node(1, 5).c_str(), 0600), 0);
  ASSERT_EQ(chmod(system.Node(1, 6).c_str(), 0644), 0);
  ASSERT_EQ(chmod(system.Node(1, 7).c_str(), 0666), 0);
  const auto own = system.List();
  for (const GwqTerminalPlace& place : own) EXPECT_EQ(place.may_open, 1);
  if (geteuid() != 0) GTEST_SKIP() << "it takes two users";
  const AsOrdinaryUser user;
  const auto others = system.List();
  EXPECT_EQ(others.at(0).may_open, 0);
  EXPECT_EQ(others.at(1).may_open, 0) << "reading alone is not enough";
  EXPECT_EQ(others.at(2).may_open, 1);
}

// As the system cuts it; under an emulator it is the emulator's.
std::string OwnName() {
  std::string name;
  std::getline(std::ifstream("/proc/self/comm"), name);
  return name;
}

TEST(TerminalPlaces, TellWhoHasThemOpen) {
  System system;
  system.PlugTerminal("1-1", 1, 5);
  system.PlugTerminal("1-2", 1, 6);
  const OtherProcess other(system.Node(1, 6));
  const auto places = system.List();
  EXPECT_EQ(places.at(0).holder, 0);
  EXPECT_STREQ(places.at(0).holder_name, "");
  EXPECT_EQ(places.at(1).holder, other.Pid());
  EXPECT_EQ(places.at(1).holder_name, OwnName());
}

TEST(TerminalPlaces, ArgumentsThatAreNone) {
  GwqTerminalPlace place{};
  EXPECT_EQ(GWQ_FindTerminals(nullptr, 1), GWQ_BAD_ARGUMENT);
  EXPECT_EQ(GWQ_FindTerminals(&place, -1), GWQ_BAD_ARGUMENT);
  EXPECT_EQ(GWQ_FindTerminals(nullptr, -1), GWQ_BAD_ARGUMENT);
  EXPECT_GE(GWQ_FindTerminals(nullptr, 0), 0);
}

TEST(DeviceHolder, IsAnotherProcessBeforeThisOne) {
  System system;
  system.PlugTerminal("1-1", 1, 5);
  const std::string node = system.Node(1, 5);
  const int own = open(node.c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_GE(own, 0);
  EXPECT_EQ(FindHolder(node.c_str()).pid, getpid());
  {
    const OtherProcess other(node);
    EXPECT_EQ(FindHolder(node.c_str()).pid, other.Pid());
  }
  close(own);
  EXPECT_EQ(FindHolder(node.c_str()).pid, 0);
}

TEST(DeviceHolder, IsFoundUnderAnotherNameOfTheFile) {
  System system;
  system.PlugTerminal("1-1", 1, 5);
  fs::create_directory(fs::path(system.Root()) / "dev/other");
  const fs::path other_name = fs::path(system.Root()) / "dev/other/name";
  fs::create_hard_link(system.Node(1, 5), other_name);
  const OtherProcess other(other_name);
  EXPECT_EQ(FindHolder(system.Node(1, 5).c_str()).pid, other.Pid());
}

TEST(DeviceHolder, IsNotWhoOnlyReads) {
  System system;
  system.PlugTerminal("1-1", 1, 5);
  const std::string node = system.Node(1, 5);
  for (const int mode : {O_RDONLY, O_WRONLY, O_PATH}) {
    const int fd = open(node.c_str(), mode | O_CLOEXEC);
    ASSERT_GE(fd, 0);
    EXPECT_EQ(FindHolder(node.c_str()).pid, 0);
    close(fd);
  }
}

TEST(DeviceHolder, OfNoFileIsNobody) {
  EXPECT_EQ(FindHolder("/nowhere/dev/ttyS0").pid, 0);
}

}  // namespace
}  // namespace gwq::test
