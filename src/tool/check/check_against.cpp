#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <set>
#include <tuple>

#include "text/text.h"
#include "tool/check/findings.h"
#include "tool/script/pairing.h"
#include "tool/script/script_lines.h"
#include "tool/script/shown.h"

namespace dravenna {

namespace {

// The texts of a script beside those that they stand for.
class TextChecks {
 public:
  TextChecks(Findings& findings, const ScriptView& old, const ScriptView& script, const Pairing& pairing, bool strict,
             const FrozenNames* frozen)
      : findings_(findings), old_(old), script_(script), pairing_(pairing), strict_(strict), frozen_(frozen) {}

  void check(std::size_t i) {
    const OutlineText& text = script_.outline.texts[i];
    const OutlineText& before = old_.outline.texts[pairing_.oldOf[i]];
    if (frozen_ != nullptr && before.text != text.text && frozen_->count(std::string(before.text)) != 0) {
      findings_.add("frozen", spotOf(text),
                    fmt::format("{} was {}, which is a name in the code too", findings_.quoted(text.text),
                                findings_.quoted(before.text)));
    }
    findings_.add(breaksOf(findings_.codec(), before.text, text.text, inFrontOf(text.text, script_.work)),
                  spotOf(text));
    if (!text.inMenu && !isReadable(text)) return;
    TextPair pair{before.text, text.text, before.record || text.record, text.inMenu};
    pair.countsCodes = strict_;
    findPlus(script_.work, text, pair);
    if (isReadable(text)) findings_.addRendering(pair, spotOf(text));
    std::vector<Break> breaks = checkTranslation(findings_.codec(), pair);
    std::erase_if(breaks, [&](const Break& found) {
      return isReadable(text) ? !strict_ && mayMove(found.kind) && pageHoldsAll(i)
                              : found.kind != std::string_view("menu-count");
    });
    findings_.add(std::move(breaks), spotOf(text));
  }

 private:
  // Whether the texts of the page, taken together, have the tokens of their originals.
  bool pageHoldsAll(std::size_t i) {
    const std::vector<OutlineText>& texts = script_.outline.texts;
    const std::uint32_t page = texts[i].page;
    if (page == page_) return holdsAll_;
    page_ = page;
    const auto [begin, end] =
        std::equal_range(texts.begin(), texts.end(), texts[i],
                         [](const OutlineText& a, const OutlineText& b) { return a.page < b.page; });
    std::vector<std::string> before;
    std::vector<std::string> now;
    const auto gather = [](std::string_view text, std::vector<std::string>& out) {
      for (const Token& token : tokensOf(text)) {
        if (mayMove(token.kind)) out.push_back(token.kind + token.text);
      }
    };
    for (auto text = begin; text != end; ++text) {
      const std::size_t from = pairing_.oldOf[static_cast<std::size_t>(text - texts.begin())];
      if (from == kNoText || !isReadable(*text)) continue;
      gather(old_.outline.texts[from].text, before);
      gather(text->text, now);
    }
    return holdsAll_ = std::is_permutation(before.begin(), before.end(), now.begin(), now.end());
  }

  Findings& findings_;
  const ScriptView& old_;
  const ScriptView& script_;
  const Pairing& pairing_;
  bool strict_;
  const FrozenNames* frozen_;
  std::uint32_t page_ = static_cast<std::uint32_t>(-1);
  bool holdsAll_ = false;
};

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

// Pages that an error line, whose texts are not known, may belong to.
std::set<std::uint32_t> pagesWithErrors(const Outline& outline) {
  std::set<std::uint32_t> pages;
  for (const OutlineError& error : outline.errors) {
    const auto behind = std::ranges::lower_bound(outline.texts, error.lineNumber, {}, &OutlineText::lineNumber);
    if (behind != outline.texts.end()) pages.insert(behind->page);
    if (behind != outline.texts.begin()) pages.insert(std::prev(behind)->page);
  }
  return pages;
}

// Texts may have been re-flowed within a page, so codes are compared page by page. Pages that split or joined are left
// out: that is a change of the code, told elsewhere.
void checkPages(Findings& findings, const Outline& old, const Outline& outline, const Pairing& pairing) {
  std::map<std::uint32_t, PageCodes> before = pagesOf(old);
  std::map<std::uint32_t, PageCodes> after = pagesOf(outline);
  const bool samePages = old.pages == outline.pages;
  const std::set<std::uint32_t> errors = pagesWithErrors(outline);
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
    if (errors.count(number) != 0 || before[partner].codes == page.codes) continue;
    findings.add("color-count", spotOf(*page.first),
                 fmt::format("{} on this dialogue page, {} in the original", counted(page.codes, "colour code"),
                             before[partner].codes));
  }
}

// The line ends of a script but for the last one.
struct LineEnds {
  bool crlf = false;
  bool lf = false;
  ScriptLine last{};
};

LineEnds lineEndsOf(std::string_view work) {
  LineEnds ends;
  forEachLine(work, [&](const ScriptLine& line) {
    if (line.number > 0) (ends.last.ending.size() == 2 ? ends.crlf : ends.lf) = true;
    ends.last = line;
  });
  return ends;
}

void checkLineEnds(Findings& findings, std::string_view oldWork, std::string_view work) {
  const LineEnds old = lineEndsOf(oldWork);
  const LineEnds ends = lineEndsOf(work);
  const bool hasNone = ends.last.ending.empty();
  const bool oneHasNone = !work.empty() && !oldWork.empty() && hasNone != old.last.ending.empty();
  if (oneHasNone && ends.crlf == old.crlf && ends.lf == old.lf) {
    findings.add("line-ends", {ends.last.number, ends.last.text, ends.last.text.size()},
                 hasNone ? "no line end behind the last line, the original has one"
                         : "a line end behind the last line, the original has none");
  } else {
    findings.addWhole("line-ends", "other line ends than the original");
  }
}

// Takes away what the original has too: on the line that a line stands for, or of the whole file in the same words.
void dropKnown(Findings& findings, const ScriptView& old, const Pairing& pairing) {
  Findings known(findings.codec());
  checkScript(known, old);
  using Key = std::tuple<std::string_view, std::size_t, std::string_view>;
  const auto keyOf = [](const Finding& finding, std::size_t line) {
    const std::string_view kind = finding.kind;
    return kind == "utf8" || kind == "lacked-byte" ? Key{kind, 0, finding.text} : Key{kind, line, {}};
  };
  std::multiset<Key> keys;
  for (const Finding& finding : known.list()) keys.insert(keyOf(finding, finding.at.line - 1));
  std::erase_if(findings.list(), [&](const Finding& finding) {
    const auto found = keys.find(keyOf(finding, pairing.oldLineOf[finding.at.line - 1]));
    if (found == keys.end()) return false;
    keys.erase(found);
    return true;
  });
}

}  // namespace

void checkAgainst(Findings& findings, const ScriptView& old, const ScriptView& script, bool strict,
                  const FrozenNames* frozen) {
  const Pairing pairing = pairScripts(old.work, old.outline, script.work, script.outline);
  if (!findings.list().empty()) dropKnown(findings, old, pairing);
  TextChecks texts(findings, old, script, pairing, strict, frozen);
  for (std::size_t i = 0; i < script.outline.texts.size(); ++i) {
    if (pairing.oldOf[i] != kNoText) texts.check(i);
  }
  if (!strict) checkPages(findings, old.outline, script.outline, pairing);
  if (pairing.lineEndsDiffer) checkLineEnds(findings, old.work, script.work);
  if (!pairing.outside.empty()) checkOutside(findings, old, script, pairing.outside);
}

}  // namespace dravenna
