#include "desktop/arguments.h"

#include <algorithm>
#include <iterator>

namespace dravenna {

namespace {

using Action = Arguments::Action;

struct Option {
  const char16_t* word;
  Action action;
  bool takesFile;
  bool takesScript;
};

constexpr Option kOptions[] = {
    {u"--help", Action::Help, false, false},
    {u"--version", Action::Version, false, false},
    {u"--import-settings", Action::ImportSettings, true, false},
    {u"--export-settings", Action::ExportSettings, true, false},
    {u"--screenshot", Action::Screenshot, true, true},
    {u"--measure-start", Action::MeasureStart, false, true},
};

}  // namespace

Arguments parseArguments(std::vector<std::u16string> words) {
  Arguments arguments;
  arguments.rest = std::move(words);
  std::vector<std::u16string>& rest = arguments.rest;
  if (rest.empty()) return arguments;
  const auto* option =
      std::find_if(std::begin(kOptions), std::end(kOptions), [&](const Option& o) { return rest[0] == o.word; });
  if (option == std::end(kOptions)) return arguments;
  rest.erase(rest.begin());
  arguments.action = option->action;
  if (option->takesFile) {
    if (rest.empty()) {
      arguments.action = Action::Wrong;
      arguments.complaint = std::u16string(option->word) + u" needs a file name";
      return arguments;
    }
    arguments.file = rest[0];
    rest.erase(rest.begin());
  }
  if (!option->takesScript && !rest.empty()) {
    arguments.action = Action::Wrong;
    arguments.complaint = u"nothing may follow here: " + rest[0];
  }
  return arguments;
}

}  // namespace dravenna
