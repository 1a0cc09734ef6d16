// SPDX-License-Identifier: MIT
// Conversations about what the customer sees, and about the terminal itself.
#pragma once

#include "wire/conversation.h"
#include "wire/document_frames.h"
#include "wire/file_conversations.h"
#include "wire/screen_frames.h"

namespace gwq::wire {

inline Exchanges PushedDocuments() {
  return Pushed(255, "/tmp/a.pdf", "first") + Pushed(255, "/tmp/b.pdf", "second");
}
inline Exchanges PulledSignature() {
  return Pulled(kPullPicture, kSignaturePicture) + Pulled(kPullStrokes, kSignatureStrokes);
}

inline std::vector<Conversation> EvaluationConversations() {
  return {
      {"TellerCard", {Exchange(kEvaluationTime30), Exchange(kShowCard)}},
      {"TellerCardUnseen", {Exchange(kSetCard)}},
      {"Rating", {Exchange(kEvaluationTime30), Exchange(kStartRating, kKey3), Exchange(kCloseEvaluation)}},
      {"RatingAtTheCounter",
       {Exchange(kCounterCard), Exchange(kEvaluationTime30), Exchange(kStartCounterRating, kKey3),
        Exchange(kCloseEvaluation)}},
  };
}

inline std::vector<Conversation> InformationConversations() {
  const Exchanges set_up{Exchange(kCloseInformation), Exchange(kInformationTime30)};
  const Exchange version(kGetVersion, kVersion20231114);
  return {
      {"Message", set_up + Exchanges{Exchange(kShowMessage, kKey0), Exchange(kCloseInformation)}},
      {"MessageThatIsCancelled",
       set_up + Exchanges{Exchange(kShowMessage, kKey1), Exchange(kCloseInformation)}},
      {"Keypad", {Exchange(kKeypadTime30), Exchange(kKeypadMode0, kKeyed1234), Exchange(kCloseKeypad)}},
      {"KeypadWithStars",
       {Exchange(kKeypadTime30), Exchange(kKeypadMode1, kKeyed1234), Exchange(kCloseKeypad)}},
      {"PageOnlyShown", Exchanges{version} + set_up + Exchanges{Exchange(kShowPage)}},
      {"PageWithKeys",
       Exchanges{version} + set_up + Exchanges{Exchange(kCountdown7), Exchange(kAskPage, kKey0)}},
      {"PageThatIsCaptured",
       set_up + Exchanges{Exchange(kCapturePage, kKey0)} + Pulled(kPullCapture, kCapturedPicture)},
      {"PageAsAFile", Pushed(255, "/tmp/infoviewerex.html", "<html></html>") +
                          Exchanges{Exchange(kShowPageFile, kPageConfirmed)}},
      {"Checkout", {Exchange(kCheckOut, kCheckedOut)}},
      {"CheckoutThatIsCancelled", {Exchange(kCheckOut, kCheckOutCancelled)}},
  };
}

inline std::vector<Conversation> DocumentConversations() {
  return {
      {"ShownDocuments", PushedDocuments() + Exchanges{Exchange(kShowDocuments)}},
      {"ConfirmedDocuments", PushedDocuments() + Exchanges{Exchange(kConfirmDocuments, kDone)}},
      {"DocumentsThatAreDeclined",
       PushedDocuments() + Exchanges{Exchange(kConfirmDocuments, kCustomerCancelled)}},
      {"SignedDocuments", PushedDocuments() + Exchanges{Exchange(kSignDocuments, kDone)} + PulledSignature()},
      {"SignedDocumentsWithAVoice", Exchanges{Exchange(kSetVoice, kDone)} + PushedDocuments() +
                                        Exchanges{Exchange(kSignDocuments, kDone)} + PulledSignature()},
      {"SignedDocumentsInTzgMode",
       Exchanges{Exchange(kSupportsTzg, kDone)} + PushedDocuments() +
           Exchanges{Exchange(kSetVoiceAsItIs, kDone).Unread(), Exchange(kSignInTzgMode, kDone)} +
           PulledSignature()},
      {"SignedPage", Pushed(255, "/tmp/infoviewer.pdf") +
                         Exchanges{Exchange(kCloseInformation), Exchange(kHandSign, kDone)} +
                         PulledSignature()},
  };
}

inline std::vector<Conversation> TerminalConversations() {
  return {
      {"CloseProgram", {Exchange(kCloseProgram, kDone)}},
      {"Description",
       {Exchange(kGetItem6, kProductionDate), Exchange(kGetProductionDate, kProductionDate),
        Exchange(kGetModel, kModel), Framed(kReadDeviceId, "st_00000001"),
        Exchange(kGetFirmware, kVersion20231114)}},
      {"UnknownCommand", {Exchange(kNoCommand, kUnknownCommand)}},
      {"Noise", {Exchange(kNoise, kRefused)}},
  };
}

}  // namespace gwq::wire
