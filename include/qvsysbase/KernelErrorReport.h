// The kernels' error report: where numeric kernels send errors they report
// instead of throwing (a vector function's domain or singularity error, an
// illegal element found by the sort). It stands in for the kernel library's
// xerbla. The default writes one line to standard error; an application or a
// test installs its own.
//
// Thread-safety: thread-safe. Installing a report is atomic; the report itself
// may be called from any thread that runs a kernel.
#ifndef QVSYSBASE_KERNELERRORREPORT_H_
#define QVSYSBASE_KERNELERRORREPORT_H_

#include <string>

#include "qvsysbase/Export.h"

namespace qvsysbase {

using KernelErrorReportFn = void (*)(const std::string& message);

// Installs `report` and returns the one it replaces; null restores the default.
QVSYSBASE_API KernelErrorReportFn SetKernelErrorReport(KernelErrorReportFn report);

// Hands `message` to the installed report.
QVSYSBASE_API void ReportKernelError(const std::string& message);

// Installs a report for the guard's lifetime and restores the previous one.
// Not copyable.
class ScopedKernelErrorReport {
 public:
  explicit ScopedKernelErrorReport(KernelErrorReportFn report)
      : m_pPrevious(SetKernelErrorReport(report)) {}
  ~ScopedKernelErrorReport() { SetKernelErrorReport(m_pPrevious); }
  ScopedKernelErrorReport(const ScopedKernelErrorReport&) = delete;
  ScopedKernelErrorReport& operator=(const ScopedKernelErrorReport&) = delete;

 private:
  KernelErrorReportFn m_pPrevious;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_KERNELERRORREPORT_H_
