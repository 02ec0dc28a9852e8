#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "scan/command_list.h"
#include "scan/line_scanner.h"

// The exchange file: one record a line, "number:text" CR LF, numbered from 1 in the order of the document. What binds
// it to the script is the order alone: the k-th record belongs to the k-th text that takesRecord picks.
namespace dravenna {

// Whether a quoted text gets a record. `withoutColor` is the text without its colour codes.
template <class Char>
bool takesRecord(std::basic_string_view<Char> withoutColor, const QuotedText& quoted);

// Writes all records of a document whose lines end in CR LF, one after the other, by way of
//   record(number from 1, text without colour codes)
// What stands behind the last CR LF is a line too.
template <class Record>
void forEachRecord(std::u16string_view document, const CommandLists& lists, Record&& record);

// The whole exchange file of a document.
std::u16string writeLxf(std::u16string_view document, const CommandLists& lists);

enum class MergeStatus {
  Merged,
  NoColon,  // a record without a colon was reached
  RanOut,   // the records ended inside a line of the document
};

struct MergeResult {
  MergeStatus status = MergeStatus::Merged;
  std::size_t recordIndex = 0;  // from 0: records used, or the one at fault
  std::size_t lineIndex = 0;    // from 0: the document's line at which the walk ended
  std::u16string text;          // the merged document; empty unless Merged
};

// Puts the text of the k-th line of the exchange file in the place of the k-th text of the document that takes a
// record. Both have CR LF line ends; nothing else splits a line. What stands behind the last CR LF is neither a line
// nor a record, unless a document line with several texts runs on into it.
MergeResult mergeLxf(std::u16string_view document, std::u16string_view exchangeFile, const CommandLists& lists);

}  // namespace dravenna

#include "exchange/lxf_walk.h"
