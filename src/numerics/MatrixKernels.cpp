// Temporary definitions so the library links until the matrix kernel unit lands.
// They compute nothing.
#include "MatrixKernels.h"

namespace qvsysbase::detail {

bool mklCholDcInplace(double*, int, int, int* info) {
  *info = 0;
  return true;
}
bool mklCholInverseInplace(double*, int, int) { return true; }
void mklInverseTriangularInplace(double*, int, int) {}
void mklSolveLinEquatTriangular(const double*, int, int, double*, int, int) {}
void mklSolveLinEquatSymmetr(const double*, int, int, double*, int, int) {}
void mklProductTrMatrTranspByTrMatrInplace(double*, int, int) {}
void mklMatrixMultiply(const double*, int, int, int, const double*, int, int, double*, int) {}
void mklMatrixMultiplyByVector(const double*, int, int, int, const double*, double*) {}
void mklSortVector(double*, int) {}

}  // namespace qvsysbase::detail
