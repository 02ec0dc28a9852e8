#pragma once

#include <string_view>

#include "platform/windowing.h"

class QWidget;

namespace dravenna {

// A modal message box: plain text, icon, buttons and default button by `flags`. One that has no Cancel and no OK cannot
// be closed without an answer.
Answer showMessageBox(QWidget* parent, std::u16string_view text, int flags, std::u16string_view title);

// What a user answers who only presses Enter.
Answer defaultAnswer(int flags);

}  // namespace dravenna
