#include "text/UserLocale.h"

#include <mutex>
#include <stdexcept>

#include "text/TextHooks.h"

namespace qvsysbase::detail {
namespace {

// Every locale the unit created, newest first. A locale that SettingChanged
// replaces stays here until unload rather than being freed at once: another
// thread may still hold a copy, and although std::locale counts its references,
// freeing the facets inside the standard library while such a copy is in use is
// a synchronisation that ThreadSanitizer cannot see. Changes of regional
// settings are rare, and each costs a few kilobytes until unload.
struct LocaleNode {
  std::locale m_Locale;
  LocaleNode* m_pOlder;
};

// Plain pointers, constant-initialised and without destructors, so that nothing
// here is torn down at exit before the library-lifetime object runs
// FinalizeLocaleUnit.
constinit std::mutex g_mutex;
constinit LocaleNode* g_pAllLocales = nullptr;          // guarded by g_mutex
constinit const std::locale* g_pUserLocale = nullptr;   // guarded by g_mutex
constinit const std::locale* g_pMonthLocale = nullptr;  // guarded by g_mutex; null until used

// The empty name asks for the environment's locale; an environment naming a
// locale this machine lacks must not keep the library from loading.
std::locale MakeUserLocale() {
  try {
    return std::locale("");
  } catch (const std::runtime_error&) {
    return std::locale::classic();
  }
}

const std::locale* NewUserLocaleLocked() {
  g_pAllLocales = new LocaleNode{MakeUserLocale(), g_pAllLocales};
  return &g_pAllLocales->m_Locale;
}

}  // namespace

void InitializeLocaleUnit() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_pUserLocale = NewUserLocaleLocked();
}

void FinalizeLocaleUnit() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  while (g_pAllLocales != nullptr) {
    LocaleNode* const older = g_pAllLocales->m_pOlder;
    delete g_pAllLocales;
    g_pAllLocales = older;
  }
  g_pUserLocale = nullptr;
  g_pMonthLocale = nullptr;
}

std::locale UserDefaultLocale() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  // Absent only before load or after unload, when another library's static
  // objects call in: build it then rather than fail.
  if (g_pUserLocale == nullptr) {
    g_pUserLocale = NewUserLocaleLocked();
  }
  return *g_pUserLocale;
}

std::locale MonthNameLocale() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  if (g_pMonthLocale == nullptr) {
    g_pMonthLocale = NewUserLocaleLocked();
  }
  return *g_pMonthLocale;
}

void RereadUserLocale() {
  const std::lock_guard<std::mutex> lock(g_mutex);
  g_pUserLocale = NewUserLocaleLocked();
  g_pMonthLocale = nullptr;  // rebuilt on its next use
}

}  // namespace qvsysbase::detail
