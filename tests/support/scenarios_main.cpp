#include <cstdio>
#include <cstring>

#include "support/scenario_run.h"

int main(int argc, char** argv) {
  bool window = false;
  std::vector<std::filesystem::path> paths;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--window") == 0) {
      window = true;
    } else {
      paths.emplace_back(argv[i]);
    }
  }
  if (paths.empty()) {
    std::fputs("usage: dravenna-scenarios [--window] PATH...\n", stderr);
    return 2;
  }
  return window ? dravenna::runScenariosInWindow(paths) : dravenna::runScenarios(paths, dravenna::makeCoreDriver);
}
