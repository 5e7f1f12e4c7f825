// Helpers shared by the kernel dispatch tests.
#ifndef QVSYSBASE_TESTS_NUMERICS_KERNELTESTSUPPORT_H_
#define QVSYSBASE_TESTS_NUMERICS_KERNELTESTSUPPORT_H_

#include <string>
#include <vector>

#include "qvsysbase/IntelSPLHandler.h"
#include "qvsysbase/KernelErrorReport.h"

namespace qvsysbase::testing_support {

// Installs the set of `mode` whatever the current state: a call with the
// current mode would leave the table as it is, so another mode goes first.
inline void Select(IntelSPLHandler::SplMode mode, int threads = 1) {
  const auto other = mode == IntelSPLHandler::SplModeMKL ? IntelSPLHandler::SplModePlain
                                                         : IntelSPLHandler::SplModeMKL;
  IntelSPLHandler::setIntelSPLMode(other, threads);
  IntelSPLHandler::setIntelSPLMode(mode, threads);
}

// Collects what the kernels report while alive.
class ReportCapture {
 public:
  ReportCapture() : m_Guard(&Record) { Reports().clear(); }
  const std::vector<std::string>& reports() const { return Reports(); }

 private:
  static std::vector<std::string>& Reports() {
    static std::vector<std::string> reports;
    return reports;
  }
  static void Record(const std::string& message) { Reports().push_back(message); }
  ScopedKernelErrorReport m_Guard;
};

}  // namespace qvsysbase::testing_support

#endif  // QVSYSBASE_TESTS_NUMERICS_KERNELTESTSUPPORT_H_
