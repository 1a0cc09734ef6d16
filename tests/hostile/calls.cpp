#include "hostile/calls.h"

#include <algorithm>

#include <gwq/extra.h>
#include <gwq/gwq.h>
#include "usb_ids.h"

namespace gwq::test {
namespace {

constexpr std::size_t kBlock = 1021;       // PIN blocks, factors, digests
constexpr std::size_t kScreenText = 2046;  // what a screen answers
constexpr std::size_t kFile = 1'000'000;   // of which the size is not passed
constexpr std::size_t kSlack = 1024;

Limit Customer(int seconds, int margin_s = 3) {
  return Exchange((std::int64_t{std::clamp(seconds, 0, 999)} + margin_s) * 1000);
}

Limit Drained() {
  return Exchange(100);
}

// Every report may be waited for, and is followed by a pause.
Limit Pulled(std::int64_t timeout_ms) {
  const std::int64_t each = Exchange(timeout_ms).ms + 10;
  return {.ms = 2 * each, .ms_per_report = each};
}

Limit PushedFile() {
  return Exchange(5000) + Exchange(5000) + Exchange(5000) + Exchange(5000) + Exchange(30'000);
}

// A path list of random length.
Limit PushedFiles(const char* list) {
  Limit limit;
  const auto files = 1 + std::count(list, list + std::strlen(list), '|');
  for (std::ptrdiff_t i = 0; i < files; ++i) limit = limit + PushedFile();
  return limit;
}

GwqEndOfRead SomeEnd(Caller& c) {
  return c.OneOf<GwqEndOfRead>({nullptr, [](unsigned char*, int) { return 1; },
                                [](unsigned char*, int count) { return count > 0 ? 0 : 1; }});
}

// A transaction's arguments: most take the same.
struct Transaction {
  explicit Transaction(Caller& c)
      : port(c.Port()),
        baud(c.Baud()),
        command(c.Once(20) && port == 0 ? nullptr : c.Command()),
        length(command == nullptr ? 0 : static_cast<int>(std::strlen(command))),
        most(c.OneOf({1, 3, 1023, 1024, 1025, 4096, 0, -1})),
        answer(c.Once(20) ? nullptr : c.Out(static_cast<std::size_t>(std::max(most, 0)) + kSlack)),
        answer_length(c.OutOf(most)),
        timeout_ms(c.OneOf({-1, 0, 999, 1000, c.AnySeconds() * 1000})) {}

  template <typename Function>
  Limit Run(Caller& c) const {
    c.Run<Function>(port, baud, command, length, answer, answer_length, timeout_ms);
    return Exchange(timeout_ms);
  }

  int port;
  int baud;
  char* command;
  int length;
  int most;
  char* answer;
  int* answer_length;
  int timeout_ms;
};

int SomeType(Caller& c) {
  return c.Int(0, 4);
}

constexpr Call kCalls[] = {
    {"TransProc", [](Caller& c) { return Transaction(c).Run<decltype(TransProc)>(c); }},
    {"TransProcForEva", [](Caller& c) { return Transaction(c).Run<decltype(TransProcForEva)>(c); }},
    {"TransProcForInfo", [](Caller& c) { return Transaction(c).Run<decltype(TransProcForInfo)>(c); }},
    {"TransProcOnlyWrite", [](Caller& c) { return Transaction(c).Run<decltype(TransProcOnlyWrite)>(c); }},
    {"TransProcByEnd",
     [](Caller& c) {
       const Transaction t(c);
       c.Run<decltype(TransProcByEnd)>(t.port, t.baud, t.command, t.length, t.answer, t.answer_length,
                                       SomeEnd(c), t.timeout_ms);
       return Exchange(t.timeout_ms);
     }},
    {"TransProcOnlySend",
     [](Caller& c) {
       const Transaction t(c);
       c.Run<decltype(TransProcOnlySend)>(t.port, t.baud, t.command, t.length, t.timeout_ms);
       return Exchange(0);
     }},
    {"TransProcOnlyRead",
     [](Caller& c) {
       const Transaction t(c);
       c.Run<decltype(TransProcOnlyRead)>(t.port, t.baud, t.answer, t.answer_length, t.timeout_ms);
       return Exchange(t.timeout_ms);
     }},
    {"TransProcHW",
     [](Caller& c) {
       char* command = c.Command();
       const int timeout_ms = c.OneOf({-1, 0, 1000});
       c.Run<decltype(TransProcHW)>(static_cast<int>(std::strlen(command)), command, timeout_ms,
                                    c.Once(20) ? nullptr : c.NewPath());
       return Pulled(timeout_ms);
     }},
    {"PullFile",
     [](Caller& c) {
       char* command = c.OneOf({c.Copy("\x1B[0PULLFILE\x02/tmp/hw.png\x03"), c.Command()});
       const int timeout_ms = c.OneOf({-1, 0, 1000});
       c.Run<decltype(PullFile)>(c.Port(), 'x', c.Baud(), timeout_ms, static_cast<int>(std::strlen(command)),
                                 command, c.Once(20) ? nullptr : c.NewPath());
       return Pulled(timeout_ms);
     }},

    {"GWQ_SetPinLen",
     [](Caller& c) {
       c.Run<decltype(GWQ_SetPinLen)>(c.Port(), c.Baud(), c.Int(1, 14));
       return Drained() + Pause(0);
     }},
    {"GWQ_UpdateMKey",
     [](Caller& c) {
       c.Run<decltype(GWQ_UpdateMKey)>(c.Port(), c.Baud(), c.Int(0, 15), c.Hex(), c.Hex());
       return Drained() + Exchange(3000);
     }},
    {"GWQ_ResetKey",
     [](Caller& c) {
       c.Run<decltype(GWQ_ResetKey)>(c.Port(), c.Baud());
       return Drained() + Exchange(3000);
     }},
    {"GWQ_DownLoadWKey",
     [](Caller& c) {
       c.Run<decltype(GWQ_DownLoadWKey)>(c.Port(), c.Baud(), c.Int(0, 15), c.Int(0, 15), c.Hex());
       return Drained() + Exchange(3000);
     }},
    {"GWQ_ActiveWKey",
     [](Caller& c) {
       c.Run<decltype(GWQ_ActiveWKey)>(c.Port(), c.Baud(), c.Int(0, 15), c.Int(0, 15));
       return Drained() + Exchange(3000);
     }},
    {"GWQ_ReadPin",
     [](Caller& c) {
       const int seconds = c.Seconds();
       const int size = c.OneOf({0, 4, 6, 14, 2048, 2049, -1});
       c.Run<decltype(GWQ_ReadPin)>(c.Port(), c.Baud(), c.Int(0, 1), seconds,
                                    c.Out(static_cast<std::size_t>(std::max(size, 0))), size);
       return Drained() + Customer(seconds);
     }},
    {"GWQ_ReadPinDES",
     [](Caller& c) {
       const int seconds = c.Seconds();
       c.Run<decltype(GWQ_ReadPinDES)>(c.Port(), c.Baud(), c.Int(0, 1), c.Int(0, 3), seconds, c.Out(1025));
       return Drained() + Customer(seconds);
     }},
    {"GWQ_ReadPinAnsi",
     [](Caller& c) {
       const int seconds = c.Seconds();
       char* account = c.Digits();
       c.Run<decltype(GWQ_ReadPinAnsi)>(c.Port(), c.Baud(), c.Int(0, 1), c.Int(0, 3), seconds,
                                        account == nullptr ? c.Copy("") : account, c.Out(1025));
       return Drained() + Customer(seconds);
     }},
    {"GWQ_GetVerBuildDate",
     [](Caller& c) {
       c.Run<decltype(GWQ_GetVerBuildDate)>(c.Port(), 'x', c.Baud(), c.Out(9));
       return Drained() + Exchange(2000);
     }},
    {"CheckUtf8version",
     [](Caller& c) {
       c.Run<decltype(CheckUtf8version)>();
       return Drained() + Exchange(2000);
     }},

    {"PN_GetPin",
     [](Caller& c) {
       const int seconds = c.AnySeconds();
       c.Run<decltype(PN_GetPin)>(c.Port(), c.Text(), c.Baud(), seconds, c.OutOf<int>(), c.Out(kBlock));
       return Drained() + Customer(seconds, 2);
     }},
    {"GetPinblockShowString",
     [](Caller& c) {
       const int seconds = c.AnySeconds();
       c.Run<decltype(GetPinblockShowString)>(c.Port(), c.Text(), c.Baud(),
                                              reinterpret_cast<unsigned char*>(c.Out(kBlock)), c.OutOf<int>(),
                                              seconds, c.Text());
       return Drained() + Customer(seconds, 2);
     }},
    {"PN_GetPinBlock",
     [](Caller& c) {
       const int seconds = c.AnySeconds();
       c.Run<decltype(PN_GetPinBlock)>(c.Port(), c.Text(), c.Baud(), seconds, c.Int(0, 1), c.Int(0, 2),
                                       c.OneOf({1, 5, 6, 0}), c.Digits(), c.Out(kBlock), c.Out(kBlock),
                                       c.OutOf(c.Int(4, 14)));
       Limit limit = Drained() + Customer(seconds, 2);
       for (int step = 0; step < 6; ++step) limit = limit + Drained() + Exchange(2000);
       return limit;
     }},
    {"PN_GetPinBlockShowString",
     [](Caller& c) {
       const int seconds = c.AnySeconds();
       c.Run<decltype(PN_GetPinBlockShowString)>(
           c.Port(), c.Text(), c.Baud(), seconds, c.Int(0, 1), c.Int(0, 2), c.OneOf({1, 5, 6, 0}), c.Digits(),
           c.Out(kBlock), c.Out(kBlock), c.OutOf(c.Int(4, 14)), c.Text());
       Limit limit = Drained() + Customer(seconds, 2);
       for (int step = 0; step < 6; ++step) limit = limit + Drained() + Exchange(2000);
       return limit;
     }},
    {"PN_GetStringBlock",
     [](Caller& c) {
       const int seconds = c.AnySeconds();
       const std::size_t length = c.OneOf<std::size_t>({0, 1, 16, 300, 20480, 20481});
       c.Run<decltype(PN_GetStringBlock)>(c.Port(), c.Text(), c.Baud(), seconds, c.Int(0, 1), c.Out(length),
                                          c.Out(kFile), c.OutOf(static_cast<int>(length)), c.Out(4096));
       return Drained() + Exchange(1000) + PushedFile() + Customer(seconds) + Pause(200) + Pulled(3000);
     }},
    {"PN_GetInNo",
     [](Caller& c) {
       const int seconds = c.Seconds();
       c.Run<decltype(PN_GetInNo)>(c.Port(), c.Text(), c.Baud(), seconds, c.Int(0, 20), c.Int(0, 2), c.Text(),
                                   c.Out(1024));
       return Drained() + Customer(seconds, 2);
     }},
    {"PN_GetEnType",
     [](Caller& c) {
       c.Run<decltype(PN_GetEnType)>(c.Port(), c.Text(), c.Baud(), c.OutOf<int>());
       return Drained() + Exchange(2000);
     }},
    {"PN_SetEnType",
     [](Caller& c) {
       c.Run<decltype(PN_SetEnType)>(c.Port(), c.Text(), c.Baud(), c.Int(0, 1));
       return Drained() + Exchange(2000);
     }},
    {"PN_GetPinLen",
     [](Caller& c) {
       c.Run<decltype(PN_GetPinLen)>(c.Port(), c.Text(), c.Baud(), c.OutOf<int>());
       return Drained() + Exchange(2000);
     }},
    {"PN_SetPinLen",
     [](Caller& c) {
       c.Run<decltype(PN_SetPinLen)>(c.Port(), c.Text(), c.Baud(), c.Int(4, 14));
       return Drained() + Exchange(2000);
     }},
    {"PN_SetEndRule",
     [](Caller& c) {
       c.Run<decltype(PN_SetEndRule)>(c.Port(), c.Text(), c.Baud(), c.Int(0, 1));
       return Drained() + Exchange(2000);
     }},
    {"PN_SetFillType",
     [](Caller& c) {
       c.Run<decltype(PN_SetFillType)>(c.Port(), c.Text(), c.Baud(), c.Text());
       return Drained() + Exchange(2000);
     }},
    {"PN_SetPinMoe",
     [](Caller& c) {
       c.Run<decltype(PN_SetPinMoe)>(c.Port(), c.Text(), c.Baud(), c.Int(1, 6));
       return Drained() + Exchange(2000);
     }},
    {"PN_SetSoundType",
     [](Caller& c) {
       c.Run<decltype(PN_SetSoundType)>(c.Port(), c.Text(), c.Baud(), c.Int(0, 3));
       return Drained() + Exchange(2000);
     }},
    {"PN_SetAccount",
     [](Caller& c) {
       const std::size_t length = c.OneOf<std::size_t>({0, 1, 12, 19, 252, 253, 300});
       char* account = c.Out(length);
       std::fill_n(account, length, '7');
       c.Run<decltype(PN_SetAccount)>(c.Port(), c.Text(), c.Baud(), reinterpret_cast<unsigned char*>(account),
                                      static_cast<int>(length));
       return Drained() + Exchange(2000);
     }},
    {"PN_ReadDeviceId",
     [](Caller& c) {
       c.Run<decltype(PN_ReadDeviceId)>(c.Port(), c.Text(), c.Baud(), c.Out(kBlock));
       return Drained() + Exchange(3000);
     }},
    {"PN_WriteDeviceId",
     [](Caller& c) {
       c.Run<decltype(PN_WriteDeviceId)>(c.Port(), c.Text(), c.Baud(), c.OneOf({c.Digits(), c.Text()}));
       return Drained() + Exchange(3000);
     }},
    {"PN_SetPinPadParameter",
     [](Caller& c) {
       c.Run<decltype(PN_SetPinPadParameter)>(c.Port(), c.Text(), c.Baud(), c.Int(0, 1), c.Int(4, 14),
                                              c.Int(0, 1), c.Text());
       Limit limit = Drained();
       for (int step = 0; step < 4; ++step) limit = limit + Drained() + Exchange(2000);
       return limit;
     }},
    {"PN_GetPinPadFactor",
     [](Caller& c) {
       c.Run<decltype(PN_GetPinPadFactor)>(c.Port(), c.Text(), c.Baud(), c.Out(kBlock));
       return Drained() + Exchange(2000);
     }},
    {"PN_CreateAndGetPinPadFactor",
     [](Caller& c) {
       c.Run<decltype(PN_CreateAndGetPinPadFactor)>(c.Port(), c.Text(), c.Baud(), c.Int(1, 2), c.Out(kBlock));
       return Drained() + Exchange(2000) + Exchange(2000);
     }},
    {"PN_ObtainFactor",
     [](Caller& c) {
       c.Run<decltype(PN_ObtainFactor)>(c.Port(), c.Text(), c.Baud(),
                                        c.OneOf({c.Copy("1"), c.Copy("2"), c.Text()}), c.Out(kBlock));
       return Drained() + Exchange(2000) + Exchange(2000);
     }},
    {"PN_ObtainPublicKey",
     [](Caller& c) {
       // The pad's RSA keys are made when they are first asked for, which takes it a moment.
       const bool sm2 = !c.Once(10);
       c.Run<decltype(PN_ObtainPublicKey)>(c.Port(), c.Text(), c.Baud(), sm2 ? 2 : c.Int(1, 2),
                                           sm2 ? 256 : c.OneOf({0, -1, 512, 1024, 2048}), c.Out(2041));
       return Drained() + Exchange(6000);
     }},
    {"PN_ObtainDigest",
     [](Caller& c) {
       c.Run<decltype(PN_ObtainDigest)>(c.Port(), c.Text(), c.Baud(), c.Int(1, 3), c.Text(), c.Out(kBlock));
       return Drained() + Exchange(3000);
     }},
    {"PN_DownloadPinPadWK",
     [](Caller& c) {
       c.Run<decltype(PN_DownloadPinPadWK)>(c.Port(), c.Text(), c.Baud(), c.Hex(),
                                            c.OneOf({c.Copy("1"), c.Copy("2"), c.Text()}), c.Hex(), c.Hex());
       return Drained() + Drained() + Exchange(4000);
     }},

    {"MP_CheckOut_All",
     [](Caller& c) {
       const int seconds = c.Seconds();
       c.Run<decltype(MP_CheckOut_All)>(nullptr, nullptr, c.Baud(), seconds, c.Text(), c.Text(),
                                        c.Out(kScreenText));
       return Drained() + Customer(seconds);
     }},
    {"DEV_CommCall",
     [](Caller& c) {
       char* json = c.OneOf({c.Copy(R"({"RequestBaudRate":9600,"RequestTimeOut":"7"})"),
                             c.Copy(R"({"RequestBaudRate":1e300})"), c.Copy("[[[{"), c.Text()});
       const int size = c.OneOf({0, 1, 200, 400, 8192, -1});
       c.Run<decltype(DEV_CommCall)>(json, c.Int(0, 1), c.Out(static_cast<std::size_t>(std::max(size, 0))),
                                     c.OutOf(size));
       Limit limit;
       for (int question = 0; question < 8; ++question) limit = limit + Exchange(2000);
       return limit;
     }},
    {"MP_ShowPDF",
     [](Caller& c) {
       char* paths = c.PathList();
       c.Run<decltype(MP_ShowPDF)>(nullptr, nullptr, c.Baud(), c.Seconds(), paths);
       return Drained() + PushedFiles(paths) + Exchange(3000);
     }},
    {"MP_ConfirmPDF",
     [](Caller& c) {
       const int seconds = c.Seconds();
       char* paths = c.PathList();
       c.Run<decltype(MP_ConfirmPDF)>(nullptr, nullptr, c.Baud(), seconds, paths, c.OutOf<int>());
       return Drained() + PushedFiles(paths) + Customer(seconds);
     }},
    {"MP_StartElectronicCard",
     [](Caller& c) {
       c.Run<decltype(MP_StartElectronicCard)>(nullptr, nullptr, c.Baud(), c.Seconds(), c.Text(), c.Text(),
                                               c.Int(0, 6), c.Text());
       return Drained();
     }},
    {"MP_SetEvaluateInfo",
     [](Caller& c) {
       c.Run<decltype(MP_SetEvaluateInfo)>(nullptr, nullptr, c.Baud(), c.Text(), c.Text(), c.Int(0, 6),
                                           c.Text());
       return Drained();
     }},
    {"MP_StartEvaluate",
     [](Caller& c) {
       const int seconds = c.AnySeconds();
       c.Run<decltype(MP_StartEvaluate)>(nullptr, nullptr, c.Baud(), seconds, c.Out(1));
       return Drained() + Customer(seconds);
     }},
    {"MP_CancleEvaluate",
     [](Caller& c) {
       c.Run<decltype(MP_CancleEvaluate)>(nullptr, nullptr, c.Baud());
       return Drained();
     }},
    {"GWQ_StartEvaluator",
     [](Caller& c) {
       const int seconds = c.Seconds();
       c.Run<decltype(GWQ_StartEvaluator)>(c.Port(), c.Baud(), c.Text(), c.Text(), c.Int(0, 6), c.Text(),
                                           seconds, c.OutOf<unsigned>());
       return Drained() + Customer(seconds);
     }},
    {"MP_StartInfoHtml",
     [](Caller& c) {
       const int seconds = c.AnySeconds();
       c.Run<decltype(MP_StartInfoHtml)>(nullptr, nullptr, c.Baud(), seconds, c.Int(0, 1), c.Text(),
                                         c.OutOf<int>(), c.Int(0, 9));
       // It asks for the terminal's version before anything else.
       return Drained() + Exchange(2000) + Drained() + Customer(seconds, 2) + Pause(200);
     }},
    {"MP_StartInfoHtmlScreenshot",
     [](Caller& c) {
       const int seconds = c.AnySeconds();
       c.Run<decltype(MP_StartInfoHtmlScreenshot)>(nullptr, c.Text(), c.Baud(), seconds, c.Int(0, 1),
                                                   c.Text(), c.NewPath(), c.OutOf<int>());
       return Drained() + Customer(seconds) + Pause(200) + Pulled(3000);
     }},
    {"MP_StartInfoHtmlEx",
     [](Caller& c) {
       const int seconds = c.Seconds();
       c.Run<decltype(MP_StartInfoHtmlEx)>(nullptr, nullptr, c.Baud(), seconds, c.Text(), c.Text(),
                                           c.Out(kScreenText));
       return Drained() + PushedFile() + Customer(seconds);
     }},
    {"GWQ_StartInfo",
     [](Caller& c) {
       const int seconds = c.Seconds();
       c.Run<decltype(GWQ_StartInfo)>(c.Port(), c.Baud(), seconds, c.Text(), c.OutOf<unsigned>());
       return Drained() + Customer(seconds);
     }},
    {"GWQ_StartKeyboard",
     [](Caller& c) {
       const int seconds = c.Seconds();
       c.Run<decltype(GWQ_StartKeyboard)>(c.Port(), c.Baud(), seconds, c.Int(0, 1), c.Out(kScreenText));
       return Drained() + Customer(seconds);
     }},
    {"MP_SignPDF",
     [](Caller& c) {
       const int seconds = c.Seconds();
       char* paths = c.PathList();
       c.Run<decltype(MP_SignPDF)>(nullptr, c.Text(), c.Baud(), seconds, paths, c.Text(), c.NewPath(),
                                   c.Out(kFile));
       return Drained() + PushedFiles(paths) + Customer(seconds) + Pause(200) + Pulled(3000) + Pulled(3000);
     }},
    {"MP_SignPDF_Voice",
     [](Caller& c) {
       const int seconds = c.Seconds();
       char* paths = c.PathList();
       c.Run<decltype(MP_SignPDF_Voice)>(nullptr, c.Text(), c.Baud(), seconds, paths, c.Text(), c.Text(),
                                         c.NewPath(), c.Out(kFile));
       return Drained() + Exchange(3000) + PushedFiles(paths) + Customer(seconds) + Pause(200) +
              Pulled(3000) + Pulled(3000);
     }},
    {"MP_Sign_With_TZG",
     [](Caller& c) {
       const int seconds = c.Seconds();
       char* paths = c.PathList();
       c.Run<decltype(MP_Sign_With_TZG)>(nullptr, c.Text(), c.Baud(), seconds, paths, c.Text(), c.Text(),
                                         c.NewPath(), c.Int(0, 2), c.Int(0, 4), c.Out(kFile));
       return Drained() + Drained() + Exchange(1000) + Exchange(3000) + PushedFiles(paths) +
              Customer(seconds) + Pause(200) + Pulled(3000) + Pulled(3000);
     }},
    {"GWQ_StartSign",
     [](Caller& c) {
       const int seconds = c.Seconds();
       c.Run<decltype(GWQ_StartSign)>(c.Port(), c.Baud(), seconds, c.Path(), c.NewPath(), c.NewPath());
       return Drained() + PushedFile() + Customer(seconds) + Pause(200) + Pulled(3000) + Pulled(3000);
     }},
    {"MP_GetFirmwareVersion",
     [](Caller& c) {
       c.Run<decltype(MP_GetFirmwareVersion)>(nullptr, nullptr, c.Baud(), 0, c.Out(kScreenText),
                                              c.Out(kScreenText));
       return Exchange(1000);
     }},
    {"MP_CancelCurrentOperation",
     [](Caller& c) {
       c.Run<decltype(MP_CancelCurrentOperation)>(nullptr, nullptr, c.Baud(), 0);
       return Pause(600) + Exchange(2000);
     }},

    {"Z11DownLoadFile",
     [](Caller& c) {
       c.Run<decltype(Z11DownLoadFile)>(c.Port(), 'x', c.Baud(), c.OneOf({255, SomeType(c)}), c.Path(),
                                        c.OneOf({c.Copy("/tmp/pushed"), c.Text()}));
       return PushedFile();
     }},
    {"Z11DownLoadHead",
     [](Caller& c) {
       c.Run<decltype(Z11DownLoadHead)>(c.Port(), 'x', c.Baud(), SomeType(c), c.Path(),
                                        c.OneOf({c.Copy("head.jpg"), c.Text()}));
       return PushedFile();
     }},
    {"pushFileToZ11",
     [](Caller& c) {
       char* paths = c.PathList();
       c.Run<decltype(pushFileToZ11)>(paths, c.Out(4096));
       return PushedFiles(paths);
     }},
    {"HIDDownLoad",
     [](Caller& c) {
       c.Run<decltype(HIDDownLoad)>(c.Path(), SomeType(c));
       Limit limit;  // pieces of 30300 bytes
       for (int step = 0; step < 11; ++step) limit = limit + Exchange(3000);
       return limit;
     }},
    {"DownVideoFile",
     [](Caller& c) {
       c.Run<decltype(DownVideoFile)>(c.Port(), 'x', c.Baud(), SomeType(c), c.Path());
       Limit limit;
       for (int step = 0; step < 11; ++step) limit = limit + Exchange(3000);
       return limit;
     }},
    {"GetVideoList",
     [](Caller& c) {
       const int size = c.OneOf({0, 1, 20, 4096, -1});
       c.Run<decltype(GetVideoList)>(c.Port(), 'x', c.Baud(), SomeType(c),
                                     c.Out(static_cast<std::size_t>(std::max(size, 0))), size);
       return Exchange(10'000);
     }},
    {"DownVideoInfo",
     [](Caller& c) {
       char* text = c.Text();
       c.Run<decltype(DownVideoInfo)>(c.Port(), 'x', c.Baud(), SomeType(c), text, c.Text());
       Limit limit = Pause(0);
       for (std::size_t at = 0; text != nullptr && at < std::strlen(text); at += 1024)
         limit = limit + Exchange(5000);
       return limit;
     }},
    {"DownFile",
     [](Caller& c) {
       const int count = c.OneOf({0, 1, 1024, 1025, 3000});
       c.Run<decltype(DownFile)>(SomeType(c), c.Int(0, 3), c.Int(0, 3),
                                 reinterpret_cast<unsigned char*>(c.Out(static_cast<std::size_t>(count))),
                                 count, c.Text());
       return Exchange(999'000);  // the time-out of the exchange before it
     }},
    {"DelVideoFile",
     [](Caller& c) {
       c.Run<decltype(DelVideoFile)>(c.Port(), 'x', c.Baud(), SomeType(c), c.Text());
       return Exchange(3000);
     }},
    {"DelAllVideoFile",
     [](Caller& c) {
       c.Run<decltype(DelAllVideoFile)>(c.Port(), 'x', c.Baud(), SomeType(c));
       return Exchange(3000);
     }},
    {"DeleteMediaFile",
     [](Caller& c) {
       c.Run<decltype(DeleteMediaFile)>(c.Port(), 'x', c.Baud(), SomeType(c), c.Text());
       return Exchange(0);
     }},
    {"MP_FindHeadPhoto",
     [](Caller& c) {
       const int capacity = c.OneOf({0, 1, 20, 1024});
       c.Run<decltype(MP_FindHeadPhoto)>(nullptr, nullptr, c.Baud(),
                                         c.Out(static_cast<std::size_t>(capacity) + 1), c.OutOf(capacity));
       return Drained() + Exchange(3000);
     }},
    {"MP_DelHeadFile",
     [](Caller& c) {
       c.Run<decltype(MP_DelHeadFile)>(nullptr, nullptr, c.Baud(), c.Text());
       return Drained() + Exchange(3000);
     }},
    {"MP_DownHeadFile",
     [](Caller& c) {
       c.Run<decltype(MP_DownHeadFile)>(nullptr, c.Text(), c.Baud(), c.Path(), c.Text());
       return Drained() + PushedFile();
     }},
    {"MP_SetBarcodePic",
     [](Caller& c) {
       c.Run<decltype(MP_SetBarcodePic)>(nullptr, nullptr, c.Baud(), c.OneOf<char*>({c.Path(), nullptr}));
       return Drained() + PushedFile();
     }},
    {"MP_GetFileList",
     [](Caller& c) {
       c.Run<decltype(MP_GetFileList)>(nullptr, nullptr, c.Baud(), nullptr, SomeType(c),
                                       c.Once(10) ? nullptr : c.Out(1024));
       return Drained() + Exchange(3000);
     }},
    {"MP_DownloadFile",
     [](Caller& c) {
       char* paths = c.PathList();
       // An empty list has no path, and the library cuts the text.
       const Limit pushed = PushedFiles(paths) + PushedFile();
       c.Run<decltype(MP_DownloadFile)>(nullptr, nullptr, c.Baud(), nullptr, c.Int(0, 1), paths, c.Int(0, 4));
       return Drained() + Drained() + Exchange(3000) + Exchange(3000) + pushed + Pause(200);
     }},

    {"CancelRead",
     [](Caller& c) {
       c.Run<decltype(CancelRead)>();
       return Limit{};
     }},
    {"CancelWrite",
     [](Caller& c) {
       c.Run<decltype(CancelWrite)>();
       return Limit{};
     }},
    {"GWQ_SetOutputRoom",
     [](Caller& c) {
       c.Run<decltype(GWQ_SetOutputRoom)>(c.OneOf({-1, 0}));  // the outputs here have room for any file
       return Limit{};
     }},
    {"ICC_OpenLinuxHid",
     [](Caller& c) {
       c.Run<decltype(ICC_OpenLinuxHid)>(kUsbIdentities[0].vid, c.OneOf({kUsbIdentities[0].pid, -1}));
       return Pause(0);
     }},
    {"ICC_WriteLinuxHid",
     [](Caller& c) {
       const std::size_t size = c.OneOf<std::size_t>({0, 1, 1024, 1025, 5000});
       c.Run<decltype(ICC_WriteLinuxHid)>(reinterpret_cast<unsigned char*>(c.Out(size)),
                                          static_cast<int>(size));
       return Pause(0);
     }},
    {"ICC_ReadLinuxHid",
     [](Caller& c) {
       const int most = c.OneOf({1, 1024, 3000});
       const int seconds = c.AnySeconds();
       c.Run<decltype(ICC_ReadLinuxHid)>(
           reinterpret_cast<unsigned char*>(c.Out(static_cast<std::size_t>(most) + kSlack - 1)), most,
           seconds, SomeEnd(c));
       return Exchange(std::int64_t{seconds} * 1000);
     }},
    {"ICC_CloseLinuxHid",
     [](Caller& c) {
       c.Run<decltype(ICC_CloseLinuxHid)>();
       return Pause(0);
     }},
    {"ICC_OpenLinuxSdt",
     [](Caller& c) {
       c.Run<decltype(ICC_OpenLinuxSdt)>(kUsbIdentities[0].vid, c.OneOf({kUsbIdentities[0].pid, -1}));
       return Pause(0);
     }},
    {"ICC_WriteLinuxSdt",
     [](Caller& c) {
       const std::size_t size = c.OneOf<std::size_t>({0, 1, 1024, 1025, 5000});
       c.Run<decltype(ICC_WriteLinuxSdt)>(reinterpret_cast<unsigned char*>(c.Out(size)),
                                          static_cast<int>(size));
       return Pause(0);
     }},
    {"ICC_ReadLinuxSdt",
     [](Caller& c) {
       const int most = c.OneOf({1, 1024, 3000});
       const int seconds = c.AnySeconds();
       c.Run<decltype(ICC_ReadLinuxSdt)>(
           reinterpret_cast<unsigned char*>(c.Out(static_cast<std::size_t>(most) + kSlack - 1)), most,
           seconds, SomeEnd(c));
       return Exchange(std::int64_t{seconds} * 1000);
     }},
    {"ICC_CloseLinuxSdt",
     [](Caller& c) {
       c.Run<decltype(ICC_CloseLinuxSdt)>();
       return Pause(0);
     }},
};

}  // namespace

std::span<const Call> DeviceCalls() {
  return kCalls;
}

}  // namespace gwq::test
