#include "qvsysbase/nspSmartPtr.h"

#include "qvsysbase/qvExcept.h"

QV_UNIT("nspSmartPtr", "$Revision: #1 $")

namespace qvsysbase {

nspSmartPtr<double>::nspSmartPtr(int n)
    : m_pBuffer(nullptr), m_nSize(n), m_pFree(IntelSPLHandler::nspFree) {
  QV_ASSERT(n >= 0);
  QV_ASSERT(m_pFree != nullptr);
  m_pBuffer = IntelSPLHandler::AllocateZeroedBuffer(n);
}

nspSmartPtr<double>::~nspSmartPtr() noexcept(false) { m_pFree(m_pBuffer); }

SmartRefCountedPtr<nspSmartPtr<double>> nspSmartPtr<double>::Create(int n) {
  auto* buffer = new nspSmartPtr<double>(n);
  return SmartRefCountedPtr<nspSmartPtr<double>>(buffer, buffer);
}

}  // namespace qvsysbase
