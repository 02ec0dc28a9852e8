#include "settings/catalogue.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

#include "scan/command_list.h"
#include "text/text.h"

namespace dravenna {

namespace settings {
const Setting File{kSettingsKey, u"File", u"", u"the script last picked in the open dialog"};
const Setting NavMode{kSettingsKey, u"NavMode", u"0", u"navigation mode: 0 Secure, 1 Normal, 2 Advanced"};
const Setting LastSearch{kSettingsKey, u"LastSearch", u"", u"the last search text"};
const Setting AllowedCommands{kCommandsKey, u"AllowedCommands", kDefaultAllowedCommands,
                              u"commands whose quoted texts are for players"};
const Setting SpecialAllowedCommands{kCommandsKey, u"SpecialAllowedCommands", kDefaultSpecialCommands,
                                     u"allowed commands whose first quoted text is not for players"};
const Setting StatusPlace{kDesktopKey, u"StatusPlace", u"1", u"0 hides the status at the end of the menu bar"};
const Setting CodePage{kDesktopKey, u"CodePage", u"",
                       u"the code page of scripts (1252, 874, ..., utf-8); empty: their own"};
const Setting Zoom{kDesktopKey, u"Zoom", u"0", u"points by which the letters of the script are larger"};
}  // namespace settings

namespace words {
#define WORD(name, fallback, use) const Setting name{kLangKey, u## #name, fallback, use};
#include "settings/words.inc"
#undef WORD
}  // namespace words

namespace desktop_words {
#define WORD(name, fallback, use) const Setting name{kDesktopLangKey, u## #name, fallback, use};
#include "settings/desktop_words.inc"
#undef WORD
}  // namespace desktop_words

std::span<const Setting* const> allWords() {
  static constexpr std::array words = {
#define WORD(name, fallback, use) &words::name,
#include "settings/words.inc"
#undef WORD
  };
  return words;
}

std::span<const Setting* const> allDesktopWords() {
  static constexpr std::array words = {
#define WORD(name, fallback, use) &desktop_words::name,
#include "settings/desktop_words.inc"
#undef WORD
  };
  return words;
}

std::u16string read(Registry& registry, const Setting& setting) {
  return registry.GetRegValue(HKEY_LOCAL_MACHINE_ID, setting.key, setting.name, setting.fallback);
}

std::u16string readFilled(Registry& registry, const Setting& setting, std::u16string_view filling) {
  return replaceAll(read(registry, setting), u"%1", filling);
}

void write(Registry& registry, const Setting& setting, std::u16string_view value) {
  registry.SetRegValue(HKEY_LOCAL_MACHINE_ID, setting.key, setting.name, value);
}

double numberIn(std::u16string_view text) {
  const std::string digits = toUtf8(trimBlanks(text));
  const char* const begin = digits.data() + (digits.starts_with('+') ? 1 : 0);
  const char* const end = digits.data() + digits.size();
  double number = 0;
  const auto [stop, error] = std::from_chars(begin, end, number);
  if (begin != end && *begin == '-' && digits.front() == '+') return 0;
  if (error != std::errc() || stop != end || !std::isfinite(number)) return 0;
  return std::nearbyint(number) < -32768 || std::nearbyint(number) > 32767 ? 0 : number;
}

}  // namespace dravenna
