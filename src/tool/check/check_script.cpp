#include "tool/check/findings.h"

#include <fmt/core.h>

#include <algorithm>

#include "text/fnv1a.h"
#include "text/text.h"
#include "tool/script/script_lines.h"
#include "tool/script/shown.h"

namespace dravenna {

namespace {

constexpr std::size_t kMostInText = 20;  // findings of one sort
constexpr std::string_view kBlack = "000000";

bool isAlnum(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

std::size_t hexDigitsAt(std::string_view text, std::size_t at) {
  return std::min(text.find_first_not_of("0123456789abcdefABCDEF", at), text.size()) - at;
}

void checkOddQuotes(Findings& findings, const OutlineError& error) {
  const bool cutByComment = error.code.size() < error.line.size();
  const std::size_t last = error.code.rfind('"');
  const auto all = static_cast<std::size_t>(std::count(error.line.begin(), error.line.end(), '"'));
  if (cutByComment && all % 2 == 0) {
    findings.add("comment-in-text", {error.lineNumber, error.line, error.code.size()},
                 "// inside a text cuts the line, which leaves an odd number of quote marks");
  } else {
    findings.add("odd-quotes", {error.lineNumber, error.line, last},
                 fmt::format("{} on the line, an odd number",
                             counted(static_cast<std::size_t>(std::count(error.code.begin(), error.code.end(), '"')),
                                     "quote mark")));
  }
}

void checkEscapedQuotes(Findings& findings, std::size_t lineNumber, std::string_view line, std::string_view code) {
  std::size_t count = 0;
  for (std::size_t at = code.find("\\\""); at != std::string_view::npos; at = code.find("\\\"", at + 2)) {
    if (!isEscaped(findings.codec(), code, at + 1)) continue;
    if (++count > kMostInText) return;
    findings.add("escaped-quote", {lineNumber, line, at},
                 "\\\" stays inside the text for the server, but cuts it for the translation");
  }
}

}  // namespace

Place Findings::placeOf(const Spot& at) {
  std::string_view line = at.line;
  while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.remove_prefix(1);
  while (!line.empty() && (line.back() == ' ' || line.back() == '\t')) line.remove_suffix(1);
  std::uint64_t hash = kFnv1aStart;
  for (const char c : line) hash = fnv1a(hash, c);
  return {at.lineNumber + 1, counter_.before(at.line, at.offset) + 1, hash};
}

void Findings::addRendering(const TextPair& pair, const Spot& at) {
  if (!keepsRenderings_ || !pair.record || !hasLetter(pair.before)) return;
  Rendering rendering{placeOf(at), toUtf8(codec_.decode(withoutColor(pair.before))),
                      toUtf8(codec_.decode(withoutColor(pair.now)))};
  if (rendering.before != rendering.now && !rendering.now.empty()) renderings_.push_back(std::move(rendering));
}

const char* nameOf(Severity severity) {
  return severity == Severity::Error ? "error" : severity == Severity::Warning ? "warning" : "note";
}

const std::vector<FindingKind>& findingKinds() {
  using enum Severity;
  static const std::vector<FindingKind> kinds = {
      {"odd-quotes", Error, "a line with an odd number of quote marks"},
      {"comment-in-text", Error, "// inside a text: the rest of the line is a comment; */ in one of a comment"},
      {"escaped-quote", Warning, "\\\" inside a text"},
      {"color-blank", Warning, "^ RRGGBB, with a blank behind the caret"},
      {"color-short", Warning, "a colour code with fewer than six digits"},
      {"color-digits", Warning, "a colour code with G or H, which players see as text"},
      {"color-no-caret", Warning, "000000 without its caret"},
      {"color-count", Warning,
       "another number of colour codes than in the original, by dialogue page (--strict: by text)"},
      {"menu-count", Error, "another number of : in a menu's text than in the original"},
      {"placeholder", Error, "other %d, %s and the like than in the original, or in another order"},
      {"item-code", Error, "other ^nItemID^501 and the like than on the original's dialogue page (--strict: text)"},
      {"tag", Error, "other <NAVI>, <INFO>map,1,2</INFO> and the like than on the original's page (--strict: text)"},
      {"number", Warning, "other numbers than on the original's dialogue page (--strict: text)"},
      {"edge-blank", Warning, "no blank at an end of a text, beside a +, where the original has one"},
      {"empty", Warning, "nothing but blanks where the original has a text"},
      {"bracket", Warning, "a bracket at an end that takes the text out of the exchange file"},
      {"quote-mark", Error, "a quote mark in a record, or more of them in a text than the original has"},
      {"backslash", Error, "a text that servers end elsewhere, for a backslash at its end that came or went"},
      {"control", Error, "a control character in a text"},
      {"untranslated", Note, "a text that is as in the original"},
      {"two-translations", Note, "one original with another translation elsewhere (--consistent)"},
      {"two-originals", Note, "one translation for another original elsewhere (--consistent)"},
      {"utf8", Error, "a file that is UTF-8 whole but is read in another code page"},
      {"utf16", Error, "a file that is UTF-16"},
      {"lacked-byte", Warning, "bytes that the code page lacks"},
      {"outside", Error, "bytes outside the texts that are not as in the original"},
      {"line-ends", Note, "other line ends than the original"},
      {"missing", Warning, "a script of one tree that the other lacks"},
      {"frozen", Error, "a changed text that code depends on (--frozen)"},
      {"lxf-line-ends", Error, "an exchange file with LF line ends"},
      {"lxf-last-line", Error, "an exchange file without CR LF behind its last record"},
      {"lxf-count", Error, "an exchange file with more or fewer records than the script has texts"},
      {"lxf-order", Error, "a record without its number"},
  };
  return kinds;
}

Severity severityOf(std::string_view kind) {
  const auto& kinds = findingKinds();
  return std::find_if(kinds.begin(), kinds.end(), [&](const FindingKind& one) { return one.name == kind; })->severity;
}

bool checkUtf16(Findings& findings, std::string_view file) {
  if (!isUtf16(file)) return false;
  findings.addWhole("utf16", "the file is UTF-16, which is read in no code page");
  return true;
}

void checkEncoding(Findings& findings, std::string_view file, std::string_view work) {
  if (isAscii(file)) return;
  const CodePage& page = findings.codec().page();
  const bool isOtherwise = !page.isUtf8() && isUtf8(file);
  const std::size_t lacked = isOtherwise ? 0 : page.countUndefined(file);
  if (!isOtherwise && lacked == 0) return;
  bool done = false;
  forEachLine(work, [&](const ScriptLine& line) {
    if (done || isAscii(line.text)) return;
    const std::u16string wide = findings.codec().decode(line.text);
    std::size_t at = 0;
    for (; at < wide.size() && !(isOtherwise ? wide[at] >= 0x80 : isLowSurrogate(wide[at])); ++at) {
      if (isHighSurrogate(wide[at])) ++at;
    }
    if (at >= wide.size()) return;
    std::string front;
    findings.codec().encode(std::u16string_view(wide).substr(0, at), front);
    const Spot spot{line.number, line.text, front.size()};
    done = true;
    if (isOtherwise)
      return findings.add("utf8", spot,
                          fmt::format("the whole file is UTF-8 but is read in code page {}", page.number()));
    findings.add("lacked-byte", spot,
                 fmt::format("{} that {} lacks; the first one here", counted(lacked, "byte"),
                             page.isUtf8() ? "UTF-8" : fmt::format("code page {}", page.number())));
  });
}

std::vector<Break> spoiltCodesOf(std::string_view text) {
  std::vector<Break> spoilt;
  for (std::size_t at = text.find('^'); at != std::string_view::npos; at = text.find('^', at + 1)) {
    if (spoilt.size() >= kMostInText) break;
    if (text.substr(0, at).ends_with("^nItemID")) continue;  // `^nItemID^501` is an item's name, no colour
    const std::size_t digits = hexDigitsAt(text, at + 1);
    const bool asCode = countColorCodes(text.substr(at, 7)) == 1;
    if (asCode && digits < 6) {
      spoilt.push_back({"color-digits", at, "a colour code with a letter that is no digit"});
    } else if (!asCode && digits >= 3) {
      spoilt.push_back({"color-short", at, "a colour code with fewer than six digits"});
    } else if (!asCode && text.substr(at + 1, 1) == " " && hexDigitsAt(text, at + 2) >= 6) {
      spoilt.push_back({"color-blank", at, "a blank between ^ and the six digits"});
    }
  }
  for (std::size_t at = text.find(kBlack); at != std::string_view::npos; at = text.find(kBlack, at + kBlack.size())) {
    const bool standsAlone = at == 0 || (!isAlnum(text[at - 1]) && text[at - 1] != '^' && text[at - 1] != '#');
    // Behind "^ " it was told above; in a number or a longer code it is none.
    const bool told = at >= 2 && text[at - 1] == ' ' && text[at - 2] == '^';
    const bool inNumber = (at > 0 && (text[at - 1] == ',' || text[at - 1] == '.')) ||
                          (at + 6 < text.size() && text[at + 6] >= '0' && text[at + 6] <= '9');
    if (spoilt.size() >= 2 * kMostInText) break;
    if (standsAlone && !told && !inNumber) spoilt.push_back({"color-no-caret", at, "000000 without its caret"});
  }
  std::sort(spoilt.begin(), spoilt.end(), [](const auto& a, const auto& b) { return a.offset < b.offset; });
  return spoilt;
}

void checkScript(Findings& findings, const ScriptView& script) {
  for (const OutlineError& error : script.outline.errors) {
    checkOddQuotes(findings, error);
    checkEscapedQuotes(findings, error.lineNumber, error.line, error.code);
  }
  // Most scripts have neither.
  const bool escapes = script.work.find("\\\"") != std::string_view::npos;
  const bool codes =
      script.work.find('^') != std::string_view::npos || script.work.find(kBlack) != std::string_view::npos;
  std::size_t lastLine = static_cast<std::size_t>(-1);
  for (const OutlineText& text : script.outline.texts) {
    if (!escapes && !codes) break;
    if (escapes && text.lineNumber != lastLine) {
      lastLine = text.lineNumber;
      checkEscapedQuotes(findings, text.lineNumber, text.line, text.line.substr(0, text.line.find("//")));
    }
    if (codes && isReadable(text)) findings.add(spoiltCodesOf(text.text), spotOf(text));
  }
  checkEncoding(findings, script.file, script.work);
}

}  // namespace dravenna
