// SPDX-License-Identifier: MIT
// Exports functions of its own under every name that the library exports, loads the library and makes it call
// itself; prints which of the host's functions were called instead.
#include <dlfcn.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>

struct cJSON;

static int g_intrusions = 0;

// Called by the functions of the same names, which the build writes.
extern "C" int Intrude(const char* name) {
  ++g_intrusions;
  std::printf("the host's %s was called\n", name);
  return 42;
}

int min(int, int) {
  return Intrude("min");
}

int AsciiToHexStr(char*, int, char*, int) {
  return Intrude("AsciiToHexStr for mutable input");
}

int AsciiToHexStr(const char*, int, char*, int) {
  return Intrude("AsciiToHexStr for constant input");
}

extern "C" int Merge(void);

namespace {

template <typename Function>
Function* Find(void* library, const char* name) {
  void* const found = dlsym(library, name);
  if (found == nullptr) std::abort();
  return reinterpret_cast<Function*>(found);
}

void UseCodecs(void* library) {
  char text[16] = "";
  unsigned char bytes[8] = {};
  int count = Find<int(const char*, int, char*, int)>(library, "BCDToHex")("ab", 2, text, 15);
  std::printf("BCDToHex %d %s\n", count, text);
  count = Find<int(const char*, int, unsigned char*, int)>(library, "HexAsc1Merge")("4G", 2, bytes, 8);
  std::printf("HexAsc1Merge %d %02X\n", count, bytes[0]);
  count = Find<int(const unsigned char*, int, char*, int)>(library, "SplitChar")(bytes, 1, text, 15);
  std::printf("SplitChar %d %.2s\n", count, text);
}

void UseEngine(void* library) {
  using TransProc = int(int, int, char*, int, char*, int*, int);
  char command[] =
      "\x1B"
      "0GETVERSION";
  char answer[4096] = "";
  int length = 0;
  // There is no such serial device.
  std::printf("TransProc %d\n",
              Find<TransProc>(library, "TransProc")(987654, 9600, command, 12, answer, &length, 1000));
  Find<int()>(library, "CancelRead")();
  Find<void()>(library, "CancelWrite")();
}

// The library's own JSON is not the host's, nor is what it exports under cJSON's names.
void UseJson(void* library) {
  std::array<char, 4096> description{};
  int length = static_cast<int>(description.size());
  using CommCall = int(const char*, int, char*, int*);
  const int status =
      Find<CommCall>(library, "DEV_CommCall")("{\"RequestBaudRate\": 9600}", 0, description.data(), &length);
  const bool whole = std::string(description.data()).find("VOLK") != std::string::npos;
  std::printf("DEV_CommCall %d %s\n", status, whole ? "VOLK" : description.data());
  cJSON* const parsed = Find<cJSON*(const char*)>(library, "cJSON_Parse")("[1]");
  char* const text = Find<char*(const cJSON*)>(library, "cJSON_PrintUnformatted")(parsed);
  std::printf("cJSON_Print %s\n", text);
  std::free(text);  // the process's memory
  Find<void(cJSON*)>(library, "cJSON_Delete")(parsed);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) return 2;
  void* const library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    std::puts(dlerror());
    return 1;
  }
  std::printf("log in %s\n", std::string(Find<char*()>(library, "pGetLogPath")()).substr(0, 200).c_str());
  UseCodecs(library);
  UseEngine(library);
  UseJson(library);
  dlclose(library);
  std::printf("intrusions %d\n", g_intrusions);
  return Merge() == 42 ? 0 : 1;
}
