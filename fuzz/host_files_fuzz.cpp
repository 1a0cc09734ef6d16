// SPDX-License-Identifier: MIT
// What the library reads on the host: INI files, names of log files, lists of paths.
#include <cstring>

#include <gwq/diag/Rwini.h>
#include <gwq/diag/log.h>
#include <gwq/files/host_files.h>
#include "exact.h"
#include "files/internal/path_list.h"
#include "input.h"
#include "machine.h"

namespace gwq::fuzz {
namespace {

void ReadIni(Input input) {
  const std::string section = input.Text();
  const std::string key = input.Text();
  const auto content = input.Rest();
  Machine::PutFile("lib/GWQ_LOG.ini", {reinterpret_cast<const char*>(content.data()), content.size()});
  for (const auto& [in, wanted] :
       {std::pair{section, key}, std::pair{std::string("Gwq"), std::string("Log")}}) {
    Exact<char> value(100);
    GetProfileString("/lib/GWQ_LOG.ini", in.c_str(), wanted.c_str(), value.data());
    Require(std::memchr(value.data(), '\0', value.size()) != nullptr, "a value without an end");
  }
}

void Trim(const std::string& text) {
  for (auto* trim : {&l_trim, &r_trim, &a_trim}) {
    Exact<char> out(text.size() + 1);
    Require(std::strlen(trim(out.data(), text.c_str())) <= std::strlen(text.c_str()), "trimmed text grew");
  }
}

// Whatever files stand beside the log, a purge reads their names and ends.
void Purge(Input input) {
  pGetLogPath();
  while (!input.Empty()) {
    const auto bytes = input.Take(1 + input.Byte() % 40);
    std::string name(bytes.begin(), bytes.end());
    for (char& c : name) c = c == '/' || c == '\0' || c == '.' ? '0' : c;
    Machine::PutFile("lib/Log/Gwq_Volkarn/VK_" + name + ".log", "");
    if (input.Byte() % 4 == 0) Machine::PutFile("lib/Log/Gwq_Volkarn/" + name, "");
  }
  DelOutTimeLogFile();
}

void WalkList(std::string list) {
  const std::size_t length = std::strlen(list.c_str());
  std::size_t walked = 0;
  PathList paths(list.data());
  while (const char* path = paths.Next()) {
    Require(*path != '\0', "an empty element");
    walked += std::strlen(path) + 1;
    BaseName(path);
  }
  Require(walked <= length + 1, "the elements are longer than the list");
}

void Names(const std::string& path) {
  for (auto* name : {&GetFileName, &GetFileNameEx, &GetFileExtendName, &GetFileExtenName}) {
    Exact<char> out(std::strlen(path.c_str()) + 1);
    name(path.c_str(), out.data());
  }
}

}  // namespace
}  // namespace gwq::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace gwq::fuzz;
  Machine machine(7);
  const std::string text(reinterpret_cast<const char*>(data), size);
  Trim(text);
  WalkList(text);
  Names(text);
  Input input(data, size);
  if (input.Byte() % 2 == 0) {
    ReadIni(input);
  } else {
    Purge(input);
  }
  machine.RequireNothingHeld();
  return 0;
}
