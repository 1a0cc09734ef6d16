// SPDX-License-Identifier: MIT
#include "store/initial_files.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "picture/painter.h"
#include "picture/signature.h"

namespace gwq::terminal {
namespace {

void Put(FileSystem& files, const std::string& path, std::span<const std::uint8_t> content) {
  if (!files.Open(path)) StoreFile(files, path, content);
}

}  // namespace

void PutInitialFiles(FileSystem& files) {
  const std::vector<PenPoint> signature = DefaultSignature();
  const std::string strokes = StrokeText(signature);
  Put(files, "/tmp/hw.png", SignaturePng(signature));
  Put(files, "/tmp/hw.txt", {reinterpret_cast<const std::uint8_t*>(strokes.data()), strokes.size()});
  Put(files, "/tmp/capture.png", ScreenPng(Screen{}));
}

}  // namespace gwq::terminal
