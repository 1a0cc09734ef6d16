// SPDX-License-Identifier: MIT
// File functions of the built library against the virtual terminal, whose files stand in a directory that the
// test can look into.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>

#include "e2e/library/library.h"
#include "support/temp_dir.h"

namespace gwq::test {

class Files : public testing::Test {
 protected:
  static constexpr int kBaud = 115200;

  // Where the terminal's file of this path stands on the host.
  static std::filesystem::path OnTerminal(const std::string& path) {
    const char* storage = std::getenv("GWQ_TEST_STORAGE");  // NOLINT(concurrency-mt-unsafe)
    if (storage == nullptr) throw std::runtime_error("GWQ_TEST_STORAGE is not set");
    return storage + path;
  }

  // A file of random bytes, the same in each run.
  std::string LocalFile(const std::string& name, std::size_t size) {
    std::string content(size, '\0');
    std::mt19937 random(static_cast<unsigned>(size));
    for (char& byte : content) byte = static_cast<char>(random());
    const std::filesystem::path path = directory / name;
    WriteFile(path, content);
    return path.string();
  }

  int Push(const std::string& local, const std::string& place) {
    return lib.Get<Z11DownLoadFile>()(0, '9', kBaud, 255, local.c_str(), place.c_str());
  }

  int Pull(const std::string& place, const std::string& local, int timeout_ms = 3000) {
    std::string command = "\x1B[0PULLFILE\x02" + place + "\x03";
    std::string path = local;
    return lib.Get<PullFile>()(0, '9', kBaud, timeout_ms, static_cast<int>(command.size()), command.data(),
                               path.data());
  }

  std::string Local(const std::string& name) { return (directory / name).string(); }

  Library lib;
  TempDir directory;
};

}  // namespace gwq::test
