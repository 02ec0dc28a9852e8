#include <fmt/core.h>

#include <algorithm>
#include <optional>
#include <span>

#include "tool/check/findings.h"
#include "tool/script/script_lines.h"
#include "tool/script/shown.h"

namespace dravenna {

namespace {

// A line and the texts on it.
struct TextLine {
  std::string_view line;
  std::span<const OutlineText> texts;

  std::size_t begin(std::size_t i) const { return i < texts.size() ? texts[i].begin : line.size(); }
  std::size_t end(std::size_t i) const { return texts[i].begin + texts[i].text.size(); }
};

// What stands in `line` in the place of the old texts, quote marks and all, if every byte outside of them is there in
// its order.
std::optional<std::vector<std::string_view>> textsInPlace(const TextLine& old, std::string_view line) {
  if (old.texts.empty()) return std::nullopt;
  const std::string_view head = old.line.substr(0, old.begin(0));
  const std::string_view tail = old.line.substr(old.end(old.texts.size() - 1));
  if (line.size() < head.size() + tail.size() || !line.starts_with(head) || !line.ends_with(tail)) return std::nullopt;
  const std::string_view inner = line.substr(0, line.size() - tail.size());
  std::vector<std::string_view> texts;
  std::size_t at = head.size();
  for (std::size_t i = 1; i < old.texts.size(); ++i) {
    const std::string_view between = old.line.substr(old.end(i - 1), old.begin(i) - old.end(i - 1));
    const std::size_t found = inner.find(between, at);
    if (found == std::string_view::npos) return std::nullopt;
    texts.push_back(inner.substr(at, found - at));
    at = found + between.size();
  }
  texts.push_back(inner.substr(at));
  return texts;
}

// Offset in the line of the first byte outside its texts that is not as in the old one.
std::size_t firstDifference(const TextLine& old, const TextLine& now) {
  std::size_t oldAt = 0;
  std::size_t at = 0;
  for (std::size_t i = 0;; ++i) {
    const std::string_view oldPart = old.line.substr(oldAt, old.begin(i) - oldAt);
    const std::string_view part = now.line.substr(at, now.begin(i) - at);
    const auto differs = std::mismatch(part.begin(), part.end(), oldPart.begin(), oldPart.end()).first;
    if (part != oldPart || i >= old.texts.size() || i >= now.texts.size())
      return at + static_cast<std::size_t>(differs - part.begin());
    oldAt = old.end(i);
    at = now.end(i);
  }
}

class OutsideCheck {
 public:
  OutsideCheck(Findings& findings, const ScriptView& old, const ScriptView& script)
      : findings_(findings),
        old_(old.outline),
        outline_(script.outline),
        oldLines_(linesOf(old.work)),
        lines_(linesOf(script.work)) {}

  void check(const OutsideChange& change) {
    const std::size_t oldEnd = change.oldLine + change.oldLines;
    const std::size_t end = change.newLine + change.newLines;
    std::size_t oldFrom = change.oldLine;
    std::size_t from = change.newLine;
    for (std::size_t line = from; line < end; ++line) {
      // As many lines on both sides are taken as pairs, else a line's partner is looked for.
      const bool pairs = change.oldLines == change.newLines;
      const std::size_t first = pairs ? change.oldLine + (line - change.newLine) : oldFrom;
      const std::size_t last = pairs ? first + 1 : std::min(oldEnd, first + kReach);
      for (std::size_t oldLine = first; oldLine < last; ++oldLine) {
        const auto texts = textsInPlace(lineOf(old_, oldLines_, oldLine), lines_[line]);
        if (!texts) continue;
        addOutside({oldFrom, oldLine - oldFrom, from, line - from});
        checkTexts(line, *texts);
        oldFrom = oldLine + 1;
        from = line + 1;
        break;
      }
    }
    addOutside({oldFrom, oldEnd - oldFrom, from, end - from});
  }

 private:
  static constexpr std::size_t kReach = 50;  // lines

  static TextLine lineOf(const Outline& outline, const std::vector<std::string_view>& lines, std::size_t number) {
    const auto from = [&](std::size_t line) {
      return std::ranges::lower_bound(outline.texts, line, {}, &OutlineText::lineNumber);
    };
    return {lines[number], {from(number), from(number + 1)}};
  }

  // Quote marks in a text. Those behind a backslash, and an odd number on the line, are findings of the script itself.
  void checkTexts(std::size_t number, const std::vector<std::string_view>& texts) {
    if (std::ranges::binary_search(outline_.errors, number, {}, &OutlineError::lineNumber)) return;
    const std::string_view line = lines_[number];
    for (const std::string_view text : texts) {
      std::size_t count = 0;
      std::size_t first = 0;
      for (std::size_t at = text.find('"'); at != std::string_view::npos; at = text.find('"', at + 1)) {
        if (isEscaped(findings_.codec(), text, at)) continue;
        if (count++ == 0) first = at;
      }
      if (count == 0) continue;
      findings_.add("quote-mark", {number, line, static_cast<std::size_t>(text.data() - line.data()) + first},
                    fmt::format("{} inside a text, which the original has not", counted(count, "quote mark")));
    }
  }

  void addOutside(const OutsideChange& change) {
    if (change.oldLines == 0 && change.newLines == 0) return;
    const std::string_view line = change.newLine < lines_.size() ? lines_[change.newLine] : std::string_view();
    std::size_t offset = 0;
    std::string text;
    if (change.newLines == 0) {
      text = fmt::format("{} of the original, from line {}, missing here", counted(change.oldLines, "line"),
                         change.oldLine + 1);
    } else if (change.oldLines == 0) {
      text = fmt::format("{} here that the original has not", counted(change.newLines, "line"));
    } else {
      offset = firstDifference(lineOf(old_, oldLines_, change.oldLine), lineOf(outline_, lines_, change.newLine));
      text = change.oldLines == 1 && change.newLines == 1
                 ? fmt::format("not as in line {} of the original outside the texts", change.oldLine + 1)
                 : fmt::format("{} not as in lines {} to {} of the original outside the texts",
                               counted(change.newLines, "line"), change.oldLine + 1, change.oldLine + change.oldLines);
    }
    findings_.add("outside", {change.newLine, line, std::min(offset, line.size())}, std::move(text));
  }

  Findings& findings_;
  const Outline& old_;
  const Outline& outline_;
  std::vector<std::string_view> oldLines_;
  std::vector<std::string_view> lines_;
};

}  // namespace

void checkOutside(Findings& findings, const ScriptView& old, const ScriptView& script,
                  const std::vector<OutsideChange>& changes) {
  OutsideCheck outside(findings, old, script);
  for (const OutsideChange& change : changes) outside.check(change);
}

}  // namespace dravenna
