// SPDX-License-Identifier: MIT
// What the open pages are told of the terminal, as messages: each thing when it is new.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "web/customer_page.h"

namespace gwq::terminal::web {

class PageFeed {
 public:
  // Both must outlive this object.
  PageFeed(const PageTerminal& terminal, PageTrace& trace) : terminal_(terminal), trace_(trace) {}

  // For all pages: what is new since the last call.
  [[nodiscard]] std::vector<std::string> News();
  // For all pages when one more opens: screen and entry again, with the time that is left by now.
  [[nodiscard]] std::vector<std::string> ShownAgain();
  // For the page that opens: everything else.
  [[nodiscard]] std::vector<std::string> Background() const;

 private:
  // As the pages were last told, one message each.
  struct Told {
    std::string screen;
    std::string entry;
    std::string link;
    std::string files;
    std::uint64_t screen_number = 0;
    std::uint64_t entry_number = 0;
    std::size_t keyed = 0;
    std::string shown;
  };
  using Messages = std::vector<std::string>;

  void AddScreen(Messages& news);
  void AddEntry(Messages& news);
  void AddLink(Messages& news);
  void AddFiles(Messages& news);
  void AddTrace(Messages& news, const std::vector<device::TraceEvent>& events);

  const PageTerminal& terminal_;
  PageTrace& trace_;
  std::deque<device::TraceEvent> lines_;
  Told told_;
};

}  // namespace gwq::terminal::web
