// Editing: trimming spaces, menu ampersands, making one line of a text, and
// tokenising.
#include <algorithm>
#include <cstddef>

#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/qvExcept.h"
#include "text/TextChars.h"

QV_UNIT("StringEditing", "$Revision: #1 $")

namespace qvsysbase {
namespace {

using detail::Ch;
using detail::CharOf;

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

template <class S>
S& RemoveLFCRT(S& s) {
  using C = CharOf<S>;
  const S space(1, Ch<C>(' '));
  TrimT(s);
  QvStringUtil::ReplacePattern(s, S(1, Ch<C>('\n')), space, -1);
  QvStringUtil::ReplacePattern(s, S(1, Ch<C>('\r')), space, -1);
  return QvStringUtil::ReplacePatternRec(s, S(2, Ch<C>(' ')), space);
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

}  // namespace

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

void QvStringUtil::Split(const std::string& text, const std::string& delimiters,
                         std::list<std::string>& tokens) {
  SplitT(text, delimiters, tokens);
}
void QvStringUtil::Split(const std::wstring& text, const std::wstring& delimiters,
                         std::list<std::wstring>& tokens) {
  SplitT(text, delimiters, tokens);
}

}  // namespace qvsysbase
