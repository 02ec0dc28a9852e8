#pragma once

#include <QtCore/QString>
#include <string>
#include <string_view>

// The program's UTF-16 and Qt's are the same code units; neither way changes any of them.
namespace dravenna {

inline QString toQt(std::u16string_view text) {
  return QString(reinterpret_cast<const QChar*>(text.data()), static_cast<qsizetype>(text.size()));
}

inline std::u16string_view viewOf(const QString& text) {
  return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

inline std::u16string fromQt(const QString& text) { return std::u16string(viewOf(text)); }

}  // namespace dravenna
