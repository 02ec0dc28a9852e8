#include "tool/script/lxf_merge.h"

#include "text/text.h"
#include "tool/script/breaks.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

Failure failureAt(const std::string& lxfName, MergeStatus status, std::size_t record, std::size_t scriptLine) {
  const std::u16string line = decimal(static_cast<std::int64_t>(record) + 1);
  return Failure(fromUtf8(lxfName) + u":" + line + u": " +
                 (status == MergeStatus::NoColon
                      ? u"Correlative number not found in line " + line
                      : u"The exchange file ends in the middle of line " +
                            decimal(static_cast<std::int64_t>(scriptLine) + 1) + u" of the script."));
}

}  // namespace

Merge mergeWork(const Encoding& in, std::string_view script, std::string_view lxf, const std::string& lxfName,
                MergeWay way) {
  Merge merge;
  merge.work.reserve(script.size() + lxf.size());
  using Codes = LxfMerger<char>::Codes;
  LxfMerger<char> merger(lxf, in.lists, way.keepCodes ? Codes::Keep : Codes::Replace);
  forEachLine(script, [&](const ScriptLine& line) {
    const auto each = [&](std::string_view text, std::string_view plain, std::optional<std::string_view> record) {
      merge.digest.add(text);
      if (!record || (way.keepCodes && *record == plain)) return;
      for (Break& found : breaksOf(in.codec, text, *record, inFrontOf(text, script)))
        merge.breaks.push_back({line.number + 1, merger.counts().texts, std::move(found.why)});
    };
    if (!merger.addLine(line.text, merge.work, each) && !merge.failure)
      merge.failure = failureAt(lxfName, merger.status(), merger.recordIndex(), line.number);
    merge.work.append(way.keepEol ? line.ending : "\r\n");
  });
  merge.counts = merger.counts();
  return merge;
}

const char* whatLeavesExport(std::string_view text) {
  if (!text.empty() && text.front() == '[') return "a [ at the beginning takes the text out of the next export";
  if (!text.empty() && text.back() == ']') return "a ] at the end takes the text out of the next export";
  return nullptr;
}

}  // namespace dravenna
