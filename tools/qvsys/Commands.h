// The subcommands of qvsys. Each takes the arguments after its name and returns
// the process exit status (0 success, 1 failure); errors go to standard error.
#ifndef QVSYS_COMMANDS_H_
#define QVSYS_COMMANDS_H_

#include <string>
#include <vector>

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

// rng GENERATOR [--gauss] [--seed S] [--count N]: raw 32-bit words on standard
// output; 1 on bad arguments.
int RunRng(const Arguments& args);

}  // namespace qvsys

#endif  // QVSYS_COMMANDS_H_
