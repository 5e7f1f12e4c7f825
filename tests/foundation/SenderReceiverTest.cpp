#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <stdexcept>
#include <utility>
#include <vector>

#include "qvsysbase/SenderReceiver.h"

namespace qvsysbase {
namespace {

using NT = qvNotifyType;

// Logs its id on every event, then runs an optional action, through which tests
// link, unlink, destroy, fire or throw from inside a handler.
struct Recorder : QvReceiver {
  Recorder(int id, std::vector<int>* log) : nId(id), pLog(log) {}
  void ObjectChanged(NT::NotifyEnumType, NT::NotifyHintEnumType, const QvSender*) override {
    pLog->push_back(nId);
    if (Action) Action();
  }
  int nId;
  std::vector<int>* pLog;
  std::function<void()> Action;
};

// Fires once and returns the ids of the receivers called, in order; 0 marks a
// handler's exception, which ends the dispatch.
std::vector<int> FireIds(const QvSender& sender, std::vector<int>& log) {
  log.clear();
  try {
    sender.FireEvent(NT::NT_CHANGED, NT::NH_NONE);
  } catch (const std::runtime_error&) {
    log.push_back(0);
  }
  return log;
}

// Random links, unlinks, withdrawals, destructions and events against a plain
// model: the live links in the order they were made, each made at most once.
TEST(SenderReceiverTest, MatchesAModelUnderRandomOperations) {
  std::mt19937 rng(20240611);
  std::vector<int> log;
  // Few senders and many receivers, so that a sender's list grows long and
  // gathers holes enough to be compacted.
  constexpr int kSenders = 3, kReceivers = 40;
  std::vector<std::unique_ptr<QvSender>> senders(kSenders);
  std::vector<std::unique_ptr<Recorder>> receivers(kReceivers);
  for (auto& s : senders) s = std::make_unique<QvSender>();
  for (int r = 0; r < kReceivers; ++r) receivers[r] = std::make_unique<Recorder>(r, &log);
  std::vector<std::pair<int, int>> model;  // (sender, receiver)
  for (int step = 0; step < 20000; ++step) {
    const int s = static_cast<int>(rng() % kSenders), r = static_cast<int>(rng() % kReceivers);
    const bool bCoin = rng() % 2 == 0;
    const unsigned op = rng() % 10;
    if (op <= 2) {
      receivers[r]->AddSenderLink(senders[s].get());
      if (std::ranges::find(model, std::pair(s, r)) == model.end()) model.emplace_back(s, r);
    } else if (op <= 4) {
      receivers[r]->RemoveSenderLink(senders[s].get());
      std::erase(model, std::pair(s, r));
    } else if (op == 5) {  // all links of a receiver go, by request or with the receiver
      bCoin ? receivers[r]->RemoveAllSendersLinks()
            : void(receivers[r] = std::make_unique<Recorder>(r, &log));
      std::erase_if(model, [&](auto l) { return l.second == r; });
    } else if (op == 6 && rng() % 8 == 0) {  // rarely: all links of a sender go
      bCoin ? senders[s]->Withdraw() : void(senders[s] = std::make_unique<QvSender>());
      std::erase_if(model, [&](auto l) { return l.first == s; });
    } else if (op >= 7) {
      std::vector<int> expected;
      for (auto [ls, lr] : model) {
        if (ls == s) expected.push_back(lr);
      }
      ASSERT_EQ(FireIds(*senders[s], log), expected) << "step " << step;
      ASSERT_EQ(senders[s]->HasReceiver(), !expected.empty()) << "step " << step;
    }
  }
}

// What a handler does to the links in the middle of a dispatch, and whom the
// rest of that dispatch and the next one call. Receivers 1 to 4 are linked in
// that order, 5 is not; receiver 2 acts once.
TEST(SenderReceiverTest, HandlersMayChangeTheLinksDuringADispatch) {
  using Rs = std::vector<std::unique_ptr<Recorder>>;
  const struct {
    const char* name;
    std::function<void(QvSender&, Rs&)> action;
    std::vector<int> during, next;
  } rows[] = {
      // clang-format off
      {"destroys itself", [](auto&, auto& r) { r[2].reset(); }, {1, 2, 3, 4}, {1, 3, 4}},
      {"destroys a later one", [](auto&, auto& r) { r[3].reset(); }, {1, 2, 4}, {1, 2, 4}},
      {"destroys an earlier one", [](auto&, auto& r) { r[1].reset(); }, {1, 2, 3, 4}, {2, 3, 4}},
      {"unlinks itself", [](auto& s, auto& r) { r[2]->RemoveSenderLink(&s); }, {1, 2, 3, 4},
       {1, 3, 4}},
      {"unlinks a later one", [](auto&, auto& r) { r[4]->RemoveAllSendersLinks(); }, {1, 2, 3},
       {1, 2, 3}},
      {"links a new one", [](auto& s, auto& r) { r[5]->AddSenderLink(&s); }, {1, 2, 3, 4},
       {1, 2, 3, 4, 5}},
      {"relinks 3", [](auto& s, auto& r) { r[3]->RemoveSenderLink(&s), r[3]->AddSenderLink(&s); },
       {1, 2, 4}, {1, 2, 4, 3}},
      {"withdraws the sender", [](auto& s, auto&) { s.Withdraw(); }, {1, 2}, {}},
      // A nested dispatch takes its own snapshot; the outer one goes on with its own.
      {"unlinks 3, nests", [](auto& s, auto& r) { r[3]->RemoveSenderLink(&s), s.FireEvent({}, {}); },
       {1, 2, 1, 2, 4, 4}, {1, 2, 4}},
      // Links retired during a dispatch that a handler ends are freed all the same.
      {"destroys 1, throws", [](auto&, auto& r) { r[1].reset(), throw std::runtime_error(""); },
       {1, 2, 0}, {2, 3, 4}},
      // clang-format on
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    std::vector<int> log;
    QvSender sender;
    Rs r(6);
    for (int i = 1; i <= 5; ++i) r[i] = std::make_unique<Recorder>(i, &log);
    for (int i = 1; i <= 4; ++i) r[i]->AddSenderLink(&sender);
    r[2]->Action = [&, bActed = false]() mutable {
      if (!std::exchange(bActed, true)) row.action(sender, r);
    };
    EXPECT_EQ(FireIds(sender, log), row.during);
    EXPECT_EQ(FireIds(sender, log), row.next);
  }
}

}  // namespace
}  // namespace qvsysbase
