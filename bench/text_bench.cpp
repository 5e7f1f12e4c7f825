// The string utilities on 1 MB and 10 MB texts, each beside the straightforward
// std::string code it replaces (search, then edit the string where the match
// is). Every iteration edits its own copy of the input, made and touched before
// the timed loop. At the end a table gives, per operation and size, the
// library's time over the baseline's, and per operation the 10 MB time over the
// 1 MB time (10 for linear work).
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <list>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "qvsysbase/QvStringUtil.h"

namespace {

using qvsysbase::QvStringUtil;

constexpr std::size_t kMegabyte = 1 << 20;
// Clipboard-like text: words of 1 to 9 letters, one space apart, and a line
// break ("\r\n" in place of a space) after about this many characters.
constexpr std::size_t kLineLength = 4096;

std::string MakeText(std::size_t size) {
  std::mt19937 random(12345);
  std::uniform_int_distribution<int> letter('a', 'z');
  std::uniform_int_distribution<int> wordLength(1, 9);
  std::string text;
  text.reserve(size + 16);
  std::size_t lineStart = 0;
  while (text.size() < size) {
    for (int n = wordLength(random); n > 0; --n) {
      text.push_back(static_cast<char>(letter(random)));
    }
    if (text.size() - lineStart >= kLineLength) {
      text += "\r\n";
      lineStart = text.size();
    } else {
      text.push_back(' ');
    }
  }
  return text;
}

const std::string& Text(std::size_t megabytes) {
  static std::map<std::size_t, std::string> texts;
  auto it = texts.find(megabytes);
  if (it == texts.end()) {
    it = texts.emplace(megabytes, MakeText(megabytes * kMegabyte)).first;
  }
  return it->second;
}

// Runs `edit` once per iteration on its own copy of the text. The copies are
// made before timing starts; copying writes every page, so none is touched for
// the first time inside the timed loop.
template <class Edit>
void RunOnCopies(benchmark::State& state, Edit edit) {
  const std::string& text = Text(static_cast<std::size_t>(state.range(0)));
  std::vector<std::string> copies(static_cast<std::size_t>(state.max_iterations), text);
  edit(copies.back());  // warm-up: caches and heap, outside the timed loop
  copies.back() = text;
  std::size_t next = 0;
  for (auto _ : state) {
    edit(copies[next]);
    benchmark::DoNotOptimize(copies[next].data());
    ++next;
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

// --- ReplacePattern: CR LF to LF -------------------------------------------

void BM_ReplacePattern_Library(benchmark::State& state) {
  const std::string pattern = "\r\n", replacement = "\n";
  RunOnCopies(state,
              [&](std::string& s) { QvStringUtil::ReplacePattern(s, pattern, replacement, -1); });
}

void BM_ReplacePattern_Baseline(benchmark::State& state) {
  const std::string pattern = "\r\n", replacement = "\n";
  RunOnCopies(state, [&](std::string& s) {
    for (auto p = s.find(pattern); p != std::string::npos;
         p = s.find(pattern, p + replacement.size())) {
      s.replace(p, pattern.size(), replacement);
    }
  });
}

// --- RemoveLFCR -------------------------------------------------------------

void BM_RemoveLFCR_Library(benchmark::State& state) {
  RunOnCopies(state, [](std::string& s) { QvStringUtil::RemoveLFCR(s); });
}

void BM_RemoveLFCR_Baseline(benchmark::State& state) {
  RunOnCopies(state, [](std::string& s) {
    s.erase(0, s.find_first_not_of(' '));
    s.erase(s.find_last_not_of(' ') + 1);
    for (auto p = s.find('\n'); p != std::string::npos; p = s.find('\n', p + 1)) {
      s[p] = ' ';
    }
    for (auto p = s.find('\r'); p != std::string::npos; p = s.find('\r', p + 1)) {
      s[p] = ' ';
    }
    for (auto p = s.find("  "); p != std::string::npos; p = s.find("  ", p)) {
      s.erase(p, 1);
    }
  });
}

// --- Split on spaces and line breaks ----------------------------------------

constexpr const char* kDelimiters = " \r\n";

// Split appends to a caller's list, so each iteration fills its own list, kept
// until the loop ends: freeing 1.8 million nodes is the caller's cost, not the
// function's. A warm-up round fills and frees the same lists first, so that the
// timed rounds take their nodes from heap memory that is already touched.
template <class SplitFn>
void RunSplit(benchmark::State& state, SplitFn split) {
  const std::string& text = Text(static_cast<std::size_t>(state.range(0)));
  std::vector<std::list<std::string>> outputs(static_cast<std::size_t>(state.max_iterations));
  for (auto& tokens : outputs) {
    split(text, tokens);
  }
  for (auto& tokens : outputs) {
    tokens.clear();
  }
  std::size_t next = 0;
  for (auto _ : state) {
    split(text, outputs[next]);
    benchmark::DoNotOptimize(outputs[next].size());
    ++next;
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void BM_Split_Library(benchmark::State& state) {
  RunSplit(state, [](const std::string& s, std::list<std::string>& tokens) {
    QvStringUtil::Split(s, std::string(kDelimiters), tokens);
  });
}

void BM_Split_Baseline(benchmark::State& state) {
  RunSplit(state, [](const std::string& s, std::list<std::string>& tokens) {
    for (auto b = s.find_first_not_of(kDelimiters); b != std::string::npos;
         b = s.find_first_not_of(kDelimiters, b)) {
      const auto e = s.find_first_of(kDelimiters, b);
      tokens.push_back(s.substr(b, e - b));
      b = e;
    }
  });
}

// Iteration counts are fixed so that the copies can be made up front; the
// baselines that erase in the middle of a 10 MB text take seconds each.
#define QV_TEXT_BENCHMARK(fn, it1, it10)                                 \
  BENCHMARK(fn)->Unit(benchmark::kMillisecond)->Arg(1)->Iterations(it1); \
  BENCHMARK(fn)->Unit(benchmark::kMillisecond)->Arg(10)->Iterations(it10)

QV_TEXT_BENCHMARK(BM_ReplacePattern_Library, 200, 20);
QV_TEXT_BENCHMARK(BM_ReplacePattern_Baseline, 20, 2);
QV_TEXT_BENCHMARK(BM_RemoveLFCR_Library, 100, 10);
QV_TEXT_BENCHMARK(BM_RemoveLFCR_Baseline, 20, 2);
QV_TEXT_BENCHMARK(BM_Split_Library, 20, 5);
QV_TEXT_BENCHMARK(BM_Split_Baseline, 20, 5);

// Prints the usual console output and keeps each run's time per iteration.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    ConsoleReporter::ReportRuns(runs);
    // With --benchmark_repetitions the median stands for the run; alone, the run itself.
    for (const Run& run : runs) {
      const bool median = run.run_type == Run::RT_Aggregate && run.aggregate_name == "median";
      if (run.run_type == Run::RT_Iteration || median) {
        m_Times[run.run_name.str()] = run.GetAdjustedCPUTime();
      }
    }
  }

  void PrintRatios() const {
    std::printf("\n%-16s %6s %14s %15s %16s\n",
                "operation",
                "size",
                "library cpu ms",
                "baseline cpu ms",
                "library/baseline");
    for (const char* op : {"ReplacePattern", "RemoveLFCR", "Split"}) {
      for (const char* size : {"1", "10"}) {
        const double lib = Time(op, "Library", size);
        const double base = Time(op, "Baseline", size);
        std::printf("%-16s %4sMB %14.3f %15.3f %16.3f\n", op, size, lib, base, lib / base);
      }
    }
    std::printf("\n%-16s %22s %22s\n", "operation", "library 10MB/1MB", "baseline 10MB/1MB");
    for (const char* op : {"ReplacePattern", "RemoveLFCR", "Split"}) {
      std::printf("%-16s %22.2f %22.2f\n",
                  op,
                  Time(op, "Library", "10") / Time(op, "Library", "1"),
                  Time(op, "Baseline", "10") / Time(op, "Baseline", "1"));
    }
  }

 private:
  double Time(const std::string& op, const std::string& kind, const std::string& size) const {
    const std::string prefix = "BM_" + op + "_" + kind + "/" + size + "/";
    for (const auto& [name, time] : m_Times) {
      if (name.rfind(prefix, 0) == 0) {
        return time;
      }
    }
    return 0.0;
  }

  std::map<std::string, double> m_Times;
};

}  // namespace

int main(int argc, char** argv) {
  // Keep freed heap memory mapped, and let freed small blocks merge at once
  // (no fast bins): the Split runs then allocate their token nodes in address
  // order from touched memory, and the benchmark measures the function rather
  // than the kernel's page faults.
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  mallopt(M_MXFAST, 0);
  benchmark::Initialize(&argc, argv);
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  reporter.PrintRatios();
  benchmark::Shutdown();
  return 0;
}
