// SPDX-License-Identifier: MIT
// The customer's page, served by libsoup.
#include <libsoup/soup.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <deque>
#include <utility>

#include "base/event_loop.h"
#include "base/gobject_ptr.h"
#include "device/files/file_names.h"
#include "web/access.h"
#include "web/customer_page.h"
#include "web/messages.h"
#include "web/page_door.h"
#include "web/page_files.h"

namespace gwq::terminal {
namespace {

constexpr std::size_t kMaxSockets = 8;
constexpr std::size_t kMaxLines = 300;
constexpr guint64 kLongestMessage = 1 << 18;
constexpr std::int64_t kMaxBacklog = 16 << 20;  // several times the longest message to a page
constexpr const char* kSocketPath = "socket";

// Nothing comes from elsewhere, nothing goes elsewhere, and nobody may frame the page.
constexpr const char* kPagePolicy =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' blob: data:; font-src data:; "
    "connect-src 'self'; frame-src 'self'; worker-src 'self'; base-uri 'none'; form-action 'none'; "
    "frame-ancestors 'none'";
// What hosts send to be shown: no scripts, no network, no part of the page around it.
constexpr const char* kShownPolicy =
    "sandbox; default-src 'none'; style-src 'unsafe-inline'; img-src data:; font-src data:; form-action "
    "'none'; "
    "frame-ancestors 'self'";

std::optional<std::string_view> Header(SoupServerMessage* message, const char* name) {
  const char* value = soup_message_headers_get_one(soup_server_message_get_request_headers(message), name);
  if (value == nullptr) return std::nullopt;
  return value;
}

bool OpensSocket(SoupServerMessage* message) {
  return soup_message_headers_header_contains(soup_server_message_get_request_headers(message), "Upgrade",
                                              "websocket");
}

void SetHeaders(SoupServerMessage* message, const char* policy) {
  SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
  for (const auto& [name, value] :
       std::array<std::pair<const char*, const char*>, 6>{{{"Content-Security-Policy", policy},
                                                           {"X-Content-Type-Options", "nosniff"},
                                                           {"Referrer-Policy", "no-referrer"},
                                                           {"Cache-Control", "no-store"},
                                                           {"Cross-Origin-Resource-Policy", "same-origin"},
                                                           {"Cross-Origin-Opener-Policy", "same-origin"}}}) {
    soup_message_headers_replace(headers, name, value);
  }
}

bool HasBody(SoupServerMessage* message) {
  SoupMessageHeaders* headers = soup_server_message_get_request_headers(message);
  const SoupEncoding encoding = soup_message_headers_get_encoding(headers);
  if (encoding == SOUP_ENCODING_CONTENT_LENGTH) return soup_message_headers_get_content_length(headers) > 0;
  return encoding != SOUP_ENCODING_NONE;
}

// What the other side of a TCP connection has received, as far as this side knows.
std::int64_t ReceivedOverThere(int fd) {
  tcp_info info{};
  socklen_t size = sizeof info;
  if (getsockopt(fd, IPPROTO_TCP, TCP_INFO, &info, &size) != 0) return 0;
  return static_cast<std::int64_t>(info.tcpi_bytes_acked);
}

void Reply(SoupServerMessage* message, const char* type, std::string_view body) {
  soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
  soup_server_message_set_response(message, type, SOUP_MEMORY_COPY, body.data(), body.size());
}

// Makes the loop's context the thread's default for its lifetime.
class DefaultContext {
 public:
  explicit DefaultContext(const EventLoop& loop) : context_(loop.Context()) {
    g_main_context_push_thread_default(context_);
  }
  DefaultContext(const DefaultContext&) = delete;
  DefaultContext& operator=(const DefaultContext&) = delete;
  ~DefaultContext() { g_main_context_pop_thread_default(context_); }

 private:
  GMainContext* context_;
};

class PageServer final : public CustomerPage {
 public:
  PageServer(std::uint16_t port, PageTerminal terminal, PageTrace& trace, EventLoop& loop);
  ~PageServer() override;

  [[nodiscard]] const std::string& Address() const override { return address_; }

 private:
  // The terminal as the sockets were last told, one message each.
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

  // An open page. What was sent and has not arrived is what it makes this process keep.
  struct Page {
    GObjectPtr<SoupWebsocketConnection> socket;
    GSocketAddress* visitor;
    std::int64_t received_before;
    std::int64_t sent = 0;
  };

  void LetIn(GSocketConnection* connection, GSocketAddress* visitor);
  static void Check(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self);
  static void Serve(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self);
  static void Open(SoupServer*, SoupServerMessage* message, const char*, SoupWebsocketConnection* socket,
                   gpointer self);
  static void Hear(SoupWebsocketConnection*, gint type, GBytes* message, gpointer self);
  static void Closed(SoupWebsocketConnection* socket, gpointer self);

  [[nodiscard]] std::optional<std::string> PathOf(SoupServerMessage* message, const char* path) const;
  void Refuse(SoupServerMessage* message, guint status);
  void ServeScreen(SoupServerMessage* message) const;
  void ServeFile(SoupServerMessage* message, const std::string& path, bool as_page) const;

  void Obey(const PageRequest& request);
  void Do(const ActRequest& request) const;
  void Do(const PressRequest& request) const;
  void Do(const PlugRequest& request) const;
  void Do(const FaultsRequest& request);

  void Update();
  void UpdateScreen();
  void UpdateEntry();
  void Tell(std::string& told, std::string message);
  void TellAll(const std::string& message);
  static void Send(Page& page, const std::string& message);
  void DropStalled();
  void Greet(Page& page);

  PageTerminal terminal_;
  PageTrace& trace_;
  DefaultContext context_;
  GObjectPtr<SoupServer> server_;
  PageDoor door_;
  std::string token_ = Access::NewToken();
  Access access_;
  std::string address_;
  std::vector<Page> pages_;
  std::deque<TraceEvent> lines_;
  Told told_;
};

PageServer::PageServer(std::uint16_t port, PageTerminal terminal, PageTrace& trace, EventLoop& loop)
    : terminal_(std::move(terminal)),
      trace_(trace),
      context_(loop),
      server_(soup_server_new(nullptr, nullptr)),
      door_(port, DoorLimits{}, [this](auto* connection, auto* visitor) { LetIn(connection, visitor); }),
      access_(token_, door_.Port()),
      address_("http://127.0.0.1:" + std::to_string(door_.Port()) + "/" + token_ + "/") {
  soup_server_add_early_handler(server_.get(), nullptr, Check, this, nullptr);
  soup_server_add_handler(server_.get(), nullptr, Serve, this, nullptr);
  // Compressed messages would be larger than any limit.
  soup_server_remove_websocket_extension(server_.get(), SOUP_TYPE_WEBSOCKET_EXTENSION_DEFLATE);
  soup_server_add_websocket_handler(server_.get(), nullptr, nullptr, nullptr, Open, this, nullptr);
  loop.BeforeEachWait([this] { Update(); });
}

// Nobody is told of anything any more once this begins.
PageServer::~PageServer() {
  for (const Page& page : pages_) g_signal_handlers_disconnect_by_data(page.socket.get(), this);
  soup_server_disconnect(server_.get());
}

// A connection that libsoup does not take is closed.
void PageServer::LetIn(GSocketConnection* connection, GSocketAddress* visitor) {
  const GObjectPtr<GSocketAddress> local(g_socket_connection_get_local_address(connection, nullptr));
  if (local)
    soup_server_accept_iostream(server_.get(), G_IO_STREAM(connection), local.get(), visitor, nullptr);
}

std::optional<std::string> PageServer::PathOf(SoupServerMessage* message, const char* path) const {
  return access_.PathOf({path, Header(message, "Host"), Header(message, "Origin"), OpensSocket(message)});
}

// Answers with `status` and closes the connection. libsoup answers after a request's body, which
// may be endless.
void PageServer::Refuse(SoupServerMessage* message, guint status) {
  soup_message_headers_replace(soup_server_message_get_response_headers(message), "Connection", "close");
  soup_server_message_set_status(message, status, nullptr);
  if (!HasBody(message)) return;
  const std::string answer = "HTTP/1.1 " + std::to_string(status) + " " + soup_status_get_phrase(status) +
                             "\r\nConnection: close\r\nContent-Length: 0\r\n\r\n";
  door_.TurnAway(soup_server_message_get_remote_address(message), answer);
}

// Before anything else is done about a request. What has a status here is answered with it.
void PageServer::Check(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*,
                       gpointer self) {
  auto& server = *static_cast<PageServer*>(self);
  soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
  SetHeaders(message, kPagePolicy);
  const auto asked = server.PathOf(message, path);
  const std::string_view method = soup_server_message_get_method(message);
  if (!asked || (OpensSocket(message) && *asked != kSocketPath))
    return server.Refuse(message, SOUP_STATUS_FORBIDDEN);
  server.door_.Admit(soup_server_message_get_remote_address(message));
  if (method != "GET") server.Refuse(message, SOUP_STATUS_METHOD_NOT_ALLOWED);
}

void PageServer::Serve(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*,
                       gpointer self) {
  constexpr std::string_view kFile = "file/";
  constexpr std::string_view kPage = "page/";
  auto& server = *static_cast<PageServer*>(self);
  const auto asked = server.PathOf(message, path);
  if (!asked || OpensSocket(message)) return;  // a socket is opened after this
  if (asked->starts_with("screen/")) return server.ServeScreen(message);
  if (asked->starts_with(kFile)) return server.ServeFile(message, asked->substr(kFile.size() - 1), false);
  if (asked->starts_with(kPage)) return server.ServeFile(message, asked->substr(kPage.size() - 1), true);
  const auto file = OwnFile(asked->empty() ? "index.html" : *asked);
  if (!file) return soup_server_message_set_status(message, SOUP_STATUS_NOT_FOUND, nullptr);
  Reply(message, TypeOf(asked->empty() ? "index.html" : *asked), *file);
}

// The HTML that the screen shows.
void PageServer::ServeScreen(SoupServerMessage* message) const {
  std::string text;
  terminal_.use([&text](Device& device, Time) { text = device.CurrentScreen().text; });
  SetHeaders(message, kShownPolicy);
  Reply(message, "text/html; charset=utf-8", text);
}

// A file of the terminal. Nothing in it may run.
void PageServer::ServeFile(SoupServerMessage* message, const std::string& path, bool as_page) const {
  std::optional<std::string> content;
  terminal_.use([&](Device& device, Time) { content = ReadWhole(device.Files(), path); });
  if (!content) return soup_server_message_set_status(message, SOUP_STATUS_NOT_FOUND, nullptr);
  SetHeaders(message, kShownPolicy);
  Reply(message, as_page ? "text/html" : TypeOfStored(path), *content);
}

void PageServer::Open(SoupServer*, SoupServerMessage* message, const char*, SoupWebsocketConnection* socket,
                      gpointer self) {
  auto& server = *static_cast<PageServer*>(self);
  if (server.pages_.size() == kMaxSockets)
    return soup_websocket_connection_close(socket, SOUP_WEBSOCKET_CLOSE_POLICY_VIOLATION, "too many pages");
  soup_websocket_connection_set_max_incoming_payload_size(socket, kLongestMessage);
  g_signal_connect(socket, "message", G_CALLBACK(Hear), self);
  g_signal_connect(socket, "closed", G_CALLBACK(Closed), self);
  GSocketAddress* visitor = soup_server_message_get_remote_address(message);
  server.Update();
  server.pages_.push_back(
      {GObjectPtr<SoupWebsocketConnection>(SOUP_WEBSOCKET_CONNECTION(g_object_ref(socket))), visitor,
       ReceivedOverThere(server.door_.FdOf(visitor))});
  server.Greet(server.pages_.back());
}

void PageServer::Hear(SoupWebsocketConnection*, gint type, GBytes* message, gpointer self) {
  if (type != SOUP_WEBSOCKET_DATA_TEXT) return;
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(message, &size));
  if (const auto request = ReadPageRequest({data, size})) static_cast<PageServer*>(self)->Obey(*request);
}

void PageServer::Closed(SoupWebsocketConnection* socket, gpointer self) {
  auto& pages = static_cast<PageServer*>(self)->pages_;
  std::erase_if(pages, [socket](const Page& page) { return page.socket.get() == socket; });
}

void PageServer::Obey(const PageRequest& request) {
  std::visit([this](const auto& asked) { Do(asked); }, request);
}

void PageServer::Do(const ActRequest& request) const {
  terminal_.use([&request](Device& device, Time now) {
    if (device.ScreenChanges() == request.screen) device.Act(request.action, now);
  });
}

void PageServer::Do(const PressRequest& request) const {
  terminal_.use([&request](Device& device, Time now) {
    const auto entry = device.CurrentEntry();
    if (entry && entry->number == request.entry) device.Press(request.key, now);
  });
}

void PageServer::Do(const PlugRequest& request) const {
  if (terminal_.plug) terminal_.plug(request.plugged);
}

void PageServer::Do(const FaultsRequest& request) {
  terminal_.rates = request.rates;
  terminal_.set_rates(request.rates);
}

// Tells the pages what is new. Files only change when the host says something, or the customer.
void PageServer::Update() {
  DropStalled();
  const std::vector<TraceEvent> events = trace_.Take();
  UpdateScreen();
  UpdateEntry();
  Tell(told_.link, LinkMessage(terminal_.is_plugged(), static_cast<bool>(terminal_.plug), terminal_.rates));
  if (events.empty() && !told_.files.empty()) return;
  lines_.insert(lines_.end(), events.begin(), events.end());
  while (lines_.size() > kMaxLines) lines_.pop_front();
  std::vector<std::string> paths;
  terminal_.use([&paths](Device& device, Time) { paths = StoredFiles(device.Files()); });
  Tell(told_.files, FilesMessage(paths));
  TellAll(TraceMessage(events));
}

void PageServer::UpdateScreen() {
  std::optional<ShownScreen> shown;
  terminal_.use([&](Device& device, Time now) {
    const std::uint64_t number = device.ScreenChanges();
    if (number == told_.screen_number && !told_.screen.empty()) return;
    const auto closes_at = device.ScreenClosesAt();
    shown = {number, device.CurrentScreen(), closes_at ? std::max(*closes_at - now, Time{1}) : Time{0}};
  });
  if (!shown) return;
  told_.screen_number = shown->number;
  Tell(told_.screen, ScreenMessage(*shown));
}

void PageServer::UpdateEntry() {
  std::optional<EntryState> entry;
  Time now{0};
  terminal_.use([&](Device& device, Time time) {
    entry = device.CurrentEntry();
    now = time;
  });
  const EntryState state = entry.value_or(EntryState{});
  const bool same =
      state.number == told_.entry_number && state.keyed == told_.keyed && state.shown == told_.shown;
  if (same && !told_.entry.empty()) return;
  told_.entry_number = state.number;
  told_.keyed = state.keyed;
  told_.shown = state.shown;
  Tell(told_.entry, EntryMessage(entry, now));
}

void PageServer::Tell(std::string& told, std::string message) {
  if (message == told) return;
  told = std::move(message);
  TellAll(told);
}

void PageServer::TellAll(const std::string& message) {
  for (Page& page : pages_) Send(page, message);
}

void PageServer::Send(Page& page, const std::string& message) {
  if (soup_websocket_connection_get_state(page.socket.get()) != SOUP_WEBSOCKET_STATE_OPEN) return;
  soup_websocket_connection_send_text(page.socket.get(), message.c_str());
  page.sent += static_cast<std::int64_t>(message.size());
}

// A page that does not read makes libsoup keep all that it is sent.
void PageServer::DropStalled() {
  std::erase_if(pages_, [this](const Page& page) {
    const std::int64_t received = ReceivedOverThere(door_.FdOf(page.visitor)) - page.received_before;
    if (page.sent - received <= kMaxBacklog) return false;
    g_signal_handlers_disconnect_by_data(page.socket.get(), this);
    door_.TurnAway(page.visitor, "");
    return true;
  });
}

// A page that comes later learns how much time is left by now.
void PageServer::Greet(Page& page) {
  told_.screen.clear();
  told_.entry.clear();
  UpdateScreen();
  UpdateEntry();
  const std::vector<TraceEvent> lines(lines_.begin(), lines_.end());
  for (const std::string& message : {told_.link, told_.files, TraceMessage(lines)}) Send(page, message);
}

}  // namespace

bool HasCustomerPage() {
  return true;
}

std::unique_ptr<CustomerPage> OpenCustomerPage(std::uint16_t port, PageTerminal terminal, PageTrace& trace,
                                               EventLoop& loop) {
  return std::make_unique<PageServer>(port, std::move(terminal), trace, loop);
}

}  // namespace gwq::terminal
