#include "tool/script/merge.h"

#include <algorithm>

#include "text/text.h"
#include "tool/script/records.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

// A script as the window holds it: each line ended by CR LF.
std::string documentOf(std::string_view work) {
  std::string document;
  document.reserve(work.size() + work.size() / 16 + 2);
  forEachLine(work, [&](const ScriptLine& line) { document.append(line.text).append("\r\n", 2); });
  return document;
}

// Puts the line ends of `old` in the place of the CR LF of `merged`, which has as many lines.
std::string withEndsOf(std::string_view old, std::string_view merged) {
  std::string out;
  out.reserve(merged.size());
  std::size_t at = 0;
  forEachLine(old, [&](const ScriptLine& line) {
    const std::size_t end = merged.find("\r\n", at);
    out.append(merged.substr(at, end - at)).append(line.ending);
    at = end + 2;
  });
  return out;
}

}  // namespace

Merge mergeWork(const Codec& codec, const CommandLists& lists, std::string_view script, std::string_view lxf,
                bool keepEol) {
  Merge merge;
  const std::string document = documentOf(script);
  const MergeResult merged = mergeLxf(codec.decode(document), codec.decode(lxf), lists);
  if (merged.status == MergeStatus::NoColon) {
    const std::u16string line = decimal(static_cast<std::int64_t>(merged.recordIndex) + 1);
    merge.error = line + u": Correlative number not found in line " + line;
    return merge;
  }
  if (merged.status == MergeStatus::RanOut) {
    merge.error = decimal(static_cast<std::int64_t>(merged.recordIndex) + 1) +
                  u": The exchange file ends in the middle of line " +
                  decimal(static_cast<std::int64_t>(merged.lineIndex) + 1) + u" of the script.";
    return merge;
  }
  std::string work;
  codec.encode(merged.text, work);

  // The record for the k-th text is the k-th line.
  std::size_t at = 0;
  forEachRecordText(script, lists, [&](std::string_view raw, std::string_view) {
    if (merge.texts++ >= merged.recordIndex) return;
    const std::size_t end = std::min(lxf.find("\r\n", at), lxf.size());
    const std::string_view record = lxf.substr(at, end - at);
    if (record.substr(record.find(':') + 1) != raw) ++merge.changed;
    at = std::min(end + 2, lxf.size());
  });
  std::string buffer;
  const std::string_view bytes = codec.toFile(work, buffer);
  std::string oldBuffer;
  merge.bytes = keepEol ? withEndsOf(codec.toFile(script, oldBuffer), bytes) : std::string(bytes);
  return merge;
}

const char* whatSpoilsScan(std::string_view text) {
  if (text.find('"') != std::string_view::npos) return "a quote mark in a text breaks the script's line";
  if (text.find("//") != std::string_view::npos)
    return "// in a text turns the rest of the script's line into a comment";
  if (text.find('\n') != std::string_view::npos) return "a line end in a text breaks the script's line";
  if (!text.empty() && text.front() == '[') return "a [ at the beginning takes the text out of the next export";
  if (!text.empty() && text.back() == ']') return "a ] at the end takes the text out of the next export";
  return nullptr;
}

}  // namespace dravenna
