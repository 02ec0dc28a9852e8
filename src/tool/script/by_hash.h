#pragma once

#include <bit>
#include <cstdint>
#include <vector>

namespace dravenna {

// A value for each of up to `most` hashes, Value{} at first. One piece of memory, for a table that is made often and
// soon goes. The hash 0 counts as 1.
template <class Value>
class ByHash {
 public:
  explicit ByHash(std::size_t most) : slots_(std::bit_ceil(most + most / 8 + 1)) {}

  Value& operator[](std::uint64_t hash) {
    if (hash == 0) hash = 1;
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = static_cast<std::size_t>(hash) & mask;
    while (slots_[at].hash != 0 && slots_[at].hash != hash) at = (at + 1) & mask;
    slots_[at].hash = hash;
    return slots_[at].value;
  }

 private:
  struct Slot {
    std::uint64_t hash = 0;  // 0: free
    Value value{};
  };

  std::vector<Slot> slots_;
};

}  // namespace dravenna
