#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "tool/check/translation.h"

namespace dravenna {

// One thing that `check` found. Line and column count from 1, the column in characters.
struct Finding {
  std::size_t line;
  std::size_t column;
  const char* kind;
  std::string text;
  std::uint64_t lineHash = 0;  // of its line, blanks at the ends aside; the same on every system; 0 for a whole file
};

// A translation and its original, both UTF-8 without colour codes.
struct Rendering {
  std::size_t line;
  std::size_t column;
  std::uint64_t lineHash;  // as in a finding
  std::string before;
  std::string now;
};

// Gathers the findings of one file.
class Findings {
 public:
  explicit Findings(const Codec& codec, bool keepsRenderings = false)
      : codec_(codec), keepsRenderings_(keepsRenderings) {}

  const Codec& codec() const { return codec_; }
  std::vector<Finding>& list() { return list_; }
  std::vector<Rendering>& renderings() { return renderings_; }

  // `lineNumber` and `offset` (in bytes of the line) count from 0.
  void add(const char* kind, std::size_t lineNumber, std::string_view line, std::size_t offset, std::string text) {
    list_.push_back({lineNumber + 1, counter_.before(line, offset) + 1, kind, std::move(text), hashOfLine(line)});
  }
  // Takes down what has become of a text, where that was asked for; a place as above.
  void addRendering(const TextPair& pair, std::size_t lineNumber, std::string_view line, std::size_t offset);
  void add(const char* kind, const OutlineText& at, std::size_t offsetInText, std::string text) {
    add(kind, at.lineNumber, at.line, at.begin + offsetInText, std::move(text));
  }

  std::string quoted(std::string_view work) const { return quotedText(codec_, work); }

 private:
  static std::uint64_t hashOfLine(std::string_view line);

  const Codec& codec_;
  PlaceCounter counter_{codec_, PlaceCounter::Unit::Character};
  std::vector<Finding> list_;
  bool keepsRenderings_;
  std::vector<Rendering> renderings_;
};

enum class Severity {
  Note,     // may be meant so
  Warning,  // players see it, or a translator loses by it
  Error     // breaks a script, an exchange file or what the code does
};
const char* nameOf(Severity severity);

// Every kind and what it means, for --help and for the options that pick kinds. docs/checks.md tells more.
struct FindingKind {
  const char* name;
  Severity severity;
  const char* about;
};
const std::vector<FindingKind>& findingKinds();
Severity severityOf(std::string_view kind);

// Tells of a file in UTF-16, which no code page of the tool is; nothing else is worth a look then.
bool checkUtf16(Findings& findings, std::string_view file);
// UTF-8 in an 8-bit tree, and bytes that the code page lacks. `file` are the bytes on disk.
void checkEncoding(Findings& findings, std::string_view file, std::string_view work);

// What is wrong with a script by itself: its quote marks, its colour codes, its encoding. `file` are the bytes on disk.
void checkScript(Findings& findings, const Outline& outline, std::string_view file, std::string_view work);

// Texts that the scripts' code refers to by name.
using FrozenNames = std::unordered_set<std::string>;
void gatherFrozenNames(std::string_view work, const Outline& outline, const std::string& relative, FrozenNames& names);

// What is wrong with a translated script beside its original, whose bytes on disk are `oldFile`. Of what was found in
// the script by itself, that goes which the original has too. `frozen` may be null.
void checkAgainst(Findings& findings, std::string_view oldFile, std::string_view oldWork, const Outline& old,
                  std::string_view work, const Outline& outline, bool strict, const FrozenNames* frozen);

// What is wrong with an exchange file; `script` is the outline of its script, whose work bytes are `work`, or null.
// Records that are as in the script are untranslated only if the script is an original.
void checkExchangeFile(Findings& findings, std::string_view lxf, std::string_view work, const Outline* script,
                       bool scriptIsOriginal = true);

// Spoilt colour codes of a text, as kind and message by offset; the first ones only, if there are very many.
struct SpoiltCode {
  std::size_t offset;
  const char* kind;
  const char* text;
};
std::vector<SpoiltCode> findSpoiltCodes(std::string_view text);

}  // namespace dravenna
