#include "support/keys.h"

#include <utility>

#include "support/scenario.h"

namespace dravenna {

namespace {

bool isLetter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }
bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
char16_t upper(char16_t c) { return static_cast<char16_t>(c & ~0x20); }

template <std::size_t Size>
std::int16_t codeOf(const std::pair<std::u16string_view, std::int16_t> (&codes)[Size], std::u16string_view name) {
  for (const auto& [known, code] : codes) {
    if (known == name) return code;
  }
  throw ScenarioError{0, "unknown key"};
}

}  // namespace

KeyStroke keyNamed(std::u16string_view name) {
  static const std::pair<std::u16string_view, std::int16_t> kKeys[] = {
      {u"Enter", kKeyEnter},         {u"Esc", kKeyEsc},   {u"Up", kKeyUp},   {u"Down", kKeyDown}, {u"Left", kKeyLeft},
      {u"Right", kKeyRight},         {u"Home", kKeyHome}, {u"End", kKeyEnd}, {u"Tab", kKeyTab},   {u"Del", kKeyDel},
      {u"Backspace", kKeyBackspace}, {u"F1", kKeyF1},     {u"F3", kKeyF3},   {u"F5", kKeyF5},     {u"F9", kKeyF9}};
  static const std::pair<std::u16string_view, std::int16_t> kModifiers[] = {
      {u"Shift", kShift}, {u"Ctrl", kCtrl}, {u"Alt", kAlt}};
  KeyStroke stroke;
  for (std::size_t plus; (plus = name.find(u'+')) != name.npos; name.remove_prefix(plus + 1)) {
    stroke.shift = static_cast<std::int16_t>(stroke.shift | codeOf(kModifiers, name.substr(0, plus)));
  }
  const bool alt = (stroke.shift & kAlt) != 0;
  if (name.size() == 1 && (isLetter(name[0]) || isDigit(name[0]))) {
    if (alt) throw ScenarioError{0, "Alt opens the menus: use menu ENTRY instead"};
    const char16_t letter = isDigit(name[0]) ? name[0] : upper(name[0]);
    stroke.code = static_cast<std::int16_t>(letter);
    if ((stroke.shift & kCtrl) != 0) {
      stroke.character = isDigit(letter) ? u'\0' : static_cast<char16_t>(letter & 0x1F);
    } else {
      stroke.character = static_cast<char16_t>((stroke.shift & kShift) != 0 ? letter : letter | 0x20);
    }
    return stroke;
  }
  stroke.code = codeOf(kKeys, name);
  if (stroke.code < 0x20 && !alt) stroke.character = static_cast<char16_t>(stroke.code);
  return stroke;
}

KeyStroke keyTyping(char16_t character) {
  if (character == u'\n') character = u'\r';
  const bool capital = isLetter(character) && upper(character) == character;
  KeyStroke stroke{0, capital ? kShift : std::int16_t{0}, character};
  if (isLetter(character)) stroke.code = static_cast<std::int16_t>(upper(character));
  if (isDigit(character) || character == u' ' ||
      std::u16string_view(u"\r\t\b\x1B").find(character) != std::u16string_view::npos) {
    stroke.code = static_cast<std::int16_t>(character);
  }
  return stroke;
}

}  // namespace dravenna
