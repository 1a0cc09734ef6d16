// SPDX-License-Identifier: MIT
// Files to the terminal and from it. A call that transfers has an Operation
// (frame/internal/operation.h).
#pragma once

#include <cstddef>
#include <string_view>

#include <gwq/extra.h>
#include "codec/internal/text_builder.h"
#include "frame/internal/device_command.h"
#include "frame/internal/exchange.h"

namespace gwq {

// What a file is to the terminal. Other numbers from a caller are sent unchanged.
inline constexpr int kPicture = 0;
inline constexpr int kHeadPhoto = 2;
inline constexpr int kFirmwareImage = 4;
inline constexpr int kNamedFile = 255;

// What the host is told that the file is.
inline GwqTransfer TransferOf(int type) {
  if (type == kFirmwareImage) return GWQ_TRANSFER_FIRMWARE;
  return type == kNamedFile ? GWQ_TRANSFER_PUSH : GWQ_TRANSFER_MEDIA;
}

// The longest name that a push and a delete command can carry.
inline constexpr std::size_t kMaxNameSize = 1022;

// Contract: these pushes use USB at 9600 baud; the caller's baud rate is ignored.
inline constexpr Endpoint kPushEndpoint{0, 9600};

// Gives the terminal time to write a file that is pulled after an answer.
inline constexpr int kPauseBeforePullMs = 200;

// Announces a push. On USB it is padded to a full report.
inline Command<32> ModeChange() {
  return Command<32>(Channel::kDevice, "HIDCHANGE");
}

// Pushes the host's file `path` under `name`. Returns 0; GWQ_BAD_ARGUMENT if the file cannot be
// read or the name is too long; otherwise the first failure of an exchange or of its answer.
int PushFile(Endpoint endpoint, int type, const char* path, std::string_view name);

// The paths of pushed files on the terminal, separated by "|".
using TerminalPaths = SecretText<4096>;

// Pushes the files of a list separated by "|", of which the first 1023 bytes count. Returns 0;
// GWQ_BAD_ARGUMENT for NULL; GWQ_NO_FILE for a file that does not exist; otherwise as PushFile.
// `on_terminal` is complete only after 0.
int PushList(const char* paths, TerminalPaths& on_terminal);

// Pulls the terminal's file `remote` over USB. Returns 0; GWQ_REFUSED if the terminal does not have
// it or a packet is damaged; GWQ_READ_FAILED if the file does not arrive completely or cannot be
// written; otherwise the exchange's failure.
int PullTo(std::string_view remote, const char* path);

// Deletes a file on the terminal; "*" means all of the type. Returns GWQ_BAD_ARGUMENT for a name
// that is too long.
int DeleteOnTerminal(Endpoint endpoint, int type, std::string_view name);

}  // namespace gwq
