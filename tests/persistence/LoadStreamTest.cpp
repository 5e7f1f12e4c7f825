#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <tuple>

#include "StreamFuzzObjects.h"
#include "persistence/StreamTestSupport.h"
#include "qvsysbase/LoadStream.h"

namespace qvtest {
namespace {

using qvfuzz::Leaf;
using qvfuzz::Node;

constexpr const char* kPastRecordEnd =
    "((unsigned long)(std::streamoff)posCur) + size < ((unsigned long)m_EndPos)";

constexpr const char* kNonOrvel = "non ORVEL stream";
constexpr const char* kNotFound = "stream wasn't found...";

// Rejected headers leave nothing open: the stream can be opened again.
TEST(LoadStreamTest, HeaderForms) {
  const struct {
    std::string header;
    int version, major, minor;
  } rows[] = {{"O93\x02\x07", ORVEL_93, 2, 7},
              {"ORV\x05\x06", ORVEL_TAGGED, 5, 6},
              {std::string("\x3a\x01\x01\x00\x00", 5), ORVEL_LEGACY, 1, 1},
              {std::string("\x01\x00\x00\x00\x01", 5), ORVEL_OLDEST, 1, 1},
              {"ABC\x01\x01", ORVEL_REJECTED, 0, 0},
              {"ORx\x01\x01", ORVEL_REJECTED, 0, 0},
              {"O9", ORVEL_REJECTED, 0, 0},
              {"", ORVEL_REJECTED, 0, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(Hex(row.header));
    LoadStream in;
    const bool known = row.version != ORVEL_REJECTED;
    if (known) {
      in.InitMemStream(row.header);
      EXPECT_TRUE(in.good());
      EXPECT_EQ(in.GetStreamVerionMajor(), row.major);
      EXPECT_EQ(in.GetStreamVerionMinor(), row.minor);
    } else {
      ExpectThrowText<std::domain_error>([&] { in.InitMemStream(row.header); }, kNonOrvel);
    }
    EXPECT_EQ(in.GetStreamVersion(), row.version);
    if (known) in.CloseStream();
    EXPECT_NO_THROW(in.InitMemStream("O93\x01\x01"));
  }
}

TEST(LoadStreamTest, OpeningRules) {
  LoadStream in;
  SaveStream out;
  in.InitMemStream("ORV\x01\x01");
  out.InitMemStream();
  ExpectThrowText<std::logic_error>([&] { in.InitMemStream("ORV"); }, "Can't open existing stream");
  ExpectThrowText<std::logic_error>([&] { out.InitFileStream("x"); }, "Can't open existing stream");
  in.CloseStream();
  out.CloseStream();
  ExpectThrowText([&] { out.InitMemStream(); }, "m_StreamVer == UNDEFINED", "SaveStream");
  int length = -5;
  ExpectThrowText<std::domain_error>([&] { out.GetStreamBuffer(length); },
                                     "The stream buffer wasn't found");
  ExpectThrowText<std::domain_error>([&] { in.InitFileStream("/nonexistent/x"); },
                                     "stream wasn't found...");
  ExpectThrowText<std::domain_error>([&] { SaveStream().InitFileStream("/nonexistent/x"); },
                                     "stream creation has failed...");
}

// The values read back equal. Reads in records go through the same typed
// readers, checked there by the record and document tests.
template <typename... T>
void ExpectRoundTrip(const T&... values) {
  LoadStream in;
  in.InitMemStream(Write([&](SaveStream& s) { (s << ... << values); }, STREAM_VER_SAVE_LEGACY));
  std::tuple<T...> read;
  std::apply([&](auto&... x) { (in >> ... >> x); }, read);
  EXPECT_TRUE(in.good());
  EXPECT_TRUE(read == std::tie(values...));
}

TEST(LoadStreamTest, ValuesRoundTrip) {
  ExpectRoundTrip(true, 'q', L'\u20ac', short(-3), static_cast<unsigned short>(65535), -70000);
  ExpectRoundTrip(4000000000U, -2147483648L, 4294967295UL, 0.25F, -1e300, 1.0L / 3);
  ExpectRoundTrip(std::string("x\0]", 3), std::wstring(L"a\u00e9") + wchar_t(0x1F600));
}

TEST(LoadStreamTest, FailedStreamYieldsZeros) {
  LoadStream in;
  in.InitMemStream(Write([](SaveStream& s) { s << 5; }, STREAM_VER_SAVE_LEGACY));
  auto [i, d, str, wstr] = std::tuple(-1, -1.0, std::string("old"), std::wstring(L"old"));
  in >> i >> d;  // d is short: 8 bytes wanted, none left
  EXPECT_EQ(i, 5);
  EXPECT_FALSE(in.good());
  in >> i >> str >> wstr;
  EXPECT_TRUE(std::tie(i, d, str, wstr) == std::tuple(0, 0.0, "", L""));
}

// While Load runs the object carries the record's versions; afterwards its own,
// even when Load reads past the record's end and fails the assertion.
TEST(LoadStreamTest, RecordVersionsApplyDuringLoadOnly) {
  for (int reads : {1, 2}) {
    SCOPED_TRACE(reads);
    Named reader("N", 0, reads);
    reader.SetVersionMajor(3);
    LoadStream in;
    in.InitMemStream(Write([](SaveStream& s) { s << Named("N", 1); }));
    if (reads == 1) in >> reader;
    if (reads == 2) ExpectThrowText([&] { in >> reader; }, kPastRecordEnd, "LoadStream");
    EXPECT_EQ(reader.m_nLast, 0);
    EXPECT_EQ(reader.m_nSeenMajor, 1);
    EXPECT_EQ(reader.GetVersionMajor(), 3);
  }
  LoadStream top;  // top-level values of the current format lie in no record
  top.InitMemStream(Write([](SaveStream& s) { s << 5; }));
  int i = 0;
  ExpectThrowText([&] { top >> i; }, kPastRecordEnd, "LoadStream");
}

TEST(LoadStreamTest, LookAheadOnlyWithoutEndOffsets) {
  LoadStream in;
  in.InitMemStream("O93\x01\x01");
  const char* kCondition = "GetStreamVersion() < ORVEL_93";
  ExpectThrowText([&] { in.PutBack('x'); }, kCondition, "LoadStream");
  ExpectThrowText([&] { in.IsCloseMarker(']'); }, kCondition, "LoadStream");
}

// A record whose object reads less than its body: the current format seeks to
// the end offset, older formats scan to the next "]". The next record's body can
// be copied whole in the current format only; the skip placeholder steps over a
// record of any class.
TEST(LoadStreamTest, SkipsCopiesAndStepsOverRecords) {
  for (STREAM_VER_SAVE ver : {STREAM_VER_SAVE_CURRENT, STREAM_VER_SAVE_LEGACY}) {
    SCOPED_TRACE(ver);
    LoadStream in;
    in.InitMemStream(Write(
        [&](SaveStream& s) { s << Named("A", 3) << Named("C", 2) << Leaf() << Named("B", 1); },
        ver));
    Named a("A", 0, 1), b("B", 0, 1);
    StreamObject2Skip skip;
    std::string body = "old";
    in >> a;
    const bool copied = in.CopyCurrentStreamedObject(body);
    EXPECT_EQ(copied, ver == STREAM_VER_SAVE_CURRENT);
    EXPECT_EQ(Hex(body), copied ? "00 00 00 00 01 00 00 00" : "6f 6c 64");
    if (!copied) in >> skip;
    in >> skip >> b;
    EXPECT_TRUE(in.good());
    EXPECT_EQ(b.m_nLast, 0);
    EXPECT_EQ(skip.GetVersionMajor(), 0);
    EXPECT_FALSE(in.CopyCurrentStreamedObject(body));  // nothing left; body untouched
    EXPECT_EQ(body.size(), copied ? 8U : 3U);
  }
}

// One valid leaf record, damaged in each way the reader must survive: every row
// leaves the stream failed, never crashes, never allocates a hostile length.
TEST(LoadStreamTest, EveryDamageFailsTheStream) {
  // At 5: [ | name length | "qvfuzz::Leaf" | major | minor | end | 7 | 0.5 | "hello" | L"w" | ]
  constexpr std::size_t kName = 6, kEnd = 30, kBody = 34, kString = 46, kWide = 55;
  const std::string valid = Write([](SaveStream& s) { s << Leaf(7, 0.5, "hello", L"w"); });
  const struct {
    const char* what;
    Damage damage;
  } rows[] = {
      {"none", Cut(valid.size())},
      {"bad open marker", SetByte(5, 'x')},
      {"name length 0", Patch(kName, 0)},
      {"name length 100", Patch(kName, 100)},
      {"name length 2^31", Patch(kName, 0x80000000U)},
      {"other class", SetByte(10, 'G')},
      {"end before position", Patch(kEnd, 10)},
      {"end at position", Patch(kEnd, kBody)},
      {"end negative", Patch(kEnd, 0xFFFFFFF0U)},
      {"end beyond stream", Patch(kEnd, 1000)},
      {"end not after close marker", SetByte(valid.size() - 1, 'x')},
      {"refused data", Patch(kBody, 0xFFFFFFFFU)},
      {"string length 2^31", Patch(kString, 0x80000000U)},
      {"string over close marker", Patch(kString, 12)},
      {"wide length 2^31", Patch(kWide, 0x80000000U)},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    std::string bytes = valid;
    row.damage(bytes);
    LoadStream in;
    in.InitMemStream(bytes);
    Leaf leaf;
    EXPECT_EQ((in >> leaf).good(), std::string(row.what) == "none");
  }
}

// A record holding `depth` - 1 records nested inside it.
class Nest : public StreamObject {
 public:
  explicit Nest(int depth = 0) : m_nDepth(depth) {}
  std::string getClassName() const override { return "N"; }
  void Save(SaveStream& s) const override {
    s << (m_nDepth > 1);
    if (m_nDepth > 1) s << Nest(m_nDepth - 1);
  }
  bool Load(LoadStream& s) override {
    bool inner = false;
    Nest child;
    s >> inner;
    if (inner) s >> child;
    m_nDepth = 1 + child.m_nDepth;
    return true;
  }
  int m_nDepth;
};

// What the writer accepts the reader reads back. One level more the writer
// refuses before writing the record, and the reader fails on it (wrapped by
// hand around a legacy stream, whose records carry no end offsets).
TEST(LoadStreamTest, WriterAndReaderAgreeOnNesting) {
  for (STREAM_VER_SAVE ver : {STREAM_VER_SAVE_CURRENT, STREAM_VER_SAVE_LEGACY}) {
    SCOPED_TRACE(ver);
    SaveStream out;
    out.InitMemStream(ver);
    ExpectThrowText<std::logic_error>([&] { out << Nest(MAX_NESTING_DEPTH + 1); },
                                      "object records nest too deep");
    EXPECT_FALSE(out.good());
    LoadStream in;
    in.InitMemStream(Write([](SaveStream& s) { s << Nest(MAX_NESTING_DEPTH); }, ver));
    Nest read;
    EXPECT_TRUE((in >> read).good());
    EXPECT_EQ(read.m_nDepth, MAX_NESTING_DEPTH);
  }
  // "[", name N, versions 1.1, true; then the inner record and "]".
  const std::string outer("[\x01\0\0\0N\x01\0\0\0\x01\0\0\0\x01\0\0\0", 18);
  for (int inner : {MAX_NESTING_DEPTH - 1, MAX_NESTING_DEPTH}) {
    SCOPED_TRACE(inner + 1);
    const std::string bytes =
        Write([&](SaveStream& s) { s << Nest(inner); }, STREAM_VER_SAVE_LEGACY);
    LoadStream in;
    in.InitMemStream(bytes.substr(0, 5) + outer + bytes.substr(5) + "]");
    Nest read;
    EXPECT_EQ((in >> read).good(), inner < MAX_NESTING_DEPTH);
  }
}

// Opening by path: every way of finding no stream gives the same error and
// leaves nothing open, so the LoadStream can open another stream.
TEST(LoadStreamFileTest, EveryMissingStreamIsNotFound) {
  const TempPath dir("dir");
  std::filesystem::create_directory(dir.path());
  const struct {
    const char* what;
    std::function<void(LoadStream&)> open;
  } rows[] = {
      {"null path", [](LoadStream& in) { in.InitFileStream(static_cast<const char*>(nullptr)); }},
      {"null wide path",
       [](LoadStream& in) { in.InitFileStream(static_cast<const wchar_t*>(nullptr)); }},
      {"missing file", [&](LoadStream& in) { in.InitFileStream((dir.path() / "none").c_str()); }},
      {"directory", [&](LoadStream& in) { in.InitFileStream(dir.c_str()); }},
      // Opens, but reading its first bytes fails whoever reads it.
      {"read error", [](LoadStream& in) { in.InitFileStream("/proc/self/mem"); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    LoadStream in;
    ExpectThrowText<std::domain_error>([&] { row.open(in); }, kNotFound);
    EXPECT_FALSE(in.good());
    EXPECT_NO_THROW(in.InitMemStream("O93\x01\x01"));
  }
}

TEST(LoadStreamFileTest, UnreadableFileIsNotFound) {
  const TempPath file("unreadable");
  std::ofstream(file.path(), std::ios::binary) << "O93\x01\x01";
  std::filesystem::permissions(file.path(), std::filesystem::perms::none);
  if (::access(file.c_str(), R_OK) == 0) GTEST_SKIP() << "this process may read any file";
  LoadStream in;
  ExpectThrowText<std::domain_error>([&] { in.InitFileStream(file.c_str()); }, kNotFound);
}

// A stream read from a file reads as from memory.
TEST(LoadStreamFileTest, FileReadsLikeMemory) {
  const TempPath file("document");
  std::ofstream(file.path(), std::ios::binary) << qvfuzz::SeedStreams().front().second;
  LoadStream in;
  in.InitFileStream(file.c_str());
  Node node;
  Leaf skipped;
  EXPECT_TRUE((in >> node >> skipped).good());
  EXPECT_TRUE(node == *qvfuzz::MakeChain(1));
  EXPECT_EQ(skipped.m_strName, "skipped");
}

// Exits with 0 when opening `path` throws std::domain_error with `text`. Runs in
// a child whose address space may grow by 128 MB at most and which dies after
// 20 s, so a reader that reads without bound fails fast instead of exhausting
// the machine.
[[noreturn]] void OpenInBoundedChild(const char* path, const char* text) {
  ::alarm(20);
  long pages = 0;
  std::ifstream("/proc/self/statm") >> pages;
  const rlim_t room = static_cast<rlim_t>(pages) * ::sysconf(_SC_PAGESIZE) + (rlim_t{128} << 20);
  const rlimit limit{room, room};
  ::setrlimit(RLIMIT_AS, &limit);
  LoadStream in;
  try {
    in.InitFileStream(path);
  } catch (const std::domain_error& e) {
    std::_Exit(std::string(e.what()) == text ? 0 : 1);
  }
  std::_Exit(2);
}

// The header decides before the body is read, and no file takes more memory
// than a stream can hold: large sparse files cost no disk, an endless device
// never ends by itself.
TEST(LoadStreamFileDeathTest, MemoryIsBoundedByWhatAStreamCanHold) {
  const TempPath foreign("foreign"), huge("huge");
  std::ofstream(foreign.path(), std::ios::binary) << "ABCDE";
  std::filesystem::resize_file(foreign.path(), std::uintmax_t{256} << 20);
  std::ofstream(huge.path(), std::ios::binary) << "O93\x01\x01";
  std::filesystem::resize_file(huge.path(), std::uintmax_t{3} << 30);
  const struct {
    const char* what;
    const char* path;
    const char* text;
  } rows[] = {{"256 MB, foreign header", foreign.c_str(), kNonOrvel},
              {"endless device", "/dev/zero", kNonOrvel},
              {"3 GB, known header", huge.c_str(), kNotFound}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EXIT(OpenInBoundedChild(row.path, row.text), testing::ExitedWithCode(0), "");
  }
}

// The seeds of the fuzz target are valid streams of every header form; cut at
// every byte after the header, each either reads whole or fails, never crashes.
TEST(LoadStreamTruncationTest, EveryPrefixReadsWholeOrFails) {
  for (const auto& [name, bytes] : qvfuzz::SeedStreams()) {
    SCOPED_TRACE(name);
    const auto expected = qvfuzz::MakeChain(name.find("depth3") != std::string::npos ? 3 : 1);
    for (std::size_t size = 5; size <= bytes.size(); ++size) {
      LoadStream in;
      in.InitMemStream(bytes.substr(0, size));
      Node node;
      Leaf skipped;
      in >> node >> skipped;
      if (in.good()) {
        EXPECT_EQ(size, bytes.size());
        EXPECT_TRUE(node == *expected);
        EXPECT_EQ(skipped.m_strName, "skipped");
      }
    }
  }
}

// The committed seed corpus must stay what the current writer produces; set
// QV_UPDATE_CORPUS=1 to rewrite it after a deliberate format change.
TEST(LoadStreamTruncationTest, SeedCorpusIsCurrent) {
  const std::filesystem::path dir =
      std::filesystem::path(QV_SOURCE_DIR) / "fuzz/corpus/load_stream";
  const bool update = std::getenv("QV_UPDATE_CORPUS") != nullptr;
  for (const auto& [name, bytes] : qvfuzz::SeedStreams()) {
    SCOPED_TRACE(name);
    if (update) {
      std::filesystem::create_directories(dir);
      std::ofstream(dir / name, std::ios::binary) << bytes;
    }
    std::ifstream in(dir / name, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), bytes);
  }
}

}  // namespace
}  // namespace qvtest
