// SPDX-License-Identifier: MIT
// How long a customer function takes until it has asked: gwq_bench_asked TABLE [REPETITIONS], under
// gwq-terminal. Each is called with drains as they are without a setting and with drains of 20 ms;
// then what it had sent until then is sent again by bare libusb calls. The table goes to a file,
// because the library prints when it is loaded.
//
// This program's libusb_open, libusb_close, libusb_bulk_transfer and nanosleep are found before the
// real ones: they note what the library does.
#include <dlfcn.h>
#include <libusb-1.0/libusb.h>
#include <time.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <gwq/extra.h>
#include <gwq/gwq.h>
#include "pin_entry.h"
#include "usb_ids.h"

namespace gwq::bench {
namespace {

using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

constexpr int kReport = 1024;
constexpr int kBaud = 115200;
constexpr int kSeconds = 30;
constexpr int kDrainMs = 20;
constexpr char kAccount[] = "6225880123456789";
constexpr char kPage[] = "<html><body>Welcome</body></html>";

double MsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

void Require(bool holds, const std::string& what) {
  if (holds) return;
  std::fprintf(stderr, "gwq_bench_asked: %s\n", what.c_str());
  std::exit(1);
}

// ------------------------------------------------------------------ what the library does

// A report sent, or (empty) one received.
using Step = std::string;
using Exchange = std::vector<Step>;

struct Recording {
  std::string_view question;  // in the first bytes of a report
  Clock::time_point start;
  bool runs = false;
  double asked_ms = 0;  // 0: not yet
  double paused_ms = 0;
  std::vector<Exchange> exchanges;
};
Recording g_recording;

bool IsBeforeQuestion() {
  return g_recording.runs && g_recording.asked_ms == 0;
}

void NoteSent(std::string_view report) {
  constexpr std::size_t kBeginning = 64;
  if (!IsBeforeQuestion()) return;
  g_recording.exchanges.back().emplace_back(report);
  if (report.substr(0, kBeginning).find(g_recording.question) == std::string_view::npos) return;
  g_recording.asked_ms = MsSince(g_recording.start);
}

template <typename Function>
Function Real(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace
}  // namespace gwq::bench

extern "C" {

__attribute__((visibility("default"))) int libusb_open(libusb_device* device, libusb_device_handle** handle) {
  static const auto s_real = gwq::bench::Real<decltype(&libusb_open)>("libusb_open");
  if (gwq::bench::IsBeforeQuestion()) gwq::bench::g_recording.exchanges.emplace_back();
  return s_real(device, handle);
}

__attribute__((visibility("default"))) int libusb_bulk_transfer(libusb_device_handle* handle,
                                                                unsigned char endpoint, unsigned char* data,
                                                                int length, int* moved, unsigned timeout_ms) {
  static const auto s_real = gwq::bench::Real<decltype(&libusb_bulk_transfer)>("libusb_bulk_transfer");
  const int result = s_real(handle, endpoint, data, length, moved, timeout_ms);
  if ((endpoint & LIBUSB_ENDPOINT_IN) == 0) {
    gwq::bench::NoteSent({reinterpret_cast<const char*>(data), static_cast<std::size_t>(length)});
  } else if (*moved > 0 && gwq::bench::IsBeforeQuestion()) {
    gwq::bench::g_recording.exchanges.back().emplace_back();
  }
  return result;
}

__attribute__((visibility("default"))) int nanosleep(const timespec* wanted, timespec* left) {
  static const auto s_real = gwq::bench::Real<int (*)(const timespec*, timespec*)>("nanosleep");
  if (gwq::bench::IsBeforeQuestion()) {
    gwq::bench::g_recording.paused_ms +=
        static_cast<double>(wanted->tv_sec) * 1e3 + static_cast<double>(wanted->tv_nsec) / 1e6;
  }
  return s_real(wanted, left);
}

}  // extern "C"

namespace gwq::bench {
namespace {

// ------------------------------------------------------------------ the same by bare calls

class BareLink {
 public:
  BareLink() {
    libusb_get_device_list(nullptr, &list_);
    for (libusb_device** device = list_; *device != nullptr && handle_ == nullptr; ++device) {
      libusb_device_descriptor descriptor{};
      libusb_get_device_descriptor(*device, &descriptor);
      if (descriptor.idVendor == kUsbIdentities[0].vid && descriptor.idProduct == kUsbIdentities[0].pid) {
        libusb_open(*device, &handle_);
      }
    }
    Require(handle_ != nullptr && libusb_claim_interface(handle_, 0) == 0, "the bare link does not open");
  }
  ~BareLink() {
    libusb_close(handle_);
    libusb_free_device_list(list_, 1);
  }
  BareLink(const BareLink&) = delete;
  BareLink& operator=(const BareLink&) = delete;

  void Write(Step report) {
    int moved = 0;
    libusb_bulk_transfer(handle_, 0x02, reinterpret_cast<unsigned char*>(report.data()), kReport, &moved,
                         1000);
    Require(moved == kReport, "a bare report is not taken");
  }
  // Returns whether a report has come.
  bool Read(unsigned timeout_ms) {
    std::array<unsigned char, kReport> report{};
    int moved = 0;
    libusb_bulk_transfer(handle_, 0x81, report.data(), kReport, &moved, timeout_ms);
    return moved > 0;
  }

 private:
  libusb_device** list_ = nullptr;
  libusb_device_handle* handle_ = nullptr;
};

void RunBare(const Exchange& exchange, BareLink& link) {
  for (const Step& step : exchange) {
    if (step.empty()) {
      Require(link.Read(5000), "a bare answer does not come");
    } else {
      link.Write(step);
    }
  }
}

// Exchanges in which nothing is sent are drains.
double BareMs(const std::vector<Exchange>& exchanges) {
  const Clock::time_point start = Clock::now();
  double asked_ms = 0;
  for (const Exchange& exchange : exchanges) {
    if (std::all_of(exchange.begin(), exchange.end(), [](const Step& step) { return step.empty(); }))
      continue;
    BareLink link;
    RunBare(exchange, link);
    if (&exchange != &exchanges.back()) continue;
    asked_ms = MsSince(start);
    while (link.Read(500)) continue;  // the customer's answer
  }
  return asked_ms;
}

// ------------------------------------------------------------------ the functions

struct Function {
  const char* name;
  std::string_view question;
  double aim_ms;
  std::function<int()> call;
};

struct Outputs {
  std::array<char, 1 << 20> text;
  std::array<char, 4096> factor;
  int number;
  unsigned rating;
};

std::vector<Function> Functions(const fs::path& directory, Outputs& out) {
  constexpr int kTripleDes = 0;
  constexpr int kBound = 1;
  constexpr double kAimMs = 50;
  const auto path = [directory](const char* name) { return (directory / name).string(); };
  const std::string document = path("agreement.pdf");
  const std::string picture = path("picture.png");
  std::ofstream(document) << "%PDF-1.4\n%%EOF\n";
  char* const text = out.text.data();
  return {
      {"PN_GetPinBlock", "3005", 100,
       [&out, text] {
         out.number = example::kPinDigits;
         return PN_GetPinBlock(0, nullptr, kBaud, kSeconds, kTripleDes, 0, kBound, kAccount,
                               out.factor.data(), text, &out.number);
       }},
      {"PN_GetPinBlockShowString", "4030", kAimMs,
       [&out, text] {
         out.number = example::kPinDigits;
         return PN_GetPinBlockShowString(0, nullptr, kBaud, kSeconds, kTripleDes, 0, kBound, kAccount,
                                         out.factor.data(), text, &out.number, "PIN");
       }},
      {"PN_GetPin", "3005", kAimMs,
       [&out, text] {
         out.number = example::kPinDigits;
         return PN_GetPin(0, nullptr, kBaud, kSeconds, &out.number, text);
       }},
      {"GWQ_ReadPin", "\x82", kAimMs, [text] { return GWQ_ReadPin(0, kBaud, 0, kSeconds, text, 64); }},
      {"GWQ_ReadPinDES",
       "\x1B"
       "F",
       kAimMs, [text] { return GWQ_ReadPinDES(0, kBaud, 1, 0, kSeconds, text); }},
      {"GWQ_ReadPinAnsi", "\x1BI", kAimMs,
       [text] { return GWQ_ReadPinAnsi(0, kBaud, 1, 0, kSeconds, kAccount, text); }},
      {"PN_GetInNo", "GETINNO", kAimMs,
       [text] { return PN_GetInNo(0, nullptr, kBaud, kSeconds, 6, 0, "number", text); }},
      {"GWQ_StartEvaluator", "\x1B[4R", kAimMs,
       [&out] { return GWQ_StartEvaluator(0, kBaud, "Wang", "0123", 5, "", kSeconds, &out.rating); }},
      {"MP_StartEvaluate", "STARTEVAL", kAimMs,
       [text] { return MP_StartEvaluate(nullptr, nullptr, kBaud, kSeconds, text); }},
      {"MP_StartElectronicCard", "OPINFODP", kAimMs,
       [] { return MP_StartElectronicCard(nullptr, nullptr, kBaud, kSeconds, "Wang", "0123", 5, nullptr); }},
      {"GWQ_StartInfo", "\x1B[2A", kAimMs,
       [&out] { return GWQ_StartInfo(0, kBaud, kSeconds, "text", &out.rating); }},
      {"GWQ_StartKeyboard", "\x1BGM", kAimMs,
       [text] { return GWQ_StartKeyboard(0, kBaud, kSeconds, 0, text); }},
      {"MP_StartInfoHtml", "AUTF8", kAimMs,
       [&out] { return MP_StartInfoHtml(nullptr, nullptr, kBaud, kSeconds, 1, kPage, &out.number, 0); }},
      {"MP_StartInfoHtmlScreenshot", "STARTSCREENSHOT", kAimMs,
       [&out, picture] {
         return MP_StartInfoHtmlScreenshot(nullptr, "9", kBaud, kSeconds, 1, kPage, picture.c_str(),
                                           &out.number);
       }},
      {"MP_StartInfoHtmlEx", "STARTINFOHTMLEX", kAimMs,
       [text] { return MP_StartInfoHtmlEx(nullptr, nullptr, kBaud, kSeconds, "", kPage, text); }},
      {"MP_ShowPDF", "NEWSHOWFILE", kAimMs,
       [document] { return MP_ShowPDF(nullptr, nullptr, kBaud, kSeconds, document.c_str()); }},
      {"MP_ConfirmPDF", "NEWSTARTFILE", kAimMs,
       [&out, document] {
         return MP_ConfirmPDF(nullptr, nullptr, kBaud, kSeconds, document.c_str(), &out.number);
       }},
      {"MP_SignPDF, the first pushed byte", "HIDCHANGE", kAimMs,
       [text, document, picture] {
         return MP_SignPDF(nullptr, "9", kBaud, kSeconds, document.c_str(), "1,300,100", picture.c_str(),
                           text);
       }},
      {"MP_SignPDF", "NEWSTARTSIGN", kAimMs,
       [text, document, picture] {
         return MP_SignPDF(nullptr, "9", kBaud, kSeconds, document.c_str(), "1,300,100", picture.c_str(),
                           text);
       }},
      {"MP_SignPDF_Voice", "NEWSTARTSIGN", kAimMs,
       [text, document, picture] {
         return MP_SignPDF_Voice(nullptr, "9", kBaud, kSeconds, document.c_str(), "1,300,100", "sign",
                                 picture.c_str(), text);
       }},
      {"MP_Sign_With_TZG", "NEWSTARTZGTSIGN", kAimMs,
       [text, document, picture] {
         return MP_Sign_With_TZG(nullptr, "9", kBaud, kSeconds, document.c_str(), "1,300,100", "sign",
                                 picture.c_str(), 0, 3, text);
       }},
      {"GWQ_StartSign", "HANDSIGN", kAimMs,
       [document, picture, strokes = path("strokes.txt")] {
         return GWQ_StartSign(0, kBaud, kSeconds, document.c_str(), picture.c_str(), strokes.c_str());
       }},
      {"MP_CheckOut_All", "CHECKOUTALL", kAimMs,
       [text] { return MP_CheckOut_All(nullptr, nullptr, kBaud, kSeconds, "opening", "5.00", text); }},
  };
}

// ------------------------------------------------------------------ measuring

// Until the question, in milliseconds.
double AskedMs(const Function& function) {
  g_recording = {};
  g_recording.question = function.question;
  g_recording.start = Clock::now();
  g_recording.runs = true;
  const int status = function.call();
  g_recording.runs = false;
  Require(status == 0, std::string(function.name) + " gives " + std::to_string(status));
  Require(g_recording.asked_ms > 0, std::string(function.name) + " does not ask");
  return g_recording.asked_ms;
}

struct Sample {
  double median;
  double longest;
};

Sample Summary(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return {values[values.size() / 2], values.back()};
}

template <typename Measure>
Sample Repeated(int repetitions, Measure measure) {
  std::vector<double> values;
  for (int i = 0; i < repetitions; ++i) values.push_back(measure());
  return Summary(values);
}

void PrintRow(const Function& function, int repetitions, std::FILE* table) {
  GWQ_SetDrainMs(0);
  const Sample today = Repeated(repetitions, [&] { return AskedMs(function); });
  GWQ_SetDrainMs(kDrainMs);
  const Sample drained = Repeated(repetitions, [&] { return AskedMs(function); });
  const double paused = g_recording.paused_ms;
  const std::vector<Exchange> exchanges = g_recording.exchanges;
  const Sample bare = Repeated(repetitions, [&exchanges] { return BareMs(exchanges); });
  const double aim = function.aim_ms + paused;
  const bool met = drained.median <= aim;
  std::fprintf(table, "| %s | %.0f ms (%.0f) | %.1f ms (%.1f) | %.1f ms | %.0f ms | %.0f ms %s |\n",
               function.name, today.median, today.longest, drained.median, drained.longest, bare.median,
               paused, aim, met ? "met" : "missed");
  std::fflush(table);
}

// How long it takes to list the terminals, which depends on how many processes there are.
double FindMs() {
  constexpr int kCalls = 101;
  GwqTerminalPlace place{};
  return Repeated(kCalls,
                  [&place] {
                    const Clock::time_point start = Clock::now();
                    Require(GWQ_FindTerminals(&place, 1) == 1, "the terminal is not found");
                    return MsSince(start);
                  })
      .median;
}

// For the functions that encipher a PIN.
void LoadKeys() {
  constexpr int kMaster = 3;
  constexpr int kWorking = 7;
  example::LoadWorkingKey(kBaud, example::Algorithm::kTripleDes);
  std::string key(32, '5');
  Require(GWQ_ResetKey(0, kBaud) == 0 && GWQ_DownLoadWKey(0, kBaud, kMaster, kWorking, key.data()) == 0 &&
              GWQ_ActiveWKey(0, kBaud, kMaster, kWorking) == 0,
          "no working key");
}

int Run(const char* path, int repetitions) {
  std::string name = (fs::temp_directory_path() / "gwq-asked-XXXXXX").string();
  Require(mkdtemp(name.data()) != nullptr, "no temporary directory");
  const fs::path directory = name;
  std::FILE* const table = std::fopen(path, "w");
  Require(table != nullptr, std::string("cannot write ") + path);
  const auto out = std::make_unique<Outputs>();
  LoadKeys();
  std::fprintf(
      table,
      "| Until the customer is asked: median (longest) | as without a setting | DrainMs=%d | bare exchanges |"
      " the contract's pauses | aim |\n|---|---:|---:|---:|---:|---:|\n",
      kDrainMs);
  for (const Function& function : Functions(directory, *out)) PrintRow(function, repetitions, table);
  std::fprintf(table, "\n- GWQ_FindTerminals, one terminal: %.2f ms\n", FindMs());
  std::fclose(table);
  fs::remove_all(directory);
  return 0;
}

}  // namespace
}  // namespace gwq::bench

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: gwq_bench_asked TABLE [REPETITIONS]\n");
    return 2;
  }
  return gwq::bench::Run(argv[1], argc > 2 ? std::atoi(argv[2]) : 5);
}
