// Numbers in the user's notation: reading them and removing the zeros that end
// their fraction.
#include "text/UserNumbers.h"

#include <charconv>
#include <cstddef>
#include <locale>
#include <string>
#include <system_error>

#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/qvExcept.h"
#include "text/UserLocale.h"

QV_UNIT("UserNumbers", "$Revision: #1 $")

namespace qvsysbase {
namespace {

bool IsAsciiDigit(wchar_t c) { return c >= L'0' && c <= L'9'; }

// Where the parts of a number lie in a text: [begin, end) is the number without
// its surrounding spaces, [separator, mantissaEnd) its fraction with the
// separator (separator is npos when there is none).
struct NumberShape {
  std::size_t begin = 0;
  std::size_t end = 0;
  std::size_t separator = std::wstring_view::npos;
  std::size_t mantissaEnd = 0;
  std::size_t integerDigits = 0;
};

std::size_t SkipDigits(std::wstring_view text, std::size_t i) {
  while (i < text.size() && IsAsciiDigit(text[i])) {
    ++i;
  }
  return i;
}

std::size_t SkipSign(std::wstring_view text, std::size_t i) {
  return i < text.size() && (text[i] == L'+' || text[i] == L'-') ? i + 1 : i;
}

// Recognises [spaces] [sign] digits [separator digits] [e|E [sign] digits]
// [spaces], with at least one digit in the mantissa. False for anything else.
bool ParseNumber(std::wstring_view text, wchar_t separator, NumberShape& shape) {
  const auto first = text.find_first_not_of(L' ');
  if (first == std::wstring_view::npos) {
    return false;
  }
  shape.begin = first;
  shape.end = text.find_last_not_of(L' ') + 1;
  const std::wstring_view number = text.substr(0, shape.end);
  std::size_t i = SkipSign(number, shape.begin);
  const std::size_t digitsBegin = i;
  i = SkipDigits(number, i);
  shape.integerDigits = i - digitsBegin;
  std::size_t digits = shape.integerDigits;
  if (i < number.size() && number[i] == separator) {
    shape.separator = i;
    const std::size_t fractionBegin = i + 1;
    i = SkipDigits(number, fractionBegin);
    digits += i - fractionBegin;
  }
  if (digits == 0) {
    return false;
  }
  shape.mantissaEnd = i;
  if (i < number.size() && (number[i] == L'e' || number[i] == L'E')) {
    const std::size_t exponentDigits = SkipSign(number, i + 1);
    i = SkipDigits(number, exponentDigits);
    if (i == exponentDigits) {
      return false;
    }
  }
  return i == number.size();
}

}  // namespace

namespace detail {

wchar_t UserDecimalSeparator() {
  return std::use_facet<std::numpunct<wchar_t>>(UserDefaultLocale()).decimal_point();
}

bool ReadUserNumber(std::wstring_view text, wchar_t separator, double& value) {
  NumberShape shape;
  if (!ParseNumber(text, separator, shape)) {
    return false;
  }
  // from_chars reads the C notation and takes no plus sign.
  std::string ascii;
  ascii.reserve(shape.end - shape.begin);
  for (std::size_t i = shape.begin; i < shape.end; ++i) {
    const wchar_t c = text[i];
    if (c == L'+' && i == shape.begin) {
      continue;
    }
    ascii.push_back(i == shape.separator ? '.' : static_cast<char>(c));
  }
  double parsed = 0.0;
  const auto [ptr, ec] = std::from_chars(ascii.data(), ascii.data() + ascii.size(), parsed);
  if (ec != std::errc{} || ptr != ascii.data() + ascii.size()) {
    return false;
  }
  value = parsed;
  return true;
}

}  // namespace detail

std::wstring& QvStringUtil::RemoveTrailingZeroes(std::wstring& s) {
  NumberShape shape;
  if (!ParseNumber(s, detail::UserDecimalSeparator(), shape) ||
      shape.separator == std::wstring::npos) {
    return s;
  }
  std::size_t keepUpTo = shape.mantissaEnd;
  while (keepUpTo > shape.separator + 1 && s[keepUpTo - 1] == L'0') {
    --keepUpTo;
  }
  if (keepUpTo == shape.separator + 1) {
    // No fraction digit left: the separator goes too, unless the mantissa would
    // then hold no digit at all (".000" keeps ".0").
    keepUpTo = shape.integerDigits > 0 ? shape.separator : keepUpTo + 1;
  }
  return s.erase(keepUpTo, shape.mantissaEnd - keepUpTo);
}

bool QvStringUtil::ReadValueFromString(const wchar_t* text, double& value) {
  if (text == nullptr) {
    return false;
  }
  return detail::ReadUserNumber(text, detail::UserDecimalSeparator(), value);
}

}  // namespace qvsysbase
