// SPDX-License-Identifier: MIT
#include <gwq/screens/html.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string_view>

#include <gwq/diag/log.h>
#include <gwq/pinpad/counter.h>
#include <gwq/status_codes.h>
#include "codec/internal/gbk_text.h"
#include "diag/internal/log_gbk.h"
#include "diag/internal/pause.h"
#include "files/internal/private_file.h"
#include "files/internal/transfer.h"
#include "frame/internal/operation.h"
#include "screens/internal/screen.h"

namespace gwq {
namespace {

constexpr Channel kScreen = Channel::kInformation;
constexpr int kKeyMarginMs = 2000;
constexpr int kPauseMs = 100;

constexpr int kConfirmed = 0;
constexpr int kNotShown = 2;
// Contract: the terminal's 3 is the caller's 2.
constexpr std::array kDisplayResults{Meaning{"B0F", kConfirmed}, Meaning{"B1F", 1}, Meaning{"B3F", 2}};

constexpr char kPageFile[] = "/tmp/infoviewerex.html";  // on the host and on the terminal
constexpr auto kTimeoutWord = Gbk("超时");

// A page in split form, and the command that shows it.
class PageCommand {
 public:
  PageCommand(std::string_view word, std::string_view html)
      : page_(html), command_(kScreen, word, (html.size() + 15) * 2) {}

  // Whether there was memory for all of it.
  // Contract: without memory for the copy of the text the display result stays as it was; without
  // memory for the rest it is 2.
  bool IsAllocated(int& display) const {
    if (!page_.IsCopied()) return false;
    if (page_ && command_) return true;
    display = kNotShown;
    return false;
  }

  HeapCommand& Build() { return command_.Fields('|', page_.text()); }

 private:
  SplitCopy page_;
  HeapCommand command_;
};

int RejectArgument(int& display) {
  display = kNotShown;
  return GWQ_BAD_ARGUMENT;
}

// Contract: whether these two commands arrive does not count.
void SetUpScreen(Endpoint endpoint, int timeout_s) {
  CloseScreen(endpoint, kScreen);
  SetScreenTimeout(endpoint, kScreen, timeout_s);
}

int ShowOnly(Endpoint endpoint, int timeout_s, PageCommand& page, int& display) {
  SetUpScreen(endpoint, timeout_s);
  const int result = Tell(endpoint, page.Build(), kSendTimeoutMs);
  if (result == GWQ_OK) display = kConfirmed;
  return result;
}

int AskPageKey(Endpoint endpoint, int timeout_s, HeapCommand& command, AnswerText<1024>& answer) {
  return Ask(endpoint, command, answer, &EndOfRead3, WaitMs(timeout_s, kKeyMarginMs));
}

int StoreDisplayResult(std::optional<int> meaning, int& display) {
  if (!meaning) return GWQ_REFUSED;
  display = *meaning;
  return GWQ_OK;
}

int ShowAndWait(Endpoint endpoint, int timeout_s, int countdown_s, PageCommand& page, int& display) {
  SetUpScreen(endpoint, timeout_s);
  PauseMs(kPauseMs);
  Command<64> countdown(kScreen, "SETHTMLBTNTIME");
  const int told = Tell(endpoint, countdown.Fields('|', countdown_s), kSendTimeoutMs);
  ICC_DPrintLogToFile("BtntimeTip nRet:%d", told);
  PauseMs(kPauseMs);
  AnswerText<1024> answer;
  int result = AskPageKey(endpoint, timeout_s, page.Build(), answer);
  if (result != GWQ_OK) return result;
  result = StoreDisplayResult(MeaningOf(kDisplayResults, answer.text()), display);
  ICC_DPrintLogToFile("MP_StartInfoHtml *pnDisplayResult = %d", display);
  return result;
}

int FetchScreenshot(const char* path) {
  PauseMs(kPauseBeforePullMs);
  const int result = PullTo("/tmp/capture.png", path);
  if (result < 0) {
    LogGbk(Gbk("获取截图失败 nRet=%d"), result);
    return GWQ_REFUSED;
  }
  LogGbk(Gbk("获取截图成功"));
  return GWQ_OK;
}

// Contract: a confirmation without its screenshot is GWQ_REFUSED; the display result is unchanged.
int HandleConfirmation(std::string_view answer, const char* screenshot, int& display) {
  const auto meaning = MeaningOf(kDisplayResults, answer);
  if (meaning == kConfirmed && FetchScreenshot(screenshot) != GWQ_OK) return GWQ_REFUSED;
  return StoreDisplayResult(meaning, display);
}

int ShowAndCapture(Endpoint endpoint, int timeout_s, const char* screenshot, PageCommand& page,
                   int& display) {
  SetUpScreen(endpoint, timeout_s);
  AnswerText<1024> answer;
  int result = AskPageKey(endpoint, timeout_s, page.Build(), answer);
  if (result != GWQ_OK) return result;
  result = HandleConfirmation(answer.text(), screenshot, display);
  ICC_DPrintLogToFile("MP_StartInfoHtmlScreenshot *pnDisplayResult = %d", display);
  return result;
}

// Contract: "<html" and "</html>" are case-sensitive; a page without both is shown as plain text.
bool IsHtml(const char* page) {
  return std::strstr(page, "<html") != nullptr && std::strstr(page, "</html>") != nullptr;
}

bool WriteText(const char* text, std::FILE* file) {
  return std::fputs(text, file) != EOF;
}

bool WritePage(const char* page, std::FILE* file) {
  if (IsHtml(page)) return WriteText(page, file);
  return WriteText("<pre><p style=\"font-size:32px;word-break:break-all;word-wrap:break-word\">", file) &&
         WriteText(page, file) && WriteText("</p></pre>", file);
}

bool WritePageFile(const char* page, PrivateTempFile& target) {
  File file = target.Open();
  if (!file) return false;
  const bool written = WritePage(page, file.get());
  return std::fclose(file.release()) == 0 && written;
}

// Does not push a page that could not be written completely.
int PushPage(const char* page) {
  PrivateTempFile target(kPageFile);
  const int result = WritePageFile(page, target)
                         ? PushFile(kPushEndpoint, kNamedFile, target.path(), kPageFile)
                         : static_cast<int>(GWQ_BAD_ARGUMENT);
  if (result != GWQ_OK) ICC_DPrintLogToFile("GWQDownLoadFile ERROR=%d", result);
  return result;
}

int AskExtraPage(int baud, int timeout_s, const char* extra, AnswerText<1024>& answer) {
  SecretArray<char, 256> split;
  Command<1024> command(kScreen, "YCSTARTINFOHTMLEXUTF8");
  command.Fields('#', timeout_s, SplitInto(split.span(), extra), "");
  const int result = Ask({0, baud}, command, answer, &EndOfRead3, WaitMs(timeout_s, kAnswerMarginMs));
  ICC_DPrintLogToFile("iRet:%d", result);
  return result;
}

}  // namespace

int MP_StartInfoHtml(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout, int nModex,
                     const char* szHtml, int* pnDisplayResult, int nCountdownSec) {
  const Operation operation;
  ICC_DPrintLogToFile("MP_StartInfoHtml");
  ICC_DPrintLogToFile("nModex=%d", nModex);
  ICC_DPrintLogToFile("nCountdownSec=%d", nCountdownSec);
  int nowhere = 0;
  int& display = pnDisplayResult == nullptr ? nowhere : *pnDisplayResult;
  if (!IsSet(szHtml)) return RejectArgument(display);
  // Contract: only logged; the UTF-8 command words are always used.
  ICC_DPrintLogToFile("isUtf8=%d", CheckUtf8version());
  PageCommand page(nModex == 0 ? "SHOWHTMLUTF8" : "AUTF8", szHtml);
  if (!page.IsAllocated(display)) return GWQ_TOO_SMALL;
  const Endpoint endpoint{0, iBaudRate};
  if (const int status = DrainFirst(endpoint); status != GWQ_OK) return status;
  const int result = nModex == 0 ? ShowOnly(endpoint, iTimeout, page, display)
                                 : ShowAndWait(endpoint, iTimeout, nCountdownSec, page, display);
  ICC_DPrintLogToFile("MP_StartInfoHtml nRet = %d", result);
  return result;
}

int MP_StartInfoHtmlScreenshot(void* /*ignored1*/, const char* /*ignored2*/, int iBaudRate, int iTimeout,
                               int nModex, const char* szHtml, const char* szScreenshotPath,
                               int* pnDisplayResult) {
  const Operation operation;
  ICC_DPrintLogToFile("MP_StartInfoHtmlScreenshot");
  ICC_DPrintLogToFile("nModex=%d", nModex);
  int nowhere = 0;
  int& display = pnDisplayResult == nullptr ? nowhere : *pnDisplayResult;
  if (!IsSet(szHtml) || !IsSet(szScreenshotPath)) {
    ICC_DPrintLogToFile("MP_StartInfoHtmlScreenshot  ERR_PARAMS");
    return RejectArgument(display);
  }
  PageCommand page(nModex == 0 ? "SHOWHTMLUTF8" : "STARTSCREENSHOTUTF8", szHtml);
  if (!page.IsAllocated(display)) return GWQ_TOO_SMALL;
  const Endpoint endpoint{0, iBaudRate};
  if (const int status = DrainFirst(endpoint); status != GWQ_OK) return status;
  const int result = nModex == 0 ? ShowOnly(endpoint, iTimeout, page, display)
                                 : ShowAndCapture(endpoint, iTimeout, szScreenshotPath, page, display);
  ICC_DPrintLogToFile("MP_StartInfoHtmlScreenshot nRet = %d", result);
  return result;
}

int MP_StartInfoHtmlEx(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout,
                       const char* szExtraText, const char* szPage, char* szResult) {
  const Operation operation;
  if (!IsSet(szPage) || !IsCustomerTimeout(iTimeout)) return GWQ_BAD_ARGUMENT;
  if (szExtraText == nullptr || szResult == nullptr) return GWQ_BAD_ARGUMENT;
  // Contract: no drain; the push reads what an earlier screen has left as its acknowledgement.
  if (const int result = PushPage(szPage); result != GWQ_OK) return result;
  AnswerText<1024> answer;
  const int result = AskExtraPage(iBaudRate, iTimeout, szExtraText, answer);
  if (result != GWQ_OK) return result;
  if (answer.text().starts_with("B0")) {
    CopyTerminated(kTimeoutWord.c_str(), szResult);
    return GWQ_NO_ANSWER;
  }
  CopyTerminated(WithoutMarks(answer.text()), szResult);
  ICC_DPrintLogToFile("result=%s", szResult);
  return GWQ_OK;
}

}  // namespace gwq
