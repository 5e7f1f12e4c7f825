// SLEEF's exp and log called directly over an array, without status checks:
// the baseline the checked kernels are measured against.
#ifndef QVSYSBASE_BENCH_VECTORMATHDIRECT_H_
#define QVSYSBASE_BENCH_VECTORMATHDIRECT_H_

namespace bench {
void DirectExpAvx512(double* vec, int n);
void DirectLnAvx512(double* vec, int n);
void DirectExpAvx(double* vec, int n);
void DirectLnAvx(double* vec, int n);
}  // namespace bench

#endif  // QVSYSBASE_BENCH_VECTORMATHDIRECT_H_
