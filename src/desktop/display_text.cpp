#include "desktop/display_text.h"

#include "desktop/qt_text.h"
#include "text/text.h"

namespace dravenna {

namespace {

constexpr char16_t kBox = 0x25A1;

constexpr bool isControl(char16_t unit) {
  return (unit < 0x20 && unit != u'\t') || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
}

// Surrogates stand above all letters, so one comparison lets nearly every character pass.
constexpr bool isSpecial(char16_t unit) {
  return isControl(unit) || (unit >= 0xD800 && (unit < 0xE000 || unit >= 0xFFF0));
}

}  // namespace

QString displayText(std::u16string_view text) {
  QString drawn = toQt(text);
  QChar* units = nullptr;  // detached at the first change
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (!isSpecial(text[i])) continue;
    if (isHighSurrogate(text[i]) && i + 1 < text.size() && isLowSurrogate(text[i + 1])) {
      ++i;
      continue;
    }
    if (units == nullptr) units = drawn.data();
    units[i] = QChar(kBox);
  }
  return drawn;
}

}  // namespace dravenna
