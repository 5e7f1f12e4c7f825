#include "qvsysbase/GroupDestructor.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <vector>

#include "foundation/FoundationHooks.h"
#include "qvsysbase/qvExcept.h"

QV_UNIT("Groupdestructor", "$Revision: #1 $")

namespace qvsysbase {

// Invariant: m_vecDestructors holds no pointer twice, and no null pointer
// except the entries destroyGroup has finished with.
struct GroupDestructorImpl {
  std::vector<DestructorProt*> m_vecDestructors;  // in order of registration
  bool m_bInProgress = false;                     // set by destroyGroup, never cleared
};

DestructorProt::~DestructorProt() = default;

GroupDestructor::GroupDestructor() : m_pImpl(new GroupDestructorImpl) {}

GroupDestructor::~GroupDestructor() { Release(); }

void GroupDestructor::Release() {
  delete m_pImpl;
  m_pImpl = nullptr;
}

void GroupDestructor::addDestructor(DestructorProt* p) {
  QV_ASSERT(m_pImpl);
  if (p == nullptr) return;
  std::vector<DestructorProt*>& list = m_pImpl->m_vecDestructors;
  if (std::find(list.begin(), list.end(), p) == list.end()) list.push_back(p);
}

void GroupDestructor::destroyGroup(void* pKey) {
  // Tear-down code of a member may reach destroyGroup again; that call, and any
  // after the group is gone, is ignored.
  if (m_pImpl == nullptr || m_pImpl->m_bInProgress) return;
  m_pImpl->m_bInProgress = true;
  // By index, not by iterator: a member's Destroy() may register further
  // objects, which then go with the group too. An entry is cleared before its
  // object is deleted, so that a new object at a reused address is not taken
  // for one already registered.
  std::exception_ptr firstFailure;
  std::vector<DestructorProt*>& list = m_pImpl->m_vecDestructors;
  for (std::size_t i = 0; i < list.size(); ++i) {
    DestructorProt* p = list[i];
    if (p == nullptr) continue;
    // A member that fails to tear down is still deleted, and so are the ones
    // after it: the group's owner cannot reach them any more.
    try {
      if (p->GetGroupKey() != pKey) p->Destroy();
    } catch (...) {
      if (!firstFailure) firstFailure = std::current_exception();
    }
    list[i] = nullptr;
    delete p;
  }
  Release();
  if (firstFailure) std::rethrow_exception(firstFailure);
}

namespace detail {
// Nothing to prepare at load or to undo at unload; the hooks keep the unit's
// place in the start-up order.
void InitializeGroupDestructionUnit() {}
void FinalizeGroupDestructionUnit() {}
}  // namespace detail

}  // namespace qvsysbase
