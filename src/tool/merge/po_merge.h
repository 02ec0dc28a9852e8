#pragma once

#include <string>
#include <string_view>

#include "tool/merge/three_way.h"

namespace dravenna {

struct PoMerge {
  std::string bytes;
  std::size_t conflicts = 0;
};

// Merges PO files by entry, found by msgctxt and msgid: a translation comes from whoever changed it, comments from
// both; of header fields that both changed, the later date or that of ours. A conflict is only where both changed one
// translation. Entries that one side took out stay where the other changed them. Throws Failure that names the line
// where it is no PO file.
PoMerge mergePo(std::string_view base, std::string_view ours, std::string_view theirs, const ThreeWayOptions& options);

}  // namespace dravenna
