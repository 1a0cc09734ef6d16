// SPDX-License-Identifier: MIT
// The virtual PIN pad: the rooms that speak its framed commands, put together.
#pragma once

#include "device/pad/pad_data.h"
#include "device/pad/pad_entry.h"
#include "device/pad/pad_keys.h"
#include "device/pad/pad_settings.h"

namespace gwq::terminal::device {

class PinPad {
 public:
  // `key_files` may be null. All must outlive this object.
  PinPad(HostChannel& host, KeyEntry& entry, const KeyStore& master_keys, FileSystem& files,
         FileSystem* key_files)
      : settings_(host),
        keys_(host, settings_.Values(), master_keys, key_files),
        entry_(host, entry, settings_.Values(), keys_),
        data_(host, keys_, files) {}

  // This object must outlive the tables.
  void AddTo(TextCommands& texts, FramedCommands& frames) {
    settings_.AddTo(texts, frames);
    keys_.AddTo(frames);
    entry_.AddTo(texts, frames);
    data_.AddTo(texts);
  }

 private:
  PadSettings settings_;
  PadKeys keys_;
  PadEntry entry_;
  PadData data_;
};

}  // namespace gwq::terminal::device
