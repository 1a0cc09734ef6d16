// SPDX-License-Identifier: MIT
// What the terminal tells of itself, the end of what it shows, and calls without a terminal.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>

#include "e2e/library/screens_rig.h"

namespace gwq::test {
namespace {

using nlohmann::ordered_json;

struct Described {
  int status;
  ordered_json object;
};

class TerminalTells : public ScreenSession {
 protected:
  Described Describe(const char* request) {
    std::array<char, 4096> text{};
    int length = static_cast<int>(text.size());
    const int status = comm_call(request, 0, text.data(), &length);
    EXPECT_EQ(std::string_view(text.data()).size(), static_cast<std::size_t>(length));
    return {status, ordered_json::parse(text.data())};
  }

  static ordered_json Description(const std::string& message) {
    return {{"ErrorCode", "0"},         {"ErrorMessage", message}, {"DeviceBrand", "VOLK"},
            {"DllVersion", "1.0.0.36"}, {"DeviceVersion", ""},     {"ProductionDate", ""},
            {"DeviceSN", ""},           {"DeviceModel", ""}};
  }

  int FirmwareVersion() {
    return lib.Get<MP_GetFirmwareVersion>()(nullptr, nullptr, 1, 2, common.data(), own.data());
  }

  decltype(&DEV_CommCall) comm_call = lib.Get<DEV_CommCall>();
  std::array<char, 2048> common{"untouched"};
  std::array<char, 2048> own{"untouched"};
};

using TerminalItself = TerminalTells;

TEST_F(TerminalItself, IsDescribedAsOneObject) {
  ordered_json expected = Description("success");
  expected["DeviceVersion"] = "V1.0.0";
  expected["ProductionDate"] = "20240601";
  expected["DeviceSN"] = "st_00000001";
  expected["DeviceModel"] = "GWQ-VT";
  for (const char* request :
       {R"({"RequestBaudRate": 115200, "RequestTimeOut": 5})", R"({"RequestBaudRate": "9600"})", "{}",
        "not JSON", static_cast<const char*>(nullptr)}) {
    const Described got = Describe(request);
    EXPECT_EQ(0, got.status);
    EXPECT_EQ(expected.dump(), got.object.dump());
  }
}

TEST_F(TerminalItself, DescriptionNeedsRoomForItsTerminator) {
  std::array<char, 4096> text{};
  int length = static_cast<int>(text.size());
  ASSERT_EQ(0, comm_call("{}", 0, text.data(), &length));
  std::string exact(static_cast<std::size_t>(length), '#');
  int room = length;
  EXPECT_EQ(GWQ_TOO_SMALL, comm_call("{}", 0, exact.data(), &room));
  EXPECT_EQ(length, room);
  EXPECT_EQ(std::string(exact.size(), '#'), exact);
  ++room;
  EXPECT_EQ(0, comm_call("{}", 0, exact.data(), &room));
  EXPECT_STREQ(text.data(), exact.c_str());
}

TEST_F(TerminalItself, TellsTheTwoPartsOfItsFirmwareVersion) {
  EXPECT_EQ(0, FirmwareVersion());
  EXPECT_STREQ("V1.0.0", common.data());
  EXPECT_STREQ("P20240615", own.data());
}

TEST_F(TerminalItself, ClosesWhatItShowsAndTakesTheNextCall) {
  const std::string document = Document("a.pdf");
  EXPECT_EQ(0, lib.Get<MP_ShowPDF>()(nullptr, nullptr, kBaud, 60, document.c_str()));
  const auto cancel = lib.Get<MP_CancelCurrentOperation>();
  EXPECT_EQ(0, cancel(nullptr, nullptr, kBaud, 0));
  EXPECT_EQ(0, cancel(nullptr, nullptr, kBaud, 0)) << "with nothing shown";
  EXPECT_EQ(1, lib.takes_utf8());
}

using WithoutTerminal = TerminalTells;

TEST_F(WithoutTerminal, EveryFailureOfTheDescriptionIsCollected) {
  const Described got = Describe("{}");
  EXPECT_EQ(GWQ_NOT_OPENED, got.status);
  const std::string date = "ProductionDate get error,nRet = -3 ";
  std::string message = date;
  message.append(date).append("DeviceModel get error,nRet = -3 ").append("szDeviceId get error,nRet = -3 ");
  message.append("DeviceVersion get error,nRet = -3 ");
  EXPECT_EQ(Description(message).dump(), got.object.dump());
}

TEST_F(WithoutTerminal, ShownTextsAndPagesAreNotOpened) {
  unsigned number = kUntouched;
  int result = kUntouched;
  std::array<char, 2048> text{"untouched"};
  char value = '#';
  EXPECT_EQ(-3, lib.Get<MP_StartElectronicCard>()(nullptr, nullptr, kBaud, 1, "n", "1", 1, nullptr));
  EXPECT_EQ(-3, lib.Get<MP_SetEvaluateInfo>()(nullptr, nullptr, kBaud, "n", "1", 1, nullptr));
  EXPECT_EQ(-3, lib.Get<MP_StartEvaluate>()(nullptr, nullptr, kBaud, 1, &value));
  EXPECT_EQ(0, lib.Get<MP_CancleEvaluate>()(nullptr, nullptr, kBaud));
  for (const int port : {0, 200}) {
    EXPECT_EQ(-3, lib.Get<GWQ_StartEvaluator>()(port, kBaud, "n", "1", 1, nullptr, 1, &number));
    EXPECT_EQ(-3, lib.Get<GWQ_StartInfo>()(port, kBaud, 1, "m", &number));
    EXPECT_EQ(-3, lib.Get<GWQ_StartKeyboard>()(port, kBaud, 1, 0, text.data()));
  }
  for (const int mode : {0, 1}) {
    EXPECT_EQ(-3, lib.Get<MP_StartInfoHtml>()(nullptr, nullptr, kBaud, 1, mode, "p", &result, 1));
    EXPECT_EQ(-3, lib.Get<MP_StartInfoHtmlScreenshot>()(nullptr, kLink, kBaud, 1, mode, "p",
                                                        Local("p.png").c_str(), &result));
  }
  EXPECT_EQ(-3, lib.Get<MP_CheckOut_All>()(nullptr, nullptr, kBaud, 1, "a", "b", text.data()));
  EXPECT_EQ('#', value);
  EXPECT_EQ(static_cast<unsigned>(kUntouched), number);
  EXPECT_EQ(kUntouched, result);
  EXPECT_STREQ("untouched", text.data());
}

TEST_F(WithoutTerminal, DocumentsAndTheVersionAreNotOpened) {
  const std::string document = Document("a.pdf");
  const std::string picture = Local("sig.png");
  int decision = kUntouched;
  std::array<char, 64> data{"untouched"};
  EXPECT_EQ(-3, lib.Get<MP_ShowPDF>()(nullptr, nullptr, kBaud, 1, document.c_str()));
  EXPECT_EQ(-3, lib.Get<MP_ConfirmPDF>()(nullptr, nullptr, kBaud, 1, document.c_str(), &decision));
  EXPECT_EQ(-3, lib.Get<MP_SignPDF>()(nullptr, kLink, kBaud, 1, document.c_str(), "1", picture.c_str(),
                                      data.data()));
  EXPECT_EQ(-3, lib.Get<MP_SignPDF_Voice>()(nullptr, kLink, kBaud, 1, document.c_str(), "1", "v",
                                            picture.c_str(), data.data()));
  EXPECT_EQ(-3, lib.Get<MP_Sign_With_TZG>()(nullptr, kLink, kBaud, 1, document.c_str(), "1", "v",
                                            picture.c_str(), 0, 3, data.data()));
  EXPECT_EQ(-3, FirmwareVersion());
  EXPECT_EQ(-3, lib.Get<MP_CancelCurrentOperation>()(nullptr, nullptr, kBaud, 0));
  EXPECT_EQ(kUntouched, decision);
  EXPECT_STREQ("untouched", data.data());
  EXPECT_STREQ("untouched", common.data());
  EXPECT_FALSE(std::filesystem::exists(picture));
}

// These push a file before anything else: the push tells.
TEST_F(WithoutTerminal, APageFileAndAHandSignatureFailLikeTheirPush) {
  const std::string document = Document("a.pdf");
  const auto push = lib.Get<Z11DownLoadFile>();
  const int pushed = push(0, '9', kBaud, 255, document.c_str(), "/tmp/infoviewer.pdf");
  EXPECT_GT(0, pushed);
  std::array<char, 2048> text{"untouched"};
  EXPECT_EQ(pushed, lib.Get<MP_StartInfoHtmlEx>()(nullptr, nullptr, kBaud, 1, "", "page", text.data()));
  EXPECT_STREQ("untouched", text.data());
  EXPECT_EQ(pushed, lib.Get<GWQ_StartSign>()(0, kBaud, 1, document.c_str(), Local("s.png").c_str(),
                                             Local("s").c_str()));
}

}  // namespace
}  // namespace gwq::test
