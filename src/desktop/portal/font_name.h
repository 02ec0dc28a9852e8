#pragma once

#include <QtCore/QString>
#include <QtGui/QFont>

namespace dravenna {

// The font that a desktop names: "Cantarell Bold 11" (family, words for its style, size in points), or the toolkit's
// own form with commas. What is not told is that of `usual`.
QFont fontNamed(const QString& description, QFont usual);

}  // namespace dravenna
