#include <fmt/core.h>

#include <algorithm>
#include <charconv>

#include "tool/check/findings.h"
#include "tool/script/exchange_file.h"
#include "tool/script/script_lines.h"
#include "tool/script/shown.h"

namespace dravenna {

namespace {

std::vector<const OutlineText*> recordTexts(const Outline& script) {
  std::vector<const OutlineText*> texts;
  for (const OutlineText& text : script.texts) {
    if (text.record) texts.push_back(&text);
  }
  return texts;
}

// Which number a record must bear. Where the numbers jump, one finding is enough: the next one may go on from the
// number that was borne or from the one that was due.
class Numbers {
 public:
  // Whether the record bears a number that may be.
  bool take(const ByteRecord& record) {
    const bool fits = bearsNumber(record, due_) || bearsNumber(record, other_);
    const std::size_t borne = numberOf(record);
    const std::size_t next = due_ + 1;
    other_ = !record.hasColon ? due_ : fits || borne == 0 ? next : borne + 1;
    due_ = fits ? borne + 1 : next;
    if (fits) other_ = due_;
    return fits;
  }
  std::size_t due() const { return due_; }

 private:
  // 0 for none.
  static std::size_t numberOf(const ByteRecord& record) {
    std::size_t number = 0;
    const auto [end, error] =
        std::from_chars(record.number.data(), record.number.data() + record.number.size(), number);
    return error == std::errc() && bearsNumber(record, number) ? number : 0;
  }

  std::size_t due_ = 1;
  std::size_t other_ = 1;
};

// `before` is the text of the script that the record stands for, where that is known.
void checkRecord(Findings& findings, const ByteRecord& record, std::size_t index, Numbers& numbers,
                 const OutlineText* before, std::string_view script) {
  const std::size_t due = numbers.due();
  const bool fits = numbers.take(record);
  if (!record.hasColon)
    return findings.add("lxf-order", {index, record.line, 0}, "no number and colon: an import stops here");
  if (!fits) {
    findings.add("lxf-order", {index, record.line, 0},
                 fmt::format("bears the number {}, not {}", findings.quoted(record.number), due));
  }
  const Spot begin{index, record.line, record.number.size() + 1};
  findings.add(before == nullptr
                   ? breaksOf(findings.codec(), std::nullopt, record.text)
                   : breaksOf(findings.codec(), before->text, record.text, inFrontOf(before->text, script)),
               begin);
  const std::string plain = withoutColor(record.text);
  if (!plain.empty() && (plain.front() == '[' || plain.back() == ']')) {
    findings.add("bracket", {index, record.line, plain.front() == '[' ? begin.offset : record.line.size() - 1},
                 "a bracket at an end takes the text out of the next export");
  }
  findings.add(spoiltCodesOf(record.text), begin);
}

void checkBeside(Findings& findings, const ByteRecord& record, std::size_t index, const OutlineText& text,
                 std::string_view script, bool hasCodes, bool scriptIsOriginal) {
  TextPair pair{text.text, record.text, scriptIsOriginal, text.inMenu};
  pair.countsCodes = hasCodes;
  pair.source = "script";
  findPlus(script, text, pair);
  const Spot begin{index, record.line, record.number.size() + 1};
  findings.addRendering(pair, begin);
  std::vector<Break> breaks = checkTranslation(findings.codec(), pair);
  std::erase_if(breaks, [](const Break& found) { return found.kind == std::string_view("bracket"); });  // told above
  findings.add(std::move(breaks), begin);
}

}  // namespace

void checkExchangeFile(Findings& findings, std::string_view lxf, const ScriptView* script, bool scriptIsOriginal) {
  const ExchangeFile file = cutExchangeFile(lxf);
  const std::vector<ByteRecord>& records = file.records;
  if (file.bareFeeds > 0) {
    std::size_t line = 1;
    std::size_t at = lxf.find('\n');
    for (; at != std::string_view::npos && at > 0 && lxf[at - 1] == '\r'; at = lxf.find('\n', at + 1)) ++line;
    findings.addWhole("lxf-line-ends",
                      fmt::format("{} in LF, not in CR LF: {}",
                                  file.bareFeeds == 1 ? "1 line ends" : fmt::format("{} lines end", file.bareFeeds),
                                  records.empty() ? "an import would merge nothing" : "records run together"),
                      line);
  } else if (!file.rest.empty()) {
    findings.add("lxf-last-line", {records.size(), file.rest, 0},
                 "no CR LF behind the last record: an import loses it");
  }
  std::vector<const OutlineText*> texts;
  if (script != nullptr) texts = recordTexts(script->outline);
  const bool isWhole = texts.size() == records.size();
  Numbers numbers;
  for (std::size_t i = 0; i < records.size(); ++i) {
    checkRecord(findings, records[i], i, numbers, isWhole ? texts[i] : nullptr, script != nullptr ? script->work : "");
  }
  if (script == nullptr) return;

  // A record that only lacks its line end is told above.
  if (!isWhole && (file.rest.empty() || file.bareFeeds > 0 || texts.size() != records.size() + 1)) {
    return findings.addWhole(
        "lxf-count",
        fmt::format("{}, the script has {}", counted(records.size(), "record"), counted(texts.size(), "text")),
        records.size() + 1);
  }
  // A file without any code is an ordinary export, which leaves them out.
  const bool hasCodes = countColorCodes(lxf) > 0;
  for (std::size_t i = 0; i < records.size(); ++i) {
    if (records[i].hasColon) checkBeside(findings, records[i], i, *texts[i], script->work, hasCodes, scriptIsOriginal);
  }
}

}  // namespace dravenna
