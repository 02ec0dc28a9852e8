#include <cstdio>

#include "support/scenario_run.h"

int main(int argc, char** argv) {
  std::vector<std::filesystem::path> paths(argv + 1, argv + argc);
  const bool window = !paths.empty() && paths.front() == "--window";
  if (window) paths.erase(paths.begin());
  if (paths.empty()) {
    std::fputs("usage: dravenna-scenarios [--window] PATH...\n", stderr);
    return 2;
  }
#ifdef DRAVENNA_NO_WINDOW
  if (window) std::fputs("dravenna-scenarios: this build has no window\n", stderr);
  return window ? 2 : dravenna::runScenarios(paths, dravenna::makeCoreDriver);
#else
  return window ? dravenna::runScenariosInWindow(paths) : dravenna::runScenarios(paths, dravenna::makeCoreDriver);
#endif
}
