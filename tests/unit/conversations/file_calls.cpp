// SPDX-License-Identifier: MIT
#include <gwq/files/media.h>
#include <gwq/files/media_functions.h>
#include <gwq/files/pull.h>
#include <gwq/files/push.h>
#include <gwq/frame/port.h>
#include <gwq/frame/transaction.h>
#include "unit/conversations/calls.h"
#include "usb_ids.h"

namespace gwq::test {
namespace {

constexpr int kBaud = 9600;

int Push(Host& host, const char* name) {
  return Z11DownLoadFile(0, '9', kBaud, 255, host.MakeFile("local.pdf").c_str(), name);
}

int Pull(const std::string& path) {
  std::string request(wire::kPullRequest);
  std::string to = path;
  return PullFile(0, '9', kBaud, 5000, static_cast<int>(request.size()), request.data(), to.data());
}

// For what no function of the library sends by itself.
void Exchange(std::string_view sent, std::string_view expected) {
  std::string command(sent);
  std::string answer(1024, '\0');
  int length = static_cast<int>(answer.size());
  EXPECT_EQ(TransProcByEnd(0, kBaud, command.data(), static_cast<int>(command.size()), answer.data(), &length,
                           &EndOfRead2, 2000),
            0);
  EXPECT_EQ(answer.substr(0, expected.size() + 1), std::string(expected) + '\0');
}

void OpenPort() {
  TransMssionLinux_t port{};
  port.nVid = kUsbIdentities[0].vid;
  port.nPid = kUsbIdentities[0].pid;
  port.nTimeOut = 1;
  port.pfnEndOfRead = &EndOfRead2;
  ASSERT_EQ(ICC_OpenTransPort(&port), 0);
}

int AddMissing(const std::string& picture) {
  constexpr int kPictures = 0;
  constexpr int kAddMissing = 3;
  std::string list = picture;
  return MP_DownloadFile(nullptr, nullptr, kBaud, nullptr, kPictures, list.data(), kAddMissing);
}

Calls TransferCalls() {
  return {
      {"PushedFile", [](Host& host) { EXPECT_EQ(Push(host, "/tmp/x.pdf"), 0); }},
      {"PushedFileWithABadName", [](Host& host) { EXPECT_EQ(Push(host, "x/../../y"), -14); }},
      {"PacketOfAnUnknownType",
       [](Host&) {
         Exchange(wire::kModeChange, wire::kDone);
         Exchange(wire::kUnknownPacket, wire::kRefused);
       }},
      {"PulledFile",
       [](Host& host) {
         EXPECT_EQ(Pull(host.Path("pulled.png")), 0);
         EXPECT_EQ(ReadFile(host.Path("pulled.png")), "picture");
       }},
      {"PulledFileThatIsNotThere", [](Host& host) { EXPECT_EQ(Pull(host.Path("pulled.png")), -14); }},
  };
}

Calls MediaCalls() {
  return {
      {"ListOfPictures",
       [](Host&) {
         Output list(100);
         EXPECT_EQ(GetVideoList(0, '9', kBaud, 0, list.text(), 100), 0);
         list.ExpectBytes(BytesOf("a.jpg|b.jpg"));
       }},
      {"DeletedPicture", [](Host&) { EXPECT_EQ(DelVideoFile(0, '9', kBaud, 0, "x.jpg"), 0); }},
      {"DeletedPictures", [](Host&) { EXPECT_EQ(DelAllVideoFile(0, '9', kBaud, 0), 0); }},
      {"DeletedHeadPhotoThatIsNotThere",
       [](Host&) { EXPECT_EQ(MP_DelHeadFile(nullptr, nullptr, kBaud, "x.jpg"), -14); }},
      // A piece's answer counts as a failed read, whatever it says.
      {"FirstPiece",
       [](Host&) {
         OpenPort();
         const Bytes piece = BytesOf("A");
         EXPECT_EQ(DownFile(0, 2, 1, piece.data(), 1, "n.txt"), -11);
         EXPECT_EQ(ICC_CloseTransPort(), 0);
       }},
      {"PictureThatIsThere", [](Host& host) { EXPECT_EQ(AddMissing(host.MakeFile("x.jpg")), 0); }},
      {"PictureThatIsMissing", [](Host& host) { EXPECT_EQ(AddMissing(host.MakeFile("x.jpg")), 0); }},
      {"DeletedQrCode", [](Host&) { EXPECT_EQ(MP_SetBarcodePic(nullptr, nullptr, kBaud, nullptr), 0); }},
      {"Update",
       [](Host& host) {
         constexpr int kFirmware = 1;
         std::string path = host.MakeFile("fw.dat");
         EXPECT_EQ(MP_DownloadFile(nullptr, nullptr, kBaud, nullptr, kFirmware, path.data(), 0), 0);
       }},
      {"UnknownCommand", [](Host&) { Exchange(wire::kNoCommand, wire::kUnknownCommand); }},
      {"Noise", [](Host&) { Exchange(wire::kNoise, wire::kRefused); }},
  };
}

}  // namespace

Calls FileCalls() {
  Calls all = TransferCalls();
  all.merge(MediaCalls());
  return all;
}

}  // namespace gwq::test
