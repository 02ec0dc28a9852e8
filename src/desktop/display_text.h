#pragma once

#include <QtCore/QString>
#include <string_view>

namespace dravenna {

// The characters of a line as they are drawn, one for one. What has no look of its own (control characters but the tab,
// bytes that the code page cannot decode, line separators) comes out as a box.
QString displayText(std::u16string_view text);

}  // namespace dravenna
