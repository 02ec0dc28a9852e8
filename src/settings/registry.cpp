#include "settings/registry.h"

#include <algorithm>

namespace dravenna {

namespace {

constexpr std::size_t kLongestRead = 32767;  // characters

}  // namespace

std::u16string Registry::GetRegValue(std::uint32_t hKey, std::u16string_view SubKey, std::u16string_view ValueName,
                                     std::u16string_view Default) {
  std::u16string result(Default);
  RegistryCalls::Handle handle = 0;
  calls_.RegOpenKeyA(hKey, SubKey, handle);
  std::uint32_t type = 0;
  std::uint32_t size = 0;
  if (calls_.RegQueryValueExA(handle, ValueName, type, nullptr, size) == 0 && type == kRegSz) {
    std::u16string buffer(size, u' ');
    if (calls_.RegQueryValueExA(handle, ValueName, type, buffer.data(), size) == 0) {
      const std::size_t length = std::min(buffer.find(u'\0'), buffer.size());
      if (length <= kLongestRead) result.assign(buffer, 0, length);
    }
  }
  calls_.RegCloseKey(handle);
  return result;
}

bool Registry::SetRegValue(std::uint32_t hKey, std::u16string_view SubKey, std::u16string_view ValueName,
                           std::u16string_view Value) {
  RegistryCalls::Handle handle = 0;
  calls_.RegCreateKeyA(hKey, SubKey, handle);
  const bool stored = calls_.RegSetValueExA(handle, ValueName, Value) == 0;
  calls_.RegCloseKey(handle);
  return stored;
}

void Registry::DeleteRegKey(std::uint32_t hKey, std::u16string_view SubKey) { calls_.RegDeleteKeyA(hKey, SubKey); }

}  // namespace dravenna
