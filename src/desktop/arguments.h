#pragma once

#include <string>
#include <vector>

namespace dravenna {

// What the program has been asked to do.
struct Arguments {
  enum class Action { Edit, Help, Version, ImportSettings, ExportSettings, Screenshot, MeasureStart, Wrong };
  Action action = Action::Edit;
  std::u16string file;               // of the import, the export, the picture
  std::vector<std::u16string> rest;  // the form's command line
  std::u16string complaint;          // for Wrong
};

// `words` are those behind the program's name. An option counts only as the first word; everything else is a path.
Arguments parseArguments(std::vector<std::u16string> words);

}  // namespace dravenna
