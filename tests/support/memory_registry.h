#pragma once

#include <map>
#include <set>
#include <string>

#include "platform/registry_calls.h"
#include "text/case_fold.h"
#include "text/text.h"

namespace dravenna {

// A store in memory. Handles are the addresses of its keys.
class MemoryRegistry : public RegistryCalls {
 public:
  bool full = false;              // nothing more can be stored
  std::set<std::u16string> read;  // names of all values that were asked for, in keys that are there

  bool empty() const { return keys_.empty(); }

  std::int32_t RegOpenKeyA(std::uint32_t root, std::u16string_view path, Handle& handle) override {
    const auto key = keys_.find(decimal(root) + foldCase(path));
    handle = key == keys_.end() ? 0 : reinterpret_cast<Handle>(&key->second);
    return handle == 0 ? 2 : 0;
  }
  std::int32_t RegCreateKeyA(std::uint32_t root, std::u16string_view path, Handle& handle) override {
    if (full) return 112;
    handle = reinterpret_cast<Handle>(&keys_[decimal(root) + foldCase(path)]);
    return 0;
  }
  std::int32_t RegQueryValueExA(Handle handle, std::u16string_view name, std::uint32_t& type, char16_t* data,
                                std::uint32_t& size) override {
    if (handle == 0) return 6;
    read.emplace(name);
    const Values& values = *reinterpret_cast<Values*>(handle);
    const auto value = values.find(foldCase(name));
    if (value == values.end()) return 2;
    type = kRegSz;
    const std::u16string& text = value->second;
    size = static_cast<std::uint32_t>(data != nullptr ? text.copy(data, size) : text.size());
    return 0;
  }
  std::int32_t RegSetValueExA(Handle handle, std::u16string_view name, std::u16string_view data) override {
    if (full) return 112;
    (*reinterpret_cast<Values*>(handle))[foldCase(name)] = data;
    return 0;
  }
  std::int32_t RegDeleteKeyA(std::uint32_t root, std::u16string_view path) override {
    return keys_.erase(decimal(root) + foldCase(path)) != 0 ? 0 : 2;
  }
  std::int32_t RegCloseKey(Handle) override { return 0; }

 private:
  using Values = std::map<std::u16string, std::u16string>;
  std::map<std::u16string, Values> keys_;
};

}  // namespace dravenna
