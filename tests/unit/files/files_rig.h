// SPDX-License-Identifier: MIT
// The terminal on USB for everything that moves files, with the clock in hand and a directory of files.
#pragma once

#include <string>

#include "support/temp_dir.h"
#include "support/terminal_rig.h"
#include "wire/frames.h"

namespace gwq::test {

// Every byte value, in an order that a shift by a report or a piece would show.
inline std::string FileContent(std::size_t size) {
  std::string content(size, '\0');
  for (std::size_t i = 0; i < size; ++i) content[i] = static_cast<char>(i * 31 + i / 251);
  return content;
}

class FilesRig : public TerminalRig {
 protected:
  std::string MakeFile(std::string_view name, std::string_view content = "content") {
    const std::filesystem::path path = directory_ / name;
    std::filesystem::create_directories(path.parent_path());
    WriteFile(path, content);
    return path.string();
  }
  [[nodiscard]] std::string Path(std::string_view name) const { return (directory_ / name).string(); }

  void Exchange(std::string_view command, std::string_view answer = wire::kDone) {
    usb_.ExpectCommand(command).Answer(answer);
  }
  void Exchange(const Bytes& command, std::string_view answer = wire::kDone) {
    Exchange(TextOf(command), answer);
  }

  // The packets of a push that the terminal takes.
  void ExpectPush(std::uint8_t type, std::string_view name, std::string_view content = "content") {
    Exchange(wire::kModeChange);
    Exchange(wire::kPushStart);
    for (std::string_view rest = content; !content.empty();) {
      const std::string_view piece = rest.substr(0, kPieceSize);
      Exchange(wire::TransferPacket(2, BytesOf(piece)));
      if (piece.size() < kPieceSize) break;
      rest.remove_prefix(kPieceSize);
    }
    Exchange(wire::PushEnd(type, name));
  }

  static constexpr std::size_t kPieceSize = 200'000;

  TempDir directory_;
};

}  // namespace gwq::test
