#pragma once

#include <string>
#include <vector>

namespace dravenna {

struct ProgramRun {
  int status;          // of its exit; 128 and the signal's number where one ended it
  std::string output;  // what it wrote to standard output
};

// Runs a program of the search path in the present folder and waits for its end. words[0] is its name, the others are
// its arguments, each as it stands, through no shell. It reads nothing; its messages go to standard error. Throws
// Failure where it cannot be run.
ProgramRun runProgram(const std::vector<std::string>& words);

}  // namespace dravenna
