#include "e2e/library/library.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

namespace gwq::test {
namespace {

void* Load(const TempDir& directory, const std::string& ini) {
  const std::filesystem::path file = directory / "libgwq.so";
  std::filesystem::copy_file(GWQ_LIBRARY_FILE, file);
  if (!ini.empty()) WriteFile(directory / "GWQ_LOG.ini", ini);
  void* handle = dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) throw std::runtime_error(dlerror());  // NOLINT(concurrency-mt-unsafe)
  return handle;
}

}  // namespace

Library::Library(const std::string& ini) : handle_(Load(directory_, ini)) {
  trans_proc = Get<decltype(trans_proc)>("TransProc");
  trans_proc_by_end = Get<decltype(trans_proc_by_end)>("TransProcByEnd");
  trans_proc_only_read = Get<decltype(trans_proc_only_read)>("TransProcOnlyRead");
  cancel_read = Get<decltype(cancel_read)>("CancelRead");
  end_of_read2 = Get<decltype(end_of_read2)>("EndOfRead2");
  set_pin_len = Get<decltype(set_pin_len)>("GWQ_SetPinLen");
  update_master_key = Get<decltype(update_master_key)>("GWQ_UpdateMKey");
  reset_key = Get<decltype(reset_key)>("GWQ_ResetKey");
  load_working_key = Get<decltype(load_working_key)>("GWQ_DownLoadWKey");
  activate_working_key = Get<decltype(activate_working_key)>("GWQ_ActiveWKey");
  read_pin = Get<decltype(read_pin)>("GWQ_ReadPin");
  read_pin_des = Get<decltype(read_pin_des)>("GWQ_ReadPinDES");
  read_pin_ansi = Get<decltype(read_pin_ansi)>("GWQ_ReadPinAnsi");
  build_date = Get<decltype(build_date)>("GWQ_GetVerBuildDate");
  takes_utf8 = Get<decltype(takes_utf8)>("CheckUtf8version");
}

Library::~Library() {
  dlclose(handle_);
}

void* Library::Find(const char* name) const {
  void* symbol = dlsym(handle_, name);
  if (symbol == nullptr) throw std::runtime_error(std::string("not exported: ") + name);
  return symbol;
}

std::string Library::Log() const {
  std::string log;
  const std::filesystem::path directory = directory_ / "Log/Gwq_Volkarn";
  if (!std::filesystem::exists(directory)) return log;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) log += ReadFile(entry.path());
  return log;
}

}  // namespace gwq::test
