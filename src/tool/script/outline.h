#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "color/color_codes.h"
#include "scan/command_list.h"
#include "scan/segment_colors.h"

namespace dravenna {

// A quoted text and where it stands. The views look into the script's work bytes.
struct OutlineText {
  std::string_view text;
  std::string_view line;   // the whole line
  std::size_t lineNumber;  // from 0
  std::size_t begin;       // offset of the text in its line, in bytes
  Segment segment;         // Title, Message, Code, Plain
  bool allowed;
  bool firstOfSpecial;
  bool record;            // gets a record in an exchange file
  bool inMenu;            // an argument of select, prompt or menu, whatever the active command is
  std::uint32_t command;  // index into Outline::commands
  std::uint32_t npc;      // index into Outline::npcs
  std::uint32_t page;     // dialogue page, from 0: up to `next`, `close` or a branch
};

// What players read, as opposed to what code does.
inline bool isReadable(const OutlineText& text) {
  return text.segment == Segment::Message || text.segment == Segment::Title;
}

struct OutlineError {
  std::string_view line;
  std::string_view code;
  std::size_t lineNumber;
};

// What a script holds, in the order of the script.
struct Outline {
  std::vector<OutlineText> texts;
  std::vector<OutlineError> errors;
  std::vector<std::string> commands;     // active commands, each once; [0] is the empty one
  std::vector<std::string_view> npcs;    // names; [0] is what stands before the first NPC, without a name
  std::vector<std::string_view> labels;  // without the colon
  std::vector<std::uint32_t> labelNpcs;  // index into npcs, for each label
  std::size_t lines = 0;
  std::uint32_t pages = 0;
  std::vector<std::uint64_t> pageKeys;  // for each page, a number for the code in front of its first text
};

// How much of it: for the texts alone only lines with quote marks are looked at, and NPCs, labels, pages and menus stay
// empty. Menus: only NPCs, labels and pages do.
enum class OutlineOf { Texts, Menus, Dialogue };

Outline outlineOf(std::string_view work, const CommandLists& lists, OutlineOf what = OutlineOf::Dialogue);

// `text` without its colour codes.
std::string withoutColor(std::string_view text);

// Whether there is anything to translate: a letter of any script, colour codes aside.
bool hasLetter(std::string_view text);

}  // namespace dravenna
