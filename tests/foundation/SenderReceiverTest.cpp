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
  int nId, nWhat, nHintOrValue;
  const QvSender* pSender;
  bool bEx;
  bool operator==(const Call&) const = default;
};

// Logs every call and then runs an optional action, through which tests link,
// unlink, destroy or fire from inside a handler.
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

// Checks the sender on every event; keeps the default ObjectChangedEx.
class Single : public QvReceiverWithSingleSender {
 public:
  void ObjectChanged(NT::NotifyEnumType what, NT::NotifyHintEnumType hint,
                     const QvSender* pSender) override {
    QvReceiverWithSingleSender::ObjectChanged(what, hint, pSender);
    ++m_nCalls;
  }
  int m_nCalls = 0;
};

// Fires once and returns the ids of the receivers called, in order.
std::vector<int> FireIds(const QvSender& sender, std::vector<Call>& log) {
  log.clear();
  sender.FireEvent(NT::NT_CHANGED, NT::NH_NONE);
  std::vector<int> ids;
  for (const Call& call : log) ids.push_back(call.nId);
  return ids;
}

TEST(SenderReceiverTest, EventsReachLinkedReceiversWithTheirArgumentsUnchanged) {
  std::vector<Call> log;
  QvSender sender;
  Recorder r1(1, &log), r2(2, &log);
  r1.AddSenderLink(nullptr);  // ignored, as is its removal
  r1.RemoveSenderLink(nullptr);
  sender.FireEvent(NT::NT_CHANGED, NT::NH_NONE);
  EXPECT_TRUE(log.empty());
  r2.AddSenderLink(&sender);
  r1.AddSenderLink(&sender);
  Single single;  // keeps the default extended handler, which ignores the event
  single.AddSenderLink(&sender);
  sender.FireEventEx(NT::NT_DATA_CHANGED, 4000000000u);
  EXPECT_EQ(single.m_nCalls, 0);
  single.RemoveAllSendersLinks();
  // Values outside the named ones travel as they are.
  sender.FireEvent(static_cast<NT::NotifyEnumType>(-5), static_cast<NT::NotifyHintEnumType>(99));
  const int nBig = static_cast<int>(4000000000u);
  EXPECT_EQ(log,
            (std::vector<Call>{{2, 1, nBig, &sender, true},
                               {1, 1, nBig, &sender, true},
                               {2, -5, 99, &sender, false},
                               {1, -5, 99, &sender, false}}));
  // Copies carry no links.
  EXPECT_FALSE(QvSender(sender).HasReceiver());
  const Recorder copy(r1);
  EXPECT_EQ(FireIds(sender, log), (std::vector<int>{2, 1}));
}

// Random links, unlinks, withdrawals, destructions and events against a plain
// model: the live links in the order they were made, each made at most once.
TEST(SenderReceiverTest, MatchesAModelUnderRandomOperations) {
  constexpr unsigned kSeed = 20240611;
  SCOPED_TRACE("seed " + std::to_string(kSeed));
  std::mt19937 rng(kSeed);
  std::vector<Call> log;
  // Few senders and many receivers, so that a sender's list grows long and
  // gathers holes enough to be compacted.
  constexpr int kSenders = 3, kReceivers = 40;
  std::vector<std::unique_ptr<QvSender>> senders(kSenders);
  std::vector<std::unique_ptr<Recorder>> receivers(kReceivers);
  for (auto& s : senders) s = std::make_unique<QvSender>();
  for (int r = 0; r < kReceivers; ++r) receivers[r] = std::make_unique<Recorder>(r, &log);
  std::vector<std::pair<int, int>> model;  // (sender, receiver)
  const auto drop = [&](auto pred) { std::erase_if(model, pred); };

  for (int step = 0; step < 20000; ++step) {
    const int s = static_cast<int>(rng() % kSenders), r = static_cast<int>(rng() % kReceivers);
    QvSender* const pSender = senders[s].get();
    const bool bCoin = rng() % 2 == 0;
    switch (rng() % 10) {
      case 0:
      case 1:
      case 2:
        receivers[r]->AddSenderLink(pSender);
        if (std::find(model.begin(), model.end(), std::pair(s, r)) == model.end()) {
          model.emplace_back(s, r);
        }
        break;
      case 3:
      case 4:
        receivers[r]->RemoveSenderLink(pSender);
        drop([&](auto l) { return l == std::pair(s, r); });
        break;
      case 5:  // all links of a receiver go, by request or with the receiver
        bCoin ? receivers[r]->RemoveAllSendersLinks()
              : void(receivers[r] = std::make_unique<Recorder>(r, &log));
        drop([&](auto l) { return l.second == r; });
        break;
      case 6:  // rarely: all links of a sender go, by request or with the sender
        if (rng() % 8 != 0) break;
        bCoin ? pSender->Withdraw() : void(senders[s] = std::make_unique<QvSender>());
        drop([&](auto l) { return l.first == s; });
        break;
      default: {
        std::vector<int> expected;
        for (auto [ls, lr] : model) {
          if (ls == s) expected.push_back(lr);
        }
        ASSERT_EQ(FireIds(*pSender, log), expected) << "step " << step;
        ASSERT_EQ(pSender->HasReceiver(), !expected.empty()) << "step " << step;
      }
    }
  }
}

// What a handler does to the links in the middle of a dispatch, and whom the
// rest of that dispatch and the next one call. Receivers 1 to 4 are linked in
// that order, 5 is not; receiver 2 acts once.
TEST(SenderReceiverTest, HandlersMayChangeTheLinksDuringADispatch) {
  using Receivers = std::vector<std::unique_ptr<Recorder>>;
  const struct {
    const char* name;
    std::function<void(QvSender&, Receivers&)> action;
    std::vector<int> during, next;
  } rows[] = {
      // clang-format off
      {"destroys itself",         [](auto&, auto& r) { r[2].reset(); }, {1, 2, 3, 4}, {1, 3, 4}},
      {"destroys a later one",    [](auto&, auto& r) { r[3].reset(); }, {1, 2, 4}, {1, 2, 4}},
      {"destroys an earlier one", [](auto&, auto& r) { r[1].reset(); }, {1, 2, 3, 4}, {2, 3, 4}},
      {"unlinks itself",      [](auto& s, auto& r) { r[2]->RemoveSenderLink(&s); }, {1, 2, 3, 4}, {1, 3, 4}},
      {"unlinks a later one", [](auto&, auto& r) { r[4]->RemoveAllSendersLinks(); }, {1, 2, 3}, {1, 2, 3}},
      {"links a new one",     [](auto& s, auto& r) { r[5]->AddSenderLink(&s); }, {1, 2, 3, 4}, {1, 2, 3, 4, 5}},
      {"relinks a later one",
       [](auto& s, auto& r) { r[3]->RemoveSenderLink(&s), r[3]->AddSenderLink(&s); }, {1, 2, 4}, {1, 2, 4, 3}},
      {"withdraws the sender", [](auto& s, auto&) { s.Withdraw(); }, {1, 2}, {}},
      {"withdraws the sender and relinks itself",
       [](auto& s, auto& r) { s.Withdraw(), r[2]->AddSenderLink(&s); }, {1, 2}, {2}},
      // clang-format on
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    std::vector<Call> log;
    QvSender sender;
    Receivers r(6);
    for (int i = 1; i <= 5; ++i) r[i] = std::make_unique<Recorder>(i, &log);
    for (int i = 1; i <= 4; ++i) r[i]->AddSenderLink(&sender);
    bool bActed = false;
    r[2]->m_Action = [&] {
      if (!std::exchange(bActed, true)) row.action(sender, r);
    };
    EXPECT_EQ(FireIds(sender, log), row.during);
    EXPECT_EQ(FireIds(sender, log), row.next);
  }
}

TEST(SenderReceiverTest, NestedAndFailingDispatches) {
  std::vector<Call> log;
  QvSender sender, inner;
  auto pFirst = std::make_unique<Recorder>(1, &log);
  Recorder r2(2, &log), r3(3, &log), r4(4, &log);
  pFirst->AddSenderLink(&sender);
  r2.AddSenderLink(&sender);
  r3.AddSenderLink(&sender);
  r4.AddSenderLink(&inner);
  // A nested dispatch takes its own snapshot; the outer one goes on with its own.
  bool bActed = false;
  pFirst->m_Action = [&] {
    if (std::exchange(bActed, true)) return;
    r2.RemoveSenderLink(&sender);
    sender.FireEventEx(NT::NT_CHANGED, 0);
    inner.FireEvent(NT::NT_DELETED, NT::NH_NONE);
  };
  EXPECT_EQ(FireIds(sender, log), (std::vector<int>{1, 1, 3, 4, 3}));
  EXPECT_TRUE(log[1].bEx && log[2].bEx);
  EXPECT_EQ(log[3].pSender, &inner);

  // A throwing handler ends the dispatch; links retired during it are freed.
  r2.AddSenderLink(&sender);
  r3.m_Action = [&] {
    pFirst.reset();
    throw std::runtime_error("handler");
  };
  EXPECT_THROW(sender.FireEvent(NT::NT_CHANGED, NT::NH_NONE), std::runtime_error);
  r3.m_Action = nullptr;
  EXPECT_EQ(FireIds(sender, log), (std::vector<int>{3, 2}));
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
  auto pReceiver = std::make_unique<Single>();
  Single& receiver = *pReceiver;
  receiver.AddSenderLink(nullptr);  // already "linked" to nothing
  ExpectPrecondition([&] { receiver.ObjectChanged(NT::NT_CHANGED, NT::NH_NONE, &first); },
                     "m_pSender");
  receiver.AddSenderLink(&first);
  receiver.AddSenderLink(&first);                          // harmless
  EXPECT_EQ(Single(receiver).GetSingleSender(), nullptr);  // a copy starts unlinked
  ExpectPrecondition([&] { receiver.AddSenderLink(&second); }, "!m_pSender");
  ExpectPrecondition([&] { receiver.RemoveSenderLink(&second); }, "m_pSender == pSender");
  receiver.RemoveSenderLink(nullptr);
  // Neither the failures nor the null changed anything.
  EXPECT_EQ(receiver.GetSingleSender(), &first);
  EXPECT_FALSE(second.HasReceiver());
  first.FireEvent(NT::NT_CHANGED, NT::NH_NONE);
  EXPECT_EQ(receiver.m_nCalls, 1);

  // Each way of unlinking clears the sender and the link.
  const std::function<void()> unlinks[] = {[&] { receiver.RemoveSenderLink(&first); },
                                           [&] { receiver.RemoveAllSendersLinks(); },
                                           [&] { pReceiver.reset(); }};
  for (const auto& unlink : unlinks) {
    receiver.AddSenderLink(&first);
    unlink();
    EXPECT_FALSE(first.HasReceiver());
    if (pReceiver) {
      EXPECT_EQ(receiver.GetSingleSender(), nullptr);
    }
  }
}

}  // namespace
}  // namespace qvsysbase
