// Conversion between the wide text type and the narrow one in the user's code
// page (the character set of the user's default locale).
#include <algorithm>
#include <cstddef>
#include <cstdint>
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

// The bounds of Unicode's scalar values: every code point but the surrogates.
constexpr std::uint32_t kLastCodePoint = 0x10FFFF;
constexpr std::uint32_t kFirstSurrogate = 0xD800;
constexpr std::uint32_t kLastSurrogate = 0xDFFF;

// wchar_t holds UCS-4 here. The C library's UTF-8 decoder still takes the
// retired 4- to 6-byte forms of values above U+10FFFF, and its encoder writes
// them, which is no valid UTF-8: only scalar values may cross in either
// direction.
bool IsScalarValue(wchar_t c) {
  const auto u = static_cast<std::uint32_t>(c);  // a negative value becomes large
  return u <= kLastCodePoint && (u < kFirstSurrogate || u > kLastSurrogate);
}

// How many wide characters one facet step may cross. A step can run past a
// value outside Unicode and must then be run again up to it, and the facet
// itself searches its whole input for a null character on every call; so steps
// start small after every stop and double while the text is clean, which keeps
// the repeated work within a constant factor of the text however the bad
// values are spread.
constexpr std::size_t kFirstWindow = 16;
constexpr std::size_t kLargestWindow = std::size_t{1} << 16;

// One step of the facet over at most `window` wide characters that also
// stops, as on an error, where a wide value that is no scalar value would
// cross: the step is then run again with its wide side ending just before that
// value, so that it stops at the value or before its bytes.
//
// Reading bytes, the window limits the output, which always ends between two
// characters, and the input to the bytes that many characters can take at most,
// so that the output limit comes first and no sequence is cut.
std::codecvt_base::result Step(const WideCodecvt& facet, std::size_t window, std::mbstate_t& state,
                               const char* from, const char* end, const char*& fromNext,
                               wchar_t* to, wchar_t* toEnd, wchar_t*& toNext) {
  const std::mbstate_t before = state;
  const std::size_t room = std::min(window, static_cast<std::size_t>(toEnd - to));
  const auto maxBytes = static_cast<std::size_t>(std::max(facet.max_length(), 1));
  toEnd = to + room;
  end = from + std::min(room * maxBytes, static_cast<std::size_t>(end - from));
  auto result = facet.in(state, from, end, fromNext, to, toEnd, toNext);
  if (result == std::codecvt_base::partial && toNext == toEnd) {
    result = std::codecvt_base::ok;  // stopped by the window, not by the input
  }
  wchar_t* const bad = std::find_if_not(to, toNext, IsScalarValue);
  if (bad == toNext) {
    return result;
  }
  state = before;
  facet.in(state, from, end, fromNext, to, bad, toNext);
  return std::codecvt_base::error;
}

// Writing bytes, the window limits the input.
std::codecvt_base::result Step(const WideCodecvt& facet, std::size_t window, std::mbstate_t& state,
                               const wchar_t* from, const wchar_t* end, const wchar_t*& fromNext,
                               char* to, char* toEnd, char*& toNext) {
  const std::mbstate_t before = state;
  end = from + std::min(window, static_cast<std::size_t>(end - from));
  const auto result = facet.out(state, from, end, fromNext, to, toEnd, toNext);
  const wchar_t* const bad = std::find_if_not(from, fromNext, IsScalarValue);
  if (bad == fromNext) {
    return result;
  }
  state = before;
  facet.out(state, from, bad, fromNext, to, toEnd, toNext);
  return std::codecvt_base::error;
}

// Runs the facet over the whole input. Where it stops on something it cannot
// convert, or on a value outside Unicode, `substitute` goes to the output, the
// offending unit is skipped and the shift state starts afresh; a multi-byte
// sequence therefore gets one `substitute` per byte. The facet may also take an
// incomplete sequence at the end into its state without complaint; when reading
// bytes, that gets one `substitute` too. `out` must have room for the whole
// result; it is cut to size at the end.
template <class From, class To>
void ConvertAll(const WideCodecvt& facet, const From* from, const From* end,
                std::basic_string<To>& out, To substitute) {
  To* to = out.data();
  To* const toEnd = out.data() + out.size();
  std::mbstate_t state{};
  std::size_t window = kFirstWindow;
  while (from != end) {
    const From* fromNext = from;
    To* toNext = to;
    const auto result = Step(facet, window, state, from, end, fromNext, to, toEnd, toNext);
    const bool progressed = fromNext != from;
    from = fromNext;
    to = toNext;
    if (result == std::codecvt_base::ok && progressed) {
      window = std::min(2 * window, kLargestWindow);
      continue;
    }
    // error, or partial: an incomplete sequence at the end of the input.
    window = kFirstWindow;
    *to++ = substitute;
    ++from;
    state = std::mbstate_t{};
  }
  if (std::is_same_v<From, char> && std::mbsinit(&state) == 0) {
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
  ConvertAll(facet, narrow.data(), narrow.data() + narrow.size(), out, kReplacementCharacter);
  wide.swap(out);
}

void QvStringUtil::ConvertWStringToString(const std::wstring& wide, std::string& narrow) {
  const std::locale loc = detail::UserDefaultLocale();
  const auto& facet = std::use_facet<WideCodecvt>(loc);
  std::string out(wide.size() * static_cast<std::size_t>(std::max(facet.max_length(), 1)), '\0');
  ConvertAll(facet, wide.data(), wide.data() + wide.size(), out, kNoNarrowForm);
  narrow.swap(out);
}

}  // namespace qvsysbase
