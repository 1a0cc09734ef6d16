// The terminal as an object, for programs in C++17 and later: strings, paths and exceptions over the functions of gwq.h.
// What an argument or a status means stands there, in the header that declares the function named with each call.
//
// Times are whole seconds that the customer has, 1 to 999. Nothing stays open between calls: a Terminal is a value that
// can be copied. One thread at a time calls, but for Cancel.
//
// Everything here is compiled into the program that includes it. Text is UTF-8. A text with a zero character and a path
// with "|" in it give std::invalid_argument, paths of more than 1023 bytes together std::length_error.
#ifndef GWQ_HPP
#define GWQ_HPP

#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "gwq.h"

namespace gwq::client {

// A function of the library returned anything but success.
class Error : public std::runtime_error {
 public:
  Error(const char* call, int status)
      : std::runtime_error(std::string(call) + ": " + GwqStatusCause(status, GWQ_ENGLISH) + " (" +
                           GwqStatusName(status) + ", status " + std::to_string(status) + ")"),
        status_(status) {}

  // See enum GwqStatus; a positive one is the PIN pad's own status word.
  [[nodiscard]] int status() const noexcept { return status_; }
  [[nodiscard]] bool cancelled() const noexcept { return status_ == GWQ_CANCELLED; }
  [[nodiscard]] const char* cause(GwqLanguage language = GWQ_ENGLISH) const noexcept {
    return GwqStatusCause(status_, language);
  }
  [[nodiscard]] const char* remedy(GwqLanguage language = GWQ_ENGLISH) const noexcept {
    return GwqStatusRemedy(status_, language);
  }

 private:
  int status_;
};

// What a teller's card shows. Without a photo, which is one on the terminal, it is the number with ".jpg".
struct Teller {
  std::string name;
  std::string number;
  int stars = 0;
  std::optional<std::string> photo = std::nullopt;
};

// The picture's file, and the strokes as the terminal wrote them.
struct Signature {
  std::filesystem::path picture;
  std::string strokes;
};

// What is asked for with a PIN. Encryption type and digits are those that SetPinEntry set.
struct PinRequest {
  std::optional<std::string> account = std::nullopt;  // binds the block to it
  int algorithm = 0;
  int digits = 6;
  int sound = 0;
  int seconds = 60;
  std::string prompt;
};

using Path = std::filesystem::path;
using Paths = std::vector<Path>;

enum class Media { kPictures = 0, kHeadPhotos = 2 };

class Terminal {
 public:
  // Port 0 is USB, n the serial device /dev/ttyS(n-1). Only Inform and List use the serial port; all others are USB
  // whatever the port.
  explicit Terminal(int port = 0, int baud = 115200) : port_(port), baud_(baud) {}

  // ---- The terminal itself

  // One JSON object (DEV_CommCall).
  [[nodiscard]] std::string Describe() const {
    std::string json(kDescriptionRoom, '\0');
    int length = static_cast<int>(json.size());
    const std::string request = std::string("{\"RequestBaudRate\": ").append(std::to_string(baud_)) + "}";
    Check("DEV_CommCall", DEV_CommCall(request.c_str(), 0, json.data(), &length));
    json.resize(static_cast<std::size_t>(length));
    return json;
  }

  // Ends what another thread waits for, which throws an Error that is cancelled() there, and closes the terminal's
  // screen (MP_CancelCurrentOperation). A call that does not wait yet is not ended. Any thread; 0.6 seconds and more.
  void Cancel() const {
    Check("MP_CancelCurrentOperation", MP_CancelCurrentOperation(nullptr, nullptr, baud_, 0));
  }

  // ---- Screens

  // Returns at once (MP_StartElectronicCard).
  void ShowTeller(const Teller& teller, int seconds = 60) const {
    Check("MP_StartElectronicCard",
          MP_StartElectronicCard(nullptr, nullptr, baud_, seconds, In(teller.name), In(teller.number),
                                 teller.stars, In(teller.photo)));
  }

  // The card that Rate shows from now on (MP_SetEvaluateInfo).
  void SetTeller(const Teller& teller) const {
    Check("MP_SetEvaluateInfo", MP_SetEvaluateInfo(nullptr, nullptr, baud_, In(teller.name),
                                                   In(teller.number), teller.stars, In(teller.photo)));
  }

  // 1, 2 or 3 as keyed, 4 for the terminal's key 0, nothing for an answer that is no rating (MP_StartEvaluate).
  [[nodiscard]] std::optional<int> Rate(int seconds = 30) const {
    char value = '\0';
    Check("MP_StartEvaluate", MP_StartEvaluate(nullptr, nullptr, baud_, seconds, &value));
    return value == '\0' ? std::nullopt : std::optional<int>(value - '0');
  }

  // Shows a message and waits for a key: 0, 1 or 3, 4 for every other answer (GWQ_StartInfo).
  [[nodiscard]] unsigned Inform(const std::string& message, int seconds = 30) const {
    unsigned key = 0;
    Check("GWQ_StartInfo", GWQ_StartInfo(port_, baud_, seconds, In(message), &key));
    return key;
  }

  // Returns at once (MP_StartInfoHtml).
  void ShowHtml(const std::string& page, int seconds = 60) const {
    Check("MP_StartInfoHtml", MP_StartInfoHtml(nullptr, nullptr, baud_, seconds, 0, In(page), nullptr, 0));
  }

  // Waits for a key: 0, 1, or 2 for the terminal's key 3 (MP_StartInfoHtml).
  [[nodiscard]] int AskHtml(const std::string& page, int seconds = 60, int countdown = 0) const {
    int key = 0;
    Check("MP_StartInfoHtml",
          MP_StartInfoHtml(nullptr, nullptr, baud_, seconds, 1, In(page), &key, countdown));
    return key;
  }

  // Empty if the customer cancels; of at most 20 digits, 0 leaves it to the terminal (PN_GetInNo).
  [[nodiscard]] std::string AskNumber(const std::string& prompt, int seconds = 30, int most_digits = 0,
                                      int display = 0) const {
    return TextOf("PN_GetInNo", [&](char* out) {
      return PN_GetInNo(port_, nullptr, baud_, seconds, most_digits, display, In(prompt), out);
    });
  }

  // The terminal's answer to the two texts (MP_CheckOut_All).
  [[nodiscard]] std::string CheckOut(const std::string& first, const std::string& second,
                                     int seconds = 60) const {
    return TextOf("MP_CheckOut_All", [&](char* out) {
      return MP_CheckOut_All(nullptr, nullptr, baud_, seconds, In(first), In(second), out);
    });
  }

  // ---- Documents

  // Returns once they are on the terminal (MP_ShowPDF).
  void ShowDocuments(const Paths& documents, int seconds = 60) const {
    Check("MP_ShowPDF", MP_ShowPDF(nullptr, nullptr, baud_, seconds, Listed(documents).c_str()));
  }

  // Whether the customer agrees (MP_ConfirmPDF).
  [[nodiscard]] bool ConfirmDocuments(const Paths& documents, int seconds = 60) const {
    int refused = 2;
    Check("MP_ConfirmPDF",
          MP_ConfirmPDF(nullptr, nullptr, baud_, seconds, Listed(documents).c_str(), &refused));
    return refused == 0;
  }

  // The picture goes to `picture`, the strokes to "hw.data" beside it; both are written anew. `place` is where to sign,
  // as the terminal takes it; `voice` is spoken (MP_SignPDF, MP_SignPDF_Voice).
  [[nodiscard]] Signature SignDocuments(const Paths& documents, const Path& picture, const std::string& place,
                                        const std::optional<std::string>& voice = std::nullopt,
                                        int seconds = 120) const {
    const Path target = std::filesystem::absolute(picture);
    const std::string paths = Listed(documents);
    // The strokes are read from their file, for their size is not known before.
    if (voice) {
      Check("MP_SignPDF_Voice", MP_SignPDF_Voice(nullptr, kChannel, baud_, seconds, paths.c_str(), In(place),
                                                 In(voice), target.c_str(), nullptr));
    } else {
      Check("MP_SignPDF",
            MP_SignPDF(nullptr, kChannel, baud_, seconds, paths.c_str(), In(place), target.c_str(), nullptr));
    }
    std::ifstream strokes(target.parent_path() / "hw.data", std::ios::binary);
    return {target, {std::istreambuf_iterator<char>(strokes), {}}};
  }

  // ---- Files

  // The file's path on the terminal (pushFileToZ11).
  std::string Push(const Path& file) const {  // NOLINT(readability-convert-member-functions-to-static)
    return TextOf("pushFileToZ11", [&](char* out) { return pushFileToZ11(Listed({file}).c_str(), out); });
  }

  // Fetches a file of the terminal; `file` is written anew (PullFile).
  void Pull(const std::string& place, const Path& file) const {
    std::string command = std::string("\x1B[0PULLFILE\x02").append(In(place)) + "\x03";
    std::string target = std::filesystem::absolute(file).string();
    Check("PullFile", PullFile(0, *kChannel, baud_, kPullMs, static_cast<int>(command.size()), command.data(),
                               target.data()));
  }

  // The names of the terminal's files as it has them, GBK, separated by "|" (GetVideoList).
  [[nodiscard]] std::string List(Media media) const {
    return TextOf("GetVideoList", [&](char* out) {
      return GetVideoList(port_, *kChannel, baud_, static_cast<int>(media), out, kRoom);
    });
  }

  // ---- PIN pad

  // Encryption type, PIN length, end rule and fill type, whose values are the pad's (PN_SetPinPadParameter).
  void SetPinEntry(int algorithm, int digits, int end_rule = 0, const std::string& fill = "F") const {
    Check("PN_SetPinPadParameter",
          PN_SetPinPadParameter(port_, nullptr, baud_, algorithm, digits, end_rule, In(fill)));
  }

  // In hexadecimal: the modulus for algorithm 1 (RSA), X and Y for 2 (SM2) (PN_ObtainPublicKey).
  [[nodiscard]] std::string PublicKey(int algorithm, int bits) const {
    return TextOf("PN_ObtainPublicKey",
                  [&](char* out) { return PN_ObtainPublicKey(port_, nullptr, baud_, algorithm, bits, out); });
  }

  // Has the pad make a factor, for which the bank prepares a working key (PN_ObtainFactor).
  [[nodiscard]] std::string NewFactor(int key_type = 1) const {
    return TextOf("PN_ObtainFactor", [&](char* out) {
      return PN_ObtainFactor(port_, nullptr, baud_, std::to_string(key_type).c_str(), out);
    });
  }

  // The enciphered key is hexadecimal; no byte of it is zero (PN_DownloadPinPadWK).
  void LoadWorkingKey(const std::string& enciphered, const std::string& factor, const std::string& verify_key,
                      int key_type = 1) const {
    Check("PN_DownloadPinPadWK",
          PN_DownloadPinPadWK(port_, nullptr, baud_, In(factor), std::to_string(key_type).c_str(),
                              In(enciphered), In(verify_key)));
  }

  // The block of the PIN that the customer keys (PN_GetPinBlockShowString).
  [[nodiscard]] std::vector<unsigned char> PinBlock(const PinRequest& request) const {
    std::string factor(kRoom + 1, '\0');
    std::vector<unsigned char> block(kRoom + 1);
    int length = request.digits;
    const int kind = request.account ? 1 : 5;
    Check("PN_GetPinBlockShowString",
          PN_GetPinBlockShowString(port_, nullptr, baud_, request.seconds, request.algorithm, request.sound,
                                   kind, In(request.account), factor.data(), block.data(), &length,
                                   In(request.prompt)));
    block.resize(static_cast<std::size_t>(length));
    return block;
  }

 private:
  static constexpr int kRoom = 4096;  // more than any answer that comes as text
  static constexpr int kDescriptionRoom = 1 << 16;
  static constexpr std::size_t kLongestList = 1023;
  static constexpr int kPullMs = 3000;
  static constexpr char kChannel[] = "9";

  static void Check(const char* call, int status) {
    if (status != GWQ_OK) throw Error(call, status);
  }

  template <typename Function>
  static std::string TextOf(const char* call, Function function) {
    std::string out(kRoom + 1, '\0');
    Check(call, function(out.data()));
    out.resize(out.find('\0'));
    return out;
  }

  static const char* In(const std::string& text) {
    if (text.find('\0') != std::string::npos) throw std::invalid_argument("a text with a zero character");
    return text.c_str();
  }
  static const char* In(const std::optional<std::string>& text) { return text ? In(*text) : nullptr; }

  // Absolute, for the library looks for the "/" before a file's name.
  static std::string Listed(const Paths& documents) {
    std::string list;
    for (const Path& document : documents) {
      const std::string path = std::filesystem::absolute(document).string();
      if (path.find('|') != std::string::npos) throw std::invalid_argument("a path with \"|\" in it");
      list.append(list.empty() ? "" : "|").append(path);
    }
    if (list.size() > kLongestList) throw std::length_error("paths of more than 1023 bytes together");
    return list;
  }

  int port_;
  int baud_;
};

}  // namespace gwq::client

#endif
