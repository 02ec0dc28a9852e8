#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "exchange/records.h"
#include "text/fnv1a.h"
#include "tool/script/script_lines.h"

// Records of scripts in their work bytes.
namespace dravenna {

// A number for the texts of a script that take a record, codes and all, in their order; the same on every system.
class TextDigest {
 public:
  void add(std::string_view text) {
    for (const char c : text) value_ = fnv1a(value_, c);
    value_ = fnv1a(value_, '\n');  // which no text holds
  }
  std::uint64_t value() const { return value_; }

 private:
  std::uint64_t value_ = kFnv1aStart;
};

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
// Gives the number of records, and what the file was made from.
struct ExportedTexts {
  std::size_t records = 0;
  TextDigest digest;
};
inline ExportedTexts exportWork(std::string_view work, const CommandLists& lists, bool keepCodes, std::string& lxf) {
  lxf.clear();
  ExportedTexts exported;
  forEachRecordText(work, lists, [&](std::string_view raw, std::string_view withoutColor) {
    appendRecord(++exported.records, keepCodes ? raw : withoutColor, lxf);
    lxf.append("\r\n", 2);
    exported.digest.add(raw);
  });
  return exported;
}

inline TextDigest digestOf(std::string_view work, const CommandLists& lists) {
  TextDigest digest;
  forEachRecordText(work, lists, [&](std::string_view raw, std::string_view) { digest.add(raw); });
  return digest;
}

}  // namespace dravenna
