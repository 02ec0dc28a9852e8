#include <cstdlib>

#include "support/temporary_store.h"

namespace dravenna {

TemporaryStore::TemporaryStore(const std::filesystem::path& folder) {
  ::setenv("DRAVENNA_REGISTRY", (folder / "registry.reg").c_str(), 1);
}

TemporaryStore::~TemporaryStore() = default;

}  // namespace dravenna
