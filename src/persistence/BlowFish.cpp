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

// How F gets the index of its second S-box, bits 16..23 of its argument. The
// key schedule is one chain of 8,336 rounds, so its speed is the latency of a
// round; the other three indices take one instruction each (a shift, a high-
// byte or a low-byte move), this one takes a shift and a mask.
struct ShiftAndMask {
  static std::size_t SecondByte(Word x) { return (x >> 16) & 0xFF; }
};

#if (defined(__GNUC__) || defined(__clang__)) && defined(__x86_64__)
#define QV_BLOWFISH_HAS_BEXTR 1
// BMI1's bit-field extract does it in one instruction: a cycle off every round.
// Written as assembly because the compilers never choose it themselves.
struct BitFieldExtract {
  static std::size_t SecondByte(Word x) {
    constexpr Word kField = 8 << 8 | 16;  // length 8, start 16
    Word index;
    __asm__("bextr %2, %1, %0" : "=r"(index) : "r"(x), "r"(kField));
    return index;
  }
};

bool HasBitFieldExtract() {
  __builtin_cpu_init();  // may run before the run-time library's own initialiser
  return __builtin_cpu_supports("bmi");
}
#endif

// F(x) = ((S0[a] + S1[b]) XOR S2[c]) + S3[d], a the most significant byte of x.
// Indices are size_t so that each S-box offset folds into the address.
template <class Extract>
inline Word F(const Word* s, Word x) {
  const Word* s1 = s + 256;
  const Word* s2 = s + 512;
  const Word* s3 = s + 768;
  return ((s[x >> 24] + s1[Extract::SecondByte(x)]) ^ s2[std::size_t{(x >> 8) & 0xFF}]) +
         s3[std::size_t{x & 0xFF}];
}

// One Feistel round for every lane: `to` takes the round key and F of `from`.
// The key is applied first so that only one XOR waits for F.
template <class Extract, std::size_t N>
inline void Round(Word (&to)[N], const Word (&from)[N], Word key, const Word* s) {
#pragma GCC unroll 4
  for (std::size_t k = 0; k < N; ++k) to[k] = (to[k] ^ key) ^ F<Extract>(s, from[k]);
}

// 16 rounds with the round keys p[first], p[first + step], ... (step +1 to
// encipher, -1 to decipher: deciphering is enciphering with the P-array
// reversed). The exchange of halves after each round is folded into
// alternating the roles of l and r; the final exchange is the swap at the end.
template <int Step, class Extract, std::size_t N>
inline void Rounds(const Word* p, const Word* s, Word (&l)[N], Word (&r)[N]) {
  constexpr int first = Step > 0 ? 0 : 17;
#pragma GCC unroll 4
  for (std::size_t k = 0; k < N; ++k) l[k] ^= p[first];
#pragma GCC unroll 8
  for (int i = 1; i < 17; i += 2) {
    Round<Extract>(r, l, p[first + Step * i], s);
    Round<Extract>(l, r, p[first + Step * (i + 1)], s);
  }
#pragma GCC unroll 4
  for (std::size_t k = 0; k < N; ++k) {
    r[k] ^= p[first + Step * 17];
    std::swap(l[k], r[k]);
  }
}

// ECB over whole blocks, kLanes at a time, then one at a time.
template <int Step, class Extract>
void ProcessBlocks(const Word* p, const Word* s, const unsigned char* in, unsigned char* out,
                   std::size_t blocks) {
  constexpr std::size_t kBlock = CBlowFish::kBlockSize;
  std::size_t b = 0;
  for (; b + kLanes <= blocks; b += kLanes) {
    Word l[kLanes], r[kLanes];
    for (std::size_t k = 0; k < kLanes; ++k) {
      l[k] = ReadWord(in + kBlock * (b + k));
      r[k] = ReadWord(in + kBlock * (b + k) + 4);
    }
    Rounds<Step, Extract>(p, s, l, r);
    for (std::size_t k = 0; k < kLanes; ++k) {
      WriteWord(out + kBlock * (b + k), l[k]);
      WriteWord(out + kBlock * (b + k) + 4, r[k]);
    }
  }
  for (; b < blocks; ++b) {
    Word l[1] = {ReadWord(in + kBlock * b)};
    Word r[1] = {ReadWord(in + kBlock * b + 4)};
    Rounds<Step, Extract>(p, s, l, r);
    WriteWord(out + kBlock * b, l[0]);
    WriteWord(out + kBlock * b + 4, r[0]);
  }
}

template <int Step>
void Process(const Word* p, const Word* s, const unsigned char* in, unsigned char* out,
             std::size_t blocks) {
#ifdef QV_BLOWFISH_HAS_BEXTR
  if (HasBitFieldExtract()) return ProcessBlocks<Step, BitFieldExtract>(p, s, in, out, blocks);
#endif
  ProcessBlocks<Step, ShiftAndMask>(p, s, in, out, blocks);
}

// Each P-array word takes the next four key bytes, first byte most
// significant, wrapping round the key as often as needed.
void MixKeyIntoPArray(Word* p, const unsigned char* key, std::size_t keyLength) {
  std::size_t j = 0;
  for (std::size_t i = 0; i < CBlowFish::kPArrayWords; ++i) {
    Word w = 0;
    for (int n = 0; n < 4; ++n) {
      w = w << 8 | key[j];
      if (++j == keyLength) j = 0;  // no division: this runs 72 times per key
    }
    p[i] ^= w;
  }
}

// Chains encipherments from the zero block; each result replaces the next two
// table words, P-array first, then the S-boxes in order.
template <class Extract>
void ReplaceTables(Word* p, Word* s) {
  Word l[1] = {0}, r[1] = {0};
  for (std::size_t i = 0; i < CBlowFish::kPArrayWords; i += 2) {
    Rounds<+1, Extract>(p, s, l, r);
    p[i] = l[0];
    p[i + 1] = r[0];
  }
  for (std::size_t i = 0; i < CBlowFish::kSBoxWords; i += 2) {
    Rounds<+1, Extract>(p, s, l, r);
    s[i] = l[0];
    s[i + 1] = r[0];
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
  MixKeyIntoPArray(m_pPArray, key, keyLength);
#ifdef QV_BLOWFISH_HAS_BEXTR
  if (HasBitFieldExtract()) return ReplaceTables<BitFieldExtract>(m_pPArray, m_pSBoxes);
#endif
  ReplaceTables<ShiftAndMask>(m_pPArray, m_pSBoxes);
}

void CBlowFish::Encode(const unsigned char* in, unsigned char* out, std::size_t blocks) const {
  Process<+1>(m_pPArray, m_pSBoxes, in, out, blocks);
}

void CBlowFish::Decode(const unsigned char* in, unsigned char* out, std::size_t blocks) const {
  Process<-1>(m_pPArray, m_pSBoxes, in, out, blocks);
}

}  // namespace qvsysbase
