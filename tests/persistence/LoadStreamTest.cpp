#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "StreamFuzzObjects.h"
#include "persistence/StreamTestSupport.h"
#include "qvsysbase/LoadStream.h"

namespace qvtest {
namespace {

using qvfuzz::Leaf;
using qvfuzz::Node;

TEST(LoadStreamTest, HeaderForms) {
  const struct {
    std::string header;
    int version, major, minor;
  } rows[] = {{"O93\x02\x07", ORVEL_93, 2, 7},
              {"ORV\x05\x06", ORVEL_TAGGED, 5, 6},
              {std::string("\x3a\x01\x01\x00\x00", 5), ORVEL_LEGACY, 1, 1},
              {std::string("\x01\x00\x00\x00\x01", 5), ORVEL_OLDEST, 1, 1}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.version);
    LoadStream in;
    in.InitMemStream(row.header);
    EXPECT_EQ(in.GetStreamVersion(), row.version);
    EXPECT_EQ(in.GetStreamVerionMajor(), row.major);
    EXPECT_EQ(in.GetStreamVerionMinor(), row.minor);
    EXPECT_TRUE(in.good());
  }
}

TEST(LoadStreamTest, UnknownOrShortHeadersAreRejectedAndLeaveNothingOpen) {
  for (const std::string data : {"ABC\x01\x01", "O9", "", "ORx\x01\x01"}) {
    SCOPED_TRACE(Hex(data));
    LoadStream in;
    ExpectThrowText<std::domain_error>([&] { in.InitMemStream(data); }, "non ORVEL stream");
    EXPECT_EQ(in.GetStreamVersion(), ORVEL_REJECTED);
    EXPECT_FALSE(in.good());
    EXPECT_NO_THROW(in.InitMemStream("O93\x01\x01"));  // nothing was held
  }
}

TEST(LoadStreamTest, OpeningRules) {
  LoadStream in;
  EXPECT_FALSE(in.good());
  in.InitMemStream("O93\x01\x01");
  ExpectThrowText<std::logic_error>([&] { in.InitMemStream("O93\x01\x01"); },
                                    "Can't open existing stream");
  in.CloseStream();
  EXPECT_FALSE(in.good());
  ExpectThrowText<std::domain_error>([&] { in.InitFileStream("/nonexistent/x.qv"); },
                                     "stream wasn't found...");

  const auto path = std::filesystem::temp_directory_path() / "qv_load_wide.qv";
  {
    SaveStream out(6, 9);
    out.InitFileStream(path.c_str());
  }
  LoadStream wide;
  wide.InitFileStream(path.wstring().c_str());
  EXPECT_EQ(wide.GetStreamVerionMajor(), 6);
  std::filesystem::remove(path);
}

// Every value type, read back inside a record of the current format and at the
// top level of a legacy stream.
class AllValues : public StreamObject {
 public:
  void Save(SaveStream& s) const override {
    s << b << c << w << sh << us << i << u << l << ul << f << d << ld << str << wstr;
  }
  bool Load(LoadStream& s) override {
    s >> b >> c >> w >> sh >> us >> i >> u >> l >> ul >> f >> d >> ld >> str >> wstr;
    return true;
  }
  bool b = true;
  char c = 'q';
  wchar_t w = L'\u20ac';
  short sh = -3;
  unsigned short us = 65535;
  int i = -70000;
  unsigned u = 4000000000U;
  long l = -2147483648L;
  unsigned long ul = 4294967295UL;
  float f = 0.25F;
  double d = -1e300;
  long double ld = 1.0L / 3;
  std::string str = std::string("x\0]", 3);
  std::wstring wstr = std::wstring(L"a\u00e9") + static_cast<wchar_t>(0x1F600);
};

TEST(LoadStreamTest, ValuesRoundTrip) {
  const AllValues written;
  for (STREAM_VER_SAVE ver : {STREAM_VER_SAVE_CURRENT, STREAM_VER_SAVE_LEGACY}) {
    SCOPED_TRACE(ver);
    LoadStream in;
    in.InitMemStream(Write([&](SaveStream& s) { s << written; }, ver));
    AllValues read;
    read.b = false;
    read.str.clear();
    in >> read;
    ASSERT_TRUE(in.good());
    EXPECT_EQ(read.b, written.b);
    EXPECT_EQ(read.c, written.c);
    EXPECT_EQ(read.w, written.w);
    EXPECT_EQ(read.sh, written.sh);
    EXPECT_EQ(read.us, written.us);
    EXPECT_EQ(read.i, written.i);
    EXPECT_EQ(read.u, written.u);
    EXPECT_EQ(read.l, written.l);
    EXPECT_EQ(read.ul, written.ul);
    EXPECT_EQ(read.f, written.f);
    EXPECT_EQ(read.d, written.d);
    EXPECT_EQ(read.ld, written.ld);
    EXPECT_EQ(read.str, written.str);
    EXPECT_EQ(read.wstr, written.wstr);
  }
}

TEST(LoadStreamTest, FailedStreamYieldsZeros) {
  LoadStream in;
  in.InitMemStream(Write([](SaveStream& s) { s << 5; }, STREAM_VER_SAVE_LEGACY));
  int i = -1;
  double d = -1;
  std::string str = "old";
  std::wstring wstr = L"old";
  in >> i;
  EXPECT_EQ(i, 5);
  in >> d;  // short: 8 bytes wanted, none left
  EXPECT_FALSE(in.good());
  in >> i >> str >> wstr;
  EXPECT_EQ(i, 0);
  EXPECT_EQ(d, 0);
  EXPECT_EQ(str, "");
  EXPECT_EQ(wstr, L"");
}

TEST(LoadStreamTest, CurrentFormatConfinesValuesToTheRecord) {
  const char* kCondition =
      "((unsigned long)(std::streamoff)posCur) + size < ((unsigned long)m_EndPos)";
  LoadStream top;
  top.InitMemStream(Write([](SaveStream& s) { s << 5; }));
  int i = 0;
  ExpectAssertion([&] { top >> i; }, kCondition, "LoadStream");

  Named writer("N", 1);
  Named reader("N");
  reader.m_nReads = 2;  // one more than the record holds
  LoadStream in;
  in.InitMemStream(Write([&](SaveStream& s) { s << writer; }));
  ExpectAssertion([&] { in >> reader; }, kCondition, "LoadStream");
  EXPECT_EQ(reader.GetVersionMajor(), 1);  // restored even so
}

TEST(LoadStreamTest, LookAheadOnlyWithoutEndOffsets) {
  LoadStream current;
  current.InitMemStream("O93\x01\x01");
  ExpectAssertion([&] { current.PutBack('x'); }, "GetStreamVersion() < ORVEL_93", "LoadStream");
  ExpectAssertion(
      [&] { current.IsCloseMarker(']'); }, "GetStreamVersion() < ORVEL_93", "LoadStream");

  LoadStream legacy;
  legacy.InitMemStream(Write([](SaveStream& s) { s << 'x' << ']'; }, STREAM_VER_SAVE_LEGACY));
  char c = 0;
  legacy >> c;
  legacy.PutBack(c);
  legacy >> c >> c;
  EXPECT_TRUE(legacy.IsCloseMarker(c));
  EXPECT_FALSE(legacy.IsCloseMarker('x'));
  legacy.PutBack('z');  // not the byte just read
  EXPECT_FALSE(legacy.good());
}

// A record whose object reads less than its body: the current format seeks to
// the end offset; older formats scan to the next "]", so the next record is read
// correctly as long as the unread rest holds no 0x5D.
TEST(LoadStreamTest, SkipsTheUnreadRestOfARecord) {
  for (STREAM_VER_SAVE ver : {STREAM_VER_SAVE_CURRENT, STREAM_VER_SAVE_LEGACY}) {
    SCOPED_TRACE(ver);
    Named first("A", 3);
    Named second("B", 1);
    LoadStream in;
    in.InitMemStream(Write([&](SaveStream& s) { s << first << second; }, ver));
    Named a("A");
    Named b("B");
    a.m_nReads = 1;
    b.m_nReads = 1;
    in >> a >> b;
    EXPECT_TRUE(in.good());
    EXPECT_EQ(a.m_nLast, 0);
    EXPECT_EQ(b.m_nLast, 0);
  }
  // In a legacy stream a 0x5D among the unread bytes ends the skip early.
  Named withMarker("A", 2);  // ints 0 and 1 ...
  LoadStream legacy;
  legacy.InitMemStream(
      Write([&](SaveStream& s) { s << withMarker << ']' << 'z'; }, STREAM_VER_SAVE_LEGACY));
  Named a("A");
  legacy >> a;
  char c = 0;
  legacy >> c;
  EXPECT_EQ(c, ']');
}

TEST(LoadStreamTest, RecordVersionsDuringLoadOwnVersionsAfter) {
  Named old("N");
  old.SetVersionMajor(1);
  Named current("N");
  current.SetVersionMajor(3);
  LoadStream in;
  in.InitMemStream(Write([&](SaveStream& s) { s << old; }));
  in >> current;
  EXPECT_TRUE(in.good());
  EXPECT_EQ(current.m_nSeenMajor, 1);
  EXPECT_EQ(current.GetVersionMajor(), 3);
}

TEST(LoadStreamTest, CopyCurrentStreamedObjectTakesTheBody) {
  Named first("A", 2);
  Named second("B", 1);
  LoadStream in;
  in.InitMemStream(Write([&](SaveStream& s) { s << first << second; }));
  std::string body = "old";
  ASSERT_TRUE(in.CopyCurrentStreamedObject(body));
  EXPECT_EQ(Hex(body), "00 00 00 00 01 00 00 00");
  Named b("B");
  b.m_nReads = 1;
  in >> b;
  EXPECT_TRUE(in.good());
  EXPECT_FALSE(in.CopyCurrentStreamedObject(body));  // nothing left: fails
  EXPECT_EQ(Hex(body), "00 00 00 00 01 00 00 00");   // untouched

  LoadStream legacy;
  legacy.InitMemStream(Write([&](SaveStream& s) { s << first; }, STREAM_VER_SAVE_LEGACY));
  EXPECT_FALSE(legacy.CopyCurrentStreamedObject(body));
  Named a("A");
  legacy >> a;  // nothing was read
  EXPECT_TRUE(legacy.good());
}

// One valid current-format document, damaged in each way the reader must
// survive; every row must leave the stream failed, never crash or allocate big.
class DamagedStreamTest : public ::testing::Test {
 protected:
  // At offset 5: [ | length 1 | "A" | major | minor | end | int 7 | string "hello" | ]
  static constexpr std::size_t kNameLength = 6, kEnd = 19, kBody = 23, kString = 27;
  static std::string Valid() {
    StringHolder holder;
    return Write([&](SaveStream& s) { s << holder; });
  }
  struct StringHolder : StreamObject {
    std::string getClassName() const override { return "A"; }
    void Save(SaveStream& s) const override { s << 7 << std::string("hello"); }
    bool Load(LoadStream& s) override {
      s >> n >> text;
      return true;
    }
    int n = 0;
    std::string text;
  };
  static bool Reads(const std::string& bytes) {
    LoadStream in;
    in.InitMemStream(bytes);
    StringHolder holder;
    in >> holder;
    return in.good();
  }
};

TEST_F(DamagedStreamTest, EveryDamageFailsTheStream) {
  ASSERT_TRUE(Reads(Valid()));
  const struct {
    const char* what;
    std::function<void(std::string&)> damage;
  } rows[] = {
      {"bad open marker", [](std::string& b) { FlipByte(b, 5); }},
      {"name length 0", [](std::string& b) { PatchU32(b, kNameLength, 0); }},
      {"name length 100", [](std::string& b) { PatchU32(b, kNameLength, 100); }},
      {"name length 2^31", [](std::string& b) { PatchU32(b, kNameLength, 0x80000000U); }},
      {"other class", [](std::string& b) { b[10] = 'G'; }},
      {"end before position", [](std::string& b) { PatchU32(b, kEnd, 10); }},
      {"end at position", [](std::string& b) { PatchU32(b, kEnd, kBody); }},
      {"end negative", [](std::string& b) { PatchU32(b, kEnd, 0xFFFFFFF0U); }},
      {"end beyond stream", [](std::string& b) { PatchU32(b, kEnd, 1000); }},
      {"end not after close marker", [](std::string& b) { FlipByte(b, b.size() - 1); }},
      {"string length 2^31", [](std::string& b) { PatchU32(b, kString, 0x80000000U); }},
      {"string length beyond record", [](std::string& b) { PatchU32(b, kString, 6); }},
      {"truncated body", [](std::string& b) { b = Truncate(b, kString + 2); }},
      {"truncated header", [](std::string& b) { b = Truncate(b, 8); }},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    std::string bytes = Valid();
    row.damage(bytes);
    EXPECT_FALSE(Reads(bytes));
  }
}

TEST_F(DamagedStreamTest, RefusedDataAndWrongClassFailTheStream) {
  Named refusing("A");
  refusing.m_bAccept = false;
  LoadStream in;
  in.InitMemStream(Valid());
  in >> refusing;
  EXPECT_FALSE(in.good());

  // A wrong class fails the header and leaves the object's versions alone.
  Named grid("Grid");
  LoadStream legacy;
  legacy.InitMemStream(Write([](SaveStream& s) { s << Named("A"); }, STREAM_VER_SAVE_LEGACY));
  legacy >> grid;
  EXPECT_FALSE(legacy.good());
  EXPECT_EQ(grid.GetVersionMajor(), 1);
}

TEST_F(DamagedStreamTest, NestingDepthIsBounded) {
  // 300 nested open records of a class that accepts anything and nests again.
  struct Deep : StreamObject2Skip {
    bool Load(LoadStream& s) override {
      Deep inner;
      s >> inner;
      return true;
    }
  };
  std::string bytes("ORV\x01\x01", 5);
  for (int i = 0; i < 300; ++i) bytes += std::string("[\x01\x00\x00\x00X\0\0\0\0\0\0\0\0", 14);
  LoadStream in;
  in.InitMemStream(bytes);
  Deep deep;
  in >> deep;
  EXPECT_FALSE(in.good());
}

// The seeds of the fuzz target are valid streams of every header form; cut at
// every byte, each either reads whole or fails, and never crashes.
TEST(LoadStreamTruncationTest, EveryPrefixReadsWholeOrFails) {
  for (const auto& [name, bytes] : qvfuzz::SeedStreams()) {
    SCOPED_TRACE(name);
    const auto expected = qvfuzz::MakeChain(name.find("depth3") != std::string::npos ? 3 : 1);
    for (std::size_t size = 0; size <= bytes.size(); ++size) {
      LoadStream in;
      try {
        in.InitMemStream(Truncate(bytes, size));
      } catch (const std::domain_error&) {
        EXPECT_LT(size, 5U);
        continue;
      }
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

constexpr const char* kGoldenDocument =
    // header O93 3.4
    "4f 39 33 03 04 "
    // [ Node: name, versions 2.0, end 107
    "5b 0c 00 00 00 71 76 66 75 7a 7a 3a 3a 4e 6f 64 65 02 00 00 00 00 00 00 00 6b 00 00 00 "
    // [ Leaf: name, versions 1.1, end 95
    "5b 0c 00 00 00 71 76 66 75 7a 7a 3a 3a 4c 65 61 66 01 00 00 00 01 00 00 00 5f 00 00 00 "
    // 1, 0.5, "leaf1", L"\u00e9t\u00e9", ]
    "01 00 00 00 00 00 00 00 00 00 e0 3f 05 00 00 00 6c 65 61 66 31 06 00 00 00 e9 00 74 00 e9 00 "
    "5d "
    // no child, note "n]1", ]
    "00 00 00 00 03 00 00 00 6e 5d 31 5d "
    // [ Leaf: name, versions 1.1, end 166
    "5b 0c 00 00 00 71 76 66 75 7a 7a 3a 3a 4c 65 61 66 01 00 00 00 01 00 00 00 a6 00 00 00 "
    // 7, -1.5, "skipped", L"x", ]
    "07 00 00 00 00 00 00 00 00 00 f8 bf 07 00 00 00 73 6b 69 70 70 65 64 02 00 00 00 78 00 5d";

// The bytes of a small saved document, pinned: a node holding a leaf, then a
// leaf, in the current format with versions 3.4.
TEST(LoadStreamGoldenTest, SmallDocument) {
  const std::string bytes = qvfuzz::SaveDocument(STREAM_VER_SAVE_CURRENT, 1);
  EXPECT_EQ(Hex(bytes), kGoldenDocument);
}

}  // namespace
}  // namespace qvtest
