#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/registry_calls.h"

namespace dravenna {

// The only way to the settings. No failure is ever reported. Each call opens the key, does its work and closes it.
class Registry {
 public:
  explicit Registry(RegistryCalls& calls) : calls_(calls) {}

  // The string value, up to its first NUL; `Default` if key or value is missing, is no string, or is longer than
  // 32,767 characters. An empty value that exists is empty. An empty `ValueName` is the key's default value.
  std::u16string GetRegValue(std::uint32_t hKey, std::u16string_view SubKey, std::u16string_view ValueName,
                             std::u16string_view Default);

  // True when the value was stored. Creates the key and the keys above it.
  bool SetRegValue(std::uint32_t hKey, std::u16string_view SubKey, std::u16string_view ValueName,
                   std::u16string_view Value);

  // One key that has none below it.
  void DeleteRegKey(std::uint32_t hKey, std::u16string_view SubKey);

 private:
  RegistryCalls& calls_;
};

}  // namespace dravenna
