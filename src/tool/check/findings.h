#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "tool/check/translation.h"
#include "tool/script/pairing.h"

namespace dravenna {

// Where something stands in a file. Line and column count from 1, the column in characters; the hash is that of the
// line, blanks at its ends aside, the same on every system.
struct Place {
  std::size_t line = 1;
  std::size_t column = 1;
  std::uint64_t lineHash = 0;  // 0 for a whole file
};

// One thing that `check` found.
struct Finding {
  Place at;
  const char* kind;
  std::string text;
};

// A translation and its original, both UTF-8 without colour codes.
struct Rendering {
  Place at;
  std::string before;
  std::string now;
};

// A place in work bytes: a line, counted from 0, and an offset in it.
struct Spot {
  std::size_t lineNumber;
  std::string_view line;
  std::size_t offset;
};
inline Spot spotOf(const OutlineText& text) { return {text.lineNumber, text.line, text.begin}; }

// Gathers the findings of one file.
class Findings {
 public:
  explicit Findings(const Codec& codec, bool keepsRenderings = false)
      : codec_(codec), keepsRenderings_(keepsRenderings) {}

  const Codec& codec() const { return codec_; }
  std::vector<Finding>& list() { return list_; }
  std::vector<Rendering>& renderings() { return renderings_; }

  void add(const char* kind, const Spot& at, std::string text) {
    list_.push_back({placeOf(at), kind, std::move(text)});
  }
  // Of the text or the record that begins at `begin`.
  void add(std::vector<Break> breaks, const Spot& begin) {
    for (Break& found : breaks)
      add(found.kind, {begin.lineNumber, begin.line, begin.offset + found.offset}, std::move(found.why));
  }
  // Of a whole file, or of one of its lines, from 1, as a whole.
  void addWhole(const char* kind, std::string text, std::size_t line = 1) {
    list_.push_back({{line}, kind, std::move(text)});
  }
  // Takes down what has become of a text, where that was asked for.
  void addRendering(const TextPair& pair, const Spot& at);

  std::string quoted(std::string_view work) const { return quotedText(codec_, work); }

 private:
  Place placeOf(const Spot& at);

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

// A script, as it is on disk and as it is worked on.
struct ScriptView {
  std::string_view file;
  std::string_view work;
  Outline outline;
};

// What is wrong with a script by itself: its quote marks, its colour codes, its encoding.
void checkScript(Findings& findings, const ScriptView& script);

// Texts that the scripts' code refers to by name.
using FrozenNames = std::unordered_set<std::string>;
void gatherFrozenNames(const ScriptView& script, const std::string& relative, FrozenNames& names);

// What is wrong with a translated script beside its original. Of what was found in the script by itself, that goes
// which the original has too. `frozen` may be null.
void checkAgainst(Findings& findings, const ScriptView& old, const ScriptView& script, bool strict,
                  const FrozenNames* frozen);
// The part of it that tells what changed outside the texts; a text that brought in quote marks or a comment is told as
// that.
void checkOutside(Findings& findings, const ScriptView& old, const ScriptView& script,
                  const std::vector<OutsideChange>& changes);

// What is wrong with an exchange file; `script` is its script, or null. Records that are as in the script are
// untranslated only if the script is an original.
void checkExchangeFile(Findings& findings, std::string_view lxf, const ScriptView* script,
                       bool scriptIsOriginal = true);

// Spoilt colour codes of a text by offset; the first ones only, if there are very many.
std::vector<Break> spoiltCodesOf(std::string_view text);

}  // namespace dravenna
