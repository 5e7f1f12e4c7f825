// Foundation benchmarks: event dispatch against Boost.Signals2, and the cost of
// linking and unlinking as the registry grows.
//
// FireEvent/N fires one sender with N linked receivers while 10,000 other
// senders, each with a receiver, share the registry; the baseline delivers the
// same number of handler calls through a Boost.Signals2 signal with N slots,
// with its default locking ("boost") or a dummy mutex ("boost_nolock", no
// locking, as our registry). One iteration is one batch of about 8192 calls.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <boost/signals2.hpp>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "RatioReporter.h"
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

// Both worlds of FireEvent/N, built once for every run of its pairs.
struct FireWorld {
  explicit FireWorld(std::size_t nReceivers)
      : others(kOtherSenders),
        otherReceivers(kOtherSenders),
        otherSignals(kOtherSenders),
        qvReceivers(nReceivers),
        boostReceivers(nReceivers),
        nFires(std::max<std::size_t>(1, kCallsPerBatch / nReceivers)) {
    // Crowd: other senders and signals, each with one receiver.
    for (std::size_t i = 0; i < kOtherSenders; ++i) {
      otherReceivers[i].AddSenderLink(&others[i]);
      otherSignals[i].connect(Forward{&otherReceivers[i]});
    }
    for (std::size_t i = 0; i < nReceivers; ++i) {
      qvReceivers[i].AddSenderLink(&sender);
      locked.connect(Forward{&boostReceivers[i]});
      unlocked.connect(Forward{&boostReceivers[i]});
    }
  }
  std::vector<QvSender> others;
  std::vector<Counter> otherReceivers;
  std::vector<LockedSignal> otherSignals;
  QvSender sender;
  LockedSignal locked;
  UnlockedSignal unlocked;
  std::vector<Counter> qvReceivers, boostReceivers;
  std::size_t nFires;
};

FireWorld& FireWorldOf(std::size_t nReceivers) {
  static std::map<std::size_t, std::unique_ptr<FireWorld>> worlds;
  auto& world = worlds[nReceivers];
  if (!world) world = std::make_unique<FireWorld>(nReceivers);
  return *world;
}

enum class Fire { kQv, kLocked, kUnlocked };

void FireBatches(benchmark::State& state, std::size_t nReceivers, Fire which) {
  FireWorld& w = FireWorldOf(nReceivers);
  for (auto _ : state) {
    for (std::size_t i = 0; i < w.nFires; ++i) {
      switch (which) {
        case Fire::kQv: w.sender.FireEvent(NT::NT_CHANGED, NT::NH_NONE); break;
        case Fire::kLocked: w.locked(NT::NT_CHANGED, NT::NH_NONE, &w.sender); break;
        case Fire::kUnlocked: w.unlocked(NT::NT_CHANGED, NT::NH_NONE, &w.sender); break;
      }
    }
  }
  benchmark::DoNotOptimize(w.qvReceivers.front().m_nCalls);
  benchmark::DoNotOptimize(w.boostReceivers.front().m_nCalls);
}

// Unlinks and relinks one link at a time with `n` senders each linked to one
// receiver, beside the same erase and insert on a std::map of `n` entries keyed
// like the registry's links (a yardstick for O(log n) at this size and access
// pattern). The links are visited with a step of 1 (neighbours: the tree paths
// stay in cache) or a large prime (far apart: each level may miss the cache).
// One iteration is 1024 steps, each an unlink and a link (an erase and an insert).
struct LinkWorld {
  explicit LinkWorld(std::size_t n) : senders(n), receivers(n) {
    for (std::size_t i = 0; i < n; ++i) {
      receivers[i].AddSenderLink(&senders[i]);
      yardstick.emplace(std::pair(&receivers[i], &senders[i]), nullptr);
    }
  }
  std::vector<QvSender> senders;
  std::vector<Counter> receivers;
  std::map<std::pair<const void*, const void*>, void*> yardstick;
};

LinkWorld& LinkWorldOf(std::size_t n) {
  static std::map<std::size_t, std::unique_ptr<LinkWorld>> worlds;
  auto& world = worlds[n];
  if (!world) world = std::make_unique<LinkWorld>(n);
  return *world;
}

constexpr std::size_t kStepsPerBatch = 1024;

// One iteration: kStepsPerBatch times, move `step` links on and relink there.
template <typename Relink>
void RelinkBatches(benchmark::State& state, std::size_t n, std::size_t step, Relink relink) {
  LinkWorld& w = LinkWorldOf(n);
  std::size_t i = 0;
  for (auto _ : state) {
    for (std::size_t k = 0; k < kStepsPerBatch; ++k) {
      i = (i + step) % n;
      relink(w, i);
    }
  }
}

void RelinkQv(benchmark::State& state, std::size_t n, std::size_t step) {
  RelinkBatches(state, n, step, [](LinkWorld& w, std::size_t i) {
    w.receivers[i].RemoveSenderLink(&w.senders[i]);
    w.receivers[i].AddSenderLink(&w.senders[i]);
  });
}

void RelinkMap(benchmark::State& state, std::size_t n, std::size_t step) {
  RelinkBatches(state, n, step, [](LinkWorld& w, std::size_t i) {
    const std::pair<const void*, const void*> key(&w.receivers[i], &w.senders[i]);
    w.yardstick.erase(key);
    w.yardstick.emplace(key, nullptr);
  });
}

}  // namespace
}  // namespace qvsysbase

int main(int argc, char** argv) {
  using namespace qvsysbase;
  for (const std::size_t n : {1, 100, 10000}) {
    const std::string name = "FireEvent/" + std::to_string(n);
    auto qv = [n](benchmark::State& s) { FireBatches(s, n, Fire::kQv); };
    qvbench::AddPair(name + "/boost", qv, [n](benchmark::State& s) {
      FireBatches(s, n, Fire::kLocked);
    });
    qvbench::AddPair(name + "/boost_nolock", qv, [n](benchmark::State& s) {
      FireBatches(s, n, Fire::kUnlocked);
    });
  }
  for (const std::size_t n : {1000, 10000, 100000}) {
    for (const std::size_t step : {1, 7919}) {
      qvbench::AddPair(
          "LinkUnlink/links:" + std::to_string(n) + "/step:" + std::to_string(step),
          [n, step](benchmark::State& s) { RelinkQv(s, n, step); },
          [n, step](benchmark::State& s) { RelinkMap(s, n, step); });
    }
  }
  return qvbench::RunPairs(argc, argv);
}
