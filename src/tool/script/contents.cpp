#include "tool/script/contents.h"

#include <algorithm>
#include <iterator>

#include "tool/script/exchange_file.h"
#include "tool/script/outline.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

// `map,1,2,3<tab>warp<tab>name<tab>...`: a warp, a shop, monsters, a map flag or another NPC without a script of its
// own.
bool isDefinition(std::string_view line) {
  constexpr std::string_view kKinds[] = {"warp",    "shop",         "cashshop", "itemshop", "pointshop",
                                         "monster", "boss_monster", "mapflag",  "trader",   "miniboss_monster"};
  const std::size_t begin = line.find('\t') + 1;
  const std::size_t end = line.find('\t', begin);
  if (begin <= 1 || end == std::string_view::npos) return false;
  const std::string_view kind = line.substr(begin, end - begin);
  return kind.starts_with("duplicate(") || std::find(std::begin(kKinds), std::end(kKinds), kind) != std::end(kKinds);
}

// A text of an allowed command, or the definition of an NPC.
bool isScript(std::string_view bytes, const CommandLists& lists) {
  if (bytes.find("\tscript\t") != std::string_view::npos) return true;
  const std::vector<OutlineText> texts = outlineOf(bytes, lists, OutlineOf::Texts).texts;
  bool found = std::any_of(texts.begin(), texts.end(), [](const OutlineText& text) { return text.allowed; });
  forEachLine(bytes, [&](const ScriptLine& line) { found |= isDefinition(line.text); });
  return found;
}

bool isExchangeFile(std::string_view bytes) { return bearsNumber(cutRecord(bytes.substr(0, bytes.find('\n'))), 1); }

bool isPoFile(std::string_view bytes) {
  bool found = false;
  forEachLine(bytes, [&](const ScriptLine& line) { found |= line.text.starts_with("msgid \""); });
  return found;
}

}  // namespace

Contents contentsOf(std::string_view bytes, const CommandLists& lists) {
  if (bytes.find_first_not_of(" \t\r\n") == std::string_view::npos) return Contents::Empty;
  if (bytes.starts_with(kIndexHead) || bytes.starts_with(kImportsHead)) return Contents::Index;
  if (isExchangeFile(bytes)) return Contents::ExchangeFile;
  if (isPoFile(bytes)) return Contents::PoFile;
  return isScript(bytes, lists) ? Contents::Script : Contents::Other;
}

bool holdsTranslations(std::string_view poFile) {
  bool header = false;       // of an entry with an empty msgid
  bool translation = false;  // the strings are those of a msgstr
  bool found = false;
  forEachLine(poFile, [&](const ScriptLine& line) {
    std::string_view text = line.text;
    if (text.starts_with("#~ ")) text.remove_prefix(3);
    const std::size_t quote = text.find('"');
    if (quote == std::string_view::npos || text.starts_with('#')) return;
    const bool empty = text.substr(quote) == "\"\"";
    if (text.starts_with("msgid ")) header = empty;
    if (quote > 0) translation = text.starts_with("msgstr");
    if (quote == 0 && !empty && !translation) header = false;
    found |= translation && !header && !empty;
  });
  return found;
}

const char* nameOf(Contents contents) {
  constexpr const char* kNames[] = {
      "an empty file", "a script", "an exchange file", "a PO file", "an index of exchange files", "another file"};
  return kNames[static_cast<int>(contents)];
}

}  // namespace dravenna
