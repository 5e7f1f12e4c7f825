// Unchecked 4-wide SLEEF loops (compiled with -mavx). The tail goes through a
// padded local copy, as in the library's loop.
#include <sleef.h>

#include "VectorMathDirect.h"

namespace bench {
namespace {

template <auto Fn>
void Apply(double* vec, int n) {
  int i = 0;
  for (; i + 4 <= n; i += 4) _mm256_storeu_pd(vec + i, Fn(_mm256_loadu_pd(vec + i)));
  if (i == n) return;
  alignas(32) double tail[4];
  for (int k = 0; k < 4; ++k) tail[k] = i + k < n ? vec[i + k] : 1.0;
  _mm256_store_pd(tail, Fn(_mm256_load_pd(tail)));
  for (int k = 0; i + k < n; ++k) vec[i + k] = tail[k];
}

}  // namespace

void DirectExpAvx(double* vec, int n) { Apply<Sleef_expd4_u10>(vec, n); }
void DirectLnAvx(double* vec, int n) { Apply<Sleef_logd4_u10>(vec, n); }

}  // namespace bench
