// SPDX-License-Identifier: MIT
// Who gets in to the customer's page, and for how long.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "web/page_door.h"

namespace gwq::terminal {

using namespace web;
namespace {

using namespace std::chrono_literals;

// Keeps what it is given, as libsoup does, until the connection ends.
class Host {
 public:
  explicit Host(std::uint16_t port, DoorLimits limits)
      : door_(port, limits, [this](GSocketConnection* connection, GSocketAddress* visitor) {
          connections_.emplace_back(G_SOCKET_CONNECTION(g_object_ref(connection)));
          visitors_.push_back(visitor);
        }) {}

  PageDoor& Door() { return door_; }
  [[nodiscard]] std::size_t Count() const { return visitors_.size(); }
  [[nodiscard]] GSocketAddress* Visitor(std::size_t index) const { return visitors_.at(index); }
  void Free(std::size_t index) { connections_.at(index).reset(); }

 private:
  std::vector<GObjectPtr<GSocketConnection>> connections_;
  std::vector<GSocketAddress*> visitors_;
  PageDoor door_;
};

UniqueFd Connect(std::uint16_t port) {
  UniqueFd fd(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  EXPECT_EQ(connect(fd.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  return fd;
}

// All that comes at once; nothing, but an end, is "END".
std::string Received(const UniqueFd& fd) {
  std::array<char, 256> buffer{};
  const ssize_t count = recv(fd.Get(), buffer.data(), buffer.size(), MSG_DONTWAIT);
  if (count == 0) return "END";
  return count < 0 ? "" : std::string(buffer.data(), static_cast<std::size_t>(count));
}

// Serves until it is true, at most five seconds.
bool Soon(const std::function<bool()>& condition) {
  const auto limit = std::chrono::steady_clock::now() + 5s;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > limit) return false;
    g_main_context_iteration(nullptr, FALSE);
  }
  return true;
}

TEST(PageDoor, LetsAVisitorIn) {
  Host host(0, {});
  const UniqueFd client = Connect(host.Door().Port());
  ASSERT_TRUE(Soon([&] { return host.Count() == 1; }));
  EXPECT_GE(host.Door().FdOf(host.Visitor(0)), 0);
  EXPECT_EQ(Received(client), "");
}

TEST(PageDoor, APortThatIsTakenIsToldWithItsNumber) {
  Host first(0, {});
  try {
    Host second(first.Door().Port(), {});
    FAIL() << "the port is taken";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), std::errc::address_in_use);
    EXPECT_NE(std::string(error.what()).find(std::to_string(first.Door().Port())), std::string::npos);
  }
}

TEST(PageDoor, AStrangerStaysForALimitedTimeOnly) {
  Host host(0, {.patience = 20ms});
  const UniqueFd client = Connect(host.Door().Port());
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_TRUE(Soon([&] { return Received(client) == "END"; }));
  EXPECT_GE(std::chrono::steady_clock::now() - begin, 15ms);
}

TEST(PageDoor, WhoShowsTheTokenInTimeMayStay) {
  Host host(0, {.patience = 20ms});
  const UniqueFd admitted = Connect(host.Door().Port());
  ASSERT_TRUE(Soon([&] { return host.Count() == 1; }));
  host.Door().Admit(host.Visitor(0));
  const UniqueFd stranger = Connect(host.Door().Port());
  EXPECT_TRUE(Soon([&] { return Received(stranger) == "END"; }));
  EXPECT_EQ(Received(admitted), "");
}

TEST(PageDoor, TheOldestStrangerMakesRoomForTheNext) {
  Host host(0, {.strangers = 2});
  std::vector<UniqueFd> clients;
  for (std::size_t count = 1; count <= 4; ++count) {
    clients.push_back(Connect(host.Door().Port()));
    ASSERT_TRUE(Soon([&] { return host.Count() == count; }));
    if (count == 1) host.Door().Admit(host.Visitor(0));
  }
  EXPECT_TRUE(Soon([&] { return Received(clients[1]) == "END"; }));
  for (const std::size_t stays : {0U, 2U, 3U}) EXPECT_EQ(Received(clients[stays]), "") << stays;
}

TEST(PageDoor, ClosesWhatComesBeyondTheLimitUntilSomebodyHasLeft) {
  Host host(0, {.connections = 1});
  const UniqueFd first = Connect(host.Door().Port());
  ASSERT_TRUE(Soon([&] { return host.Count() == 1; }));
  const UniqueFd second = Connect(host.Door().Port());
  EXPECT_TRUE(Soon([&] { return Received(second) == "END"; }));
  host.Free(0);
  const UniqueFd third = Connect(host.Door().Port());
  EXPECT_TRUE(Soon([&] { return host.Count() == 2; }));
}

TEST(PageDoor, AnswersWhomItTurnsAway) {
  Host host(0, {});
  const UniqueFd client = Connect(host.Door().Port());
  ASSERT_TRUE(Soon([&] { return host.Count() == 1; }));
  host.Door().TurnAway(host.Visitor(0), "no");
  EXPECT_TRUE(Soon([&] { return Received(client) == "no"; }));
  EXPECT_TRUE(Soon([&] { return Received(client) == "END"; }));
}

TEST(PageDoor, AVisitorWhoLeftIsKnownNoLonger) {
  Host host(0, {});
  const UniqueFd client = Connect(host.Door().Port());
  ASSERT_TRUE(Soon([&] { return host.Count() == 1; }));
  GSocketAddress* visitor = host.Visitor(0);
  host.Free(0);
  EXPECT_EQ(host.Door().FdOf(visitor), -1);
  host.Door().Admit(visitor);
  host.Door().TurnAway(visitor, "no");
}

// While it lives, no descriptor beyond those in use can be opened.
class NoMoreDescriptors {
 public:
  NoMoreDescriptors() {
    getrlimit(RLIMIT_NOFILE, &before_);
    const int next = dup(STDOUT_FILENO);
    close(next);
    rlimit limit = before_;
    limit.rlim_cur = static_cast<rlim_t>(next);
    setrlimit(RLIMIT_NOFILE, &limit);
  }
  NoMoreDescriptors(const NoMoreDescriptors&) = delete;
  NoMoreDescriptors& operator=(const NoMoreDescriptors&) = delete;
  ~NoMoreDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }

 private:
  rlimit before_{};
};

TEST(PageDoor, WithoutDescriptorsItClosesWhatComesAndGoesOnAfterwards) {
  Host host(0, {});
  std::vector<UniqueFd> clients;
  for (int i = 0; i < 3; ++i) clients.push_back(Connect(host.Door().Port()));
  {
    const NoMoreDescriptors none;
    for (const UniqueFd& client : clients) EXPECT_TRUE(Soon([&] { return Received(client) == "END"; }));
    EXPECT_EQ(host.Count(), 0U);
  }
  const UniqueFd later = Connect(host.Door().Port());
  EXPECT_TRUE(Soon([&] { return host.Count() == 1; }));
}

}  // namespace
}  // namespace gwq::terminal
