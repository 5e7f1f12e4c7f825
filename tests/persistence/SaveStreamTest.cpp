#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

#include "StreamFuzzObjects.h"
#include "persistence/StreamTestSupport.h"
#include "qvsysbase/SaveStream.h"

namespace qvtest {
namespace {

void SaveRecord(SaveStream& s) {
  Named record("ns::A");
  record.SetVersionMajor(2);
  s << record;
}

// A node holding a leaf, then a leaf: nested end offsets are patched in place.
void SaveDocument(SaveStream& s) {
  s << *qvfuzz::MakeChain(1) << qvfuzz::Leaf(7, -1.5, "skipped", L"x");
}

constexpr const char* kOutOfRange = "!value doesn't fit in 32 bits";
// The open marker went out before the name was checked.
constexpr const char* kTooLong = "5b!length < MAX_CLASSNAME_SIZE in SaveStream";
constexpr const char* kDocument =
    // [ Node: name, versions 2.0, end 107
    "5b 0c 00 00 00 71 76 66 75 7a 7a 3a 3a 4e 6f 64 65 02 00 00 00 00 00 00 00 6b 00 00 00 "
    // [ Leaf: name, versions 1.1, end 95
    "5b 0c 00 00 00 71 76 66 75 7a 7a 3a 3a 4c 65 61 66 01 00 00 00 01 00 00 00 5f 00 00 00 "
    // 1, 0.5, "leaf1", L"\u00e9t\u00e9", ]
    "01 00 00 00 00 00 00 00 00 00 e0 3f 05 00 00 00 6c 65 61 66 31 06 00 00 00 e9 00 74 00 "
    "e9 00 5d "
    // no child, note "n]1", ]
    "00 00 00 00 03 00 00 00 6e 5d 31 5d "
    // [ Leaf: name, versions 1.1, end 166
    "5b 0c 00 00 00 71 76 66 75 7a 7a 3a 3a 4c 65 61 66 01 00 00 00 01 00 00 00 a6 00 00 00 "
    // 7, -1.5, "skipped", L"x", ]
    "07 00 00 00 00 00 00 00 00 00 f8 bf 07 00 00 00 73 6b 69 70 70 65 64 02 00 00 00 78 00 5d";

// Every header form, value image and record frame, written by a stream of
// versions 4.2; rows without a value show the header, others what follows it
// and, after "!", the text of what was thrown.
TEST(SaveStreamTest, GoldenImages) {
  const struct {
    const char* what;
    std::function<void(SaveStream&)> write;
    const char* hex;
    int ver = 0;
  } rows[] = {
      {"header 93", nullptr, "4f 39 33 04 02"},
      {"legacy mark ignores the versions", nullptr, "3a 01 01 00 00", 1},
      {"header 93 by number", nullptr, "4f 39 33 04 02", 2},
      {"unknown is current", nullptr, "4f 39 33 04 02", -7},
      {"true", [](SaveStream& s) { s << true; }, "01 00 00 00"},
      {"false", [](SaveStream& s) { s << false; }, "00 00 00 00"},
      {"char", [](SaveStream& s) { s << 'A'; }, "41"},
      {"wchar_t", [](SaveStream& s) { s << L'\u00e9'; }, "e9 00"},
      {"wchar_t beyond BMP", [](SaveStream& s) { s << wchar_t(0x1F600); }, "fd ff"},
      {"short", [](SaveStream& s) { s << short(-2); }, "fe ff"},
      {"ushort", [](SaveStream& s) { s << static_cast<unsigned short>(0x1234); }, "34 12"},
      {"int", [](SaveStream& s) { s << -2; }, "fe ff ff ff"},
      {"unsigned", [](SaveStream& s) { s << 0x12345678U; }, "78 56 34 12"},
      {"long", [](SaveStream& s) { s << -2L; }, "fe ff ff ff"},
      {"long min", [](SaveStream& s) { s << -2147483648L; }, "00 00 00 80"},
      {"long max", [](SaveStream& s) { s << std::numeric_limits<long>::max(); }, kOutOfRange},
      {"long below", [](SaveStream& s) { s << -2147483649L; }, kOutOfRange},
      {"unsigned long", [](SaveStream& s) { s << 0xFFFFFFFFUL; }, "ff ff ff ff"},
      {"unsigned long above", [](SaveStream& s) { s << 0x100000000UL; }, kOutOfRange},
      {"float", [](SaveStream& s) { s << 1.0F; }, "00 00 80 3f"},
      {"double", [](SaveStream& s) { s << -2.0; }, "00 00 00 00 00 00 00 c0"},
      {"long double", [](SaveStream& s) { s << 1.0L; }, "00 00 00 00 00 00 00 80 ff 3f"},
      {"const char*", [](SaveStream& s) { s << "ab"; }, "02 00 00 00 61 62"},
      {"string", [](SaveStream& s) { s << std::string("a\0b", 3); }, "03 00 00 00 61 00 62"},
      {"wstring", [](SaveStream& s) { s << std::wstring(L"ab"); }, "04 00 00 00 61 00 62 00"},
      {"pair", [](SaveStream& s) { s << std::wstring{L'\U0001F600'}; }, "04 00 00 00 3d d8 00 de"},
      {"wchar_t*", [](SaveStream& s) { s << L"ab"; }, "08 00 00 00 61 00 62 00 00 00 00 00"},
      {"empty wchar_t*", [](SaveStream& s) { s << L""; }, "00 00 00 00"},
      {"rec", SaveRecord, "5b 05 00 00 00 6e 73 3a 3a 41 02 00 00 00 01 00 00 00 1c 00 00 00 5d"},
      {"old rec", SaveRecord, "5b 05 00 00 00 6e 73 3a 3a 41 02 00 00 00 01 00 00 00 5d", 1},
      // Rows without bytes are only checked not to throw.
      {"name of 99", [](SaveStream& s) { s << Named(std::string(99, 'x')); }, nullptr},
      {"document", SaveDocument, kDocument},
      {"name of 100", [](SaveStream& s) { s << Named(std::string(100, 'x')); }, kTooLong},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    SaveStream out(4, 2);
    out.InitMemStream(static_cast<STREAM_VER_SAVE>(row.ver));
    std::string thrown;
    try {
      if (row.write) row.write(out);
    } catch (const std::out_of_range& e) {
      thrown = std::string("!") + e.what();
    } catch (const AssertionException& e) {
      thrown = "!" + e.getMessage() + " in " + e.getFile();
    }
    const std::string bytes = Bytes(out);
    const std::string hex = Hex(row.write ? bytes.substr(5) : bytes);
    EXPECT_EQ((row.hex ? hex : "") + thrown, row.hex ? row.hex : "");
  }
}

// A file stream flushes its buffer in blocks; a record that spans a flush must
// still get its end offset patched, and the file must equal the memory image.
TEST(SaveStreamTest, FileMatchesMemoryAcrossBufferFlushes) {
  const auto write = [](SaveStream& s) { s << Named("Big", 40000) << L"tail"; };  // 160 kB body
  const auto path = std::filesystem::temp_directory_path() / "qv_save_flush.qv";
  SaveStream file;
  file.InitFileStream(path.c_str());
  write(file);
  file.CloseStream();
  std::ifstream in(path, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), Write(write));
  std::filesystem::remove(path);
}

// good() is true while every write so far succeeded; the final flush counts. A
// file stream writes in blocks of 64 kB, so a failing device shows as soon as a
// block goes out, and a smaller stream when it is closed.
TEST(SaveStreamTest, FailedWritesShowInGood) {
  const TempPath file("good.qv");
  const std::string small(10, 'x'), big(200000, 'x');
  const struct {
    const char* what;
    const char* path;  // null for memory, "" for nothing opened
    const std::string& bytes;
    bool afterWrite, afterClose;
  } rows[] = {
      {"memory", nullptr, big, true, true},
      {"file", file.c_str(), big, true, true},
      {"never opened", "", small, false, false},
      {"full device, one block", "/dev/full", small, true, false},
      {"full device, many blocks", "/dev/full", big, false, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    SaveStream out;
    if (row.path == nullptr) out.InitMemStream();
    if (row.path != nullptr && *row.path != '\0') out.InitFileStream(row.path);
    out << row.bytes;
    EXPECT_EQ(out.good(), row.afterWrite);
    out.CloseStream();
    EXPECT_EQ(out.good(), row.afterClose);
    out << 1;  // lost: the stream is closed
    EXPECT_FALSE(out.good());
  }
}

}  // namespace
}  // namespace qvtest
