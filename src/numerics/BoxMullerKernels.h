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

// The outline of every vector kernel: whole vectors of Isa::kWidth pairs, the
// rest through the next narrower kernel. Instantiated only by the unit of one
// instruction set each, with an Isa of that unit's unnamed namespace, so no
// instantiation leaves its unit.
//
// Isa: kWidth, Vec, Load(const double*), Store(double*, Vec), Mul(Vec, Vec),
// Radius(u1) = sqrt(-2·ln u1) and SinCosTwoPi(u2), whose .x is sin(2π·u2)
// and .y cos(2π·u2).
template <class Isa, BoxMullerKernel kNarrower>
void BoxMullerVectors(const double* u1, const double* u2, double* zc, double* zs,
                      std::size_t pairs) {
  std::size_t i = 0;
  for (; i + Isa::kWidth <= pairs; i += Isa::kWidth) {
    const typename Isa::Vec r = Isa::Radius(Isa::Load(u1 + i));
    const auto angle = Isa::SinCosTwoPi(Isa::Load(u2 + i));
    Isa::Store(zc + i, Isa::Mul(r, angle.y));
    Isa::Store(zs + i, Isa::Mul(r, angle.x));
  }
  kNarrower(u1 + i, u2 + i, zc + i, zs + i, pairs - i);
}

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_BOXMULLERKERNELS_H_
