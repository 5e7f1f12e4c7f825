// Runs a fuzz target's entry point over the files named on the command line, for
// builds without libFuzzer: saved crashers and the seed corpus replay as programs.
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    std::ifstream in(argv[i], std::ios::binary);
    if (!in) {
      std::cerr << "cannot read " << argv[i] << '\n';
      return 1;
    }
    const std::vector<char> bytes((std::istreambuf_iterator<char>(in)),
                                  std::istreambuf_iterator<char>());
    // A copy of exactly the input's size, so that AddressSanitizer sees over-reads.
    std::vector<std::uint8_t> copy(bytes.begin(), bytes.end());
    LLVMFuzzerTestOneInput(copy.data(), copy.size());
  }
  return 0;
}
