// SPDX-License-Identifier: MIT
// The terminal as a USB/IP client meets it: bytes in, bytes out.
#include "support/usbip_messages.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>

#include <memory>
#include <random>

#include "customer/agreeable.h"
#include "unit/terminal/device/rig.h"
#include "usbip/usbip_server.h"
#include "usbip/usbip_session.h"

namespace gwq::terminal::test {

using namespace device;
using namespace customer;
using namespace usb;
namespace {

using namespace gwq::test::usbip;

constexpr UsbId kId{0x1209, 0x0001};
const std::string kVersionReport = Padded("\x02V1.0.0|20240615\x03", kReport);

class UsbIp : public testing::Test {
 protected:
  // What the session says to `bytes`.
  static std::string Tell(usbip::UsbIpSession& session, const std::string& bytes) {
    session.Receive(ToBytes(bytes));
    return ToText(session.TakeReplies());
  }
  std::string Tell(const std::string& bytes) { return Tell(*session_, bytes); }
  void Import() { ASSERT_EQ(Tell(ImportRequest()), ImportReply()); }
  void Reconnect() {
    session_.reset();
    session_ = std::make_unique<usbip::UsbIpSession>(plug_);
  }

  Clock clock_;
  AgreeableCustomer customer_;
  Device unit_{Line::kUsb, customer_};
  UsbTerminal terminal_{kId, {unit_}, clock_, [] {}};
  usbip::UsbIpPlug plug_{kId, terminal_};
  std::unique_ptr<usbip::UsbIpSession> session_ = std::make_unique<usbip::UsbIpSession>(plug_);
};

TEST_F(UsbIp, ListsTheTerminalAndItsInterfaceAndIsDone) {
  EXPECT_EQ(Tell(ListRequest()), ListReply());
  EXPECT_TRUE(session_->IsOver());
  EXPECT_EQ(session_->Complaint(), "");
}

TEST_F(UsbIp, ListsNothingWhileUnplugged) {
  plug_.PullOut();
  EXPECT_EQ(Tell(ListRequest()), Operation(5) + Big(0, 4));
  plug_.PlugIn();
  Reconnect();
  EXPECT_EQ(Tell(ListRequest()), ListReply());
}

TEST_F(UsbIp, IsImportedByItsName) {
  Import();
  EXPECT_TRUE(session_->IsImported());
  EXPECT_FALSE(session_->IsOver());
}

TEST_F(UsbIp, RefusesAnImportByAnotherName) {
  for (const std::string name : {"", "1-2", "1-1.1"}) {
    Reconnect();
    EXPECT_EQ(Tell(ImportRequest(name)), ImportRefusal(4)) << name;
    EXPECT_TRUE(session_->IsOver());
  }
  Reconnect();
  EXPECT_EQ(Tell(Operation(0x8003) + std::string(32, 'x')), ImportRefusal(4));
}

TEST_F(UsbIp, RefusesAnImportWhileUnplugged) {
  plug_.PullOut();
  EXPECT_EQ(Tell(ImportRequest()), ImportRefusal(4));
}

TEST_F(UsbIp, RefusesASecondImporterUntilTheFirstIsGone) {
  Import();
  usbip::UsbIpSession second(plug_);
  EXPECT_EQ(Tell(second, ImportRequest()), ImportRefusal(2));
  usbip::UsbIpSession third(plug_);
  EXPECT_EQ(Tell(third, ListRequest()), ListReply());
  session_->End();
  usbip::UsbIpSession fourth(plug_);
  EXPECT_EQ(Tell(fourth, ImportRequest()), ImportReply());
}

struct Question {
  const char* name;
  unsigned type, request, value, length;
  std::size_t size;
  std::string beginning;
};

class UsbIpEnumeration : public UsbIp, public testing::WithParamInterface<Question> {};

TEST_P(UsbIpEnumeration, Answers) {
  const Question& asked = GetParam();
  Import();
  const std::string reply = Tell(ControlIn(9, asked.type, asked.request, asked.value, asked.length));
  ASSERT_EQ(reply.size(), kCommandSize + asked.size);
  const std::string data = reply.substr(kCommandSize);
  EXPECT_EQ(reply, Submitted(9, 0, asked.size, data));
  EXPECT_EQ(data.substr(0, asked.beginning.size()), asked.beginning);
}

const Question kQuestions[] = {
    {"device_in_part", 0x80, 6, 0x0100, 8, 8, "\x12\x01\x00\x02\x00\x00\x00\x40"s},
    {"device", 0x80, 6, 0x0100, 64, 18, "\x12\x01\x00\x02\x00\x00\x00\x40\x09\x12\x01\x00"s},
    {"configuration_in_part", 0x80, 6, 0x0200, 9, 9, "\x09\x02\x29\x00\x01\x01"s},
    {"configuration", 0x80, 6, 0x0200, 255, 41, "\x09\x02\x29\x00\x01\x01"s},
    {"qualifier", 0x80, 6, 0x0600, 10, 10, "\x0a\x06\x00\x02\x00\x00\x00\x40\x01\x00"s},
    {"languages", 0x80, 6, 0x0300, 255, 4, "\x04\x03\x09\x04"s},
    {"maker", 0x80, 6, 0x0301, 255, 8, "\x08\x03g\0w\0q\0"s},
    {"product", 0x80, 6, 0x0302, 255, 52, "\x34\x03V\0i\0r\0"s},
    {"hid", 0x81, 6, 0x2100, 9, 9, "\x09\x21\x11\x01\x00\x01\x22\x1d\x00"s},
    {"report", 0x81, 6, 0x2200, 29, 29, "\x06\x00\xff\x09"s},
    {"status", 0x80, 0, 0, 2, 2, "\0\0"s},
    {"configuration_number", 0x80, 8, 0, 1, 1, "\x01"s}};

INSTANTIATE_TEST_SUITE_P(Of, UsbIpEnumeration, testing::ValuesIn(kQuestions),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(UsbIp, DoesAsDriversSetItUp) {
  Import();
  EXPECT_EQ(Tell(ControlOut(1, 0x00, 9, 1)), Submitted(1, 0, 0));     // SET_CONFIGURATION
  EXPECT_EQ(Tell(ControlOut(2, 0x21, 0x0a, 0)), Submitted(2, 0, 0));  // SET_IDLE
  EXPECT_EQ(Tell(ControlOut(3, 0x01, 0x0b, 0)), Submitted(3, 0, 0));  // SET_INTERFACE
}

TEST_F(UsbIp, StallsWhatItHasNotGot) {
  Import();
  EXPECT_EQ(Tell(ControlIn(1, 0x80, 6, 0x0303, 255)), Submitted(1, -EPIPE, 0));
  EXPECT_EQ(Tell(ControlIn(2, 0xc0, 0x55, 0, 64)), Submitted(2, -EPIPE, 0));
  EXPECT_EQ(Tell(Header({3, 1, 3, 64})), Submitted(3, -EPIPE, 0));
  EXPECT_EQ(Tell(Header({4, 0, 1, 4}) + "abcd"), Submitted(4, -EPIPE, 0));
}

TEST_F(UsbIp, StallsControlTransfersWhoseSetupNamesTheOtherDirection) {
  Import();
  EXPECT_EQ(Tell(Header({1, 1, 0, 64, SetupPacket(0x21, 9, 0x0200, 64)})), Submitted(1, -EPIPE, 0));
  EXPECT_EQ(Tell(Header({2, 0, 0, 4, SetupPacket(0x80, 6, 0x0100, 4)}) + "abcd"), Submitted(2, -EPIPE, 0));
  EXPECT_EQ(Tell(Header({3, 0, 0, 0, SetupPacket(0x80, 6, 0x0100, 18)})), Submitted(3, 0, 0));
}

TEST_F(UsbIp, AnswersACommand) {
  Import();
  EXPECT_EQ(Tell(Report(1, kGetVersion)), Submitted(1, 0, kReport));
  EXPECT_EQ(Tell(In(2)), Submitted(2, 0, kReport, kVersionReport));
}

TEST_F(UsbIp, AnswersACommandToOneWhoWaitsAlready) {
  Import();
  EXPECT_EQ(Tell(In(1)), "");
  EXPECT_EQ(Tell(In(2)), "");
  EXPECT_EQ(Tell(Report(3, kGetVersion)),
            Submitted(3, 0, kReport) + Submitted(1, 0, kReport, kVersionReport));
}

TEST_F(UsbIp, TakesAReportOverTheControlEndpointToo) {
  Import();
  EXPECT_EQ(Tell(ControlOut(1, 0x21, 9, 0x0200, Padded(kGetVersion, kReport))), Submitted(1, 0, kReport));
  EXPECT_EQ(Tell(In(2)), Submitted(2, 0, kReport, kVersionReport));
}

TEST_F(UsbIp, AnswersLaterWhatTakesTime) {
  Import();
  EXPECT_EQ(Tell(Report(1, "\x82") + In(2)), Submitted(1, 0, kReport));
  std::string replies;
  for (int i = 0; i < 20 && replies.empty(); ++i) {
    const std::optional<Time> deadline = terminal_.NextDeadline();
    ASSERT_TRUE(deadline);
    terminal_.Advance(*deadline);
    replies = ToText(session_->TakeReplies());
  }
  EXPECT_EQ(replies, Submitted(2, 0, kReport, Padded("123456\r", kReport)));
}

TEST_F(UsbIp, ReportsATransferThatIsTooSmallForTheAnswer) {
  Import();
  Tell(Report(1, kGetVersion));
  EXPECT_EQ(Tell(In(2, 512)), Submitted(2, -EOVERFLOW, 0));
}

TEST_F(UsbIp, UnlinksATransferThatWaits) {
  Import();
  Tell(In(1) + In(2));
  EXPECT_EQ(Tell(Unlink(3, 1)), Unlinked(3, -ECONNRESET));
  EXPECT_EQ(Tell(Unlink(4, 1)), Unlinked(4, 0));
  EXPECT_EQ(Tell(Report(5, kGetVersion)),
            Submitted(5, 0, kReport) + Submitted(2, 0, kReport, kVersionReport));
}

TEST_F(UsbIp, HasNothingToUnlinkOnceATransferIsAnswered) {
  Import();
  EXPECT_EQ(Tell(Report(1, kGetVersion) + Unlink(2, 1) + Unlink(3, 77)),
            Submitted(1, 0, kReport) + Unlinked(2, 0) + Unlinked(3, 0));
}

TEST_F(UsbIp, KeepsAnswersFromTheNextImporter) {
  Import();
  Tell(Report(1, kGetVersion));
  Reconnect();
  Import();
  EXPECT_EQ(Tell(In(1)), "");
}

TEST_F(UsbIp, IsOverForTheImporterWhenUnplugged) {
  Import();
  Tell(In(1));
  plug_.PullOut();
  EXPECT_EQ(ToText(session_->TakeReplies()), "");
  EXPECT_TRUE(session_->IsOver());
  EXPECT_EQ(session_->Complaint(), "");
  plug_.PlugIn();
  Reconnect();
  Import();
}

TEST_F(UsbIp, TakesItsBytesOneByOneAsWell) {
  std::string replies;
  for (const char byte : ImportRequest() + Report(1, kGetVersion) + In(2) + In(3) + Unlink(4, 3))
    replies += Tell(std::string(1, byte));
  EXPECT_EQ(replies, ImportReply() + Submitted(1, 0, kReport) + Submitted(2, 0, kReport, kVersionReport) +
                         Unlinked(4, -ECONNRESET));
}

struct Nonsense {
  const char* name;
  std::string bytes;
  const char* complaint;
};

class UsbIpNonsense : public UsbIp, public testing::WithParamInterface<Nonsense> {};

TEST_P(UsbIpNonsense, EndsAnImport) {
  Import();
  EXPECT_EQ(Tell(GetParam().bytes + In(1)), "");
  EXPECT_TRUE(session_->IsOver());
  EXPECT_FALSE(session_->IsImported());
  EXPECT_EQ(session_->Complaint(), GetParam().complaint);
  EXPECT_EQ(Tell(In(2)), "");
  Reconnect();
  Import();
}

const Nonsense kNonsense[] = {
    {"zeros", std::string(kCommandSize, '\0'), "a command for another device"},
    {"other_device", Header({.device = 0x10006}), "a command for another device"},
    {"command_0", Header({.command = 0}), "an unknown command"},
    {"a_reply", Header({.command = 3}), "an unknown command"},
    {"huge_command", Header({.command = 0xffffffff}), "an unknown command"},
    {"direction_2", Header({.in = 2}), "a transfer in no direction"},
    {"endpoint_16", Header({.in = 1, .endpoint = 16}), "an impossible endpoint"},
    {"huge_endpoint", Header({.endpoint = 0x80000001}), "an impossible endpoint"},
    {"length_minus_1", Header({.in = 1, .endpoint = 1, .length = 0xffffffff}),
     "a transfer of impossible length"},
    {"smallest_length", Header({.endpoint = 2, .length = 0x80000000}), "a transfer of impossible length"},
    {"a_byte_too_long", Header({.endpoint = 2, .length = (1U << 20U) + 1}),
     "a transfer of impossible length"},
    {"isochronous", Header({.in = 1, .endpoint = 1, .length = 64, .packets = 8}), "an isochronous transfer"},
    {"isochronous_less", Header({.in = 1, .endpoint = 1, .packets = 0xfffffffe}), "an isochronous transfer"}};

INSTANTIATE_TEST_SUITE_P(Such, UsbIpNonsense, testing::ValuesIn(kNonsense),
                         [](const auto& tested) { return tested.param.name; });

TEST_F(UsbIp, EndsWithOneWhoAsksForNothingItKnows) {
  Tell(Operation(0x8007));
  EXPECT_EQ(session_->Complaint(), "an unknown request");
  Reconnect();
  Tell("GET / HTTP/1.1\r\n\r\n");
  EXPECT_EQ(session_->Complaint(), "not version 1.1.1 of the protocol");
}

TEST_F(UsbIp, TakesIsochronousMarksThatMeanNone) {
  Import();
  EXPECT_EQ(Tell(Header({.sequence = 1, .in = 1, .endpoint = 1, .length = 64, .packets = 0xffffffff})), "");
  EXPECT_FALSE(session_->IsOver());
}

TEST_F(UsbIp, TakesTheLongestTransfer) {
  Import();
  EXPECT_EQ(Tell(Out(1, std::string(1U << 20U, 'x'))), Submitted(1, 0, 1U << 20U));
}

TEST_F(UsbIp, BoundsTheTransfersThatWait) {
  Import();
  for (std::uint32_t i = 1; i <= 1024; ++i) Tell(In(i));
  ASSERT_FALSE(session_->IsOver());
  EXPECT_EQ(Tell(Unlink(5000, 7) + In(7)), Unlinked(5000, -ECONNRESET));
  ASSERT_FALSE(session_->IsOver());
  Tell(In(1025));
  EXPECT_EQ(session_->Complaint(), "too many transfers at a time");
}

TEST_F(UsbIp, BoundsTheBytesThatWait) {
  Import();
  for (std::uint32_t i = 1; i <= 16; ++i) Tell(In(i, 1U << 20U));
  ASSERT_FALSE(session_->IsOver());
  EXPECT_EQ(Tell(Unlink(17, 16) + In(16, 1U << 20U)), Unlinked(17, -ECONNRESET));
  ASSERT_FALSE(session_->IsOver());
  Tell(In(18, 1));
  EXPECT_EQ(session_->Complaint(), "too many transfers at a time");
}

// Real messages with a few bytes changed get further than noise does.
class Talker {
 public:
  unsigned Below(unsigned limit) { return static_cast<unsigned>(random_() % limit); }
  std::string Talk() {
    std::string talk = Below(8) != 0 ? ImportRequest() : "";
    for (unsigned i = Below(30); i > 0; --i) talk += Message(Below(16));
    for (unsigned i = Below(3); i > 0 && !talk.empty(); --i)
      talk[Below(static_cast<unsigned>(talk.size()))] = static_cast<char>(Below(256));
    return talk;
  }

 private:
  std::string Message(std::uint32_t sequence) {
    switch (Below(7)) {
      case 0:
        return Report(sequence, kGetVersion);
      case 1:
        return In(sequence, Below(2) == 0 ? unsigned{kReport} : Below(5000));
      case 2:
        return Unlink(sequence, Below(16));
      case 3:
        return ControlIn(sequence, Below(256), Below(12), Below(0x2400), Below(300));
      case 4:
        return ControlOut(sequence, Below(256), Below(12), Below(256), std::string(Below(64), 'd'));
      case 5:
        return ListRequest();
      default:
        return Big(Below(0xffffffff), 4);
    }
  }

  std::mt19937 random_{1};  // NOLINT(cert-msc51-cpp): the same talk each time
};

TEST_F(UsbIp, OutlivesAnyTalk) {
  Talker talker;
  for (int round = 0; round < 2000; ++round) {
    const std::string talk = talker.Talk();
    for (std::size_t at = 0; at < talk.size();) {
      const std::size_t size = 1 + talker.Below(4000);
      Tell(talk.substr(at, size));
      at += size;
    }
    Reconnect();
    ASSERT_EQ(Tell(ImportRequest()), ImportReply()) << "round " << round;
    Reconnect();
  }
}

TEST_F(UsbIp, DoesNotWaitForEverForOneWhoSaysNothing) {
  usbip::UsbIpServer server(0, plug_, clock_);
  EXPECT_FALSE(server.NextDeadline());
  const UniqueFd client(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(server.Port());
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(connect(client.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  ASSERT_EQ(send(client.Get(), "\x01\x11\x80", 3, MSG_NOSIGNAL), 3);
  EventLoop loop;
  server.Join(loop);
  loop.BeforeEachWait([&] {
    if (server.NextDeadline()) loop.Stop();
  });
  loop.Run(clock_);
  const std::optional<Time> deadline = server.NextDeadline();
  ASSERT_TRUE(deadline);
  server.Advance(*deadline);
  char byte = 0;
  EXPECT_LE(recv(client.Get(), &byte, 1, 0), 0);
  EXPECT_FALSE(server.NextDeadline());
}

}  // namespace
}  // namespace gwq::terminal::test
