// SPDX-License-Identifier: MIT
// The functions that talk to the terminal, what each of their arguments is, and how long a call may
// wait: one table for all programs that call them at random. Each program says how it draws an
// argument of each kind.
#pragma once

#include <array>
#include <climits>
#include <cstddef>
#include <optional>
#include <tuple>
#include <type_traits>

#include <gwq/extra.h>
#include <gwq/frame/load.h>
#include <gwq/gwq.h>

namespace gwq::test {

// What an argument is for.
namespace kinds {

template <typename T, typename... Us>
inline constexpr bool kIsAnyOf = (std::is_same_v<T, Us> || ...);

struct Null {};
struct Port {};
struct Baud {};
struct Channel {};
struct Unused {};  // a number that nobody reads
template <int low, int high>
struct Number {};
template <int... values>
struct OneOf {};
struct Destination {};  // of a pushed file
struct Seconds {};      // for the customer; the function refuses what is out of bounds
struct AnySeconds {};   // the same, refused by nobody

struct Text {};
struct Digits {};
struct DigitsOrText {};
struct Hex {};
struct Algorithm {};  // "1" or "2"
struct Path {};       // of a local file
struct PathOrNull {};
struct PathList {};
struct NewPath {};     // of a local file to be written
struct RemotePath {};  // of a file on the terminal
template <typename Kind>
inline constexpr bool kIsText = kIsAnyOf<Kind, Text, Digits, DigitsOrText, Hex, Algorithm, Path, PathOrNull,
                                         PathList, NewPath, RemotePath>;

template <std::size_t size>
struct Out {};
template <std::size_t size>
struct OutBytes {};
template <std::size_t size>
struct Zeroed {};  // an output that the caller has cleared
template <typename T>
struct OutOf {};
template <int low, int high>
struct InOut {};
struct FileOut {};  // an output without a size

}  // namespace kinds

constexpr int kUnlimited = INT_MAX;

// All that a call waits for.
struct Waits {
  int drains = 0;
  int sends = 0;                    // that no answer is waited for
  std::array<int, 6> asks_s{};      // the time-out of each exchange
  std::optional<int> customer_s{};  // what an answer may take beyond the customer's time
  int pushes = 0;                   // besides those of the paths in the arguments
  int pulls = 0;
  int pause_ms = 0;
  int each_read_s = 0;  // for as many reads as a file or a list needs
  int most_reads = 0;   // of them, unless the arguments tell
};

constexpr int kPushS = 30;  // the longest wait of a push
constexpr int kPullS = 3;

// A program with its own way to call a function needs no kinds.
template <auto function, typename... Kinds>
struct Row {
  const char* name;
  Waits waits;
};

namespace table {

using namespace kinds;

constexpr Waits kSetting{.drains = 1, .asks_s = {2}};
constexpr Waits kKey{.drains = 1, .asks_s = {3}};
constexpr Waits kPin{.drains = 1, .customer_s = 2};
constexpr Waits kPinAfterSettings{.drains = 7, .asks_s = {2, 2, 2, 2, 2, 2}, .customer_s = 2};
constexpr Waits kScreen{.drains = 1, .customer_s = 3};
constexpr Waits kSigning{.drains = 1, .customer_s = 3, .pulls = 2, .pause_ms = 200, .each_read_s = kPushS};

// The fuzzer's sessions on file name a call by its place: a row is never put between others, and a
// new one comes at the end of kLaterCalls. clang-format off
inline constexpr std::tuple kTerminalCalls{
    Row<PN_GetEnType, Port, Text, Baud, OutOf<int>>{"PN_GetEnType", kSetting},
    Row<PN_SetEnType, Port, Text, Baud, Number<0, 1>>{"PN_SetEnType", kSetting},
    Row<PN_GetPinLen, Port, Text, Baud, OutOf<int>>{"PN_GetPinLen", kSetting},
    Row<PN_SetPinLen, Port, Text, Baud, Number<4, 14>>{"PN_SetPinLen", kSetting},
    Row<PN_SetEndRule, Port, Text, Baud, Number<0, 1>>{"PN_SetEndRule", kSetting},
    Row<PN_SetFillType, Port, Text, Baud, Text>{"PN_SetFillType", kSetting},
    Row<PN_SetPinMoe, Port, Text, Baud, Number<1, 6>>{"PN_SetPinMoe", kSetting},
    Row<PN_SetSoundType, Port, Text, Baud, Number<0, 3>>{"PN_SetSoundType", kSetting},
    Row<PN_SetAccount>{"PN_SetAccount", kSetting},
    Row<PN_ReadDeviceId, Port, Text, Baud, Out<1021>>{"PN_ReadDeviceId", kKey},
    Row<PN_WriteDeviceId, Port, Text, Baud, DigitsOrText>{"PN_WriteDeviceId", kKey},
    Row<PN_SetPinPadParameter, Port, Text, Baud, Number<0, 1>, Number<4, 14>, Number<0, 1>, Text>{
        "PN_SetPinPadParameter", {.drains = 5, .asks_s = {2, 2, 2, 2}}},
    Row<PN_GetPin, Port, Text, Baud, AnySeconds, OutOf<int>, Out<1021>>{"PN_GetPin", kPin},
    Row<GetPinblockShowString, Port, Text, Baud, OutBytes<1021>, OutOf<int>, AnySeconds, Text>{
        "GetPinblockShowString", kPin},
    Row<PN_GetPinBlock, Port, Text, Baud, AnySeconds, Number<0, 1>, Number<0, 2>, OneOf<1, 5, 6, 0>, Digits,
        Out<1021>, Out<1021>, InOut<4, 14>>{"PN_GetPinBlock", kPinAfterSettings},
    Row<PN_GetPinBlockShowString, Port, Text, Baud, AnySeconds, Number<0, 1>, Number<0, 2>, OneOf<1, 5, 6, 0>,
        Digits, Out<1021>, Out<1021>, InOut<4, 14>, Text>{"PN_GetPinBlockShowString", kPinAfterSettings},
    Row<PN_GetStringBlock>{"PN_GetStringBlock",
                           {.drains = 1,
                            .asks_s = {1},
                            .customer_s = 3,
                            .pushes = 1,
                            .pulls = 1,
                            .pause_ms = 200,
                            .each_read_s = kPullS}},
    Row<PN_GetInNo, Port, Text, Baud, Seconds, Number<0, 20>, Number<0, 2>, Text, Out<1024>>{"PN_GetInNo",
                                                                                             kPin},
    Row<PN_GetPinPadFactor, Port, Text, Baud, Out<1021>>{"PN_GetPinPadFactor", kSetting},
    Row<PN_CreateAndGetPinPadFactor, Port, Text, Baud, Number<1, 2>, Out<1021>>{
        "PN_CreateAndGetPinPadFactor", {.drains = 1, .asks_s = {2, 2}}},
    Row<PN_ObtainFactor, Port, Text, Baud, Algorithm, Out<1021>>{"PN_ObtainFactor",
                                                                 {.drains = 1, .asks_s = {2, 2}}},
    Row<PN_ObtainPublicKey, Port, Text, Baud, Number<1, 2>, Number<0, 2048>, Out<2041>>{
        "PN_ObtainPublicKey", {.drains = 1, .asks_s = {6}}},
    Row<PN_ObtainDigest, Port, Text, Baud, Number<1, 3>, Text, Out<1021>>{"PN_ObtainDigest", kKey},
    Row<PN_DownloadPinPadWK, Port, Text, Baud, Hex, Algorithm, Hex, Hex>{"PN_DownloadPinPadWK",
                                                                         {.drains = 2, .asks_s = {4}}},
    Row<GWQ_SetPinLen, Port, Baud, Number<1, 14>>{"GWQ_SetPinLen", {.drains = 1}},
    Row<GWQ_UpdateMKey, Port, Baud, Number<0, 15>, Hex, Hex>{"GWQ_UpdateMKey", kKey},
    Row<GWQ_ResetKey, Port, Baud>{"GWQ_ResetKey", kKey},
    Row<GWQ_DownLoadWKey, Port, Baud, Number<0, 15>, Number<0, 15>, Hex>{"GWQ_DownLoadWKey", kKey},
    Row<GWQ_ActiveWKey, Port, Baud, Number<0, 15>, Number<0, 15>>{"GWQ_ActiveWKey", kKey},
    Row<GWQ_ReadPin>{"GWQ_ReadPin", kScreen},
    Row<GWQ_ReadPinDES, Port, Baud, Number<0, 1>, Number<0, 3>, Seconds, Zeroed<1025>>{"GWQ_ReadPinDES",
                                                                                       kScreen},
    Row<GWQ_ReadPinAnsi, Port, Baud, Number<0, 1>, Number<0, 3>, Seconds, Digits, Zeroed<1025>>{
        "GWQ_ReadPinAnsi", kScreen},
    Row<GWQ_GetVerBuildDate, Port, Channel, Baud, Zeroed<9>>{"GWQ_GetVerBuildDate", kSetting},
    Row<CheckUtf8version>{"CheckUtf8version", kSetting},
    Row<MP_StartElectronicCard, Null, Null, Baud, Seconds, Text, Text, Number<0, 6>, Text>{
        "MP_StartElectronicCard", {.drains = 1}},
    Row<MP_SetEvaluateInfo, Null, Null, Baud, Text, Text, Number<0, 6>, Text>{"MP_SetEvaluateInfo",
                                                                              {.drains = 1}},
    Row<MP_StartEvaluate, Null, Null, Baud, AnySeconds, Out<1>>{"MP_StartEvaluate", kScreen},
    Row<MP_CancleEvaluate, Null, Null, Baud>{"MP_CancleEvaluate", {.drains = 1}},
    Row<GWQ_StartEvaluator, Port, Baud, Text, Text, Number<0, 6>, Text, Seconds, OutOf<unsigned>>{
        "GWQ_StartEvaluator", kScreen},
    Row<GWQ_StartInfo, Port, Baud, Seconds, Text, OutOf<unsigned>>{"GWQ_StartInfo", kScreen},
    Row<GWQ_StartKeyboard, Port, Baud, Seconds, Number<0, 1>, Zeroed<2046>>{"GWQ_StartKeyboard",
                                                                            {.drains = 1, .customer_s = 0}},
    // It asks for the terminal's version before anything else.
    Row<MP_StartInfoHtml, Null, Null, Baud, AnySeconds, Number<0, 1>, Text, OutOf<int>, Number<0, 9>>{
        "MP_StartInfoHtml", {.drains = 2, .asks_s = {2}, .customer_s = 2, .pause_ms = 200}},
    Row<MP_StartInfoHtmlScreenshot, Null, Text, Baud, AnySeconds, Number<0, 1>, Text, NewPath, OutOf<int>>{
        "MP_StartInfoHtmlScreenshot",
        {.drains = 1, .customer_s = 2, .pulls = 1, .pause_ms = 200, .each_read_s = kPullS}},
    Row<MP_StartInfoHtmlEx, Null, Null, Baud, Seconds, Text, Text, Out<2046>>{
        "MP_StartInfoHtmlEx", {.drains = 1, .customer_s = 3, .pushes = 1, .each_read_s = kPushS}},
    Row<MP_ShowPDF, Null, Null, Baud, Seconds, PathList>{"MP_ShowPDF",
                                                         {.drains = 1, .asks_s = {3}, .each_read_s = kPushS}},
    Row<MP_ConfirmPDF, Null, Null, Baud, Seconds, PathList, OutOf<int>>{
        "MP_ConfirmPDF", {.drains = 1, .customer_s = 3, .each_read_s = kPushS}},
    Row<MP_SignPDF, Null, Text, Baud, Seconds, PathList, Text, NewPath, FileOut>{"MP_SignPDF", kSigning},
    Row<MP_SignPDF_Voice, Null, Text, Baud, Seconds, PathList, Text, Text, NewPath, FileOut>{
        "MP_SignPDF_Voice",
        {.drains = 1, .asks_s = {3}, .customer_s = 3, .pulls = 2, .pause_ms = 200, .each_read_s = kPushS}},
    Row<MP_Sign_With_TZG, Null, Text, Baud, Seconds, PathList, Text, Text, NewPath, Number<0, 2>,
        Number<0, 4>, FileOut>{
        "MP_Sign_With_TZG",
        {.drains = 2, .asks_s = {1, 3}, .customer_s = 3, .pulls = 2, .pause_ms = 200, .each_read_s = kPushS}},
    Row<GWQ_StartSign, Port, Baud, Seconds, Path, NewPath, NewPath>{"GWQ_StartSign", kSigning},
    Row<MP_CheckOut_All, Null, Null, Baud, Seconds, Text, Text, Out<2046>>{"MP_CheckOut_All", kScreen},
    Row<MP_GetFirmwareVersion, Null, Null, Baud, Unused, Out<2046>, Out<2046>>{"MP_GetFirmwareVersion",
                                                                               {.asks_s = {1}}},
    Row<MP_CancelCurrentOperation, Null, Null, Baud, Unused>{"MP_CancelCurrentOperation",
                                                             {.asks_s = {2}, .pause_ms = 600}},
    Row<DEV_CommCall>{"DEV_CommCall", {.drains = 1, .asks_s = {2, 2, 2, 2, 3}}},
    Row<GetVideoList>{"GetVideoList", {.asks_s = {10}}},
    Row<DownVideoInfo, Port, Channel, Baud, Number<0, 4>, Text, Text>{"DownVideoInfo", {.each_read_s = 5}},
    // The time-out of the exchange before it.
    Row<DownFile>{"DownFile", {.asks_s = {kUnlimited}}}};

inline constexpr std::tuple kFileCalls{
    Row<DelVideoFile, Port, Channel, Baud, Number<0, 4>, Text>{"DelVideoFile", {.asks_s = {3}}},
    Row<DelAllVideoFile, Port, Channel, Baud, Number<0, 4>>{"DelAllVideoFile", {.asks_s = {3}}},
    Row<DeleteMediaFile, Port, Channel, Baud, Number<0, 4>, Text>{"DeleteMediaFile", {.sends = 1}},
    Row<DownVideoFile, Port, Channel, Baud, Number<0, 4>, Path>{"DownVideoFile",
                                                                {.each_read_s = 3, .most_reads = 11}},
    Row<HIDDownLoad, Path, Number<0, 4>>{"HIDDownLoad", {.each_read_s = 3, .most_reads = 11}},
    Row<MP_FindHeadPhoto>{"MP_FindHeadPhoto", {.drains = 1, .asks_s = {3}}},
    Row<MP_DelHeadFile, Null, Null, Baud, Text>{"MP_DelHeadFile", {.drains = 1, .asks_s = {3}}},
    Row<MP_DownHeadFile, Null, Text, Baud, Path, Text>{"MP_DownHeadFile",
                                                       {.drains = 1, .pushes = 1, .each_read_s = kPushS}},
    Row<MP_SetBarcodePic, Null, Null, Baud, PathOrNull>{"MP_SetBarcodePic",
                                                        {.drains = 1, .pushes = 1, .each_read_s = kPushS}},
    Row<MP_GetFileList, Null, Null, Baud, Null, Number<0, 4>, Out<1024>>{"MP_GetFileList",
                                                                         {.drains = 1, .asks_s = {3}}},
    // An empty list has no path, and the library cuts the text.
    Row<MP_DownloadFile, Null, Null, Baud, Null, Number<0, 1>, PathList, Number<0, 4>>{
        "MP_DownloadFile",
        {.drains = 2, .asks_s = {3, 3}, .pushes = 1, .pause_ms = 200, .each_read_s = kPushS}},
    Row<Z11DownLoadFile, Port, Channel, Baud, Destination, Path, RemotePath>{
        "Z11DownLoadFile", {.pushes = 1, .each_read_s = kPushS}},
    Row<Z11DownLoadHead, Port, Channel, Baud, Number<0, 4>, Path, RemotePath>{
        "Z11DownLoadHead", {.pushes = 1, .each_read_s = kPushS}},
    Row<pushFileToZ11, PathList, Zeroed<4096>>{"pushFileToZ11", {.each_read_s = kPushS}},
    Row<PullFile>{"PullFile", {.each_read_s = 9}}, Row<TransProcHW>{"TransProcHW", {.each_read_s = 9}}};

inline constexpr std::tuple kTransactionCalls{Row<TransProc>{"TransProc", {}},
                                              Row<TransProcByEnd>{"TransProcByEnd", {}},
                                              Row<TransProcForEva>{"TransProcForEva", {}},
                                              Row<TransProcForInfo>{"TransProcForInfo", {}},
                                              Row<TransProcOnlyWrite>{"TransProcOnlyWrite", {}},
                                              Row<TransProcOnlySend>{"TransProcOnlySend", {}},
                                              Row<TransProcOnlyRead>{"TransProcOnlyRead", {}},
                                              Row<CancelRead>{"CancelRead", {}},
                                              Row<CancelWrite>{"CancelWrite", {}}};

inline constexpr std::tuple kLaterCalls{
    Row<GWQ_SetDrainMs, OneOf<-1, 0, 1, 20, 1000, 1001>>{"GWQ_SetDrainMs", {}},
    Row<GWQ_SetProgress>{"GWQ_SetProgress", {}}, Row<GWQ_GetFailure, OutOf<GwqFailure>>{"GWQ_GetFailure", {}},
    Row<GWQ_GetLogFailure>{"GWQ_GetLogFailure", {}}, Row<GWQ_FindTerminals>{"GWQ_FindTerminals", {}}};
// clang-format on

}  // namespace table

using table::kFileCalls;
using table::kLaterCalls;
using table::kTerminalCalls;
using table::kTransactionCalls;

}  // namespace gwq::test
