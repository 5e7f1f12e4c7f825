# Third-party libraries the library links. Each one is a Debian package that
# scripts/packages.txt lists, so a fresh machine gets it from scripts/install-deps.
find_package(Threads REQUIRED)
