#include "qvsysbase/QvLocaleUtil.h"

#include <ctime>
#include <iterator>
#include <locale>
#include <sstream>

#include "qvsysbase/QvStringUtil.h"
#include "text/UserLocale.h"

namespace qvsysbase {
namespace {

// Installs a global locale for its lifetime; the previous one comes back even
// when formatting throws.
class ScopedGlobalLocale {
 public:
  explicit ScopedGlobalLocale(const std::locale& loc) : m_Previous(std::locale::global(loc)) {}
  ~ScopedGlobalLocale() { std::locale::global(m_Previous); }
  ScopedGlobalLocale(const ScopedGlobalLocale&) = delete;
  ScopedGlobalLocale& operator=(const ScopedGlobalLocale&) = delete;

 private:
  std::locale m_Previous;
};

// The strftime conversions of the full and the abbreviated month name.
constexpr char kFullMonthConversion = 'B';
constexpr char kAbbreviatedMonthConversion = 'b';

}  // namespace

std::wstring QvLocaleUtil::GetMonthName(unsigned month, MONTH_STYLE style) {
  const std::locale loc = detail::MonthNameLocale();
  std::string narrow;
  {
    const ScopedGlobalLocale global(loc);
    const auto& facet = std::use_facet<std::time_put<char>>(loc);
    std::tm time{};
    time.tm_mon = static_cast<int>(month);
    std::ostringstream os;
    facet.put(std::ostreambuf_iterator<char>(os),
              os,
              ' ',
              &time,
              style != ABBREVIATED ? kFullMonthConversion : kAbbreviatedMonthConversion);
    narrow = os.str();
  }
  std::wstring wide;
  QvStringUtil::ConvertStringToWString(narrow, wide);
  return wide;
}

}  // namespace qvsysbase
