// SPDX-License-Identifier: MIT
#include "device/files/file_names.h"

#include <iconv.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace gwq::terminal::device {
namespace {

constexpr std::size_t kMaxShown = 60;
constexpr std::size_t kMaxCharacterSize = 4;

bool IsControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte < 0x20 || byte == 0x7F;
}

bool HasControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(), IsControl);
}

struct Closer {
  void operator()(void* converter) const { iconv_close(converter); }
};

// No character takes more than four bytes in any of the encodings here, and none
// less than one.
std::optional<std::string> Convert(const char* to, const char* from, std::string_view text) {
  iconv_t opened = iconv_open(to, from);
  if (std::bit_cast<std::intptr_t>(opened) == -1) return std::nullopt;
  const std::unique_ptr<void, Closer> converter(opened);
  std::string in(text);
  std::string out(text.size() * kMaxCharacterSize + kMaxCharacterSize, '\0');
  char* read = in.data();
  char* write = out.data();
  std::size_t unread = in.size();
  std::size_t room = out.size();
  if (iconv(converter.get(), &read, &unread, &write, &room) == static_cast<std::size_t>(-1))
    return std::nullopt;
  out.resize(out.size() - room);
  return out;
}

bool IsUtf8(std::string_view text) {
  return Convert("UCS-4LE", "UTF-8", text).has_value();
}

// A name of one step, not a way to somewhere else.
bool IsPlainName(const std::string& name) {
  return name.find('/') == std::string::npos && name != "." && name != "..";
}

std::size_t CutAtCharacter(std::string_view text, std::size_t most) {
  std::size_t end = std::min(text.size(), most);
  while (end > 0 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return end;
}

}  // namespace

std::optional<std::string> TextFromGbk(std::string_view bytes) {
  return Convert("UTF-8", "GB18030", bytes);
}

std::optional<std::string> TextFromHost(std::string_view bytes) {
  return IsUtf8(bytes) ? std::string(bytes) : TextFromGbk(bytes);
}

std::optional<std::string> NameFromHost(std::string_view bytes) {
  if (bytes.empty() || HasControl(bytes)) return std::nullopt;
  return TextFromHost(bytes);
}

std::optional<std::string> NameForHost(const std::string& name) {
  return Convert("GB18030", "UTF-8", name);
}

std::string MediaDirectory(int type) {
  switch (type) {
    case kIdlePictureType:
      return "/mnt/internal_sd/media/picture";
    case 1:
      return "/mnt/internal_sd/media/video";
    case 2:
      return "/mnt/sdcard/media/headphoto";
    case 3:
      return "/mnt/sdcard/media/file";
    case kFirmwareType:
      return "/mnt/sdcard/media/data";
    default:
      return std::string("/mnt/sdcard/media/type") + std::to_string(type);
  }
}

std::optional<std::string> MediaPath(int type, std::string_view host_name) {
  const auto name = NameFromHost(host_name);
  if (!name || !IsPlainName(*name)) return std::nullopt;
  return MediaDirectory(type) + "/" + *name;
}

std::optional<std::string> PlaceFor(int type, std::string_view host_name) {
  if (type == kExplicitPathType) return NameFromHost(host_name);
  if (type == kFirmwareType) return std::string(kFirmwarePath);
  return MediaPath(type, host_name);
}

std::string ShownName(std::string_view name) {
  const std::string text = NameFromHost(name).value_or(std::string(name));
  std::string shown = text.substr(0, CutAtCharacter(text, kMaxShown));
  if (!IsUtf8(shown)) return std::string("(").append(ShownSize(name.size())).append(" that are no text)");
  std::replace_if(shown.begin(), shown.end(), IsControl, '.');
  return shown.size() < text.size() ? shown + "..." : shown;
}

std::string ShownSize(std::uint64_t bytes) {
  const std::string digits = std::to_string(bytes);
  std::string shown;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    if (i > 0 && (digits.size() - i) % 3 == 0) shown += ',';
    shown += digits[i];
  }
  return shown.append(bytes == 1 ? " byte" : " bytes");
}

}  // namespace gwq::terminal::device
