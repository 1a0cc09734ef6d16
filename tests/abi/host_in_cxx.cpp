// SPDX-License-Identifier: MIT
// A host in C++ that is linked against the library: it names the functions that only C++ can call.
#include <cstdio>

#include <gwq/gwq.h>
// After what they repeat.
#include "cxx_redeclarations.h"

namespace {

using AnyFunction = void (*)();

const AnyFunction g_functions[] = {
#include "cxx_function_table.h"
};

}  // namespace

int main() {
  int count = 0;
  for (const AnyFunction function : g_functions) count += function != nullptr ? 1 : 0;
  char text[8] = "";
  std::printf("functions %d\nmin %d\n", count, min(3, -2));
  std::printf("AsciiToHexStr %d %.2s\n", AsciiToHexStr("\x4f", 1, text, 3), text);
  return 0;
}
