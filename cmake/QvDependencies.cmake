# Third-party libraries the library links. Each one is a Debian package that
# scripts/packages.txt lists, so a fresh machine gets it from scripts/install-deps.
find_package(Threads REQUIRED)

# BLAS and LAPACK: OpenBLAS unless BLA_VENDOR selects another vendor at configure time.
if(NOT DEFINED BLA_VENDOR)
  set(BLA_VENDOR OpenBLAS)
endif()
find_package(BLAS REQUIRED)
find_package(LAPACK REQUIRED)

# The BLAS vendor's worker-thread call, named here and nowhere else: the kernel
# dispatch applies its thread count through it. Empty for a vendor without one.
if(BLA_VENDOR MATCHES "^OpenBLAS")
  set(QV_BLAS_SET_NUM_THREADS openblas_set_num_threads)
elseif(BLA_VENDOR MATCHES "^Intel10")
  set(QV_BLAS_SET_NUM_THREADS MKL_Set_Num_Threads)
elseif(BLA_VENDOR MATCHES "^FLAME")
  set(QV_BLAS_SET_NUM_THREADS bli_thread_set_num_threads)
else()
  set(QV_BLAS_SET_NUM_THREADS "")
endif()

# Boost.Math (header-only): erf, the normal quantile and lgamma of the fast kernels.
find_package(Boost 1.71 REQUIRED)

# SLEEF: vectorised exp and log with run-time CPU dispatch, for the fast kernels.
# Debian ships no CMake package for it, so it is found by hand.
find_library(QV_SLEEF_LIBRARY NAMES sleef REQUIRED)
find_path(QV_SLEEF_INCLUDE_DIR NAMES sleef.h REQUIRED)
if(NOT TARGET Sleef::sleef)
  add_library(Sleef::sleef UNKNOWN IMPORTED)
  set_target_properties(Sleef::sleef PROPERTIES
    IMPORTED_LOCATION "${QV_SLEEF_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${QV_SLEEF_INCLUDE_DIR}")
endif()
