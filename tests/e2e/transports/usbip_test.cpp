// SPDX-License-Identifier: MIT
// gwq-terminal serve: the terminal for the whole machine, as a client of its server meets it.
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <vector>

#include "child.h"
#include "serial_line.h"
#include "support/usbip_messages.h"
#include "usbip_client.h"

namespace gwq::test {
namespace {

using namespace usbip;

const std::string kVersionReport = Padded("\x02V1.0.0|20240615\x03", kReport);

class Serve : public testing::Test {
 protected:
  void Start(const std::vector<std::string>& options = {}) {
    std::vector<std::string> arguments{GWQ_TERMINAL, "serve", "--usbip", "0"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    child_ = std::make_unique<Child>(arguments);
    const std::string line = child_->ReadLine();
    const std::string place = "usbip 127.0.0.1:";
    ASSERT_EQ(line.substr(0, place.size()), place);
    port_ = static_cast<std::uint16_t>(std::stoi(line.substr(place.size())));
  }
  void ExpectListed() const {
    const UsbIpClient client(port_);
    EXPECT_EQ(client.Ask(ListRequest(), kListSize), ListReply());
    EXPECT_TRUE(client.IsEnded());
  }
  static void Import(const UsbIpClient& client) {
    ASSERT_EQ(client.Ask(ImportRequest(), kImportSize), ImportReply());
  }
  static void ExpectAnswersVersion(const UsbIpClient& client) {
    EXPECT_EQ(client.Ask(Report(1001, kGetVersion), kCommandSize), Submitted(1001, 0, kReport));
    EXPECT_EQ(client.Ask(In(1002), kCommandSize + kReport), Submitted(1002, 0, kReport, kVersionReport));
  }
  // It is given back when the server has noticed the end of the importer.
  [[nodiscard]] bool IsImportableSoon() const {
    return Soon([this] { return UsbIpClient(port_).Ask(ImportRequest(), kImportSize) == ImportReply(); });
  }
  void End(int signal = SIGTERM) {
    child_->Signal(signal);
    EXPECT_EQ(child_->Wait(), 0);
  }

  std::unique_ptr<Child> child_;
  std::uint16_t port_ = 0;
};

TEST_F(Serve, ListsIsImportedEnumeratedAndAsked) {
  Start();
  ExpectListed();
  {
    const UsbIpClient client(port_);
    Import(client);
    const std::string device = client.Ask(ControlIn(1, 0x80, 6, 0x0100, 64), kCommandSize + 18);
    EXPECT_EQ(device.substr(0, kCommandSize), Submitted(1, 0, 18));
    EXPECT_EQ(device.substr(kCommandSize + 8, 4), "\x09\x12\x01\x00"s);
    EXPECT_EQ(client.Ask(ControlIn(2, 0x80, 6, 0x0200, 255), kCommandSize + 41).substr(0, kCommandSize),
              Submitted(2, 0, 41));
    EXPECT_EQ(client.Ask(ControlOut(3, 0, 9, 1), kCommandSize), Submitted(3, 0, 0));
    ExpectAnswersVersion(client);
  }
  EXPECT_TRUE(IsImportableSoon());
  End();
  EXPECT_EQ(child_->Errors(), "");
}

TEST_F(Serve, CancelsATransferThatWaits) {
  Start();
  const UsbIpClient client(port_);
  Import(client);
  EXPECT_EQ(client.Ask(In(1) + Unlink(2, 1), kCommandSize), Unlinked(2, -ECONNRESET));
  ExpectAnswersVersion(client);
  End();
}

TEST_F(Serve, LetsOneClientImportAtATime) {
  Start();
  {
    const UsbIpClient first(port_);
    Import(first);
    const UsbIpClient second(port_);
    EXPECT_EQ(second.Ask(ImportRequest(), kOperationSize), ImportRefusal(2));
    EXPECT_TRUE(second.IsEnded());
    ExpectListed();
    ExpectAnswersVersion(first);
  }
  EXPECT_TRUE(IsImportableSoon());
  End();
}

TEST_F(Serve, IsUnpluggedAndPluggedInBySignals) {
  Start();
  const UsbIpClient client(port_);
  Import(client);
  ASSERT_TRUE(client.Send(In(1)));
  child_->Signal(SIGUSR1);
  EXPECT_TRUE(client.IsEnded());
  EXPECT_EQ(UsbIpClient(port_).Ask(ListRequest(), kOperationSize + 4), Operation(5) + Big(0, 4));
  EXPECT_EQ(UsbIpClient(port_).Ask(ImportRequest(), kOperationSize), ImportRefusal(4));
  child_->Signal(SIGUSR2);
  EXPECT_TRUE(IsImportableSoon());
  End();
}

TEST_F(Serve, UnplugsItselfWhenHostileAndComesBack) {
  Start({"--hostile", "seed=1,unplug=100"});
  const UsbIpClient client(port_);
  Import(client);
  ASSERT_TRUE(client.Send(In(1)));
  EXPECT_TRUE(client.IsEnded());
  EXPECT_TRUE(IsImportableSoon());
  End();
}

TEST_F(Serve, ClosesTheConnectionOnNonsenseSaysSoAndGoesOn) {
  Start();
  const UsbIpClient noisy(port_);
  EXPECT_TRUE(noisy.Send("GET / HTTP/1.1\r\n\r\n"));
  EXPECT_TRUE(noisy.IsEnded());
  {
    const UsbIpClient importer(port_);
    Import(importer);
    EXPECT_TRUE(importer.Send(Header({.sequence = 1, .endpoint = 2, .length = 0xffffffff})));
    EXPECT_TRUE(importer.IsEnded());
  }
  const UsbIpClient half(port_);
  EXPECT_TRUE(half.Send(ImportRequest().substr(0, 11)));
  EXPECT_TRUE(IsImportableSoon());
  End();
  const std::string errors = child_->Errors();
  EXPECT_NE(errors.find("USB/IP connection closed: not version 1.1.1"), std::string::npos) << errors;
  EXPECT_NE(errors.find("USB/IP connection closed: a transfer of impossible length"), std::string::npos)
      << errors;
}

TEST_F(Serve, ServesOthersWhileAClientDoesNotRead) {
  Start();
  const UsbIpClient lazy(port_);
  Import(lazy);
  const std::size_t asked = lazy.SendUntilFull(ControlIn(1, 0x80, 6, 0x0200, 255));
  EXPECT_GT(asked, 1000U);
  ExpectListed();
  const std::string reply = Submitted(1, 0, 41);
  for (std::size_t i = 0; i < asked; ++i)
    ASSERT_EQ(lazy.Read(kCommandSize + 41).substr(0, kCommandSize), reply);
  End();
}

TEST_F(Serve, TurnsAwayMoreClientsThanItHasRoomFor) {
  Start();
  {
    std::vector<std::unique_ptr<UsbIpClient>> crowd;
    for (int i = 0; i < 32; ++i) crowd.push_back(std::make_unique<UsbIpClient>(port_));
    const UsbIpClient late(port_);
    EXPECT_TRUE(late.IsConnected());
    EXPECT_TRUE(late.IsEnded());
    EXPECT_EQ(crowd.front()->Ask(ListRequest(), kListSize), ListReply());
  }
  EXPECT_TRUE(IsImportableSoon());
  End();
}

TEST_F(Serve, ServesAPseudoTerminalBesideIt) {
  Start({"--pty"});
  const std::string line = child_->ReadLine();
  ASSERT_EQ(line.substr(0, 4), "pty ");
  const SerialLine serial(line.substr(4));
  ASSERT_TRUE(serial.Configure());
  ASSERT_TRUE(serial.Send("\033[0GETVERSION"));
  EXPECT_EQ(serial.ReadAnswer().substr(0, 1), "\002");
  ExpectListed();
  End();
}

TEST_F(Serve, HasTheIdentityAskedFor) {
  Start({"--vid-pid", "1209:2"});
  const UsbIpClient client(port_);
  EXPECT_EQ(client.Ask(ImportRequest(), kImportSize).substr(kImportSize - 12, 4), "\x12\x09\x00\x02"s);
  End();
}

TEST_F(Serve, FailsAtAPortThatIsTaken) {
  Start();
  Child other({GWQ_TERMINAL, "serve", "--usbip", std::to_string(port_)});
  EXPECT_EQ(other.Wait(), 1);
  EXPECT_NE(other.Errors().find("port " + std::to_string(port_)), std::string::npos) << other.Errors();
  EXPECT_EQ(other.ReadRest(), "");
  End();
}

class ServeEndedBy : public Serve, public testing::WithParamInterface<int> {};

TEST_P(ServeEndedBy, IsInGoodOrderWithAClientAtIt) {
  Start();
  const UsbIpClient client(port_);
  Import(client);
  ASSERT_TRUE(client.Send(In(1)));
  End(GetParam());
  EXPECT_TRUE(client.IsEnded());
  EXPECT_EQ(child_->Errors(), "");
}

INSTANTIATE_TEST_SUITE_P(Signals, ServeEndedBy, testing::Values(SIGINT, SIGTERM, SIGHUP));

TEST(ServeNothing, IsAnErrorThatTellsWhatToDo) {
  for (const std::vector<std::string>& options : {std::vector<std::string>{},
                                                  {"--trace"},
                                                  {"--usbip", "65536"},
                                                  {"--usbip", "x"},
                                                  {"--pty", "--serial", "1"}}) {
    std::vector<std::string> arguments{GWQ_TERMINAL, "serve"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    Child child(arguments);
    EXPECT_EQ(child.Wait(), 2) << testing::PrintToString(options);
    EXPECT_EQ(child.ReadRest(), "");
    EXPECT_FALSE(child.Errors().empty());
  }
  Child child({GWQ_TERMINAL, "serve"});
  EXPECT_EQ(child.Wait(), 2);
  EXPECT_NE(child.Errors().find("nothing to serve: give --usbip, --pty or both"), std::string::npos);
}

}  // namespace
}  // namespace gwq::test
