#include "qvsysbase/QvLocaleUtil.h"

#include <ctime>
#include <iterator>
#include <locale>
#include <sstream>

#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/qvExcept.h"
#include "text/UserLocale.h"

QV_UNIT("QvLocaleUtil", "$Revision: #1 $")

namespace qvsysbase {
namespace {

// The strftime conversions of the full and the abbreviated month name.
constexpr char kFullMonthConversion = 'B';
constexpr char kAbbreviatedMonthConversion = 'b';

}  // namespace

std::wstring QvLocaleUtil::GetMonthName(unsigned month, MONTH_STYLE style) {
  // The time facet formats through the locale of the stream it is given, so
  // the stream carries the user's locale and the process's global locales (the
  // C++ one and, behind it, the C library's) are never touched: installing one
  // and putting the old one back would leave the C library's locale changed.
  const std::locale loc = detail::MonthNameLocale();
  std::ostringstream os;
  os.imbue(loc);
  std::tm time{};
  time.tm_mon = static_cast<int>(month);
  std::use_facet<std::time_put<char>>(loc).put(
      std::ostreambuf_iterator<char>(os),
      os,
      ' ',
      &time,
      style != ABBREVIATED ? kFullMonthConversion : kAbbreviatedMonthConversion);
  std::wstring wide;
  QvStringUtil::ConvertStringToWString(os.str(), wide);
  return wide;
}

}  // namespace qvsysbase
