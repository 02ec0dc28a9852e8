#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace dravenna {

// Tells one file from another and, nearly always, one state of a file from another, without reading it.
struct FileState {
  std::uint64_t volume = 0, file = 0, size = 0;  // size in bytes
  std::int64_t time = 0;                         // of the last change, in the system's finest unit
  bool operator==(const FileState&) const = default;
};

// Links are followed. Nothing for what is missing or cannot be reached. Never fails.
std::optional<FileState> fileState(std::u16string_view path);

// Whether both paths lead to one existing file.
inline bool sameFile(std::u16string_view one, std::u16string_view other) {
  const std::optional<FileState> first = fileState(one), second = fileState(other);
  return first && second && first->volume == second->volume && first->file == second->file;
}

}  // namespace dravenna
