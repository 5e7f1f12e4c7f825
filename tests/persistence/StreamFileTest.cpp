#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "persistence/StreamFile.h"
#include "persistence/StreamTestSupport.h"

namespace qvtest {
namespace {

using qvsysbase::streamfile::InputFile;

// The rest of a file is read up to the limit and no further, whether its size
// is known (a regular file) or not (a pipe, a device).
TEST(StreamFileTest, RestIsReadUpToTheLimit) {
  const TempPath file("rest");
  const std::string content(100000, 'r');
  std::ofstream(file.path(), std::ios::binary) << content;
  int fds[2] = {-1, -1};
  ASSERT_EQ(::pipe(fds), 0);
  ASSERT_EQ(::write(fds[1], content.data(), 60000), 60000);  // fits the pipe's buffer
  ::close(fds[1]);
  const std::string pipe = "/dev/fd/" + std::to_string(fds[0]);
  const struct {
    const char* what;
    const char* path;
    std::size_t limit;
    bool whole;
    std::size_t size;  // of what was read; for a refusal at most this
  } rows[] = {
      {"file, limit at its size", file.c_str(), 100000, true, 100000},
      {"file, limit below", file.c_str(), 99999, false, 5},
      {"pipe, limit at its size", pipe.c_str(), 60000, true, 60000},
      {"endless device", "/dev/zero", 1000000, false, 1000001},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    InputFile in(row.path);
    std::string read;
    ASSERT_TRUE(in.IsOpen());
    ASSERT_TRUE(in.Read(read, 5));
    EXPECT_EQ(in.ReadRest(read, row.limit), row.whole);
    if (row.whole) {
      EXPECT_EQ(read, content.substr(0, row.size));
    } else {
      EXPECT_LE(read.size(), row.size);
    }
  }
  ::close(fds[0]);
}

}  // namespace
}  // namespace qvtest
