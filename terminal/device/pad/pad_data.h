// SPDX-License-Identifier: MIT
// GETENCDATA algorithm|length|hex: enciphers data under the working key of that
// algorithm (ciphers.h), and keeps the result as a file to be pulled, as
// hexadecimal text: the vector of one block, then the data in cipher-block-
// chaining mode. The answer is STX, 0xAA, that text as far as it goes in 4000
// characters, ETX; STX 'U' ETX without a working key; and the failure answer for
// anything that is wrong, after which there is no file.
#pragma once

#include "device/files/file_system.h"
#include "device/host_channel.h"
#include "device/pad/pad_keys.h"
#include "device/text_commands.h"

namespace gwq::terminal::device {

class PadData {
 public:
  // All must outlive this object.
  PadData(HostChannel& host, const PadKeys& keys, FileSystem& files)
      : host_(host), keys_(keys), files_(files) {}

  // This object must outlive the table.
  void AddTo(TextCommands& table);

 private:
  void Encipher(const protocol::Match& match);
  [[nodiscard]] bool Keep(const std::string& text);

  HostChannel& host_;
  const PadKeys& keys_;
  FileSystem& files_;
};

}  // namespace gwq::terminal::device
