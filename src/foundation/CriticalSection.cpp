#include "qvsysbase/CriticalSection.h"

namespace qvsysbase {

CriticalSection::CriticalSection() = default;
CriticalSection::~CriticalSection() = default;

// The analysis cannot see that the recursive mutex is the capability itself.
void CriticalSection::Enter() QV_NO_THREAD_SAFETY_ANALYSIS { m_Mutex.lock(); }
bool CriticalSection::TryEnter() QV_NO_THREAD_SAFETY_ANALYSIS { return m_Mutex.try_lock(); }
void CriticalSection::Leave() QV_NO_THREAD_SAFETY_ANALYSIS { m_Mutex.unlock(); }

}  // namespace qvsysbase
