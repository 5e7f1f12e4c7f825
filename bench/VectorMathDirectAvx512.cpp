// Unchecked 8-wide SLEEF loops (compiled with -mavx512f). The tail goes through
// a padded local copy, as in the library's loop.
#include <sleef.h>

#include "VectorMathDirect.h"

namespace bench {
namespace {

template <auto Fn>
void Apply(double* vec, int n) {
  int i = 0;
  for (; i + 8 <= n; i += 8) _mm512_storeu_pd(vec + i, Fn(_mm512_loadu_pd(vec + i)));
  if (i == n) return;
  alignas(64) double tail[8];
  for (int k = 0; k < 8; ++k) tail[k] = i + k < n ? vec[i + k] : 1.0;
  _mm512_store_pd(tail, Fn(_mm512_load_pd(tail)));
  for (int k = 0; i + k < n; ++k) vec[i + k] = tail[k];
}

}  // namespace

void DirectExpAvx512(double* vec, int n) { Apply<Sleef_expd8_u10>(vec, n); }
void DirectLnAvx512(double* vec, int n) { Apply<Sleef_logd8_u10>(vec, n); }

}  // namespace bench
