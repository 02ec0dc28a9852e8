#include <cstdio>

#include "support/scenario_run.h"

namespace dravenna {

int runScenariosInWindow(const std::vector<std::filesystem::path>&) {
  std::fputs("dravenna-scenarios: this build has no window\n", stderr);
  return 2;
}

}  // namespace dravenna
