// Removal of the whole segments that a set of texts shares at its start or its
// end, such as a common "Model.Group." before variable names.
#include <algorithm>
#include <cstddef>

#include "qvsysbase/QvStringUtil.h"
#include "qvsysbase/qvExcept.h"
#include "text/TextChars.h"

QV_UNIT("CommonSegments", "$Revision: #1 $")

namespace qvsysbase {
namespace {

using detail::CharOf;

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

}  // namespace

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

}  // namespace qvsysbase
