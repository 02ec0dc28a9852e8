#include <fmt/core.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <tuple>

#include "text/text.h"
#include "tool/check/findings.h"
#include "tool/script/pairing.h"
#include "tool/script/script_lines.h"
#include "tool/script/shown.h"

namespace dravenna {

namespace {

bool isReadable(const OutlineText& text) { return text.segment == Segment::Message || text.segment == Segment::Title; }

// The texts of a script beside those that they stand for.
class TextChecks {
 public:
  TextChecks(Findings& findings, const Outline& old, std::string_view work, const Outline& outline,
             const Pairing& pairing, bool strict, const FrozenNames* frozen)
      : findings_(findings),
        old_(old),
        work_(work),
        outline_(outline),
        pairing_(pairing),
        strict_(strict),
        frozen_(frozen) {}

  void check(std::size_t i) {
    const OutlineText& text = outline_.texts[i];
    const OutlineText& before = old_.texts[pairing_.oldOf[i]];
    if (frozen_ != nullptr && before.text != text.text && frozen_->count(std::string(before.text)) != 0) {
      findings_.add("frozen", text, 0,
                    fmt::format("{} was {}, which is a name in the code too", findings_.quoted(text.text),
                                findings_.quoted(before.text)));
    }
    for (Break& found : breaksOf(findings_.codec(), before.text, text.text)) {
      findings_.add(found.kind, text, found.offset, std::move(found.why));
    }
    if (!text.inMenu && !isReadable(text)) return;
    TextPair pair{before.text, text.text, before.record || text.record, text.inMenu};
    pair.countsCodes = strict_;
    findPlus(work_, text, pair);
    if (isReadable(text)) findings_.addRendering(pair, text.lineNumber, text.line, text.begin);
    for (Break& found : checkTranslation(findings_.codec(), pair)) {
      if (!isReadable(text) && found.kind != std::string_view("menu-count")) continue;
      if (!strict_ && mayMove(found.kind) && pageHoldsAll(i)) continue;
      findings_.add(found.kind, text, found.offset, std::move(found.why));
    }
  }

 private:
  // Whether the texts of the page, taken together, have the tokens of their originals.
  bool pageHoldsAll(std::size_t i) {
    const std::uint32_t page = outline_.texts[i].page;
    if (page == page_) return holdsAll_;
    page_ = page;
    const auto [begin, end] =
        std::equal_range(outline_.texts.begin(), outline_.texts.end(), outline_.texts[i],
                         [](const OutlineText& a, const OutlineText& b) { return a.page < b.page; });
    std::vector<std::string> before;
    std::vector<std::string> now;
    const auto gather = [](std::string_view text, std::vector<std::string>& out) {
      for (const Token& token : tokensOf(text)) {
        if (mayMove(token.kind)) out.push_back(token.kind + token.text);
      }
    };
    for (auto text = begin; text != end; ++text) {
      const std::size_t from = pairing_.oldOf[static_cast<std::size_t>(text - outline_.texts.begin())];
      if (from == kNoText || !isReadable(*text)) continue;
      gather(old_.texts[from].text, before);
      gather(text->text, now);
    }
    return holdsAll_ = std::is_permutation(before.begin(), before.end(), now.begin(), now.end());
  }

  Findings& findings_;
  const Outline& old_;
  std::string_view work_;
  const Outline& outline_;
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
    const auto behind =
        std::lower_bound(outline.texts.begin(), outline.texts.end(), error.lineNumber,
                         [](const OutlineText& text, std::size_t line) { return text.lineNumber < line; });
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
    if (page.first == nullptr || errors.count(number) != 0 || before[partner].codes == page.codes) continue;
    findings.add("color-count", *page.first, 0,
                 fmt::format("{} on this dialogue page, {} in the original", counted(page.codes, "colour code"),
                             before[partner].codes));
  }
}

// A line and the texts on it.
struct TextLine {
  std::string_view line;
  const OutlineText* texts;
  std::size_t count;

  std::size_t begin(std::size_t i) const { return i < count ? texts[i].begin : line.size(); }
  std::size_t end(std::size_t i) const { return texts[i].begin + texts[i].text.size(); }
};

// What stands in `line` in the place of the old texts, quote marks and all, if every byte outside of them is there in
// its order.
std::optional<std::vector<std::string_view>> textsInPlace(const TextLine& old, std::string_view line) {
  if (old.count == 0) return std::nullopt;
  const std::string_view head = old.line.substr(0, old.begin(0));
  const std::string_view tail = old.line.substr(old.end(old.count - 1));
  if (line.size() < head.size() + tail.size() || line.substr(0, head.size()) != head ||
      line.substr(line.size() - tail.size()) != tail) {
    return std::nullopt;
  }
  const std::string_view inner = line.substr(0, line.size() - tail.size());
  std::vector<std::string_view> texts;
  std::size_t at = head.size();
  for (std::size_t i = 1; i < old.count; ++i) {
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
    std::size_t same = 0;
    while (same < std::min(oldPart.size(), part.size()) && oldPart[same] == part[same]) ++same;
    if (same < oldPart.size() || same < part.size() || i >= old.count || i >= now.count) return at + same;
    oldAt = old.end(i);
    at = now.end(i);
  }
}

// Tells what changed outside the texts; a text that brought in quote marks or a comment is told as that.
class OutsideCheck {
 public:
  OutsideCheck(Findings& findings, std::string_view oldWork, const Outline& old, std::string_view work,
               const Outline& outline)
      : findings_(findings), old_(old), outline_(outline), oldLines_(linesOf(oldWork)), lines_(linesOf(work)) {}

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
    const auto before = [](const OutlineText& text, std::size_t line) { return text.lineNumber < line; };
    const auto begin = std::lower_bound(outline.texts.begin(), outline.texts.end(), number, before);
    const auto end = std::lower_bound(begin, outline.texts.end(), number + 1, before);
    return {lines[number], outline.texts.data() + (begin - outline.texts.begin()),
            static_cast<std::size_t>(end - begin)};
  }

  // Quote marks in a text. Those behind a backslash, and an odd number on the line, are findings of the script itself.
  void checkTexts(std::size_t number, const std::vector<std::string_view>& texts) {
    const auto before = [](const OutlineError& error, std::size_t line) { return error.lineNumber < line; };
    const auto error = std::lower_bound(outline_.errors.begin(), outline_.errors.end(), number, before);
    if (error != outline_.errors.end() && error->lineNumber == number) return;
    const std::string_view line = lines_[number];
    for (const std::string_view text : texts) {
      std::size_t count = 0;
      std::size_t first = 0;
      for (std::size_t at = text.find('"'); at != std::string_view::npos; at = text.find('"', at + 1)) {
        if (isEscaped(findings_.codec(), text, at)) continue;
        if (count++ == 0) first = at;
      }
      if (count == 0) continue;
      findings_.add("quote-mark", number, line, static_cast<std::size_t>(text.data() - line.data()) + first,
                    fmt::format("{} inside a text, which the original has not", counted(count, "quote mark")));
    }
  }

  void addOutside(const OutsideChange& change) {
    if (change.oldLines == 0 && change.newLines == 0) return;
    const std::string_view line = change.newLine < lines_.size() ? lines_[change.newLine] : std::string_view();
    std::size_t column = 0;
    std::string text;
    if (change.newLines == 0) {
      text = fmt::format("{} of the original, from line {}, missing here", counted(change.oldLines, "line"),
                         change.oldLine + 1);
    } else if (change.oldLines == 0) {
      text = fmt::format("{} here that the original has not", counted(change.newLines, "line"));
    } else {
      column = firstDifference(lineOf(old_, oldLines_, change.oldLine), lineOf(outline_, lines_, change.newLine));
      text = change.oldLines == 1 && change.newLines == 1
                 ? fmt::format("not as in line {} of the original outside the texts", change.oldLine + 1)
                 : fmt::format("{} not as in lines {} to {} of the original outside the texts",
                               counted(change.newLines, "line"), change.oldLine + 1, change.oldLine + change.oldLines);
    }
    findings_.add("outside", change.newLine, line, std::min(column, line.size()), std::move(text));
  }

  Findings& findings_;
  const Outline& old_;
  const Outline& outline_;
  std::vector<std::string_view> oldLines_;
  std::vector<std::string_view> lines_;
};

// The line ends of a script but for the last one.
struct LineEnds {
  bool crlf = false;
  bool lf = false;
  std::string_view lastLine;
  std::string_view last;
  std::size_t lines = 0;
};

LineEnds lineEndsOf(std::string_view work) {
  LineEnds ends;
  forEachLine(work, [&](const ScriptLine& line) {
    if (ends.lines > 0) (ends.last.size() == 2 ? ends.crlf : ends.lf) = true;
    ends.lastLine = line.text;
    ends.last = line.ending;
    ++ends.lines;
  });
  return ends;
}

void checkLineEnds(Findings& findings, std::string_view oldWork, std::string_view work) {
  const LineEnds old = lineEndsOf(oldWork);
  const LineEnds ends = lineEndsOf(work);
  const bool oneHasNone = ends.lines > 0 && old.lines > 0 && ends.last.empty() != old.last.empty();
  if (oneHasNone && ends.crlf == old.crlf && ends.lf == old.lf) {
    findings.add("line-ends", ends.lines - 1, ends.lastLine, ends.lastLine.size(),
                 ends.last.empty() ? "no line end behind the last line, the original has one"
                                   : "a line end behind the last line, the original has none");
  } else {
    findings.list().push_back({1, 1, "line-ends", "other line ends than the original"});
  }
}

// Takes away what the original has too: on the line that a line stands for, or of the whole file in the same words.
void dropKnown(Findings& findings, std::string_view oldFile, std::string_view oldWork, const Outline& old,
               const Pairing& pairing) {
  Findings known(findings.codec());
  checkScript(known, old, oldFile, oldWork);
  using Key = std::tuple<std::string_view, std::size_t, std::string_view>;
  const auto keyOf = [](const Finding& finding, std::size_t line) {
    const std::string_view kind = finding.kind;
    return kind == "utf8" || kind == "lacked-byte" ? Key{kind, 0, finding.text} : Key{kind, line, {}};
  };
  std::multiset<Key> keys;
  for (const Finding& finding : known.list()) keys.insert(keyOf(finding, finding.line - 1));
  std::erase_if(findings.list(), [&](const Finding& finding) {
    const auto found = keys.find(keyOf(finding, pairing.oldLineOf[finding.line - 1]));
    if (found == keys.end()) return false;
    keys.erase(found);
    return true;
  });
}

}  // namespace

void checkAgainst(Findings& findings, std::string_view oldFile, std::string_view oldWork, const Outline& old,
                  std::string_view work, const Outline& outline, bool strict, const FrozenNames* frozen) {
  const Pairing pairing = pairScripts(oldWork, old, work, outline);
  if (!findings.list().empty()) dropKnown(findings, oldFile, oldWork, old, pairing);
  TextChecks texts(findings, old, work, outline, pairing, strict, frozen);
  for (std::size_t i = 0; i < outline.texts.size(); ++i) {
    if (pairing.oldOf[i] != kNoText) texts.check(i);
  }
  if (!strict) checkPages(findings, old, outline, pairing);
  if (pairing.lineEndsDiffer) checkLineEnds(findings, oldWork, work);
  if (pairing.outside.empty()) return;
  OutsideCheck outside(findings, oldWork, old, work, outline);
  for (const OutsideChange& change : pairing.outside) outside.check(change);
}

}  // namespace dravenna
