#include "BlowFish.h"

#include <cstring>
#include <utility>

#include "BlowFishTables.h"

namespace qvsysbase {

namespace {

using Word = std::uint32_t;

// Blocks enciphered side by side in bulk ECB work. One block is a chain of 16
// dependent table look-ups; interleaving independent blocks lets the processor
// overlap their latencies. Four keeps every half in a register on x86-64.
constexpr std::size_t kLanes = 4;

// The words of a block are little-endian, whatever the host's order.
Word ReadWord(const unsigned char* p) {
  return static_cast<Word>(p[0]) | static_cast<Word>(p[1]) << 8 | static_cast<Word>(p[2]) << 16 |
         static_cast<Word>(p[3]) << 24;
}

void WriteWord(unsigned char* p, Word w) {
  p[0] = static_cast<unsigned char>(w);
  p[1] = static_cast<unsigned char>(w >> 8);
  p[2] = static_cast<unsigned char>(w >> 16);
  p[3] = static_cast<unsigned char>(w >> 24);
}

// F(x) = ((S0[a] + S1[b]) XOR S2[c]) + S3[d], a the most significant byte of x.
inline Word F(const Word* s, Word x) {
  return ((s[x >> 24] + s[256 + ((x >> 16) & 0xFF)]) ^ s[512 + ((x >> 8) & 0xFF)]) +
         s[768 + (x & 0xFF)];
}

// One Feistel round for every lane: `to` takes the round key and F of `from`.
// The key is applied first so that only one XOR waits for F.
template <std::size_t N>
inline void Round(Word (&to)[N], const Word (&from)[N], Word key, const Word* s) {
#pragma GCC unroll 4
  for (std::size_t k = 0; k < N; ++k) to[k] = (to[k] ^ key) ^ F(s, from[k]);
}

// 16 rounds with the round keys p[first], p[first + step], ... (step +1 to
// encipher, -1 to decipher: deciphering is enciphering with the P-array
// reversed). The exchange of halves after each round is folded into
// alternating the roles of l and r; the final exchange is the swap at the end.
template <int Step, std::size_t N>
inline void Rounds(const Word* p, const Word* s, Word (&l)[N], Word (&r)[N]) {
  constexpr int first = Step > 0 ? 0 : 17;
#pragma GCC unroll 4
  for (std::size_t k = 0; k < N; ++k) l[k] ^= p[first];
#pragma GCC unroll 8
  for (int i = 1; i < 17; i += 2) {
    Round(r, l, p[first + Step * i], s);
    Round(l, r, p[first + Step * (i + 1)], s);
  }
#pragma GCC unroll 4
  for (std::size_t k = 0; k < N; ++k) {
    r[k] ^= p[first + Step * 17];
    std::swap(l[k], r[k]);
  }
}

// ECB over whole blocks, kLanes at a time, then one at a time.
template <int Step>
void ProcessBlocks(const Word* p, const Word* s, const unsigned char* in, unsigned char* out,
                   std::size_t blocks) {
  std::size_t b = 0;
  for (; b + kLanes <= blocks; b += kLanes) {
    Word l[kLanes], r[kLanes];
    for (std::size_t k = 0; k < kLanes; ++k) {
      l[k] = ReadWord(in + CBlowFish::kBlockSize * (b + k));
      r[k] = ReadWord(in + CBlowFish::kBlockSize * (b + k) + 4);
    }
    Rounds<Step>(p, s, l, r);
    for (std::size_t k = 0; k < kLanes; ++k) {
      WriteWord(out + CBlowFish::kBlockSize * (b + k), l[k]);
      WriteWord(out + CBlowFish::kBlockSize * (b + k) + 4, r[k]);
    }
  }
  for (; b < blocks; ++b) {
    Word l[1] = {ReadWord(in + CBlowFish::kBlockSize * b)};
    Word r[1] = {ReadWord(in + CBlowFish::kBlockSize * b + 4)};
    Rounds<Step>(p, s, l, r);
    WriteWord(out + CBlowFish::kBlockSize * b, l[0]);
    WriteWord(out + CBlowFish::kBlockSize * b + 4, r[0]);
  }
}

// Overwrites key material. A plain memset before the memory is freed is a dead
// store the optimiser may drop; the empty asm claims to read the memory, so the
// zeros must really be written.
void WipeWords(Word* p, std::size_t words) {
  std::memset(p, 0, words * sizeof(Word));
#if defined(__GNUC__) || defined(__clang__)
  __asm__ __volatile__("" : : "r"(p) : "memory");
#else
  volatile Word* v = p;
  for (std::size_t i = 0; i < words; ++i) v[i] = 0;
#endif
}

}  // namespace

CBlowFish::CBlowFish() : m_pPArray(new Word[kPArrayWords]), m_pSBoxes(nullptr) {
  try {
    m_pSBoxes = new Word[kSBoxWords];
  } catch (...) {
    delete[] m_pPArray;
    throw;
  }
}

CBlowFish::~CBlowFish() {
  WipeWords(m_pPArray, kPArrayWords);
  WipeWords(m_pSBoxes, kSBoxWords);
  delete[] m_pPArray;
  delete[] m_pSBoxes;
}

void CBlowFish::Initialize(const unsigned char* key, std::size_t keyLength) {
  static_assert(sizeof(detail::kInitialP) == kPArrayWords * sizeof(Word));
  static_assert(sizeof(detail::kInitialS) == kSBoxWords * sizeof(Word));
  std::memcpy(m_pPArray, detail::kInitialP, sizeof(detail::kInitialP));
  std::memcpy(m_pSBoxes, detail::kInitialS, sizeof(detail::kInitialS));

  // Each P-array word takes the next four key bytes, first byte most
  // significant, wrapping round the key as often as needed.
  std::size_t j = 0;
  for (std::size_t i = 0; i < kPArrayWords; ++i) {
    Word w = 0;
    for (int n = 0; n < 4; ++n) {
      w = w << 8 | key[j];
      if (++j == keyLength) j = 0;
    }
    m_pPArray[i] ^= w;
  }

  // Chain encipherments from the zero block; each result replaces the next two
  // table words, P-array first, then the S-boxes in order.
  Word l[1] = {0}, r[1] = {0};
  for (Word* table : {m_pPArray, m_pSBoxes}) {
    const std::size_t words = table == m_pPArray ? kPArrayWords : kSBoxWords;
    for (std::size_t i = 0; i < words; i += 2) {
      Rounds<+1>(m_pPArray, m_pSBoxes, l, r);
      table[i] = l[0];
      table[i + 1] = r[0];
    }
  }
}

void CBlowFish::Encode(const unsigned char* in, unsigned char* out, std::size_t blocks) const {
  ProcessBlocks<+1>(m_pPArray, m_pSBoxes, in, out, blocks);
}

void CBlowFish::Decode(const unsigned char* in, unsigned char* out, std::size_t blocks) const {
  ProcessBlocks<-1>(m_pPArray, m_pSBoxes, in, out, blocks);
}

}  // namespace qvsysbase
