#pragma once

#include <array>
#include <string>
#include <vector>

#include "tool/merge/document.h"
#include "tool/script/codec.h"

namespace dravenna {

// What becomes of a text that both sides changed. Smart: the translation stays where the original's change is small,
// else the original's text comes. Markers: both stand there for a person to choose.
enum class OnConflict { Smart, Ours, Theirs, Markers };

struct ThreeWayOptions {
  OnConflict onConflict = OnConflict::Smart;
  bool numbered = false;  // lines get their numbers, as the records of an exchange file have them
  // Of conflicts, as git writes them. `swapped`: the side of the translation stands below the other.
  std::array<std::string, 2> labels;  // of ours and theirs
  unsigned markerSize = 7;
  bool swapped = false;

  // A line of `<` above the upper side, `=` between the two, `>` below the lower one, without its end.
  std::string marker(char mark) const;
};

// A text for a translator to see to. Views look into what was merged; an empty one tells that there is none.
struct MergeNote {
  enum class Kind {
    Translate,  // `now` stands there and is not translated
    LookAt      // `translation` stands there, of the text before it became `now`
  } kind;
  std::size_t line;  // of the result, from 1
  std::string_view now;
  std::string_view before;
  std::string_view translation;
};

struct ThreeWay {
  std::string work;
  std::size_t conflicts = 0;
  std::vector<MergeNote> notes;
};

// Merges two versions of a base: `ours`, the translation, whose line ends stay, and `theirs`, the original that went
// on. Lines of code come from whoever changed them, texts one by one; a conflict is where both changed the same code.
ThreeWay mergeThreeWay(const Codec& codec, const Document& base, const Document& ours, const Document& theirs,
                       const ThreeWayOptions& options);

}  // namespace dravenna
