#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "support/driver.h"

namespace dravenna {

// Runs all scenario files under the paths, prints a line for each failed expectation and the totals. The exit status.
int runScenarios(const std::vector<std::filesystem::path>& paths, const DriverFactory& makeDriver);

// The same against the real window. Only in builds with a window.
int runScenariosInWindow(const std::vector<std::filesystem::path>& paths);

}  // namespace dravenna
