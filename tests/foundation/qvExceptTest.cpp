#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>
#include <type_traits>

#include "qvsysbase/GroupDestructor.h"
#include "qvsysbase/RefCounterProt.h"
#include "qvsysbase/SenderReceiver.h"
#include "qvsysbase/qvExcept.h"

namespace qvsysbase {
namespace {

QV_UNIT("qvExceptTest", "$Revision: #2 $")

// A std::exception handler must never swallow the library's own failures, nor
// a handler for the estimation failure collinearity (siblings).
static_assert(!std::is_base_of_v<std::exception, OrvelException> &&
              std::is_base_of_v<std::logic_error, Different_Dimensions_Exception> &&
              std::is_base_of_v<std::logic_error, dimset_out_of_range> &&
              std::is_base_of_v<std::runtime_error, MulticollinearityException> &&
              !std::is_base_of_v<CannotEstimateException, MulticollinearityException>);

std::string Details(const OrvelException& e) {
  std::ostringstream os;
  e.getDetails(os);
  return os.str();
}

TEST(OrvelExceptionTest, DetailsAndTexts) {
  EXPECT_EQ(Details(OrvelException("c", "f", 7, "r", "12.00")),
            "Exception occurred in file: f\nLine number: 7\nRevision Number: r\n"
            "ORVEL Version: 12.00\nCause: c\n");
  const int line = __LINE__ + 2;
  try {
    QV_ASSERT(line < 0);
    FAIL() << "no throw";
  } catch (const AssertionException& e) {
    EXPECT_EQ(Details(e),
              "Exception occurred in file: qvExceptTest\nLine number: " + std::to_string(line) +
                  "\nRevision Number: $Revision: #2 $\nORVEL Version: 12.00\n"
                  "Cause: line < 0\nException Type: Pre-condition\n");
  }
  EXPECT_NO_THROW(QV_ASSERT(line > 0));
  const char* types[] = {"Unknown", "Pre-condition", "Post-condition", "Invariant", "Unknown"};
  for (int type = -1; type <= 3; ++type) {
    const AssertionException e(
        static_cast<AssertionException::ASSERTION_TYPE>(type), "", "", 0, "", "");
    EXPECT_EQ(e.getAssertionType(), types[type + 1]) << type;
  }
  EXPECT_STREQ(CannotEstimateException().what(), "The model cannot be estimated");
  EXPECT_STREQ(CannotEstimateException("x").what(), "x");
  EXPECT_STREQ(NullException().what(), "NullException");
  EXPECT_STREQ(ConstraintViolationException().what(), "ConstraintViolationException");
  EXPECT_STREQ(InvalidValueException().what(), "InvalidValueException");
  EXPECT_STREQ(ClipboardFormatException().what(), "ClipboardFormatException");
  const MulticollinearityException m("m", "x1,x2", true);
  EXPECT_TRUE(m.getDetails() == "x1,x2" && m.isInitCollinearity());
  EXPECT_THROW(qvUnexpected(), std::bad_exception);
}

int g_nDestroyed = 0;
struct Counted : RefCounterProtocolImp {
  ~Counted() override { ++g_nDestroyed; }
};
using NT = qvNotifyType;
struct Single : QvReceiverWithSingleSender {
  void ObjectChanged(NT::NotifyEnumType w, NT::NotifyHintEnumType h, const QvSender* s) override {
    QvReceiverWithSingleSender::ObjectChanged(w, h, s);
  }
};

// Every check site of the foundation (a pointer half set by memory corruption
// aside), and that a failed check changed nothing.
TEST(AssertTest, CheckSitesReportTheirConditionAndUnit) {
  const std::string kHeader = " @ qvsysbase/RefCounterProt.h", kImp = " @ RefCounterProtImp",
                    kSR = " @ SenderReceiver";
  int object = 0;
  auto *a = new Counted, *b = new Counted, *zero = new Counted;
  SmartRefCountedPtr<int> p(&object, a);
  const SmartRefCountedPtr<int> sameObjectOtherCounter(&object, b);
  QvSender first, second;
  Single unlinked, linked;
  linked.AddSenderLink(&first);
  GroupDestructor gone;
  gone.destroyGroup(nullptr);
  const struct {
    std::function<void()> body;
    std::string expected;
  } rows[] = {
      // clang-format off
      {[&] { SmartRefCountedPtr<int> q(&object, nullptr); }, "pObject && pRefCounter" + kHeader},
      {[&] { SmartRefCountedPtr<int> q(nullptr, a); }, "pObject && pRefCounter" + kHeader},
      {[] { SmartRefCountedPtr<Counted>()->GetCount(); }, "m_pObject != 0" + kHeader},
      {[] { (*SmartRefCountedConstPtr<Counted>()).GetCount(); }, "m_pObject != 0" + kHeader},
      {[&] { p = sameObjectOtherCounter; }, "other.m_pRefCounter == m_pRefCounter" + kHeader},
      {[&] { zero->Release(); }, "m_nCount > 0" + kImp},
      {[&] { zero->SafeRelease(); }, "m_nCount > 0" + kImp},
      {[&] { SmartRefCountedPtr<Counted> q(zero, zero); zero->SafeRelease(); },  // stolen
       "m_nCount > 0" + kImp},
      {[&] { zero->AddRef(), delete zero; }, "m_nCount == 0" + kImp},  // freed all the same
      {[&] { unlinked.ObjectChanged(NT::NT_CHANGED, NT::NH_NONE, &first); }, "m_pSender" + kSR},
      {[&] { linked.AddSenderLink(&second); }, "!m_pSender" + kSR},
      {[&] { linked.RemoveSenderLink(&second); }, "m_pSender == pSender" + kSR},
      {[&] { gone.addDestructor(nullptr); }, "m_pImpl @ Groupdestructor"},
      // clang-format on
  };
  for (const auto& row : rows) {
    try {
      row.body();
      ADD_FAILURE() << "no assertion: " << row.expected;
    } catch (const AssertionException& e) {
      EXPECT_EQ(e.getMessage() + " @ " + e.getFile() + ", " + e.getAssertionType(),
                row.expected + ", Pre-condition");
    }
  }
  EXPECT_EQ(g_nDestroyed, 1);
  EXPECT_TRUE(p.GetRefCounter() == a && a->GetCount() == 1 && b->GetCount() == 1);
  EXPECT_TRUE(linked.GetSingleSender() == &first && !second.HasReceiver());
}

}  // namespace
}  // namespace qvsysbase
