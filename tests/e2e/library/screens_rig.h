// SPDX-License-Identifier: MIT
// The customer screens of the built library against the virtual terminal, whose customer takes the steps of a
// file one after the other: each test goes through all of its session's steps.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "e2e/library/library.h"
#include "e2e/library/usb_watch.h"
#include "support/temp_dir.h"

namespace gwq::test {

class ScreenSession : public testing::Test {
 protected:
  static constexpr int kBaud = 115200;
  static constexpr int kSerialPort = 78;
  static constexpr int kSeconds = 5;
  static constexpr int kUntouched = 77;
  static constexpr char kLink[] = "9";

  ScreenSession() { ShortenDrains(); }

  // Where the terminal's file of this path stands on the host.
  static std::filesystem::path OnTerminal(const std::string& path) {
    const char* storage = std::getenv("GWQ_TEST_STORAGE");  // NOLINT(concurrency-mt-unsafe)
    if (storage == nullptr) throw std::runtime_error("GWQ_TEST_STORAGE is not set");
    return storage + path;
  }

  std::string Document(const std::string& name, const std::string& content = "%PDF-1.4\n%%EOF\n") {
    WriteFile(directory / name, content);
    return (directory / name).string();
  }

  std::string Local(const std::string& name) { return (directory / name).string(); }

  Library lib;
  TempDir directory;
};

}  // namespace gwq::test
