// The plain kernel set: straightforward loops in double precision, with no
// dependency on a vendor library. It covers the elementwise vector slots, the
// matrix-vector product and the sort; the others stay null.
#ifndef QVSYSBASE_SRC_NUMERICS_PLAINKERNELS_H_
#define QVSYSBASE_SRC_NUMERICS_PLAINKERNELS_H_

namespace qvsysbase::detail {

// Fills every slot of IntelSPLHandler with the plain set, null where it has none.
void InstallPlainKernels();

// The plain routines the kernel-library set installs unchanged.
namespace plain {
void dbSet(double val, double* dst, int n);
void wbZero(short* dst, int n);
void dbIntToFloat(const int* src, double* dst, int n);
void wbCopy(const short* src, short* dst, int n);
void dbAdd1(double val, double* dst, int n);
void dbSub1(double val, double* dst, int n);
double dMean(const double* vec, int n);
double dStdDev(const double* vec, int n);
}  // namespace plain

}  // namespace qvsysbase::detail

#endif  // QVSYSBASE_SRC_NUMERICS_PLAINKERNELS_H_
