#include "support/keys.h"

#include <algorithm>
#include <span>

#include "support/scenario.h"

namespace dravenna {

namespace {

bool isLetter(char16_t c) { return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'); }
bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
char16_t upper(char16_t c) { return static_cast<char16_t>(c & ~0x20); }

std::int16_t codeOf(std::span<const std::u16string_view> names, std::span<const std::int16_t> codes,
                    std::u16string_view name) {
  const auto found = std::find(names.begin(), names.end(), name);
  if (found == names.end()) throw ScenarioError{0, "unknown key"};
  return codes[static_cast<std::size_t>(found - names.begin())];
}

}  // namespace

KeyStroke keyNamed(std::u16string_view name) {
  static constexpr std::u16string_view kKeys[] = {
      u"Enter", u"Esc", u"Up",        u"Down", u"Left",  u"Right", u"Home", u"End", u"PageUp", u"PageDown",
      u"Tab",   u"Del", u"Backspace", u"Plus", u"Minus", u"F1",    u"F3",   u"F5",  u"F9"};
  static constexpr std::int16_t kCodes[] = {
      kKeyEnter, kKeyEsc, kKeyUp,        kKeyDown, kKeyLeft,  kKeyRight, kKeyHome, kKeyEnd, kKeyPageUp, kKeyPageDown,
      kKeyTab,   kKeyDel, kKeyBackspace, kKeyPlus, kKeyMinus, kKeyF1,    kKeyF3,   kKeyF5,  kKeyF9};
  static constexpr std::u16string_view kModifiers[] = {u"Shift", u"Ctrl", u"Alt"};
  static constexpr std::int16_t kBits[] = {kShift, kCtrl, kAlt};
  KeyStroke stroke;
  for (std::size_t plus; (plus = name.find(u'+')) != name.npos; name.remove_prefix(plus + 1)) {
    stroke.shift = static_cast<std::int16_t>(stroke.shift | codeOf(kModifiers, kBits, name.substr(0, plus)));
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
  stroke.code = codeOf(kKeys, kCodes, name);
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
