// SPDX-License-Identifier: MIT
// Names of files on their way between host and terminal.
//
// The terminal names its files in GBK. Hosts, however, are not of one mind: some
// commands carry GBK, others the host's own UTF-8. So a name that is valid UTF-8
// is taken as UTF-8, and everything else as GBK. A GBK name made only of pairs
// that look like UTF-8 (a handful of characters) is misread, which is less harm
// than not finding the files of half the commands. Inside the terminal all names
// are UTF-8; to the host they go in GBK.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace gwq::terminal::device {

// Texts in general. Nothing when the bytes are none in the encoding.
[[nodiscard]] std::optional<std::string> TextFromGbk(std::string_view bytes);
[[nodiscard]] std::optional<std::string> TextFromHost(std::string_view bytes);  // UTF-8 or GBK

// Nothing when it is empty, is neither UTF-8 nor GBK, or holds a control character.
[[nodiscard]] std::optional<std::string> NameFromHost(std::string_view bytes);

// Nothing when the name is not UTF-8.
[[nodiscard]] std::optional<std::string> NameForHost(const std::string& name);

// Where the files of a media type are kept:
//
//   0  pictures of the idle screen   /mnt/internal_sd/media/picture
//   1  videos                        /mnt/internal_sd/media/video
//   2  head photos                   /mnt/sdcard/media/headphoto
//   3  the screens' own files        /mnt/sdcard/media/file
//   4  firmware                      /mnt/sdcard/media/data
//   n  anything else                 /mnt/sdcard/media/type<n>
[[nodiscard]] std::string MediaDirectory(int type);

// The path of a file of this media type; nothing when the name is not good or
// would lead out of the type's directory.
[[nodiscard]] std::optional<std::string> MediaPath(int type, std::string_view host_name);

inline constexpr int kIdlePictureType = 0;
inline constexpr int kFirmwareType = 4;
inline constexpr int kExplicitPathType = 255;
inline constexpr std::string_view kFirmwarePath = "/mnt/sdcard/media/data/update.dat";
inline constexpr std::string_view kQrCodePath = "/mnt/sdcard/media/file/QRcode.jpg";

// Where a file goes that the host sends: firmware always becomes kFirmwarePath,
// and behind type 255 stands the path itself.
[[nodiscard]] std::optional<std::string> PlaceFor(int type, std::string_view host_name);

// For the trace: one short line whatever the bytes are.
[[nodiscard]] std::string ShownName(std::string_view name);
// "12,345 bytes"
[[nodiscard]] std::string ShownSize(std::uint64_t bytes);

}  // namespace gwq::terminal::device
