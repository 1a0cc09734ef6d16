// SPDX-License-Identifier: MIT
#include "app/recording_arguments.h"

#include <CLI/CLI.hpp>
#include <charconv>
#include <filesystem>
#include <optional>
#include <string_view>

namespace gwq::terminal::app {
namespace {

std::string Absolute(const std::string& path) {
  return path.empty() ? path : std::filesystem::absolute(path).string();
}

template <typename T>
std::optional<T> NumberOf(std::string_view text) {
  T value{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<recording::BusAddress> ParseAddress(std::string_view text) {
  const std::size_t point = text.find('.');
  if (point == std::string_view::npos) return std::nullopt;
  const auto bus = NumberOf<std::uint16_t>(text.substr(0, point));
  const auto device = NumberOf<std::uint8_t>(text.substr(point + 1));
  if (!bus || !device) return std::nullopt;
  return recording::BusAddress{*bus, *device};
}

std::string AddressProblem(const std::string& text) {
  return ParseAddress(text) ? "" : "'" + text + "' is not BUS.ADDR, such as 1.5";
}

}  // namespace

void AddRecordOptions(CLI::App& app, RawRecording& raw) {
  CLI::Option* record =
      app.add_option("--record", raw.record.file,
                     "Record all transfers: pcapng for Wireshark, text if FILE ends in .txt")
          ->type_name("FILE");
  app.add_flag("--record-secrets", raw.record.secrets, "Record keys, PINs and numbers too, else masked")
      ->needs(record);
}

CLI::Option* AddReplayFile(CLI::App& app, RawRecording& raw) {
  return app.add_option("FILE", raw.replay.file, "What to replay")->type_name("")->check(CLI::ExistingFile);
}

void AddReplayOptions(CLI::App& app, RawRecording& raw) {
  app.add_flag("--fast", raw.replay.fast, "Answer at once, without the waits of the recording");
  app.add_option("--device", raw.device, "Which device of a capture of the bus, when that is not clear")
      ->type_name("BUS.ADDR")
      ->check(CLI::Validator(AddressProblem, ""));
}

recording::RecordOptions InterpretRecord(const RawRecording& raw) {
  return {Absolute(raw.record.file), raw.record.secrets};
}

recording::ReplayOptions InterpretReplay(const RawRecording& raw) {
  return {Absolute(raw.replay.file), raw.replay.fast, ParseAddress(raw.device)};
}

}  // namespace gwq::terminal::app
