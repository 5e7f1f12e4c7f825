#include "text/UserLocale.h"

#include <memory>
#include <mutex>
#include <stdexcept>

#include "LibraryHooks.h"

namespace qvsysbase::detail {
namespace {

// Plain owning pointers rather than smart ones: constant-initialised and with
// no destructor of their own, they cannot be torn down at exit before the
// library-lifetime object has run FinalizeLocaleUnit.
constinit std::mutex g_mutex;
constinit std::locale* g_pUserLocale = nullptr;   // guarded by g_mutex
constinit std::locale* g_pMonthLocale = nullptr;  // guarded by g_mutex
constinit bool g_bMonthLocaleCreated = false;     // guarded by g_mutex

// The empty name asks for the environment's locale; an environment naming a
// locale this machine lacks must not keep the library from loading.
std::unique_ptr<std::locale> NewUserLocale() {
  try {
    return std::make_unique<std::locale>("");
  } catch (const std::runtime_error&) {
    return std::make_unique<std::locale>(std::locale::classic());
  }
}

void ReplaceUserLocaleLocked() {
  std::unique_ptr<std::locale> fresh = NewUserLocale();
  delete g_pUserLocale;
  g_pUserLocale = fresh.release();
}

void DestroyMonthLocaleLocked() {
  delete g_pMonthLocale;
  g_pMonthLocale = nullptr;
  g_bMonthLocaleCreated = false;
}

}  // namespace

void InitializeLocaleUnit() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  ReplaceUserLocaleLocked();
}

void FinalizeLocaleUnit() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  DestroyMonthLocaleLocked();
  delete g_pUserLocale;
  g_pUserLocale = nullptr;
}

std::locale UserDefaultLocale() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  // Absent only before load or after unload, when another library's static
  // objects call in: build it then rather than fail.
  if (g_pUserLocale == nullptr) {
    ReplaceUserLocaleLocked();
  }
  return *g_pUserLocale;
}

std::locale MonthNameLocale() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  if (!g_bMonthLocaleCreated) {
    g_pMonthLocale = NewUserLocale().release();
    g_bMonthLocaleCreated = true;
  }
  return *g_pMonthLocale;
}

void RereadUserLocale() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  ReplaceUserLocaleLocked();
  DestroyMonthLocaleLocked();
}

}  // namespace qvsysbase::detail
