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
  using H = IntelSPLHandler;
  H::setIntelSPLMode(mode == H::SplModeMKL ? H::SplModePlain : H::SplModeMKL, threads);
  H::setIntelSPLMode(mode, threads);
}

// Collects what the kernels report while alive.
class ReportCapture {
 public:
  ReportCapture() : m_Guard(&Record) { s_reports.clear(); }
  const std::vector<std::string>& reports() const { return s_reports; }

 private:
  static void Record(const std::string& message) { s_reports.push_back(message); }
  static inline std::vector<std::string> s_reports;
  ScopedKernelErrorReport m_Guard;
};

}  // namespace qvsysbase::testing_support

#endif  // QVSYSBASE_TESTS_NUMERICS_KERNELTESTSUPPORT_H_
