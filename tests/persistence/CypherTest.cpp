#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "persistence/StreamTestSupport.h"
#include "qvsysbase/Cypher.h"

// The heap watch: while armed, blocks of at least 64 bytes allocated through
// operator new[] are remembered, and when one is released its bytes are checked
// for anything but zero. The engine's tables are the only such blocks during a
// call, so this sees whether key material reaches the allocator.
namespace {
struct HeapWatch {
  bool armed = false;
  std::pair<unsigned char*, std::size_t> blocks[8] = {};
  int count = 0, released = 0, dirty = 0;
} g_watch;

void* Allocate(std::size_t n) noexcept {
  void* p = std::malloc(n == 0 ? 1 : n);
  if (p && g_watch.armed && n >= 64 && g_watch.count < 8)
    g_watch.blocks[g_watch.count++] = {static_cast<unsigned char*>(p), n};
  return p;
}
void* AllocateOrThrow(std::size_t n) {
  void* p = Allocate(n);
  return p != nullptr ? p : throw std::bad_alloc();
}
void Release(void* p) noexcept {
  for (int i = 0; g_watch.armed && i < g_watch.count; ++i) {
    const auto [block, size] = g_watch.blocks[i];
    if (block != p) continue;
    ++g_watch.released;
    g_watch.dirty += std::any_of(block, block + size, [](auto b) { return b != 0; });
  }
  std::free(p);
}
}  // namespace

// The tables are arrays; scalar allocations keep the runtime's own operators.
void* operator new[](std::size_t n) { return AllocateOrThrow(n); }
void* operator new[](std::size_t n, const std::nothrow_t&) noexcept { return Allocate(n); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }

namespace qvtest {
namespace {

using Block = std::vector<unsigned char>;

// `in` enciphered (or deciphered) into a buffer of `outSize` bytes preset to 0xEE.
Block Cipher(bool write, Block in, std::size_t outSize, Block key) {
  Block out(outSize, 0xEE);
  const auto cipher = write ? Cypher::Write : Cypher::Read;
  cipher(in.data(), unsigned(in.size()), key.data(), unsigned(key.size()), out.data());
  return out;
}

// A published block (halves big-endian) is in this cipher's order with each
// 4-byte half reversed.
Block FromHex(const std::string& hex, bool published = false) {
  Block bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
    bytes.push_back(std::stoul(hex.substr(i, 2), nullptr, 16));
  if (published) std::reverse(bytes.begin(), bytes.begin() + 4);
  if (published) std::reverse(bytes.begin() + 4, bytes.end());
  return bytes;
}

TEST(CypherTest, PublishedVectorsInThisByteOrder) {
  std::ifstream file(QV_TEST_DATA_DIR "/cipher/blowfish_ecb_vectors.txt");
  ASSERT_TRUE(file) << "missing known answers";
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    SCOPED_TRACE(line);
    std::string key, plain, cipher;
    std::istringstream(line) >> key >> plain >> cipher;
    const Block out = Cipher(true, FromHex(plain, true), 8, FromHex(key));
    EXPECT_EQ(out, FromHex(cipher, true));
    EXPECT_EQ(Cipher(false, out, 8, FromHex(key)), FromHex(plain, true));
  }
}

// Every length from 0 to 40, out of place and in place, against a model: the
// input zero-padded to whole blocks, each enciphered alone, except that 1 to 6
// bytes take the 8 source bytes as they stand. The byte after the output and
// the key stay untouched.
TEST(CypherTest, OutputIsTheInputPaddedAndEncipheredBlockByBlock) {
  const Block key = {'q', 'v', 's', 'y', 's'};
  Block source(48);
  for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<unsigned char>(7 * i + 1);
  for (unsigned length = 0; length <= 40; ++length) {
    SCOPED_TRACE(length);
    const std::size_t rounded = (length + 7) / 8 * 8;
    Block model(source.begin(), source.begin() + rounded), expected;
    if (length >= 7) std::fill(model.begin() + length, model.end(), 0);
    for (std::size_t at = 0; at < rounded; at += 8) {
      const Block out = Cipher(true, Block(model.begin() + at, model.begin() + at + 8), 8, key);
      expected.insert(expected.end(), out.begin(), out.end());
    }
    expected.push_back(0xEE);
    Block out(rounded + 1, 0xEE), inPlace = source, k = key;
    Cypher::Write(source.data(), length, k.data(), 5, out.data());
    EXPECT_EQ(out, expected);
    inPlace[rounded] = 0xEE;
    Cypher::Write(inPlace.data(), length, k.data(), 5, inPlace.data());
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), inPlace.begin()));
    Cypher::Read(inPlace.data(), static_cast<unsigned>(rounded), k.data(), 5, inPlace.data());
    model.push_back(0xEE);
    EXPECT_TRUE(std::equal(model.begin(), model.end(), inPlace.begin()));
    EXPECT_EQ(k, key);
  }
}

TEST(CypherTest, ZeroKeyLengthIsRejectedBeforeAnythingIsWritten) {
  for (auto run : {Cypher::Write, Cypher::Read}) {
    Block buffer(16, 9);
    unsigned char key = 1;
    ExpectThrowText(
        [&] { run(buffer.data(), 16, &key, 0, buffer.data()); }, "keyLength > 0", "Cypher");
    EXPECT_EQ(buffer, Block(16, 9));
  }
}

TEST(CypherTest, KeyTablesAreWipedBeforeTheyAreFreed) {
  g_watch = HeapWatch{.armed = true};  // the watch itself must see a block that holds data
  static void* volatile s_escaped;     // keeps the pair from being optimised away
  s_escaped = new unsigned char[72];
  std::memset(s_escaped, 1, 72);
  delete[] static_cast<unsigned char*>(s_escaped);
  g_watch.armed = false;
  EXPECT_EQ(g_watch.dirty, 1);
  for (bool write : {true, false}) {
    SCOPED_TRACE(write);
    Block buffer(24, 5);
    unsigned char key[] = {'s', 'e', 'c', 'r', 'e', 't'};
    g_watch = HeapWatch{.armed = true};
    (write ? Cypher::Write : Cypher::Read)(buffer.data(), 24, key, 6, buffer.data());
    g_watch.armed = false;
    EXPECT_EQ(g_watch.released, 2);  // the P-array and the S-boxes
    EXPECT_EQ(g_watch.dirty, 0);
  }
}

}  // namespace
}  // namespace qvtest
