// SPDX-License-Identifier: MIT
#include "device/screens/screen_commands.h"

#include <algorithm>
#include <array>
#include <utility>

#include "device/files/file_names.h"
#include "protocol/split_form.h"

namespace gwq::terminal::device {

using protocol::Match;
using protocol::Row;
namespace {

constexpr int kLongestTime = 999;
constexpr int kHeadPhotoType = 2;
constexpr const char* kPageFile = "/tmp/infoviewerex.html";

constexpr const char* kDone = "\x02\xAA\x03";
constexpr const char* kAnswerF =
    "\x02"
    "f\x03";
constexpr const char* kAnswerW =
    "\x02"
    "w\x03";

using Role = ScreenKey::Role;

Time Seconds(int seconds) {
  return std::chrono::seconds(std::min(seconds, kLongestTime));
}

Screen MakeScreen(ScreenKind kind, std::string title, Time time) {
  Screen screen;
  screen.kind = kind;
  screen.title = std::move(title);
  screen.time_left = time;
  return screen;
}

// The text before the first `mark`, which goes with it; all of it when there is none.
std::string_view TakeField(std::string_view& fields, char mark) {
  const std::size_t end = std::min(fields.find(mark), fields.size());
  const std::string_view field = fields.substr(0, end);
  fields.remove_prefix(std::min(end + 1, fields.size()));
  return field;
}

// Whatever the bytes are, something is shown.
std::string ShownText(std::string_view bytes) {
  if (auto text = TextFromHost(bytes)) return std::move(*text);
  std::string text(bytes);
  std::replace_if(
      text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) > 0x7F; }, '?');
  return text;
}

std::optional<std::string> ReadSplitText(std::string_view split) {
  const auto bytes =
      protocol::MergeSplit({reinterpret_cast<const std::uint8_t*>(split.data()), split.size()});
  if (!bytes) return std::nullopt;
  return ShownText({reinterpret_cast<const char*>(bytes->data()), bytes->size()});
}

std::optional<TellerCard> ReadCard(std::string_view fields) {
  TellerCard card;
  card.name = ShownText(TakeField(fields, '|'));
  card.number = ShownText(TakeField(fields, '|'));
  const std::string_view stars = TakeField(fields, '|');
  const bool fits = stars.size() == 1 && stars[0] >= '0' && stars[0] <= '0' + kMaxStars;
  if (!fits) return std::nullopt;
  card.stars = stars[0] - '0';
  card.photo = ShownText(fields);
  return card;
}

std::vector<ScreenKey> InformationKeys() {
  return {{Role::kConfirm, "0", "Confirm", "B0F"}, {Role::kCancel, "1", "Cancel", "B1F"}};
}

std::vector<ScreenKey> SigningKeys() {
  return {{Role::kSign, "sign", "Sign", kDone}, {Role::kCancel, "cancel", "Cancel", kAnswerF}};
}

// Their names as hosts send the page, by its type.
std::optional<std::string> HandSignPage(int page_type) {
  constexpr std::array<const char*, 3> kPages{"/tmp/infoviewer.html", "/tmp/infoviewer.jpg",
                                              "/tmp/infoviewer.pdf"};
  if (page_type < 1 || page_type > 3) return std::nullopt;
  return kPages.at(static_cast<std::size_t>(page_type) - 1);
}

}  // namespace

void ScreenCommands::AddTo(TextCommands& table) {
  AddEvaluation(table);
  AddInformation(table);
  AddDocuments(table);
  AddOthers(table);
}

void ScreenCommands::AddEvaluation(TextCommands& table) {
  table.Add(Row("evaluation time-out"),
            [this](const Match& match) { SetTimeout(evaluation_time_, match.numbers[0]); });
  table.Add(Row("OPINFODPUTF8"), [this](const Match& match) { ShowCard(match.text); });
  table.Add(Row("SETEVALINFOUTF8"), [this](const Match& match) { (void)SetCard(match.text); });
  table.Add(Row("teller card"), [this](const Match& match) { (void)SetCard(match.text); });
  table.Add(Row("start evaluation"), [this](const Match&) { StartEvaluation(); });
  table.Add(Row("start evaluation", "short"), [this](const Match&) { StartEvaluation(); });
  table.Add(Row("close evaluation"), [this](const Match&) { screens_.Close(kEvaluationChannel); });
}

void ScreenCommands::AddInformation(TextCommands& table) {
  table.Add(Row("information time-out"),
            [this](const Match& match) { SetTimeout(information_time_, match.numbers[0]); });
  table.Add(Row("close information"), [this](const Match&) { screens_.Close(kInformationChannel); });
  table.Add(Row("information"), [this](const Match& match) { StartInformation(match.text); });
  table.Add(Row("SETHTMLBTNTIME"), [this](const Match& match) {
    host_.Describe(" " + std::to_string(match.numbers[0]) + " s");
    countdown_ = match.numbers[0];
  });
  table.Add(Row("HTML"), [this](const Match& match) { StartHtml(match.text, false); });
  table.Add(Row("SHOWHTMLUTF8"), [this](const Match& match) { ShowHtml(match.text); });
  table.Add(Row("STARTSCREENSHOTUTF8"), [this](const Match& match) { StartHtml(match.text, true); });
  table.Add(Row("YCSTARTINFOHTMLEXUTF8"),
            [this](const Match& match) { StartPageFile(match.numbers[0], match.text); });
}

void ScreenCommands::AddDocuments(TextCommands& table) {
  table.Add(Row("YCNEWSHOWFILE"),
            [this](const Match& match) { ShowDocuments(match.numbers[1], match.text); });
  table.Add(Row("YCNEWSTARTFILE"),
            [this](const Match& match) { ConfirmDocuments(match.numbers[1], match.text); });
  table.Add(Row("YCNEWSTARTSIGN"),
            [this](const Match& match) { StartSigning(match.numbers[1], match.text); });
  table.Add(Row("YCSETVOICECONTENT"), [this](const Match& match) { SetVoice(match.text); });
  table.Add(Row("YCISSUPPORTTZG"), [this](const Match&) { TellTzg(); });
  table.Add(Row("YCNEWSTARTZGTSIGN"), [this](const Match& match) { StartTzgSigning(match); });
  table.Add(Row("HANDSIGN"),
            [this](const Match& match) { StartHandSign(match.numbers[0], match.numbers[1]); });
}

void ScreenCommands::AddOthers(TextCommands& table) {
  table.Add(Row("keypad time-out"),
            [this](const Match& match) { SetTimeout(keypad_time_, match.numbers[0]); });
  table.Add(Row("keypad"), [this](const Match&) { StartKeypad(0); });
  table.Add(Row("keypad", "hidden"), [this](const Match&) { StartKeypad(1); });
  table.Add(Row("close keypad"), [this](const Match&) { screens_.Close(kKeypadChannel); });
  table.Add(Row("YCCHECKOUTALLUTF8"),
            [this](const Match& match) { StartCheckout(match.numbers[0], match.text); });
  table.Add(Row("CLOSECURPROGRAM"), [this](const Match&) { CloseProgram(); });
}

void ScreenCommands::SetTimeout(Time& timeout, int seconds) {
  host_.Describe(" " + std::to_string(seconds) + " s");
  timeout = Seconds(seconds);
}

bool ScreenCommands::SetCard(std::string_view fields) {
  auto card = ReadCard(fields);
  host_.Describe(card ? "" : ", damaged");
  if (!card) return false;
  const auto path = MediaPath(kHeadPhotoType, card->photo);
  if (path && IsThere(*path)) card->photo_path = *path;
  card_ = std::move(card);
  return true;
}

void ScreenCommands::ShowCard(std::string_view fields) {
  if (!SetCard(fields)) return;
  Screen screen = MakeScreen(ScreenKind::kTellerCard, "At your service", evaluation_time_);
  screen.teller = card_;
  screens_.Show(std::move(screen));
}

void ScreenCommands::StartEvaluation() {
  Screen screen = MakeScreen(ScreenKind::kEvaluation, "Please rate our service", evaluation_time_);
  screen.teller = card_;
  screen.keys = {{Role::kPlain, "1", "Poor", "B1F"},
                 {Role::kPlain, "2", "Fair", "B2F"},
                 {Role::kConfirm, "3", "Good", "B3F"},
                 {Role::kCancel, "0", "No rating", "B0F"}};
  screen.late_answer = "B0F";
  screens_.Show(std::move(screen));
}

void ScreenCommands::StartInformation(std::string_view split_text) {
  auto text = ReadSplitText(split_text);
  if (!text) return AnswerRefusal(host_);
  Screen screen = MakeScreen(ScreenKind::kInformation, "Information", information_time_);
  screen.text = std::move(*text);
  screen.keys = InformationKeys();
  screen.late_answer = "B3F";
  screens_.Show(std::move(screen));
}

void ScreenCommands::ShowHtml(std::string_view split_page) {
  auto page = ReadSplitText(split_page);
  if (!page) return host_.Note("the page is damaged");
  Screen screen = MakeScreen(ScreenKind::kHtml, "Information", information_time_);
  screen.text = std::move(*page);
  screens_.Show(std::move(screen));
}

void ScreenCommands::StartHtml(std::string_view split_page, bool keeps_picture) {
  auto page = ReadSplitText(split_page);
  if (!page) return AnswerRefusal(host_);
  Screen screen = MakeScreen(ScreenKind::kHtml, "Information", information_time_);
  screen.text = std::move(*page);
  screen.keys = InformationKeys();
  screen.countdown = std::exchange(countdown_, 0);
  screen.keeps_picture = keeps_picture;
  screen.late_answer = "B3F";
  screens_.Show(std::move(screen));
}

// Behind the extra text there is a field that hosts leave empty.
void ScreenCommands::StartPageFile(int seconds, std::string_view fields) {
  auto extra = ReadSplitText(TakeField(fields, '#'));
  if (!extra || !IsThere(kPageFile)) return AnswerRefusal(host_);
  Screen screen = MakeScreen(ScreenKind::kHtml, "Information", Seconds(seconds));
  screen.documents = {kPageFile};
  screen.second_text = std::move(*extra);
  screen.keys = {{Role::kConfirm, "confirm", "Confirm", "BokF"},
                 {Role::kCancel, "cancel", "Cancel", "BcancelF"}};
  screen.late_answer = "B0F";
  screens_.Show(std::move(screen));
}

void ScreenCommands::StartKeypad(int mode) {
  host_.Describe(", mode " + std::to_string(mode));
  Screen screen = MakeScreen(ScreenKind::kKeypad, "Please key a number", keypad_time_);
  screen.hides_digits = mode == 1;
  screen.keys = {{Role::kConfirm, "confirm", "Confirm", "AF"}, {Role::kCancel, "cancel", "Cancel", "AF"}};
  screens_.Show(std::move(screen));
}

void ScreenCommands::ShowDocuments(int seconds, std::string_view list) {
  host_.Describe(" " + ShownName(list));
  auto documents = FindDocuments(list);
  if (!documents) return host_.Note("there is no such document");
  Screen screen = MakeScreen(ScreenKind::kDocument, "Document", Seconds(seconds));
  screen.documents = std::move(*documents);
  screens_.Show(std::move(screen));
}

void ScreenCommands::ConfirmDocuments(int seconds, std::string_view list) {
  host_.Describe(" " + ShownName(list));
  auto documents = FindDocuments(list);
  if (!documents) return AnswerRefusal(host_);
  Screen screen = MakeScreen(ScreenKind::kConfirm, "Please read and agree", Seconds(seconds));
  screen.documents = std::move(*documents);
  screen.keys = {{Role::kConfirm, "confirm", "Agree", kDone}, {Role::kCancel, "cancel", "Refuse", kAnswerF}};
  screen.late_answer = kAnswerW;
  screens_.Show(std::move(screen));
}

// Some hosts do not read the answer.
void ScreenCommands::SetVoice(std::string_view text) {
  host_.Describe(" (" + ShownSize(text.size()) + ")");
  voice_ = ShownText(text);
  AnswerDone(host_);
  host_.LetAnswersLapse();
}

void ScreenCommands::TellTzg() {
  if (settings_.tzg) return AnswerDone(host_);
  AnswerRefusal(host_);
}

void ScreenCommands::StartSigning(int seconds, std::string_view fields) {
  Sign(MakeScreen(ScreenKind::kSigning, "Please sign", Seconds(seconds)), fields);
}

void ScreenCommands::StartTzgSigning(const Match& match) {
  host_.Describe(", mode " + std::to_string(match.numbers[3]));
  if (!settings_.tzg) return AnswerRefusal(host_);
  Sign(MakeScreen(ScreenKind::kSigning, "Please sign", Seconds(match.numbers[1])), match.text);
}

void ScreenCommands::Sign(Screen screen, std::string_view fields) {
  screen.location = ShownText(TakeField(fields, '|'));
  auto documents = FindDocuments(fields);
  screen.voice = std::exchange(voice_, {});
  if (!documents) return AnswerRefusal(host_);
  screen.documents = std::move(*documents);
  screen.keys = SigningKeys();
  screen.late_answer = kAnswerW;
  screens_.Show(std::move(screen));
}

void ScreenCommands::StartHandSign(int page_type, int seconds) {
  host_.Describe(", page type " + std::to_string(page_type));
  const auto page = HandSignPage(page_type);
  if (!page || !IsThere(*page)) return AnswerRefusal(host_);
  Screen screen = MakeScreen(ScreenKind::kHandSign, "Please sign", Seconds(seconds));
  screen.documents = {*page};
  screen.keys = SigningKeys();
  screen.late_answer = kAnswerW;
  screens_.Show(std::move(screen));
}

// The codes for cancel and time-out are the other way round than in signing.
void ScreenCommands::StartCheckout(int seconds, std::string_view fields) {
  auto second = ReadSplitText(TakeField(fields, '#'));
  auto first = ReadSplitText(fields);
  if (!first || !second) return AnswerRefusal(host_);
  Screen screen = MakeScreen(ScreenKind::kCheckout, "Checkout", Seconds(seconds));
  screen.text = std::move(*first);
  screen.second_text = std::move(*second);
  screen.keys = {{Role::kConfirm, "confirm", "Confirm", "\x02\xAAok\x03"},
                 {Role::kCancel, "cancel", "Cancel", kAnswerW}};
  screen.late_answer = kAnswerF;
  screens_.Show(std::move(screen));
}

void ScreenCommands::CloseProgram() {
  screens_.CloseAny();
  entry_.Stop();
  host_.Withdraw();
  AnswerDone(host_);
}

// In GBK a "|" may be half of a character, so the list is cut up as a text.
ScreenCommands::Documents ScreenCommands::FindDocuments(std::string_view list) const {
  const auto names = NameFromHost(list);
  if (!names) return std::nullopt;
  std::vector<std::string> documents;
  for (std::string_view rest = *names; !rest.empty();) {
    documents.emplace_back(TakeField(rest, '|'));
    if (!IsThere(documents.back())) return std::nullopt;
  }
  return documents;
}

}  // namespace gwq::terminal::device
