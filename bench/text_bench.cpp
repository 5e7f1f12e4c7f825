// The string utilities on 1 MB and 10 MB texts, each beside the straightforward
// std::string code it replaces (search, then edit the string where the match
// is). Every iteration edits its own copy of the input, made and touched before
// the timed loop, so the iteration counts are fixed per pair.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "RatioReporter.h"
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
void RunOnCopies(benchmark::State& state, std::size_t megabytes, Edit edit) {
  const std::string& text = Text(megabytes);
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

void BM_ReplacePattern_Library(benchmark::State& state, std::size_t megabytes) {
  const std::string pattern = "\r\n", replacement = "\n";
  RunOnCopies(state, megabytes,
              [&](std::string& s) { QvStringUtil::ReplacePattern(s, pattern, replacement, -1); });
}

void BM_ReplacePattern_Baseline(benchmark::State& state, std::size_t megabytes) {
  const std::string pattern = "\r\n", replacement = "\n";
  RunOnCopies(state, megabytes, [&](std::string& s) {
    for (auto p = s.find(pattern); p != std::string::npos;
         p = s.find(pattern, p + replacement.size())) {
      s.replace(p, pattern.size(), replacement);
    }
  });
}

// --- RemoveLFCR -------------------------------------------------------------

void BM_RemoveLFCR_Library(benchmark::State& state, std::size_t megabytes) {
  RunOnCopies(state, megabytes, [](std::string& s) { QvStringUtil::RemoveLFCR(s); });
}

void BM_RemoveLFCR_Baseline(benchmark::State& state, std::size_t megabytes) {
  RunOnCopies(state, megabytes, [](std::string& s) {
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
void RunSplit(benchmark::State& state, std::size_t megabytes, SplitFn split) {
  const std::string& text = Text(megabytes);
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

void BM_Split_Library(benchmark::State& state, std::size_t megabytes) {
  RunSplit(state, megabytes, [](const std::string& s, std::list<std::string>& tokens) {
    QvStringUtil::Split(s, std::string(kDelimiters), tokens);
  });
}

void BM_Split_Baseline(benchmark::State& state, std::size_t megabytes) {
  RunSplit(state, megabytes, [](const std::string& s, std::list<std::string>& tokens) {
    for (auto b = s.find_first_not_of(kDelimiters); b != std::string::npos;
         b = s.find_first_not_of(kDelimiters, b)) {
      const auto e = s.find_first_of(kDelimiters, b);
      tokens.push_back(s.substr(b, e - b));
      b = e;
    }
  });
}

using TextArm = void (*)(benchmark::State&, std::size_t megabytes);

struct Size {
  std::size_t megabytes;
  int libraryIterations;
  int baselineIterations;
};

// Adds the pairs "<operation>/<size>MB". Iteration counts are fixed so that the
// copies can be made up front; the baselines that erase in the middle of a 10 MB
// text take seconds each.
void AddPairs(const char* operation, TextArm library, TextArm baseline, const Size (&sizes)[2]) {
  for (const Size& size : sizes) {
    const std::size_t mb = size.megabytes;
    qvbench::AddPair(std::string(operation) + "/" + std::to_string(mb) + "MB",
                     [library, mb](benchmark::State& state) { library(state, mb); },
                     [baseline, mb](benchmark::State& state) { baseline(state, mb); })
        .Iterations(size.libraryIterations, size.baselineIterations);
  }
}

}  // namespace

int main(int argc, char** argv) {
  // Keep freed heap memory mapped, and let freed small blocks merge at once
  // (no fast bins): the Split runs then allocate their token nodes in address
  // order from touched memory, and the benchmark measures the function rather
  // than the kernel's page faults.
  mallopt(M_TRIM_THRESHOLD, 1 << 30);
  mallopt(M_MXFAST, 0);
  AddPairs("ReplacePattern",
           &BM_ReplacePattern_Library,
           &BM_ReplacePattern_Baseline,
           {{1, 200, 20}, {10, 20, 2}});
  AddPairs("RemoveLFCR", &BM_RemoveLFCR_Library, &BM_RemoveLFCR_Baseline, {{1, 100, 20}, {10, 10, 2}});
  AddPairs("Split", &BM_Split_Library, &BM_Split_Baseline, {{1, 20, 20}, {10, 5, 5}});
  return qvbench::RunPairs(argc, argv);
}
