// The Box–Muller kernels, one per vector width. Every kernel evaluates ln with
// SLEEF's 1-ulp log and the angle with its 0.506-ulp sincospi, in their variants
// without fused multiply-add, whose lanes give the same bits at every width;
// the rest is a scaling by -2, a square root and two products, each rounded
// once. So all kernels agree bit for bit with the scalar one. This header
// includes no standard templates: the vector-width units that include it are
// compiled for other instruction sets.
#ifndef QVSYSBASE_SRC_NUMERICS_BOXMULLERKERNELS_H_
#define QVSYSBASE_SRC_NUMERICS_BOXMULLERKERNELS_H_

#include <cstddef>

namespace qvsysbase::detail {

// For each pair i: r = sqrt(-2·ln u1[i]), zc[i] = r·cos(2π·u2[i]),
// zs[i] = r·sin(2π·u2[i]). REQUIRES: 0 < u1[i], u2[i] < 1.
using BoxMullerKernel = void (*)(const double* u1, const double* u2, double* zc, double* zs,
                                 std::size_t pairs);

void BoxMullerScalar(const double* u1, const double* u2, double* zc, double* zs,
                     std::size_t pairs);
void BoxMullerSse2(const double* u1, const double* u2, double* zc, double* zs,
                   std::size_t pairs);
// REQUIRES: avx.
void BoxMullerAvx(const double* u1, const double* u2, double* zc, double* zs, std::size_t pairs);
// REQUIRES: avx512f.
void BoxMullerAvx512(const double* u1, const double* u2, double* zc, double* zs,
                     std::size_t pairs);

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_BOXMULLERKERNELS_H_
