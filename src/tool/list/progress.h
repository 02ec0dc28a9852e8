#pragma once

#include <array>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tool/run/session.h"
#include "tool/script/pairing.h"

// How far a translation is: translated, unsure and to do, in texts and in words of the original.
namespace dravenna {

struct ProgressOptions {
  std::vector<std::string> paths;  // translated scripts and exchange files, PO files, folders of them
  std::string against;             // the originals of scripts and exchange files
  std::string output;
  std::string svg;  // file for a picture; empty for none
  bool byFolder = false;
  bool json = false;
  bool markdown = false;
};

// The session is prepared.
void showProgress(Session& session, const ProgressOptions& options);

// Figures of texts: all, and how many in each state; then the same of their words.
struct Progress {
  enum State : std::size_t { Translated = 1, Unsure, ToDo };
  static constexpr std::size_t kWords = 4;
  std::array<std::size_t, 2 * kWords> figures{};

  void add(State state, std::size_t words);
  void add(const Progress& other);
  unsigned percent() const;  // of the texts, translated; 100 only when all are
};

// The state of a text with a record. One without a letter has nothing to translate; blanks alone are no translation.
Progress::State stateOf(std::string_view original, std::string_view now);

// Calls each(state, original text) for the texts of a script with a record. What stands for no text of the original is
// its own, and translated.
template <class Each>
void forEachState(const Outline& old, const Outline& outline, const Pairing& pairing, Each&& each) {
  for (std::size_t i = 0; i < outline.texts.size(); ++i) {
    const std::string_view now = outline.texts[i].text;
    if (!outline.texts[i].record) continue;
    if (pairing.oldOf[i] == kNoText) {
      each(Progress::Translated, now);
    } else {
      each(stateOf(old.texts[pairing.oldOf[i]].text, now), old.texts[pairing.oldOf[i]].text);
    }
  }
}

// Files or folders, by their names as bytes, and the sum of them at the end.
using ProgressRows = std::vector<std::pair<std::string, Progress>>;

// `kind` is what a row stands for: file or folder.
std::string progressTable(const ProgressRows& rows, std::string_view kind);
std::string progressMarkdown(const ProgressRows& rows, std::string_view kind);
std::string progressJson(const ProgressRows& rows, std::string_view kind);
std::string progressPicture(const ProgressRows& rows);  // SVG

}  // namespace dravenna
