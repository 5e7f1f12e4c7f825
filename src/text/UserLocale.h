// The locale unit's state: the user's default locale, kept for the library's
// lifetime, and the locale the month names are formatted in.
//
// Both are built from the empty locale name (the environment's settings) and
// fall back on the classic "C" locale when the environment names a locale that
// does not exist. The library-wide one is created at library load
// (InitializeLocaleUnit) and again on demand; the month-name one on the first
// request for it. Both go at unload (FinalizeLocaleUnit).
//
// Thread-safety: thread-safe. Callers get copies, and a replaced locale is kept
// until unload, so replacing the locales never invalidates one in use.
#ifndef QVSYSBASE_SRC_TEXT_USERLOCALE_H_
#define QVSYSBASE_SRC_TEXT_USERLOCALE_H_

#include <locale>

namespace qvsysbase::detail {

// The library-wide user's default locale.
std::locale UserDefaultLocale();

// The locale of the month names, created by the first call.
std::locale MonthNameLocale();

// Reads the user's settings again: the library-wide locale is rebuilt now, the
// month-name locale on its next use.
void RereadUserLocale();

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_TEXT_USERLOCALE_H_
