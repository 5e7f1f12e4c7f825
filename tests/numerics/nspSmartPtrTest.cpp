#include "qvsysbase/nspSmartPtr.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "ExpectThrow.h"
#include "numerics/KernelTestSupport.h"

namespace qvsysbase {
namespace {

using testing_support::Select;

TEST(nspSmartPtrTest, BufferIsZeroedOverWholeCacheLinesAndShared) {
  for (auto mode : {IntelSPLHandler::SplModePlain, IntelSPLHandler::SplModeMKL}) {
    SCOPED_TRACE(mode);
    Select(mode);
    SmartRefCountedPtr<nspSmartPtr<double>> p = nspSmartPtr<double>::Create(13);
    EXPECT_EQ(p->GetCount(), 1);
    EXPECT_EQ(p->Size(), 13);
    const double* data = p->Get();
    for (int i = 0; i < IntelSPLHandler::CeilNspdbSize(13); ++i) EXPECT_EQ(data[i], 0.0) << i;
    if (mode == IntelSPLHandler::SplModeMKL) {
      EXPECT_EQ(reinterpret_cast<std::uintptr_t>(data) % 64, 0u);
    }
    {
      SmartRefCountedPtr<nspSmartPtr<double>> copy = p;
      EXPECT_EQ(copy->Get(), data);
      EXPECT_EQ(p->GetCount(), 2);
    }
    EXPECT_EQ(p->GetCount(), 1);
  }
}

// A buffer outliving a mode change goes back to the allocator that made it:
// aligned storage handed to the plain set's delete[] would corrupt the heap,
// which the sanitizer build reports.
TEST(nspSmartPtrTest, BufferOutlivesModeChange) {
  Select(IntelSPLHandler::SplModeMKL);
  SmartRefCountedPtr<nspSmartPtr<double>> fast = nspSmartPtr<double>::Create(100);
  Select(IntelSPLHandler::SplModePlain);
  SmartRefCountedPtr<nspSmartPtr<double>> plain = nspSmartPtr<double>::Create(3);
  Select(IntelSPLHandler::SplModeMKL);
  fast = plain;  // releases the fast buffer under the other mode
  EXPECT_EQ(plain->GetCount(), 2);
}

TEST(nspSmartPtrTest, NegativeSizeIsRefused) {
  Select(IntelSPLHandler::SplModeMKL);
  testing_support::ExpectThrowText(
      [] { nspSmartPtr<double>::Create(-1); }, "n >= 0", "nspSmartPtr");
}

}  // namespace
}  // namespace qvsysbase
