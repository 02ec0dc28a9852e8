#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "text/ascii.h"

// Names in a path, parted by `/`.
namespace dravenna {

// What stands behind the last `/`.
inline std::string_view fileNameOf(std::string_view path) { return path.substr(path.rfind('/') + 1); }

// What stands in front of it; empty without one, "/" for a name in the root.
inline std::string folderOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return std::string(path.substr(0, slash == std::string_view::npos ? 0 : std::max<std::size_t>(slash, 1)));
}

// Whether the path ends in an extension, dot and all, in letters of either case.
inline bool hasExtension(std::string_view path, std::string_view extension) {
  return lowerAsciiOf(path).ends_with(extension);
}

// The path with the extension of its last name, told by the last `.`, replaced; added when there is none.
inline std::string withExtension(std::string_view path, std::string_view extension) {
  const std::size_t name = path.rfind('/') + 1;
  const std::size_t dot = path.rfind('.');
  const bool has = dot != std::string_view::npos && dot >= name;
  return std::string(path.substr(0, has ? dot : path.size())).append(extension);
}

// `folder` and a relative path.
inline std::string joinPath(const std::string& folder, std::string_view relative) {
  std::string path = folder;
  if (!folder.empty() && folder.back() != '/') path.push_back('/');
  return path.append(relative);
}

}  // namespace dravenna
