#pragma once

#include <string_view>

#include "tool/merge/merge_file.h"

namespace dravenna {

// Merges PO files by entry, found by msgctxt and msgid: a translation comes from whoever changed it, comments from
// both; of header fields that both changed, the later date or that of ours. A conflict is only where both changed one
// translation. Entries that one side took out stay where the other changed them. Throws Failure that names the line
// where it is no PO file.
MergedFile mergePo(std::string_view base, std::string_view ours, std::string_view theirs,
                   const ThreeWayOptions& options);

}  // namespace dravenna
