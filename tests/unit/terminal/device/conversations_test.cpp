// SPDX-License-Identifier: MIT
// The terminal answers every conversation of tests/wire byte for byte. The host's half is
// tests/unit/conversations.
#include "wire/conversations.h"

#include <openssl/core_names.h>
#include <openssl/ec.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/pem.h>

#include <functional>
#include <map>
#include <memory>
#include <numeric>
#include <set>

#include "protocol/commands.h"
#include "unit/terminal/device/screens/screen_rig.h"

// What the device takes for random numbers, so that its answers can be foretold.
extern "C" int __wrap_RAND_bytes(unsigned char* out, int size) {
  std::iota(out, out + size, static_cast<unsigned char>(1));
  return 1;
}

namespace gwq::terminal::test {

using namespace protocol;
using namespace device;
namespace {

template <auto Function>
struct Freer {
  template <typename T>
  void operator()(T* thing) const {
    Function(thing);
  }
};

// A key pair whose private key is 1, so that the public key is wire::kSm2Generator.
std::string Sm2PairOfTheGenerator() {
  const std::string point = "\x04" + std::string(wire::kSm2Generator);
  const std::unique_ptr<OSSL_PARAM_BLD, Freer<OSSL_PARAM_BLD_free>> build(OSSL_PARAM_BLD_new());
  OSSL_PARAM_BLD_push_utf8_string(build.get(), OSSL_PKEY_PARAM_GROUP_NAME, "SM2", 0);
  OSSL_PARAM_BLD_push_octet_string(build.get(), OSSL_PKEY_PARAM_PUB_KEY, point.data(), point.size());
  OSSL_PARAM_BLD_push_BN(build.get(), OSSL_PKEY_PARAM_PRIV_KEY, BN_value_one());
  const std::unique_ptr<OSSL_PARAM, Freer<OSSL_PARAM_free>> parameters(OSSL_PARAM_BLD_to_param(build.get()));
  const std::unique_ptr<EVP_PKEY_CTX, Freer<EVP_PKEY_CTX_free>> context(
      EVP_PKEY_CTX_new_from_name(nullptr, "SM2", nullptr));
  EVP_PKEY* made = nullptr;
  EVP_PKEY_fromdata_init(context.get());
  EXPECT_EQ(EVP_PKEY_fromdata(context.get(), &made, EVP_PKEY_KEYPAIR, parameters.get()), 1);
  const std::unique_ptr<EVP_PKEY, Freer<EVP_PKEY_free>> pair(made);
  const std::unique_ptr<BIO, Freer<BIO_free>> bio(BIO_new(BIO_s_mem()));
  EXPECT_EQ(PEM_write_bio_PrivateKey(bio.get(), pair.get(), nullptr, nullptr, 0, nullptr, nullptr), 1);
  char* text = nullptr;
  const long size = BIO_get_mem_data(bio.get(), &text);
  return {text, static_cast<std::size_t>(size)};
}

// What the unit of all conversations says of itself.
Settings KnownSettings() {
  Settings settings;
  settings.version = "V1.2";
  settings.build_date = "20231114";
  settings.production_date = "2023-11-14";
  settings.model = "Z11";
  return settings;
}

ScreenAction Signs() {
  ScreenAction action = Does(ScreenAction::Kind::kSign);
  action.strokes = {{10, 20, 300, 0}, {11, 22, 0, 8}};
  return action;
}

class Conversations : public testing::TestWithParam<wire::Conversation> {
 protected:
  void Hold(const wire::Conversation& conversation) {
    for (const wire::Exchange& exchange : conversation.exchanges) {
      screen.rig.Send(exchange.host);
      EXPECT_EQ(FirstAnswer(exchange), exchange.answer) << "to " << Readable(exchange.host);
    }
    screen.rig.Wait(1s);
    EXPECT_EQ(screen.rig.Answer(), "(none)") << "an answer that the host does not expect";
  }

  MemoryFiles keys;
  ScreenRig screen{Line::kUsb, KnownSettings(), &keys};

 private:
  static std::string Readable(const std::string& text) { return gwq::test::Readable(ToBytes(text)); }

  // As soon as there is one; the customer takes less than a second.
  std::string FirstAnswer(const wire::Exchange& exchange) {
    constexpr int kSteps = 20;
    std::string answer = screen.rig.Answer();
    for (int i = 0; i < kSteps && answer == "(none)" && !exchange.answer.empty(); ++i) {
      screen.rig.Wait(50ms);
      answer = screen.rig.Answer();
    }
    return answer == "(none)" ? "" : answer;
  }
};

// What must be so before a conversation, and what the customer does in it. The customer agrees where nothing
// else is said here, and otherwise the unit is as it left the factory.
using Scene = std::function<void(ScreenRig& screen)>;

void KeysThePin(ScreenRig& screen) {
  screen.rig.customer.actions = {Keys("4711")};
}
void SignsByHand(ScreenRig& screen) {
  screen.rig.customer.responses = {Signs()};
}
void Declines(ScreenRig& screen) {
  screen.rig.customer.responses = {Does(ScreenAction::Kind::kCancel)};
}
Scene HasFiles(const std::vector<std::string>& paths, const std::string& content = "picture") {
  return [paths, content](ScreenRig& screen) {
    for (const std::string& path : paths) screen.Put(path, content);
  };
}

const std::map<std::string_view, Scene>& Scenes() {
  static const std::string pictures = "/mnt/internal_sd/media/picture/";
  static const std::map<std::string_view, Scene> scenes{
      {"ClearPin", KeysThePin},
      {"ClearPinAgain", KeysThePin},
      {"DesPinBlock", KeysThePin},
      {"AnsiPinBlock", KeysThePin},
      {"PadPin", KeysThePin},
      {"PadPinShowingAText", KeysThePin},
      {"KeyedNumber", [](ScreenRig& screen) { screen.rig.customer.actions = {Keys("12345")}; }},
      {"MessageThatIsCancelled", Declines},
      {"CheckoutThatIsCancelled", Declines},
      {"DocumentsThatAreDeclined", Declines},
      {"SignedDocuments", SignsByHand},
      {"SignedDocumentsWithAVoice", SignsByHand},
      {"SignedDocumentsInTzgMode", SignsByHand},
      {"SignedPage", SignsByHand},
      {"PulledFile", HasFiles({"/tmp/hw.png"})},
      {"ListOfPictures", HasFiles({pictures + "a.jpg", pictures + "b.jpg"})},
      {"DeletedPicture", HasFiles({pictures + "x.jpg"})},
      {"DeletedPictures", HasFiles({pictures + "x.jpg"})},
      {"PictureThatIsThere", HasFiles({pictures + "x.jpg"})},
  };
  return scenes;
}

TEST_P(Conversations, AreAnsweredByteForByte) {
  keys.files["/sm2.pem"] = Sm2PairOfTheGenerator();
  const auto scene = Scenes().find(GetParam().name);
  if (scene != Scenes().end()) scene->second(screen);
  Hold(GetParam());
}

INSTANTIATE_TEST_SUITE_P(All, Conversations, testing::ValuesIn(wire::Conversations()),
                         [](const auto& each) { return each.param.name; });

TEST(ConversationScenes, BelongToConversations) {
  std::set<std::string> names;
  for (const wire::Conversation& each : wire::Conversations()) names.insert(each.name);
  for (const auto& [name, scene] : Scenes()) EXPECT_TRUE(names.contains(std::string(name))) << name;
}

// A command that neither side's tests speak of would be one that the two could understand differently.
TEST(ConversationRows, AreAllSpokenOf) {
  std::set<const CommandRow*> heard;
  for (const wire::Conversation& conversation : wire::Conversations()) {
    ScreenRig screen(Line::kUsb, KnownSettings());
    const auto scene = Scenes().find(conversation.name);
    if (scene != Scenes().end()) scene->second(screen);
    for (const wire::Exchange& exchange : conversation.exchanges) {
      screen.rig.Send(exchange.host);
      screen.rig.Wait(1s);
    }
    heard.insert(screen.rig.Heard().begin(), screen.rig.Heard().end());
  }
  for (const CommandRow& row : kCommands)
    EXPECT_TRUE(heard.contains(&row)) << row.name << ' ' << row.variant << " is in no conversation";
}

}  // namespace
}  // namespace gwq::terminal::test
