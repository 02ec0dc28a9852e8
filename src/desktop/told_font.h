#pragma once

#include <QtGui/QFont>

namespace dravenna {

// Of the box, the search box and the picker. Weight and slant are set, so that they are not taken from the desktop's
// font.
inline QFont toldFont(bool bold) {
  QFont font(QStringLiteral("Arial"));
  font.setPointSizeF(8.25);
  font.setBold(bold);
  font.setItalic(false);
  return font;
}

}  // namespace dravenna
