#include <gtest/gtest.h>

#include "persistence/StreamTestSupport.h"
#include "qvsysbase/StreamObject.h"

namespace ns {
// A class with a namespaced name, as the application's classes have.
class Chart : public qvsysbase::StreamObject {
 public:
  Chart() : StreamObject(3, 1) {}
  void Save(qvsysbase::SaveStream& s) const override { s << m_dScale << m_wstrTitle; }
  bool Load(qvsysbase::LoadStream& s) override {
    s >> m_dScale >> m_wstrTitle;
    return m_dScale > 0;
  }
  double m_dScale = 1;
  std::wstring m_wstrTitle;
};
}  // namespace ns

namespace qvtest {
namespace {

TEST(StreamObjectTest, VersionsOfNewAndCopiedObjects) {
  const Named named("N");
  EXPECT_EQ(named.GetVersionMajor(), 1);
  EXPECT_EQ(named.GetVersionMinor(), 1);
  const StreamObject2Skip skip;
  EXPECT_EQ(skip.GetVersionMajor(), 0);
  EXPECT_EQ(skip.GetVersionMinor(), 0);

  ns::Chart chart;
  chart.SetVersionMinor(9);
  ns::Chart copy(chart);
  EXPECT_EQ(copy.GetVersionMajor(), 3);
  EXPECT_EQ(copy.GetVersionMinor(), 9);
  Named assigned("M");
  assigned = Named("x");
  static_cast<StreamObject&>(assigned) = chart;
  EXPECT_EQ(assigned.GetVersionMinor(), 9);
  chart.SetVersionMinor(2);
  EXPECT_EQ(copy.GetVersionMinor(), 9);  // its own record
}

TEST(StreamObjectTest, ClassNamesAreTheDemangledDynamicType) {
  EXPECT_EQ(StreamObject2Skip().getClassName(), "qvsysbase::StreamObject2Skip");
  const ns::Chart chart;
  const StreamObjectProt& base = chart;
  EXPECT_EQ(base.getClassName(), "ns::Chart");
}

TEST(StreamObjectTest, ProcessInvalidClassNameAcceptsRelatedNames) {
  const struct {
    const char* name;
    bool accepted;
  } rows[] = {{"Chart", true},
              {"ns::ChartV2", true},
              {"MyStreamObject", true},
              {"ns::Chart", true},
              {"Grid", false},
              {"ns::Char", true},
              {"Cha rt", false}};
  const ns::Chart chart;
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    bool accept = false;
    chart.ProcessInvalidClassName(row.name, accept);
    EXPECT_EQ(accept, row.accepted);
    accept = true;  // a refusal leaves the flag as it was
    chart.ProcessInvalidClassName(row.name, accept);
    EXPECT_TRUE(accept);
  }
  bool accept = false;
  StreamObject2Skip().ProcessInvalidClassName("Grid", accept);
  EXPECT_TRUE(accept);
}

TEST(StreamObjectTest, StringRoundTrip) {
  ns::Chart written;
  written.m_dScale = 2.5;
  written.m_wstrTitle = L"Umsatz \u20ac";
  std::string text;
  written.WriteToString(text);
  EXPECT_EQ(text.substr(0, 5), std::string("O93\x01\x01", 5));

  ns::Chart read;
  EXPECT_TRUE(read.ReadFromString(text));
  EXPECT_EQ(read.m_dScale, 2.5);
  EXPECT_EQ(read.m_wstrTitle, written.m_wstrTitle);

  read.m_dScale = 7;
  EXPECT_FALSE(read.ReadFromString(""));
  EXPECT_EQ(read.m_dScale, 7);  // untouched
  EXPECT_FALSE(Named("Grid").ReadFromString(text));
  written.m_dScale = -1;  // refused by Load
  written.WriteToString(text);
  EXPECT_FALSE(read.ReadFromString(text));
  EXPECT_FALSE(read.ReadFromString(text.substr(0, text.size() - 1)));
  ExpectThrowText<std::domain_error>([&] { read.ReadFromString("plain text"); },
                                     "non ORVEL stream");
}

TEST(StreamObjectTest, SkipPlaceholderStepsOverUnknownRecords) {
  for (STREAM_VER_SAVE ver : {STREAM_VER_SAVE_CURRENT, STREAM_VER_SAVE_LEGACY}) {
    SCOPED_TRACE(ver);
    ns::Chart unknown;
    unknown.m_wstrTitle = L"not read";
    Named next("Next", 1);
    LoadStream in;
    in.InitMemStream(Write([&](SaveStream& s) { s << unknown << next; }, ver));
    StreamObject2Skip skip;
    Named read("Next");
    read.m_nReads = 1;
    in >> skip >> read;
    EXPECT_TRUE(in.good());
    EXPECT_EQ(read.m_nLast, 0);
    EXPECT_EQ(skip.GetVersionMajor(), 0);
  }
}

}  // namespace
}  // namespace qvtest
