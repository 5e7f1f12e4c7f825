#include "qvsysbase/Aborter.h"

#include <atomic>
#include <utility>

namespace qvsysbase {
namespace {

// The flag is only ever a yes/no that a polling computation must see sooner or
// later; it orders no other data (a callback's state is the callback's own
// business), so relaxed loads and stores are enough, and they compile to the
// plain byte accesses the flag always had.
static_assert(sizeof(detail::AbortedFlag) == 1 && detail::AbortedFlag::is_always_lock_free,
              "the aborted flag stays a lock-free single byte");
constexpr std::memory_order kFlagOrder = std::memory_order_relaxed;

// A missing callback is not an error: the operation that would use it does nothing.
template <typename Callback, typename... Args>
void CallIfSet(Callback* pCallback, Args&&... args) {
  if (pCallback != nullptr) {
    (*pCallback)(std::forward<Args>(args)...);
  }
}

}  // namespace

// ---------------------------------------------------------------------------
// Aborter

void Aborter::SetProgressCallback(QvCallbackProt_1<void, int>* pCallback) {
  m_pProgressCallback = pCallback;
}
void Aborter::SetUserAbortCallback(QvCallbackProt<void>* pCallback) {
  m_pUserAbortCallback = pCallback;
}
void Aborter::SetChangeTextCallback(QvCallbackProt_1<void, const std::wstring&>* pCallback) {
  m_pChangeTextCallback = pCallback;
}

void Aborter::Abort() { m_bAborted.store(true, kFlagOrder); }
bool Aborter::IsAborted() const { return m_bAborted.load(kFlagOrder); }

void Aborter::ReportProgress(int value) {
  // Deliberate: a report means the computation went on, so an abort it did not
  // act on before this point is dropped.
  m_bAborted.store(false, kFlagOrder);
  CallIfSet(m_pProgressCallback, value);
}
void Aborter::CheckForUserAbort() { CallIfSet(m_pUserAbortCallback); }
void Aborter::ChangeText(const std::wstring& text) { CallIfSet(m_pChangeTextCallback, text); }

// ---------------------------------------------------------------------------
// DualAborter

void DualAborter::SetProgressCallback1(QvCallbackProt_1<void, int>* pCallback) {
  m_pProgressCallback1 = pCallback;
}
void DualAborter::SetProgressCallback2(QvCallbackProt_1<void, int>* pCallback) {
  m_pProgressCallback2 = pCallback;
}
void DualAborter::SetUserAbortCallback(QvCallbackProt<void>* pCallback) {
  m_pUserAbortCallback = pCallback;
}
void DualAborter::SetChangeTextCallback1(QvCallbackProt_1<void, const std::wstring&>* pCallback) {
  m_pChangeTextCallback1 = pCallback;
}
void DualAborter::SetChangeTextCallback2(QvCallbackProt_1<void, const std::wstring&>* pCallback) {
  m_pChangeTextCallback2 = pCallback;
}

void DualAborter::Abort() { m_bAborted.store(true, kFlagOrder); }
bool DualAborter::IsAborted() const { return m_bAborted.load(kFlagOrder); }

void DualAborter::ReportProgress1(int value) { CallIfSet(m_pProgressCallback1, value); }
void DualAborter::ReportProgress2(int value) { CallIfSet(m_pProgressCallback2, value); }
void DualAborter::CheckForUserAbort() { CallIfSet(m_pUserAbortCallback); }
void DualAborter::ChangeText1(const std::wstring& text) { CallIfSet(m_pChangeTextCallback1, text); }
void DualAborter::ChangeText2(const std::wstring& text) { CallIfSet(m_pChangeTextCallback2, text); }

}  // namespace qvsysbase
