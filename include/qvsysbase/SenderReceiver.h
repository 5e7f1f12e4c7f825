// Sender and receiver notifications.
//
// An object that changes owns a QvSender and fires events through it; the
// objects that depend on it derive from QvReceiver and link themselves to the
// sender. Neither side stores the links: they live in one process-wide registry,
// so a sender is a single pointer in size and either side may be destroyed at
// any time, the registry forgetting its links.
//
//   class View : public QvReceiver {
//     void ObjectChanged(qvNotifyType::NotifyEnumType what,
//                        qvNotifyType::NotifyHintEnumType hint,
//                        const QvSender* pSender) override { Redraw(); }
//   };
//   View view;
//   view.AddSenderLink(pResult->GetSender());
//   pResult->GetSender()->FireEvent(qvNotifyType::NT_DATA_CHANGED, qvNotifyType::NH_NONE);
//
// A dispatch calls the receivers that were linked when it started, in the order
// they were linked, skipping any whose link was removed (or who was destroyed)
// by an earlier call of the same dispatch. A handler may therefore unlink or
// destroy itself or other receivers, link new ones (not called by this
// dispatch), or fire further events.
//
// Thread-safety: thread-compatible. The registry is shared by every sender and
// receiver of the process and is not locked: linking, unlinking and firing must
// all happen on one thread at a time.
//
// Ownership: links never own. Copying a sender or a receiver copies no links.
#ifndef QVSYSBASE_SENDERRECEIVER_H_
#define QVSYSBASE_SENDERRECEIVER_H_

#include "qvsysbase/Export.h"

namespace qvsysbase {

// The event kinds and hints a sender passes to its receivers. Both enumerations
// have a fixed underlying type, so any int the application chooses is a valid
// value and travels unchanged; the named values are the common ones.
struct qvNotifyType {
  enum NotifyEnumType : int {
    NT_CHANGED = 0,            // something changed; receivers re-read everything
    NT_DATA_CHANGED = 1,       // values changed, the shape did not
    NT_LAYOUT_CHANGED = 2,     // rows, columns or series were added or removed
    NT_SELECTION_CHANGED = 3,  // the selection changed
    NT_DELETED = 4             // the sender's object is about to go away
  };
  enum NotifyHintEnumType : int {
    NH_NONE = 0,  // no refinement
    NH_ALL = 1    // every view of the object is affected
  };
};

class QVSYSBASE_API QvSender {
 public:
  QvSender() = default;
  // A copy starts without receivers; assignment leaves both sides' links alone.
  QvSender(const QvSender&) noexcept {}
  QvSender& operator=(const QvSender&) noexcept { return *this; }
  // Removes every link of this sender.
  virtual ~QvSender();

  // Removes every link whose sender is this one.
  void Withdraw() const;
  // Whether any receiver is linked to this sender.
  bool HasReceiver() const;
  // Calls ObjectChanged(what, hint, this) on every receiver linked to this sender.
  void FireEvent(qvNotifyType::NotifyEnumType what, qvNotifyType::NotifyHintEnumType hint) const;
  // Calls ObjectChangedEx(what, value, this) on every receiver linked to this sender.
  void FireEventEx(qvNotifyType::NotifyEnumType what, unsigned value) const;
};

class QVSYSBASE_API QvReceiver {
 public:
  QvReceiver() = default;
  // A copy starts without links; assignment leaves both sides' links alone.
  QvReceiver(const QvReceiver&) noexcept {}
  QvReceiver& operator=(const QvReceiver&) noexcept { return *this; }
  // Removes every link of this receiver.
  virtual ~QvReceiver();

  // Links this receiver to `pSender`. Linking twice keeps one link; a null
  // sender is ignored. `pSender` is not owned.
  virtual void AddSenderLink(const QvSender* pSender);
  // Removes the link to `pSender`; a missing link or a null sender is ignored.
  virtual void RemoveSenderLink(const QvSender* pSender);
  // Removes every link of this receiver.
  virtual void RemoveAllSendersLinks();
  // Told of every event fired by a linked sender.
  virtual void ObjectChanged(qvNotifyType::NotifyEnumType what,
                             qvNotifyType::NotifyHintEnumType hint, const QvSender* pSender) = 0;
  // Told of every extended event fired by a linked sender; ignored by default.
  virtual void ObjectChangedEx(qvNotifyType::NotifyEnumType what, unsigned value,
                               const QvSender* pSender);
};

// A receiver that is linked to at most one sender at a time.
//
// Invariant: m_pSender is the sender this object linked itself to through its
// own operations, or null. (A sender that withdraws or is destroyed removes the
// link from the registry only; m_pSender keeps its value until this receiver
// removes its links.)
class QVSYSBASE_API QvReceiverWithSingleSender : public QvReceiver {
 public:
  QvReceiverWithSingleSender() = default;
  // A copy starts unlinked; assignment leaves this object's link alone.
  QvReceiverWithSingleSender(const QvReceiverWithSingleSender&) noexcept : QvReceiver() {}
  // cppcheck-suppress operatorEqVarError ; the link is not copied, on purpose
  // NOLINTNEXTLINE(bugprone-unhandled-self-assignment): copies nothing, so self-assignment is moot
  QvReceiverWithSingleSender& operator=(const QvReceiverWithSingleSender&) noexcept {
    return *this;
  }
  // Clears the sender, then the base destructor removes the links.
  ~QvReceiverWithSingleSender() override;

  // Links to `pSender`; linking the current sender again does nothing.
  // REQUIRES: !m_pSender (unless pSender == m_pSender)
  void AddSenderLink(const QvSender* pSender) override;
  // Unlinks from `pSender`; a null sender is ignored.
  // REQUIRES: m_pSender == pSender
  void RemoveSenderLink(const QvSender* pSender) override;
  // Clears the sender and removes every link.
  void RemoveAllSendersLinks() override;
  // The linked sender, or null.
  const QvSender* GetSingleSender() const { return m_pSender; }

  // Every subclass handles events. Its handler may first call this check,
  // qualified (QvReceiverWithSingleSender::ObjectChanged(...)), to accept
  // events only while a sender is linked.
  // REQUIRES: m_pSender
  void ObjectChanged(qvNotifyType::NotifyEnumType what, qvNotifyType::NotifyHintEnumType hint,
                     const QvSender* pSender) override = 0;

 private:
  const QvSender* m_pSender = nullptr;
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_SENDERRECEIVER_H_
