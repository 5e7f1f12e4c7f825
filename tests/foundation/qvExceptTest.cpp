#include "qvsysbase/qvExcept.h"

#include <gtest/gtest.h>

#include <exception>
#include <sstream>

namespace qvsysbase {
namespace {

QV_UNIT("qvExceptTest", "$Revision: #2 $")

std::string Details(const OrvelException& e) {
  std::ostringstream os;
  e.getDetails(os);
  return os.str();
}

TEST(OrvelExceptionTest, DetailsListFiveLinesWithTheCauseLast) {
  OrvelException e("c", "f", 7, "$Revision: #1 $", "12.00");
  EXPECT_EQ(Details(e),
            "Exception occurred in file: f\nLine number: 7\nRevision Number: $Revision: #1 $\n"
            "ORVEL Version: 12.00\nCause: c\n");
  EXPECT_EQ(e.getMessage(), "c");
  EXPECT_EQ(e.getFile(), "f");
  EXPECT_EQ(e.getLineNumber(), 7);
}

TEST(AssertionExceptionTest, SixthLineNamesTheType) {
  const struct {
    int type;
    const char* text;
  } rows[] = {{0, "Pre-condition"}, {1, "Post-condition"}, {2, "Invariant"}, {7, "Unknown"},
              {-1, "Unknown"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.type);
    AssertionException e(static_cast<AssertionException::ASSERTION_TYPE>(row.type), "c", "f", 7,
                         "r", "12.00");
    EXPECT_EQ(e.getAssertionType(), row.text);
    const std::string details = Details(e);
    EXPECT_EQ(details.substr(details.find("Exception Type: ")),
              std::string("Exception Type: ") + row.text + "\n");
  }
}

TEST(DomainExceptionTest, DefaultMessagesAndBases) {
  EXPECT_STREQ(CannotEstimateException().what(), "The model cannot be estimated");
  EXPECT_STREQ(CannotEstimateException("x").what(), "x");
  EXPECT_STREQ(NullException().what(), "NullException");
  EXPECT_STREQ(ConstraintViolationException().what(), "ConstraintViolationException");
  EXPECT_STREQ(InvalidValueException().what(), "InvalidValueException");
  EXPECT_STREQ(ClipboardFormatException().what(), "ClipboardFormatException");
  EXPECT_THROW(throw Different_Dimensions_Exception("d"), std::logic_error);
  EXPECT_THROW(throw dimset_out_of_range("d"), std::logic_error);
  EXPECT_THROW(throw MulticollinearityException("m", "x1,x2", true), std::runtime_error);

  MulticollinearityException m("m", "x1,x2", true);
  EXPECT_EQ(m.getDetails(), "x1,x2");
  EXPECT_TRUE(m.isInitCollinearity());
  // Siblings: a handler for the estimation failure does not catch collinearity.
  EXPECT_EQ(dynamic_cast<const CannotEstimateException*>(
                static_cast<const std::runtime_error*>(&m)),
            nullptr);
}

TEST(DomainExceptionTest, StdExceptionHandlerNeverCatchesOrvelExceptions) {
  auto caughtAsStd = [](auto thrower) {
    try {
      thrower();
    } catch (const std::exception&) {
      return true;
    } catch (...) {
      return false;
    }
    return false;
  };
  EXPECT_TRUE(caughtAsStd([] { throw NullException(); }));
  EXPECT_FALSE(caughtAsStd([] { throw OrvelException("c", "f", 1, "r", "v"); }));
  EXPECT_FALSE(caughtAsStd([] { throw AssertionException(AssertionException::INVARIANT, "c",
                                                         "f", 1, "r", "v"); }));
}

TEST(AssertTest, ReportsConditionTextUnitLineAndRevision) {
  const int m_nCount = 0;
  const int expectedLine = __LINE__ + 2;
  try {
    QV_ASSERT(m_nCount > 0);
    FAIL() << "no throw";
  } catch (const AssertionException& e) {
    EXPECT_EQ(e.getMessage(), "m_nCount > 0");
    EXPECT_EQ(e.getFile(), "qvExceptTest");
    EXPECT_EQ(e.getLineNumber(), expectedLine);
    EXPECT_EQ(e.getFileRevision(), "$Revision: #2 $");
    EXPECT_EQ(e.getOrvelVersion(), "12.00");
    EXPECT_EQ(e.getAssertionType(), "Pre-condition");
  }
  EXPECT_NO_THROW(QV_ASSERT(m_nCount == 0));
}

TEST(AssertTest, QvUnexpectedThrowsBadException) {
  EXPECT_THROW(qvUnexpected(), std::bad_exception);
}

}  // namespace
}  // namespace qvsysbase
