// SPDX-License-Identifier: MIT
// Files through libusb alone: what a push stored a pull brings back, and nothing
// of a transfer that ended early reaches the next command.
#include <string>

#include "usb_host.h"

namespace gwq::test {
namespace {

const std::string kDone = "\x02\xAA\x03";

class UsbFiles : public UsbFixture {
 protected:
  void SetUp() override {
    UsbFixture::SetUp();
    handle_ = OpenAndClaim();
    ASSERT_TRUE(handle_);
  }
  void TearDown() override {
    { const Handle closed = std::move(handle_); }
    UsbFixture::TearDown();
  }

  void Send(const std::string& bytes) const {
    for (std::size_t i = 0; i < bytes.size(); i += 1024) {
      const Transfer sent = handle_.Send(bytes.substr(i, 1024));
      ASSERT_EQ(sent.result, 0);
      ASSERT_EQ(sent.count, 1024);
    }
  }
  // A whole report, or nothing.
  [[nodiscard]] std::string Read(unsigned timeout_ms = 1000) const {
    Report report{};
    const Transfer got = handle_.Read(report, timeout_ms);
    return {report.begin(), report.begin() + got.count};
  }
  [[nodiscard]] std::string Ask(const std::string& command) const {
    Send(command);
    const std::string answer = Read();
    return answer.substr(0, answer.find('\0'));
  }
  void Push(const std::string& content, const std::string& path) const {
    ASSERT_EQ(Ask("\033[0HIDCHANGE"), kDone);
    ASSERT_EQ(Ask(std::string("\x02\x01\0\0\0\0\0", 7)), kDone);
    ASSERT_EQ(Ask(Packet(2, content)), kDone);
    ASSERT_EQ(Ask(Packet(3, "\xFF" + path)), kDone);
  }
  static std::string Packet(char type, const std::string& payload) {
    char check = 0;
    for (const char byte : payload) check = static_cast<char>(check ^ byte);
    std::string packet{'\x02', type, check};
    for (const int shift : {16, 8, 0}) packet += static_cast<char>(payload.size() >> shift & 0xFF);
    return packet + payload;
  }
  // Nothing is left for the host but the answer to its command.
  void ExpectVersionNext() const {
    Send(std::string(kGetVersion));
    EXPECT_EQ(Read().substr(0, 2), "\x02V");
    EXPECT_EQ(Read(50), "");
  }

  Handle handle_;
};

std::string Content(std::size_t size) {
  std::string content(size, '\0');
  unsigned state = 1;
  for (char& byte : content) byte = static_cast<char>((state = state * 1103515245 + 12345) >> 16);
  return content;
}

TEST_F(UsbFiles, ComeBackAsTheyWereSent) {
  const std::string content = Content(50000);
  Push(content, "/tmp/x");
  Send("\033[0PULLFILE\x02/tmp/x\x03");
  std::string packet;
  while (packet.size() < content.size() + 6) {
    const std::string report = Read();
    ASSERT_EQ(report.size(), 1024U);
    packet += report;
  }
  EXPECT_TRUE(packet.substr(0, content.size() + 6) == Packet(2, content));
  EXPECT_EQ(packet.find_first_not_of('\0', content.size() + 6), std::string::npos);
  Send("\033[0RESPONSE\x02\x30\x03");
  EXPECT_EQ(Read(), std::string("\x02\x03").append(1022, '\0'));
  Send("\033[0RESPONSE\x02\x30\x03");
  ExpectVersionNext();
}

TEST_F(UsbFiles, ThatTheHostRejectsLeaveNoReportsBehind) {
  Push(Content(50000), "/tmp/x");
  Send("\033[0PULLFILE\x02/tmp/x\x03");
  EXPECT_EQ(Read().size(), 1024U);
  Send("\033[0RESPONSE\x02\x31\x03");
  EXPECT_EQ(Read(50), "");
  ExpectVersionNext();
}

TEST_F(UsbFiles, HalfFetchedDoNotDisturbTheNextCommand) {
  Push(Content(50000), "/tmp/x");
  Send("\033[0PULLFILE\x02/tmp/x\x03");
  EXPECT_EQ(Read().size(), 1024U);
  ExpectVersionNext();
}

TEST_F(UsbFiles, DeletedWithoutReadingTheAnswerDoNotDisturbTheNextCommand) {
  Send("\033[0DELETE\x02\x30|a\x03");
  Send("\033[0DELETE\x02\x30|b\x03");
  ExpectVersionNext();
}

TEST_F(UsbFiles, AreThereFromTheStart) {
  Send("\033[0SPECQUERYFILE\x02/tmp/hw.png\x03");
  EXPECT_EQ(Read().substr(0, 13), "\x02/tmp/hw.png\x03");
}

}  // namespace
}  // namespace gwq::test
