// Path conversions between relative and absolute forms, done on the text alone
// (the file system is not consulted).
#include <algorithm>
#include <cstddef>
#include <vector>

#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/qvExcept.h"
#include "text/TextChars.h"

QV_UNIT("TextPaths", "$Revision: #1 $")

namespace qvsysbase {
namespace {

using detail::Ch;
using detail::CharOf;
using detail::Lit;

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

}  // namespace

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

}  // namespace qvsysbase
