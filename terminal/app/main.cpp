// SPDX-License-Identifier: MIT
// gwq-terminal: a customer terminal that exists only in software.
#include <cstdio>
#include <exception>
#include <variant>

#include "app/arguments.h"
#include "app/check.h"
#include "app/failures.h"
#include "app/serve.h"
#include "app/server.h"
#include "app/supervisor.h"

namespace gwq::terminal::app {
namespace {

int Run(const ExecOptions& options) {
  return RunCommand(options);
}
int Run(const ServeOptions& options) {
  return RunServe(options);
}
int Run(const PtyRequest& request) {
  return RunPty(request.terminal);
}
int Run(const ServerRequest& request) {
  return RunServer(request.control_fd);
}
int Run(const CheckCommand& request) {
  return request.list ? ListScenarios() : RunCheck(request.check);
}
int Run(const ExitRequest& request) {
  return request.status;
}

}  // namespace
}  // namespace gwq::terminal::app

int main(int argc, char** argv) {
  try {
    return std::visit([](const auto& request) { return gwq::terminal::app::Run(request); },
                      gwq::terminal::app::ParseArguments(argc, argv));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "gwq-terminal: %s\n",
                 gwq::terminal::app::WithAdvice(gwq::terminal::app::ReasonOf(error)).c_str());
    return 1;
  }
}
