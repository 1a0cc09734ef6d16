// SPDX-License-Identifier: MIT
// All pages that are open: each is told what is new, and what it asks for is done.
#pragma once

#include <list>
#include <string>
#include <string_view>
#include <vector>

#include "web/page_door.h"
#include "web/page_feed.h"
#include "web/page_session.h"

namespace gwq::terminal::web {

class OpenPages final : public SessionListener {
 public:
  // All must outlive this object.
  OpenPages(PageTerminal& terminal, PageTrace& trace, PageDoor& door)
      : terminal_(terminal), feed_(terminal, trace), door_(door) {}

  // Closes the socket when there are too many already.
  void Open(SoupWebsocketConnection* socket, GSocketAddress* visitor);
  void Update();
  // Nothing more is heard of any page.
  void Forget() { sessions_.clear(); }

 private:
  void OnMessage(std::string_view message) override;
  void OnClosed(const PageSession& session) override;
  void DropStalled();
  void TellAll(const std::vector<std::string>& messages);

  PageTerminal& terminal_;
  PageFeed feed_;
  PageDoor& door_;
  std::list<PageSession> sessions_;
};

}  // namespace gwq::terminal::web
