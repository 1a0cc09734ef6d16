// SPDX-License-Identifier: MIT
#include "web/page_files.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

#include "device/files/file_names.h"

extern "C" {
#include "page.h"
}

namespace gwq::terminal {
namespace {

using Types = std::span<const std::pair<std::string_view, const char*>>;

constexpr std::array<std::pair<std::string_view, const char*>, 3> kOwnTypes{
    {{".html", "text/html; charset=utf-8"},
     {".css", "text/css; charset=utf-8"},
     {".js", "text/javascript; charset=utf-8"}}};
constexpr std::array<std::pair<std::string_view, const char*>, 6> kStoredTypes{{{".png", "image/png"},
                                                                                {".jpg", "image/jpeg"},
                                                                                {".jpeg", "image/jpeg"},
                                                                                {".gif", "image/gif"},
                                                                                {".bmp", "image/bmp"},
                                                                                {".pdf", "application/pdf"}}};
constexpr std::uint64_t kMaxRead = std::uint64_t{64} << 20;

const char* Find(Types types, std::string_view name) {
  std::string lower(name);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  const auto type = std::find_if(types.begin(), types.end(),
                                 [&lower](const auto& one) { return lower.ends_with(one.first); });
  return type == types.end() ? "application/octet-stream" : type->second;
}

}  // namespace

std::optional<std::string> OwnFile(const std::string& name) {
  std::string path = "/gwq/page/";
  path += name;
  GBytes* bytes =
      g_resource_lookup_data(gwq_page_get_resource(), path.c_str(), G_RESOURCE_LOOKUP_FLAGS_NONE, nullptr);
  if (bytes == nullptr) return std::nullopt;
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
  std::string content(data, size);
  g_bytes_unref(bytes);
  return content;
}

const char* TypeOf(std::string_view name) {
  return Find(kOwnTypes, name);
}

const char* TypeOfStored(std::string_view path) {
  return Find(kStoredTypes, path);
}

std::optional<std::string> ReadWhole(FileSystem& files, const std::string& path) {
  const auto reader = files.Open(path);
  if (!reader || reader->Size() > kMaxRead) return std::nullopt;
  std::string content(static_cast<std::size_t>(reader->Size()), '\0');
  std::size_t done = 0;
  while (done < content.size()) {
    const auto count =
        reader->Read({reinterpret_cast<std::uint8_t*>(content.data()) + done, content.size() - done});
    if (!count) return std::nullopt;
    if (*count == 0) break;
    done += *count;
  }
  content.resize(done);
  return content;
}

std::vector<std::string> StoredFiles(FileSystem& files) {
  constexpr int kMediaTypes = 5;
  std::vector<std::string> directories;
  directories.reserve(kMediaTypes + 1);
  for (int type = 0; type < kMediaTypes; ++type) directories.push_back(MediaDirectory(type));
  directories.emplace_back("/tmp");
  std::vector<std::string> paths;
  for (const std::string& directory : directories) {
    for (const std::string& name : files.List(directory)) {
      paths.push_back(directory);
      (paths.back() += '/') += name;
    }
  }
  return paths;
}

}  // namespace gwq::terminal
