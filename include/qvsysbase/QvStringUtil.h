// QvStringUtil: editing, tokenising, comparing and converting the library's two
// text types, the narrow std::string and the wide std::wstring. Every function
// that exists for both types behaves identically on both (one implementation
// serves the two). Editing functions change their argument in place and return
// it for chaining. Every function runs in time linear in its text (times the
// pattern length where there is a pattern).
//
// Locale-dependent parts:
//  - the case-insensitive functions use one upper-case table per text type
//    (256 entries narrow, 65,536 wide; wide characters above U+FFFF map to
//    themselves), filled from the std::ctype facet of the locale passed to the
//    first such call of that type and never rebuilt: later calls with another
//    locale use the first table;
//  - the narrow/wide conversions, RemoveTrailingZeroes, ReadValueFromString and
//    BuildMatrixFromString use the user's default locale (the environment's,
//    "C" when that cannot be created), read at library load and again by
//    SettingChanged().
//
// Thread-safety: thread-safe. The upper-case tables are built once under a
// once-flag; the user's locale is replaced under a lock; everything else works
// only on its arguments.
#ifndef QVSYSBASE_QVSTRINGUTIL_H_
#define QVSYSBASE_QVSTRINGUTIL_H_

#include <list>
#include <locale>
#include <string>
#include <vector>

#include "qvsysbase/CellValue.h"
#include "qvsysbase/Export.h"

namespace qvsysbase {

class QVSYSBASE_API QvStringUtil {
 public:
  QvStringUtil() = delete;

  // Trimming removes spaces (0x20) only; tabs and line breaks are kept.
  // TrimLeft removes the leading spaces, TrimRight the trailing ones, Trim both.
  static std::string& Trim(std::string& s);
  static std::wstring& Trim(std::wstring& s);
  static std::string& TrimLeft(std::string& s);
  static std::wstring& TrimLeft(std::wstring& s);
  static std::string& TrimRight(std::string& s);
  static std::wstring& TrimRight(std::wstring& s);

  // Collapses every run of ampersands into one: "&&" and "&&&&" become "&".
  static std::string& RemoveDoubleAmpersands(std::string& s);
  static std::wstring& RemoveDoubleAmpersands(std::wstring& s);

  // Doubles every lone ampersand ("R&D" becomes "R&&D") and keeps runs of two
  // or more as they are, so applying it twice changes nothing more.
  static std::string& AddDoubleAmpersands(std::string& s);
  static std::wstring& AddDoubleAmpersands(std::wstring& s);

  // Makes one line of a text: Trim, every line feed and then every carriage
  // return becomes a space, and runs of spaces become one space. A break at
  // either end therefore leaves one space there ("a\n" gives "a ").
  static std::string& RemoveLFCR(std::string& s);
  static std::wstring& RemoveLFCR(std::wstring& s);

  // Replaces occurrences of `pattern` from left to right; inserted text is
  // never searched again. count > 0 stops after `count` replacements; 0 or
  // negative replaces all. An empty pattern changes nothing.
  static std::string& ReplacePattern(std::string& s, const std::string& pattern,
                                     const std::string& replacement, int count);
  static std::wstring& ReplacePattern(std::wstring& s, const std::wstring& pattern,
                                      const std::wstring& replacement, int count);

  // Replaces `pattern` until none is left, searching again from each
  // replacement's own position, so that replaced text can match again ("    "
  // with "  " -> " " gives " "). Nothing happens when pattern equals
  // replacement or is empty. Otherwise a replacement that contains the pattern
  // would be matched again without end, so it is refused (AssertionException)
  // before the text changes, whatever the text holds. Linear when the
  // replacement is shorter than the pattern (the normal use: reducing runs).
  // REQUIRES: replacement.find(pattern) == npos
  static std::string& ReplacePatternRec(std::string& s, const std::string& pattern,
                                        const std::string& replacement);
  static std::wstring& ReplacePatternRec(std::wstring& s, const std::wstring& pattern,
                                         const std::wstring& replacement);

  // Appends to `tokens` (without clearing it) the non-empty runs of `text`
  // between characters of the set `delimiters`.
  static void Split(const std::string& text, const std::string& delimiters,
                    std::list<std::string>& tokens);
  static void Split(const std::wstring& text, const std::wstring& delimiters,
                    std::list<std::wstring>& tokens);

  // Case-insensitive ordering through the upper-case table: true when `a`
  // orders before `b`, compared lexicographically by the upper-cased character
  // codes (narrow ones as unsigned bytes). n < 0 compares whole strings; n >= 0
  // the first n characters of each (all of a shorter one).
  static bool CaseInsensitiveCompare(const std::string& a, const std::string& b, int n,
                                     const std::locale& loc);
  static bool CaseInsensitiveCompare(const std::wstring& a, const std::wstring& b, int n,
                                     const std::locale& loc);
  // True when neither orders before the other.
  static bool CaseInsensitiveEquality(const std::string& a, const std::string& b, int n,
                                      const std::locale& loc);
  static bool CaseInsensitiveEquality(const std::wstring& a, const std::wstring& b, int n,
                                      const std::locale& loc);
  // True when one orders before the other.
  static bool CaseInsensitiveInequality(const std::string& a, const std::string& b, int n,
                                        const std::locale& loc);
  static bool CaseInsensitiveInequality(const std::wstring& a, const std::wstring& b, int n,
                                        const std::locale& loc);
  // Orders by (a1, a2) against (b1, b2): a1/b1 decide unless equal, then a2/b2.
  static bool CaseInsensitiveDualCompare(const std::string& a1, const std::string& b1,
                                         const std::string& a2, const std::string& b2, int n,
                                         const std::locale& loc);
  static bool CaseInsensitiveDualCompare(const std::wstring& a1, const std::wstring& b1,
                                         const std::wstring& a2, const std::wstring& b2, int n,
                                         const std::locale& loc);
  // The first position of `what` in `text` compared case-insensitively (whole
  // strings), npos when absent; 0 for an empty `what`.
  static std::string::size_type CaseInsensitiveFind(const std::string& text,
                                                    const std::string& what,
                                                    const std::locale& loc);
  static std::wstring::size_type CaseInsensitiveFind(const std::wstring& text,
                                                     const std::wstring& what,
                                                     const std::locale& loc);

  // Path conversions, purely textual (the file system is not consulted).
  //  - '/' and '\' both separate; results use '/'.
  //  - A path is rooted when it starts with a separator or with a drive letter,
  //    a colon and a separator ("C:/"); drive letters compare case-insensitively.
  //  - Results are normalised: empty and "." segments go, ".." removes the
  //    segment before it (directly below a root it is dropped; leading ".." of
  //    an unrooted path stay); an empty unrooted result is ".".
  // `base` is a directory. `result` may be the same object as an argument.
  //
  // RelativePathToAbsolutePath: a rooted `path` is only normalised; otherwise
  // the result is base/path, normalised.
  static void RelativePathToAbsolutePath(const std::string& base, const std::string& path,
                                         std::string& result);
  static void RelativePathToAbsolutePath(const std::wstring& base, const std::wstring& path,
                                         std::wstring& result);
  // AbsolutePathToRelativePath: `path` expressed from `base` ("../x/y"),
  // segments compared exactly. When the roots differ, or `base` keeps ".."
  // segments that `path` does not share, no relative form exists and the result
  // is `path`, normalised.
  static void AbsolutePathToRelativePath(const std::string& base, const std::string& path,
                                         std::string& result);
  static void AbsolutePathToRelativePath(const std::wstring& base, const std::wstring& path,
                                         std::wstring& result);

  // Removes the longest run of whole leading segments (each ending with
  // `delimiter`) that all texts share, for example a common "Model.Group."
  // before variable names, leaving every text at least `keepSegments`
  // segments (a text with n delimiters has n + 1; its last segment always
  // stays, so 0 and 1 behave alike). Nothing happens to an empty vector.
  static std::vector<std::wstring>& TrimCommonLeft(std::vector<std::wstring>& texts,
                                                   wchar_t delimiter, unsigned keepSegments);
  // The same for trailing segments, each beginning with `delimiter`.
  static std::vector<std::wstring>& TrimCommonRight(std::vector<std::wstring>& texts,
                                                    wchar_t delimiter, unsigned keepSegments);

  // Conversions through the user's default locale (its character set is the
  // narrow side's code page). Only Unicode scalar values cross: a byte sequence
  // that is not a character there, or that stands for a surrogate or a value
  // above U+10FFFF, becomes U+FFFD, one per byte (an incomplete sequence at the
  // very end, one in all); a wide value with no narrow form, a surrogate or a
  // value above U+10FFFF among them, becomes '?'. The narrow result is
  // therefore always valid in its code page. Linear in the text, whatever it
  // holds. The output is replaced, never appended to.
  static void ConvertStringToWString(const std::string& narrow, std::wstring& wide);
  static void ConvertWStringToString(const std::wstring& wide, std::string& narrow);

  // When the whole text is a decimal number in the user's notation (optional
  // sign, digits with the user's decimal separator, optional exponent, no
  // grouping), removes the zeros that end its fraction, and the separator when
  // no fraction is left: "2.500" gives "2.5", "-3.000e+05" gives "-3e+05". Any
  // other text, for example "100", "1,000" (English) or "Model 1.0", is left
  // alone, so that headers and labels pass through unchanged.
  static std::wstring& RemoveTrailingZeroes(std::wstring& s);

  // Reads a number written in the user's notation (the form RemoveTrailingZeroes
  // accepts), surrounding spaces allowed. Returns false and leaves `value`
  // unchanged when the text is null, is not such a number, or lies outside the
  // range of double.
  static bool ReadValueFromString(const wchar_t* text, double& value);

  // Fills `matrix` (cleared first) from tab-separated text as it comes from the
  // clipboard: rows end with CR LF, LF or CR (a final break adds no row), cells
  // are separated by tabs and keep their text with surrounding spaces removed;
  // a cell is valid when ReadValueFromString reads it.
  static void BuildMatrixFromString(const std::wstring& text,
                                    std::vector<std::vector<CellValue<double>>>& matrix);

  // Tells the library that the user's regional settings changed: the user's
  // default locale (code page and decimal separator above, month names) is
  // read again. The upper-case tables are not rebuilt.
  static void SettingChanged();
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_QVSTRINGUTIL_H_
