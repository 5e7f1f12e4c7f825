// QvLocaleUtil: names of the months in the language of the user's regional
// settings, for labels of charts and grids that show calendar periods.
//
// Thread-safety: thread-safe. GetMonthName formats through a locale object of
// its own and leaves the process's global C++ locale and the C library's locale
// (setlocale) untouched.
#ifndef QVSYSBASE_QVLOCALEUTIL_H_
#define QVSYSBASE_QVLOCALEUTIL_H_

#include <string>

#include "qvsysbase/Export.h"

namespace qvsysbase {

class QVSYSBASE_API QvLocaleUtil {
 public:
  // 0 asks for the abbreviated month name; any other value for the full name.
  enum MONTH_STYLE : int { ABBREVIATED = 0, FULL = 1 };

  QvLocaleUtil() = delete;

  // The name of `month` (0 is January, 11 December) in the user's default
  // locale, formatted by its narrow time facet and widened from the user's
  // code page. A month of 12 or more is handed to the formatting unchecked;
  // the result is whatever the facet makes of it.
  static std::wstring GetMonthName(unsigned month, MONTH_STYLE style);
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_QVLOCALEUTIL_H_
