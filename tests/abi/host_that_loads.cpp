// SPDX-License-Identifier: MIT
// Loads and unloads a library: host_that_loads LIBRARY [TIMES [DIRECTORY]], which
// it moves to once the library is loaded. Tells on standard output what happened in
// which order; the library's calls of libusb_init and libusb_exit arrive here.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

struct cJSON;

extern "C" {

__attribute__((visibility("default"))) int libusb_init(void** context) {
  std::puts(context == nullptr ? "libusb_init of the default context" : "libusb_init of another context");
  return -99;  // a failure, which must not matter
}

__attribute__((visibility("default"))) void libusb_exit(void* context) {
  std::puts(context == nullptr ? "libusb_exit of the default context" : "libusb_exit of another context");
}

}  // extern "C"

namespace {

template <typename Function>
Function* Find(void* library, const char* name) {
  void* const found = dlsym(library, name);
  if (found == nullptr) {
    std::printf("%s is missing\n", name);
    std::exit(3);
  }
  return reinterpret_cast<Function*>(found);
}

void UseCjson(void* library) {
  cJSON* const parsed = Find<cJSON*(const char*)>(library, "cJSON_Parse")("{\"a\":1}");
  std::puts(parsed != nullptr ? "cJSON parses" : "cJSON does not parse");
  Find<void(cJSON*)>(library, "cJSON_Delete")(parsed);
}

bool LoadUseAndUnload(const char* path, const char* directory) {
  void* const library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::puts(dlerror());
    return false;
  }
  std::puts("loaded");
  if (directory != nullptr && chdir(directory) != 0) return false;
  Find<int(const char*, ...)>(library, "ICC_DPrintLogToFile")("line %s", "of the host");
  UseCjson(library);
  const int closed = dlclose(library);
  std::puts("unloaded");
  return closed == 0 && dlopen(path, RTLD_NOW | RTLD_NOLOAD) == nullptr;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) return 2;
  const int times = count > 2 ? std::atoi(arguments[2]) : 1;
  const char* const directory = count > 3 ? arguments[3] : nullptr;
  for (int i = 0; i < times; ++i) {
    if (!LoadUseAndUnload(arguments[1], directory)) return 1;
  }
  return 0;
}
