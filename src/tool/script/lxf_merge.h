#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/lxf_merger.h"
#include "platform/failure.h"
#include "tool/script/codec.h"
#include "tool/script/records.h"

namespace dravenna {

// A record that would break the line of its text (see breaks.h). Lines and records from 1.
struct BrokenRecord {
  std::size_t scriptLine;
  std::size_t record;
  std::string why;
};

struct Merge {
  std::string work;  // the new script
  MergeCounts counts;
  TextDigest digest;  // of the texts as they were
  std::vector<BrokenRecord> breaks;
  std::optional<Failure> failure;  // begins with "NAME:LINE: "; then `work` is no script
};

// What becomes of what an exchange file cannot tell of. The window's way: CR LF throughout, and a record that is its
// text without colour codes takes these away.
struct MergeWay {
  bool keepEol = false;    // line ends stay
  bool keepCodes = false;  // such a record leaves the text alone
};

// Merges an exchange file of that name into a script by the rule of the window; all in work bytes. Fails where the
// exchange file has no colon or ends too soon.
Merge mergeWork(const Encoding& in, std::string_view script, std::string_view lxf, const std::string& lxfName,
                MergeWay way);

// Why the next export would lack a text, or null.
const char* whatLeavesExport(std::string_view text);

}  // namespace dravenna
