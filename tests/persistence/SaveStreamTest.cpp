#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>

#include "persistence/StreamTestSupport.h"
#include "qvsysbase/SaveStream.h"

namespace qvtest {
namespace {

TEST(SaveStreamTest, HeaderForms) {
  const struct {
    unsigned char major, minor;
    int ver;
    const char* hex;
  } rows[] = {{1, 1, 0, "4f 39 33 01 01"},
              {4, 2, 0, "4f 39 33 04 02"},
              {4, 2, 1, "3a 01 01 00 00"},  // the legacy mark ignores the versions
              {4, 2, 2, "4f 39 33 04 02"},
              {9, 8, -7, "4f 39 33 09 08"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.ver);
    SaveStream out(row.major, row.minor);
    out.InitMemStream(static_cast<STREAM_VER_SAVE>(row.ver));
    EXPECT_EQ(Hex(Bytes(out)), row.hex);
  }
  SaveStream byDefault;
  byDefault.InitMemStream();
  EXPECT_EQ(Bytes(byDefault), std::string("O93\x01\x01", 5));
}

TEST(SaveStreamTest, ValueImagesAreLittleEndianAndUnpadded) {
  const struct {
    const char* what;
    std::function<void(SaveStream&)> write;
    const char* hex;
  } rows[] = {
      {"true", [](SaveStream& s) { s << true; }, "01 00 00 00"},
      {"false", [](SaveStream& s) { s << false; }, "00 00 00 00"},
      {"char", [](SaveStream& s) { s << 'A'; }, "41"},
      {"wchar_t", [](SaveStream& s) { s << L'\u00e9'; }, "e9 00"},
      {"wchar_t beyond BMP", [](SaveStream& s) { s << static_cast<wchar_t>(0x1F600); }, "fd ff"},
      {"short", [](SaveStream& s) { s << static_cast<short>(-2); }, "fe ff"},
      {"unsigned short", [](SaveStream& s) { s << static_cast<unsigned short>(0x1234); }, "34 12"},
      {"int", [](SaveStream& s) { s << -2; }, "fe ff ff ff"},
      {"unsigned", [](SaveStream& s) { s << 0x12345678U; }, "78 56 34 12"},
      {"long", [](SaveStream& s) { s << -2L; }, "fe ff ff ff"},
      {"unsigned long", [](SaveStream& s) { s << 0xFFFFFFFFUL; }, "ff ff ff ff"},
      {"float", [](SaveStream& s) { s << 1.0F; }, "00 00 80 3f"},
      {"double", [](SaveStream& s) { s << -2.0; }, "00 00 00 00 00 00 00 c0"},
      {"long double", [](SaveStream& s) { s << 1.0L; }, "00 00 00 00 00 00 00 80 ff 3f"},
      {"const char*", [](SaveStream& s) { s << "ab"; }, "02 00 00 00 61 62"},
      {"string", [](SaveStream& s) { s << std::string("a\0b", 3); }, "03 00 00 00 61 00 62"},
      {"wstring", [](SaveStream& s) { s << std::wstring(L"ab"); }, "04 00 00 00 61 00 62 00"},
      {"wstring surrogates",
       [](SaveStream& s) { s << std::wstring(1, static_cast<wchar_t>(0x1F600)); },
       "04 00 00 00 3d d8 00 de"},
      {"const wchar_t*", [](SaveStream& s) { s << L"ab"; }, "08 00 00 00 61 00 62 00 00 00 00 00"},
      {"empty const wchar_t*", [](SaveStream& s) { s << L""; }, "00 00 00 00"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_EQ(Hex(Write(row.write).substr(5)), row.hex);
  }
}

TEST(SaveStreamTest, LongsBeyond32BitsAreRefusedAndNothingIsWritten) {
  SaveStream out;
  out.InitMemStream();
  ExpectThrowText<std::out_of_range>([&] { out << std::numeric_limits<long>::max(); },
                                     "value doesn't fit in 32 bits");
  ExpectThrowText<std::out_of_range>([&] { out << -2147483649L; }, "value doesn't fit in 32 bits");
  ExpectThrowText<std::out_of_range>([&] { out << 0x100000000UL; }, "value doesn't fit in 32 bits");
  out << -2147483648L;
  EXPECT_EQ(Hex(Bytes(out).substr(5)), "00 00 00 80");
}

TEST(SaveStreamTest, RecordFramesInBothFormats) {
  Named empty("ns::A");
  empty.SetVersionMajor(2);
  EXPECT_EQ(Hex(Write([&](SaveStream& s) { s << empty; }).substr(5)),
            "5b 05 00 00 00 6e 73 3a 3a 41 02 00 00 00 01 00 00 00 1c 00 00 00 5d");
  EXPECT_EQ(Hex(Write([&](SaveStream& s) { s << empty; }, STREAM_VER_SAVE_LEGACY).substr(5)),
            "5b 05 00 00 00 6e 73 3a 3a 41 02 00 00 00 01 00 00 00 5d");
}

TEST(SaveStreamTest, NestedEndOffsetsPointPastTheirOwnCloseMarkers) {
  Named inner("I", 2);
  Wrapper outer(inner);
  const std::string bytes = Write([&](SaveStream& s) { s << outer << 7; });
  // header 5 | [ len "qvtest::Wrapper"(15) major minor end | [ len "I" major minor end 2 ints ] | ]
  const std::size_t outerEndAt = 5 + 1 + 4 + 15 + 8;
  const std::size_t innerEndAt = outerEndAt + 4 + 1 + 4 + 1 + 8;
  const std::uint32_t innerEnd = DecodeAt(bytes, innerEndAt);
  const std::uint32_t outerEnd = DecodeAt(bytes, outerEndAt);
  EXPECT_EQ(innerEnd, innerEndAt + 4 + 8 + 1);
  EXPECT_EQ(outerEnd, innerEnd + 1);
  EXPECT_EQ(bytes[innerEnd - 1], ']');
  EXPECT_EQ(bytes[outerEnd - 1], ']');
  EXPECT_EQ(bytes.size(), outerEnd + 4);
}

TEST(SaveStreamTest, ClassNamesMustBeShorterThan100Bytes) {
  EXPECT_NO_THROW(Write([](SaveStream& s) { s << Named(std::string(99, 'x')); }));
  SaveStream out;
  out.InitMemStream();
  ExpectAssertion(
      [&] { out << Named(std::string(100, 'x')); }, "length < MAX_CLASSNAME_SIZE", "SaveStream");
  EXPECT_EQ(Bytes(out).substr(5), "[");  // the open marker went out first
}

TEST(SaveStreamTest, OpeningRules) {
  SaveStream out;
  out.InitMemStream();
  ExpectThrowText<std::logic_error>([&] { out.InitMemStream(); }, "Can't open existing stream");
  ExpectThrowText<std::logic_error>([&] { out.InitFileStream("x"); }, "Can't open existing stream");
  out.CloseStream();
  ExpectAssertion([&] { out.InitMemStream(); }, "m_StreamVer == UNDEFINED", "SaveStream");

  SaveStream file;
  ExpectThrowText<std::domain_error>([&] { file.InitFileStream("/nonexistent-dir/x.qv"); },
                                     "stream creation has failed...");
}

TEST(SaveStreamTest, GetStreamBufferByMedium) {
  int length = -5;
  SaveStream none;
  EXPECT_EQ(none.GetStreamBuffer(length), nullptr);
  EXPECT_EQ(length, -5);

  const auto path = std::filesystem::temp_directory_path() / "qv_save_buffer.qv";
  SaveStream file;
  file.InitFileStream(path.c_str());
  EXPECT_EQ(file.GetStreamBuffer(length), nullptr);
  EXPECT_EQ(length, -5);
  std::filesystem::remove(path);

  SaveStream mem;
  mem.InitMemStream();
  EXPECT_NE(mem.GetStreamBuffer(length), nullptr);
  EXPECT_EQ(length, 5);
  mem.CloseStream();
  ExpectThrowText<std::domain_error>([&] { mem.GetStreamBuffer(length); },
                                     "The stream buffer wasn't found");
}

// A file stream flushes its buffer in blocks; a record that spans a flush must
// still get its end offset patched, and the file must equal the memory image.
TEST(SaveStreamTest, FileMatchesMemoryAcrossBufferFlushes) {
  Named big("Big", 40000);  // 160 kB body: its placeholder is flushed before the patch
  Wrapper outer(big);
  const auto write = [&](SaveStream& s) { s << outer << L"tail"; };
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
