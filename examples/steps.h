// How the example programs tell of their steps.
#pragma once

#include <gwq.h>

#include <cstdio>
#include <stdexcept>
#include <string>

namespace example {

inline void Check(int status, const std::string& step) {
  if (status == GWQ_OK) return;
  throw std::runtime_error(step + " failed with status " + std::to_string(status));
}

inline void Say(const std::string& asked, const std::string& came_back) {
  std::printf("  %-34s %s\n", asked.c_str(), came_back.c_str());
}

// The beginning of a long text.
inline std::string Short(const std::string& text) {
  constexpr std::size_t kShown = 32;
  if (text.size() <= kShown) return text;
  return text.substr(0, kShown) + "... (" + std::to_string(text.size()) + " characters)";
}

// Runs a session and tells of what stopped it; the program's exit status.
template <typename Session>
int Run(const char* program, Session session) {
  try {
    session();
    std::printf("Session complete.\n");
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s: %s\n", program, error.what());
    return 1;
  }
}

}  // namespace example
