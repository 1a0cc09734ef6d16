// SPDX-License-Identifier: MIT
#include "session.h"

#include <array>
#include <cstring>

#include <gwq/diag/log.h>
#include <gwq/extra.h>
#include <gwq/files/push.h>
#include <gwq/frame/port.h>
#include <gwq/links/aux_port.h>
#include <gwq/links/serial.h>
#include <gwq/links/usb_hid.h>
#include <gwq/links/usb_interrupt.h>
#include "answers.h"

namespace gwq::fuzz {
namespace {

// Sleeps between the steps of a call, and what clocks that show whole seconds add to it.
constexpr std::int64_t kSleepsMs = 1000;
constexpr std::int64_t kPerReadMs = 1220;
constexpr std::int64_t kPerReportMs = 31;

void PutFile(Input input) {
  static constexpr std::array kFiles{"docs/a.pdf",     "docs/b.jpg", "docs/c.htm",     "docs/update.dat",
                                     "docs/empty.dat", "tmp/hw.txt", "lib/GWQ_LOG.ini"};
  const char* name = kFiles[input.Byte() % kFiles.size()];
  const unsigned repeats = input.Byte();
  const auto piece = input.Rest();
  std::string content;
  for (unsigned i = 0; i <= repeats; ++i) content.append(piece.begin(), piece.end());
  Machine::PutFile(name, content);
}

void PlanFaults(Input input) {
  while (!input.Empty()) {
    const auto fault = static_cast<Fault>(input.Byte() % static_cast<unsigned>(Fault::kCount));
    const unsigned after = input.Byte();
    Machine::Current()->Plan(fault, after, input.Byte());
  }
}

void Apply(const Record& record) {
  Input input(record.content);
  switch (record.type) {
    case RecordType::kFile:
      return PutFile(input);
    case RecordType::kAnswer: {
      const bool when_asked = input.Byte() != 0;
      return Machine::Current()->Answer(ComposeAnswer(input), when_asked);
    }
    case RecordType::kFault:
      return PlanFaults(input);
    case RecordType::kCall: {
      const Call& call = Calls()[input.Byte() % Calls().size()];
      Arguments arguments(input);
      return RunCall(call, arguments);
    }
    default:
      return;
  }
}

}  // namespace

void RunCall(const Call& call, Arguments& arguments) {
  const Machine& machine = *Machine::Current();
  const Held before = machine.Holds();
  const std::int64_t start = machine.SpentMs() - machine.SlackMs();
  const std::int64_t reads = machine.Reads();
  const std::int64_t reports = machine.Reports();
  BeHost(arguments);
  call.run(arguments);
  const std::int64_t took = machine.SpentMs() - machine.SlackMs() - start;
  const std::int64_t allowed =
      (call.own_s + arguments.WaitS()) * 1000 + kSleepsMs +
      (machine.Reads() - reads) * (std::int64_t{call.per_read_s} * 1000 + kPerReadMs) +
      (machine.Reports() - reports) * kPerReportMs;
  if (took > allowed) {
    Fail(std::string(call.name) + " took " + std::to_string(took) + " ms, allowed were " +
         std::to_string(allowed));
  }
  const Held after = machine.Holds();
  if (call.holds) return;
  Require(after.handles <= before.handles && after.lists <= before.lists, call.name);
  Require(after.lines <= before.lines && after.contexts == before.contexts, call.name);
}

void EndSession() {
  ICC_CloseLinuxCom();
  ICC_CloseLinux();
  ICC_CloseLinuxHid();
  ICC_CloseLinuxSdt();
  SetComFd(-1);
  SetAuxFd(-1);
  g_AuxOp = {};
  TransMssionLinux_t nothing{};
  SetBackUpParam(&nothing);
  SetDebugFlag(0);
  GWQ_SetOutputRoom(0);
  GWQ_SetDrainMs(0);
  GWQ_SetProgress(nullptr, nullptr);
  char list = '\0';
  pushFileToZ11("", &list);  // a call that succeeds: no failure is left to tell
  Machine::Current()->RequireNothingHeld();
}

void RunSession(const std::vector<Record>& records) {
  const bool settings = !records.empty() && records.front().type == RecordType::kSettings;
  Input input(settings ? std::span<const std::uint8_t>(records.front().content)
                       : std::span<const std::uint8_t>());
  const unsigned absent = input.Byte();  // zero, and so no record at all, has everything plugged in
  Machine machine(~absent);
  SetDebugFlag(input.Byte());
  machine.LoadFrom(input.Byte());
  for (const Record& record : records) Apply(record);
  EndSession();
}

}  // namespace gwq::fuzz
