# Third-party libraries the library links. Each one is a Debian package that
# scripts/packages.txt lists, so a fresh machine gets it from scripts/install-deps.
find_package(Threads REQUIRED)

# BLAS and LAPACK: OpenBLAS unless BLA_VENDOR selects another vendor at configure time.
if(NOT DEFINED BLA_VENDOR)
  set(BLA_VENDOR OpenBLAS)
endif()
find_package(BLAS REQUIRED)
find_package(LAPACK REQUIRED)
