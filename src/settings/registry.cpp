#include "settings/registry.h"

#include <algorithm>

namespace dravenna {

namespace {

constexpr std::size_t kLongestRead = 32767;  // characters

}  // namespace

std::u16string Registry::GetRegValue(std::uint32_t root, std::u16string_view subKey, std::u16string_view name,
                                     std::u16string_view fallback) {
  std::u16string result(fallback);
  RegistryCalls::Handle handle = 0;
  calls_.openKey(root, subKey, handle);
  std::uint32_t type = 0;
  std::uint32_t size = 0;
  if (calls_.queryValue(handle, name, type, nullptr, size) == 0 && type == kRegSz) {
    std::u16string buffer(size, u' ');
    if (calls_.queryValue(handle, name, type, buffer.data(), size) == 0) {
      const std::size_t length = std::min(buffer.find(u'\0'), buffer.size());
      if (length <= kLongestRead) result.assign(buffer, 0, length);
    }
  }
  calls_.closeKey(handle);
  return result;
}

bool Registry::SetRegValue(std::uint32_t root, std::u16string_view subKey, std::u16string_view name,
                           std::u16string_view value) {
  RegistryCalls::Handle handle = 0;
  calls_.createKey(root, subKey, handle);
  const bool stored = calls_.setValue(handle, name, value) == 0;
  calls_.closeKey(handle);
  return stored;
}

void Registry::DeleteRegKey(std::uint32_t root, std::u16string_view subKey) { calls_.deleteKey(root, subKey); }

}  // namespace dravenna
