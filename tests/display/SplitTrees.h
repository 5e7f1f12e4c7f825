// Test helper: builds split trees in one expression.
#ifndef QVSYSBASE_TESTS_DISPLAY_SPLITTREES_H_
#define QVSYSBASE_TESTS_DISPLAY_SPLITTREES_H_

#include <initializer_list>

#include "qvsysbase/SplittingInformation.h"

namespace qvsysbase::testing_support {

inline SplittingInformation Leaf(unsigned type = 0) { return SplittingInformation(type); }

inline SplittingInformation Node(unsigned type, std::initializer_list<SplittingInformation> parts) {
  SplittingInformation node(type);
  for (const SplittingInformation& part : parts) node.InsertInSplitList(part);
  return node;
}
inline SplittingInformation Stacked(std::initializer_list<SplittingInformation> parts) {
  return Node(SplittingInformation::kHorizontalCut, parts);
}
inline SplittingInformation SideBySide(std::initializer_list<SplittingInformation> parts) {
  return Node(SplittingInformation::kVerticalCut, parts);
}

}  // namespace qvsysbase::testing_support

#endif  // QVSYSBASE_TESTS_DISPLAY_SPLITTREES_H_
