// The Blowfish block cipher engine behind Cypher.
//
// 16 rounds over 64-bit blocks, keyed by 1 or more bytes. The block's byte order
// is this library's own: the 8 bytes are two 32-bit words in little-endian
// order, the first four bytes the left half and the next four the right half.
// (The published test vectors read each half big-endian; their bytes come out
// here with each 4-byte half reversed on input and output.)
//
// Key material lives in the P-array and the S-boxes, two heap blocks owned by
// the engine; the destructor overwrites both before freeing them, so nothing of
// a key outlives its engine.
//
// Thread-compatible. Not copyable: the tables are owned.
#ifndef QVSYSBASE_SRC_PERSISTENCE_BLOWFISH_H_
#define QVSYSBASE_SRC_PERSISTENCE_BLOWFISH_H_

#include <cstddef>
#include <cstdint>

namespace qvsysbase {

class CBlowFish {
 public:
  static constexpr std::size_t kBlockSize = 8;
  static constexpr std::size_t kPArrayWords = 18;     // 16 rounds + 2 output whitening words
  static constexpr std::size_t kSBoxWords = 4 * 256;  // four 8-bit-indexed S-boxes

  // Allocates the tables; the engine is unusable until Initialize.
  CBlowFish();
  // Wipes the tables, then frees them.
  ~CBlowFish();
  CBlowFish(const CBlowFish&) = delete;
  CBlowFish& operator=(const CBlowFish&) = delete;

  // The key schedule: loads the initial tables and mixes in `keyLength` bytes of
  // `key`, taken cyclically. The caller guarantees keyLength >= 1.
  void Initialize(const unsigned char* key, std::size_t keyLength);

  // Enciphers / deciphers `blocks` whole blocks from `in` to `out` (ECB). `in`
  // and `out` are equal or do not overlap.
  void Encode(const unsigned char* in, unsigned char* out, std::size_t blocks) const;
  void Decode(const unsigned char* in, unsigned char* out, std::size_t blocks) const;

 private:
  std::uint32_t* m_pPArray;  // owned, kPArrayWords
  std::uint32_t* m_pSBoxes;  // owned, kSBoxWords: S0, S1, S2, S3 one after another
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_SRC_PERSISTENCE_BLOWFISH_H_
