#pragma once

#include "platform/controls.h"

class QWidget;

namespace dravenna {

// Shows the common file dialog and puts the picked path into FileName. When opening, a typed name need not exist.
// Returns false, with FileName empty, when the user cancels.
bool showFileDialog(QWidget* parent, CommonDialog& dialog, bool saving);

}  // namespace dravenna
