#pragma once

#include <string>
#include <string_view>

#include "scan/command_list.h"

namespace dravenna {

struct Merge {
  std::string work;         // the new script
  std::size_t texts = 0;    // texts that take a record
  std::size_t changed = 0;  // of these, those that are not what they were, byte for byte
};

// Merges an exchange file into a script by the rule of the window; all in work bytes. The script comes out with CR LF
// throughout, or, with `keepEol`, with the line ends that it had. Throws Failure that begins with "NAME:LINE: " where
// the exchange file has no colon or ends too soon.
Merge mergeWork(const CommandLists& lists, std::string_view script, std::string_view lxf, const std::string& lxfName,
                bool keepEol);

// Why a text would spoil the next scan of its script, or null.
const char* whatSpoilsScan(std::string_view text);

}  // namespace dravenna
