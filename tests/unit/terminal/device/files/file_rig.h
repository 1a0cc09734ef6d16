// SPDX-License-Identifier: MIT
// A terminal with files in memory, and a host that sends and fetches files. The
// host is written without the code under test.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "unit/terminal/device/rig.h"

namespace gwq::terminal::test {

using namespace device;

class MemoryFiles final : public FileSystem {
 public:
  std::unique_ptr<FileReader> Open(const std::string& path) override;
  std::unique_ptr<FileWriter> Create() override;
  FileResult Remove(const std::string& path) override;
  std::vector<std::string> List(const std::string& directory) override;

  std::map<std::string, std::string> files;
  std::size_t room = SIZE_MAX;  // for each file
  bool writable = true;
  bool readable = true;
  int writers = 0;  // that are there now
};

std::string Packet(int type, std::string_view payload);
std::string EndPacket(int type, std::string_view name);
std::string NamedCommand(std::string_view word, std::string_view argument);
std::string RandomContent(std::size_t size, unsigned seed = 1);

class FileRig {
 public:
  explicit FileRig(Line line = Line::kUsb, FileFaults faults = {});

  // Sends a whole file as the host's library does. All answers, in order, up to
  // the first that is no success.
  std::vector<std::string> Push(int type, std::string_view name, std::string_view content);
  // Mode change and start packet.
  void BeginPush();

  // What the host made of the terminal's packets.
  struct Pulled {
    std::string content;
    std::vector<std::size_t> packets;  // sizes of the data packets
    bool complete = false;
  };
  Pulled Pull(std::string_view path);

  std::string Ask(std::string_view command) { return rig.Ask(command); }

  MemoryFiles store;
  Rig rig;
};

}  // namespace gwq::terminal::test
