// SPDX-License-Identifier: MIT
// The terminal's description as JSON.
#include <gwq/screens/comm_call.h>

#include <cjson/cJSON.h>

#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>

#include "screens/internal/comm_request.h"
#include "unit/codec/frames.h"
#include "unit/screens/failing_system.h"
#include "unit/screens/signing_rig.h"

namespace gwq::test {
namespace {

// cJSON's memory: the block of number `fail_at` is not to be had.
int g_blocks = 0;
int g_allocations = 0;
int g_fail_at = INT_MAX;

void* Allocate(std::size_t size) {
  if (g_allocations++ == g_fail_at) return nullptr;
  ++g_blocks;
  return std::malloc(size);
}

void Release(void* block) {
  if (block != nullptr) --g_blocks;
  std::free(block);
}

struct Members {
  std::string message;
  std::string version;
  std::string date;
  std::string serial;
  std::string model;

  bool operator==(const Members&) const = default;
};

void PrintTo(const Members& members, std::ostream* out) {
  *out << members.message << "; " << members.version << "; " << members.date << "; " << members.serial << "; "
       << members.model;
}

const Members kAll{"success", "V2", "2023-11-14", "1234567890", "Z11"};

// As it is printed, tabs and line ends included.
const std::string kAllText =
    "{\n"
    "\t\"ErrorCode\":\t\"0\",\n"
    "\t\"ErrorMessage\":\t\"success\",\n"
    "\t\"DeviceBrand\":\t\"VOLK\",\n"
    "\t\"DllVersion\":\t\"1.0.0.36\",\n"
    "\t\"DeviceVersion\":\t\"V2\",\n"
    "\t\"ProductionDate\":\t\"2023-11-14\",\n"
    "\t\"DeviceSN\":\t\"1234567890\",\n"
    "\t\"DeviceModel\":\t\"Z11\"\n"
    "}";

class CommCall : public SigningRig {
 protected:
  CommCall() {
    g_blocks = 0;
    g_allocations = 0;
    g_fail_at = INT_MAX;
    cJSON_Hooks hooks{&Allocate, &Release};
    cJSON_InitHooks(&hooks);
  }
  ~CommCall() override {
    EXPECT_EQ(g_blocks, 0) << "not released";
    cJSON_InitHooks(nullptr);
  }
  CommCall(const CommCall&) = delete;
  CommCall& operator=(const CommCall&) = delete;

  // With ample room for the answer.
  int Run(const char* request = "{}") {
    std::vector<char> out(32'768, '\x55');
    length_ = static_cast<int>(out.size());
    const int result = DEV_CommCall(request, 0, out.data(), &length_);
    text_ = length_ == static_cast<int>(out.size()) ? "" : std::string(out.data());
    return result;
  }

  [[nodiscard]] Members Answered() const {
    const std::unique_ptr<cJSON, void (*)(cJSON*)> answer(cJSON_Parse(text_.c_str()), &cJSON_Delete);
    return {Text(answer.get(), "ErrorMessage"), Text(answer.get(), "DeviceVersion"),
            Text(answer.get(), "ProductionDate"), Text(answer.get(), "DeviceSN"),
            Text(answer.get(), "DeviceModel")};
  }

  void ExpectSerialNumber() {
    usb_.Expect(PaddedToReports(RequestFrame({0x30, 0x18})));
    if (!serial_) return;
    const Bytes data = BytesOf(*serial_);
    usb_.Answer(AnswerFrame(serial_status_, data));
  }
  // The five answers in order; nothing means silence.
  using MaybeAnswer = std::optional<std::string>;
  void ExpectAll(const MaybeAnswer& item6, const MaybeAnswer& date, const MaybeAnswer& model,
                 const MaybeAnswer& firmware) {
    Ask(wire::kGetItem6, item6);
    Ask(wire::kGetProductionDate, date);
    Ask(wire::kGetModel, model);
    ExpectSerialNumber();
    Ask(wire::kGetFirmware, firmware);
  }
  void ExpectAll() {
    ExpectAll(std::string(wire::kProductionDate), std::string(wire::kProductionDate),
              std::string(wire::kModel), std::string(wire::kFirmware));
  }

  static std::string Times(int count, const std::string& message) {
    std::string all;
    for (int i = 0; i < count; ++i) all += message;
    return all;
  }

  std::string text_;
  int length_ = 0;
  // What the terminal answers when it is asked for the serial number; nothing means silence.
  std::optional<std::string> serial_ = "1234567890";
  unsigned serial_status_ = 0;

 private:
  static std::string Text(const cJSON* object, const char* key) {
    const cJSON* item = cJSON_GetObjectItem(object, key);
    return item == nullptr || item->valuestring == nullptr ? "(none)" : item->valuestring;
  }
  void Ask(std::string_view command, const std::optional<std::string>& answer) {
    usb_.ExpectCommand(command);
    if (answer) usb_.Answer(BytesOf(*answer));
  }
};

const std::string kDate(wire::kProductionDate);
const std::string kModel(wire::kModel);
const std::string kFirmware(wire::kFirmware);
const std::string kRefused(wire::kRefused);

// ------------------------------------------------------------------ the answer

TEST_F(CommCall, DescribesTheTerminalInThisOrderAndForm) {
  ExpectAll();
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(text_, kAllText);
  EXPECT_EQ(length_, static_cast<int>(kAllText.size()));
}

TEST_F(CommCall, LogsTheRequestAndTheSerialNumber) {
  ExpectAll();
  const LogCapture log;
  EXPECT_EQ(Run("{\"RequestBaudRate\":1}"), 0);
  EXPECT_EQ(log.Messages().front(), "inJson = {\"RequestBaudRate\":1} ");
  EXPECT_THAT(log.Messages(), testing::Contains("szDeviceId = 1234567890 "));
}

TEST_F(CommCall, OutputMustBeLargerThanTheText) {
  for (const std::size_t size : {kAllText.size(), std::size_t{1}, std::size_t{0}}) {
    ExpectAll();
    GuardedBuffer out(size, 0x55);
    int length = static_cast<int>(size);
    EXPECT_EQ(DEV_CommCall("{}", 0, out.text(), &length), -24);
    EXPECT_EQ(length, static_cast<int>(size));
    EXPECT_TRUE(out.AllAre(0x55));
  }
  ExpectAll();
  GuardedBuffer out(kAllText.size() + 1, 0x55);
  int length = static_cast<int>(out.size());
  EXPECT_EQ(DEV_CommCall("{}", 0, out.text(), &length), 0);
  EXPECT_EQ(length, static_cast<int>(kAllText.size()));
  EXPECT_EQ(out.Content(), Concat(BytesOf(kAllText), {0}));
}

TEST_F(CommCall, OutputsThatAreMissingOrNegativeAreMinus24) {
  char out[16];
  int length = 16;
  ExpectAll();
  EXPECT_EQ(DEV_CommCall("{}", 0, nullptr, &length), -24);
  ExpectAll();
  EXPECT_EQ(DEV_CommCall("{}", 0, out, nullptr), -24);
  for (int negative : {-1, INT_MIN}) {
    ExpectAll();
    const int before = negative;
    EXPECT_EQ(DEV_CommCall("{}", 0, out, &negative), -24);
    EXPECT_EQ(negative, before);
  }
}

TEST_F(CommCall, TooSmallAnOutputHidesTheStatus) {
  usb_.Unplug();
  char out[1];
  int length = 1;
  EXPECT_EQ(DEV_CommCall("{}", 0, out, &length), -24);
}

TEST_F(CommCall, SecondArgumentIsIgnored) {
  for (const int ignored : {1, -1, INT_MAX}) {
    ExpectAll();
    std::vector<char> out(1024);
    int length = 1024;
    EXPECT_EQ(DEV_CommCall("{}", ignored, out.data(), &length), 0);
    EXPECT_EQ(std::string(out.data()), kAllText);
  }
}

TEST_F(CommCall, NoMemoryAtAnyPointIsMinus24WithoutALeak) {
  int failures = 0;
  for (g_fail_at = 0;; ++g_fail_at) {
    ExpectAll();
    g_allocations = 0;
    GuardedBuffer out(1024, 0x55);
    int length = 1024;
    const int result = DEV_CommCall("{\"RequestBaudRate\":9600}", 0, out.text(), &length);
    EXPECT_EQ(g_blocks, 0) << g_fail_at;
    if (g_allocations <= g_fail_at) break;  // none was missing any more
    if (result == 0) continue;              // a request that was not read counts as an empty one
    ++failures;
    EXPECT_EQ(result, -24);
    EXPECT_EQ(length, 1024);
    EXPECT_TRUE(out.AllAre(0x55)) << g_fail_at;
  }
  EXPECT_GE(failures, 1 + 8 * 3 + 1) << "the object, each member's parts, and the text";
}

TEST_F(CommCall, WithoutMemoryForTheTextsNothingIsAsked) {
  const NoMemoryFor texts(16'384);
  GuardedBuffer out(1024, 0x55);
  int length = 1024;
  EXPECT_EQ(DEV_CommCall("{}", 0, out.text(), &length), -24);
  EXPECT_EQ(length, 1024);
  EXPECT_TRUE(out.AllAre(0x55));
  EXPECT_EQ(usb_.Count("out"), 0);
}

// ------------------------------------------------------------------ the request

struct Baud {
  const char* request;
  int baud;
};

TEST_F(CommCall, BaudRateIsANumberOrADecimalText) {
  for (const Baud& row :
       {Baud{R"({"RequestBaudRate":9600})", 9600}, Baud{R"({"RequestBaudRate":"9600"})", 9600},
        Baud{R"({"RequestBaudRate":"9600 baud"})", 9600}, Baud{R"({"RequestBaudRate":"baud 9600"})", 0},
        Baud{R"({"RequestBaudRate":""})", 0}, Baud{R"({"RequestBaudRate":"-5"})", -5},
        Baud{R"({"RequestBaudRate":9600.9})", 9600}, Baud{R"({"RequestBaudRate":1e300})", INT_MAX},
        Baud{R"({"RequestBaudRate":-1e300})", INT_MIN},
        Baud{R"({"RequestBaudRate":"99999999999999999999"})", INT_MAX},
        Baud{R"({"RequestBaudRate":"-99999999999"})", INT_MIN}, Baud{R"({"RequestBaudRate":true})", 0},
        Baud{R"({"RequestBaudRate":null})", 0}, Baud{R"({"RequestBaudRate":{"a":1}})", 0},
        Baud{R"({"RequestBaudRate":[1]})", 0},
        Baud{R"({"RequestTimeOut":30,"RequestBaudRate":115200})", 115200},
        Baud{R"({"other":{"RequestBaudRate":1}})", 0}}) {
    ExpectAll();
    EXPECT_EQ(Run(row.request), 0) << row.request;
    EXPECT_EQ(text_, kAllText) << "over USB at any baud rate";
    EXPECT_EQ(ParseCommRequest(row.request).baud, row.baud) << row.request;
  }
}

TEST_F(CommCall, WhatIsNoJsonObjectIsAnEmptyRequest) {
  for (const char* request : {static_cast<const char*>(nullptr), "", "not JSON", "{\"RequestBaudRate\":96",
                              "[]", "[9600]", "5", "\"RequestBaudRate\"", "null", "{"}) {
    ExpectAll();
    EXPECT_EQ(Run(request), 0);
    EXPECT_EQ(text_, kAllText);
    EXPECT_EQ(ParseCommRequest(request).baud, 0);
  }
}

TEST_F(CommCall, TimeOutOfTheRequestIsNotUsed) {
  for (const char* request :
       {"{}", R"({"RequestTimeOut":100})", R"({"RequestTimeOut":"100"})", R"({"RequestTimeOut":{}})"}) {
    SetTime(kStart);
    ExpectAll({}, {}, {}, {});
    EXPECT_EQ(Run(request), -11);
    EXPECT_EQ(Now() - kStart, 4 * 3 + 1) << "four times more than two whole seconds, and one drain";
  }
}

// ------------------------------------------------------------------ what could not be read

TEST_F(CommCall, AbsentTerminalIsDescribedAllTheSame) {
  usb_.Unplug();
  EXPECT_EQ(Run(), -3);
  EXPECT_EQ(Answered(), (Members{.message = "ProductionDate get error,nRet = -3 "
                                            "ProductionDate get error,nRet = -3 "
                                            "DeviceModel get error,nRet = -3 "
                                            "szDeviceId get error,nRet = -3 "
                                            "DeviceVersion get error,nRet = -3 ",
                                 .version = "",
                                 .date = "",
                                 .serial = "",
                                 .model = ""}));
}

TEST_F(CommCall, SilentTerminalIsDescribedAllTheSame) {
  ExpectAll({}, {}, {}, {});
  EXPECT_EQ(Run(), -11);
  EXPECT_EQ(Answered(), (Members{.message = "ProductionDate get error,nRet = -11 "
                                            "ProductionDate get error,nRet = -11 "
                                            "DeviceModel get error,nRet = -11 "
                                            "DeviceModel get error,nRet = -11 "
                                            "DeviceVersion get error,nRet = -11 ",
                                 .version = "",
                                 .date = "",
                                 .serial = "1234567890",
                                 .model = ""}));
}

TEST_F(CommCall, MessageIsRepeatedByTheStepsThatHaveNone) {
  Members expected = kAll;
  ExpectAll({}, kDate, kModel, kFirmware);
  EXPECT_EQ(Run(), 0);
  expected.message = Times(5, "ProductionDate get error,nRet = -11 ");
  EXPECT_EQ(Answered(), expected) << "the unused item, and the date is there";
  ExpectAll(kRefused, kDate, kModel, kFirmware);
  EXPECT_EQ(Run(), 0);
  expected.message = Times(5, "ProductionDate is null ");
  EXPECT_EQ(Answered(), expected);
  ExpectAll(kDate, kDate, kRefused, kFirmware);
  EXPECT_EQ(Run(), 0);
  expected.message = Times(3, "DeviceModel is null ");
  expected.model = "";
  EXPECT_EQ(Answered(), expected);
  ExpectAll(kDate, kDate, {}, kFirmware);
  EXPECT_EQ(Run(), 0);
  expected.message = Times(3, "DeviceModel get error,nRet = -11 ");
  EXPECT_EQ(Answered(), expected);
}

TEST_F(CommCall, DateThatIsMissingOrNotReadIsEmpty) {
  Members expected = kAll;
  expected.date = "";
  ExpectAll(kDate, kRefused, kModel, kFirmware);
  EXPECT_EQ(Run(), 0);
  expected.message = Times(4, "ProductionDate is null ");
  EXPECT_EQ(Answered(), expected);
  ExpectAll(kDate, {}, kModel, kFirmware);
  EXPECT_EQ(Run(), 0);
  expected.message = Times(4, "ProductionDate get error,nRet = -11 ");
  EXPECT_EQ(Answered(), expected);
}

TEST_F(CommCall, LaterMessageTakesThePlaceOfAnEarlierOne) {
  ExpectAll(kRefused, kDate, kRefused, {});
  EXPECT_EQ(Run(), -11);
  EXPECT_EQ(Answered().message, Times(2, "ProductionDate is null ")
                                    .append(Times(2, "DeviceModel is null "))
                                    .append("DeviceVersion get error,nRet = -11 "));
}

TEST_F(CommCall, FirmwareThatIsMissingIsTheOnlyMessageAndStatus0) {
  ExpectAll(kDate, kDate, kModel, kRefused);
  EXPECT_EQ(Run(), 0);
  Members expected = kAll;
  expected.message = "DeviceVersion is null ";
  expected.version = "";
  EXPECT_EQ(Answered(), expected);
}

TEST_F(CommCall, FailedExchangeOfTheFirmwareIsTheStatus) {
  ExpectAll(kDate, kDate, kModel, {});
  CancelTheWait();
  EXPECT_EQ(Run(), -23);
  EXPECT_EQ(Answered().message, "DeviceVersion get error,nRet = -23 ");
}

// ------------------------------------------------------------------ the items

TEST_F(CommCall, FirmwareIsWhatStandsBeforeTheFirstBar) {
  struct Row {
    const char* answer;
    const char* version;
  };
  for (const Row& row : {Row{"\x02V2|X\x03", "V2"}, Row{"\x02V2|X|Y\x03", "V2"}, Row{"\x02V2|\x03", "V2"},
                         Row{"\x02|X\x03", ""}, Row{"\x02V2\x03", ""}, Row{"\x03", ""}, Row{"\x02\x03", ""},
                         Row{"|\x03", ""}, Row{"\x02|\x03", ""}}) {
    ExpectAll(kDate, kDate, kModel, row.answer);
    EXPECT_EQ(Run(), 0);
    EXPECT_EQ(Answered().version, row.version) << row.answer;
    EXPECT_EQ(Answered().message, "success");
  }
}

TEST_F(CommCall, ItemsAreTheAnswersWithoutTheirMarks) {
  struct Row {
    const char* answer;
    const char* item;
  };
  for (const Row& row : {Row{"\x02x\x03", "x"}, Row{"\x02\x03", ""}, Row{"\x03", ""}, Row{"\x02UU\x03", "UU"},
                         Row{"xyz\x03", "yz"}, Row{"\x02U\x03\x03", "U\x03"}}) {
    ExpectAll(kDate, row.answer, row.answer, kFirmware);
    EXPECT_EQ(Run(), 0);
    Members expected = kAll;
    expected.date = row.item;
    expected.model = row.item;
    EXPECT_EQ(Answered(), expected) << row.answer;
  }
}

TEST_F(CommCall, TextsOfTheTerminalAreEscapedAndOtherwiseAsTheyCame) {
  ExpectAll(kDate, "\x02\"a\\b\x01\n\x03", "\x02\xD2\xBB\xFF\x03", kFirmware);
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(Answered().date, "\"a\\b\x01\n");
  EXPECT_EQ(Answered().model, "\xD2\xBB\xFF");
  EXPECT_NE(text_.find(R"("\"a\\b\u0001\n")"), std::string::npos);
}

TEST_F(CommCall, LongestAnswersFit) {
  const std::string longest = std::string("\x02").append(std::string(4094, 'n')).append("\x03");
  usb_.ExpectCommand(wire::kGetItem6).Answer(kDate);
  usb_.ExpectCommand(wire::kGetProductionDate);
  for (std::size_t at = 0; at < longest.size(); at += 1024) usb_.Answer(longest.substr(at, 1024));
  usb_.ExpectCommand(wire::kGetModel).Answer(Bytes(1023, 'm'));
  for (int i = 0; i < 4; ++i) usb_.Answer(Bytes(1024, 'm'));
  ExpectSerialNumber();
  usb_.ExpectCommand(wire::kGetFirmware).Answer(Bytes(1023, 'f'));
  for (int i = 0; i < 4; ++i) usb_.Answer(Bytes(1024, '|'));
  EXPECT_EQ(Run(), 0);
  EXPECT_EQ(Answered().date, std::string(4094, 'n'));
  EXPECT_EQ(Answered().model, std::string(4095, 'm')) << "cut to its buffer";
  EXPECT_EQ(Answered().version, std::string(1022, 'f'));
}

// ------------------------------------------------------------------ the serial number

TEST_F(CommCall, SerialNumberOfAnyLengthIsTakenWhenItWasRead) {
  for (const std::string number : {"", "1", "123456789012345678901234567890"}) {
    serial_ = number;
    ExpectAll();
    EXPECT_EQ(Run(), 0);
    Members expected = kAll;
    expected.serial = number;
    EXPECT_EQ(Answered(), expected);
  }
}

TEST_F(CommCall, SerialNumberOfTenCharactersIsTakenEvenIfTheCallFailed) {
  EXPECT_TRUE(IsSerialNumberKept(-14, "abcdefghij"));
  for (const char* number : {"", "123456789", "12345678901"}) {
    EXPECT_FALSE(IsSerialNumberKept(-14, number)) << number;
    EXPECT_TRUE(IsSerialNumberKept(0, number)) << number;
  }
}

TEST_F(CommCall, RefusedSerialNumberIsEmptyAndReported) {
  for (const std::string data : {"", "x"}) {
    serial_ = data;
    serial_status_ = 1;
    ExpectAll();
    const LogCapture log;
    EXPECT_EQ(Run(), 0);
    Members expected = kAll;
    expected.serial = "";
    expected.message = Times(2, "szDeviceId get error,nRet = -14 ");
    EXPECT_EQ(Answered(), expected);
    EXPECT_THAT(log.Messages(), testing::Contains("szDeviceId =  ")) << "the refusal has no number";
  }
}

TEST_F(CommCall, SerialNumberThatIsNotAnsweredIsEmptyAndReported) {
  serial_.reset();
  ExpectAll();
  EXPECT_EQ(Run(), 0);
  Members expected = kAll;
  expected.serial = "";
  expected.message = Times(2, "szDeviceId get error,nRet = -11 ");
  EXPECT_EQ(Answered(), expected);
}

}  // namespace
}  // namespace gwq::test
