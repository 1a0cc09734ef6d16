// cJSON under its own names, for hosts that link this library alone. Each name calls the shared libcjson, which the
// JSON device call uses as well: one implementation, with one set of hooks.
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
void* g_apart = nullptr;
std::array<void*, kNames.size()> g_functions{};

// Null where libcjson is missing, or older than the one this library was built with.
template <typename Function>
Function* Find(CjsonFunction function) {
  return reinterpret_cast<Function*>(g_functions[static_cast<std::size_t>(function)]);
}

// Whether the host defines a function of this name itself: libcjson calls its own functions by name, and would call the
// host's, of whatever version and with hooks of its own.
bool IsTheHosts(const char* name, const void* libcjsons) {
  const void* const found = dlsym(RTLD_DEFAULT, name);
  Dl_info ours{};
  Dl_info theirs{};
  if (found == nullptr || found == libcjsons || dladdr(found, &theirs) == 0) return false;
  return dladdr(reinterpret_cast<const void*>(&IsTheHosts), &ours) == 0 || ours.dli_fbase != theirs.dli_fbase;
}

bool HostHasItsOwn(void* library) {
  return std::ranges::any_of(kNames,
                             [library](const char* name) { return IsTheHosts(name, dlsym(library, name)); });
}

void FindAll(void* library) {
  for (std::size_t i = 0; i < kNames.size(); ++i) g_functions[i] = dlsym(library, kNames[i]);
}

// The memory is this process's, also for a libcjson that has a libc of its own.
void InitHooks(cJSON_Hooks* hooks) {
  const auto init = Find<void(cJSON_Hooks*)>(CjsonFunction::k_cJSON_InitHooks);
  if (init == nullptr) return;
  if (g_apart == nullptr) return init(hooks);
  cJSON_Hooks filled{&std::malloc, &std::free};
  if (hooks != nullptr && hooks->malloc_fn != nullptr) filled.malloc_fn = hooks->malloc_fn;
  if (hooks != nullptr && hooks->free_fn != nullptr) filled.free_fn = hooks->free_fn;
  init(&filled);
}

// In a namespace of its own, where the host's functions are not seen.
void LoadApart() {
  g_apart = dlmopen(LM_ID_NEWLM, kLibrary, RTLD_LAZY);
  if (g_apart == nullptr) return;
  FindAll(g_apart);
  InitHooks(nullptr);
}

// libcjson is loaded for as long as this library is. It is not held beyond that: it is bound to the functions here, and
// would hold this library. A program that these functions are compiled into may have to load it.
void Load() {
  const Library present(dlopen(kLibrary, RTLD_LAZY | RTLD_NOLOAD));
  void* const library = present ? present.get() : dlopen(kLibrary, RTLD_LAZY);
  if (library == nullptr) return;
  FindAll(library);
  if (HostHasItsOwn(library)) LoadApart();
}

[[gnu::destructor]] void Unload() {
  if (g_apart != nullptr) dlclose(g_apart);
}

template <typename Result, typename... Arguments>
Result CallCjson(CjsonFunction function, Result (*)(Arguments...),
                 std::type_identity_t<Arguments>... arguments) {
  pthread_once(&g_loaded, &Load);
  const auto found = Find<Result(Arguments...)>(function);
  return found == nullptr ? Result() : found(arguments...);
}

}  // namespace
}  // namespace gwq

#include "screens/cjson_functions.inc"

void cJSON_InitHooks(cJSON_Hooks* hooks) {
  pthread_once(&gwq::g_loaded, &gwq::Load);
  gwq::InitHooks(hooks);
}
