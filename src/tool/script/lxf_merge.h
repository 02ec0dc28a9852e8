#pragma once

#include <string>
#include <string_view>

#include "exchange/lxf_merger.h"

namespace dravenna {

struct Merge {
  std::string work;  // the new script
  MergeCounts counts;
};

// What becomes of what an exchange file cannot tell of. The window's way: CR LF throughout, and a record that is its
// text without colour codes takes these away.
struct MergeWay {
  bool keepEol = false;    // line ends stay
  bool keepCodes = false;  // such a record leaves the text alone
};

// Merges an exchange file into a script by the rule of the window; all in work bytes. Throws Failure that begins with
// "NAME:LINE: " where the exchange file has no colon or ends too soon.
Merge mergeWork(const CommandLists& lists, std::string_view script, std::string_view lxf, const std::string& lxfName,
                MergeWay way);

// Why the next export would lack a text, or null.
const char* whatLeavesExport(std::string_view text);

}  // namespace dravenna
