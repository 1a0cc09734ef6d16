// SPDX-License-Identifier: MIT
// The customer's page, served by libsoup.
#include <libsoup/soup.h>

#include <array>
#include <utility>

#include "base/event_loop.h"
#include "base/gobject_ptr.h"
#include "web/access.h"
#include "web/customer_page.h"
#include "web/open_pages.h"
#include "web/page_door.h"
#include "web/page_files.h"
#include "web/stored_files.h"

namespace gwq::terminal::web {
namespace {

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
  void LetIn(GSocketConnection* connection, GSocketAddress* visitor);
  static void Check(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self);
  static void Serve(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*, gpointer self);
  static void Open(SoupServer*, SoupServerMessage* message, const char*, SoupWebsocketConnection* socket,
                   gpointer self);

  [[nodiscard]] std::optional<std::string> PathOf(SoupServerMessage* message, const char* path) const;
  void Refuse(SoupServerMessage* message, guint status);
  void ServeScreen(SoupServerMessage* message) const;
  void ServeFile(SoupServerMessage* message, const std::string& path, bool as_page) const;

  PageTerminal terminal_;
  DefaultContext context_;
  GObjectPtr<SoupServer> server_;
  PageDoor door_;
  std::string token_ = Access::NewToken();
  Access access_;
  std::string address_;
  OpenPages pages_;
};

PageServer::PageServer(std::uint16_t port, PageTerminal terminal, PageTrace& trace, EventLoop& loop)
    : terminal_(std::move(terminal)),
      context_(loop),
      server_(soup_server_new(nullptr, nullptr)),
      door_(port, DoorLimits{}, [this](auto* connection, auto* visitor) { LetIn(connection, visitor); }),
      access_(token_, door_.Port()),
      address_("http://127.0.0.1:" + std::to_string(door_.Port()) + "/" + token_ + "/"),
      pages_(terminal_, trace, door_) {
  soup_server_add_early_handler(server_.get(), nullptr, Check, this, nullptr);
  soup_server_add_handler(server_.get(), nullptr, Serve, this, nullptr);
  // Compressed messages would be larger than any limit.
  soup_server_remove_websocket_extension(server_.get(), SOUP_TYPE_WEBSOCKET_EXTENSION_DEFLATE);
  soup_server_add_websocket_handler(server_.get(), nullptr, nullptr, nullptr, Open, this, nullptr);
  loop.BeforeEachWait([this] { pages_.Update(); });
}

// Nobody is told of anything any more once this begins.
PageServer::~PageServer() {
  pages_.Forget();
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
  terminal_.use([&text](device::Device& device, Time) { text = device.CurrentScreen().text; });
  SetHeaders(message, kShownPolicy);
  Reply(message, "text/html; charset=utf-8", text);
}

// A file of the terminal. Nothing in it may run.
void PageServer::ServeFile(SoupServerMessage* message, const std::string& path, bool as_page) const {
  std::optional<std::string> content;
  terminal_.use([&](device::Device& device, Time) { content = ReadWhole(device.Files(), path); });
  if (!content) return soup_server_message_set_status(message, SOUP_STATUS_NOT_FOUND, nullptr);
  SetHeaders(message, kShownPolicy);
  Reply(message, as_page ? "text/html" : TypeOfStored(path), *content);
}

void PageServer::Open(SoupServer*, SoupServerMessage* message, const char*, SoupWebsocketConnection* socket,
                      gpointer self) {
  static_cast<PageServer*>(self)->pages_.Open(socket, soup_server_message_get_remote_address(message));
}

}  // namespace

bool HasCustomerPage() {
  return true;
}

std::unique_ptr<CustomerPage> OpenCustomerPage(std::uint16_t port, PageTerminal terminal, PageTrace& trace,
                                               EventLoop& loop) {
  return std::make_unique<PageServer>(port, std::move(terminal), trace, loop);
}

}  // namespace gwq::terminal::web
