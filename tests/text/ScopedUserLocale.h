// Test helper: makes `name` the user's locale (LC_ALL) for the guard's lifetime
// and tells the library, then restores the environment and tells it again.
#ifndef QVSYSBASE_TESTS_TEXT_SCOPEDUSERLOCALE_H_
#define QVSYSBASE_TESTS_TEXT_SCOPEDUSERLOCALE_H_

#include <locale.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "qvsysbase/QvStringUtil.h"

namespace qvsysbase::testing_support {

inline bool IsLocaleInstalled(const char* name) {
  const locale_t probe = ::newlocale(LC_ALL_MASK, name, locale_t{});
  if (probe != locale_t{}) ::freelocale(probe);
  return probe != locale_t{};
}

class ScopedUserLocale {
 public:
  explicit ScopedUserLocale(const char* name) {
    if (const char* previous = std::getenv("LC_ALL")) m_Previous = previous;
    ::setenv("LC_ALL", name, 1);
    QvStringUtil::SettingChanged();
  }
  ~ScopedUserLocale() {
    m_Previous ? ::setenv("LC_ALL", m_Previous->c_str(), 1) : ::unsetenv("LC_ALL");
    QvStringUtil::SettingChanged();
  }
  ScopedUserLocale(const ScopedUserLocale&) = delete;
  ScopedUserLocale& operator=(const ScopedUserLocale&) = delete;

 private:
  std::optional<std::string> m_Previous;
};

inline constexpr auto kGermanLocale = "de_DE.UTF-8";
inline constexpr auto kGermanMissing = "no de_DE.UTF-8 (localedef -i de_DE -f UTF-8 de_DE.UTF-8)";

}  // namespace qvsysbase::testing_support

#endif  // QVSYSBASE_TESTS_TEXT_SCOPEDUSERLOCALE_H_
