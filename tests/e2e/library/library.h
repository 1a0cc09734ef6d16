// The built library, loaded as a teller application loads it: a copy in a directory of its own, so that its
// log stands there.
#pragma once

#include <string>

#include <gwq/gwq.h>
#include "support/temp_dir.h"

namespace gwq::test {

class Library {
 public:
  // With the log switched on, if `ini` says so.
  explicit Library(const std::string& ini = "");
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  // A function of the library by its declaration and name: Get<decltype(&GWQ_ResetKey)>("GWQ_ResetKey").
  template <typename Function>
  Function Get(const char* name) const {
    return reinterpret_cast<Function>(Find(name));
  }

  // Today's log as it stands.
  [[nodiscard]] std::string Log() const;

  // The calls that the sessions make.
  decltype(&TransProc) trans_proc;
  decltype(&TransProcByEnd) trans_proc_by_end;
  decltype(&TransProcOnlyRead) trans_proc_only_read;
  decltype(&CancelRead) cancel_read;
  decltype(&EndOfRead2) end_of_read2;
  decltype(&GWQ_SetPinLen) set_pin_len;
  decltype(&GWQ_UpdateMKey) update_master_key;
  decltype(&GWQ_ResetKey) reset_key;
  decltype(&GWQ_DownLoadWKey) load_working_key;
  decltype(&GWQ_ActiveWKey) activate_working_key;
  decltype(&GWQ_ReadPin) read_pin;
  decltype(&GWQ_ReadPinDES) read_pin_des;
  decltype(&GWQ_ReadPinAnsi) read_pin_ansi;
  decltype(&GWQ_GetVerBuildDate) build_date;
  decltype(&CheckUtf8version) takes_utf8;

 private:
  [[nodiscard]] void* Find(const char* name) const;

  TempDir directory_;
  void* handle_;
};

}  // namespace gwq::test
