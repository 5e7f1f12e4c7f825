#include "qvsysbase/QvStringUtil.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cwchar>
#include <mutex>
#include <string_view>
#include <system_error>
#include <type_traits>
#include <utility>

#include "text/UserLocale.h"

namespace qvsysbase {
namespace {

// ---------------------------------------------------------------------------
// Characters and literals shared by the narrow and the wide implementation.

template <class C>
constexpr C Ch(char ascii) {
  return static_cast<C>(ascii);
}

template <class S>
S Lit(std::string_view ascii) {
  return S(ascii.begin(), ascii.end());
}

template <class S>
using CharOf = typename S::value_type;

template <class C>
bool IsAsciiDigit(C c) {
  return c >= Ch<C>('0') && c <= Ch<C>('9');
}

// ---------------------------------------------------------------------------
// Writers that receive an edited text piece by piece. The in-place writer
// writes into the buffer being read; that is safe because every algorithm that
// uses it keeps its write position at or before its read position.

template <class S>
class InPlaceWriter {
 public:
  explicit InPlaceWriter(S& s) : m_s(s) {}
  void Append(const CharOf<S>* p, std::size_t n) {
    S::traits_type::move(m_s.data() + m_nSize, p, n);
    m_nSize += n;
  }
  void Finish() { m_s.resize(m_nSize); }

 private:
  S& m_s;
  std::size_t m_nSize = 0;
};

template <class S>
class CopyWriter {
 public:
  explicit CopyWriter(S& s) : m_s(s) { m_Out.reserve(s.size()); }
  void Append(const CharOf<S>* p, std::size_t n) { m_Out.append(p, n); }
  void Finish() { m_s.swap(m_Out); }

 private:
  S& m_s;
  S m_Out;
};

// ---------------------------------------------------------------------------
// Trimming and ampersands.

template <class S>
S& TrimLeftT(S& s) {
  if (s.empty()) {
    return s;
  }
  const auto p = s.find_first_not_of(Ch<CharOf<S>>(' '));
  if (p == S::npos) {
    s.clear();
  } else if (p > 0) {
    s.erase(0, p);
  }
  return s;
}

template <class S>
S& TrimRightT(S& s) {
  const auto p = s.find_last_not_of(Ch<CharOf<S>>(' '));
  if (p == S::npos) {
    s.clear();
  } else {
    s.erase(p + 1);
  }
  return s;
}

template <class S>
S& TrimT(S& s) {
  return TrimLeftT(TrimRightT(s));
}

template <class S>
S& RemoveDoubleAmpersandsT(S& s) {
  const auto amp = Ch<CharOf<S>>('&');
  // unique compares each character with the last one kept, so a run of any
  // length collapses into its first ampersand.
  s.erase(std::unique(s.begin(), s.end(), [amp](auto a, auto b) { return a == amp && b == amp; }),
          s.end());
  return s;
}

template <class S>
bool IsLoneAmpersand(const S& s, std::size_t i) {
  const auto amp = Ch<CharOf<S>>('&');
  return s[i] == amp && (i == 0 || s[i - 1] != amp) && (i + 1 == s.size() || s[i + 1] != amp);
}

template <class S>
S& AddDoubleAmpersandsT(S& s) {
  std::size_t lone = 0;
  for (std::size_t i = 0; i < s.size(); ++i) {
    lone += IsLoneAmpersand(s, i) ? 1 : 0;
  }
  if (lone == 0) {
    return s;
  }
  S out;
  out.reserve(s.size() + lone);
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (IsLoneAmpersand(s, i)) {
      out.push_back(Ch<CharOf<S>>('&'));
    }
    out.push_back(s[i]);
  }
  s.swap(out);
  return s;
}

// ---------------------------------------------------------------------------
// Replacement. Both functions rebuild the text in one pass instead of erasing
// and inserting at each occurrence, which would move the tail every time and
// make long texts quadratic.

template <class S, class Writer>
void ReplaceLeftToRight(const S& s, const S& pattern, const S& replacement, int count,
                        Writer& out) {
  std::size_t read = 0;
  for (int done = 0; count <= 0 || done < count; ++done) {
    const std::size_t found = s.find(pattern, read);
    if (found == S::npos) {
      break;
    }
    out.Append(s.data() + read, found - read);
    out.Append(replacement.data(), replacement.size());
    read = found + pattern.size();
  }
  out.Append(s.data() + read, s.size() - read);
  out.Finish();
}

template <class S>
S& ReplacePatternT(S& s, const S& patternArg, const S& replacementArg, int count) {
  if (patternArg.empty() || s.find(patternArg) == S::npos) {
    return s;
  }
  // The arguments may be `s` itself, which the in-place writer overwrites.
  S patternCopy, replacementCopy;
  const S& pattern = &patternArg == &s ? (patternCopy = patternArg) : patternArg;
  const S& replacement =
      &replacementArg == &s ? (replacementCopy = replacementArg) : replacementArg;
  if (replacement.size() <= pattern.size()) {
    InPlaceWriter<S> out(s);
    ReplaceLeftToRight(s, pattern, replacement, count, out);
  } else {
    CopyWriter<S> out(s);
    ReplaceLeftToRight(s, pattern, replacement, count, out);
  }
  return s;
}

// The first start position j in `carry` at which the pattern matches the text
// carry + s[read..]; npos when there is none.
template <class S>
std::size_t FindStartInCarry(const S& carry, const S& s, std::size_t read, const S& pattern) {
  for (std::size_t j = 0; j < carry.size(); ++j) {
    std::size_t k = 0;
    for (; k < pattern.size(); ++k) {
      const std::size_t at = j + k;
      const std::size_t inS = read + (at - carry.size());
      if (at < carry.size() ? carry[at] != pattern[k] : (inS >= s.size() || s[inS] != pattern[k])) {
        break;
      }
    }
    if (k == pattern.size()) {
      return j;
    }
  }
  return S::npos;
}

// Streams the recursive replacement. The text before the last replacement's
// position never changes again (every later match starts at or after it), so it
// is written out for good; `carry` holds the text the last replacements
// produced, which may combine with what follows into a new match. Each
// character of the carry is either written out once or consumed by a match,
// so the work is linear in the text for a fixed pattern.
template <class S, class Writer>
void ReplaceUntilNoneLeft(const S& s, const S& pattern, const S& replacement, Writer& out) {
  S carry;
  std::size_t read = 0;
  for (;;) {
    const std::size_t j = FindStartInCarry(carry, s, read, pattern);
    if (j != S::npos) {
      out.Append(carry.data(), j);
      const std::size_t end = j + pattern.size();
      if (end <= carry.size()) {
        carry.replace(0, end, replacement);
      } else {
        read += end - carry.size();
        carry.assign(replacement);
      }
      continue;
    }
    out.Append(carry.data(), carry.size());
    carry.clear();
    const std::size_t found = s.find(pattern, read);
    if (found == S::npos) {
      break;
    }
    out.Append(s.data() + read, found - read);
    carry.assign(replacement);
    read = found + pattern.size();
  }
  out.Append(s.data() + read, s.size() - read);
  out.Finish();
}

template <class S>
S& ReplacePatternRecT(S& s, const S& patternArg, const S& replacementArg) {
  if (patternArg == replacementArg || patternArg.empty() || s.find(patternArg) == S::npos) {
    return s;
  }
  // As above: `s` itself may be an argument.
  S patternCopy, replacementCopy;
  const S& pattern = &patternArg == &s ? (patternCopy = patternArg) : patternArg;
  const S& replacement =
      &replacementArg == &s ? (replacementCopy = replacementArg) : replacementArg;
  // A shorter replacement shrinks the text at every match, which keeps the
  // written part behind the read position.
  if (replacement.size() < pattern.size()) {
    InPlaceWriter<S> out(s);
    ReplaceUntilNoneLeft(s, pattern, replacement, out);
  } else {
    CopyWriter<S> out(s);
    ReplaceUntilNoneLeft(s, pattern, replacement, out);
  }
  return s;
}

template <class S>
S& RemoveLFCRT(S& s) {
  using C = CharOf<S>;
  const S space(1, Ch<C>(' '));
  TrimT(s);
  ReplacePatternT(s, S(1, Ch<C>('\n')), space, -1);
  ReplacePatternT(s, S(1, Ch<C>('\r')), space, -1);
  return ReplacePatternRecT(s, S(2, Ch<C>(' ')), space);
}

template <class S>
void SplitT(const S& text, const S& delimiters, std::list<S>& tokens) {
  auto begin = text.find_first_not_of(delimiters);
  while (begin != S::npos) {
    auto end = text.find_first_of(delimiters, begin);
    if (end == S::npos) {
      end = text.size();
    }
    tokens.emplace_back(text, begin, end - begin);
    begin = text.find_first_not_of(delimiters, end);
  }
}

// ---------------------------------------------------------------------------
// Case-insensitive comparison through the upper-case tables.

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

// ---------------------------------------------------------------------------
// Paths, handled as text.

template <class C>
bool IsSeparator(C c) {
  return c == Ch<C>('/') || c == Ch<C>('\\');
}

template <class C>
bool IsAsciiLetter(C c) {
  return (c >= Ch<C>('a') && c <= Ch<C>('z')) || (c >= Ch<C>('A') && c <= Ch<C>('Z'));
}

template <class S>
struct ParsedPath {
  S root;  // "", "/" or a drive such as "C:/"
  std::vector<S> segments;
};

template <class S>
void AddSegment(ParsedPath<S>& parsed, const S& segment) {
  if (segment.empty() || segment == Lit<S>(".")) {
    return;
  }
  const bool climbs = segment == Lit<S>("..");
  const bool canClimb = !parsed.segments.empty() && parsed.segments.back() != Lit<S>("..");
  if (climbs && canClimb) {
    parsed.segments.pop_back();
  } else if (!climbs || parsed.root.empty()) {
    parsed.segments.push_back(segment);
  }  // else ".." directly below a root stays at the root.
}

template <class S>
ParsedPath<S> ParsePath(const S& path) {
  using C = CharOf<S>;
  ParsedPath<S> parsed;
  std::size_t i = 0;
  if (!path.empty() && IsSeparator(path[0])) {
    parsed.root = S(1, Ch<C>('/'));
    i = 1;
  } else if (path.size() >= 3 && IsAsciiLetter(path[0]) && path[1] == Ch<C>(':') &&
             IsSeparator(path[2])) {
    parsed.root = S{path[0], Ch<C>(':'), Ch<C>('/')};
    i = 3;
  }
  while (i < path.size()) {
    std::size_t end = i;
    while (end < path.size() && !IsSeparator(path[end])) {
      ++end;
    }
    AddSegment(parsed, path.substr(i, end - i));
    i = end + 1;
  }
  return parsed;
}

template <class S>
S JoinPath(const ParsedPath<S>& parsed) {
  S joined = parsed.root;
  for (std::size_t i = 0; i < parsed.segments.size(); ++i) {
    if (i > 0) {
      joined.push_back(Ch<CharOf<S>>('/'));
    }
    joined += parsed.segments[i];
  }
  return joined.empty() ? Lit<S>(".") : joined;
}

template <class S>
bool SameRoot(const S& a, const S& b) {
  using C = CharOf<S>;
  auto fold = [](C c) {
    return c >= Ch<C>('a') && c <= Ch<C>('z') ? c - Ch<C>('a') + Ch<C>('A') : c;
  };
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [&fold](C x, C y) {
           return fold(x) == fold(y);
         });
}

template <class S>
void RelativeToAbsoluteT(const S& base, const S& path, S& result) {
  ParsedPath<S> parsed = ParsePath(path);
  if (parsed.root.empty() && !base.empty()) {
    parsed = ParsePath(base + Ch<CharOf<S>>('/') + path);
  }
  result = JoinPath(parsed);
}

template <class S>
void AbsoluteToRelativeT(const S& base, const S& path, S& result) {
  const ParsedPath<S> from = ParsePath(base);
  const ParsedPath<S> to = ParsePath(path);
  const auto common = static_cast<std::size_t>(
      std::mismatch(
          from.segments.begin(), from.segments.end(), to.segments.begin(), to.segments.end())
          .first -
      from.segments.begin());
  const bool baseClimbs = std::find(from.segments.begin() + static_cast<std::ptrdiff_t>(common),
                                    from.segments.end(),
                                    Lit<S>("..")) != from.segments.end();
  if (!SameRoot(from.root, to.root) || baseClimbs) {
    result = JoinPath(to);
    return;
  }
  ParsedPath<S> relative;
  relative.segments.assign(from.segments.size() - common, Lit<S>(".."));
  relative.segments.insert(relative.segments.end(),
                           to.segments.begin() + static_cast<std::ptrdiff_t>(common),
                           to.segments.end());
  result = JoinPath(relative);
}

// ---------------------------------------------------------------------------
// Common leading and trailing segments.

template <class S>
void TrimCommonLeadingSegments(std::vector<S>& texts, CharOf<S> delimiter, unsigned keepSegments) {
  if (texts.empty()) {
    return;
  }
  const std::size_t keep = std::max<std::size_t>(keepSegments, 1);
  std::size_t removable = S::npos;  // segments every text can lose
  for (const S& t : texts) {
    const std::size_t segments =
        1 + static_cast<std::size_t>(std::count(t.begin(), t.end(), delimiter));
    removable = std::min(removable, segments - std::min(segments, keep));
  }
  // Candidate prefixes end at the delimiters of the first text; each round only
  // compares the segment it adds, so the work is linear in the texts.
  const S& first = texts.front();
  std::size_t prefix = 0;
  for (std::size_t removed = 0; removed < removable; ++removed) {
    const std::size_t candidate = first.find(delimiter, prefix) + 1;
    const bool shared = std::all_of(texts.begin(), texts.end(), [&](const S& t) {
      return t.size() >= candidate &&
             t.compare(prefix, candidate - prefix, first, prefix, candidate - prefix) == 0;
    });
    if (!shared) {
      break;
    }
    prefix = candidate;
  }
  if (prefix == 0) {
    return;
  }
  for (S& t : texts) {
    t.erase(0, prefix);
  }
}

template <class S>
void TrimCommonTrailingSegments(std::vector<S>& texts, CharOf<S> delimiter, unsigned keepSegments) {
  // Trailing segments are the leading segments of the reversed texts.
  for (S& t : texts) {
    std::reverse(t.begin(), t.end());
  }
  TrimCommonLeadingSegments(texts, delimiter, keepSegments);
  for (S& t : texts) {
    std::reverse(t.begin(), t.end());
  }
}

// ---------------------------------------------------------------------------
// Narrow/wide conversion through the user's code page.

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

// The user's decimal separator, as the number functions read and write it.
wchar_t UserDecimalSeparator() {
  return std::use_facet<std::numpunct<wchar_t>>(detail::UserDefaultLocale()).decimal_point();
}

// ---------------------------------------------------------------------------
// Numbers in the user's notation.

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

bool ReadValue(std::wstring_view text, wchar_t separator, double& value) {
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

std::vector<CellValue<double>> ReadRow(std::wstring_view row, wchar_t separator) {
  std::vector<CellValue<double>> cells;
  std::size_t begin = 0;
  for (;;) {
    const std::size_t tab = std::min(row.find(L'\t', begin), row.size());
    CellValue<double> cell;
    cell.m_strText.assign(row.substr(begin, tab - begin));
    TrimT(cell.m_strText);
    cell.m_bValid = ReadValue(cell.m_strText, separator, cell.m_Value);
    cells.push_back(std::move(cell));
    if (tab == row.size()) {
      return cells;
    }
    begin = tab + 1;
  }
}

}  // namespace

// ---------------------------------------------------------------------------
// The public functions forward to the templates above.

std::string& QvStringUtil::Trim(std::string& s) { return TrimT(s); }
std::wstring& QvStringUtil::Trim(std::wstring& s) { return TrimT(s); }
std::string& QvStringUtil::TrimLeft(std::string& s) { return TrimLeftT(s); }
std::wstring& QvStringUtil::TrimLeft(std::wstring& s) { return TrimLeftT(s); }
std::string& QvStringUtil::TrimRight(std::string& s) { return TrimRightT(s); }
std::wstring& QvStringUtil::TrimRight(std::wstring& s) { return TrimRightT(s); }

std::string& QvStringUtil::RemoveDoubleAmpersands(std::string& s) {
  return RemoveDoubleAmpersandsT(s);
}
std::wstring& QvStringUtil::RemoveDoubleAmpersands(std::wstring& s) {
  return RemoveDoubleAmpersandsT(s);
}
std::string& QvStringUtil::AddDoubleAmpersands(std::string& s) { return AddDoubleAmpersandsT(s); }
std::wstring& QvStringUtil::AddDoubleAmpersands(std::wstring& s) { return AddDoubleAmpersandsT(s); }

std::string& QvStringUtil::RemoveLFCR(std::string& s) { return RemoveLFCRT(s); }
std::wstring& QvStringUtil::RemoveLFCR(std::wstring& s) { return RemoveLFCRT(s); }

std::string& QvStringUtil::ReplacePattern(std::string& s, const std::string& pattern,
                                          const std::string& replacement, int count) {
  return ReplacePatternT(s, pattern, replacement, count);
}
std::wstring& QvStringUtil::ReplacePattern(std::wstring& s, const std::wstring& pattern,
                                           const std::wstring& replacement, int count) {
  return ReplacePatternT(s, pattern, replacement, count);
}
std::string& QvStringUtil::ReplacePatternRec(std::string& s, const std::string& pattern,
                                             const std::string& replacement) {
  return ReplacePatternRecT(s, pattern, replacement);
}
std::wstring& QvStringUtil::ReplacePatternRec(std::wstring& s, const std::wstring& pattern,
                                              const std::wstring& replacement) {
  return ReplacePatternRecT(s, pattern, replacement);
}

void QvStringUtil::Split(const std::string& text, const std::string& delimiters,
                         std::list<std::string>& tokens) {
  SplitT(text, delimiters, tokens);
}
void QvStringUtil::Split(const std::wstring& text, const std::wstring& delimiters,
                         std::list<std::wstring>& tokens) {
  SplitT(text, delimiters, tokens);
}

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

void QvStringUtil::RelativePathToAbsolutePath(const std::string& base, const std::string& path,
                                              std::string& result) {
  RelativeToAbsoluteT(base, path, result);
}
void QvStringUtil::RelativePathToAbsolutePath(const std::wstring& base, const std::wstring& path,
                                              std::wstring& result) {
  RelativeToAbsoluteT(base, path, result);
}
void QvStringUtil::AbsolutePathToRelativePath(const std::string& base, const std::string& path,
                                              std::string& result) {
  AbsoluteToRelativeT(base, path, result);
}
void QvStringUtil::AbsolutePathToRelativePath(const std::wstring& base, const std::wstring& path,
                                              std::wstring& result) {
  AbsoluteToRelativeT(base, path, result);
}

std::vector<std::wstring>& QvStringUtil::TrimCommonLeft(std::vector<std::wstring>& texts,
                                                        wchar_t delimiter, unsigned keepSegments) {
  TrimCommonLeadingSegments(texts, delimiter, keepSegments);
  return texts;
}
std::vector<std::wstring>& QvStringUtil::TrimCommonRight(std::vector<std::wstring>& texts,
                                                         wchar_t delimiter, unsigned keepSegments) {
  TrimCommonTrailingSegments(texts, delimiter, keepSegments);
  return texts;
}

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

std::wstring& QvStringUtil::RemoveTrailingZeroes(std::wstring& s) {
  NumberShape shape;
  if (!ParseNumber(s, UserDecimalSeparator(), shape) || shape.separator == std::wstring::npos) {
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
  return ReadValue(text, UserDecimalSeparator(), value);
}

void QvStringUtil::BuildMatrixFromString(const std::wstring& text,
                                         std::vector<std::vector<CellValue<double>>>& matrix) {
  const wchar_t separator = UserDecimalSeparator();
  matrix.clear();
  const std::wstring_view all(text);
  std::size_t begin = 0;
  while (begin < all.size()) {
    const std::size_t end = std::min(all.find_first_of(L"\r\n", begin), all.size());
    matrix.push_back(ReadRow(all.substr(begin, end - begin), separator));
    begin = end + 1;
    if (end + 1 < all.size() && all[end] == L'\r' && all[end + 1] == L'\n') {
      ++begin;
    }
  }
}

void QvStringUtil::SettingChanged() { detail::RereadUserLocale(); }

}  // namespace qvsysbase
