// Case-insensitive ordering and search through one upper-case table per text
// type, built from the locale of the first call and never rebuilt.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <type_traits>

#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/qvExcept.h"
#include "text/TextChars.h"

QV_UNIT("CaseTables", "$Revision: #1 $")

namespace qvsysbase {
namespace {

using detail::CharOf;

constexpr std::size_t kNarrowTableSize = 256;
// The wide table covers the 16-bit units U+0000..U+FFFF; characters above map
// to themselves.
constexpr std::size_t kWideTableSize = 65536;

constinit std::once_flag g_narrowOnce;
constinit std::array<char, kNarrowTableSize> g_narrowUpper{};
constinit std::once_flag g_wideOnce;
constinit std::array<wchar_t, kWideTableSize> g_wideUpper{};

template <class C, std::size_t N>
void FillUpperTable(std::array<C, N>& table, const std::locale& loc) {
  for (std::size_t i = 0; i < N; ++i) {
    table[i] = static_cast<C>(i);
  }
  std::use_facet<std::ctype<C>>(loc).toupper(table.data(), table.data() + N);
}

// The comparison key of a character: its upper-case form, narrow ones as
// unsigned bytes (the order std::string itself uses).
struct NarrowKeys {
  explicit NarrowKeys(const std::locale& loc) {
    std::call_once(g_narrowOnce, [&loc] { FillUpperTable(g_narrowUpper, loc); });
  }
  unsigned char operator()(char c) const {
    return static_cast<unsigned char>(g_narrowUpper[static_cast<unsigned char>(c)]);
  }
};

struct WideKeys {
  explicit WideKeys(const std::locale& loc) {
    std::call_once(g_wideOnce, [&loc] { FillUpperTable(g_wideUpper, loc); });
  }
  wchar_t operator()(wchar_t c) const {
    // Negative values (no character) become large and map to themselves too.
    const auto unit = static_cast<std::uint32_t>(std::char_traits<wchar_t>::to_int_type(c));
    return unit < kWideTableSize ? g_wideUpper[unit] : c;
  }
};

template <class S>
using KeysOf = std::conditional_t<std::is_same_v<CharOf<S>, char>, NarrowKeys, WideKeys>;

template <class S>
bool LessT(const S& a, const S& b, int n, const std::locale& loc) {
  const KeysOf<S> key(loc);
  std::size_t lengthA = a.size();
  std::size_t lengthB = b.size();
  if (n >= 0) {
    lengthA = std::min(lengthA, static_cast<std::size_t>(n));
    lengthB = std::min(lengthB, static_cast<std::size_t>(n));
  }
  return std::lexicographical_compare(a.begin(),
                                      a.begin() + static_cast<std::ptrdiff_t>(lengthA),
                                      b.begin(),
                                      b.begin() + static_cast<std::ptrdiff_t>(lengthB),
                                      [&key](auto x, auto y) { return key(x) < key(y); });
}

template <class S>
bool DualLessT(const S& a1, const S& b1, const S& a2, const S& b2, int n, const std::locale& loc) {
  if (LessT(a1, b1, n, loc)) {
    return true;
  }
  if (LessT(b1, a1, n, loc)) {
    return false;
  }
  return LessT(a2, b2, n, loc);
}

template <class S>
typename S::size_type FindT(const S& text, const S& what, const std::locale& loc) {
  const KeysOf<S> key(loc);
  const auto it =
      std::search(text.begin(), text.end(), what.begin(), what.end(), [&key](auto x, auto y) {
        return key(x) == key(y);
      });
  if (it == text.end() && !what.empty()) {
    return S::npos;
  }
  return static_cast<typename S::size_type>(it - text.begin());
}

}  // namespace

bool QvStringUtil::CaseInsensitiveCompare(const std::string& a, const std::string& b, int n,
                                          const std::locale& loc) {
  return LessT(a, b, n, loc);
}
bool QvStringUtil::CaseInsensitiveCompare(const std::wstring& a, const std::wstring& b, int n,
                                          const std::locale& loc) {
  return LessT(a, b, n, loc);
}
bool QvStringUtil::CaseInsensitiveEquality(const std::string& a, const std::string& b, int n,
                                           const std::locale& loc) {
  return !LessT(a, b, n, loc) && !LessT(b, a, n, loc);
}
bool QvStringUtil::CaseInsensitiveEquality(const std::wstring& a, const std::wstring& b, int n,
                                           const std::locale& loc) {
  return !LessT(a, b, n, loc) && !LessT(b, a, n, loc);
}
bool QvStringUtil::CaseInsensitiveInequality(const std::string& a, const std::string& b, int n,
                                             const std::locale& loc) {
  return !CaseInsensitiveEquality(a, b, n, loc);
}
bool QvStringUtil::CaseInsensitiveInequality(const std::wstring& a, const std::wstring& b, int n,
                                             const std::locale& loc) {
  return !CaseInsensitiveEquality(a, b, n, loc);
}
bool QvStringUtil::CaseInsensitiveDualCompare(const std::string& a1, const std::string& b1,
                                              const std::string& a2, const std::string& b2, int n,
                                              const std::locale& loc) {
  return DualLessT(a1, b1, a2, b2, n, loc);
}
bool QvStringUtil::CaseInsensitiveDualCompare(const std::wstring& a1, const std::wstring& b1,
                                              const std::wstring& a2, const std::wstring& b2, int n,
                                              const std::locale& loc) {
  return DualLessT(a1, b1, a2, b2, n, loc);
}
std::string::size_type QvStringUtil::CaseInsensitiveFind(const std::string& text,
                                                         const std::string& what,
                                                         const std::locale& loc) {
  return FindT(text, what, loc);
}
std::wstring::size_type QvStringUtil::CaseInsensitiveFind(const std::wstring& text,
                                                          const std::wstring& what,
                                                          const std::locale& loc) {
  return FindT(text, what, loc);
}

}  // namespace qvsysbase
