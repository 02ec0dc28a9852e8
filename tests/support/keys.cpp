#include "support/keys.h"

#include <map>

#include "support/scenario.h"

namespace dravenna {

namespace {

bool isLetter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }
bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
char16_t upper(char16_t c) { return static_cast<char16_t>(c & ~0x20); }

}  // namespace

KeyStroke keyNamed(std::u16string_view name) {
  static const std::map<std::u16string_view, KeyStroke> keys = {{u"Enter", {kKeyEnter, 0, u'\r'}},
                                                                {u"Esc", {kKeyEsc, 0, u'\x1B'}},
                                                                {u"Up", {kKeyUp}},
                                                                {u"Down", {kKeyDown}},
                                                                {u"Left", {kKeyLeft}},
                                                                {u"Right", {kKeyRight}},
                                                                {u"Home", {kKeyHome}},
                                                                {u"End", {kKeyEnd}},
                                                                {u"Tab", {kKeyTab, 0, u'\t'}},
                                                                {u"Del", {kKeyDel}},
                                                                {u"F1", {kKeyF1}},
                                                                {u"Backspace", {kKeyBackspace, 0, u'\b'}},
                                                                {u"F3", {kKeyF3}},
                                                                {u"F5", {kKeyF5}}};
  std::int16_t shift = 0;
  const std::pair<std::u16string_view, int> modifiers[] = {{u"Shift+", kShift}, {u"Ctrl+", kCtrl}, {u"Alt+", kAlt}};
  for (bool found = true; found;) {
    found = false;
    for (const auto& [prefix, bit] : modifiers) {
      if (!name.starts_with(prefix)) continue;
      name.remove_prefix(prefix.size());
      shift = static_cast<std::int16_t>(shift | bit);
      found = true;
    }
  }
  KeyStroke stroke;
  if (const auto key = keys.find(name); key != keys.end()) {
    stroke = key->second;
  } else if (name.size() == 1 && isLetter(name[0])) {
    const char16_t letter = upper(name[0]);
    stroke.code = static_cast<std::int16_t>(letter);
    stroke.character = static_cast<char16_t>((shift & kCtrl)    ? letter & 0x1F
                                             : (shift & kShift) ? letter
                                                                : letter | 0x20);
  } else if (name.size() == 1 && isDigit(name[0])) {
    stroke.code = static_cast<std::int16_t>(name[0]);
    if ((shift & kCtrl) == 0) stroke.character = name[0];
  } else {
    throw ScenarioError{0, "unknown key"};
  }
  if ((shift & kAlt) != 0) {
    if (stroke.code >= '0' && stroke.code <= 'Z') throw ScenarioError{0, "Alt opens the menus: use menu ENTRY instead"};
    stroke.character = 0;
  }
  stroke.shift = shift;
  return stroke;
}

KeyStroke keyTyping(char16_t character) {
  if (isLetter(character)) {
    const bool capital = upper(character) == character;
    return {static_cast<std::int16_t>(upper(character)), capital ? kShift : std::int16_t{0}, character};
  }
  switch (character) {
    case u'\r':
    case u'\n':
      return {kKeyEnter, 0, u'\r'};
    case u'\t':
    case u'\b':
    case u'\x1B':
      return {static_cast<std::int16_t>(character), 0, character};
    default:
      return {static_cast<std::int16_t>(isDigit(character) || character == u' ' ? character : 0), 0, character};
  }
}

}  // namespace dravenna
