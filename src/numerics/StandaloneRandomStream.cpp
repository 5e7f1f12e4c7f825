// One generator drawn from outside the stream lists, through the same words and
// the same Box–Muller transform as a stream.
#include <stdexcept>

#include "BoxMuller.h"
#include "RandomGenerator.h"
#include "qvsysbase/RandomStreams.h"
#include "qvsysbase/qvExcept.h"

QV_UNIT("StandaloneRandomStream", "$Revision: #1 $")

namespace qvsysbase {
namespace {
constexpr const char* kUnknownGenerator = "unknown random generator";
}

StandaloneRandomStream::StandaloneRandomStream(unsigned brng, std::uint32_t seed)
    : m_pGenerator(detail::NewRandomGenerator(brng, seed).release()) {
  if (m_pGenerator == nullptr) throw std::domain_error(kUnknownGenerator);
}

StandaloneRandomStream::~StandaloneRandomStream() { delete m_pGenerator; }

void StandaloneRandomStream::UniformBits(unsigned* dst, int n) {
  QV_ASSERT(dst || n <= 0);
  if (n > 0) m_pGenerator->Generate(dst, static_cast<std::size_t>(n));
}

void StandaloneRandomStream::Gaussian(double* dst, int n) {
  QV_ASSERT(dst || n <= 0);
  if (n > 0) detail::GenerateGaussian(*m_pGenerator, dst, static_cast<std::size_t>(n));
}

}  // namespace qvsysbase
