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

TEST(StreamObjectTest, ClassNamesAreTheDemangledDynamicType) {
  const ns::Chart chart;
  EXPECT_EQ(static_cast<const StreamObjectProt&>(chart).getClassName(), "ns::Chart");
  EXPECT_EQ(StreamObject2Skip().getClassName(), "qvsysbase::StreamObject2Skip");
}

// A refusal leaves the flag as it was; the skip placeholder accepts any name.
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
  for (const auto& row : rows) {
    bool accept = false, skipAccepts = false;
    ns::Chart().ProcessInvalidClassName(row.name, accept);
    StreamObject2Skip().ProcessInvalidClassName(row.name, skipAccepts);
    EXPECT_EQ(accept, row.accepted) << row.name;
    EXPECT_TRUE(skipAccepts) << row.name;
  }
  bool kept = true;
  ns::Chart().ProcessInvalidClassName("Grid", kept);
  EXPECT_TRUE(kept);
}

TEST(StreamObjectTest, StringRoundTrip) {
  ns::Chart written, read;
  written.m_dScale = 2.5;
  written.m_wstrTitle = L"Umsatz \u20ac";
  std::string text;
  written.WriteToString(text);
  EXPECT_EQ(text.substr(0, 5), std::string("O93\x01\x01", 5));
  EXPECT_TRUE(read.ReadFromString(text));
  EXPECT_EQ(read.m_dScale, 2.5);
  EXPECT_EQ(read.m_wstrTitle, written.m_wstrTitle);
  read.m_dScale = 7;
  EXPECT_FALSE(read.ReadFromString(""));
  EXPECT_EQ(read.m_dScale, 7);  // untouched
  written.m_dScale = -1;        // refused by Load
  written.WriteToString(text);
  EXPECT_FALSE(read.ReadFromString(text));
  ExpectThrowText<std::domain_error>([&] { read.ReadFromString("plain text"); },
                                     "non ORVEL stream");
}

}  // namespace
}  // namespace qvtest
