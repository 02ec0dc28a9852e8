#include "tool/script/pairing.h"

#include <algorithm>

#include "tool/script/align.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

// The lines of a script without their texts.
struct Skeleton {
  std::vector<std::uint64_t> lines;
  std::vector<std::size_t> firstText;  // of each line, and one more entry behind the last
  bool endings[3] = {};                // which line ends there are, by their length
};

Skeleton skeletonOf(std::string_view work, const Outline& outline) {
  Skeleton skeleton;
  std::string outside;
  std::size_t text = 0;
  forEachLine(work, [&](const ScriptLine& line) {
    const std::size_t first = text;
    while (text < outline.texts.size() && outline.texts[text].lineNumber == line.number) ++text;
    outside.clear();
    appendOutside(line.text, outline, first, text, outside);
    skeleton.lines.push_back(hashOf(outside));
    skeleton.firstText.push_back(first);
    skeleton.endings[line.ending.size()] = true;
  });
  skeleton.firstText.push_back(outline.texts.size());
  return skeleton;
}

}  // namespace

void appendOutside(std::string_view line, const Outline& outline, std::size_t from, std::size_t to, std::string& out) {
  std::size_t copied = 0;
  for (std::size_t i = from; i < to; ++i) {
    const OutlineText& text = outline.texts[i];
    out.append(line.substr(copied, text.begin - copied)).push_back('\0');
    copied = text.begin + text.text.size();
  }
  out.append(line.substr(copied));
}

Pairing pairScripts(std::string_view oldWork, const Outline& oldOutline, std::string_view newWork,
                    const Outline& newOutline) {
  const Skeleton before = skeletonOf(oldWork, oldOutline);
  const Skeleton after = skeletonOf(newWork, newOutline);
  Pairing pairing;
  pairing.oldOf.assign(newOutline.texts.size(), kNoText);
  pairing.oldLineOf.assign(after.lines.size(), kNoText);
  pairing.lineEndsDiffer = !std::equal(std::begin(before.endings), std::end(before.endings), std::begin(after.endings));

  const auto pairLines = [&](std::size_t oldLine, std::size_t newLine) {
    pairing.oldLineOf[newLine] = oldLine;
    const std::size_t count = after.firstText[newLine + 1] - after.firstText[newLine];
    if (before.firstText[oldLine + 1] - before.firstText[oldLine] != count) return;
    for (std::size_t i = 0; i < count; ++i) pairing.oldOf[after.firstText[newLine] + i] = before.firstText[oldLine] + i;
  };
  std::size_t oldAt = 0;
  std::size_t newAt = 0;
  const auto differ = [&](std::size_t oldEnd, std::size_t newEnd) {
    if (oldAt == oldEnd && newAt == newEnd) return;
    const OutsideChange change{oldAt, oldEnd - oldAt, newAt, newEnd - newAt};
    if (change.oldLines == change.newLines) {
      for (std::size_t i = 0; i < change.oldLines; ++i) pairLines(oldAt + i, newAt + i);
    }
    pairing.outside.push_back(change);
  };
  for (const EqualRun& run : alignSequences(before.lines, after.lines)) {
    differ(run.a, run.b);
    for (std::size_t i = 0; i < run.length; ++i) pairLines(run.a + i, run.b + i);
    oldAt = run.a + run.length;
    newAt = run.b + run.length;
  }
  differ(before.lines.size(), after.lines.size());
  return pairing;
}

}  // namespace dravenna
