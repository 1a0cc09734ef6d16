// SPDX-License-Identifier: MIT
// The terminal on USB with documents to show, and with a signature to be fetched.
#pragma once

#include <optional>

#include "support/iconv_text.h"
#include "unit/screens/screens_rig.h"
#include "wire/document_frames.h"

namespace gwq::test {

// What the log says of the documents, of the wait, and of the stroke data.
inline constexpr char kList[] = "szFileNameListGBK=/tmp/a.pdf|/tmp/b.pdf";
inline constexpr char kPushed[] = "pushFileToZ11 nRet = 0";
inline constexpr char kAnswered[] = "TransProc nRet=0\n";
inline std::string SizeLog(std::size_t size) {
  return InGbk("读文件  file_size = ").append(std::to_string(size));
}

// Stroke data in a buffer that was zero.
inline const Bytes kStrokes = BytesOf(std::string_view("strokes", 8));

class SigningRig : public FilesRig {
 protected:
  // Both documents, and what they are called on the terminal.
  std::string MakeDocuments() { return MakeFile("a.pdf", "first") + "|" + MakeFile("b.pdf", "second"); }
  void ExpectDocuments() {
    ExpectPush(255, "/tmp/a.pdf", "first");
    ExpectPush(255, "/tmp/b.pdf", "second");
  }

  // What an earlier screen left behind, which must be gone before the first command.
  void LeaveSomething() { usb_.Answer("B0F"); }

  void ExpectPull(std::string_view request, std::string_view content) {
    usb_.ExpectCommand(request);
    Packet(wire::TransferPacket(2, BytesOf(content)), wire::kAccepted);
    Packet(wire::TransferPacket(3, {}), wire::kAccepted);
  }
  // A pull that the library must reject.
  void ExpectBrokenPull(std::string_view request) {
    usb_.ExpectCommand(request);
    Packet(Bytes(kReportBytes, 0), wire::kRejected);
  }

  // A cancel in the first read after everything scripted so far.
  void CancelTheWait() {
    usb_.OnTransfer([this](const Transfer& transfer) {
      if (transfer.in && usb_.Finished()) CancelRead();
    });
  }

  // From the message that follows this one.
  static std::vector<std::string> MessagesAfter(const LogCapture& log, std::string_view last) {
    std::vector<std::string> own = OwnMessages(log);
    const auto found = std::find(own.rbegin(), own.rend(), last);
    return {found.base(), own.end()};
  }

  static constexpr int kUntouched = 77;

  // What a caller passes.
  std::string documents_ = MakeDocuments();
  std::string location_ = "p1,x2";
  std::string voice_text_ = "请签";
  char* voice_ = voice_text_.data();
  std::string picture_path_ = Path("sig.png");
  char* picture_ = picture_path_.data();
  char link_text_[2] = "9";
  char* link_ = link_text_;
  std::optional<GuardedBuffer> data_{std::in_place, 8U, std::uint8_t{0}};

 private:
  void Packet(const Bytes& packet, std::string_view acknowledgement) {
    for (const Bytes& report : CutIntoReports(packet)) usb_.Answer(report);
    usb_.ExpectCommand(acknowledgement);
  }
};

// Answers that none of the terminal's own are a part of, or that are part of none.
inline std::vector<Bytes> OtherAnswers() {
  return {
      BytesOf("\x02x\x03"), BytesOf("\x02\xAA\x31\x03"), BytesOf("\xAA\x03"),         BytesOf("\x03"),
      BytesOf("\x02\x03"),  BytesOf(" \x02\xAA\x03"),    BytesOf("\x02\x66\x66\x03"), BytesOf("\x02W\x03"),
      BytesOf("\x02u\x03"), BytesOf("\x02U\x02U\x03")};
}

}  // namespace gwq::test
