// SPDX-License-Identifier: MIT
#include "recording/recorder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <string>
#include <vector>

#include "recording/recording.h"
#include "support/full_device.h"
#include "support/temp_dir.h"
#include "unit/terminal/recording/samples.h"

namespace gwq::terminal::test {

using namespace recording;
namespace {

using namespace std::string_literals;
using gwq::test::ReadFile;
using gwq::test::TempDir;

constexpr std::uint8_t kOut = 0x02;
constexpr std::uint8_t kIn = 0x81;

// Records as the USB transport does.
class Host {
 public:
  explicit Host(Recorder& recorder) : recorder_(recorder) {}

  void Send(const std::string& text, std::size_t moved, int status = 0) {
    const Bytes bytes = ToBytes(text);
    recorder_.Begin({this, 1}, {TransferType::kInterrupt, kOut, bytes});
    recorder_.End({this, 1}, {status, moved, {}});
  }
  void Send(const std::string& text) { Send(text, text.size()); }
  void Read(const std::string& text, int status = 0) {
    const Bytes room(kReport);
    const Bytes bytes = ToBytes(text);
    recorder_.Begin({this, 2}, {TransferType::kInterrupt, kIn, room});
    recorder_.End({this, 2}, {status, bytes.size(), bytes});
  }

 private:
  Recorder& recorder_;
};

std::vector<std::string> Told(const Recording& recording) {
  std::vector<std::string> told;
  for (const WireTransfer& transfer : recording.transfers)
    told.push_back((transfer.ToHost() ? "<" : ">") + ToText(transfer.data));
  return told;
}

class RecorderForms : public testing::TestWithParam<const char*> {
 protected:
  [[nodiscard]] std::string Path() const { return dir_ / GetParam(); }
  [[nodiscard]] Recording Load() const { return LoadRecording(Path()); }

 private:
  TempDir dir_;
};

TEST_P(RecorderForms, AreReadBack) {
  Recorder recorder(Path(), false);
  recorder.Plugged({0x12, 1, 0, 2, 0, 0, 0, 0x40, 0x34, 0x12, 0x78, 0x56, 0, 1, 1, 2, 0, 1}, {9, 2});
  Host host(recorder);
  host.Send(Padded("\033[0GETVERSION"));
  host.Read(Padded("\x02V1|2\x03"));
  host.Read("", -ENOENT);
  host.Send(Padded("\x82"));
  host.Read(Padded("123456\r"));
  recorder.Serial(false, ToBytes("\033S0307\r\n"));
  recorder.Serial(true, ToBytes("\xAA"));
  const Recording recording = Load();
  EXPECT_EQ(recording.identity, (Recording::Identity{0x1234, 0x5678}));
  EXPECT_TRUE(recording.Has(Wire::kUsb));
  EXPECT_TRUE(recording.Has(Wire::kSerial));
  std::vector<std::string> told = Told(recording);
  // pcapng has the lines of a serial port apart
  std::sort(told.begin(), told.end());
  std::vector<std::string> expected = {">"s + Padded("\033[0GETVERSION"),
                                       "<"s + Padded("\x02V1|2\x03"),
                                       "<",
                                       ">"s + Padded("\x82"),
                                       "<"s + Padded("******\r"),
                                       ">\033S****\r\n",
                                       "<\xAA"};
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(told, expected);
}

TEST_P(RecorderForms, TellSecretsWhenAsked) {
  Recorder recorder(Path(), true);
  Host(recorder).Read(Padded("123456\r"));
  const Recording recording = Load();
  EXPECT_EQ(Told(recording), (std::vector<std::string>{"<" + Padded("123456\r")}));
  EXPECT_TRUE(recording.transfers.at(0).masks.empty());
}

// What comes behind the part that a hung transfer moved is the rest of the key.
TEST_P(RecorderForms, MaskTheRestOfAHungTransfer) {
  Recorder recorder(Path(), false);
  Host host(recorder);
  const std::string command = "\033S0307" + Split("a working key") + "\r\n";
  host.Send(Padded(command), 12, -ENOENT);
  host.Send(Padded(command).substr(12));
  const std::string content = ReadFile(Path());
  EXPECT_EQ(content.find(Split("working")), std::string::npos);
  EXPECT_EQ(Told(Load()), (std::vector<std::string>{
                              ">\033S**********", ">" + std::string(20, '*') + Padded(command).substr(32)}));
}

TEST_P(RecorderForms, HaveReportsSentAsControlTransfers) {
  Recorder recorder(Path(), false);
  const Bytes setup = {0x21, 9, 0, 2, 0, 0, 8, 0};
  Bytes buffer = setup;
  const Bytes command = ToBytes("\033S0307\r\n");
  buffer.insert(buffer.end(), command.begin(), command.end());
  recorder.Begin({&recorder, 1}, {TransferType::kControl, 0, buffer});
  recorder.End({&recorder, 1}, {0, command.size(), {}});
  // the unit is told by its descriptor, as it has no transfers of 1024 bytes
  const Recording recording = ParseRecording(ToBytes(ReadFile(Path())), BusAddress{1, 5});
  EXPECT_EQ(Told(recording), (std::vector<std::string>{">\033S****\r\n"}));
}

TEST_P(RecorderForms, AreForTheirOwnerAlone) {
  gwq::test::WriteFile(Path(), "old");
  chmod(Path().c_str(), 0666);
  const Recorder recorder(Path(), false);
  struct stat status {};
  ASSERT_EQ(stat(Path().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

INSTANTIATE_TEST_SUITE_P(Both, RecorderForms, testing::Values("session.txt", "session.pcapng"),
                         [](const auto& form) { return std::string(form.param).substr(8); });

TEST(Recorder, TellsOfAFullDiskOnce) {
  if (!gwq::test::HasFullDevice()) GTEST_SKIP() << "there is no /dev/full";
  testing::internal::CaptureStderr();
  Recorder recorder("/dev/full", false);
  for (int i = 0; i < 3; ++i) Host(recorder).Send("x");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "gwq-terminal: the recording /dev/full ends here: No space left on device\n");
}

TEST(Recorder, NeedsAFileThatCanBeMade) {
  EXPECT_THROW(Recorder("/no/such/place", false), std::system_error);
}

}  // namespace
}  // namespace gwq::terminal::test
