#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
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
  struct Row {
    const char* key;
    const char* plain;
    const char* cipher;
  };
  // The variable-key set (8-byte keys) ...
  // clang-format off
  std::vector<Row> rows = {
      {"0000000000000000", "0000000000000000", "4EF997456198DD78"},
      {"FFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFF", "51866FD5B85ECB8A"},
      {"3000000000000000", "1000000000000001", "7D856F9A613063F2"},
      {"1111111111111111", "1111111111111111", "2466DD878B963C9D"},
      {"0123456789ABCDEF", "1111111111111111", "61F9C3802281B096"},
      {"1111111111111111", "0123456789ABCDEF", "7D0CC630AFDA1EC7"},
      {"FEDCBA9876543210", "0123456789ABCDEF", "0ACEAB0FC6A0A28D"},
      {"7CA110454A1A6E57", "01A1D6D039776742", "59C68245EB05282B"},
      {"0131D9619DC1376E", "5CD54CA83DEF57DA", "B1B8CC0B250F09A0"},
      {"07A1133E4A0B2686", "0248D43806F67172", "1730E5778BEA1DA4"},
      {"3849674C2602319E", "51454B582DDF440A", "A25E7856CF2651EB"},
      {"04B915BA43FEB5B6", "42FD443059577FA2", "353882B109CE8F1A"},
      {"0113B970FD34F2CE", "059B5E0851CF143A", "48F4D0884C379918"},
      {"0170F175468FB5E6", "0756D8E0774761D2", "432193B78951FC98"},
      {"43297FAD38E373FE", "762514B829BF486A", "13F04154D69D1AE5"},
      {"07A7137045DA2A16", "3BDD119049372802", "2EEDDA93FFD39C79"},
      {"04689104C2FD3B2F", "26955F6835AF609A", "D887E0393C2DA6E3"},
      {"37D06BB516CB7546", "164D5E404F275232", "5F99D04F5B163969"},
      {"1F08260D1AC2465E", "6B056E18759F5CCA", "4A057A3B24D3977B"},
      {"584023641ABA6176", "004BD6EF09176062", "452031C1E4FADA8E"},
      {"025816164629B007", "480D39006EE762F2", "7555AE39F59B87BD"},
      {"49793EBC79B3258F", "437540C8698F3CFA", "53C55F9CB49FC019"},
      {"4FB05E1515AB73A7", "072D43A077075292", "7A8E7BFA937E89A3"},
      {"49E95D6D4CA229BF", "02FE55778117F12A", "CF9C5D7A4986ADB5"},
      {"018310DC409B26D6", "1D9D5C5018F728C2", "D1ABB290658BC778"},
      {"1C587F1C13924FEF", "305532286D6F295A", "55CB3774D13EF201"},
      {"0101010101010101", "0123456789ABCDEF", "FA34EC4847B268B2"},
      {"1F1F1F1F0E0E0E0E", "0123456789ABCDEF", "A790795108EA3CAE"},
      {"E0FEE0FEF1FEF1FE", "0123456789ABCDEF", "C39E072D9FAC631D"},
      {"0000000000000000", "FFFFFFFFFFFFFFFF", "014933E0CDAFF6E4"},
      {"FFFFFFFFFFFFFFFF", "0000000000000000", "F21E9A77B71C49BC"},
      {"0123456789ABCDEF", "0000000000000000", "245946885754369A"},
      {"FEDCBA9876543210", "FFFFFFFFFFFFFFFF", "6B5C5A9C5D9E0A5A"},
  };
  // ... and the set-key set: one block under the first 1, 2, ..., 24 bytes of
  // one key, which exercises keys that wrap unevenly over the P-array.
  const std::string longKey = "F0E1D2C3B4A5968778695A4B3C2D1E0F0011223344556677";
  const char* setKeyCiphers[] = {
      "F9AD597C49DB005E", "E91D21C1D961A6D6", "E9C2B70A1BC65CF3", "BE1E639408640F05",
      "B39E44481BDB1E6E", "9457AA83B1928C0D", "8BB77032F960629D", "E87A244E2CC85E82",
      "15750E7A4F4EC577", "122BA70B3AB64AE0", "3A833C9AFFC537F6", "9409DA87A90F6BF2",
      "884F80625060B8B4", "1F85031C19E11968", "79D9373A714CA34F", "93142887EE3BE15C",
      "03429E838CE2D14B", "A4299E27469FF67B", "AFD5AED1C1BC96A8", "10851C0E3858DA9F",
      "E6F51ED79B9DB21F", "64A6E14AFD36B46F", "80C7D7D45A5479AD", "05044B62FA52D080"};
  // clang-format on
  std::vector<std::string> keys;  // keeps the prefixes alive
  for (std::size_t n = 1; n <= 24; ++n) keys.push_back(longKey.substr(0, 2 * n));
  for (std::size_t n = 0; n < 24; ++n) {
    rows.push_back({keys[n].c_str(), "FEDCBA9876543210", setKeyCiphers[n]});
  }

  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.key) + " " + row.plain);
    const Bytes cipher = Write(PublishedBlock(row.plain), 8, FromHex(row.key));
    EXPECT_EQ(cipher, PublishedBlock(row.cipher));
    EXPECT_EQ(Read(cipher, FromHex(row.key)), PublishedBlock(row.plain));
  }
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
