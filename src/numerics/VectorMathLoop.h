// The loop shared by the vector-width units of VectorMath.h. Included only by
// units compiled for one instruction set, with an Isa and an Op defined in their
// unnamed namespace, so every instantiation stays inside its unit and no code
// of a wider instruction set leaks into shared inline functions.
//
// Isa: kWidth, Vec, Load(const double*), Store(double*, Vec).
// Op:  Compute(Vec) -> Vec; FlagArguments(x) and FlagResults(y) -> lane
//      bits that may carry a status; Check(const double* x, const double* y,
//      int lanes).
//
// The argument test runs before Compute, so no vector stays live across the
// call into SLEEF. A result test puts a branch on the end of SLEEF's latency
// chain and stops successive calls from overlapping: it cost the 8-wide exp a
// factor of 2.5, so ops test results only where arguments cannot tell.
#ifndef QVSYSBASE_SRC_NUMERICS_VECTORMATHLOOP_H_
#define QVSYSBASE_SRC_NUMERICS_VECTORMATHLOOP_H_

namespace qvsysbase::detail {

template <class Isa, class Op>
inline void ComputeAndCheck(const double* src, double* dst) {
  const typename Isa::Vec x = Isa::Load(src);
  const unsigned flaggedArguments = Op::FlagArguments(x);
  const typename Isa::Vec y = Op::Compute(x);
  if ((flaggedArguments | Op::FlagResults(y)) != 0) [[unlikely]] {
    // src still holds the arguments (also in place): check them against the
    // results, then store.
    alignas(64) double ys[Isa::kWidth];
    Isa::Store(ys, y);
    Op::Check(src, ys, Isa::kWidth);
  }
  Isa::Store(dst, y);
}

// Over n doubles from src to dst, which may be the same array. The last
// partial vector is computed in a local copy padded with 1.0, whose exp, log
// and square root raise no status.
template <class Isa, class Op>
void ApplyChecked(const double* src, double* dst, int n) {
  constexpr int kWidth = Isa::kWidth;
  int i = 0;
  for (; i + kWidth <= n; i += kWidth) ComputeAndCheck<Isa, Op>(src + i, dst + i);
  const int rest = n - i;
  if (rest <= 0) return;
  alignas(64) double tail[kWidth];
  for (int k = 0; k < kWidth; ++k) tail[k] = k < rest ? src[i + k] : 1.0;
  const typename Isa::Vec y = Op::Compute(Isa::Load(tail));
  alignas(64) double results[kWidth];
  Isa::Store(results, y);
  if ((Op::FlagArguments(Isa::Load(tail)) | Op::FlagResults(y)) != 0) {
    Op::Check(tail, results, rest);
  }
  for (int k = 0; k < rest; ++k) dst[i + k] = results[k];
}

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_VECTORMATHLOOP_H_
