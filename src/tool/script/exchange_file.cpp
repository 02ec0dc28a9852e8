#include "tool/script/exchange_file.h"

#include <fmt/core.h>

#include <algorithm>

#include "text/text.h"
#include "tool/script/breaks.h"
#include "tool/script/shown.h"

namespace dravenna {

ExchangeFile cutExchangeFile(std::string_view bytes) {
  ExchangeFile file;
  CrLfPieces<char> lines(bytes);
  for (std::string_view line; lines.next(line);) {
    if (lines.atLast()) {
      file.rest = line;
    } else {
      file.records.push_back(cutRecord(line));
    }
  }
  const auto feeds = static_cast<std::size_t>(std::count(bytes.begin(), bytes.end(), '\n'));
  file.bareFeeds = feeds - file.records.size();
  return file;
}

bool bearsNumber(const ByteRecord& record, std::size_t number) {
  return record.hasColon && record.number == std::to_string(number);
}

namespace {

std::string whyNoFit(const ExchangeFile& file, std::size_t texts) {
  if (file.bareFeeds > 0 && file.records.empty()) return "its lines end in LF, not in CR LF: nothing would be merged";
  if (file.bareFeeds > 0) return "some of its lines end in LF, not in CR LF";
  if (!file.rest.empty()) return "its last line has no line end: that record would be lost";
  for (std::size_t i = 0; i < file.records.size(); ++i) {
    if (!file.records[i].hasColon) return fmt::format("line {} has no number and colon", i + 1);
    if (!bearsNumber(file.records[i], i + 1)) {
      return fmt::format("line {} bears the number {}, not {}", i + 1, shownName(file.records[i].number), i + 1);
    }
  }
  if (file.records.size() != texts) {
    return fmt::format("it has {}, the script {}", counted(file.records.size(), "record"), counted(texts, "text"));
  }
  return {};
}

Failure failureAt(const std::string& lxfName, MergeStatus status, std::size_t record, std::size_t scriptLine) {
  const std::u16string line = decimal(static_cast<std::int64_t>(record) + 1);
  return Failure(fromUtf8(lxfName) + u":" + line + u": " +
                 (status == MergeStatus::NoColon
                      ? u"Correlative number not found in line " + line
                      : u"The exchange file ends in the middle of line " +
                            decimal(static_cast<std::int64_t>(scriptLine) + 1) + u" of the script."));
}

}  // namespace

std::optional<Failure> misfitOf(const ExchangeFile& file, const std::string& name, std::size_t texts) {
  const std::string why = whyNoFit(file, texts);
  if (why.empty()) return std::nullopt;
  return Failure(fromUtf8(name) + u": " + fromUtf8(why));
}

std::optional<Failure> wrongEncodingOf(std::string_view exchangeFile, const std::string& name, std::string_view script,
                                       const CodePage& page) {
  const char16_t* why = nullptr;
  if (isUtf16(exchangeFile)) {
    why = u"it is UTF-16, which is read in no code page";
  } else if (exchangeFile.starts_with(kUtf8Mark)) {
    why = u"it begins with a byte order mark";
  } else if (!isAscii(exchangeFile)) {
    const bool wide = isUtf8(exchangeFile);
    const bool scriptIsWide = isUtf8(script) && (page.isUtf8() || !isAscii(script));
    if (wide && !scriptIsWide && !page.isUtf8()) why = u"it is UTF-8, but is read in the code page of the scripts";
    if (!wide && scriptIsWide) why = u"it is not UTF-8, as its script is";
  }
  if (why == nullptr) return std::nullopt;
  return Failure(fromUtf8(name) + u": " + why);
}

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
