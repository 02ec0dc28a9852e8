#pragma once

#include <cstdint>

namespace dravenna {

// The hash FNV-1a, the same on every system: what it starts with, and the step by a byte.
constexpr std::uint64_t kFnv1aStart = 0xCBF29CE484222325u;
constexpr std::uint64_t fnv1a(std::uint64_t hash, char byte) {
  return (hash ^ static_cast<unsigned char>(byte)) * 0x100000001B3u;
}

}  // namespace dravenna
