// Reference counting: counters, the smart pointers that hold them, and the
// atomic helpers beneath them.
//
// A smart pointer holds two pointers: the object it gives access to and the
// counter that keeps that object alive. The counter may be the object itself
// (a class derived from RefCounterProtocolImp), a separate counter that owns a
// plain object (ExtRefCounter<T>), or the counter of an enclosing owner reached
// through an InternalRefCounter.
//
//   class Model : public qvsysbase::RefCounterProtocolImp { ... };
//   Model* model = new Model;
//   qvsysbase::SmartRefCountedPtr<Model> p(model, model);   // count 1
//   qvsysbase::SmartRefCountedPtr<Model> q = p;             // count 2
//   // the last pointer to go deletes the model
//
// Thread-safety: counters are thread-safe; one object may be referenced and
// released from several threads at once through distinct smart pointers. A
// single smart pointer instance is thread-compatible (its two fields are read
// and written without synchronisation). qvInterlockedIncrement/Decrement and
// qvSafeIncrement are thread-safe.
#ifndef QVSYSBASE_REFCOUNTERPROT_H_
#define QVSYSBASE_REFCOUNTERPROT_H_

#include <atomic>
#include <cstdint>

#include "qvsysbase/Export.h"
#include "qvsysbase/qvExcept.h"

namespace qvsysbase {

// Atomically adds 1 to *pValue and returns the new value. A full barrier.
// REQUIRES: *pValue is 4-byte aligned and not accessed non-atomically meanwhile.
QVSYSBASE_API std::int32_t qvInterlockedIncrement(std::int32_t volatile* pValue);
// Atomically subtracts 1 from *pValue and returns the new value. A full barrier.
QVSYSBASE_API std::int32_t qvInterlockedDecrement(std::int32_t volatile* pValue);

// Atomic addition to a shared double.
class QVSYSBASE_API qvSafeIncrement {
 public:
  // True where this platform adds to a double atomically without a lock, that
  // is where 64-bit atomics are lock-free.
  static bool IsSafeIncrementSupported();
  // The operating-system rule for the same question, given the system's
  // platform identifier and version: true for the NT family (platform 2) from
  // major version 5 on, except 5.0 and 5.1, which lack a 64-bit
  // compare-exchange.
  static bool IsSafeIncrementSupported(unsigned platformId, unsigned major, unsigned minor);
  // Adds dDelta to *pValue atomically (lock-free compare-exchange retry).
  // REQUIRES: IsSafeIncrementSupported() returned true.
  static void SafeIncrement(double volatile* pValue, double dDelta);
};

// The interface of every counter. Counters are not copyable through it.
class QVSYSBASE_API RefCounterProtocol {
 public:
  // May throw: a self-counted object reports its deletion while referenced.
  virtual ~RefCounterProtocol() noexcept(false);
  // Takes one reference; returns the new count.
  virtual std::int32_t AddRef() = 0;
  // Drops one reference; returns the new count.
  virtual std::int32_t Release() = 0;
};

// Base of objects that count their own references. Born with count 0; the
// Release that brings the count to 0 deletes the object. An object never handed
// to a smart pointer is deleted directly.
//
// Copying an object does not copy its references: a copy starts with count 0,
// and assignment leaves the target's count alone.
class QVSYSBASE_API RefCounterProtocolImp : public RefCounterProtocol {
 public:
  RefCounterProtocolImp();
  RefCounterProtocolImp(const RefCounterProtocolImp& other);
  RefCounterProtocolImp& operator=(const RefCounterProtocolImp& other);
  // REQUIRES: m_nCount == 0 (deleting a referenced object is a leak or a
  // double ownership; the assertion leaves the destructor).
  ~RefCounterProtocolImp() noexcept(false) override;

  std::int32_t AddRef() override;
  // Deletes this object when the count reaches 0; returns the new count.
  // REQUIRES: m_nCount > 0
  std::int32_t Release() override;
  // Drops one reference but never deletes, even at 0 (for a temporary
  // reference taken during construction).
  // REQUIRES: m_nCount > 0
  void SafeRelease();
  // The current count (a snapshot; others may change it at once).
  std::int32_t GetCount() const;

 private:
  // Every read is atomic: a check or GetCount may run while another thread
  // changes the count.
  std::atomic<std::int32_t> m_nCount;
};

// A counter inside an owner object, forwarding part of its references to the
// owner's counter: the first nThreshold references are the owner's own internal
// links; every further one is also a reference to the owner. Lives and dies with
// its owner; never deletes itself. Not copyable.
class QVSYSBASE_API InternalRefCounter : public RefCounterProtocol {
 public:
  // pOwner may be null; it is not owned (never released for itself or deleted)
  // and must outlive this counter.
  InternalRefCounter(int nThreshold, RefCounterProtocol* pOwner);
  InternalRefCounter(const InternalRefCounter&) = delete;
  InternalRefCounter& operator=(const InternalRefCounter&) = delete;
  ~InternalRefCounter() noexcept(false) override;

  // Calls the owner's AddRef when the new count is above the threshold.
  std::int32_t AddRef() override;
  // Calls the owner's Release when the new count is at or above the threshold.
  std::int32_t Release() override;

 private:
  std::atomic<std::int32_t> m_nCount;
  int m_nThreshold;
  RefCounterProtocol* m_pOwner;
};

// A separate counter that owns an object without a counter of its own; the
// Release that brings the count to 0 deletes the counter and the object.
// Create it with new. Not copyable.
template <class T>
class ExtRefCounter : public RefCounterProtocol {
 public:
  // Takes ownership of pObject (may be null).
  explicit ExtRefCounter(T* pObject);
  ExtRefCounter(const ExtRefCounter&) = delete;
  ExtRefCounter& operator=(const ExtRefCounter&) = delete;
  ~ExtRefCounter() noexcept(false) override;

  std::int32_t AddRef() override;
  std::int32_t Release() override;

 private:
  T* m_pObject;
  std::int32_t m_nCount;
};

// Shared-ownership pointer over any counter. Both fields are null (an empty
// pointer) or both are set; they may point at the same object. Intentionally
// copyable: a copy is one more reference on the same counter.
template <class T>
class SmartRefCountedPtr {
 public:
  SmartRefCountedPtr() = default;
  // Takes a reference on pRefCounter, which keeps pObject alive. Both null
  // gives an empty pointer.
  // REQUIRES: pObject && pRefCounter (unless both are null)
  SmartRefCountedPtr(T* pObject, RefCounterProtocol* pRefCounter);
  SmartRefCountedPtr(const SmartRefCountedPtr& other);
  // Assigning a pointer to the same object is free (no counter is called).
  // Otherwise this pointer's old counter loses its reference first, then
  // other's counter gains one. Releasing first is unsafe when other lives
  // inside the object the release destroys (p = p->m_pNext on the last
  // reference to *p): copy such a pointer into a local first.
  // REQUIRES: other.m_pRefCounter == m_pRefCounter (same object)
  // REQUIRES: other.m_pObject && other.m_pRefCounter (different object, unless
  // other is empty)
  SmartRefCountedPtr& operator=(const SmartRefCountedPtr& other);
  // Releases the reference; lets the counter's assertions through.
  ~SmartRefCountedPtr() noexcept(false);

  // REQUIRES: m_pObject != 0
  T* operator->() const;
  // REQUIRES: m_pObject != 0
  T& operator*() const;

  T* GetObject() const { return m_pObject; }
  RefCounterProtocol* GetRefCounter() const { return m_pRefCounter; }
  explicit operator bool() const { return m_pObject != nullptr; }

 private:
  T* m_pObject = nullptr;
  RefCounterProtocol* m_pRefCounter = nullptr;
};

// The same contract as SmartRefCountedPtr<const T>, and convertible from a
// SmartRefCountedPtr<T>. Intentionally copyable.
template <class T>
class SmartRefCountedConstPtr : public SmartRefCountedPtr<const T> {
 public:
  using SmartRefCountedPtr<const T>::SmartRefCountedPtr;
  SmartRefCountedConstPtr() = default;
  // One more reference on other's counter.
  SmartRefCountedConstPtr(
      const SmartRefCountedPtr<T>& other)  // NOLINT(google-explicit-constructor)
      : SmartRefCountedPtr<const T>(other.GetObject(), other.GetRefCounter()) {}
};

// ---------------------------------------------------------------------------
// Implementation details; not part of the interface.

#define QV_REFCOUNTER_ASSERT(condition) \
  QV_HEADER_ASSERT(condition, "qvsysbase/RefCounterProt.h", "$Revision: #1 $")

template <class T>
ExtRefCounter<T>::ExtRefCounter(T* pObject) : m_pObject(pObject), m_nCount(0) {}

template <class T>
ExtRefCounter<T>::~ExtRefCounter() noexcept(false) {
  delete m_pObject;
}

template <class T>
std::int32_t ExtRefCounter<T>::AddRef() {
  return qvInterlockedIncrement(&m_nCount);
}

template <class T>
std::int32_t ExtRefCounter<T>::Release() {
  const std::int32_t count = qvInterlockedDecrement(&m_nCount);
  // The decrement that reached 0 was the last reference: no other thread can
  // reach this counter any more.
  if (count == 0) delete this;
  return count;
}

template <class T>
SmartRefCountedPtr<T>::SmartRefCountedPtr(T* pObject, RefCounterProtocol* pRefCounter) {
  if (pObject == nullptr && pRefCounter == nullptr) return;
  QV_REFCOUNTER_ASSERT(pObject && pRefCounter);
  pRefCounter->AddRef();
  m_pObject = pObject;
  m_pRefCounter = pRefCounter;
}

template <class T>
SmartRefCountedPtr<T>::SmartRefCountedPtr(const SmartRefCountedPtr& other)
    : SmartRefCountedPtr(other.m_pObject, other.m_pRefCounter) {}

template <class T>
SmartRefCountedPtr<T>& SmartRefCountedPtr<T>::operator=(const SmartRefCountedPtr& other) {
  if (other.m_pObject == m_pObject) {
    QV_REFCOUNTER_ASSERT(other.m_pRefCounter == m_pRefCounter);
    return *this;
  }
  if (other.m_pObject != nullptr || other.m_pRefCounter != nullptr) {
    QV_REFCOUNTER_ASSERT(other.m_pObject && other.m_pRefCounter);
  }
  // The counter calls keep their documented order, release before AddRef.
  // That is safe only while other outlives the release; a pointer held by the
  // released object does not (see the declaration).
  if (m_pRefCounter != nullptr) m_pRefCounter->Release();
  if (other.m_pRefCounter != nullptr) other.m_pRefCounter->AddRef();
  m_pObject = other.m_pObject;
  m_pRefCounter = other.m_pRefCounter;
  return *this;
}

template <class T>
SmartRefCountedPtr<T>::~SmartRefCountedPtr() noexcept(false) {
  if (m_pRefCounter != nullptr) m_pRefCounter->Release();
}

template <class T>
T* SmartRefCountedPtr<T>::operator->() const {
  QV_REFCOUNTER_ASSERT(m_pObject != 0);
  return m_pObject;
}

template <class T>
T& SmartRefCountedPtr<T>::operator*() const {
  QV_REFCOUNTER_ASSERT(m_pObject != 0);
  return *m_pObject;
}

#undef QV_REFCOUNTER_ASSERT

}  // namespace qvsysbase

#endif  // QVSYSBASE_REFCOUNTERPROT_H_
