#pragma once

#include <optional>
#include <string>

#include "tool/merge/three_way.h"

namespace dravenna {

// How three versions of one file become one.
struct MergeWish {
  std::string name;  // what the list calls the file; its extension tells exchange and PO files
  CodePagePtr page;  // of ours, where it is named or ours does not look like UTF-8
  bool pageNamed = false;
  CodePagePtr theirPage;  // null: found as that of ours is
  ThreeWayOptions way;
};

struct MergedFile {
  std::string bytes;
  std::size_t conflicts = 0;
  std::string list;  // what is to translate and to look at, a line each
  std::size_t toTranslate = 0;
  std::size_t toLookAt = 0;
};

// Merges the bytes of a base and of what became of it on two sides: a script, an exchange file, a PO file or plain
// lines. Throws Failure for what is no text, too large, or in an encoding of its own.
MergedFile mergeFile(const std::string& base, const std::string& ours, const std::string& theirs,
                     const CommandLists& lists, const MergeWish& wish);

}  // namespace dravenna
