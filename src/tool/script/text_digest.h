#pragma once

#include <cstdint>
#include <string_view>

namespace dravenna {

// A number for the texts of a script that take a record, codes and all, in their order; the same on every system.
class TextDigest {
 public:
  void add(std::string_view text) {
    for (const char c : text) mix(static_cast<unsigned char>(c));
    mix('\n');  // which no text holds
  }
  std::uint64_t value() const { return value_; }

 private:
  // FNV-1a.
  void mix(unsigned char byte) { value_ = (value_ ^ byte) * 0x100000001b3u; }

  std::uint64_t value_ = 0xcbf29ce484222325u;
};

}  // namespace dravenna
