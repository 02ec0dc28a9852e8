#include <fmt/format.h>

#include <algorithm>

#include "batch/exchange_file.h"
#include "batch/findings.h"
#include "batch/session.h"

namespace dravenna {

namespace {

std::vector<const OutlineText*> recordTexts(const Outline& script) {
  std::vector<const OutlineText*> texts;
  for (const OutlineText& text : script.texts) {
    if (text.record) texts.push_back(&text);
  }
  return texts;
}

void checkRecord(Findings& findings, const ExchangeFile::Record& record, std::size_t index) {
  if (!record.hasColon) {
    findings.add("lxf-order", index, record.line, 0, "no number and colon: an import stops here");
    return;
  }
  if (!bearsNumber(record, index + 1)) {
    findings.add("lxf-order", index, record.line, 0,
                 fmt::format("bears the number {}, not {}", findings.quoted(record.number), index + 1));
  }
  const std::size_t begin = record.number.size() + 1;
  const std::string_view text = record.text;
  if (const std::size_t at = text.find('"'); at != std::string_view::npos) {
    findings.add("quote-mark", index, record.line, begin + at, "a quote mark breaks the script's line");
  }
  if (const std::size_t at = text.find("//"); at != std::string_view::npos) {
    findings.add("comment-in-text", index, record.line, begin + at,
                 "// turns the rest of the script's line into a comment");
  }
  const std::string plain = withoutColor(text);
  if (!plain.empty() && (plain.front() == '[' || plain.back() == ']')) {
    findings.add("bracket", index, record.line, plain.front() == '[' ? begin : record.line.size() - 1,
                 "a bracket at an end takes the text out of the next export");
  }
  for (const SpoiltCode& spoilt : findSpoiltCodes(text)) {
    findings.add(spoilt.kind, index, record.line, begin + spoilt.offset, spoilt.text);
  }
}

void checkBeside(Findings& findings, const ExchangeFile::Record& record, std::size_t index, const OutlineText& text,
                 bool hasCodes, bool scriptIsOriginal) {
  const std::size_t begin = record.number.size() + 1;
  const std::string before = withoutColor(text.text);
  if (scriptIsOriginal && withoutColor(record.text) == before && hasLetter(before)) {
    findings.add("untranslated", index, record.line, begin, findings.quoted(record.text));
  }
  const auto colons = [](std::string_view s) { return static_cast<std::size_t>(std::count(s.begin(), s.end(), ':')); };
  if (text.inMenu && colons(before) != colons(record.text)) {
    findings.add(
        "menu-count", index, record.line, begin,
        fmt::format("{} in a menu's text, {} in the script", counted(colons(record.text), "colon"), colons(before)));
  }
  if (hasCodes && countColorCodes(record.text) != countColorCodes(text.text)) {
    findings.add("color-count", index, record.line, begin,
                 fmt::format("{}, {} in the script's text", counted(countColorCodes(record.text), "colour code"),
                             countColorCodes(text.text)));
  }
}

}  // namespace

void checkExchangeFile(Findings& findings, std::string_view lxf, const Outline* script, bool scriptIsOriginal) {
  const ExchangeFile file = cutExchangeFile(lxf);
  if (file.bareFeeds > 0) {
    std::size_t line = 0;
    std::size_t at = lxf.find('\n');
    for (; at != std::string_view::npos && at > 0 && lxf[at - 1] == '\r'; at = lxf.find('\n', at + 1)) ++line;
    findings.list().push_back(
        {line + 1, 1, "lxf-line-ends",
         fmt::format("{} in LF, not in CR LF: {}",
                     file.bareFeeds == 1 ? "1 line ends" : fmt::format("{} lines end", file.bareFeeds),
                     file.records.empty() ? "an import would merge nothing" : "records run together")});
  } else if (!file.rest.empty()) {
    findings.add("lxf-last-line", file.records.size(), file.rest, 0,
                 "no CR LF behind the last record: an import loses it");
  }
  for (std::size_t i = 0; i < file.records.size(); ++i) checkRecord(findings, file.records[i], i);
  if (script == nullptr) return;

  const std::vector<const OutlineText*> texts = recordTexts(*script);
  if (texts.size() != file.records.size()) {
    findings.list().push_back(
        {file.records.size() + 1, 1, "lxf-count",
         fmt::format("{}, the script has {}", counted(file.records.size(), "record"), counted(texts.size(), "text"))});
    return;
  }
  // A file without any code is an ordinary export, which leaves them out.
  const bool hasCodes = countColorCodes(lxf) > 0;
  for (std::size_t i = 0; i < texts.size(); ++i) {
    if (file.records[i].hasColon) {
      checkBeside(findings, file.records[i], i, *texts[i], hasCodes, scriptIsOriginal);
    }
  }
}

}  // namespace dravenna
