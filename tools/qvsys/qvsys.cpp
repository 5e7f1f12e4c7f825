// qvsys: command-line front end of the library. The work lives in the library;
// this file only dispatches on the subcommand.
#include <cstring>
#include <exception>
#include <iostream>
#include <span>

#include "Commands.h"

namespace qvsys {
namespace {

// Add a subcommand by declaring its run function above and listing it here.
constexpr Command kCommands[] = {
    {"help", "help                 print this text", nullptr},
    {"dump", "dump FILE            print a stream's header and record tree", RunDump},
    {"tour", "tour [FILE]          fit NIST Longley through the kernels, save, reload, dump;\n                       fit NIST Misra1a through the trust-region slot", RunTourCommand},
    {"chart-diff", "chart-diff FILE1 FILE2 [options]\n"
                   "                       compare two saved frozen charts (options: chart-diff --help)",
     RunChartDiff},
    {"rng", "rng GENERATOR [--gauss] [--seed S] [--count N]\n"
            "                       raw 32-bit words of a random generator on standard output",
     RunRng},
};

int PrintUsage(std::ostream& os) {
  os << "usage: qvsys <command> [arguments]\n\ncommands:\n";
  for (const Command& command : kCommands) os << "  " << command.usage << '\n';
  return 1;
}

int Dispatch(std::span<char*> argv) {
  if (argv.size() < 2) return PrintUsage(std::cerr);
  const char* name = argv[1];
  for (const Command& command : kCommands) {
    if (std::strcmp(command.name, name) != 0) continue;
    if (command.run == nullptr) return PrintUsage(std::cout) - 1;
    return command.run(Arguments(argv.begin() + 2, argv.end()));
  }
  std::cerr << "qvsys: unknown command '" << name << "'\n";
  return PrintUsage(std::cerr);
}

}  // namespace
}  // namespace qvsys

int main(int argc, char** argv) {
  try {
    return qvsys::Dispatch(std::span<char*>(argv, static_cast<std::size_t>(argc)));
  } catch (const std::exception& e) {
    std::cerr << "qvsys: " << e.what() << '\n';
  }
  return 1;
}
