#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "qvsysbase/Cypher.h"
#include "qvsysbase/qvExcept.h"

// The heap watch: while armed, blocks of at least kWatchedSize bytes allocated
// through operator new are remembered, and when one is released its bytes are
// checked for anything but zero. The engine's tables are the only such blocks
// during a call, so this sees whether key material reaches the allocator.
namespace {
constexpr std::size_t kWatchedSize = 64;
constexpr int kMaxWatched = 8;
struct HeapWatch {
  bool armed = false;
  void* blocks[kMaxWatched] = {};
  std::size_t sizes[kMaxWatched] = {};
  int count = 0, released = 0, dirty = 0;
} g_watch;

void* Allocate(std::size_t n) {
  void* p = std::malloc(n == 0 ? 1 : n);
  if (p == nullptr) throw std::bad_alloc();
  if (g_watch.armed && n >= kWatchedSize && g_watch.count < kMaxWatched) {
    g_watch.blocks[g_watch.count] = p;
    g_watch.sizes[g_watch.count++] = n;
  }
  return p;
}

void Release(void* p) noexcept {
  for (int i = 0; g_watch.armed && i < g_watch.count; ++i) {
    if (g_watch.blocks[i] != p) continue;
    const auto* bytes = static_cast<const unsigned char*>(p);
    bool clean = true;
    for (std::size_t k = 0; k < g_watch.sizes[i]; ++k) clean = clean && bytes[k] == 0;
    ++g_watch.released;
    if (!clean) ++g_watch.dirty;
  }
  std::free(p);
}
}  // namespace

void* operator new(std::size_t n) { return Allocate(n); }
void* operator new[](std::size_t n) { return Allocate(n); }
void* operator new(std::size_t n, const std::nothrow_t&) noexcept {
  try {
    return Allocate(n);
  } catch (...) {
    return nullptr;
  }
}
void* operator new[](std::size_t n, const std::nothrow_t& t) noexcept { return operator new(n, t); }
void operator delete(void* p) noexcept { Release(p); }
void operator delete[](void* p) noexcept { Release(p); }
void operator delete(void* p, std::size_t) noexcept { Release(p); }
void operator delete[](void* p, std::size_t) noexcept { Release(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { Release(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { Release(p); }

namespace qvsysbase {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes FromHex(const std::string& hex) {
  Bytes bytes;
  for (std::size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes.push_back(static_cast<unsigned char>(std::stoul(hex.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

// A published block (halves big-endian) in this cipher's order: each 4-byte
// half reversed.
Bytes PublishedBlock(const std::string& hex) {
  Bytes block = FromHex(hex);
  std::reverse(block.begin(), block.begin() + 4);
  std::reverse(block.begin() + 4, block.end());
  return block;
}

Bytes Write(Bytes in, std::size_t outSize, Bytes key) {
  Bytes out(outSize, 0xEE);
  Cypher::Write(in.data(),
                static_cast<unsigned>(in.size()),
                key.data(),
                static_cast<unsigned>(key.size()),
                out.data());
  return out;
}

Bytes Read(Bytes in, Bytes key) {
  Bytes out(in.size(), 0xEE);
  Cypher::Read(in.data(),
               static_cast<unsigned>(in.size()),
               key.data(),
               static_cast<unsigned>(key.size()),
               out.data());
  return out;
}

TEST(CypherTest, PublishedVectorsInThisByteOrder) {
  std::ifstream file(QV_TEST_DATA_DIR "/cipher/blowfish_ecb_vectors.txt");
  ASSERT_TRUE(file) << "missing known answers";
  int rows = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.empty() || line[0] == '#') continue;
    SCOPED_TRACE(line);
    std::istringstream fields(line);
    std::string key, plain, cipher;
    fields >> key >> plain >> cipher;
    const Bytes out = Write(PublishedBlock(plain), 8, FromHex(key));
    EXPECT_EQ(out, PublishedBlock(cipher));
    EXPECT_EQ(Read(out, FromHex(key)), PublishedBlock(plain));
    ++rows;
  }
  EXPECT_EQ(rows, 33 + 24);
}

// Every length from 0 to 40, out of place and in place, against a model: the
// input zero-padded to a whole block and enciphered whole, except that 1 to 6
// bytes take the 8 source bytes as they stand.
TEST(CypherTest, OutputIsTheInputPaddedAndEncipheredBlockByBlock) {
  const Bytes key = {'q', 'v', 's', 'y', 's'};
  Bytes source(48);
  for (std::size_t i = 0; i < source.size(); ++i) source[i] = static_cast<unsigned char>(7 * i + 1);
  for (unsigned length = 0; length <= 40; ++length) {
    SCOPED_TRACE(length);
    const std::size_t rounded = (length + 7) / 8 * 8;
    Bytes model(source.begin(), source.begin() + rounded);
    if (length >= 7) std::fill(model.begin() + length, model.end(), 0);
    Bytes expected = Write(model, rounded, key);
    expected.push_back(0xEE);  // the byte after the output stays untouched

    Bytes out(rounded + 1, 0xEE);
    Bytes in = source;
    Bytes k = key;
    Cypher::Write(in.data(), length, k.data(), 5, out.data());
    EXPECT_EQ(out, expected);

    Bytes inPlace = source;
    inPlace[rounded] = 0xEE;
    Cypher::Write(inPlace.data(), length, k.data(), 5, inPlace.data());
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), inPlace.begin()));

    Cypher::Read(inPlace.data(), static_cast<unsigned>(rounded), k.data(), 5, inPlace.data());
    model.push_back(0xEE);
    EXPECT_TRUE(std::equal(model.begin(), model.end(), inPlace.begin()));
    EXPECT_EQ(k, key);  // the key is only read
  }
}

TEST(CypherTest, BlocksAreIndependentAndKeysWrapCyclically) {
  const Bytes block = {1, 2, 3, 4, 5, 6, 7, 8};
  Bytes twice = block;
  twice.insert(twice.end(), block.begin(), block.end());
  const Bytes out = Write(twice, 16, {42});
  EXPECT_TRUE(std::equal(out.begin(), out.begin() + 8, out.begin() + 8));
  EXPECT_EQ(Write(twice, 16, {42}), out);
  EXPECT_NE(Write(twice, 16, {43}), out);
  // A one-byte key repeats over every P-array word, as does any key of that
  // byte alone; 72 bytes fill the P-array exactly, 73 wrap once.
  for (std::size_t n : {2, 4, 5, 72, 73}) {
    SCOPED_TRACE(n);
    EXPECT_EQ(Write(twice, 16, Bytes(n, 42)), out);
  }
}

TEST(CypherTest, ZeroKeyLengthIsRejectedBeforeAnythingIsWritten) {
  Bytes buffer(16, 9);
  unsigned char key = 1;
  for (bool write : {true, false}) {
    SCOPED_TRACE(write);
    try {
      if (write) {
        Cypher::Write(buffer.data(), 16, &key, 0, buffer.data());
      } else {
        Cypher::Read(buffer.data(), 16, &key, 0, buffer.data());
      }
      FAIL() << "no assertion";
    } catch (const AssertionException& e) {
      EXPECT_EQ(e.getMessage(), "keyLength > 0");
      EXPECT_EQ(e.getFile(), "Cypher");
    }
    EXPECT_EQ(buffer, Bytes(16, 9));
  }
  EXPECT_EQ(Write(buffer, 16, {1}).size(), 16u);  // still usable afterwards
}

TEST(CypherTest, KeyTablesAreWipedBeforeTheyAreFreed) {
  // The watch itself must see a block that still holds data.
  g_watch = HeapWatch{};
  g_watch.armed = true;
  static void* volatile s_escaped;  // keeps the pair from being optimised away
  s_escaped = ::operator new(18 * sizeof(std::uint32_t));
  std::memset(s_escaped, 1, 18 * sizeof(std::uint32_t));
  ::operator delete(s_escaped);
  g_watch.armed = false;
  EXPECT_EQ(g_watch.dirty, 1);

  for (bool write : {true, false}) {
    SCOPED_TRACE(write);
    Bytes buffer(24, 5);
    unsigned char key[] = {'s', 'e', 'c', 'r', 'e', 't'};
    g_watch = HeapWatch{};
    g_watch.armed = true;
    if (write) {
      Cypher::Write(buffer.data(), 24, key, 6, buffer.data());
    } else {
      Cypher::Read(buffer.data(), 24, key, 6, buffer.data());
    }
    g_watch.armed = false;
    EXPECT_EQ(g_watch.released, 2);  // the P-array and the S-boxes
    EXPECT_EQ(g_watch.dirty, 0);
  }
}

}  // namespace
}  // namespace qvsysbase
