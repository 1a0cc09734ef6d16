// The terminal on USB with documents to show, and with a signature to be fetched.
#pragma once

#include "frame/transaction.h"
#include "support/guarded_buffer.h"
#include "support/iconv_text.h"
#include "unit/files/files_rig.h"
#include "wire/document_frames.h"

namespace gwq::test {

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

  // A cancel with the transfer out of this number makes its exchange fail with -10.
  void FailSending(int index) {
    usb_.OnTransfer([index](const Transfer& transfer) {
      if (!transfer.in && transfer.index == index) CancelRead();
    });
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

  static constexpr int kDrainSeconds = 1;
  static constexpr int kUntouched = 77;

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
