#pragma once

#include <memory>
#include <string>

#include "platform/posix/system_calls.h"
#include "platform/registry_calls.h"

namespace dravenna::posix {

// The file that stands for the registry: DRAVENNA_REGISTRY, else dravenna/registry.reg in the user's configuration
// folder. Empty if there is no such folder.
std::string registryPath();

// A registry in one file. A write takes a lock on "PATH.lock", reads the file again, changes it and replaces it, so
// that programs at work at the same time lose nothing of each other. What could not be read is kept: the file is
// copied to "PATH.bad" (".bad2", ... if that is taken) before the first write over it.
std::unique_ptr<RegistryCalls> makeRegistryFile(std::string path, SystemCalls& calls);

}  // namespace dravenna::posix
