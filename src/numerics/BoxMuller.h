// Standard normal numbers from a generator's words by the Box–Muller transform
// (the formula, the order of the outputs and the uniform mapping are written
// down in qvsysbase/RandomStreams.h).
//
// The transform of a block of pairs runs through one of the kernels of
// BoxMullerKernels.h, all of which agree bit for bit.
#ifndef QVSYSBASE_SRC_NUMERICS_BOXMULLER_H_
#define QVSYSBASE_SRC_NUMERICS_BOXMULLER_H_

#include <cstddef>

#include "BoxMullerKernels.h"
#include "RandomGenerator.h"

namespace qvsysbase::detail {

// The widest kernel the processor runs.
BoxMullerKernel WidestBoxMullerKernel();

// n standard normals from `generator` into dst, through `kernel`.
void GenerateGaussian(RandomGenerator& generator, double* dst, std::size_t n,
                      BoxMullerKernel kernel);
inline void GenerateGaussian(RandomGenerator& generator, double* dst, std::size_t n) {
  GenerateGaussian(generator, dst, n, WidestBoxMullerKernel());
}

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_BOXMULLER_H_
