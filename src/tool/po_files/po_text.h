#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tool/script/loaded_script.h"

// Texts between scripts and PO files.
namespace dravenna {

// UTF-8 for a PO file. A byte that the code page lacks becomes one of U+EF80 to U+EFFF, and these characters themselves
// stand behind a U+EF7F, so that nothing is lost.
std::string poTextOf(const Codec& codec, std::string_view work);
std::string poNameOf(std::string_view name);

// The way back; nothing where the code page lacks a character.
std::optional<std::string> workOf(const Codec& codec, std::string_view text);

// The same. Throws Failure that says why the text cannot stand in a script in the place of the text `before`, behind
// `inFront`.
std::string fromPoText(const Codec& codec, std::string_view text, std::string_view before,
                       std::string_view inFront = {});

// What a translator wants to know of a record, a comment each: who speaks and by which command, the texts before and
// behind of the same NPC, and what must stay as it is: colour codes, item codes, tags, placeholders, or the whole.
std::vector<std::string> surroundingsOf(const LoadedScript& script, std::size_t record);

// Whether a text can be a message at all.
bool fitsPo(std::string_view work);

// The contexts of a script's texts in their order: file, NPC and the text's number within the NPC, so that a text keeps
// its context when another NPC of the file changes.
class PoContexts {
 public:
  PoContexts(const Codec& codec, std::string_view relative) : codec_(codec), file_(poNameOf(relative)) {}
  std::string next(const LoadedScript& script, const OutlineText& text);

 private:
  const Codec& codec_;
  std::string file_;
  std::map<std::string, std::size_t> counts_;  // by name: an NPC's name may come again
};

}  // namespace dravenna
