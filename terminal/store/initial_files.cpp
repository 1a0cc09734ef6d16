// SPDX-License-Identifier: MIT
#include "store/initial_files.h"

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "picture/painter.h"
#include "picture/signature.h"

namespace gwq::terminal::store {
namespace {

void Put(device::FileSystem& files, const std::string& path, std::span<const std::uint8_t> content) {
  if (!files.Open(path)) device::StoreFile(files, path, content);
}

}  // namespace

void PutInitialFiles(device::FileSystem& files) {
  const std::vector<device::PenPoint> signature = device::DefaultSignature();
  const std::string strokes = device::StrokeText(signature);
  Put(files, "/tmp/hw.png", picture::SignaturePng(signature));
  Put(files, "/tmp/hw.txt", {reinterpret_cast<const std::uint8_t*>(strokes.data()), strokes.size()});
  Put(files, "/tmp/capture.png", picture::ScreenPng(device::Screen{}));
}

}  // namespace gwq::terminal::store
