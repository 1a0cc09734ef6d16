// Files to the terminal and from it. A call that transfers holds an Operation (frame/internal/operation.h).
#pragma once

#include <cstddef>
#include <string_view>

#include "codec/internal/text_builder.h"
#include "frame/internal/device_command.h"
#include "frame/internal/exchange.h"

namespace gwq {

// What a file is to the terminal. Callers of the interface may have other numbers, which are sent as they are.
inline constexpr int kPicture = 0;
inline constexpr int kHeadPhoto = 2;
inline constexpr int kFirmwareImage = 4;
inline constexpr int kNamedFile = 255;

// The longest name that a push and a command to delete can carry.
inline constexpr std::size_t kMaxNameSize = 1022;

// Where the library itself pushes to: USB, at the baud rate that the descriptor gets.
inline constexpr Endpoint kPushEndpoint{0, 9600};

// Announces a push; on USB filled up to a report.
inline Command<32> ModeChange() {
  return Command<32>(Channel::kDevice, "HIDCHANGE");
}

// Pushes the host's file `path` under `name`. Returns 0; GWQ_BAD_ARGUMENT if the file cannot be read or the name is too
// long, and else the first failure of an exchange or of its answer.
int PushFile(Endpoint endpoint, int type, const char* path, std::string_view name);

// The places of pushed files on the terminal, separated by "|".
using TerminalPlaces = SecretText<4096>;

// Pushes the files of a list separated by "|", of which the first 1023 bytes count. Returns 0; GWQ_BAD_ARGUMENT for NULL,
// GWQ_NO_FILE for a file that does not exist, and else as PushFile. `places` is complete only after 0.
int PushList(const char* paths, TerminalPlaces& places);

// Pulls the terminal's file `remote` over USB. Returns 0; GWQ_REFUSED if the terminal does not have it or it arrives
// damaged, GWQ_READ_FAILED if it does not arrive whole or cannot be written, and else the exchange's failure.
int PullTo(std::string_view remote, const char* path, int timeout_ms);

// Deletes a file on the terminal; "*" means all of the type. Returns GWQ_BAD_ARGUMENT for a name that is too long.
int DeleteOnTerminal(Endpoint endpoint, int type, std::string_view name);

}  // namespace gwq
