// SPDX-License-Identifier: MIT
#include "device/files/file_commands.h"

#include <algorithm>
#include <array>
#include <utility>

#include "device/files/file_names.h"

namespace gwq::terminal::device {

using protocol::Match;
using protocol::Row;
namespace {

constexpr std::size_t kMaxVersionLine = 64;

std::string TypeAndName(int type, std::string_view name) {
  return " type " + std::to_string(type) + " " + ShownName(name);
}

std::string Joined(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) {
    const auto shown = NameForHost(name);
    if (!shown) continue;
    if (!list.empty()) list += '|';
    list += *shown;
  }
  return list;
}

// The first line, if it is "version|build date" in printable characters.
std::optional<Settings> ReadVersionLine(FileReader& firmware) {
  std::array<std::uint8_t, kMaxVersionLine> front{};
  const std::size_t size = firmware.Read(front).value_or(0);
  const std::string_view text(reinterpret_cast<const char*>(front.data()), size);
  const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
  const std::size_t bar = line.find('|');
  const bool printable = std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; });
  const bool fits = bar != std::string_view::npos && bar > 0 && bar + 1 < line.size() && printable &&
                    line.size() < text.size();
  if (!fits) return std::nullopt;
  return Settings{std::string(line.substr(0, bar)), std::string(line.substr(bar + 1))};
}

}  // namespace

FileCommands::FileCommands(HostChannel& host, protocol::CommandReader& reader, FileSystem& files,
                           FileFaults faults, Settings& settings)
    : host_(host),
      files_(files),
      settings_(settings),
      faults_(std::move(faults)),
      push_(host, reader, files, faults_),
      pull_(host, faults_.Script().pull),
      text_download_(files) {}

void FileCommands::AddTo(TextCommands& table) {
  table.Add(Row("push: mode change"), [this](const Match&) { push_.ChangeMode(); });
  table.Add(Row("PULLFILE"), [this](const Match& match) { PullFile(match.text); });
  table.Add(Row("RESPONSE"), [this](const Match& match) { TakeResponse(match.text); });
  table.Add(Row("GETFILELIST"), [this](const Match& match) { ListFiles(match.numbers[0]); });
  table.Add(Row("DELETE"), [this](const Match& match) { Delete(match.numbers[0], match.text); });
  table.Add(Row("DOWNLOAD"), [this](const Match& match) { TakePiece(match.numbers[0], match.text); });
  table.Add(Row("SPECQUERYFILE"), [this](const Match& match) { Query(match.text); });
  table.Add(Row("QRCODEDELETE"), [this](const Match&) { DeleteQrCode(); });
  table.Add(Row("UPDATE"), [this](const Match& match) { Update(match.text); });
}

void FileCommands::StopPull() {
  pull_.Stop("the host goes on to something else");
}

void FileCommands::Do(const std::string& step, const std::string& detail, const std::function<void()>& run) {
  host_.Describe(detail);
  const Verdict verdict = faults_.Next(step);
  if (verdict != Verdict::kNone) return AnswerVerdict(host_, verdict);
  run();
}

void FileCommands::DoQuietly(const std::string& step, const std::string& detail,
                             const std::function<void()>& run) {
  host_.Describe(detail);
  if (faults_.Next(step) != Verdict::kNone) return host_.Note("nothing is done, as scripted");
  run();
}

void FileCommands::PullFile(std::string_view name) {
  Do("PULLFILE", " " + ShownName(name), [&] {
    const auto path = NameFromHost(name);
    auto file = path ? files_.Open(*path) : nullptr;
    if (!file) return AnswerRefusal(host_);
    pull_.Start(std::move(file), ShownName(name));
  });
}

void FileCommands::TakeResponse(std::string_view text) {
  const bool accepted = text == "0";
  host_.Describe(accepted ? ", accepted" : ", rejected");
  pull_.TakeResponse(accepted);
}

void FileCommands::ListFiles(int type) {
  Do("GETFILELIST", " type " + std::to_string(type), [&] {
    const auto names = files_.List(MediaDirectory(type));
    AnswerText(host_, Joined(names), std::to_string(names.size()) + (names.size() == 1 ? " name" : " names"));
  });
}

void FileCommands::Delete(int type, std::string_view name) {
  Do("DELETE", TypeAndName(type, name), [&] {
    if (Remove(type, name)) return AnswerDone(host_);
    AnswerRefusal(host_);
  });
  host_.LetAnswersLapse();
}

bool FileCommands::Remove(int type, std::string_view name) {
  if (name == "*") {
    RemoveAll(type);
    return true;
  }
  const auto path = MediaPath(type, name);
  return path && files_.Remove(*path) == FileResult::kDone;
}

void FileCommands::RemoveAll(int type) {
  const std::string directory = MediaDirectory(type);
  for (const std::string& name : files_.List(directory))
    files_.Remove(std::string(directory).append("/").append(name));
}

// In the split form there is no "|".
void FileCommands::TakePiece(int type, std::string_view name_and_record) {
  const std::size_t bar = std::min(name_and_record.rfind('|'), name_and_record.size());
  const std::string_view name = name_and_record.substr(0, bar);
  Do("DOWNLOAD", TypeAndName(type, name), [&] {
    const std::string_view record = name_and_record.substr(std::min(bar + 1, name_and_record.size()));
    const auto [result, text] = text_download_.Take(type, name, record);
    host_.Note(text);
    if (result == FileResult::kDone) return AnswerDone(host_);
    if (result == FileResult::kFailed) return AnswerFailure(host_);
    AnswerRefusal(host_);
  });
}

// The path comes back as it came, so that the host knows it again.
void FileCommands::Query(std::string_view name) {
  Do("SPECQUERYFILE", " " + ShownName(name), [&] {
    const auto path = NameFromHost(name);
    if (!path || !files_.Open(*path)) return AnswerRefusal(host_);
    AnswerText(host_, name, "it is there");
  });
}

void FileCommands::DeleteQrCode() {
  DoQuietly("QRCODEDELETE", "", [&] {
    const FileResult result = files_.Remove(std::string(kQrCodePath));
    host_.Note(result == FileResult::kDone ? "the QR code is gone" : "there is no QR code");
  });
}

// A firmware image whose first line is "version|build date" changes what the
// terminal tells of itself; any other one is taken without a visible effect.
void FileCommands::Update(std::string_view name) {
  DoQuietly("UPDATE", " " + ShownName(name), [&] {
    const auto path = NameFromHost(name);
    const auto firmware = path ? files_.Open(*path) : nullptr;
    if (!firmware) return host_.Note("there is no such firmware");
    Install(*firmware);
  });
}

void FileCommands::Install(FileReader& firmware) {
  const std::string size = ShownSize(firmware.Size());
  const auto version = ReadVersionLine(firmware);
  if (!version) return host_.Note(std::string("firmware of ") + size + " installed, the version stays");
  settings_.version = version->version;
  settings_.build_date = version->build_date;
  host_.Note(std::string("firmware of ") + size + " installed, now " + settings_.version + "|" +
             settings_.build_date);
}

}  // namespace gwq::terminal::device
