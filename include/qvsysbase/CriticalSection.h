// The library's lock and its two scoped guards.
//
// `CriticalSection` is a re-entrant mutual-exclusion lock: the thread that holds
// it may enter it again, and must leave it as many times as it entered before
// another thread gets in. `csLocker` enters a section for the lifetime of the
// guard; `qvLocker` does the same over a section that may be null, in which
// case it guards nothing.
//
//   CriticalSection cs;
//   {
//     csLocker lock(cs);   // entered here
//     ...
//   }                      // left here
//
// Thread-safety: `CriticalSection` is thread-safe; that is its purpose. A guard
// belongs to the thread that made it. Neither the section nor a guard can be
// copied or moved: a section is identified by its address, and a guard leaves
// exactly the section it entered, exactly once.
//
// With clang, the section is a thread-safety capability: members declared
// QV_GUARDED_BY(cs) may only be touched while a guard over `cs` is alive
// (checked by -Wthread-safety). The analysis does not model re-entry, so
// entering the same section twice in one function is reported; across
// functions, re-entry is what the lock is for.
#ifndef QVSYSBASE_CRITICALSECTION_H_
#define QVSYSBASE_CRITICALSECTION_H_

#include <mutex>

#include "qvsysbase/Export.h"

// Clang thread-safety attributes; empty for other compilers.
#if defined(__clang__)
#define QV_THREAD_ANNOTATION(x) __attribute__((x))
#else
#define QV_THREAD_ANNOTATION(x)
#endif
#define QV_CAPABILITY(x) QV_THREAD_ANNOTATION(capability(x))
#define QV_SCOPED_CAPABILITY QV_THREAD_ANNOTATION(scoped_lockable)
#define QV_GUARDED_BY(x) QV_THREAD_ANNOTATION(guarded_by(x))
#define QV_PT_GUARDED_BY(x) QV_THREAD_ANNOTATION(pt_guarded_by(x))
#define QV_REQUIRES(...) QV_THREAD_ANNOTATION(requires_capability(__VA_ARGS__))
#define QV_ACQUIRE(...) QV_THREAD_ANNOTATION(acquire_capability(__VA_ARGS__))
#define QV_TRY_ACQUIRE(...) QV_THREAD_ANNOTATION(try_acquire_capability(__VA_ARGS__))
#define QV_RELEASE(...) QV_THREAD_ANNOTATION(release_capability(__VA_ARGS__))
#define QV_NO_THREAD_SAFETY_ANALYSIS QV_THREAD_ANNOTATION(no_thread_safety_analysis)

namespace qvsysbase {

class QVSYSBASE_API QV_CAPABILITY("mutex") CriticalSection {
 public:
  CriticalSection();
  ~CriticalSection();
  CriticalSection(const CriticalSection&) = delete;
  CriticalSection& operator=(const CriticalSection&) = delete;

  // Waits until no other thread holds the section, then takes it (again, when
  // the calling thread already holds it).
  void Enter() QV_ACQUIRE();
  // Takes the section if that is possible without waiting; true when taken.
  bool TryEnter() QV_TRY_ACQUIRE(true);
  // Gives up one entry; the section is free when every entry has been left.
  // Only the thread that holds the section may leave it.
  void Leave() QV_RELEASE();

 private:
  std::recursive_mutex m_Mutex;
};

// Holds the section `*p` from construction to destruction; a null `p` guards
// nothing. Does NOT own the section, which must outlive the guard.
class QV_SCOPED_CAPABILITY qvLocker {
 public:
  explicit qvLocker(CriticalSection* p) QV_ACQUIRE(p) : m_pCS(p) {
    if (m_pCS != nullptr) m_pCS->Enter();
  }
  ~qvLocker() QV_RELEASE() {
    if (m_pCS != nullptr) m_pCS->Leave();
  }
  qvLocker(const qvLocker&) = delete;
  qvLocker& operator=(const qvLocker&) = delete;

 private:
  CriticalSection* const m_pCS;
};

// Holds the section `cs` from construction to destruction. Does NOT own the
// section, which must outlive the guard.
class QV_SCOPED_CAPABILITY csLocker {
 public:
  explicit csLocker(CriticalSection& cs) QV_ACQUIRE(cs) : m_pCS(&cs) { m_pCS->Enter(); }
  ~csLocker() QV_RELEASE() { m_pCS->Leave(); }
  csLocker(const csLocker&) = delete;
  csLocker& operator=(const csLocker&) = delete;

 private:
  CriticalSection* const m_pCS;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_CRITICALSECTION_H_
