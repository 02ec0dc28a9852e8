#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "tool/run/session.h"

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

void showProgress(Session& session, const ProgressOptions& options);

enum class TextState { Translated, Unsure, ToDo };

struct Progress {
  std::array<std::size_t, 3> texts{};  // by TextState
  std::array<std::size_t, 3> words{};

  void add(TextState state, std::size_t wordCount);
  void add(const Progress& other);
  std::size_t allTexts() const { return texts[0] + texts[1] + texts[2]; }
  std::size_t allWords() const { return words[0] + words[1] + words[2]; }
  unsigned percent() const;  // of the texts, translated; 100 only when all are
};

// A file or a folder; its name as bytes.
struct ProgressRow {
  std::string name;
  Progress progress;
};

// `kind` is what a row stands for: file or folder. The last row is the sum of the others.
std::string progressTable(const std::vector<ProgressRow>& rows, std::string_view kind);
std::string progressMarkdown(const std::vector<ProgressRow>& rows, std::string_view kind);
std::string progressJson(const std::vector<ProgressRow>& rows, std::string_view kind);
std::string progressPicture(const std::vector<ProgressRow>& rows);  // SVG

}  // namespace dravenna
