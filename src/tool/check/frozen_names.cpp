#include <algorithm>
#include <initializer_list>

#include "text/ascii.h"
#include "text/path_names.h"
#include "tool/check/findings.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

void addNpcName(std::string_view npc, FrozenNames& names) {
  if (npc.empty()) return;
  names.insert(std::string(npc));
  const std::size_t unique = npc.find("::");
  names.insert(std::string(npc.substr(0, unique)));
  if (unique != std::string_view::npos) names.insert(std::string(npc.substr(unique + 2)));
  names.insert(std::string(npc.substr(0, npc.find('#'))));
}

bool isOneOf(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// place TAB kind TAB name TAB ..., of all that is no script: duplicates, shops, warps, monsters.
void addDefinedNames(std::string_view line, FrozenNames& names) {
  const std::size_t first = line.find('\t');
  if (first == std::string_view::npos || first == 0 || line.substr(0, 2) == "//") return;
  const std::size_t second = line.find('\t', first + 1);
  if (second == std::string_view::npos) return;
  const std::string_view kind = line.substr(first + 1, second - first - 1);
  const std::string_view name =
      line.substr(second + 1, std::min(line.find('\t', second + 1), line.size()) - second - 1);
  constexpr std::string_view kDuplicate = "duplicate(";
  if (kind.substr(0, kDuplicate.size()) == kDuplicate) {
    addNpcName(kind.substr(kDuplicate.size(), kind.rfind(')') - kDuplicate.size()), names);
  } else if (isOneOf(kind, {"monster", "boss_monster", "miniboss_monster"})) {
    addNpcName(name.substr(0, name.rfind(',')), names);  // a level may follow
  } else if (!isOneOf(kind, {"shop", "cashshop", "itemshop", "pointshop", "marketshop", "trader", "warp", "warp2"})) {
    return;
  }
  addNpcName(name, names);
}

// Pictures, sounds and music that the code asks for by name.
bool namesFile(const OutlineText& text, const Outline& outline) {
  if (text.text.empty()) return false;
  const std::string command = lowerAsciiOf(outline.commands[text.command]);
  return isOneOf(command, {"cutin", "soundeffect", "soundeffectall", "playbgm", "playbgmall"});
}

}  // namespace

void gatherFrozenNames(const ScriptView& script, const std::string& relative, FrozenNames& names) {
  const Outline& outline = script.outline;
  const std::string file = std::string(fileNameOf(relative));
  names.insert(file);
  names.insert(file.substr(0, file.rfind('.')));
  for (const std::string_view npc : outline.npcs) addNpcName(npc, names);
  forEachLine(script.work, [&](const ScriptLine& line) { addDefinedNames(line.text, names); });
  for (const OutlineText& text : outline.texts) {
    if (namesFile(text, outline)) names.insert(std::string(text.text));
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

}  // namespace dravenna
