// SPDX-License-Identifier: MIT
// For builds without a web server.
#include <stdexcept>

#include "web/customer_page.h"

namespace gwq::terminal::web {

bool HasCustomerPage() {
  return false;
}

std::unique_ptr<CustomerPage> OpenCustomerPage(std::uint16_t, PageTerminal, PageTrace&, EventLoop&) {
  throw std::runtime_error("this program was built without libsoup, so it has no customer page");
}

}  // namespace gwq::terminal::web
