// SPDX-License-Identifier: MIT
// Conversations about files and media.
#pragma once

#include "wire/conversation.h"
#include "wire/frames.h"
#include "wire/pad_conversations.h"

namespace gwq::wire {

// A file that fits into one packet.
inline Exchanges Pushed(std::uint8_t type, std::string_view name, std::string_view content = "content") {
  return {Exchange(kModeChange, kDone), Exchange(kPushStart, kDone),
          Exchange(TransferPacket(2, test::BytesOf(content)), kDone), Exchange(PushEnd(type, name), kDone)};
}

// Some commands are sent with the whole buffer that they were made in.
inline std::string WholeBuffer(std::string_view command, std::size_t size) {
  std::string buffer(command);
  buffer.resize(size, '\0');
  return buffer;
}

inline std::vector<Conversation> FileConversations() {
  constexpr std::size_t kMediaBuffer = 4096;
  return {
      {"PushedFile", Pushed(255, "/tmp/x.pdf")},
      {"PushedFileWithABadName",
       {Exchange(kModeChange, kDone), Exchange(kPushStart, kDone),
        Exchange(TransferPacket(2, test::BytesOf("content")), kDone),
        Exchange(PushEnd(255, "x/../../y"), kRefused)}},
      {"PacketOfAnUnknownType", {Exchange(kModeChange, kDone), Exchange(kUnknownPacket, kRefused)}},
      {"PulledFile", Pulled(kPullRequest, "picture")},
      {"PulledFileThatIsNotThere", {Exchange(kPullRequest, kRefused), Exchange(kRejected)}},
      {"ListOfPictures", {Exchange(WholeBuffer(kListPictures, kMediaBuffer), kTwoNames)}},
      {"DeletedPicture", {Exchange(WholeBuffer(kDeletePicture, kMediaBuffer), kDone)}},
      {"DeletedPictures", {Exchange(WholeBuffer(kDeleteAllPictures, 1024), kDone)}},
      {"DeletedHeadPhotoThatIsNotThere", {Exchange(kDeleteHeadPhoto, kRefused)}},
      {"FirstPiece", {Exchange(kPiece, kDone)}},
      {"PictureThatIsThere", {Exchange(kQueryPicture, kPictureIsThere)}},
      {"PictureThatIsMissing", Exchanges{Exchange(kQueryPicture, kRefused)} + Pushed(0, "x.jpg")},
      {"DeletedQrCode", {Exchange(kDeleteQrCode)}},
      {"Update", Pushed(4, "fw.dat") + Exchanges{Exchange(kUpdate)}},
  };
}

}  // namespace gwq::wire
