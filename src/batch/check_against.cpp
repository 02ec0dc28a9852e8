#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

#include "batch/findings.h"
#include "batch/pairing.h"
#include "batch/script_lines.h"
#include "batch/session.h"

namespace dravenna {

namespace {

std::size_t countColons(std::string_view text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), ':'));
}

bool isReadable(const OutlineText& text) { return text.segment == Segment::Message || text.segment == Segment::Title; }

bool hasBracketAtEnd(std::string_view plain) { return !plain.empty() && (plain.front() == '[' || plain.back() == ']'); }

void checkText(Findings& findings, const OutlineText& before, const OutlineText& text, bool strict,
               const FrozenNames* frozen) {
  if (frozen != nullptr && before.text != text.text && frozen->count(std::string(before.text)) != 0) {
    findings.add("frozen", text, 0,
                 fmt::format("{} was {}, which is a name in the code too", findings.quoted(text.text),
                             findings.quoted(before.text)));
  }
  if (text.inMenu && countColons(before.text) != countColons(text.text)) {
    findings.add("menu-count", text, 0,
                 fmt::format("{} in a menu's text, {} in the original", counted(countColons(text.text), "colon"),
                             countColons(before.text)));
  }
  if (!isReadable(text)) return;
  const std::string plainBefore = withoutColor(before.text);
  const std::string plain = withoutColor(text.text);
  if (text.record && plain == plainBefore && hasLetter(plain)) {
    findings.add("untranslated", text, 0, findings.quoted(text.text));
  }
  if (before.record && !text.record && hasBracketAtEnd(plain)) {
    findings.add("bracket", text, 0,
                 "a bracket at an end, which the original has not, takes the text out of the exchange file");
  }
  if (strict && countColorCodes(before.text) != countColorCodes(text.text)) {
    findings.add("color-count", text, 0,
                 fmt::format("{}, {} in the original's text", counted(countColorCodes(text.text), "colour code"),
                             countColorCodes(before.text)));
  }
}

struct PageCodes {
  std::size_t codes = 0;
  const OutlineText* first = nullptr;
  std::set<std::uint32_t> partners;  // pages of the other script that it shares texts with
};

std::map<std::uint32_t, PageCodes> pagesOf(const Outline& outline) {
  std::map<std::uint32_t, PageCodes> pages;
  for (const OutlineText& text : outline.texts) {
    if (!isReadable(text)) continue;
    PageCodes& page = pages[text.page];
    page.codes += countColorCodes(text.text);
    if (page.first == nullptr) page.first = &text;
  }
  return pages;
}

// Texts may have been re-flowed within a page, so codes are compared page by page. Pages that split or joined are left
// out: that is a change of the code, told elsewhere.
void checkPages(Findings& findings, const Outline& old, const Outline& outline, const Pairing& pairing) {
  std::map<std::uint32_t, PageCodes> before = pagesOf(old);
  std::map<std::uint32_t, PageCodes> after = pagesOf(outline);
  const bool samePages = old.pages == outline.pages;
  for (std::size_t i = 0; i < outline.texts.size(); ++i) {
    if (pairing.oldOf[i] == kNoText || !isReadable(outline.texts[i])) continue;
    const OutlineText& from = old.texts[pairing.oldOf[i]];
    after[outline.texts[i].page].partners.insert(from.page);
    before[from.page].partners.insert(outline.texts[i].page);
  }
  for (const auto& [number, page] : after) {
    std::uint32_t partner = number;
    if (!samePages) {
      if (page.partners.size() != 1) continue;
      partner = *page.partners.begin();
      if (before[partner].partners.size() != 1) continue;
    }
    if (page.first == nullptr || before[partner].codes == page.codes) continue;
    findings.add("color-count", *page.first, 0,
                 fmt::format("{} on this dialogue page, {} in the original", counted(page.codes, "colour code"),
                             before[partner].codes));
  }
}

void addOutside(Findings& findings, const OutsideChange& change, const std::vector<std::string_view>& lines) {
  const std::string_view line = change.newLine < lines.size() ? lines[change.newLine] : std::string_view();
  const std::size_t column = std::min(change.column, line.size());
  std::string text;
  if (change.newLines == 0) {
    text = fmt::format("{} of the original, from line {}, missing here", counted(change.oldLines, "line"),
                       change.oldLine + 1);
  } else if (change.oldLines == 0) {
    text = fmt::format("{} here that the original has not", counted(change.newLines, "line"));
  } else if (change.oldLines == 1 && change.newLines == 1) {
    text = fmt::format("not as in line {} of the original outside the texts", change.oldLine + 1);
  } else {
    text = fmt::format("{} not as in lines {} to {} of the original outside the texts",
                       counted(change.newLines, "line"), change.oldLine + 1, change.oldLine + change.oldLines);
  }
  findings.add("outside", change.newLine, line, column, std::move(text));
}

}  // namespace

void gatherFrozenNames(const Outline& outline, const std::string& relative, FrozenNames& names) {
  const std::string file = relative.substr(relative.rfind('/') + 1);
  names.insert(file);
  names.insert(file.substr(0, file.rfind('.')));
  for (const std::string_view npc : outline.npcs) {
    if (npc.empty()) continue;
    names.insert(std::string(npc));
    const std::size_t unique = npc.find("::");
    names.insert(std::string(npc.substr(0, unique)));
    if (unique != std::string_view::npos) names.insert(std::string(npc.substr(unique + 2)));
    names.insert(std::string(npc.substr(0, npc.find('#'))));
  }
  for (std::size_t i = 0; i < outline.labels.size(); ++i) {
    const std::string label(outline.labels[i]);
    const std::string_view npc = outline.npcs[outline.labelNpcs[i]];
    const std::size_t unique = npc.find("::");
    names.insert(label);
    names.insert(std::string(unique == std::string_view::npos ? npc : npc.substr(unique + 2)) + "::" + label);
  }
  names.erase(std::string());
}

void checkAgainst(Findings& findings, std::string_view oldWork, const Outline& old, std::string_view work,
                  const Outline& outline, bool strict, const FrozenNames* frozen) {
  const Pairing pairing = pairScripts(oldWork, old, work, outline);
  for (std::size_t i = 0; i < outline.texts.size(); ++i) {
    if (pairing.oldOf[i] == kNoText) continue;
    checkText(findings, old.texts[pairing.oldOf[i]], outline.texts[i], strict, frozen);
  }
  if (!strict) checkPages(findings, old, outline, pairing);
  if (pairing.lineEndsDiffer) findings.list().push_back({1, 1, "line-ends", "other line ends than the original"});
  if (pairing.outside.empty()) return;
  const std::vector<std::string_view> lines = linesOf(work);
  for (const OutsideChange& change : pairing.outside) addOutside(findings, change, lines);
}

}  // namespace dravenna
