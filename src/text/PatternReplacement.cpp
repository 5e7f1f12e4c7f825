// Replacement of a pattern, once from left to right or until none is left.
// Both rebuild the text in one pass instead of erasing and inserting at each
// occurrence, which would move the tail every time and make long texts
// quadratic.
#include <cstddef>

#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/qvExcept.h"
#include "text/TextChars.h"

QV_UNIT("PatternReplacement", "$Revision: #1 $")

namespace qvsysbase {
namespace {

using detail::CharOf;

// Writers that receive the edited text piece by piece. The in-place writer
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

// Runs `rewrite(s, pattern, replacement, writer)` with the in-place writer when
// `inPlace` (the rewrite never writes ahead of what it has read), with a copy
// otherwise. The pattern or the replacement may be `s` itself, which the
// in-place writer overwrites; such an argument is copied first.
template <class S, class Rewrite>
S& RewriteText(S& s, const S& patternArg, const S& replacementArg, bool inPlace, Rewrite rewrite) {
  S patternCopy, replacementCopy;
  const S& pattern = &patternArg == &s ? (patternCopy = patternArg) : patternArg;
  const S& replacement =
      &replacementArg == &s ? (replacementCopy = replacementArg) : replacementArg;
  if (inPlace) {
    InPlaceWriter<S> out(s);
    rewrite(s, pattern, replacement, out);
  } else {
    CopyWriter<S> out(s);
    rewrite(s, pattern, replacement, out);
  }
  return s;
}

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
S& ReplacePatternT(S& s, const S& pattern, const S& replacement, int count) {
  if (pattern.empty() || s.find(pattern) == S::npos) {
    return s;
  }
  return RewriteText(s,
                     pattern,
                     replacement,
                     replacement.size() <= pattern.size(),
                     [count](const S& text, const S& p, const S& r, auto& out) {
                       ReplaceLeftToRight(text, p, r, count, out);
                     });
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
S& ReplacePatternRecT(S& s, const S& pattern, const S& replacement) {
  if (pattern == replacement || pattern.empty()) {
    return s;
  }
  // The search goes on at each replacement itself, so a replacement holding the
  // pattern would be matched again for ever, its text growing all the while.
  constexpr auto npos = S::npos;
  QV_ASSERT(replacement.find(pattern) == npos);
  if (s.find(pattern) == npos) {
    return s;
  }
  // A shorter replacement shrinks the text at every match, which keeps the
  // written part behind the read position.
  return RewriteText(s,
                     pattern,
                     replacement,
                     replacement.size() < pattern.size(),
                     [](const S& text, const S& p, const S& r, auto& out) {
                       ReplaceUntilNoneLeft(text, p, r, out);
                     });
}

}  // namespace

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

}  // namespace qvsysbase
