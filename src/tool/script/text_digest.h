#pragma once

#include <cstdint>
#include <string_view>

#include "text/fnv1a.h"

namespace dravenna {

// A number for the texts of a script that take a record, codes and all, in their order; the same on every system.
class TextDigest {
 public:
  void add(std::string_view text) {
    for (const char c : text) value_ = fnv1a(value_, c);
    value_ = fnv1a(value_, '\n');  // which no text holds
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = kFnv1aStart;
};

}  // namespace dravenna
