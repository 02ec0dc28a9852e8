#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tool/script/loaded_script.h"

// Translations on their way from one version of a script to the next. All texts are work bytes; "plain" is without
// colour codes.
namespace dravenna {

// What is known of the translation of one text with a record.
struct Translation {
  enum class State { None, Known, Unsure } state = State::None;
  std::string text;  // Known: the translation. Unsure: what stands in its place, for a human to judge
  std::string why;
  bool ofPage = false;  // `text` is that of a whole page of dialogue, only to be shown
  bool meant = false;   // Known: also where it is the text itself
};

// From an exchange file of that name. Throws Failure when it does not fit the script.
std::vector<Translation> translationsFromExchange(const LoadedScript& script, std::string_view lxf,
                                                  const std::string& name);

// From a translated copy of the script. Pages of dialogue are matched; a page whose number of texts differs gives
// unsure ones.
std::vector<Translation> translationsFromScript(const LoadedScript& script, const LoadedScript& translated);

enum class CarryState { Carried, Untranslated, New, Changed, Unsure };

struct CarriedText {
  CarryState state = CarryState::New;
  std::size_t oldRecord = static_cast<std::size_t>(-1);  // index of the old text, when there is one
  std::string translation;                               // Carried: to put in. Changed, Unsure: to show, may be empty
  std::string why;
  bool ofPage = false;  // as above
};

struct CarryResult {
  std::vector<CarriedText> texts;  // for each record of the new script
  std::vector<std::size_t> gone;   // records of the old script that nothing in the new one stands for
};

// The texts with a record.
std::vector<std::string_view> recordTexts(const LoadedScript& script);

// Matches the texts of two versions: equal plain texts in order, then equal ones that moved, then similar ones.
CarryResult carryTranslations(const std::vector<std::string_view>& old, const std::vector<Translation>& translations,
                              const std::vector<std::string_view>& fresh);

}  // namespace dravenna
