// SPDX-License-Identifier: MIT
// cJSON under its own names, for hosts that link only this library. Each name calls the shared
// libcjson, which DEV_CommCall uses as well: one implementation, with one set of hooks.
#define CJSON_API_VISIBILITY
#include <cjson/cJSON.h>
#include <dlfcn.h>
#include <pthread.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <type_traits>

namespace gwq {
namespace {

enum class CjsonFunction : std::size_t {
#define GWQ_CJSON_NAME(name) k_##name,
#include "screens/cjson_names.inc"
#undef GWQ_CJSON_NAME
};

constexpr std::array kNames{
#define GWQ_CJSON_NAME(name) #name,
#include "screens/cjson_names.inc"
#undef GWQ_CJSON_NAME
};

constexpr const char* kLibrary = "libcjson.so.1";

struct CloseLibrary {
  void operator()(void* library) const { dlclose(library); }
};
using Library = std::unique_ptr<void, CloseLibrary>;

constinit pthread_once_t g_loaded = PTHREAD_ONCE_INIT;
void* g_separate = nullptr;
std::array<void*, kNames.size()> g_functions{};

// Null when libcjson is missing, or older than the one this library was built with.
template <typename Function>
Function* FindFunction(CjsonFunction function) {
  return reinterpret_cast<Function*>(g_functions[static_cast<std::size_t>(function)]);
}

// Whether the host defines a function of this name. libcjson calls its own functions by name, and
// would call the host's, whose version and hooks may differ.
bool IsDefinedByHost(const char* name, const void* libcjsons) {
  const void* const found = dlsym(RTLD_DEFAULT, name);
  Dl_info ours{};
  Dl_info theirs{};
  if (found == nullptr || found == libcjsons || dladdr(found, &theirs) == 0) return false;
  return dladdr(reinterpret_cast<const void*>(&IsDefinedByHost), &ours) == 0 ||
         ours.dli_fbase != theirs.dli_fbase;
}

bool HostDefinesCjson(void* library) {
  return std::ranges::any_of(
      kNames, [library](const char* name) { return IsDefinedByHost(name, dlsym(library, name)); });
}

void FindAll(void* library) {
  for (std::size_t i = 0; i < kNames.size(); ++i) g_functions[i] = dlsym(library, kNames[i]);
}

// Gives this process's malloc and free to a libcjson that has a libc of its own.
void InitHooks(cJSON_Hooks* hooks) {
  const auto init = FindFunction<void(cJSON_Hooks*)>(CjsonFunction::k_cJSON_InitHooks);
  if (init == nullptr) return;
  if (g_separate == nullptr) return init(hooks);
  cJSON_Hooks filled{&std::malloc, &std::free};
  if (hooks != nullptr && hooks->malloc_fn != nullptr) filled.malloc_fn = hooks->malloc_fn;
  if (hooks != nullptr && hooks->free_fn != nullptr) filled.free_fn = hooks->free_fn;
  init(&filled);
}

// Loads libcjson into a namespace of its own, where it does not find the host's functions.
void LoadSeparately() {
  g_separate = dlmopen(LM_ID_NEWLM, kLibrary, RTLD_LAZY);
  if (g_separate == nullptr) return;
  FindAll(g_separate);
  InitHooks(nullptr);
}

// The reference to a libcjson that is present is dropped: libcjson is bound to the functions here,
// and keeping it loaded would keep this library loaded. A program that has these functions compiled
// in may have to load it.
void Load() {
  const Library present(dlopen(kLibrary, RTLD_LAZY | RTLD_NOLOAD));
  void* const library = present ? present.get() : dlopen(kLibrary, RTLD_LAZY);
  if (library == nullptr) return;
  FindAll(library);
  if (HostDefinesCjson(library)) LoadSeparately();
}

[[gnu::destructor]] void Unload() {
  if (g_separate != nullptr) dlclose(g_separate);
}

template <typename Result, typename... Arguments>
Result CallCjson(CjsonFunction function, Result (*)(Arguments...),
                 std::type_identity_t<Arguments>... arguments) {
  pthread_once(&g_loaded, &Load);
  const auto found = FindFunction<Result(Arguments...)>(function);
  return found == nullptr ? Result() : found(arguments...);
}

}  // namespace
}  // namespace gwq

#include "screens/cjson_functions.inc"

using namespace gwq;

void cJSON_InitHooks(cJSON_Hooks* hooks) {
  pthread_once(&g_loaded, &Load);
  InitHooks(hooks);
}
