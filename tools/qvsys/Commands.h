// The subcommands of qvsys. Each takes the arguments after its name and returns
// the process exit status (0 success, 1 failure, unless the command says
// otherwise); errors go to standard error.
#ifndef QVSYS_COMMANDS_H_
#define QVSYS_COMMANDS_H_

#include <string>
#include <vector>

namespace qvsysbase {
class ChartDifference;
}

namespace qvsys {

using Arguments = std::vector<std::string>;

struct Command {
  const char* name;
  const char* usage;  // one line: arguments and what the command does
  int (*run)(const Arguments& args);
};

// dump FILE: prints a stream's header and record tree; 1 on an inconsistency.
int RunDump(const Arguments& args);

// tour [FILE]: the library end to end on embedded data; 1 when a check fails.
int RunTourCommand(const Arguments& args);

// chart-diff FILE1 FILE2 [options]: prints the differences between two saved
// frozen charts and their number; 0 equal, 1 different, 2 a bad option or a
// file that holds no frozen chart (with the reason on standard error).
int RunChartDiff(const Arguments& args);
// Prints differences as chart-diff does: a group header (type 2) at the start
// of its line, every other difference indented, then their number.
void PrintChartDifferences(const std::vector<qvsysbase::ChartDifference>& diffs);

// rng GENERATOR [--gauss] [--seed S] [--count N]: raw 32-bit words on standard
// output; 1 on bad arguments.
int RunRng(const Arguments& args);

}  // namespace qvsys

#endif  // QVSYS_COMMANDS_H_
