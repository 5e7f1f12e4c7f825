#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "qvsysbase/SenderReceiver.h"
#include "qvsysbase/qvExcept.h"

namespace qvsysbase {
namespace {

using NT = qvNotifyType;

// What one receiver was told.
struct Call {
  int nId;
  int nWhat;
  int nHintOrValue;
  const QvSender* pSender;
  bool bEx;
  bool operator==(const Call&) const = default;
};

// Records every call in a shared log and then runs an optional action, through
// which tests unlink, link, destroy or fire from inside a handler.
class Recorder : public QvReceiver {
 public:
  Recorder(int nId, std::vector<Call>* pLog) : m_nId(nId), m_pLog(pLog) {}
  void ObjectChanged(NT::NotifyEnumType what, NT::NotifyHintEnumType hint,
                     const QvSender* pSender) override {
    m_pLog->push_back({m_nId, what, hint, pSender, false});
    if (m_Action) m_Action();
  }
  void ObjectChangedEx(NT::NotifyEnumType what, unsigned value, const QvSender* pSender) override {
    m_pLog->push_back({m_nId, what, static_cast<int>(value), pSender, true});
  }
  std::function<void()> m_Action;

 private:
  int m_nId;
  std::vector<Call>* m_pLog;
};

// A receiver that does not override ObjectChangedEx.
class Silent : public QvReceiver {
 public:
  void ObjectChanged(NT::NotifyEnumType, NT::NotifyHintEnumType, const QvSender*) override {
    ++m_nCalls;
  }
  int m_nCalls = 0;
};

class Single : public QvReceiverWithSingleSender {
 public:
  void ObjectChanged(NT::NotifyEnumType what, NT::NotifyHintEnumType hint,
                     const QvSender* pSender) override {
    QvReceiverWithSingleSender::ObjectChanged(what, hint, pSender);
    ++m_nCalls;
  }
  int m_nCalls = 0;
};

std::vector<int> Ids(const std::vector<Call>& log) {
  std::vector<int> ids;
  for (const Call& call : log) ids.push_back(call.nId);
  return ids;
}

// Fires once and returns the ids of the receivers called, in order.
std::vector<int> FireIds(const QvSender& sender, std::vector<Call>& log) {
  log.clear();
  sender.FireEvent(NT::NT_CHANGED, NT::NH_NONE);
  return Ids(log);
}

TEST(SenderReceiverTest, SenderWithoutReceiversFiresNothing) {
  QvSender sender;
  EXPECT_FALSE(sender.HasReceiver());
  sender.FireEvent(NT::NT_CHANGED, NT::NH_NONE);
  sender.FireEventEx(NT::NT_CHANGED, 7);
  sender.Withdraw();
  EXPECT_FALSE(sender.HasReceiver());
}

TEST(SenderReceiverTest, EventsReachLinkedReceiversInLinkOrderWithTheirArguments) {
  std::vector<Call> log;
  QvSender sender, other;
  Recorder r1(1, &log), r2(2, &log), r3(3, &log);
  // Linked in an order that differs from both construction and address order.
  r2.AddSenderLink(&sender);
  r3.AddSenderLink(&sender);
  r1.AddSenderLink(&sender);
  r1.AddSenderLink(&other);
  EXPECT_TRUE(sender.HasReceiver());

  sender.FireEvent(NT::NT_LAYOUT_CHANGED, NT::NH_ALL);
  sender.FireEventEx(NT::NT_DATA_CHANGED, 4000000000u);
  // Values outside the named ones travel unchanged.
  other.FireEvent(static_cast<NT::NotifyEnumType>(-5), static_cast<NT::NotifyHintEnumType>(99));

  const std::vector<Call> expected = {
      {2, 2, 1, &sender, false},
      {3, 2, 1, &sender, false},
      {1, 2, 1, &sender, false},
      {2, 1, static_cast<int>(4000000000u), &sender, true},
      {3, 1, static_cast<int>(4000000000u), &sender, true},
      {1, 1, static_cast<int>(4000000000u), &sender, true},
      {1, -5, 99, &other, false},
  };
  EXPECT_EQ(log, expected);

  // The default extended handler ignores the event.
  Silent silent;
  silent.AddSenderLink(&sender);
  sender.FireEventEx(NT::NT_CHANGED, 1);
  EXPECT_EQ(silent.m_nCalls, 0);
}

TEST(SenderReceiverTest, LinkingIsIdempotentAndUnlinkingTheUnknownIsHarmless) {
  std::vector<Call> log;
  QvSender sender, other;
  Recorder r1(1, &log), r2(2, &log);
  r1.AddSenderLink(&sender);
  r1.AddSenderLink(&sender);  // stored once
  r2.AddSenderLink(&sender);
  r1.AddSenderLink(nullptr);
  r1.RemoveSenderLink(nullptr);
  r1.RemoveSenderLink(&other);
  r2.RemoveAllSendersLinks();
  r2.RemoveAllSendersLinks();
  EXPECT_EQ(FireIds(sender, log), std::vector<int>{1});
  // Relinking moves the receiver to the end of the dispatch order.
  r2.AddSenderLink(&sender);
  r1.RemoveSenderLink(&sender);
  r1.AddSenderLink(&sender);
  EXPECT_EQ(FireIds(sender, log), (std::vector<int>{2, 1}));
}

TEST(SenderReceiverTest, DestroyingEitherSideForgetsItsLinks) {
  std::vector<Call> log;
  QvSender sender;
  Recorder keep(1, &log);
  keep.AddSenderLink(&sender);
  {
    Recorder gone(2, &log);
    gone.AddSenderLink(&sender);
    EXPECT_EQ(FireIds(sender, log), (std::vector<int>{1, 2}));
  }
  EXPECT_EQ(FireIds(sender, log), std::vector<int>{1});

  auto pSender = std::make_unique<QvSender>();
  keep.AddSenderLink(pSender.get());
  pSender.reset();  // the receiver outlives the sender; nothing dangles
  keep.RemoveAllSendersLinks();
  EXPECT_FALSE(sender.HasReceiver());

  // Copies carry no links.
  keep.AddSenderLink(&sender);
  const QvSender copy(sender);
  EXPECT_FALSE(copy.HasReceiver());
  const Recorder copied(keep);
  EXPECT_EQ(FireIds(sender, log), std::vector<int>{1});
}

// Random link, unlink, withdraw and fire operations against a plain model: the
// list of live links in the order they were made.
TEST(SenderReceiverTest, MatchesAModelUnderRandomOperations) {
  constexpr unsigned kSeed = 20240611;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937 rng(kSeed);
  std::vector<Call> log;
  std::vector<QvSender> senders(5);
  std::vector<std::unique_ptr<Recorder>> receivers;
  for (int i = 0; i < 6; ++i) receivers.push_back(std::make_unique<Recorder>(i, &log));
  std::vector<std::pair<int, int>> model;  // (sender, receiver), oldest first

  auto erase_if = [&](auto pred) { std::erase_if(model, pred); };
  for (int step = 0; step < 3000; ++step) {
    const int s = static_cast<int>(rng() % 5), r = static_cast<int>(rng() % 6);
    switch (rng() % 5) {
      case 0:
      case 1:
        receivers[r]->AddSenderLink(&senders[s]);
        if (std::find(model.begin(), model.end(), std::pair(s, r)) == model.end()) {
          model.emplace_back(s, r);
        }
        break;
      case 2:
        receivers[r]->RemoveSenderLink(&senders[s]);
        erase_if([&](auto l) { return l == std::pair(s, r); });
        break;
      case 3:
        if (rng() % 2) {
          receivers[r]->RemoveAllSendersLinks();
          erase_if([&](auto l) { return l.second == r; });
        } else {
          senders[s].Withdraw();
          erase_if([&](auto l) { return l.first == s; });
        }
        break;
      default: {
        std::vector<int> expected;
        for (auto [ls, lr] : model) {
          if (ls == s) expected.push_back(lr);
        }
        ASSERT_EQ(FireIds(senders[s], log), expected) << "step " << step;
        ASSERT_EQ(senders[s].HasReceiver(), !expected.empty()) << "step " << step;
      }
    }
  }
}

// What a handler does to the registry in the middle of a dispatch, and whom the
// rest of that dispatch and the next one call. Receivers 1 to 4 are linked in
// that order; receiver 2 acts.
TEST(SenderReceiverTest, HandlersMayChangeTheLinksDuringADispatch) {
  struct Row {
    const char* name;
    std::function<void(QvSender&, std::vector<std::unique_ptr<Recorder>>&)> action;
    std::vector<int> during;
    std::vector<int> next;
  };
  const std::vector<Row> rows = {
      {"destroys itself", [](auto&, auto& r) { r[2].reset(); }, {1, 2, 3, 4}, {1, 3, 4}},
      {"destroys a later receiver", [](auto&, auto& r) { r[3].reset(); }, {1, 2, 4}, {1, 2, 4}},
      {"destroys an earlier receiver",
       [](auto&, auto& r) { r[1].reset(); },
       {1, 2, 3, 4},
       {2, 3, 4}},
      {"unlinks itself",
       [](auto& s, auto& r) { r[2]->RemoveSenderLink(&s); },
       {1, 2, 3, 4},
       {1, 3, 4}},
      {"unlinks a later receiver",
       [](auto&, auto& r) { r[4]->RemoveAllSendersLinks(); },
       {1, 2, 3},
       {1, 2, 3}},
      {"links a new receiver",
       [](auto& s, auto& r) { r[5]->AddSenderLink(&s); },
       {1, 2, 3, 4},
       {1, 2, 3, 4, 5}},
      {"relinks a later receiver",
       [](auto& s, auto& r) {
         r[3]->RemoveSenderLink(&s);
         r[3]->AddSenderLink(&s);
       },
       {1, 2, 4},
       {1, 2, 4, 3}},
      {"withdraws the sender", [](auto& s, auto&) { s.Withdraw(); }, {1, 2}, {}},
      {"unlinks everyone then relinks itself",
       [](auto& s, auto& r) {
         s.Withdraw();
         r[2]->AddSenderLink(&s);
       },
       {1, 2},
       {2}},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    std::vector<Call> log;
    QvSender sender;
    std::vector<std::unique_ptr<Recorder>> r(6);
    for (int i = 1; i <= 5; ++i) r[i] = std::make_unique<Recorder>(i, &log);
    for (int i = 1; i <= 4; ++i) r[i]->AddSenderLink(&sender);
    bool bActed = false;
    r[2]->m_Action = [&] {
      if (std::exchange(bActed, true)) return;
      row.action(sender, r);
    };
    EXPECT_EQ(FireIds(sender, log), row.during);
    EXPECT_EQ(FireIds(sender, log), row.next);
  }
}

TEST(SenderReceiverTest, NestedDispatchesSeeTheLinksOfTheirOwnStart) {
  std::vector<Call> log;
  QvSender sender, inner;
  Recorder r1(1, &log), r2(2, &log), r3(3, &log), r4(4, &log);
  r1.AddSenderLink(&sender);
  r2.AddSenderLink(&sender);
  r3.AddSenderLink(&sender);
  r4.AddSenderLink(&inner);
  int nDepth = 0;
  r1.m_Action = [&] {
    if (nDepth++ > 0) return;
    r2.RemoveSenderLink(&sender);  // gone for both dispatches
    sender.FireEventEx(NT::NT_CHANGED, 0);
    inner.FireEvent(NT::NT_DELETED, NT::NH_NONE);
    r1.RemoveSenderLink(&sender);
  };
  sender.FireEvent(NT::NT_CHANGED, NT::NH_NONE);
  EXPECT_EQ(Ids(log), (std::vector<int>{1, 1, 3, 4, 3}));
  EXPECT_TRUE(log[1].bEx);
  EXPECT_EQ(log[3].pSender, &inner);
}

TEST(SenderReceiverTest, AHandlerThatThrowsEndsTheDispatchCleanly) {
  std::vector<Call> log;
  QvSender sender;
  auto pFirst = std::make_unique<Recorder>(1, &log);
  Recorder r2(2, &log), r3(3, &log);
  pFirst->AddSenderLink(&sender);
  r2.AddSenderLink(&sender);
  r3.AddSenderLink(&sender);
  r2.m_Action = [&] {
    pFirst.reset();  // retired during the dispatch, freed as it unwinds
    throw std::runtime_error("handler");
  };
  EXPECT_THROW(sender.FireEvent(NT::NT_CHANGED, NT::NH_NONE), std::runtime_error);
  EXPECT_EQ(Ids(log), (std::vector<int>{1, 2}));
  r2.m_Action = nullptr;
  EXPECT_EQ(FireIds(sender, log), (std::vector<int>{2, 3}));
}

// Checks that `action` fails the pre-condition `condition` of this unit.
void ExpectPrecondition(const std::function<void()>& action, const std::string& condition) {
  try {
    action();
    ADD_FAILURE() << "no assertion for " << condition;
  } catch (const AssertionException& e) {
    EXPECT_EQ(e.getMessage(), condition);
    EXPECT_EQ(e.getFile(), "SenderReceiver");
    EXPECT_EQ(e.getAssertionType(), "Pre-condition");
  }
}

TEST(ReceiverWithSingleSenderTest, LinksToOneSenderAtATime) {
  QvSender first, second;
  Single receiver;
  EXPECT_EQ(receiver.GetSingleSender(), nullptr);
  receiver.AddSenderLink(nullptr);  // already "linked" to nothing
  receiver.AddSenderLink(&first);
  receiver.AddSenderLink(&first);  // harmless
  EXPECT_EQ(receiver.GetSingleSender(), &first);

  ExpectPrecondition([&] { receiver.AddSenderLink(&second); }, "!m_pSender");
  ExpectPrecondition([&] { receiver.RemoveSenderLink(&second); }, "m_pSender == pSender");
  // A failed call changes nothing.
  EXPECT_EQ(receiver.GetSingleSender(), &first);
  EXPECT_FALSE(second.HasReceiver());
  first.FireEvent(NT::NT_CHANGED, NT::NH_NONE);
  EXPECT_EQ(receiver.m_nCalls, 1);

  receiver.RemoveSenderLink(nullptr);
  EXPECT_EQ(receiver.GetSingleSender(), &first);
  receiver.RemoveSenderLink(&first);
  EXPECT_EQ(receiver.GetSingleSender(), nullptr);
  EXPECT_FALSE(first.HasReceiver());

  receiver.AddSenderLink(&second);
  receiver.RemoveAllSendersLinks();
  EXPECT_EQ(receiver.GetSingleSender(), nullptr);
  EXPECT_FALSE(second.HasReceiver());
  ExpectPrecondition([&] { receiver.RemoveSenderLink(&second); }, "m_pSender == pSender");
}

TEST(ReceiverWithSingleSenderTest, AcceptsEventsOnlyWhileLinked) {
  QvSender sender;
  auto pReceiver = std::make_unique<Single>();
  ExpectPrecondition([&] { pReceiver->ObjectChanged(NT::NT_CHANGED, NT::NH_NONE, &sender); },
                     "m_pSender");
  pReceiver->AddSenderLink(&sender);
  sender.FireEvent(NT::NT_CHANGED, NT::NH_NONE);
  EXPECT_EQ(pReceiver->m_nCalls, 1);

  const Single copy(*pReceiver);  // a copy starts unlinked
  EXPECT_EQ(copy.GetSingleSender(), nullptr);
  pReceiver.reset();
  EXPECT_FALSE(sender.HasReceiver());
}

}  // namespace
}  // namespace qvsysbase
