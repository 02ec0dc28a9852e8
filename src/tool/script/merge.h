#pragma once

#include <string>
#include <string_view>

#include "exchange/lxf.h"
#include "tool/script/codec.h"

namespace dravenna {

struct Merge {
  std::u16string error;     // "line: what is wrong", empty when all went well
  std::string bytes;        // the new script as it stands on disk
  std::size_t texts = 0;    // texts that take a record
  std::size_t changed = 0;  // of these, those that are not what they were, byte for byte
};

// Merges an exchange file into a script by the rule of the window. The script comes out with CR LF throughout, or,
// with `keepEol`, with the line ends that it had.
Merge mergeWork(const Codec& codec, const CommandLists& lists, std::string_view script, std::string_view lxf,
                bool keepEol);

// Why a text would spoil the next scan of its script, or null.
const char* whatSpoilsScan(std::string_view text);

}  // namespace dravenna
