// qvsys dump FILE: the header and record tree of a persistent stream.
#include <fstream>
#include <iostream>
#include <iterator>

#include "Commands.h"
#include "qvsysbase/StreamStructure.h"

namespace qvsys {

int RunDump(const Arguments& args) {
  if (args.size() != 1) {
    std::cerr << "qvsys dump: expected one FILE\n";
    return 1;
  }
  std::ifstream file(args[0], std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (!file.good() && !file.eof()) {
    std::cerr << "qvsys dump: cannot read " << args[0] << '\n';
    return 1;
  }
  const qvsysbase::StreamStructure inspection = qvsysbase::ReadStreamStructure(bytes);
  qvsysbase::PrintStreamStructure(std::cout, inspection);
  return inspection.consistent ? 0 : 1;
}

}  // namespace qvsys
