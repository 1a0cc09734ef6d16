// SPDX-License-Identifier: MIT
// The built library, loaded as a teller application loads it: a copy in a directory of its own, so that its
// log stands there.
#pragma once

#include <cstring>
#include <string>
#include <string_view>

#include <gwq/gwq.h>
#include "support/temp_dir.h"

namespace gwq::test {

// What a function of C is called. GCC writes "... [with auto function = Name; ...", Clang "...
// [function = &Name]".
template <auto function>
std::string NameOfFunction() {
  std::string_view name = __PRETTY_FUNCTION__;
  name.remove_prefix(name.find("function = ") + std::strlen("function = "));
  name.remove_prefix(name.find_first_not_of("(& "));
  return std::string(name.substr(0, name.find_first_of(");] ")));
}

class Library {
 public:
  // With the log switched on, if `ini` says so.
  explicit Library(const std::string& ini = "");
  ~Library();
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;

  // The library's own of a declared function: Get<GWQ_ResetKey>().
  template <auto function>
  decltype(function) Get() const {
    return reinterpret_cast<decltype(function)>(Find(NameOfFunction<function>()));
  }

  // Today's log as it stands.
  [[nodiscard]] std::string Log() const;

 private:
  [[nodiscard]] void* Find(const std::string& name) const;

  TempDir directory_;
  void* handle_;

 public:
  // The calls that the sessions make.
  decltype(&TransProc) trans_proc = Get<TransProc>();
  decltype(&TransProcByEnd) trans_proc_by_end = Get<TransProcByEnd>();
  decltype(&TransProcOnlyRead) trans_proc_only_read = Get<TransProcOnlyRead>();
  decltype(&CancelRead) cancel_read = Get<CancelRead>();
  decltype(&EndOfRead2) end_of_read2 = Get<EndOfRead2>();
  decltype(&GWQ_SetPinLen) set_pin_len = Get<GWQ_SetPinLen>();
  decltype(&GWQ_UpdateMKey) update_master_key = Get<GWQ_UpdateMKey>();
  decltype(&GWQ_ResetKey) reset_key = Get<GWQ_ResetKey>();
  decltype(&GWQ_DownLoadWKey) load_working_key = Get<GWQ_DownLoadWKey>();
  decltype(&GWQ_ActiveWKey) activate_working_key = Get<GWQ_ActiveWKey>();
  decltype(&GWQ_ReadPin) read_pin = Get<GWQ_ReadPin>();
  decltype(&GWQ_ReadPinDES) read_pin_des = Get<GWQ_ReadPinDES>();
  decltype(&GWQ_ReadPinAnsi) read_pin_ansi = Get<GWQ_ReadPinAnsi>();
  decltype(&GWQ_GetVerBuildDate) build_date = Get<GWQ_GetVerBuildDate>();
  decltype(&CheckUtf8version) takes_utf8 = Get<CheckUtf8version>();
};

}  // namespace gwq::test
