// SPDX-License-Identifier: MIT
// The terminal as an object, for programs in C++17 and later: strings, paths and exceptions over
// the functions of gwq.h. Each call names its function; the header that declares it documents
// arguments and statuses.
//
// Times are whole seconds that the customer has, 1 to 999. Nothing stays open between calls: a
// Terminal is a value that can be copied. One thread at a time calls, except Cancel.
//
// When the customer cancels a signature, a payment or a PIN, the call throws an Error that is
// cancelled(); when the time runs out there, one that is timed_out(). A terminal that refuses or
// fails before that is no_answer(): the library has one status for both. Questions return the key;
// each call says what it means.
//
// Everything here is compiled into the program that includes it. Text is UTF-8. A text with a zero
// character and a path with "|" in it throw std::invalid_argument, paths of more than 1023 bytes
// together std::length_error.
//
// The terminal's own encoding is GBK. File names are sent to it as they are, those of pushed files
// as on the host; a name out of one of its lists is GBK.
#ifndef GWQ_HPP
#define GWQ_HPP

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

#include <gwq/extra.h>
#include <gwq/gwq.h>

namespace gwq::client {

// A function of the library returned anything but success.
class Error : public std::runtime_error {
 public:
  // `time_is_over`: the call lasted as long as the customer had time.
  Error(const char* call, int status, bool time_is_over = false, const GwqFailure& failure = {})
      : Error(call, status, Cause(call, status, time_is_over, GWQ_ENGLISH), time_is_over, failure) {}

  // See enum GwqStatus; a positive one is the PIN pad's own status word.
  [[nodiscard]] int status() const noexcept { return status_; }
  // The library's function.
  [[nodiscard]] const std::string& call() const noexcept { return call_; }
  // The customer pressed Cancel (the PIN pad's refusal 1 counts as that), or Terminal::Cancel ended
  // the call.
  [[nodiscard]] bool cancelled() const noexcept {
    return status_ == GWQ_CANCELLED || (IsPinEntry(call_) && status_ == GWQ_PIN_REFUSAL_1);
  }
  // The customer's time ran out: the status may mean that, and the call lasted so long.
  [[nodiscard]] bool timed_out() const noexcept { return time_is_over_ && MayBeTimeOut(call_, status_); }
  // The terminal refused, answered nothing or could not store a file, while the customer still had
  // time or had nothing to do.
  [[nodiscard]] bool no_answer() const noexcept { return status_ == GWQ_NO_ANSWER && !timed_out(); }
  // What the status means for this function, and what to do about it.
  [[nodiscard]] const char* cause(GwqLanguage language = GWQ_ENGLISH) const noexcept {
    return Cause(call_.c_str(), status_, time_is_over_, language);
  }
  [[nodiscard]] const char* remedy(GwqLanguage language = GWQ_ENGLISH) const noexcept {
    return GwqStatusRemedyOf(call_.c_str(), status_, language);
  }
  // What the call failed of: the step, the system's error, the device, who holds it. All zero where
  // that is not known, such as when Terminal::Cancel ended the call.
  [[nodiscard]] const GwqFailure& failure() const noexcept { return *failure_; }
  // What to do, one sentence: as the failure tells, or else the remedy. what() has it, too, where it
  // is not the remedy.
  [[nodiscard]] const char* advice(GwqLanguage language = GWQ_ENGLISH) const noexcept {
    return failure_->step == GWQ_STEP_NONE ? remedy(language) : failure_->advice[language];
  }

 protected:
  Error(const char* call, int status, const std::string& cause, bool time_is_over, const GwqFailure& failure)
      : std::runtime_error(std::string(call).append(": ").append(cause) + " (" + GwqStatusName(status) +
                           ", status " + std::to_string(status) + ")" + Sentence(call, status, failure)),
        call_(call),
        status_(status),
        time_is_over_(time_is_over),
        failure_(std::make_shared<const GwqFailure>(failure)) {}

 private:
  static std::string Sentence(const char* call, int status, const GwqFailure& failure) {
    const char* const advice = failure.advice[GWQ_ENGLISH];
    const bool new_to_caller =
        *advice != '\0' && std::string_view(advice) != GwqStatusRemedyOf(call, status, GWQ_ENGLISH);
    return new_to_caller ? std::string(" ").append(advice) : std::string();
  }
  static bool IsPinEntry(std::string_view call) noexcept { return call == "PN_GetPinBlockShowString"; }
  // What the library returns both when the customer's time runs out and when an exchange fails earlier.
  static bool MayBeTimeOut(std::string_view call, int status) noexcept {
    constexpr std::array<std::string_view, 4> kTell = {"MP_CheckOut_All", "MP_ConfirmPDF", "MP_SignPDF",
                                                       "MP_SignPDF_Voice"};
    if (IsPinEntry(call)) return status == GWQ_NO_ANSWER || status == GWQ_READ_FAILED;
    return status == GWQ_NO_ANSWER && std::find(kTell.begin(), kTell.end(), call) != kTell.end();
  }
  static const char* Cause(const char* call, int status, bool time_is_over, GwqLanguage language) noexcept {
    if (time_is_over || !MayBeTimeOut(call, status)) return GwqStatusCauseOf(call, status, language);
    return language == GWQ_ENGLISH ? "The terminal refused or failed before the customer's time was over."
                                   : "在客户操作时间结束之前，终端拒绝或失败。";
  }

  std::string call_;
  int status_;
  bool time_is_over_;
  std::shared_ptr<const GwqFailure> failure_;  // shared, so that copies of an exception do not throw
};

// Nobody signed: the terminal did not answer and returned the same signature as before.
class OldSignature : public Error {
 public:
  explicit OldSignature(const char* call)
      : Error(call, GWQ_REFUSED,
              "The terminal kept silent and gave back the signature that it had given before.", true,
              GwqFailure{}) {}
};

// What a teller's card shows. The photo is one on the terminal; without it, the number with ".jpg".
// Its name is UTF-8 here and sent in GBK; name and number are sent as they are.
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

// A request for a PIN block. Encryption type and digits are those that SetPinEntry set.
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

// Lists the terminals on USB, of both identities: where each is plugged in, whether this user may open
// it, and which process has it open (GWQ_FindTerminals). Opens none of them. Any thread.
[[nodiscard]] inline std::vector<GwqTerminalPlace> FindTerminals() {
  std::vector<GwqTerminalPlace> places(4);
  while (true) {
    const std::size_t room = places.size();
    const int count = GWQ_FindTerminals(places.data(), static_cast<int>(room));
    places.resize(static_cast<std::size_t>(count));
    if (places.size() <= room) return places;
  }
}

namespace detail {

// What the thread's last call failed of, if that was this one.
inline GwqFailure LastFailure(const std::string& call, int status) {
  GwqFailure failure{};
  GWQ_GetFailure(&failure);
  return failure.function == call && failure.status == status ? failure : GwqFailure{};
}

// The cancels of this process: the library has one link, so a cancel ends any call that is running.
class Cancels {
 public:
  static Cancels& All() {
    static Cancels all;
    return all;
  }

  template <typename Function>
  auto During(Function cancel) {
    const Scope scope(*this);
    return cancel();
  }

  // A point in time for CameSince. A cancel in progress counts as one that comes later.
  [[nodiscard]] unsigned Mark() {
    const std::lock_guard lock(mutex_);
    return ended_;
  }

  // The same as Mark, but waits until no cancel is in progress.
  [[nodiscard]] unsigned MarkWhenIdle() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return begun_ == ended_; });
    return ended_;
  }

  [[nodiscard]] bool CameSince(unsigned mark) {
    const std::lock_guard lock(mutex_);
    return begun_ != mark;
  }

 private:
  class Scope {
   public:
    explicit Scope(Cancels& all) : all_(all) { all_.Count(all_.begun_); }
    ~Scope() { all_.Count(all_.ended_); }
    Scope(const Scope&) = delete;
    Scope& operator=(const Scope&) = delete;

   private:
    Cancels& all_;
  };

  void Count(unsigned& counter) {
    const std::lock_guard lock(mutex_);
    ++counter;
    changed_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  unsigned begun_ = 0;
  unsigned ended_ = 0;
};

// Empties the files that a call will write, so that an unwritable one fails early; removes them if
// the call fails.
class EmptiedFiles {
 public:
  explicit EmptiedFiles(const Paths& files) {
    for (const Path& file : files) {
      const int descriptor =
          ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NONBLOCK | O_CLOEXEC, 0666);
      if (descriptor < 0) {
        const std::error_code why(errno, std::generic_category());
        Remove();
        throw std::filesystem::filesystem_error("a signature's file cannot be written", file, why);
      }
      ::close(descriptor);
      files_.push_back(file);
    }
  }
  ~EmptiedFiles() { Remove(); }
  EmptiedFiles(const EmptiedFiles&) = delete;
  EmptiedFiles& operator=(const EmptiedFiles&) = delete;

  void Keep() { files_.clear(); }

 private:
  // Only regular files: a device or a link must stay.
  void Remove() const {
    for (const Path& file : files_) {
      std::error_code ignored;
      if (std::filesystem::is_regular_file(std::filesystem::symlink_status(file, ignored))) {
        std::filesystem::remove(file, ignored);
      }
    }
  }

  Paths files_;
};

// Whether these are the strokes that this process got last time.
inline bool AreLastStrokes(const std::string& strokes) {
  static std::optional<std::size_t> last;
  const std::size_t hash = std::hash<std::string>{}(strokes);
  return std::exchange(last, hash) == hash;
}

}  // namespace detail

class Terminal {
 public:
  // Port 0 is USB, n the serial device /dev/ttyS(n-1). Only Inform and List use the serial port;
  // all others use USB with any port.
  explicit Terminal(int port = 0, int baud = 115200) : port_(port), baud_(baud) {}

  // ---- The terminal itself

  // Returns a description as one JSON object (DEV_CommCall).
  [[nodiscard]] std::string Describe() const {
    std::string json(kDescriptionRoom, '\0');
    int length = static_cast<int>(json.size());
    const std::string request = std::string("{\"RequestBaudRate\": ").append(std::to_string(baud_)) + "}";
    Check("DEV_CommCall", DEV_CommCall(request.c_str(), 0, json.data(), &length));
    json.resize(static_cast<std::size_t>(length));
    return json;
  }

  // Ends the call of another thread, which throws an Error that is cancelled(), and closes the
  // terminal's screen (MP_CancelCurrentOperation). Any thread. Takes 0.6 seconds or more, and a few
  // seconds when a file was being sent: the terminal still waits for the rest of it and does not
  // answer. Throws only if the terminal cannot be opened.
  void Cancel() const {
    const int status = detail::Cancels::All().During(
        [this] { return MP_CancelCurrentOperation(nullptr, nullptr, baud_, 0); });
    if (!MayComeOfCancel(status)) Check("MP_CancelCurrentOperation", status);
  }

  // ---- Screens

  // Shows a teller's card and returns at once (MP_StartElectronicCard).
  void ShowTeller(const Teller& teller, int seconds = 60) const {
    Check("MP_StartElectronicCard",
          MP_StartElectronicCard(nullptr, nullptr, baud_, seconds, In(teller.name), In(teller.number),
                                 teller.stars, In(teller.photo)));
  }

  // Sets the card that Rate shows from now on (MP_SetEvaluateInfo).
  void SetTeller(const Teller& teller) const {
    Check("MP_SetEvaluateInfo", MP_SetEvaluateInfo(nullptr, nullptr, baud_, In(teller.name),
                                                   In(teller.number), teller.stars, In(teller.photo)));
  }

  // Asks for a rating (MP_StartEvaluate). Returns 1, 2 or 3 as the customer chose; 4 for no rating:
  // the terminal does not distinguish Cancel from a time-out; no value for any other answer.
  [[nodiscard]] std::optional<int> Rate(int seconds = 30) const {
    char value = '\0';
    Call("MP_StartEvaluate", [&] { return MP_StartEvaluate(nullptr, nullptr, baud_, seconds, &value); });
    return value == '\0' ? std::nullopt : std::optional<int>(value - '0');
  }

  // Shows a message and waits for a key: 0 confirmed, 1 refused, 3 the customer's time ran out, 4
  // every other answer (GWQ_StartInfo).
  [[nodiscard]] unsigned Inform(const std::string& message, int seconds = 30) const {
    unsigned key = 0;
    Call("GWQ_StartInfo", [&] { return GWQ_StartInfo(port_, baud_, seconds, In(message), &key); });
    return key;
  }

  // Shows a page and returns at once (MP_StartInfoHtml).
  void ShowHtml(const std::string& page, int seconds = 60) const {
    Check("MP_StartInfoHtml", MP_StartInfoHtml(nullptr, nullptr, baud_, seconds, 0, In(page), nullptr, 0));
  }

  // Shows a page and waits for a key: 0 confirmed, 1 refused, 2 the customer's time ran out
  // (MP_StartInfoHtml).
  [[nodiscard]] int AskHtml(const std::string& page, int seconds = 60, int countdown = 0) const {
    int key = 0;
    Call("MP_StartInfoHtml",
         [&] { return MP_StartInfoHtml(nullptr, nullptr, baud_, seconds, 1, In(page), &key, countdown); });
    return key;
  }

  // Prompts for a number of at most 20 digits; with `most_digits` 0 the terminal decides
  // (PN_GetInNo). Returns an empty text when the customer cancels, enters nothing, or lets the time
  // run out: the terminal's answer is the same.
  [[nodiscard]] std::string AskNumber(const std::string& prompt, int seconds = 30, int most_digits = 0,
                                      int display = 0) const {
    return TextOf("PN_GetInNo", [&](char* out) {
      return PN_GetInNo(port_, nullptr, baud_, seconds, most_digits, display, In(prompt), out);
    });
  }

  // Shows two texts and returns the terminal's answer once the customer confirms (MP_CheckOut_All).
  [[nodiscard]] std::string CheckOut(const std::string& first, const std::string& second,
                                     int seconds = 60) const {
    return TextOf(
        "MP_CheckOut_All",
        [&](char* out) {
          return MP_CheckOut_All(nullptr, nullptr, baud_, seconds, In(first), In(second), out);
        },
        seconds);
  }

  // ---- Documents

  // Shows documents and returns once they are on the terminal, under their names on the host; on
  // the screen the names are GBK (MP_ShowPDF).
  void ShowDocuments(const Paths& documents, int seconds = 60) const {
    Call("MP_ShowPDF",
         [&] { return MP_ShowPDF(nullptr, nullptr, baud_, seconds, Listed(documents).c_str()); });
  }

  // Shows documents and returns whether the customer agrees (MP_ConfirmPDF).
  [[nodiscard]] bool ConfirmDocuments(const Paths& documents, int seconds = 60) const {
    int refused = 2;
    Call(
        "MP_ConfirmPDF",
        [&] { return MP_ConfirmPDF(nullptr, nullptr, baud_, seconds, Listed(documents).c_str(), &refused); },
        seconds);
    return refused == 0;
  }

  // Asks the customer to sign documents (MP_SignPDF, MP_SignPDF_Voice). `place` is where to sign,
  // in the terminal's own form; `voice` is spoken.
  //
  // The picture is written to `picture`, the strokes to "hw.data" in the same directory. Both files
  // are emptied first, so that a directory that cannot be written throws
  // std::filesystem::filesystem_error before the customer is asked; both are removed when the call
  // fails, so that no signature of an earlier customer is left there.
  //
  // The terminal, too, keeps its last signature, and the library fetches it even when the wait for
  // the customer failed, so the result is not always new. Rejected are: any signature when a Cancel
  // of this process came during the call (an Error that is cancelled()); and, after a terminal that
  // did not answer for the whole time, the signature that this process got last time
  // (OldSignature). Not detected: after such a silence, or after a cancel that was not made by
  // Cancel, a signature that the terminal had before this process began, or that another program
  // fetched.
  [[nodiscard]] Signature SignDocuments(const Paths& documents, const Path& picture, const std::string& place,
                                        const std::optional<std::string>& voice = std::nullopt,
                                        int seconds = 120) const {
    const Path target = std::filesystem::absolute(picture);
    const Path strokes = target.parent_path() / "hw.data";
    const std::string paths = Listed(documents);
    const char* where = In(place);
    const char* spoken = In(voice);
    detail::EmptiedFiles files({target, strokes});
    // The strokes are read from their file because their size is not known before.
    std::string signed_strokes =
        spoken == nullptr ? Signed("MP_SignPDF", strokes, seconds,
                                   [&] {
                                     return MP_SignPDF(nullptr, kChannel, baud_, seconds, paths.c_str(),
                                                       where, target.c_str(), nullptr);
                                   })
                          : Signed("MP_SignPDF_Voice", strokes, seconds, [&] {
                              return MP_SignPDF_Voice(nullptr, kChannel, baud_, seconds, paths.c_str(), where,
                                                      spoken, target.c_str(), nullptr);
                            });
    files.Keep();
    return {target, std::move(signed_strokes)};
  }

  // ---- Files

  // Sends a file and returns its path on the terminal, "/tmp/" and its name on the host
  // (pushFileToZ11).
  std::string Push(const Path& file) const {  // NOLINT(readability-convert-member-functions-to-static)
    return TextOf("pushFileToZ11", [&](char* out) { return pushFileToZ11(Listed({file}).c_str(), out); });
  }

  // Fetches a file from the terminal; `file` is overwritten. The place is sent as it is (PullFile).
  void Pull(const std::string& place, const Path& file) const {
    std::string command = std::string("\x1B[0PULLFILE\x02").append(In(place)) + "\x03";
    std::string target = std::filesystem::absolute(file).string();
    Call("PullFile", [&] {
      return PullFile(0, *kChannel, baud_, kPullMs, static_cast<int>(command.size()), command.data(),
                      target.data());
    });
  }

  // Returns the names of the terminal's files as they are there, GBK, separated by "|"
  // (GetVideoList).
  [[nodiscard]] std::string List(Media media) const {
    return TextOf("GetVideoList", [&](char* out) {
      return GetVideoList(port_, *kChannel, baud_, static_cast<int>(media), out, kRoom);
    });
  }

  // ---- PIN pad

  // Sets encryption type, PIN length, end rule and fill type, whose values the pad defines
  // (PN_SetPinPadParameter).
  void SetPinEntry(int algorithm, int digits, int end_rule = 0, const std::string& fill = "F") const {
    Check("PN_SetPinPadParameter",
          PN_SetPinPadParameter(port_, nullptr, baud_, algorithm, digits, end_rule, In(fill)));
  }

  // Returns the key in hexadecimal: the modulus for algorithm 1 (RSA), X and Y for 2 (SM2)
  // (PN_ObtainPublicKey).
  [[nodiscard]] std::string PublicKey(int algorithm, int bits) const {
    return TextOf("PN_ObtainPublicKey",
                  [&](char* out) { return PN_ObtainPublicKey(port_, nullptr, baud_, algorithm, bits, out); });
  }

  // Makes the pad create a factor, for which the bank prepares a working key (PN_ObtainFactor).
  [[nodiscard]] std::string NewFactor(int key_type = 1) const {
    return TextOf("PN_ObtainFactor", [&](char* out) {
      return PN_ObtainFactor(port_, nullptr, baud_, std::to_string(key_type).c_str(), out);
    });
  }

  // Loads a working key (PN_DownloadPinPadWK). The encrypted key is hexadecimal; no byte of it is
  // zero.
  void LoadWorkingKey(const std::string& enciphered, const std::string& factor, const std::string& verify_key,
                      int key_type = 1) const {
    Check("PN_DownloadPinPadWK",
          PN_DownloadPinPadWK(port_, nullptr, baud_, In(factor), std::to_string(key_type).c_str(),
                              In(enciphered), In(verify_key)));
  }

  // Prompts the customer for a PIN and returns its PIN block (PN_GetPinBlockShowString).
  [[nodiscard]] std::vector<unsigned char> PinBlock(const PinRequest& request) const {
    std::string factor(kRoom + 1, '\0');
    std::vector<unsigned char> block(kRoom + 1);
    int length = request.digits;
    const int kind = request.account ? 1 : 5;
    const int its_seconds = request.seconds & 0xFF;  // all that the pad gets of it
    Call(
        "PN_GetPinBlockShowString",
        [&] {
          return PN_GetPinBlockShowString(port_, nullptr, baud_, request.seconds, request.algorithm,
                                          request.sound, kind, In(request.account), factor.data(),
                                          block.data(), &length, In(request.prompt));
        },
        its_seconds);
    block.resize(static_cast<std::size_t>(length));
    return block;
  }

 private:
  static constexpr int kRoom = 4096;  // more than any answer that comes as text
  static constexpr int kDescriptionRoom = 1 << 16;
  static constexpr std::size_t kLongestList = 1023;
  static constexpr int kPullMs = 3000;
  static constexpr char kChannel[] = "9";

  static void Check(const char* call, int status, bool time_is_over = false) {
    if (status != GWQ_OK) throw Error(call, status, time_is_over, detail::LastFailure(call, status));
  }

  // The statuses of an exchange that is cancelled, and of the close command after a cut transfer.
  static bool MayComeOfCancel(int status) {
    return status == GWQ_CANCELLED || status == GWQ_SEND_FAILED || status == GWQ_READ_FAILED ||
           status == GWQ_NO_ANSWER;
  }

  // A call that a cancel may end; `seconds` is the customer's time, if it waits for them.
  template <typename Function>
  static void Call(const char* call, Function function, std::optional<int> seconds = std::nullopt) {
    // The terminal's clock may be a little faster than this machine's.
    constexpr double kMostOfTheTime = 0.9;
    const unsigned mark = detail::Cancels::All().Mark();
    const auto begun = std::chrono::steady_clock::now();
    const int status = function();
    const std::chrono::duration<double> lasted = std::chrono::steady_clock::now() - begun;
    const bool may_be_cancel = MayComeOfCancel(status) || status == GWQ_REFUSED;
    if (may_be_cancel && detail::Cancels::All().CameSince(mark)) throw Error(call, GWQ_CANCELLED);
    Check(call, status, seconds && lasted.count() >= kMostOfTheTime * *seconds);
  }

  template <typename Function>
  static std::string Signed(const char* call, const Path& strokes_file, int seconds, Function function) {
    // The library waits 3 s longer than the customer has; one second is for rounding.
    constexpr std::chrono::seconds kSilence(2);
    const unsigned mark = detail::Cancels::All().MarkWhenIdle();
    const auto begun = std::chrono::steady_clock::now();
    Call(call, function, seconds);
    const bool silent = std::chrono::steady_clock::now() - begun >= std::chrono::seconds(seconds) + kSilence;
    std::ifstream file(strokes_file, std::ios::binary);
    std::string strokes{std::istreambuf_iterator<char>(file), {}};
    const bool again = detail::AreLastStrokes(strokes);
    if (detail::Cancels::All().CameSince(mark)) throw Error(call, GWQ_CANCELLED);
    if (again && silent) throw OldSignature(call);
    return strokes;
  }

  template <typename Function>
  static std::string TextOf(const char* call, Function function, std::optional<int> seconds = std::nullopt) {
    std::string out(kRoom + 1, '\0');
    Call(
        call, [&] { return function(out.data()); }, seconds);
    out.resize(out.find('\0'));
    return out;
  }

  static const char* In(const std::string& text) {
    if (text.find('\0') != std::string::npos) throw std::invalid_argument("a text with a zero character");
    return text.c_str();
  }
  static const char* In(const std::optional<std::string>& text) { return text ? In(*text) : nullptr; }

  // Absolute, because the library needs a "/" before a file's name.
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
