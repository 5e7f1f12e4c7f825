#include "qvsysbase/Cypher.h"

#include <cstddef>
#include <cstring>

#include "BlowFish.h"
#include "qvsysbase/qvExcept.h"

QV_UNIT("Cypher", "$Revision: #1 $")

namespace qvsysbase {

namespace {

constexpr std::size_t kBlock = CBlowFish::kBlockSize;

// Destroys the shared instance when a call ends, however it ends.
class InstanceScope {
 public:
  explicit InstanceScope(Cypher*& instance) : m_rInstance(instance) {}
  ~InstanceScope() { delete m_rInstance; }
  InstanceScope(const InstanceScope&) = delete;
  InstanceScope& operator=(const InstanceScope&) = delete;

 private:
  Cypher*& m_rInstance;
};

// Whole blocks Write enciphers as they stand. The final-block test is
// "offset < length - 7" in unsigned arithmetic, kept as it always was: for
// 1 to 6 bytes the subtraction wraps, so their one block counts as whole and
// is enciphered without zero filling.
std::size_t WholeBlocksToWrite(unsigned length) {
  if (length == 0) return 0;
  return length < kBlock - 1 ? 1 : length / kBlock;
}

}  // namespace

Cypher* Cypher::s_instance = nullptr;

Cypher::Cypher() : m_pBlowFish(new CBlowFish) {}

Cypher::~Cypher() {
  delete m_pBlowFish;
  s_instance = nullptr;
}

// Every argument is checked before anything is allocated or written.
void Cypher::CheckArguments(const unsigned char* in, unsigned length, const unsigned char* key,
                            unsigned keyLength, const unsigned char* out) {
  QV_ASSERT(keyLength > 0);
  QV_ASSERT(key);
  QV_ASSERT(length == 0 || (in && out));
}

Cypher& Cypher::Instance() {
  if (s_instance == nullptr) s_instance = new Cypher;
  return *s_instance;
}

void Cypher::Write(unsigned char* in, unsigned length, unsigned char* key, unsigned keyLength,
                   unsigned char* out) {
  CheckArguments(in, length, key, keyLength, out);
  CBlowFish& engine = *Instance().m_pBlowFish;
  InstanceScope scope(s_instance);
  engine.Initialize(key, keyLength);

  const std::size_t whole = WholeBlocksToWrite(length);
  engine.Encode(in, out, whole);
  const std::size_t offset = whole * kBlock;
  if (offset < length) {
    unsigned char last[kBlock] = {};
    std::memcpy(last, in + offset, length - offset);
    engine.Encode(last, out + offset, 1);
  }
}

void Cypher::Read(unsigned char* in, unsigned length, unsigned char* key, unsigned keyLength,
                  unsigned char* out) {
  CheckArguments(in, length, key, keyLength, out);
  CBlowFish& engine = *Instance().m_pBlowFish;
  InstanceScope scope(s_instance);
  engine.Initialize(key, keyLength);
  engine.Decode(in, out, (std::size_t{length} + kBlock - 1) / kBlock);
}

}  // namespace qvsysbase
