// The checked exp, log and square root of the kernel-library set, one pair per vector width,
// and the status checks they share.
//
// Each function computes in place and checks every result in the same pass:
// a vector whose lanes may carry an error status (an infinite exp of a finite
// argument; a log of zero or of a negative) is handed, arguments and results,
// to the Check... function, which raises the statuses lane by lane in index
// order. Lanes without a status cost one compare per vector.
#ifndef QVSYSBASE_SRC_NUMERICS_VECTORMATH_H_
#define QVSYSBASE_SRC_NUMERICS_VECTORMATH_H_

namespace qvsysbase::detail {

// exp: a finite argument with an infinite result overflowed (status 3, thrown
// as std::overflow_error("vdExp")). Results that underflow raise nothing.
void CheckExpLanes(const double* x, const double* y, int lanes);
// log: a negative argument is a domain error (status 1), zero a singularity
// (status 2); both reported as "vdLn", not thrown.
void CheckLnLanes(const double* x, int lanes);
// sqrt: a negative argument is a domain error (status 1), reported as "vdSqrt".
void CheckSqrtLanes(const double* x, int lanes);

// 8 doubles per step through SLEEF's AVX-512 functions. REQUIRES: avx512f.
void ExpInPlaceAvx512(double* vec, int n);
void LnInPlaceAvx512(double* vec, int n);
void SqrtAvx512(const double* src, double* dst, int n);  // src may equal dst
// 4 doubles per step through SLEEF's 256-bit functions, which pick AVX2+FMA
// or plain AVX at run time. REQUIRES: avx.
void ExpInPlaceAvx(double* vec, int n);
void LnInPlaceAvx(double* vec, int n);
void SqrtAvx(const double* src, double* dst, int n);  // src may equal dst

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_VECTORMATH_H_
