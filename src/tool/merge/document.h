#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "scan/command_list.h"
#include "tool/script/align.h"

// What a merge sees of a file: lines of code with places for texts in them.
namespace dravenna {

struct TextPlace {
  std::string_view text;
  std::size_t begin;  // offset in its line
  bool toTranslate;   // a translator would
  bool menu;          // its colons count
};

struct DocumentLine {
  std::string_view text;    // without its end
  std::string_view ending;  // "\r\n", "\n", or empty behind the last line
  std::uint64_t code;       // a number for what stands outside the texts; lines of one code have as many texts
  std::uint64_t whole;      // a number for all of the line
  std::size_t firstText;    // the line's texts are those from firstText to endText of the document
  std::size_t endText;
};

// The views look into the work bytes that it was made of.
struct Document {
  std::vector<DocumentLine> lines;
  std::vector<TextPlace> texts;
};

// Every quoted text is a text, whatever its command.
Document scriptDocument(std::string_view work, const CommandLists& lists);
// Lines of code alone.
Document plainDocument(std::string_view work);
// The texts of an exchange file's records, a line each, without their numbers. Throws Failure when one bears another
// number than its own.
Document exchangeDocument(std::string_view work);

}  // namespace dravenna
