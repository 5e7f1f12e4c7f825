#include "qvsysbase/KernelErrorReport.h"

#include <atomic>
#include <cstdio>

namespace qvsysbase {
namespace {

void DefaultReport(const std::string& message) {
  std::fprintf(stderr, "qvsysbase kernel error: %s\n", message.c_str());
}

// Relaxed is enough: the pointer is the only data published, and a report
// installed on one thread need not be seen by a kernel already running on another.
std::atomic<KernelErrorReportFn> g_report{&DefaultReport};

}  // namespace

KernelErrorReportFn SetKernelErrorReport(KernelErrorReportFn report) {
  return g_report.exchange(report != nullptr ? report : &DefaultReport, std::memory_order_relaxed);
}

void ReportKernelError(const std::string& message) {
  g_report.load(std::memory_order_relaxed)(message);
}

}  // namespace qvsysbase
