#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "display/AllocationCounter.h"
#include "qvsysbase/FreezableObject.h"
#include "qvsysbase/LoadStream.h"
#include "qvsysbase/SaveStream.h"

namespace qvsysbase {
namespace {

// A live chart of two variables whose answers vary with every index.
class LiveChart : public DisplayableObject {
 public:
  unsigned GetNVarsChart() const override { return 2; }
  unsigned GetNObsChart(unsigned var) const override { return var + 2; }
  double GetValueChart(unsigned var, unsigned cas) const override {
    if (var + cas == 0) return -0.0;
    return m_dShift + var * 0.1 + cas * 1e-300;
  }
  std::wstring GetValueAsLabelChart(unsigned var, unsigned cas) const override {
    return L"\u00e9\U0001F600" + std::to_wstring(var * 10 + cas);
  }
  bool IsValidChart(unsigned, unsigned cas, unsigned) const override { return cas != 1; }
  int convertVarIndex2ParamType(unsigned var) const override { return var == 1 ? 3 : -1; }
  void getParameterConstraints(std::vector<std::pair<unsigned, unsigned>>& pairs, unsigned type,
                               bool& left) const override {
    pairs = {{type, 1}};
    left = true;
  }
  bool GetHintAsLabel(unsigned var, unsigned index, std::wstring& text) const override {
    text = L"h" + std::to_wstring(var + index);
    return index == 0;
  }
  std::wstring GetTitleChart() const override { return L"Residuals"; }
  const HighlightLists* GetHighlightArray() const override { return &m_lists; }
  double m_dShift = 0.0;
  HighlightLists m_lists{{4, 5}};
};

// Many points, and a text longer than a short string in every member that
// holds one.
class LargeChart : public LiveChart {
 public:
  unsigned GetNVarsChart() const override { return 10; }
  unsigned GetNObsChart(unsigned) const override { return 500; }
  std::wstring GetValueAsHintChart(unsigned, unsigned) const override { return m_wstrLong; }
  std::wstring GetVarHeaderChart(unsigned) const override { return m_wstrLong; }
  std::wstring GetVarFooterChart(unsigned, unsigned) const override { return m_wstrLong; }
  std::wstring GetConsolidatedHint(unsigned, std::vector<unsigned>&) const override {
    return m_wstrLong;
  }
  int IsCompositeConstraint(double, unsigned, std::wstring* text, bool) const override {
    if (text != nullptr) *text = m_wstrLong;
    return 1;
  }
  const std::wstring m_wstrLong = L"a text longer than any short-string buffer";
};

std::string Save(const FreezableObject& object, STREAM_VER_SAVE ver = STREAM_VER_SAVE_CURRENT) {
  SaveStream out;
  out.InitMemStream(ver);
  object.SaveToStream(out);
  int length = 0;
  const char* bytes = out.GetStreamBuffer(length);
  return std::string(bytes, static_cast<std::size_t>(length));
}

// Reads `bytes` into `object`; the stream's state afterwards.
bool Read(const std::string& bytes, FreezableObject& object) {
  LoadStream in;
  in.InitMemStream(bytes);
  object.ReadFromStream(in);
  return in.good();
}

TEST(FreezableObjectTest, FrozenAnswersComeFromTheSnapshot) {
  LiveChart live;
  FreezableObject f;
  f.setChartObject(&live);
  EXPECT_FALSE(f.IsFrozen());
  EXPECT_EQ(f.GetNObsChart(1), 3u);  // live while not frozen
  f.Freeze();
  live.m_dShift = 100;
  live.m_lists.clear();
  EXPECT_TRUE(f.IsFrozen() && f.IsFrozenSnapshot());
  EXPECT_EQ(f.getChartObject(), &live);
  EXPECT_EQ(f.GetNVarsChart(), 2u);
  EXPECT_EQ(f.GetValueChart(1, 2), 0.1 + 2e-300);
  EXPECT_EQ(f.GetValueChart(1, 3), 0.0);  // outside the snapshot: the default
  EXPECT_EQ(f.GetValueAsLabelChart(0, 1), L"\u00e9\U0001F6001");
  EXPECT_FALSE(f.IsValidChart(0, 1, 0));
  EXPECT_TRUE(f.IsValidChart(0, 0, 0));
  EXPECT_EQ(f.GetTitleChart(), L"Residuals");
  ASSERT_NE(f.GetHighlightArray(), nullptr);
  EXPECT_EQ(*f.GetHighlightArray(), (HighlightLists{{4, 5}}));
  std::wstring text;
  EXPECT_TRUE(f.GetHintAsLabel(1, 0, text));
  EXPECT_EQ(text, L"h1");
  std::vector<std::pair<unsigned, unsigned>> pairs;
  bool left = false;
  f.getParameterConstraints(pairs, 3, left);
  EXPECT_EQ(pairs, (std::vector<std::pair<unsigned, unsigned>>{{3, 1}}));
  EXPECT_TRUE(left);
  std::vector<unsigned> all{0, 1, 2};
  EXPECT_EQ(f.GetConsolidatedLabel(1, all), L"Other");
  f.setChartObject(nullptr);  // clears the snapshot; defaults answer
  EXPECT_FALSE(f.IsFrozen());
  EXPECT_EQ(f.GetNVarsChart(), 1u);
}

TEST(FreezableObjectTest, NullChartFreezesEmptyAndComparisonsSayWhy) {
  FreezableObject empty;
  empty.Freeze();
  EXPECT_EQ(empty.GetNVarsChart(), 0u);
  EXPECT_EQ(empty.GetFrozenData(), FrozenChartData());
  FreezableObject unfrozen;
  LiveChart live;
  ChartComparisonOptions o;
  std::vector<ChartDifference> d(2);
  const std::vector<ChartDifference> mismatch{
      {ChartDifference::DIFF_VALUE, -1, L"Chart object type mismatch"}};
  for (const GenericChartObject* other :
       std::initializer_list<const GenericChartObject*>{nullptr, &unfrozen, &live}) {
    EXPECT_FALSE(empty.compareChartObjects(other, d, o));
    EXPECT_EQ(d, mismatch);
  }
  EXPECT_FALSE(unfrozen.compareChartObjects(&empty, d, o));
  EXPECT_EQ(d.back().m_wstrText, L"Error -- trying to compare non-frozen objects");
  EXPECT_TRUE(empty.compareChartObjects(&empty, d, o));
  EXPECT_TRUE(d.empty());
}

TEST(FreezableObjectTest, SavedSnapshotReadsBackExactlyInEveryFormat) {
  LiveChart live;
  FreezableObject original;
  original.setChartObject(&live);
  original.Freeze();
  for (auto ver : {STREAM_VER_SAVE_CURRENT, STREAM_VER_SAVE_LEGACY}) {
    SCOPED_TRACE(ver);
    FreezableObject copy;
    ASSERT_TRUE(Read(Save(original, ver), copy));
    EXPECT_TRUE(copy.IsFrozen());
    EXPECT_EQ(copy.GetFrozenData(), original.GetFrozenData());
    EXPECT_TRUE(std::signbit(copy.GetValueChart(0, 0)));
    std::vector<ChartDifference> d;
    EXPECT_TRUE(original.compareChartObjects(&copy, d, ChartComparisonOptions()));
  }
  FreezableObject unfrozen;
  FreezableObject target;
  target.Freeze();
  EXPECT_TRUE(Read(Save(unfrozen), target));
  EXPECT_FALSE(target.IsFrozen());
}

// The comparison builds a record only for a value that differs, so equal
// snapshots compare without allocating, whatever the number rule.
TEST(FreezableObjectTest, EqualLargeSnapshotsCompareWithoutAllocating) {
  LargeChart live;
  FreezableObject a, b;
  a.setChartObject(&live);
  a.Freeze();
  b.setChartObject(&live);
  b.Freeze();
  ASSERT_EQ(a.GetFrozenData().m_vecVarCase.size(), 5000u);
  ChartComparisonOptions exact, absolute, relative;
  absolute.m_bUseAbsTolerance = true;
  absolute.m_dAbsTolerance = 1e-12;
  relative.m_dRelPrecisionPercent = 0.1;
  relative.m_bUseZeroFloor = true;
  std::vector<ChartDifference> d;
  for (const ChartComparisonOptions* o : {&exact, &absolute, &relative}) {
    SCOPED_TRACE(o == &exact ? "exact" : o == &absolute ? "absolute" : "relative");
    qvtest::AllocationCounter counter;
    EXPECT_TRUE(a.compareChartObjects(&b, d, *o));
    EXPECT_EQ(counter.Count(), 0);
  }
}

// Reads `bytes` into a frozen object: whether the read failed. A failed read
// must leave the object unfrozen with an empty snapshot.
bool ReadFailsCleanly(const std::string& bytes) {
  FreezableObject f;
  f.Freeze();
  if (Read(bytes, f)) return false;
  EXPECT_FALSE(f.IsFrozen());
  EXPECT_EQ(f.GetFrozenData(), FrozenChartData());
  return true;
}

TEST(FreezableObjectTest, TruncatedOrDamagedRecordsFailAndLeaveTheObjectUnfrozen) {
  LiveChart live;
  FreezableObject original;
  original.setChartObject(&live);
  original.Freeze();
  for (auto ver : {STREAM_VER_SAVE_CURRENT, STREAM_VER_SAVE_LEGACY}) {
    const std::string bytes = Save(original, ver);
    // Past the 5-byte stream header: every shorter record, every byte flipped
    // (a flip may still read, as another valid snapshot).
    for (std::size_t i = 5; i < bytes.size(); ++i) {
      SCOPED_TRACE(testing::Message() << "format " << ver << ", byte " << i);
      EXPECT_TRUE(ReadFailsCleanly(bytes.substr(0, i)));
      std::string damaged = bytes;
      damaged[i] = static_cast<char>(damaged[i] ^ 0xA5);
      ReadFailsCleanly(damaged);
    }
  }
}

TEST(FreezableObjectTest, HugeCountsInARecordFailWithoutAllocatingThem) {
  FreezableObject empty;
  empty.Freeze();
  std::string bytes = Save(empty, STREAM_VER_SAVE_LEGACY);
  // The last field is m_vecVarVecCases' count, the last four bytes.
  bytes.replace(bytes.size() - 5, 4, "\xFF\xFF\xFF\x7F", 4);
  FreezableObject f;
  EXPECT_FALSE(Read(bytes, f));
  EXPECT_FALSE(f.IsFrozen());
}

}  // namespace
}  // namespace qvsysbase
