// SPDX-License-Identifier: MIT
#include "web/page_files.h"

#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <span>
#include <utility>

extern "C" {
#include "page.h"
}

namespace gwq::terminal::web {
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

}  // namespace gwq::terminal::web
