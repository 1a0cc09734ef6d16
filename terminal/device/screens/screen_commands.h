// SPDX-License-Identifier: MIT
// The commands that put something in front of the customer. What the host is told:
//
//   evaluation                B1F, B2F, B3F; B0F for no rating and for the time-out
//   information, HTML page    B0F confirm, B1F cancel, B3F time-out
//   HTML page from a file     BokF, BcancelF, B0F time-out
//   keypad                    A, digits, F; AF for cancel; the host has its own time-out
//   document to confirm,      STX 0xAA ETX done, STX 'f' ETX cancel, STX 'w' ETX time-out,
//     signing, hand-sign      STX 'U' ETX when a document is not there
//   checkout                  STX 0xAA ok ETX, STX 'w' ETX cancel, STX 'f' ETX time-out
//
// What only shows something, and the settings, are never answered: the host does not
// read then, and would take an answer for that of its next command.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "device/files/file_system.h"
#include "device/host_channel.h"
#include "device/pad/key_entry.h"
#include "device/screens/screen_session.h"
#include "device/settings.h"
#include "device/text_commands.h"

namespace gwq::terminal::device {

class ScreenCommands {
 public:
  // All must outlive this object.
  ScreenCommands(HostChannel& host, ScreenSession& screens, KeyEntry& entry, FileSystem& files,
                 const Settings& settings)
      : host_(host), screens_(screens), entry_(entry), files_(files), settings_(settings) {}

  // This object must outlive the table.
  void AddTo(TextCommands& table);

 private:
  using Documents = std::optional<std::vector<std::string>>;

  void AddEvaluation(TextCommands& table);
  void AddInformation(TextCommands& table);
  void AddDocuments(TextCommands& table);
  void AddOthers(TextCommands& table);

  void SetTimeout(Time& timeout, int seconds);
  [[nodiscard]] bool SetCard(std::string_view fields);
  void ShowCard(std::string_view fields);
  void StartEvaluation();
  void StartInformation(std::string_view split_text);
  void ShowHtml(std::string_view split_page);
  void StartHtml(std::string_view split_page, bool keeps_picture);
  void StartPageFile(int seconds, std::string_view fields);
  void StartKeypad(int mode);

  void ShowDocuments(int seconds, std::string_view list);
  void ConfirmDocuments(int seconds, std::string_view list);
  void SetVoice(std::string_view text);
  void TellTzg();
  void StartSigning(int seconds, std::string_view fields);
  void StartTzgSigning(const protocol::Match& match);
  void Sign(Screen screen, std::string_view fields);
  void StartHandSign(int page_type, int seconds);
  void StartCheckout(int seconds, std::string_view fields);
  void CloseProgram();

  // Those in the list, all of which must be there.
  [[nodiscard]] Documents FindDocuments(std::string_view list) const;
  [[nodiscard]] bool IsThere(const std::string& path) const { return files_.Open(path) != nullptr; }

  HostChannel& host_;
  ScreenSession& screens_;
  KeyEntry& entry_;
  FileSystem& files_;
  const Settings& settings_;
  Time evaluation_time_{30000};
  Time information_time_{30000};
  Time keypad_time_{30000};
  std::optional<TellerCard> card_;
  int countdown_ = 0;
  std::string voice_;
};

}  // namespace gwq::terminal::device
