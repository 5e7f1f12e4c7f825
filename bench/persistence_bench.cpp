// Stream writer and reader against cereal's binary archive, side by side, in
// memory: doubles one value at a time, and small objects each written as a
// framed record (ours) or a plain sequence of members (cereal).
//
// Each pair is ours (library) against cereal (baseline); the inputs are made
// once and shared by every run, and each run's output buffers are filled before
// its timed loop. Each run also reports per_value (seconds per double or object).
#include <benchmark/benchmark.h>

#include <cereal/archives/binary.hpp>
#include <cereal/types/string.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "RatioReporter.h"
#include "qvsysbase/LoadStream.h"
#include "qvsysbase/SaveStream.h"
#include "qvsysbase/StreamObject.h"

namespace {

using namespace qvsysbase;

constexpr int kDoubles = 1'000'000;
constexpr int kObjects = 100'000;

void ReportPerValue(benchmark::State& state, int perIteration) {
  // Seconds per value, shown with an SI prefix (n for nanoseconds).
  state.counters["per_value"] = benchmark::Counter(
      static_cast<double>(perIteration) * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

// --- doubles ------------------------------------------------------------------

// One record whose body is the doubles: in the current format every value lies
// inside a record.
class DoubleBlock : public StreamObject {
 public:
  explicit DoubleBlock(std::vector<double>& values) : m_values(values) {}
  std::string getClassName() const override { return "bench::DoubleBlock"; }
  void Save(SaveStream& s) const override {
    for (const double d : m_values) s << d;
  }
  bool Load(LoadStream& s) override {
    for (double& d : m_values) s >> d;
    return true;
  }

 private:
  std::vector<double>& m_values;
};

std::vector<double> MakeDoubles() {
  std::vector<double> values(kDoubles);
  for (int i = 0; i < kDoubles; ++i) values[i] = i * 0.25;
  return values;
}

// The inputs, made once.
std::vector<double>& Doubles() {
  static std::vector<double> values = MakeDoubles();
  return values;
}

std::string SaveDoubles(std::vector<double>& values) {
  SaveStream out;
  out.InitMemStream();
  out << DoubleBlock(values);
  int length = 0;
  const char* bytes = out.GetStreamBuffer(length);
  return std::string(bytes, static_cast<std::size_t>(length));
}

void BM_Doubles_Write_Qv(benchmark::State& state) {
  std::vector<double>& values = Doubles();
  for (auto _ : state) {
    SaveStream out;
    out.InitMemStream();
    out << DoubleBlock(values);
    int length = 0;
    benchmark::DoNotOptimize(out.GetStreamBuffer(length));
  }
  ReportPerValue(state, kDoubles);
}

void BM_Doubles_Write_Cereal(benchmark::State& state) {
  const std::vector<double>& values = Doubles();
  for (auto _ : state) {
    std::ostringstream os;
    {
      cereal::BinaryOutputArchive archive(os);
      for (const double d : values) archive(d);
    }
    benchmark::DoNotOptimize(os);
  }
  ReportPerValue(state, kDoubles);
}

void BM_Doubles_Read_Qv(benchmark::State& state) {
  std::vector<double>& values = Doubles();
  const std::string bytes = SaveDoubles(values);
  std::vector<double> read(kDoubles);
  for (auto _ : state) {
    LoadStream in;
    in.InitMemStream(bytes);
    DoubleBlock block(read);
    in >> block;
    benchmark::DoNotOptimize(read.data());
  }
  if (read != values) state.SkipWithError("read back differs");
  ReportPerValue(state, kDoubles);
}

void BM_Doubles_Read_Cereal(benchmark::State& state) {
  const std::vector<double>& values = Doubles();
  std::ostringstream os;
  {
    cereal::BinaryOutputArchive archive(os);
    for (const double d : values) archive(d);
  }
  const std::string bytes = os.str();
  std::vector<double> read(kDoubles);
  for (auto _ : state) {
    std::istringstream is(bytes);
    cereal::BinaryInputArchive archive(is);
    for (double& d : read) archive(d);
    benchmark::DoNotOptimize(read.data());
  }
  if (read != values) state.SkipWithError("read back differs");
  ReportPerValue(state, kDoubles);
}

// --- small objects ------------------------------------------------------------

struct Item {
  int n = 0;
  double x = 0;
  std::string name;    // 16 characters
  std::wstring label;  // 8 characters

  template <typename Archive>
  void serialize(Archive& archive) {
    archive(n, x, name, label);
  }
  bool operator==(const Item&) const = default;
};

// The persistent form: a class on a hot path names itself with a constant of
// the run-time type's spelling instead of demangling per record. A name of up
// to 15 characters also avoids a heap allocation per record in getClassName()
// (returned by value); "bench::ItemObject" costs about 10 ns more per object
// in each direction.
class ItemObject : public StreamObject {
 public:
  std::string getClassName() const override { return "bench::Item"; }
  void Save(SaveStream& s) const override { s << item.n << item.x << item.name << item.label; }
  bool Load(LoadStream& s) override {
    s >> item.n >> item.x >> item.name >> item.label;
    return true;
  }
  Item item;
};

std::vector<ItemObject> MakeItems() {
  std::vector<ItemObject> items(kObjects);
  for (int i = 0; i < kObjects; ++i) {
    items[i].item = {i,
                     i * 0.5,
                     "name-" + std::to_string(1000000000 + i) + "x",
                     L"lbl" + std::to_wstring(10000 + i)};
  }
  return items;
}

const std::vector<ItemObject>& Items() {
  static const std::vector<ItemObject> items = MakeItems();
  return items;
}

std::string SaveItems(const std::vector<ItemObject>& items) {
  SaveStream out;
  out.InitMemStream();
  for (const ItemObject& item : items) out << item;
  int length = 0;
  const char* bytes = out.GetStreamBuffer(length);
  return std::string(bytes, static_cast<std::size_t>(length));
}

void BM_Objects_Write_Qv(benchmark::State& state) {
  const std::vector<ItemObject>& items = Items();
  for (auto _ : state) {
    SaveStream out;
    out.InitMemStream();
    for (const ItemObject& item : items) out << item;
    int length = 0;
    benchmark::DoNotOptimize(out.GetStreamBuffer(length));
  }
  ReportPerValue(state, kObjects);
}

void BM_Objects_Write_Cereal(benchmark::State& state) {
  const std::vector<ItemObject>& items = Items();
  for (auto _ : state) {
    std::ostringstream os;
    {
      cereal::BinaryOutputArchive archive(os);
      for (const ItemObject& item : items) archive(item.item);
    }
    benchmark::DoNotOptimize(os);
  }
  ReportPerValue(state, kObjects);
}

void BM_Objects_Read_Qv(benchmark::State& state) {
  const std::vector<ItemObject>& items = Items();
  const std::string bytes = SaveItems(items);
  std::vector<ItemObject> read(kObjects);
  for (auto _ : state) {
    LoadStream in;
    in.InitMemStream(bytes);
    for (ItemObject& item : read) in >> item;
    benchmark::DoNotOptimize(read.data());
  }
  for (int i = 0; i < kObjects; ++i) {
    if (!(read[i].item == items[i].item)) state.SkipWithError("read back differs");
  }
  ReportPerValue(state, kObjects);
}

void BM_Objects_Read_Cereal(benchmark::State& state) {
  const std::vector<ItemObject>& items = Items();
  std::ostringstream os;
  {
    cereal::BinaryOutputArchive archive(os);
    for (const ItemObject& item : items) archive(item.item);
  }
  const std::string bytes = os.str();
  std::vector<Item> read(kObjects);
  for (auto _ : state) {
    std::istringstream is(bytes);
    cereal::BinaryInputArchive archive(is);
    for (Item& item : read) archive(item);
    benchmark::DoNotOptimize(read.data());
  }
  for (int i = 0; i < kObjects; ++i) {
    if (!(read[i] == items[i].item)) state.SkipWithError("read back differs");
  }
  ReportPerValue(state, kObjects);
}

}  // namespace

int main(int argc, char** argv) {
  qvbench::AddPair("Doubles/Write", &BM_Doubles_Write_Qv, &BM_Doubles_Write_Cereal);
  qvbench::AddPair("Doubles/Read", &BM_Doubles_Read_Qv, &BM_Doubles_Read_Cereal);
  qvbench::AddPair("Objects/Write", &BM_Objects_Write_Qv, &BM_Objects_Write_Cereal);
  qvbench::AddPair("Objects/Read", &BM_Objects_Read_Qv, &BM_Objects_Read_Cereal);
  return qvbench::RunPairs(argc, argv);
}
