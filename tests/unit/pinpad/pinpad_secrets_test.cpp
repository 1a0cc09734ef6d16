// SPDX-License-Identifier: MIT
// PIN blocks, keys, factors and account numbers stay neither on the stack, nor in released heap
// blocks, nor in static storage once a call of the framed PIN-pad functions has returned, whatever
// its outcome.
#include <memory>

#include <gwq/pinpad/entry.h>
#include <gwq/pinpad/keys.h>
#include <gwq/pinpad/settings.h>
#include "unit/pinpad/pinpad_rig.h"
#include "unit/pinpad/register_capture.h"
#include "unit/pinpad/secret_search.h"

namespace gwq::test {
namespace {

constexpr int kBaud = 9600;

// On the heap, as what is looked for must be.
struct Secret {
  Bytes bytes;

  explicit Secret(std::string_view text) : bytes(BytesOf(text)) {}
  explicit Secret(Bytes raw) : bytes(std::move(raw)) {}

  [[nodiscard]] Bytes Split() const {
    Bytes split;
    wire::AppendSplit(split, bytes);
    return split;
  }
  [[nodiscard]] Bytes Hex() const {
    static constexpr char kDigits[] = "0123456789ABCDEF";
    std::string hex;
    for (const std::uint8_t byte : bytes) hex += {kDigits[byte >> 4U], kDigits[byte & 0x0FU]};
    return BytesOf(hex);
  }
};

std::vector<Bytes> RawAndSplit(const std::vector<Secret>& secrets) {
  std::vector<Bytes> forms;
  for (const Secret& secret : secrets) {
    forms.push_back(secret.bytes);
    forms.push_back(secret.Split());
  }
  return forms;
}

char g_static_room[16];

__attribute__((noinline)) void LeaveIn(char* room, const Bytes& secret) {
  std::copy(secret.begin(), secret.end(), room);
  asm volatile("" : : "r"(room) : "memory");
}

__attribute__((noinline)) void LeaveOnStack(const Bytes& secret) {
  char local[16];
  LeaveIn(local, secret);
}

TEST(SecretSearch, FindsWhatIsLeft) {
  const Bytes secret = BytesOf("83917264");
  EXPECT_EQ(SearchFor({secret}, [&] { LeaveOnStack(secret); }).on_stack.size(), 1U);
  EXPECT_EQ(SearchFor({secret}, [&] { LeaveIn(g_static_room, secret); }).in_segments.size(), 1U);
  std::fill(std::begin(g_static_room), std::end(g_static_room), '\0');
  const auto leave_on_heap = [&] {
    auto* const block = static_cast<char*>(std::malloc(64));
    LeaveIn(block + 30, secret);
    std::free(block);
  };
  EXPECT_EQ(SearchFor({secret}, leave_on_heap).in_released_blocks, 1);
  ExpectClean(SearchFor({secret}, [] {}));
}

// With the log off and on: the line that holds a secret is the library's own block.
class PinPadSecrets : public PinPadRig, public testing::WithParamInterface<bool> {
 protected:
  PinPadSecrets() {
    if (GetParam()) log_ = std::make_unique<LogCapture>();
  }

  // Runs it with the caller's buffers at hand and expects this result.
  static void ExpectCleanCall(const std::vector<Bytes>& secrets, int expected,
                              const std::function<int()>& call) {
    int result = expected + 1;
    ExpectClean(SearchFor(secrets, [&] { result = call(); }));
    EXPECT_EQ(result, expected);
  }

  const Secret block_{Bytes{0xB1, 0x42, 0xC3, 0x54, 0xD5, 0x66, 0xE7, 0x78}};
  const Secret factor_{"fAcToR-7391"};
  const Secret account_{"6222021234567890123"};
  const Secret account_field_{"123456789012"};
  const Secret key_{Bytes{0xA1, 0x92, 0x83, 0x74, 0x65, 0x56, 0x47, 0x38, 0x29, 0x1A, 0x8B, 0x7C}};
  const Secret verify_key_{"vErIfY-5512"};
  GuardedBuffer out_{4096, 0};
  GuardedBuffer more_{4096, 0};
  int length_ = 6;
  std::unique_ptr<LogCapture> log_;
};

INSTANTIATE_TEST_SUITE_P(Log, PinPadSecrets, testing::Bool(),
                         [](const auto& each) { return each.param ? "On" : "Off"; });

TEST_P(PinPadSecrets, PinBlockIsWiped) {
  Accepted(wire::kEnterPin30, block_.bytes);
  ExpectCleanCall(RawAndSplit({block_}), 0,
                  [this] { return PN_GetPin(0, nullptr, kBaud, 30, &length_, out_.text()); });
  EXPECT_EQ(out_.First(8), block_.bytes);
}

TEST_P(PinPadSecrets, PinBlockOfARefusedAnswerIsWiped) {
  Exchange(wire::kEnterPin30, wire::PinPadAnswer(0x6A82, block_.bytes));
  ExpectCleanCall(RawAndSplit({block_}), -2,
                  [this] { return PN_GetPin(0, nullptr, kBaud, 30, &length_, out_.text()); });
}

TEST_P(PinPadSecrets, PinBlockOfADamagedAnswerIsWiped) {
  Bytes answer = wire::PinPadAnswer(0, block_.bytes);
  answer[answer.size() - 2] ^= 1U;
  Exchange(wire::kEnterPinShowing, answer);
  char* const shown = In("Key your PIN");
  ExpectCleanCall(RawAndSplit({block_}), -2,
                  [&] { return GetPinblockShowString(0, nullptr, kBaud, out_.data(), &length_, 30, shown); });
}

TEST_P(PinPadSecrets, PinBlockOfAnAnswerWithoutEndIsWiped) {
  Bytes answer = wire::PinPadAnswer(0, block_.bytes);
  answer.pop_back();
  Exchange(wire::kEnterPin30, answer);
  ExpectCleanCall(RawAndSplit({block_}), -11,
                  [this] { return PN_GetPin(0, nullptr, kBaud, 30, &length_, out_.text()); });
}

TEST_P(PinPadSecrets, PinBlockThatWasDrainedIsWiped) {
  usb_.Answer(Concat(wire::PinPadAnswer(0, block_.bytes), BytesOf("F")));
  Accepted(wire::kReadDeviceId, BytesOf("SN"));
  ExpectCleanCall(RawAndSplit({block_}), 0,
                  [this] { return PN_ReadDeviceId(0, nullptr, kBaud, out_.text()); });
}

TEST_P(PinPadSecrets, AccountFactorAndPinBlockAreWiped) {
  Accepted(wire::kGetEnType, {1});
  Accepted(wire::kGetPinLen, {6});
  Accepted(wire::kSetPinMode1);
  Accepted(wire::kSetSound2);
  Accepted(std::string(wire::kEmptyAccountField) + "123456789012");
  Accepted(wire::kReadFactor, factor_.bytes);
  Accepted(wire::kEnterPin30, block_.bytes);
  char* const account = In(TextOf(account_.bytes));
  ExpectCleanCall(RawAndSplit({block_, factor_, account_, account_field_}), 0, [&] {
    return PN_GetPinBlock(0, nullptr, kBaud, 30, 1, 1, 1, account, more_.text(), out_.data(), &length_);
  });
  EXPECT_EQ(out_.First(8), block_.bytes);
}

TEST_P(PinPadSecrets, AccountIsWipedWhenItIsRefused) {
  Accepted(wire::kGetEnType, {1});
  Accepted(wire::kGetPinLen, {6});
  Accepted(wire::kSetPinMode1);
  Accepted(wire::kSetSound2);
  Refused(std::string(wire::kEmptyAccountField) + "123456789012");
  char* const account = In(TextOf(account_.bytes));
  char* const shown = In("Key your PIN");
  ExpectCleanCall(RawAndSplit({account_, account_field_}), -14, [&] {
    return PN_GetPinBlockShowString(0, nullptr, kBaud, 30, 1, 1, 1, account, more_.text(), out_.data(),
                                    &length_, shown);
  });
}

TEST_P(PinPadSecrets, FactorsAreWiped) {
  Accepted(wire::kMakeFactor1, factor_.bytes);
  Accepted(wire::kReadFactor, factor_.bytes);
  ExpectCleanCall(RawAndSplit({factor_}), 0,
                  [this] { return PN_ObtainFactor(0, nullptr, kBaud, nullptr, out_.text()); });
}

TEST_P(PinPadSecrets, DigestAndItsDataAreWiped) {
  const Secret data("dAtA-to-be-digested");
  Accepted("\x30\x15\x04\x13" + TextOf(data.bytes), block_.bytes);
  char* const text = In(TextOf(data.bytes));
  ExpectCleanCall(RawAndSplit({data, block_}), 0,
                  [&] { return PN_ObtainDigest(0, nullptr, kBaud, 4, text, out_.text()); });
}

TEST_P(PinPadSecrets, WorkingKeyIsWipedInAllItsForms) {
  Exchange("\x30\x04\x0C" + TextOf(key_.bytes) + TextOf(factor_.bytes) + TextOf(verify_key_.bytes),
           wire::PinPadAnswer(wire::kKeyType1Confirmed, {0x00}));
  char* const key = In(TextOf(key_.Hex()));
  char* const factor = In(TextOf(factor_.bytes));
  char* const verify_key = In(TextOf(verify_key_.bytes));
  std::vector<Bytes> secrets = RawAndSplit({key_, factor_, verify_key_});
  secrets.push_back(key_.Hex());
  ExpectCleanCall(secrets, 0,
                  [&] { return PN_DownloadPinPadWK(0, nullptr, kBaud, factor, nullptr, key, verify_key); });
}

TEST_P(PinPadSecrets, WorkingKeyThatWasNotSentIsWiped) {
  Fails("\x30\x04\x0C" + TextOf(key_.bytes), Failure::kNotSent);
  char* const key = In(TextOf(key_.Hex()));
  char* const none = In("");
  std::vector<Bytes> secrets = RawAndSplit({key_});
  secrets.push_back(key_.Hex());
  ExpectCleanCall(secrets, -10,
                  [&] { return PN_DownloadPinPadWK(0, nullptr, kBaud, none, nullptr, key, none); });
}

// With the log on its parts are dumped.
TEST_P(PinPadSecrets, StructuredRecordIsWiped) {
  Bytes whole{0x10, 0x00};
  for (const std::size_t size : {64U, 136U, 32U}) {
    Bytes field = key_.bytes;
    field.resize(size, 0x5A);
    whole = Concat(whole, field);
  }
  const std::string c1 = TextOf(Bytes(whole.begin() + 2, whole.begin() + 66));
  const std::string c2 = TextOf(Bytes(whole.begin() + 66, whole.begin() + 82));
  const std::string c3 = TextOf(Bytes(whole.begin() + 202, whole.end()));
  Refused("\x30\x39\x70" + c1 + c2 + c3);
  char* const key = In(TextOf(Secret(whole).Hex()));
  char* const none = In("");
  char* const type = In("2");
  std::vector<Bytes> secrets = RawAndSplit({key_});
  secrets.push_back(key_.Hex());
  ExpectCleanCall(secrets, 0x6A82,
                  [&] { return PN_DownloadPinPadWK(0, nullptr, kBaud, none, type, key, none); });
}

TEST_P(PinPadSecrets, BytesToBeEncipheredAreWipedInBothForms) {
  const Secret info("pLaIn-TeXt-84");
  ExchangeText(wire::kGetFirmwareVersion, BytesOf(wire::kDone));
  ExchangeText("\x1B[1GETENCDATA\x02\x37|26|" + TextOf(info.Hex()) + "\x03", BytesOf(wire::kUnknownCommand));
  char* const text = In(TextOf(info.bytes));
  length_ = static_cast<int>(info.bytes.size());
  ExpectCleanCall({info.bytes, info.Hex()}, -406, [&] {
    return PN_GetStringBlock(0, nullptr, kBaud, 30, 7, text, out_.text(), &length_, more_.text());
  });
}

__attribute__((noinline)) void LeaveInRegister(const Bytes& secret) {
#if defined(__x86_64__)
  asm volatile("movdqu %0, %%xmm13" : : "m"(*reinterpret_cast<const char(*)[16]>(secret.data())) : "xmm13");
#else
  asm volatile("ldr q13, %0" : : "Q"(*reinterpret_cast<const char(*)[16]>(secret.data())) : "v13");
#endif
  gwq_capture_registers();
}

TEST(RegisterCaptures, FindWhatIsLeft) {
  const Bytes secret = BytesOf("0123456789abcdef");
  const RegisterCapture capture;
  LeaveInRegister(secret);
  EXPECT_EQ(CapturedRegisters(), 1);
  EXPECT_EQ(CapturesThatHold("xx3456789axx", 8), 1);
  EXPECT_EQ(CapturesThatHold("xx345678xx", 8), 0);
}

// Whoever the library calls, libusb first of all, may save the registers in memory of its own. With
// the log on the text is on the disk anyway.
TEST_F(PinPadRig, BytesToBeEncipheredStayInNoRegister) {
#ifndef GWQ_CLEARS_REGISTERS
  GTEST_SKIP() << "this compiler cannot clear registers";
#endif
  constexpr std::size_t kPart = 8;
  const FullRegisters full;
  for (const std::size_t size : {16U, 31U, 32U, 40U, 64U, 200U}) {
    std::string text;
    for (std::size_t i = 0; i < size; ++i) text += static_cast<char>('!' + (7 * i + i / 13) % 90);
    const Bytes bytes = BytesOf(text);
    const Bytes hex = Secret(bytes).Hex();
    ExchangeText(wire::kGetFirmwareVersion, BytesOf(wire::kDone));
    ExchangeText("\x1B[1GETENCDATA\x02\x37|" + std::to_string(2 * size) + "|" + TextOf(hex) + "\x03",
                 BytesOf(wire::kUnknownCommand));
    GuardedBuffer file(4096, 0);
    GuardedBuffer answer(4096, 0);
    int length = static_cast<int>(size);
    const RegisterCapture capture;
    const int status =
        PN_GetStringBlock(0, nullptr, kBaud, 30, 7, text.data(), file.text(), &length, answer.text());
    gwq_capture_registers();
    EXPECT_EQ(status, -406);
    EXPECT_GT(CapturedRegisters(), 6);
    EXPECT_EQ(CapturesThatHold(text, kPart), 0) << size << " characters";
  }
}

TEST_P(PinPadSecrets, NumberThatWasKeyedIsWiped) {
  const Secret number("839172645501");
  ExchangeText(wire::kAskNumber, BytesOf("B" + TextOf(number.bytes) + "F"));
  char* const prompt = In(wire::kAskNumberPrompt);
  ExpectCleanCall({number.bytes}, 0,
                  [&] { return PN_GetInNo(0, nullptr, kBaud, 30, 20, 2, prompt, out_.text()); });
  EXPECT_EQ(out_.First(12), number.bytes);
}

}  // namespace
}  // namespace gwq::test
