#pragma once

#include <functional>
#include <string>

namespace dravenna {

// For libraries that know files by their paths only, take these for whatever they are, and do not tell when the disk is
// full. The path is that of a file in memory, to be opened once. Both throw Failure, and what the function throws.

// The bytes that `write` puts into the file.
std::string bytesWrittenBy(const std::function<void(const std::string& path)>& write);

// `read` finds the bytes in the file, from its beginning.
void readFromMemory(const std::string& bytes, const std::function<void(const std::string& path)>& read);

}  // namespace dravenna
