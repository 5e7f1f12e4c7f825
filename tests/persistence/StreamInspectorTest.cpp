#include <gtest/gtest.h>

#include <sstream>

#include "StreamFuzzObjects.h"
#include "persistence/StreamTestSupport.h"
#include "qvsysbase/StreamInspector.h"

namespace qvtest {
namespace {

std::string Printed(const StreamInspection& inspection) {
  std::ostringstream os;
  PrintStreamInspection(os, inspection);
  return os.str();
}

TEST(StreamInspectorTest, PrintsTheRecordTree) {
  const StreamInspection result = InspectStream(qvfuzz::SaveDocument(STREAM_VER_SAVE_CURRENT, 2));
  EXPECT_TRUE(result.consistent);
  EXPECT_EQ(Printed(result),
            "header: O93 (stream version 4), major 3, minor 4\n"
            "record at 5: qvfuzz::Node version 2.0, end 209, body 174 bytes, depth 0\n"
            "  record at 34: qvfuzz::Leaf version 1.1, end 95, body 31 bytes, depth 1\n"
            "  record at 99: qvfuzz::Node version 2.0, end 201, body 72 bytes, depth 1\n"
            "    record at 128: qvfuzz::Leaf version 1.1, end 189, body 31 bytes, depth 2\n"
            "record at 209: qvfuzz::Leaf version 1.1, end 268, body 29 bytes, depth 0\n");
}

TEST(StreamInspectorTest, StreamsWithoutEndOffsetsStopAfterTheHeader) {
  const StreamInspection legacy = InspectStream(qvfuzz::SaveDocument(STREAM_VER_SAVE_LEGACY, 2));
  EXPECT_TRUE(legacy.consistent);
  EXPECT_FALSE(legacy.framed);
  EXPECT_EQ(Printed(legacy),
            "header: legacy (stream version 2), major 1, minor 1\n"
            "records carry no end offsets: they cannot be framed without knowing each class\n");
  const StreamInspection unknown = InspectStream("XYZ\x01\x01");
  EXPECT_FALSE(unknown.consistent);
  EXPECT_EQ(Printed(unknown),
            "header: unknown\nerror at offset 0: non ORVEL stream: unknown header\n");
}

TEST(StreamInspectorTest, ReportsTheFirstInconsistency) {
  const std::string valid = qvfuzz::SaveDocument(STREAM_VER_SAVE_CURRENT, 1);  // 166 bytes
  const struct {
    const char* what;
    std::function<void(std::string&)> damage;
    std::uint64_t offset;
    const char* message;
  } rows[] = {
      {"bad marker", [](std::string& b) { b[5] = 'x'; }, 5, "bad open marker 0x78"},
      {"name length",
       [](std::string& b) { PatchU32(b, 6, 100); },
       6,
       "class-name length 100 out of range 1..99"},
      {"header beyond stream",
       [](std::string& b) { b = Truncate(b, 112); },
       112,
       "record header beyond the stream"},
      {"end before body",
       [](std::string& b) { PatchU32(b, 30, 20); },
       30,
       "end offset 20 out of range 35..166"},
      {"end beyond stream",
       [](std::string& b) { PatchU32(b, 30, 4000); },
       30,
       "end offset 4000 out of range 35..166"},
      {"truncated",
       [](std::string& b) { b = Truncate(b, 150); },
       132,
       "end offset 166 out of range 137..150"},
      {"close marker",
       [](std::string& b) { b[106] = 'x'; },
       106,
       "no close marker before end offset 107"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    std::string bytes = valid;
    row.damage(bytes);
    const StreamInspection result = InspectStream(bytes);
    EXPECT_FALSE(result.consistent);
    EXPECT_EQ(result.errorOffset, row.offset);
    EXPECT_EQ(result.error, row.message);
  }
}

}  // namespace
}  // namespace qvtest
