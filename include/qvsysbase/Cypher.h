// Enciphering and deciphering byte buffers with a caller's key.
//
// `Cypher` applies the Blowfish block cipher in electronic-codebook mode with
// zero padding: every 8-byte block is enciphered on its own, so equal blocks
// give equal ciphertext, and the same input and key always give the same
// output. The two 32-bit halves of a block are read and written little-endian.
//
//   std::vector<unsigned char> buf((n + 7) / 8 * 8);   // n >= 7, see Write
//   Cypher::Write(plain, n, key, keyLength, buf.data());
//   Cypher::Read(buf.data(), buf.size(), key, keyLength, buf.data());
//
// Each call keys a fresh cipher engine, processes the buffer and destroys the
// engine, whose tables are overwritten before they are freed: no key material
// outlives a call. The key is only read; it stays the caller's.
//
// Thread-safety: not thread-safe. Both calls use one process-wide instance
// without a lock; no two calls may run at the same time.
#ifndef QVSYSBASE_CYPHER_H_
#define QVSYSBASE_CYPHER_H_

#include "qvsysbase/Export.h"

namespace qvsysbase {

class CBlowFish;

// A handle owning its cipher engine. Only the calls below create one; it cannot
// be copied or moved.
class QVSYSBASE_API Cypher {
 public:
  // Enciphers `length` bytes of `in` into `out`, 8 bytes at a time. The output
  // is `length` rounded up to a multiple of 8; a final block of 7 bytes or
  // fewer is completed with zero bytes. An input of 1 to 6 bytes is the
  // exception: its 8-byte block is enciphered as it stands, so `in` must then
  // hold 8 readable bytes and the padding is whatever they contain. `in` and
  // `out` may be the same buffer, which then holds the rounded-up length.
  // REQUIRES: keyLength > 0
  // REQUIRES: key
  // REQUIRES: length == 0 || (in && out)
  static void Write(unsigned char* in, unsigned length, unsigned char* key, unsigned keyLength,
                    unsigned char* out);

  // Deciphers `in` into `out` 8 bytes at a time while the offset is below
  // `length`, which is expected to be a multiple of 8 (both buffers hold
  // `length` rounded up). Padding is not removed: the caller knows the plain
  // length. `in` and `out` may be the same buffer.
  // REQUIRES: keyLength > 0
  // REQUIRES: key
  // REQUIRES: length == 0 || (in && out)
  static void Read(unsigned char* in, unsigned length, unsigned char* key, unsigned keyLength,
                   unsigned char* out);

  // Deletes the engine and resets s_instance.
  ~Cypher();
  Cypher(const Cypher&) = delete;
  Cypher& operator=(const Cypher&) = delete;

 private:
  Cypher();
  static Cypher& Instance();
  static void CheckArguments(const unsigned char* in, unsigned length, const unsigned char* key,
                             unsigned keyLength, const unsigned char* out);

  static Cypher* s_instance;  // the shared instance, alive during a call only

  CBlowFish* m_pBlowFish;  // owned
};

}  // namespace qvsysbase

#endif  // QVSYSBASE_CYPHER_H_
