#include <gwq/screens/html.h>

#include <array>
#include <cstdio>
#include <cstring>

#include <gwq/diag/log.h>
#include <gwq/files/pull.h>
#include <gwq/files/push.h>
#include <gwq/pinpad/counter.h>
#include <gwq/status_codes.h>
#include "codec/internal/gbk_text.h"
#include "diag/internal/log_gbk.h"
#include "diag/internal/pause.h"
#include "files/internal/private_file.h"
#include "frame/internal/operation.h"
#include "screens/internal/screen.h"

namespace gwq {
namespace {

constexpr Channel kScreen = Channel::kInformation;
constexpr int kKeyMarginMs = 2000;
constexpr int kPullTimeoutMs = 3000;
constexpr int kPauseMs = 100;
constexpr int kPauseBeforePullMs = 200;

constexpr int kConfirmed = 0;
constexpr int kNotShown = 2;
// The device's 3 is the caller's 2.
constexpr std::array kDisplayResults{Meaning{"B0F", kConfirmed}, Meaning{"B1F", 1}, Meaning{"B3F", 2}};

constexpr char kPageFile[] = "/tmp/infoviewerex.html";  // here and on the terminal
constexpr int kNamedFile = 255;
constexpr int kPushBaud = 9600;
constexpr char kPushChannel = '9';
constexpr auto kTimeoutWord = Gbk("超时");

// A page in split form, and the command that shows it.
class PageCommand {
 public:
  explicit PageCommand(std::string_view html) : page_(html), command_((html.size() + 15) * 2) {}

  // Whether there was memory for all of it. Without the first buffer the display result is not touched.
  bool Allocated(int& display) const {
    if (!page_.Copied()) return false;
    if (page_ && command_) return true;
    display = kNotShown;
    return false;
  }

  HeapCommand& Built(std::string_view word) {
    return command_ << "\x1B[2" << word << "\x02" << page_.text() << "\x03";
  }

 private:
  SplitCopy page_;
  HeapCommand command_;
};

int MissingArgument(int& display) {
  display = kNotShown;
  return GWQ_BAD_ARGUMENT;
}

void SetUpScreen(Line line, int timeout_s) {
  CloseScreen(line, kScreen);
  SetScreenTimeout(line, kScreen, timeout_s);
}

int ShowOnly(Line line, int timeout_s, PageCommand& page, int& display) {
  SetUpScreen(line, timeout_s);
  const int result = Tell(line, page.Built("SHOWHTMLUTF8"), kSendTimeoutMs);
  if (result == GWQ_OK) display = kConfirmed;
  return result;
}

int AskForKey(Line line, int timeout_s, HeapCommand& command, AnswerText<1024>& answer) {
  return Ask(line, command, answer, &EndOfRead3, WaitMs(timeout_s, kKeyMarginMs));
}

int TakeDisplayResult(std::optional<int> meaning, int& display) {
  if (!meaning) return GWQ_REFUSED;
  display = *meaning;
  return GWQ_OK;
}

int ShowAndWait(Line line, int timeout_s, int countdown_s, PageCommand& page, int& display) {
  SetUpScreen(line, timeout_s);
  PauseMs(kPauseMs);
  CommandText<64> countdown;
  countdown << "\x1B[2SETHTMLBTNTIME\x02" << countdown_s << "\x03";
  ICC_DPrintLogToFile("BtntimeTip nRet:%d", Tell(line, countdown, kSendTimeoutMs));
  PauseMs(kPauseMs);
  AnswerText<1024> answer;
  int result = AskForKey(line, timeout_s, page.Built("AUTF8"), answer);
  if (result != GWQ_OK) return result;
  result = TakeDisplayResult(MeaningOf(kDisplayResults, answer.text()), display);
  ICC_DPrintLogToFile("MP_StartInfoHtml *pnDisplayResult = %d", display);
  return result;
}

// Where the picture comes from and goes to.
struct Screenshot {
  char channel;
  const char* path;
};

int Fetch(Line line, const Screenshot& screenshot) {
  CommandText<1024> command;
  command << "\x1B[0PULLFILE\x02/tmp/capture.png\x03";
  PauseMs(kPauseBeforePullMs);
  const int result = PullFile(line.port, screenshot.channel, line.baud, kPullTimeoutMs, command.size(),
                              command.data(), const_cast<char*>(screenshot.path));
  if (result < 0) {
    LogGbk(Gbk("获取截图失败 nRet=%d"), result);
    return GWQ_REFUSED;
  }
  LogGbk(Gbk("获取截图成功"));
  return GWQ_OK;
}

// The picture counts as part of the customer's confirmation: without it there is none.
int TakeConfirmation(Line line, std::string_view answer, const Screenshot& screenshot, int& display) {
  const auto meaning = MeaningOf(kDisplayResults, answer);
  if (meaning == kConfirmed && Fetch(line, screenshot) != GWQ_OK) return GWQ_REFUSED;
  return TakeDisplayResult(meaning, display);
}

int ShowAndCapture(Line line, int timeout_s, const Screenshot& screenshot, PageCommand& page, int& display) {
  SetUpScreen(line, timeout_s);
  AnswerText<1024> answer;
  int result = AskForKey(line, timeout_s, page.Built("STARTSCREENSHOTUTF8"), answer);
  if (result != GWQ_OK) return result;
  result = TakeConfirmation(line, answer.text(), screenshot, display);
  ICC_DPrintLogToFile("MP_StartInfoHtmlScreenshot *pnDisplayResult = %d", display);
  return result;
}

bool IsHtml(const char* page) {
  return std::strstr(page, "<html") != nullptr && std::strstr(page, "</html>") != nullptr;
}

bool Put(const char* text, std::FILE* file) {
  return std::fputs(text, file) != EOF;
}

bool PutPage(const char* page, std::FILE* file) {
  if (IsHtml(page)) return Put(page, file);
  return Put("<pre><p style=\"font-size:32px;word-break:break-all;word-wrap:break-word\">", file) &&
         Put(page, file) && Put("</p></pre>", file);
}

bool WritePageFile(const char* page, PrivatePlace& place) {
  File file = place.Open();
  if (!file) return false;
  const bool written = PutPage(page, file.get());
  return std::fclose(file.release()) == 0 && written;
}

// A page that could not be written whole is not pushed.
int PushPage(const char* page) {
  PrivatePlace place(kPageFile);
  const int result = WritePageFile(page, place)
                         ? Z11DownLoadFile(0, kPushChannel, kPushBaud, kNamedFile, place.path(), kPageFile)
                         : static_cast<int>(GWQ_BAD_ARGUMENT);
  if (result != GWQ_OK) ICC_DPrintLogToFile("GWQDownLoadFile ERROR=%d", result);
  return result;
}

int AskForResult(int baud, int timeout_s, const char* extra, AnswerText<1024>& answer) {
  SecretArray<char, 256> split;
  CommandText<1024> command;
  command << "\x1B[2YCSTARTINFOHTMLEXUTF8\x02" << timeout_s << "#" << SplitInto(split.span(), extra) << "#"
          << "\x03";
  const int result = Ask({0, baud}, command, answer, &EndOfRead3, WaitMs(timeout_s, kAnswerMarginMs));
  ICC_DPrintLogToFile("iRet:%d", result);
  return result;
}

}  // namespace
}  // namespace gwq

int MP_StartInfoHtml(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout, int nModex,
                     const char* szHtml, int* pnDisplayResult, int nCountdownSec) {
  const gwq::Operation operation;
  ICC_DPrintLogToFile("MP_StartInfoHtml");
  ICC_DPrintLogToFile("nModex=%d", nModex);
  ICC_DPrintLogToFile("nCountdownSec=%d", nCountdownSec);
  int nowhere = 0;
  int& display = pnDisplayResult == nullptr ? nowhere : *pnDisplayResult;
  if (!gwq::Given(szHtml)) return gwq::MissingArgument(display);
  // Only logged: the UTF-8 command words are always used.
  ICC_DPrintLogToFile("isUtf8=%d", CheckUtf8version());
  gwq::PageCommand page(szHtml);
  if (!page.Allocated(display)) return GWQ_TOO_SMALL;
  const gwq::Line line{0, iBaudRate};
  if (gwq::Drain(line) == GWQ_NOT_OPENED) return GWQ_NOT_OPENED;
  const int result = nModex == 0 ? gwq::ShowOnly(line, iTimeout, page, display)
                                 : gwq::ShowAndWait(line, iTimeout, nCountdownSec, page, display);
  ICC_DPrintLogToFile("MP_StartInfoHtml nRet = %d", result);
  return result;
}

int MP_StartInfoHtmlScreenshot(void* /*ignored*/, const char* szLink, int iBaudRate, int iTimeout, int nModex,
                               const char* szHtml, const char* szScreenshotPath, int* pnDisplayResult) {
  const gwq::Operation operation;
  ICC_DPrintLogToFile("MP_StartInfoHtmlScreenshot");
  ICC_DPrintLogToFile("nModex=%d", nModex);
  int nowhere = 0;
  int& display = pnDisplayResult == nullptr ? nowhere : *pnDisplayResult;
  if (!gwq::Given(szHtml) || !gwq::Given(szScreenshotPath)) {
    ICC_DPrintLogToFile("MP_StartInfoHtmlScreenshot  ERR_PARAMS");
    return gwq::MissingArgument(display);
  }
  gwq::PageCommand page(szHtml);
  if (!page.Allocated(display)) return GWQ_TOO_SMALL;
  const gwq::Line line{0, iBaudRate};
  if (gwq::Drain(line) == GWQ_NOT_OPENED) return GWQ_NOT_OPENED;
  const gwq::Screenshot screenshot{szLink == nullptr ? '\0' : *szLink, szScreenshotPath};
  const int result = nModex == 0 ? gwq::ShowOnly(line, iTimeout, page, display)
                                 : gwq::ShowAndCapture(line, iTimeout, screenshot, page, display);
  ICC_DPrintLogToFile("MP_StartInfoHtmlScreenshot nRet = %d", result);
  return result;
}

int MP_StartInfoHtmlEx(void* /*ignored1*/, void* /*ignored2*/, int iBaudRate, int iTimeout,
                       const char* szExtraText, const char* szPage, char* szResult) {
  const gwq::Operation operation;
  if (!gwq::Given(szPage) || !gwq::IsCustomerTimeout(iTimeout)) return GWQ_BAD_ARGUMENT;
  if (szExtraText == nullptr || szResult == nullptr) return GWQ_BAD_ARGUMENT;
  if (const int result = gwq::PushPage(szPage); result != GWQ_OK) return result;
  gwq::AnswerText<1024> answer;
  const int result = gwq::AskForResult(iBaudRate, iTimeout, szExtraText, answer);
  if (result != GWQ_OK) return result;
  if (answer.text().starts_with("B0")) {
    gwq::CopyTerminated(gwq::kTimeoutWord.c_str(), szResult);
    return GWQ_NO_ANSWER;
  }
  gwq::CopyTerminated(gwq::WithoutMarks(answer.text()), szResult);
  ICC_DPrintLogToFile("result=%s", szResult);
  return GWQ_OK;
}
