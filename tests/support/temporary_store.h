#pragma once

#include <filesystem>

namespace dravenna {

// What makeRegistry() opens from now on: an empty store, gone again at the end.
class TemporaryStore {
 public:
  explicit TemporaryStore(const std::filesystem::path& folder);  // a place for it, on a system that keeps it in a file
  TemporaryStore(const TemporaryStore&) = delete;
  TemporaryStore& operator=(const TemporaryStore&) = delete;
  ~TemporaryStore();  // NOLINT(performance-trivially-destructible): does something on one system
};

}  // namespace dravenna
