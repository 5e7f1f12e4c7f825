// Foundation benchmarks: event dispatch against Boost.Signals2, and the cost of
// linking and unlinking as the registry grows.
//
// FireEvent/N fires one sender with N linked receivers while 10,000 other
// senders, each with a receiver, share the registry. In the same iteration the
// same number of handler calls goes through a Boost.Signals2 signal with N slots
// (default locking) and one with a dummy mutex (no locking, as our registry).
// The counters give nanoseconds per delivered call for each and the ratios
// qv/boost; batches alternate so that load on the machine hits all alike.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <boost/signals2.hpp>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "qvsysbase/SenderReceiver.h"

namespace qvsysbase {
namespace {

using NT = qvNotifyType;

// The handler work on both sides: one indirect call that bumps a counter in the
// receiving object.
class Counter final : public QvReceiver {
 public:
  void ObjectChanged(NT::NotifyEnumType, NT::NotifyHintEnumType, const QvSender*) override {
    ++m_nCalls;
  }
  std::uint64_t m_nCalls = 0;
};

using Signature = void(NT::NotifyEnumType, NT::NotifyHintEnumType, const QvSender*);
using LockedSignal = boost::signals2::signal<Signature>;
using UnlockedSignal = boost::signals2::signal_type<
    Signature, boost::signals2::keywords::mutex_type<boost::signals2::dummy_mutex>>::type;

// The slot a Boost user would connect: forwards to the receiving object.
struct Forward {
  Counter* pReceiver;
  void operator()(NT::NotifyEnumType what, NT::NotifyHintEnumType hint, const QvSender* s) const {
    pReceiver->ObjectChanged(what, hint, s);
  }
};

constexpr std::size_t kOtherSenders = 10000;
// Calls per timed batch: large enough that the clock reads are noise.
constexpr std::size_t kCallsPerBatch = 8192;

template <typename Fn>
double TimeBatch(std::size_t nFires, Fn&& fire) {
  const auto start = std::chrono::steady_clock::now();
  for (std::size_t i = 0; i < nFires; ++i) fire();
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

void BM_FireEvent(benchmark::State& state) {
  const auto nReceivers = static_cast<std::size_t>(state.range(0));
  const std::size_t nFires = std::max<std::size_t>(1, kCallsPerBatch / nReceivers);

  // Crowd: other senders and signals, each with one receiver.
  std::vector<QvSender> others(kOtherSenders);
  std::vector<Counter> otherReceivers(kOtherSenders);
  std::vector<LockedSignal> otherSignals(kOtherSenders);
  for (std::size_t i = 0; i < kOtherSenders; ++i) {
    otherReceivers[i].AddSenderLink(&others[i]);
    otherSignals[i].connect(Forward{&otherReceivers[i]});
  }

  QvSender sender;
  LockedSignal locked;
  UnlockedSignal unlocked;
  std::vector<Counter> qvReceivers(nReceivers), boostReceivers(nReceivers);
  for (std::size_t i = 0; i < nReceivers; ++i) {
    qvReceivers[i].AddSenderLink(&sender);
    locked.connect(Forward{&boostReceivers[i]});
    unlocked.connect(Forward{&boostReceivers[i]});
  }

  double qvNs = 0, lockedNs = 0, unlockedNs = 0;
  bool bQvFirst = true;
  auto fireQv = [&] { sender.FireEvent(NT::NT_CHANGED, NT::NH_NONE); };
  auto fireLocked = [&] { locked(NT::NT_CHANGED, NT::NH_NONE, &sender); };
  auto fireUnlocked = [&] { unlocked(NT::NT_CHANGED, NT::NH_NONE, &sender); };
  for (auto _ : state) {
    if (bQvFirst) qvNs += TimeBatch(nFires, fireQv);
    lockedNs += TimeBatch(nFires, fireLocked);
    unlockedNs += TimeBatch(nFires, fireUnlocked);
    if (!bQvFirst) qvNs += TimeBatch(nFires, fireQv);
    bQvFirst = !bQvFirst;
  }

  const double nCalls = static_cast<double>(state.iterations() * nFires * nReceivers);
  state.counters["qv_ns"] = qvNs / nCalls;
  state.counters["boost_ns"] = lockedNs / nCalls;
  state.counters["boost_nolock_ns"] = unlockedNs / nCalls;
  state.counters["qv/boost"] = qvNs / lockedNs;
  state.counters["qv/boost_nolock"] = qvNs / unlockedNs;
  benchmark::DoNotOptimize(qvReceivers.front().m_nCalls);
  benchmark::DoNotOptimize(boostReceivers.front().m_nCalls);
}
BENCHMARK(BM_FireEvent)->Arg(1)->Arg(100)->Arg(10000)->UseRealTime();

// Unlinks and relinks one link at a time with `n` senders each linked to one
// receiver, beside the same erase and insert on a std::map of `n` entries keyed
// like the registry's links (a yardstick for O(log n) at this size and access
// pattern). The links are visited with a step of 1 (neighbours: the tree paths
// stay in cache) or a large prime (far apart: each level may miss the cache).
void BM_LinkUnlink(benchmark::State& state) {
  const auto n = static_cast<std::size_t>(state.range(0));
  const auto nStep = static_cast<std::size_t>(state.range(1));
  constexpr std::size_t kOpsPerBatch = 1024;
  std::vector<QvSender> senders(n);
  std::vector<Counter> receivers(n);
  std::map<std::pair<const void*, const void*>, void*> yardstick;
  for (std::size_t i = 0; i < n; ++i) {
    receivers[i].AddSenderLink(&senders[i]);
    yardstick.emplace(std::pair(&receivers[i], &senders[i]), nullptr);
  }

  std::size_t iQv = 0, iMap = 0;
  double qvNs = 0, mapNs = 0;
  for (auto _ : state) {
    qvNs += TimeBatch(kOpsPerBatch, [&] {
      iQv = (iQv + nStep) % n;
      receivers[iQv].RemoveSenderLink(&senders[iQv]);
      receivers[iQv].AddSenderLink(&senders[iQv]);
    });
    mapNs += TimeBatch(kOpsPerBatch, [&] {
      iMap = (iMap + nStep) % n;
      const std::pair<const void*, const void*> key(&receivers[iMap], &senders[iMap]);
      yardstick.erase(key);
      yardstick.emplace(key, nullptr);
    });
  }
  // Two operations (an unlink and a link, an erase and an insert) per step.
  const double nOps = static_cast<double>(state.iterations() * kOpsPerBatch * 2);
  state.counters["qv_ns_per_op"] = qvNs / nOps;
  state.counters["map_ns_per_op"] = mapNs / nOps;
  state.counters["qv/map"] = qvNs / mapNs;
}
BENCHMARK(BM_LinkUnlink)
    ->ArgsProduct({{1000, 10000, 100000}, {1, 7919}})
    ->ArgNames({"links", "step"})
    ->UseRealTime();

}  // namespace
}  // namespace qvsysbase
