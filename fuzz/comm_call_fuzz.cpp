// SPDX-License-Identifier: MIT
// The device description: its request, and the terminal's five answers.
#include <cjson/cJSON.h>

#include <gwq/screens/comm_call.h>
#include "answers.h"
#include "exact.h"
#include "machine.h"

namespace gwq::fuzz {
namespace {

void Describe(const std::string& request, std::size_t capacity) {
  Exact<char> out(capacity);
  int length = out.length();
  const int status = DEV_CommCall(request.c_str(), 0, out.data(), &length);
  if (status == -24) return Require(length == out.length(), "a failure touched its output");
  Require(length >= 0 && length < out.length() && out.data()[length] == '\0', "a text of another length");
  cJSON* answer = cJSON_Parse(out.data());
  Require(cJSON_IsString(cJSON_GetObjectItem(answer, "ErrorMessage")) != 0, "no object of texts");
  cJSON_Delete(answer);
}

}  // namespace
}  // namespace gwq::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace gwq::fuzz;
  Input input(data, size);
  Machine machine(1);
  const std::size_t capacity = input.Byte() % 4 == 0 ? input.Short() % 1024 : 65536;
  for (int i = 0; i < 5; ++i) machine.Answer(ComposeAnswer(Input(input.Take(input.Byte()))), true);
  const auto request = input.Rest();
  Describe({request.begin(), request.end()}, capacity);
  machine.RequireNothingHeld();
  return 0;
}
