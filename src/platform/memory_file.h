#pragma once

#include <functional>
#include <string>

namespace dravenna {

// For libraries that write to a path only and do not tell when the disk is full: the bytes that `write` puts into the
// file whose path it is given. They are kept in memory, up to the largest memory there is. Throws Failure.
std::string bytesWrittenBy(const std::function<void(const std::string& path)>& write);

}  // namespace dravenna
