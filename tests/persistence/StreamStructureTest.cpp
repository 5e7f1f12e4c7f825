#include <gtest/gtest.h>

#include <sstream>

#include "StreamFuzzObjects.h"
#include "persistence/StreamTestSupport.h"
#include "qvsysbase/StreamStructure.h"

namespace qvtest {
namespace {

// A stream is consistent unless an error is printed, and framed when its
// records are listed.
TEST(StreamStructureTest, PrintsTheRecordTreeOrWhyThereIsNone) {
  const struct {
    std::string bytes, printed;
  } rows[] = {
      {qvfuzz::SaveDocument(STREAM_VER_SAVE_CURRENT, 2),
       "header: O93 (stream version 4), major 3, minor 4\n"
       "record at 5: qvfuzz::Node version 2.0, end 209, body 174 bytes, depth 0\n"
       "  record at 34: qvfuzz::Leaf version 1.1, end 95, body 31 bytes, depth 1\n"
       "  record at 99: qvfuzz::Node version 2.0, end 201, body 72 bytes, depth 1\n"
       "    record at 128: qvfuzz::Leaf version 1.1, end 189, body 31 bytes, depth 2\n"
       "record at 209: qvfuzz::Leaf version 1.1, end 268, body 29 bytes, depth 0\n"},
      {qvfuzz::SaveDocument(STREAM_VER_SAVE_LEGACY, 2),
       "header: legacy (stream version 2), major 1, minor 1\n"
       "records carry no end offsets: they cannot be framed without knowing each class\n"},
      {"XYZ\x01\x01", "header: unknown\nerror at offset 0: non ORVEL stream: unknown header\n"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.printed);
    const StreamStructure result = ReadStreamStructure(row.bytes);
    EXPECT_EQ(result.consistent, row.printed.find("error at") == std::string::npos);
    EXPECT_EQ(result.framed, row.printed.find("record at") != std::string::npos);
    std::ostringstream printed;
    PrintStreamStructure(printed, result);
    EXPECT_EQ(printed.str(), row.printed);
  }
}

TEST(StreamStructureTest, ReportsTheFirstInconsistency) {
  const std::string valid = qvfuzz::SaveDocument(STREAM_VER_SAVE_CURRENT, 1);  // 166 bytes
  const struct {
    const char* what;
    Damage damage;
    std::uint64_t offset;
    const char* message;
  } rows[] = {
      {"bad marker", SetByte(5, 'x'), 5, "bad open marker 0x78"},
      {"name length", Patch(6, 100), 6, "class-name length 100 out of range 1..99"},
      {"header beyond stream", Cut(112), 112, "record header beyond the stream"},
      {"end before body", Patch(30, 20), 30, "end offset 20 out of range 35..166"},
      {"end beyond stream", Patch(30, 4000), 30, "end offset 4000 out of range 35..166"},
      {"truncated", Cut(150), 132, "end offset 166 out of range 137..150"},
      {"close marker", SetByte(106, 'x'), 106, "no close marker before end offset 107"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    std::string bytes = valid;
    row.damage(bytes);
    const StreamStructure result = ReadStreamStructure(bytes);
    EXPECT_FALSE(result.consistent);
    EXPECT_EQ(result.errorOffset, row.offset);
    EXPECT_EQ(result.error, row.message);
  }
}

}  // namespace
}  // namespace qvtest
