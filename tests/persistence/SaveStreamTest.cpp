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

// Every header form, value image and record frame, written by a stream of
// versions 4.2; rows without a value show the header, others what follows it
// and, after "!", the text of what was thrown.
TEST(SaveStreamTest, GoldenImages) {
  const struct {
    const char* what;
    int ver;
    std::function<void(SaveStream&)> write;
    const char* hex;
  } rows[] = {
      {"header 93", 0, nullptr, "4f 39 33 04 02"},
      {"legacy mark ignores the versions", 1, nullptr, "3a 01 01 00 00"},
      {"header 93 by number", 2, nullptr, "4f 39 33 04 02"},
      {"unknown is current", -7, nullptr, "4f 39 33 04 02"},
      {"true", 0, [](SaveStream& s) { s << true; }, "01 00 00 00"},
      {"false", 0, [](SaveStream& s) { s << false; }, "00 00 00 00"},
      {"char", 0, [](SaveStream& s) { s << 'A'; }, "41"},
      {"wchar_t", 0, [](SaveStream& s) { s << L'\u00e9'; }, "e9 00"},
      {"wchar_t beyond BMP", 0, [](SaveStream& s) { s << wchar_t(0x1F600); }, "fd ff"},
      {"short", 0, [](SaveStream& s) { s << short(-2); }, "fe ff"},
      {"ushort", 0, [](SaveStream& s) { s << static_cast<unsigned short>(0x1234); }, "34 12"},
      {"int", 0, [](SaveStream& s) { s << -2; }, "fe ff ff ff"},
      {"unsigned", 0, [](SaveStream& s) { s << 0x12345678U; }, "78 56 34 12"},
      {"long", 0, [](SaveStream& s) { s << -2L; }, "fe ff ff ff"},
      {"long min", 0, [](SaveStream& s) { s << -2147483648L; }, "00 00 00 80"},
      {"long max", 0, [](SaveStream& s) { s << std::numeric_limits<long>::max(); }, kOutOfRange},
      {"long below", 0, [](SaveStream& s) { s << -2147483649L; }, kOutOfRange},
      {"unsigned long", 0, [](SaveStream& s) { s << 0xFFFFFFFFUL; }, "ff ff ff ff"},
      {"unsigned long above", 0, [](SaveStream& s) { s << 0x100000000UL; }, kOutOfRange},
      {"float", 0, [](SaveStream& s) { s << 1.0F; }, "00 00 80 3f"},
      {"double", 0, [](SaveStream& s) { s << -2.0; }, "00 00 00 00 00 00 00 c0"},
      {"long double", 0, [](SaveStream& s) { s << 1.0L; }, "00 00 00 00 00 00 00 80 ff 3f"},
      {"const char*", 0, [](SaveStream& s) { s << "ab"; }, "02 00 00 00 61 62"},
      {"string", 0, [](SaveStream& s) { s << std::string("a\0b", 3); }, "03 00 00 00 61 00 62"},
      {"wstring", 0, [](SaveStream& s) { s << std::wstring(L"ab"); }, "04 00 00 00 61 00 62 00"},
      {"surrogates",
       0,
       [](SaveStream& s) { s << std::wstring(1, wchar_t(0x1F600)); },
       "04 00 00 00 3d d8 00 de"},
      {"wchar_t*", 0, [](SaveStream& s) { s << L"ab"; }, "08 00 00 00 61 00 62 00 00 00 00 00"},
      {"empty wchar_t*", 0, [](SaveStream& s) { s << L""; }, "00 00 00 00"},
      {"rec",
       0,
       SaveRecord,
       "5b 05 00 00 00 6e 73 3a 3a 41 02 00 00 00 01 00 00 00 1c 00 00 00 5d"},
      {"old rec", 1, SaveRecord, "5b 05 00 00 00 6e 73 3a 3a 41 02 00 00 00 01 00 00 00 5d"},
      {"name of 99",
       0,
       [](SaveStream& s) { s << Named(std::string(99, 'x')); },
       nullptr},  // only checked not to throw
      {"name of 100",
       0,
       [](SaveStream& s) { s << Named(std::string(100, 'x')); },
       "5b!length < MAX_CLASSNAME_SIZE in SaveStream"},  // the open marker went out first
      {"document",
       0,
       SaveDocument,
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
       "07 00 00 00 00 00 00 00 00 00 f8 bf 07 00 00 00 73 6b 69 70 70 65 64 02 00 00 00 78 00 5d"},
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

TEST(SaveStreamTest, OpeningAndBufferRules) {
  SaveStream out;
  out.InitMemStream();
  ExpectThrowText<std::logic_error>([&] { out.InitFileStream("x"); }, "Can't open existing stream");
  out.CloseStream();
  int length = -5;
  ExpectThrowText<std::domain_error>([&] { out.GetStreamBuffer(length); },
                                     "The stream buffer wasn't found");
  ExpectThrowText([&] { out.InitMemStream(); }, "m_StreamVer == UNDEFINED", "SaveStream");
  ExpectThrowText<std::domain_error>([&] { SaveStream().InitFileStream("/nonexistent/x"); },
                                     "stream creation has failed...");
}

// A file stream flushes its buffer in blocks; a record that spans a flush must
// still get its end offset patched, and the file must equal the memory image.
TEST(SaveStreamTest, FileMatchesMemoryAcrossBufferFlushes) {
  const auto write = [](SaveStream& s) { s << Named("Big", 40000) << L"tail"; };  // 160 kB body
  const auto path = std::filesystem::temp_directory_path() / "qv_save_flush.qv";
  {
    SaveStream file;
    file.InitFileStream(path.c_str());
    write(file);
  }
  std::ifstream in(path, std::ios::binary);
  const std::string onDisk((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  std::filesystem::remove(path);
  EXPECT_EQ(onDisk, Write(write));
}

}  // namespace
}  // namespace qvtest
