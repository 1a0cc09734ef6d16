// SPDX-License-Identifier: MIT
#include "e2e/library/library.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

namespace gwq::test {
namespace {

void* Load(const TempDir& directory, const std::string& ini) {
  const std::filesystem::path file = directory / "libgwq.so";
  std::filesystem::copy_file(GWQ_LIBRARY_FILE, file);
  if (!ini.empty()) WriteFile(directory / "GWQ_LOG.ini", ini);
  void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) throw std::runtime_error(dlerror());  // NOLINT(concurrency-mt-unsafe)
  return handle;
}

}  // namespace

Library::Library(const std::string& ini) : handle_(Load(directory_, ini)) {}

Library::~Library() {
  dlclose(handle_);
}

void* Library::Find(const std::string& name) const {
  void* symbol = dlsym(handle_, name.c_str());
  if (symbol == nullptr) throw std::runtime_error("not exported: " + name);
  return symbol;
}

std::string Library::Log() const {
  std::string log;
  const std::filesystem::path directory = directory_ / "Log/Gwq_Volkarn";
  if (!std::filesystem::exists(directory)) return log;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) log += ReadFile(entry.path());
  return log;
}

}  // namespace gwq::test
