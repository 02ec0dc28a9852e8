#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/script/outline.h"

namespace dravenna {

constexpr std::size_t kNoText = static_cast<std::size_t>(-1);

// Lines of a script that differ from its original in more than their texts. Line numbers from 0; a count may be 0.
struct OutsideChange {
  std::size_t oldLine, oldLines;
  std::size_t newLine, newLines;
};

// Which text of the original each text of a script stands for.
struct Pairing {
  std::vector<std::size_t> oldOf;      // for each text of the new script, kNoText where there is none
  std::vector<std::size_t> oldLineOf;  // for each line
  std::vector<OutsideChange> outside;
  bool lineEndsDiffer = false;  // CR LF here, LF there
};

// Appends what stands outside the texts of a line, a NUL for each of them: those from `from` to `to` of the outline.
void appendOutside(std::string_view line, const Outline& outline, std::size_t from, std::size_t to, std::string& out);

// The lines are matched by all that stands outside their texts; lines that match have as many texts.
Pairing pairScripts(std::string_view oldWork, const Outline& oldOutline, std::string_view newWork,
                    const Outline& newOutline);

}  // namespace dravenna
