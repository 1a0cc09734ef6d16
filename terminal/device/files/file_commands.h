// SPDX-License-Identifier: MIT
// The commands about files: sending, fetching, listing, deleting, asking for them,
// and the firmware update. Those that are answered:
//
//   HIDCHANGE        done; then packets (push.h)
//   PULLFILE path    packets (pull.h); a missing file is refused, which a host
//                    takes for a packet of an impossible type
//   RESPONSE 0 or 1  acknowledges a packet; not answered itself
//   GETFILELIST t    STX names-with-"|"-between ETX, in GBK
//   DELETE t|name    done, or refused if there is none; the name "*" deletes all
//   DOWNLOAD t|name|piece   done or refused (text_download.h)
//   SPECQUERYFILE p  STX path ETX when the file is there, else refused
//
// Some hosts send DELETE without reading its answer, so it lapses: what the host
// has not taken when it sends its next command is withdrawn.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "device/files/file_faults.h"
#include "device/files/file_system.h"
#include "device/files/pull.h"
#include "device/files/push.h"
#include "device/files/text_download.h"
#include "device/host_channel.h"
#include "device/settings.h"
#include "device/text_commands.h"
#include "protocol/command_reader.h"

namespace gwq::terminal::device {

class FileCommands {
 public:
  // `settings` changes with a firmware update. All must outlive this object.
  FileCommands(HostChannel& host, protocol::CommandReader& reader, FileSystem& files, FileFaults faults,
               Settings& settings);

  // This object must outlive the table.
  void AddTo(TextCommands& table);

  // Before any command that ends a pull.
  void StopPull();

  void Advance(Time now) { pull_.Advance(now); }
  [[nodiscard]] std::optional<Time> NextDeadline() const { return pull_.NextDeadline(); }

 private:
  // Has `run` answer unless the script of faults says otherwise.
  void Do(const std::string& step, const std::string& detail, const std::function<void()>& run);
  // The same for a command that is never answered.
  void DoQuietly(const std::string& step, const std::string& detail, const std::function<void()>& run);

  void PullFile(std::string_view name);
  void TakeResponse(std::string_view text);
  void ListFiles(int type);
  void Delete(int type, std::string_view name);
  [[nodiscard]] bool Remove(int type, std::string_view name);
  void RemoveAll(int type);
  void TakePiece(int type, std::string_view name_and_record);
  void Query(std::string_view name);
  void DeleteQrCode();
  void Update(std::string_view name);
  void Install(FileReader& firmware);

  HostChannel& host_;
  FileSystem& files_;
  Settings& settings_;
  FaultCounter faults_;
  Push push_;
  Pull pull_;
  TextDownload text_download_;
};

}  // namespace gwq::terminal::device
