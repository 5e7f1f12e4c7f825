// Group destruction: objects that must be torn down together.
//
// Objects that belong together (everything of one open model, say) register
// with one `GroupDestructor`. `destroyGroup` then lets each of them finish its
// work (`Destroy`) and deletes all of them in one pass, in the order they were
// registered. The party that asked for the destruction names itself by its
// group key and is deleted without being asked to tear down again.
//
//   GroupDestructor group;
//   group.addDestructor(pView);       // the group now deletes pView...
//   group.addDestructor(pDocument);
//   group.destroyGroup(pDocument->GetGroupKey());   // ...here, with pDocument
//
// Ownership: the group deletes its registered objects in `destroyGroup` and
// only there; destroying a group without calling it deletes none of them.
//
// Thread-safety: thread-compatible; a group belongs to one thread at a time.
// A group cannot be copied or moved: it stands for one set of objects.
#ifndef QVSYSBASE_GROUPDESTRUCTOR_H_
#define QVSYSBASE_GROUPDESTRUCTOR_H_

#include "qvsysbase/Export.h"

namespace qvsysbase {

// An object that a group may destroy.
class QVSYSBASE_API DestructorProt {
 public:
  virtual ~DestructorProt();
  // Finishes the object's work before the group deletes it.
  virtual void Destroy() = 0;
  // The key that destroyGroup compares with its argument.
  virtual void* GetGroupKey() = 0;
};

struct GroupDestructorImpl;

class QVSYSBASE_API GroupDestructor {
 public:
  GroupDestructor();
  // Forgets every registered object without deleting any of them.
  ~GroupDestructor();
  GroupDestructor(const GroupDestructor&) = delete;
  GroupDestructor& operator=(const GroupDestructor&) = delete;

  // Registers `p` once; a null `p` and a second registration are ignored. The
  // group takes ownership of `p` for destroyGroup.
  // REQUIRES: m_pImpl (the group has not been destroyed)
  void addDestructor(DestructorProt* p);

  // Calls Destroy() on every registered object whose group key differs from
  // `pKey`, deleting each object right after (and every object, whatever its
  // key), in registration order; then forgets them all. A call made while the
  // group is being destroyed, or after, does nothing: a group is destroyed once.
  // When Destroy() or GetGroupKey() throws, the pass goes on: every registered
  // object is still deleted exactly once and the group is gone; then the first
  // exception thrown is passed on (later ones are dropped).
  void destroyGroup(void* pKey);

 private:
  void Release();

  GroupDestructorImpl* m_pImpl;  // owned; null once the group is destroyed
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_GROUPDESTRUCTOR_H_
