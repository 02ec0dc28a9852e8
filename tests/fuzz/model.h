#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "color/color_codes.h"
#include "scan/segment_colors.h"
#include "text/text.h"

// The rules of scanning and of the exchange file once more, told as slowly and as literally as they read: what the
// program makes of an input is held against this. Shares nothing with the program but the folding of letter case.
namespace dravenna::model {

struct Document {
  Text text;
  std::vector<std::uint32_t> colors;  // of each character
  bool hasMessages = false;
  bool hasCode = false;
  int errorLines = 0;
};

struct Merged {
  Text text;
  std::size_t badRecord = 0;  // from 1; 0 if none
  bool ranOut = false;
};

class Rule {
 public:
  Rule(Text allowed, Text special) : allowedList_(std::move(allowed)), specialList_(std::move(special)) {}

  static Document load(const Rule& rule, const Text& file);
  static std::vector<Text> records(const Rule& rule, const Text& document);
  static Merged merge(const Rule& rule, const Text& document, const Text& exchangeFile);

 private:
  // Cuts a line and walks its pieces; `onText` is called at each quoted text and may change it.
  struct Line {
    std::vector<Text> pieces;  // the whole code part if it has an odd number of quote marks
    Text comment;
    bool odd = false;
  };
  Line walk(const Text& line, const std::function<void(Text&)>& onText);
  void codePiece(const Text& piece, std::size_t number);
  bool takesRecord(const Text& text) const;
  bool allowed(const Text& word) const { return inList(allowedList_, word); }
  static bool inList(const Text& list, const Text& word);

  Text allowedList_, specialList_;
  Text active_, prior_;
  int textsInCommand_ = 0;
};

std::vector<Text> cutAt(const Text& text, const Text& separator);
Text joined(const std::vector<Text>& parts, const Text& separator);
Text removeColor(Text text);
std::size_t findIgnoringCase(const Text& text, const Text& needle, std::size_t from);

}  // namespace dravenna::model
