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
  using is_transparent = void;
  bool operator()(std::u16string_view a, std::u16string_view b) const;
};

// A value of any type. Strings are kept as UTF-16; the data of other types is kept as it was written.
struct RegistryValue {
  std::uint32_t type = 1;  // 1 is a string (REG_SZ)
  std::u16string string;   // for type 1
  std::string raw;         // for every other type: what stood behind the "=", continued lines joined

  bool operator==(const RegistryValue&) const = default;
};

struct RegistryKey {
  std::u16string path;  // spelled as it came, the root's name first: HKEY_LOCAL_MACHINE\Software\...
  std::map<std::u16string, RegistryValue, IgnoreCase> values;  // "" is the default value
  std::vector<std::string> unknown;                            // comment lines under the key, kept

  bool operator==(const RegistryKey&) const = default;
};

// By path. Every key has an entry for each key above it. The entry with the empty path is no key: it holds the
// comments in front of the first one.
using RegistryTree = std::map<std::u16string, RegistryKey, IgnoreCase>;

// The key's entry; makes it and those of the keys above it. `path` has single `\` between its names and none around.
RegistryKey& makeRegistryKey(RegistryTree& keys, std::u16string_view path);

// True if there is a key below `path`.
bool hasSubKeys(const RegistryTree& keys, std::u16string_view path);

// False for a key path or value name that has no place on a line: one with control characters or lone surrogates.
bool isWritableName(std::u16string_view name);

struct RegistryText {
  RegistryTree keys;
  bool damaged = false;  // something could not be read; what could is in `keys`
};

// Takes UTF-8 with or without a byte-order mark and UTF-16LE with one; line ends LF or CR LF. Lines that delete a key
// or a value act on what stands before them. Writing what was read and reading that gives the same tree, undamaged.
RegistryText parseRegistryText(std::string_view bytes);
std::string writeRegistryText(const RegistryTree& keys);

}  // namespace dravenna
