#pragma once

#include <string>
#include <string_view>

#include "exchange/records.h"
#include "tool/script/script_lines.h"

// Records of scripts in their work bytes.
namespace dravenna {

// Calls found(raw text, text without colour codes) for each text of a script that gets a record, in order.
template <class Found>
void forEachRecordText(std::string_view work, const CommandLists& lists, Found&& found) {
  RecordScan<char> scan(lists);
  forEachQuoteLine(work, [&](std::string_view line) {
    scan.line(line, [&](const QuotedText& quoted, std::string_view withoutColor) {
      found(line.substr(quoted.begin, quoted.end - quoted.begin), withoutColor);
    });
  });
}

// The exchange file of a script into a buffer that is used again. `keepCodes` leaves the colour codes in the texts.
// Gives the number of records.
inline std::size_t exportWork(std::string_view work, const CommandLists& lists, bool keepCodes, std::string& lxf) {
  lxf.clear();
  std::size_t number = 0;
  forEachRecordText(work, lists, [&](std::string_view raw, std::string_view withoutColor) {
    appendRecord(++number, keepCodes ? raw : withoutColor, lxf);
    lxf.append("\r\n", 2);
  });
  return number;
}

}  // namespace dravenna
