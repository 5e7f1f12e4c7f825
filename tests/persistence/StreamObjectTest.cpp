#include <gtest/gtest.h>

#include "StreamFuzzObjects.h"
#include "persistence/StreamTestSupport.h"
#include "qvsysbase/StreamObject.h"

namespace qvtest {
namespace {

// Class names are the demangled dynamic type. A refusal leaves the flag as it
// was; the skip placeholder accepts any name.
TEST(StreamObjectTest, ClassNamesAndRelatedNames) {
  const struct {
    const char* name;
    bool accepted;
  } rows[] = {{"Leaf", true},
              {"qvfuzz::LeafV2", true},
              {"MyStreamObject", true},
              {"qvfuzz::Leaf", true},
              {"Grid", false},
              {"qvfuzz::Lea", true},
              {"Le af", false}};
  for (const auto& row : rows) {
    bool accept = false, skipAccepts = false;
    qvfuzz::Leaf().ProcessInvalidClassName(row.name, accept);
    StreamObject2Skip().ProcessInvalidClassName(row.name, skipAccepts);
    EXPECT_EQ(accept, row.accepted) << row.name;
    EXPECT_TRUE(skipAccepts) << row.name;
  }
  bool kept = true;
  qvfuzz::Leaf().ProcessInvalidClassName("Grid", kept);
  EXPECT_TRUE(kept);
  EXPECT_EQ(static_cast<const StreamObjectProt&>(qvfuzz::Leaf()).getClassName(), "qvfuzz::Leaf");
  EXPECT_EQ(StreamObject2Skip().getClassName(), "qvsysbase::StreamObject2Skip");
}

// A leaf refuses a negative count.
TEST(StreamObjectTest, StringRoundTrip) {
  qvfuzz::Leaf written(2, 2.5, "n", L"Umsatz \u20ac"), read;
  std::string text;
  written.WriteToString(text);
  EXPECT_EQ(text.substr(0, 5), std::string("O93\x01\x01", 5));
  EXPECT_TRUE(read.ReadFromString(text));
  EXPECT_TRUE(read == written);
  EXPECT_FALSE(read.ReadFromString(""));
  EXPECT_TRUE(read == written);  // untouched
  written.m_nCount = -1;
  written.WriteToString(text);
  EXPECT_FALSE(read.ReadFromString(text));
  ExpectThrowText<std::domain_error>([&] { read.ReadFromString("plain text"); },
                                     "non ORVEL stream");
}

}  // namespace
}  // namespace qvtest
