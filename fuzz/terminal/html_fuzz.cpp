// SPDX-License-Identifier: MIT
// Pages of a host, as HTML and as plain text.
#include <string_view>

#include "picture/html_text.h"
#include "require.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  for (const auto& page :
       {gwq::terminal::picture::ReadHtml(text), gwq::terminal::picture::ReadPlainText(text)}) {
    gwq::fuzz::Require(page.size() <= gwq::terminal::picture::kMaxPageLines,
                       "more lines than a screen takes");
    for (const auto& line : page)
      gwq::fuzz::Require(line.heading >= 0 && line.heading <= 6 && line.depth >= 0,
                         "a line nowhere on the page");
  }
  return 0;
}
