// The counted numeric buffer: a block of doubles from the kernel dispatch that
// is its own reference counter, handed around as
// SmartRefCountedPtr<nspSmartPtr<double>>.
//
// The capacity is CeilNspdbSize(n) elements (whole 64-byte lines), all zeroed
// at construction; Size() is the n asked for. The buffer is allocated through
// the nspdMalloc slot of the mode current at construction and given back
// through that same mode's nspFree, so a mode change while buffers are alive
// does not hand a buffer to the wrong allocator.
//
// Thread-safety: the count is thread-safe (see RefCounterProt.h); the elements
// are thread-compatible.
#ifndef QVSYSBASE_NSPSMARTPTR_H_
#define QVSYSBASE_NSPSMARTPTR_H_

#include "qvsysbase/Export.h"
#include "qvsysbase/IntelSPLHandler.h"
#include "qvsysbase/RefCounterProt.h"

namespace qvsysbase {

template <class T>
class nspSmartPtr;

// Only double buffers exist: the allocation slots hand out doubles.
template <>
class QVSYSBASE_API nspSmartPtr<double> : public RefCounterProtocolImp {
 public:
  // REQUIRES: n >= 0 and a kernel mode has been selected (nspdMalloc set).
  explicit nspSmartPtr(int n);
  // Frees the buffer, then checks "m_nCount == 0" as every counted object does.
  ~nspSmartPtr() noexcept(false) override;
  nspSmartPtr(const nspSmartPtr&) = delete;
  nspSmartPtr& operator=(const nspSmartPtr&) = delete;

  // A new buffer of n zeros held by one counted pointer (count 1).
  static SmartRefCountedPtr<nspSmartPtr<double>> Create(int n);

  double* Get() const { return m_pBuffer; }
  int Size() const { return m_nSize; }

 private:
  double* m_pBuffer;
  int m_nSize;
  void (*m_pFree)(void*);  // the nspFree of the mode that allocated m_pBuffer
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_NSPSMARTPTR_H_
