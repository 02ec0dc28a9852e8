#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// The six calls of a registry: a tree of keys under two roots that hold named values. Key paths have `\` between their
// names; keys and value names ignore letter case; an empty value name is the key's default value. Each call gives a
// status, 0 for success, and throws nothing.
namespace dravenna {

constexpr std::uint32_t HKEY_CLASSES_ROOT_ID = 0x80000000;
constexpr std::uint32_t HKEY_LOCAL_MACHINE_ID = 0x80000002;

constexpr std::uint32_t kRegSz = 1;

class RegistryCalls {
 public:
  using Handle = std::uintptr_t;  // 0 is the null handle, on which every call fails

  virtual ~RegistryCalls() = default;

  // Leaves `handle` at 0 if the key is missing. Never creates.
  virtual std::int32_t RegOpenKeyA(std::uint32_t root, std::u16string_view path, Handle& handle) = 0;

  // Opens the key; creates it and all missing keys above it.
  virtual std::int32_t RegCreateKeyA(std::uint32_t root, std::u16string_view path, Handle& handle) = 0;

  // With `data` null: the value's type and its size in code units, a stored terminator counted. With `data`: fills up
  // to `size` code units and sets `size` to the number filled.
  virtual std::int32_t RegQueryValueExA(Handle handle, std::u16string_view name, std::uint32_t& type, char16_t* data,
                                        std::uint32_t& size) = 0;

  // Stores a string value (type kRegSz) of exactly these code units.
  virtual std::int32_t RegSetValueExA(Handle handle, std::u16string_view name, std::u16string_view data) = 0;

  // Deletes one key that has no keys below it.
  virtual std::int32_t RegDeleteKeyA(std::uint32_t root, std::u16string_view path) = 0;

  virtual std::int32_t RegCloseKey(Handle handle) = 0;
};

}  // namespace dravenna
