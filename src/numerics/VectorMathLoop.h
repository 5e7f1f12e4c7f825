// The loop shared by the vector-width units of VectorMath.h. Included only by
// units compiled for one instruction set, with an Isa and an Op defined in their
// unnamed namespace, so every instantiation stays inside its unit and no code
// of a wider instruction set leaks into shared inline functions.
//
// Isa: kWidth, Vec, Load(const double*), Store(double*, Vec).
// Op:  Compute(Vec) -> Vec; Suspect(x, y) -> bool (some lane may carry a
//      status); Check(const double* x, const double* y, int lanes).
#ifndef QVSYSBASE_SRC_NUMERICS_VECTORMATHLOOP_H_
#define QVSYSBASE_SRC_NUMERICS_VECTORMATHLOOP_H_

namespace qvsysbase::detail {

template <class Isa, class Op>
inline void ComputeAndCheck(double* p) {
  const typename Isa::Vec x = Isa::Load(p);
  const typename Isa::Vec y = Op::Compute(x);
  Isa::Store(p, y);
  if (Op::Suspect(x, y)) [[unlikely]] {
    alignas(64) double xs[Isa::kWidth];
    Isa::Store(xs, x);
    Op::Check(xs, p, Isa::kWidth);
  }
}

// In place over n doubles. The last partial vector is computed in a local copy
// padded with 1.0, whose exp and log raise no status.
template <class Isa, class Op>
void ApplyChecked(double* vec, int n) {
  constexpr int kWidth = Isa::kWidth;
  int i = 0;
  for (; i + kWidth <= n; i += kWidth) ComputeAndCheck<Isa, Op>(vec + i);
  const int rest = n - i;
  if (rest <= 0) return;
  alignas(64) double tail[kWidth];
  for (int k = 0; k < kWidth; ++k) tail[k] = k < rest ? vec[i + k] : 1.0;
  const typename Isa::Vec x = Isa::Load(tail);
  const typename Isa::Vec y = Op::Compute(x);
  alignas(64) double results[kWidth];
  Isa::Store(results, y);
  for (int k = 0; k < rest; ++k) vec[i + k] = results[k];
  if (Op::Suspect(x, y)) Op::Check(tail, results, rest);
}

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_VECTORMATHLOOP_H_
