// Conversion between the wide text type and the narrow one in the user's code
// page (the character set of the user's default locale).
#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <locale>
#include <string>
#include <type_traits>

#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/qvExcept.h"
#include "text/UserLocale.h"

QV_UNIT("CodePageConversion", "$Revision: #1 $")

namespace qvsysbase {
namespace {

using WideCodecvt = std::codecvt<wchar_t, char, std::mbstate_t>;

// What stands for a byte sequence that is no character, and for a character
// with no narrow form.
constexpr wchar_t kReplacementCharacter = L'\uFFFD';
constexpr char kNoNarrowForm = '?';

// Runs a codecvt conversion over the whole input. Where the facet stops on
// something it cannot convert, `substitute` goes to the output, the offending
// unit is skipped and the shift state starts afresh. The facet may also take an
// incomplete sequence at the end into its state without complaint; when reading
// bytes, that gets one `substitute` too. `out` must have room for the whole result; it is cut to
// size at the end.
template <class From, class To, class Step>
void ConvertAll(const From* from, const From* end, std::basic_string<To>& out, To substitute,
                Step step) {
  constexpr bool kReadingBytes = std::is_same_v<From, char>;
  To* to = out.data();
  To* const toEnd = out.data() + out.size();
  std::mbstate_t state{};
  while (from != end) {
    const From* fromNext = from;
    To* toNext = to;
    const auto result = step(state, from, end, fromNext, to, toEnd, toNext);
    from = fromNext;
    to = toNext;
    if (result == std::codecvt_base::ok) {
      continue;
    }
    // error, or partial: an incomplete sequence at the end of the input.
    *to++ = substitute;
    ++from;
    state = std::mbstate_t{};
  }
  if (kReadingBytes && std::mbsinit(&state) == 0) {
    *to++ = substitute;
  }
  out.resize(static_cast<std::size_t>(to - out.data()));
}

}  // namespace

void QvStringUtil::ConvertStringToWString(const std::string& narrow, std::wstring& wide) {
  const std::locale loc = detail::UserDefaultLocale();
  const auto& facet = std::use_facet<WideCodecvt>(loc);
  // Every wide character takes at least one byte, and every substitute stands
  // for one byte: the byte count bounds the result.
  std::wstring out(narrow.size(), L'\0');
  ConvertAll(narrow.data(),
             narrow.data() + narrow.size(),
             out,
             kReplacementCharacter,
             [&facet](auto&... args) { return facet.in(args...); });
  wide.swap(out);
}

void QvStringUtil::ConvertWStringToString(const std::wstring& wide, std::string& narrow) {
  const std::locale loc = detail::UserDefaultLocale();
  const auto& facet = std::use_facet<WideCodecvt>(loc);
  std::string out(wide.size() * static_cast<std::size_t>(std::max(facet.max_length(), 1)), '\0');
  ConvertAll(wide.data(), wide.data() + wide.size(), out, kNoNarrowForm, [&facet](auto&... args) {
    return facet.out(args...);
  });
  narrow.swap(out);
}

}  // namespace qvsysbase
