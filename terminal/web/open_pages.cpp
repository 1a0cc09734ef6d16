// SPDX-License-Identifier: MIT
#include "web/open_pages.h"

#include "web/messages.h"
#include "web/page_requests.h"

namespace gwq::terminal::web {
namespace {

constexpr std::size_t kMaxSessions = 8;

}  // namespace

void OpenPages::Open(SoupWebsocketConnection* socket, GSocketAddress* visitor) {
  if (sessions_.size() == kMaxSessions)
    return soup_websocket_connection_close(socket, SOUP_WEBSOCKET_CLOSE_POLICY_VIOLATION, "too many pages");
  Update();
  PageSession& session = sessions_.emplace_back(socket, visitor, door_, *this);
  session.Send(UnitMessage());
  TellAll(feed_.ShownAgain());
  for (const std::string& message : feed_.Background()) session.Send(message);
}

void OpenPages::Update() {
  DropStalled();
  TellAll(feed_.News());
}

void OpenPages::OnMessage(std::string_view message) {
  if (const auto request = ReadPageRequest(message)) CarryOut(*request, terminal_);
}

void OpenPages::OnClosed(const PageSession& session) {
  sessions_.remove_if([&session](const PageSession& one) { return &one == &session; });
}

void OpenPages::DropStalled() {
  sessions_.remove_if([this](const PageSession& session) {
    if (!session.IsStalled()) return false;
    door_.TurnAway(session.Visitor(), "");
    return true;
  });
}

void OpenPages::TellAll(const std::vector<std::string>& messages) {
  for (const std::string& message : messages)
    for (PageSession& session : sessions_) session.Send(message);
}

}  // namespace gwq::terminal::web
