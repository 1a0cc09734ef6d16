/* SPDX-License-Identifier: MIT */
// How the example programs tell of their steps.
#pragma once

#include <gwq/gwq.h>

#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

namespace example {

// "MP_SignPDF: The customer did not sign in time... (GWQ_NO_ANSWER)"
inline std::string Reason(const char* call, int status) {
  return std::string(call) + ": " + GwqStatusCauseOf(call, status, GWQ_ENGLISH) + " (" +
         GwqStatusName(status) + ")";
}

inline void Check(const char* call, int status, const std::string& step) {
  if (status != GWQ_OK) throw std::runtime_error(step + " failed. " + Reason(call, status));
}

// Before the customer is asked: whether the file can be written into which something of theirs goes.
inline void CheckWritable(const std::filesystem::path& file) {
  if (!std::ofstream(file, std::ios::app)) throw std::runtime_error("cannot write " + file.string());
}

// An argument of the command line that must be a number.
inline int Number(const std::string& name, const std::string& text) {
  int number = 0;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stopped != end) throw std::runtime_error(name + " is no number: " + text);
  return number;
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
