// Drawing threads, each on its own Gaussian and uniform stream index, while
// another thread initialises other indices and changes both lists' families:
// every drawn sequence equals a single-threaded run of the same seeds.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "qvsysbase/IntelSPLHandler.h"
#include "qvsysbase/RandomStreams.h"

namespace qvsysbase {
namespace {

using H = IntelSPLHandler;

constexpr unsigned kDrawers = 3;
constexpr int kBlocks = 200;
constexpr int kBlock = 257;

struct Drawn {
  std::vector<double> normals;
  std::vector<unsigned> words;
};

// Seeds stream `index` of both lists (with the families in force) and draws.
void Seed(unsigned index) {
  H::InitRandGenWithSeed(static_cast<int>(1000 + index), index);
  H::InitRandUniformGen(static_cast<int>(2000 + index), false, index);
}
Drawn DrawAll(unsigned index) {
  Drawn d{std::vector<double>(kBlocks * kBlock), std::vector<unsigned>(kBlocks * kBlock)};
  for (int b = 0; b < kBlocks; ++b) {
    H::nspdbRandGaus(d.normals.data() + b * kBlock, kBlock, index);
    H::nspiRandUniformBits(d.words.data() + b * kBlock, kBlock, index);
  }
  return d;
}

TEST(RandomStreamsThreads, OwnIndicesDrawTheSingleThreadedSequences) {
  H::setIntelSPLMode(H::SplModeMKL, 1);
  H::setBRNGFamily(1, true);  // MRG32k3a for the Gaussian list
  std::vector<Drawn> expected;
  for (unsigned i = 0; i < kDrawers; ++i) {
    Seed(i);
    expected.push_back(DrawAll(i));
  }
  for (unsigned i = 0; i < kDrawers; ++i) Seed(i);

  std::atomic<int> ready{0};
  std::atomic<bool> done{false};
  std::vector<Drawn> drawn(kDrawers);
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < kDrawers; ++i) {
    threads.emplace_back([&, i] {
      ++ready;
      while (ready.load() <= static_cast<int>(kDrawers)) {}
      drawn[i] = DrawAll(i);
    });
  }
  threads.emplace_back([&] {
    ++ready;
    while (ready.load() <= static_cast<int>(kDrawers)) {}
    for (unsigned round = 0; !done.load(); ++round) {
      const unsigned index = kDrawers + round % 40;  // grows the lists while others draw
      H::setBRNGFamily(round % 7, true);
      H::setBRNGFamily(round % 2 ? kBrngMT19937 : kBrngMCG31, false);
      H::InitRandGen(false, index);
      H::InitRandUniformGen(static_cast<int>(round), true, index);
    }
  });
  for (unsigned i = 0; i < kDrawers; ++i) threads[i].join();
  done = true;
  threads.back().join();
  for (unsigned i = 0; i < kDrawers; ++i) {
    SCOPED_TRACE(i);
    EXPECT_EQ(drawn[i].normals, expected[i].normals);
    EXPECT_EQ(drawn[i].words, expected[i].words);
  }
  H::setIntelSPLMode(H::SplModePlain, 1);
}

}  // namespace
}  // namespace qvsysbase
