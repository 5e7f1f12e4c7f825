#include "qvsysbase/SenderReceiver.h"

#include <cstddef>
#include <functional>
#include <map>
#include <unordered_map>
#include <utility>
#include <vector>

#include "qvsysbase/qvExcept.h"

QV_UNIT("SenderReceiver", "$Revision: #1 $")

namespace qvsysbase {

// The registry keeps every link, so that both sides stay a bare object.
static_assert(sizeof(QvSender) == sizeof(void*), "a sender is one pointer in size");
static_assert(sizeof(QvReceiver) == sizeof(void*), "a receiver holds no links itself");

namespace {

// One link between a sender and a receiver. A link removed while a dispatch
// runs stays allocated (bLive false) until the outermost dispatch ends, so a
// snapshot may still hold it; it is never revived, so a snapshot never calls a
// link that was made after the snapshot was taken.
struct Link {
  const QvSender* pSender;
  QvReceiver* pReceiver;
  std::size_t nSlot;  // index in its sender's list
  Link* pNextRetired = nullptr;
  bool bLive = true;
};

// An entry of a sender's list. The receiver is kept beside its link so that
// a dispatch reads one contiguous array and touches a link only when links
// were removed since its snapshot was taken.
struct Target {
  Link* pLink;  // null: a hole left by a removed link
  QvReceiver* pReceiver;
};

// The links of one sender, oldest first: the dispatch order. Removal leaves a
// hole instead of shifting the tail; the list is compacted once holes outnumber
// the live links (plus a small slack), so removal is amortised O(1) and the
// list is never more than about twice its live length.
class SenderList {
 public:
  void Append(Link* pLink) {
    pLink->nSlot = m_vecTargets.size();
    m_vecTargets.push_back({pLink, pLink->pReceiver});
    ++m_nLive;
  }
  void Remove(const Link* pLink) {
    m_vecTargets[pLink->nSlot].pLink = nullptr;
    --m_nLive;
    if (m_vecTargets.size() - m_nLive > m_nLive + kHoleSlack) {
      Compact();
    }
  }
  bool IsEmpty() const { return m_nLive == 0; }
  const std::vector<Target>& Targets() const { return m_vecTargets; }

 private:
  // Holes tolerated beyond the live count, so that short lists do not compact
  // on every removal.
  static constexpr std::size_t kHoleSlack = 8;

  void Compact() {
    std::size_t nKept = 0;
    for (const Target& target : m_vecTargets) {
      if (target.pLink == nullptr) {
        continue;
      }
      target.pLink->nSlot = nKept;
      m_vecTargets[nKept++] = target;
    }
    m_vecTargets.resize(nKept);
  }

  std::vector<Target> m_vecTargets;
  std::size_t m_nLive = 0;
};

// Links are keyed receiver first, so that the links of one receiver are one
// contiguous range of the map, found by the receiver alone. Pointers compare
// through std::less, the only comparison that orders unrelated objects.
using LinkKey = std::pair<const QvReceiver*, const QvSender*>;
struct LinkKeyLess {
  using is_transparent = void;
  static bool Less(const QvReceiver* a, const QvReceiver* b) {
    return std::less<const QvReceiver*>()(a, b);
  }
  bool operator()(const LinkKey& a, const LinkKey& b) const {
    if (a.first != b.first) {
      return Less(a.first, b.first);
    }
    return std::less<const QvSender*>()(a.second, b.second);
  }
  bool operator()(const LinkKey& a, const QvReceiver* b) const { return Less(a.first, b); }
  bool operator()(const QvReceiver* a, const LinkKey& b) const { return Less(a, b.first); }
};

// The process-wide registry of links.
//
// Invariants:
// - m_mapLinks holds exactly the live links; each is also in the list of its
//   sender in m_mapSenders, and a sender has an entry only while it has a live
//   link. The registered receivers are the first halves of the keys.
// - Links removed while m_nDispatchDepth > 0 wait in m_pRetired and are freed
//   when the outermost dispatch ends; otherwise they are freed at once.
// - m_nRemovals counts removed links; a dispatch whose snapshot was taken at
//   the same count knows that every link of its snapshot is still live.
// Linking and unlinking one link costs O(log n) in the number of links
// (amortised: a sender's list grows and compacts now and then, and the sender
// index is hashed). Hashing the senders lets a dispatch find its list in
// constant expected time however many senders the process has; the links stay
// ordered because a receiver's links must be found as one range.
class SendRecContainer {
 public:
  SendRecContainer() = default;
  SendRecContainer(const SendRecContainer&) = delete;
  SendRecContainer& operator=(const SendRecContainer&) = delete;
  ~SendRecContainer() {
    for (const auto& entry : m_mapLinks) {
      delete entry.second;
    }
    FreeRetired();
  }

  void AddLink(const QvSender* pSender, QvReceiver* pReceiver) {
    const auto [it, bInserted] = m_mapLinks.try_emplace(LinkKey(pReceiver, pSender), nullptr);
    if (!bInserted) {
      return;
    }
    try {
      it->second = new Link{pSender, pReceiver, 0};
      m_mapSenders[pSender].Append(it->second);
    } catch (...) {
      // The link never entered its sender's list; drop a list made for it.
      const auto itSender = m_mapSenders.find(pSender);
      if (itSender != m_mapSenders.end() && itSender->second.IsEmpty()) {
        m_mapSenders.erase(itSender);
      }
      delete it->second;
      m_mapLinks.erase(it);
      throw;
    }
  }

  void RemoveLink(const QvSender* pSender, const QvReceiver* pReceiver) {
    const auto it = m_mapLinks.find(LinkKey(pReceiver, pSender));
    if (it == m_mapLinks.end()) {
      return;
    }
    Detach(it->second);
    m_mapLinks.erase(it);
  }

  void RemoveReceiver(const QvReceiver* pReceiver) {
    const auto [first, last] = m_mapLinks.equal_range(pReceiver);
    for (auto it = first; it != last; ++it) {
      Detach(it->second);
    }
    m_mapLinks.erase(first, last);
  }

  void RemoveSender(const QvSender* pSender) {
    const auto itSender = m_mapSenders.find(pSender);
    if (itSender == m_mapSenders.end()) {
      return;
    }
    for (const Target& target : itSender->second.Targets()) {
      if (target.pLink == nullptr) {
        continue;
      }
      m_mapLinks.erase(LinkKey(target.pReceiver, pSender));
      Retire(target.pLink);
    }
    m_mapSenders.erase(itSender);
  }

  bool HasReceiver(const QvSender* pSender) const {
    const auto itSender = m_mapSenders.find(pSender);
    return itSender != m_mapSenders.end() && !itSender->second.IsEmpty();
  }

  bool IsEmpty() const { return m_mapLinks.empty() && m_nDispatchDepth == 0; }

  // Calls `notify(pReceiver)` for every receiver of the snapshot whose link is
  // still live when its turn comes.
  template <typename Notify>
  void Dispatch(const QvSender* pSender, const Notify& notify) {
    const auto itSender = m_mapSenders.find(pSender);
    if (itSender == m_mapSenders.end()) {
      return;
    }
    DispatchScope scope(*this);
    std::vector<Target>& snapshot = scope.Snapshot();
    snapshot.assign(itSender->second.Targets().begin(), itSender->second.Targets().end());
    const std::size_t nRemovalsAtSnapshot = m_nRemovals;
    // Handlers may re-enter the registry, which can reallocate m_vecSnapshots
    // but never this snapshot's own buffer: read through a stable pointer.
    const Target* const pTargets = snapshot.data();
    const std::size_t nTargets = snapshot.size();
    for (std::size_t i = 0; i < nTargets; ++i) {
      const Target& target = pTargets[i];
      if (target.pLink == nullptr) {
        continue;
      }
      // The handlers called so far may have removed links.
      // cppcheck-suppress knownConditionTrueFalse
      if (m_nRemovals != nRemovalsAtSnapshot && !target.pLink->bLive) {
        continue;
      }
      notify(target.pReceiver);
    }
  }

 private:
  // Marks one dispatch level: lends it an empty snapshot buffer of its depth,
  // and frees the retired links when the outermost level ends, also when a
  // handler throws.
  class DispatchScope {
   public:
    explicit DispatchScope(SendRecContainer& container) : m_Container(container) {
      if (m_Container.m_vecSnapshots.size() <= m_Container.m_nDispatchDepth) {
        m_Container.m_vecSnapshots.emplace_back();
      }
      m_nDepth = m_Container.m_nDispatchDepth++;
    }
    ~DispatchScope() {
      m_Container.m_vecSnapshots[m_nDepth].clear();
      if (--m_Container.m_nDispatchDepth == 0) {
        m_Container.FreeRetired();
      }
    }
    DispatchScope(const DispatchScope&) = delete;
    DispatchScope& operator=(const DispatchScope&) = delete;

    std::vector<Target>& Snapshot() { return m_Container.m_vecSnapshots[m_nDepth]; }

   private:
    SendRecContainer& m_Container;
    std::size_t m_nDepth;
  };

  // Takes a live link out of its sender's list; the caller erases its key.
  void Detach(Link* pLink) {
    const auto itSender = m_mapSenders.find(pLink->pSender);
    itSender->second.Remove(pLink);
    if (itSender->second.IsEmpty()) {
      m_mapSenders.erase(itSender);
    }
    Retire(pLink);
  }

  void Retire(Link* pLink) {
    pLink->bLive = false;
    ++m_nRemovals;
    if (m_nDispatchDepth == 0) {
      delete pLink;
      return;
    }
    pLink->pNextRetired = m_pRetired;
    m_pRetired = pLink;
  }

  void FreeRetired() {
    while (m_pRetired != nullptr) {
      Link* const pNext = m_pRetired->pNextRetired;
      delete m_pRetired;
      m_pRetired = pNext;
    }
  }

  std::map<LinkKey, Link*, LinkKeyLess> m_mapLinks;
  std::unordered_map<const QvSender*, SenderList> m_mapSenders;
  std::size_t m_nDispatchDepth = 0;
  std::size_t m_nRemovals = 0;
  Link* m_pRetired = nullptr;
  // One reusable snapshot buffer per nesting depth, so that a steady stream of
  // events allocates nothing.
  std::vector<std::vector<Target>> m_vecSnapshots;
};

// The registry exists while any link does: it is built by the first link and
// released when the last link is gone and no dispatch runs. So it needs no
// dynamic initialisation at load, and senders and receivers that are statics
// themselves may be destroyed in any order at exit.
constinit SendRecContainer* g_pContainer = nullptr;

SendRecContainer& Container() {
  if (g_pContainer == nullptr) {
    g_pContainer = new SendRecContainer;
  }
  return *g_pContainer;
}

void ReleaseContainerIfEmpty() {
  if (g_pContainer != nullptr && g_pContainer->IsEmpty()) {
    delete g_pContainer;
    g_pContainer = nullptr;
  }
}

template <typename Notify>
void DispatchFrom(const QvSender* pSender, const Notify& notify) {
  if (g_pContainer == nullptr) {
    return;
  }
  // A handler may remove the last link; the registry is released once the
  // dispatch has let go of it, also when a handler throws.
  struct ReleaseAfterwards {
    ~ReleaseAfterwards() { ReleaseContainerIfEmpty(); }
  } release;
  g_pContainer->Dispatch(pSender, notify);
}

}  // namespace

// ---------------------------------------------------------------------------
// QvSender

QvSender::~QvSender() { Withdraw(); }

void QvSender::Withdraw() const {
  if (g_pContainer == nullptr) {
    return;
  }
  g_pContainer->RemoveSender(this);
  ReleaseContainerIfEmpty();
}

bool QvSender::HasReceiver() const {
  return g_pContainer != nullptr && g_pContainer->HasReceiver(this);
}

void QvSender::FireEvent(qvNotifyType::NotifyEnumType what,
                         qvNotifyType::NotifyHintEnumType hint) const {
  DispatchFrom(this, [&](QvReceiver* pReceiver) { pReceiver->ObjectChanged(what, hint, this); });
}

void QvSender::FireEventEx(qvNotifyType::NotifyEnumType what, unsigned value) const {
  DispatchFrom(this, [&](QvReceiver* pReceiver) { pReceiver->ObjectChangedEx(what, value, this); });
}

// ---------------------------------------------------------------------------
// QvReceiver

QvReceiver::~QvReceiver() { QvReceiver::RemoveAllSendersLinks(); }

void QvReceiver::AddSenderLink(const QvSender* pSender) {
  if (pSender == nullptr) {
    return;
  }
  Container().AddLink(pSender, this);
}

void QvReceiver::RemoveSenderLink(const QvSender* pSender) {
  if (pSender == nullptr || g_pContainer == nullptr) {
    return;
  }
  g_pContainer->RemoveLink(pSender, this);
  ReleaseContainerIfEmpty();
}

void QvReceiver::RemoveAllSendersLinks() {
  if (g_pContainer == nullptr) {
    return;
  }
  g_pContainer->RemoveReceiver(this);
  ReleaseContainerIfEmpty();
}

void QvReceiver::ObjectChangedEx(qvNotifyType::NotifyEnumType, unsigned, const QvSender*) {}

// ---------------------------------------------------------------------------
// QvReceiverWithSingleSender

QvReceiverWithSingleSender::~QvReceiverWithSingleSender() { m_pSender = nullptr; }

void QvReceiverWithSingleSender::AddSenderLink(const QvSender* pSender) {
  if (pSender == m_pSender) {
    return;
  }
  QV_ASSERT(!m_pSender);
  QvReceiver::AddSenderLink(pSender);
  m_pSender = pSender;
}

void QvReceiverWithSingleSender::RemoveSenderLink(const QvSender* pSender) {
  if (pSender == nullptr) {
    return;
  }
  QV_ASSERT(m_pSender == pSender);
  m_pSender = nullptr;
  QvReceiver::RemoveSenderLink(pSender);
}

void QvReceiverWithSingleSender::RemoveAllSendersLinks() {
  m_pSender = nullptr;
  QvReceiver::RemoveAllSendersLinks();
}

void QvReceiverWithSingleSender::ObjectChanged(qvNotifyType::NotifyEnumType,
                                               qvNotifyType::NotifyHintEnumType, const QvSender*) {
  QV_ASSERT(m_pSender);
}

}  // namespace qvsysbase
