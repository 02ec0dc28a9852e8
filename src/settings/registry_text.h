#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "text/case_fold.h"

// The text form of exported registry keys, in UTF-8: a header line, then [KEY] lines and "name"=data lines under them.
namespace dravenna {

struct IgnoreCase {
  bool operator()(const std::u16string& a, const std::u16string& b) const { return foldCase(a) < foldCase(b); }
};

// A value of any type. Strings are kept as UTF-16; the data of other types is kept as it was written.
struct RegistryValue {
  std::uint32_t type = 1;  // 1 is a string (REG_SZ)
  std::u16string string;   // for type 1
  std::string raw;         // for every other type: what stood behind the "=", continued lines joined
};

struct RegistryKey {
  std::u16string path;  // spelled as it came, the root's name first: HKEY_LOCAL_MACHINE\Software\...
  std::map<std::u16string, RegistryValue, IgnoreCase> values;  // "" is the default value
  std::vector<std::string> unknown;                            // lines that are none of ours, kept
};

using RegistryTree = std::map<std::u16string, RegistryKey, IgnoreCase>;  // by path

struct RegistryText {
  RegistryTree keys;
  bool damaged = false;  // something could not be read; what could is in `keys`
};

RegistryText parseRegistryText(std::string_view bytes);
std::string writeRegistryText(const RegistryTree& keys);

}  // namespace dravenna
