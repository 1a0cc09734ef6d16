// SPDX-License-Identifier: MIT
#include "unit/terminal/device/files/file_rig.h"

#include <algorithm>
#include <random>
#include <utility>

namespace gwq::terminal::test {

using namespace protocol;
using namespace device;
namespace {

class MemoryReader final : public FileReader {
 public:
  MemoryReader(std::string content, bool readable) : content_(std::move(content)), readable_(readable) {}
  [[nodiscard]] std::uint64_t Size() const override { return content_.size(); }
  std::optional<std::size_t> Read(std::span<std::uint8_t> out) override {
    if (!readable_) return std::nullopt;
    const std::size_t size = std::min(out.size(), content_.size() - offset_);
    std::copy_n(content_.begin() + static_cast<std::ptrdiff_t>(offset_), size, out.begin());
    offset_ += size;
    return size;
  }

 private:
  std::string content_;
  bool readable_;
  std::size_t offset_ = 0;
};

class MemoryWriter final : public FileWriter {
 public:
  explicit MemoryWriter(MemoryFiles& files) : files_(files) { ++files_.writers; }
  ~MemoryWriter() override { --files_.writers; }
  bool Append(std::span<const std::uint8_t> bytes) override {
    content_.append(bytes.begin(), bytes.end());
    return content_.size() <= files_.room;
  }
  FileResult StoreAs(const std::string& path) override {
    if (!path.starts_with('/')) return FileResult::kBadPath;
    if (content_.size() > files_.room) return FileResult::kFailed;
    files_.files[path] = content_;
    return FileResult::kDone;
  }

 private:
  MemoryFiles& files_;
  std::string content_;
};

unsigned char Xor(std::string_view bytes) {
  unsigned char folded = 0;
  for (const char byte : bytes)
    folded = static_cast<unsigned char>(folded ^ static_cast<unsigned char>(byte));
  return folded;
}

std::size_t Byte(std::string_view text, std::size_t index) {
  return static_cast<unsigned char>(text.at(index));
}

}  // namespace

std::unique_ptr<FileReader> MemoryFiles::Open(const std::string& path) {
  if (!files.contains(path)) return nullptr;
  return std::make_unique<MemoryReader>(files.at(path), readable);
}

std::unique_ptr<FileWriter> MemoryFiles::Create() {
  return writable ? std::make_unique<MemoryWriter>(*this) : nullptr;
}

FileResult MemoryFiles::Remove(const std::string& path) {
  return files.erase(path) > 0 ? FileResult::kDone : FileResult::kNotThere;
}

std::vector<std::string> MemoryFiles::List(const std::string& directory) {
  std::vector<std::string> names;
  for (const auto& [path, content] : files) {
    const std::size_t slash = path.rfind('/');
    if (path.substr(0, slash) == directory) names.push_back(path.substr(slash + 1));
  }
  return names;
}

std::string Packet(int type, std::string_view payload) {
  std::string packet{'\x02', static_cast<char>(type), static_cast<char>(Xor(payload))};
  for (const int shift : {16, 8, 0}) packet += static_cast<char>(payload.size() >> shift & 0xFF);
  return packet.append(payload);
}

std::string EndPacket(int type, std::string_view name) {
  return Packet(3, std::string(1, static_cast<char>(type)).append(name));
}

std::string NamedCommand(std::string_view word, std::string_view argument) {
  return std::string("\033[0").append(word).append("\x02").append(argument).append("\x03");
}

std::string RandomContent(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::string content(size, '\0');
  for (char& byte : content) byte = static_cast<char>(random());
  return content;
}

FileRig::FileRig(Line line, FileFaults faults) : rig(line, {}, {&store, std::move(faults)}) {}

std::vector<std::string> FileRig::Push(int type, std::string_view name, std::string_view content) {
  constexpr std::size_t kMaxData = 200000;
  std::vector<std::string> steps{std::string(wire::kModeChange), std::string(wire::kPushStart)};
  for (std::size_t i = 0; i < content.size(); i += kMaxData)
    steps.push_back(Packet(2, content.substr(i, kMaxData)));
  if (!content.empty() && content.size() % kMaxData == 0) steps.push_back(Packet(2, ""));
  steps.push_back(EndPacket(type, name));
  std::vector<std::string> answers;
  for (const std::string& step : steps) {
    answers.push_back(Ask(step));
    if (answers.back() != wire::kDone) break;
  }
  return answers;
}

void FileRig::BeginPush() {
  ASSERT_EQ(Ask(wire::kModeChange), wire::kDone);
  ASSERT_EQ(Ask(wire::kPushStart), wire::kDone);
}

FileRig::Pulled FileRig::Pull(std::string_view path) {
  Pulled pulled;
  std::string packet = Ask(NamedCommand("PULLFILE", path));
  while (packet.size() >= 6) {
    const std::size_t length = Byte(packet, 3) << 16 | Byte(packet, 4) << 8 | Byte(packet, 5);
    const std::string payload = packet.substr(6);
    const bool good = packet[0] == 2 && length == payload.size() && length <= 256000 &&
                      Xor(payload) == Byte(packet, 2) && (packet[1] == 2 || packet[1] == 3);
    if (!good) break;
    pulled.complete = packet[1] == 3;
    if (!pulled.complete) {
      pulled.content += payload;
      pulled.packets.push_back(length);
    }
    packet = Ask(wire::kAccepted);
  }
  return pulled;
}

}  // namespace gwq::terminal::test
