// Progress and abort channels.
//
// A long computation is handed a channel by whoever started it. Through it the
// computation reports progress, updates a status text, asks whether the user
// wants to stop (CheckForUserAbort) and checks whether it has been told to stop
// (IsAborted). The channel knows nothing of a user interface: the application
// plugs in callbacks, any of which may be absent, in which case the operation
// that would use it does nothing. The channels check nothing and throw nothing
// themselves; whatever a callback throws passes through to the computation.
//
//   Aborter aborter;
//   aborter.SetProgressCallback(&progressBar);
//   for (int step = 0; step < 100; ++step) {
//     aborter.CheckForUserAbort();
//     if (aborter.IsAborted()) break;
//     ...
//     aborter.ReportProgress(step);
//   }
//
// Thread-safety: thread-compatible, except for the aborted flag: Abort() and
// IsAborted() (and Aborter::ReportProgress, which lowers the flag) may run on
// different threads at once, and an Abort() from another thread is seen
// eventually. Callbacks run on the thread that calls the channel.
//
// Ownership: a channel never owns its callbacks; the caller keeps them alive
// while the channel is in use. Intentionally copyable: a copy shares the
// callbacks and starts with the same flag.
#ifndef QVSYSBASE_ABORTER_H_
#define QVSYSBASE_ABORTER_H_

#include <atomic>
#include <string>

#include "qvsysbase/Export.h"
#include "qvsysbase/QvCallbackProt.h"

namespace qvsysbase {

namespace detail {
// The aborted flag: a std::atomic<bool>, because Abort() may come from another
// thread, that copies as the value it holds, so that the channels stay
// copyable. One byte, as the plain flag it replaces.
struct AbortedFlag : std::atomic<bool> {
  using std::atomic<bool>::atomic;
  AbortedFlag(const AbortedFlag& other)
      : std::atomic<bool>(other.load(std::memory_order_relaxed)) {}
  AbortedFlag& operator=(const AbortedFlag& other) {
    store(other.load(std::memory_order_relaxed), std::memory_order_relaxed);
    return *this;
  }
};
}  // namespace detail

// The channel with one progress bar and one status text.
//
// Every ReportProgress lowers the aborted flag before reporting, so an abort
// must be observed between the computation's abort check and its next progress
// report, or it is lost.
class QVSYSBASE_API Aborter {
 public:
  // Not aborted, no callbacks.
  Aborter() = default;

  // Store a callback; null silences the operation that uses it.
  void SetProgressCallback(QvCallbackProt_1<void, int>* pCallback);
  void SetUserAbortCallback(QvCallbackProt<void>* pCallback);
  void SetChangeTextCallback(QvCallbackProt_1<void, const std::wstring&>* pCallback);

  // Raises the aborted flag.
  void Abort();
  bool IsAborted() const;

  // Lowers the aborted flag, then hands `value` to the progress callback.
  void ReportProgress(int value);
  // Calls the user-abort callback, which decides whether to call Abort().
  void CheckForUserAbort();
  // Hands `text` to the change-text callback.
  void ChangeText(const std::wstring& text);

 private:
  detail::AbortedFlag m_bAborted{false};
  QvCallbackProt_1<void, int>* m_pProgressCallback = nullptr;
  QvCallbackProt<void>* m_pUserAbortCallback = nullptr;
  QvCallbackProt_1<void, const std::wstring&>* m_pChangeTextCallback = nullptr;
};

// The channel with two progress bars and two status texts (for example an
// overall and a per-step progress) and one shared aborted flag. Unlike
// Aborter, progress reports never touch the flag.
class QVSYSBASE_API DualAborter {
 public:
  // Not aborted, no callbacks.
  DualAborter() = default;

  // Store a callback; null silences the operation that uses it.
  void SetProgressCallback1(QvCallbackProt_1<void, int>* pCallback);
  void SetProgressCallback2(QvCallbackProt_1<void, int>* pCallback);
  void SetUserAbortCallback(QvCallbackProt<void>* pCallback);
  void SetChangeTextCallback1(QvCallbackProt_1<void, const std::wstring&>* pCallback);
  void SetChangeTextCallback2(QvCallbackProt_1<void, const std::wstring&>* pCallback);

  // Raises the aborted flag.
  void Abort();
  bool IsAborted() const;

  // Hand `value` to progress callback 1 or 2.
  void ReportProgress1(int value);
  void ReportProgress2(int value);
  // Calls the user-abort callback, which decides whether to call Abort().
  void CheckForUserAbort();
  // Hand `text` to change-text callback 1 or 2.
  void ChangeText1(const std::wstring& text);
  void ChangeText2(const std::wstring& text);

 private:
  detail::AbortedFlag m_bAborted{false};
  QvCallbackProt_1<void, int>* m_pProgressCallback1 = nullptr;
  QvCallbackProt_1<void, int>* m_pProgressCallback2 = nullptr;
  QvCallbackProt<void>* m_pUserAbortCallback = nullptr;
  QvCallbackProt_1<void, const std::wstring&>* m_pChangeTextCallback1 = nullptr;
  QvCallbackProt_1<void, const std::wstring&>* m_pChangeTextCallback2 = nullptr;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_ABORTER_H_
