#pragma once

#include <QtCore/QString>
#include <functional>

#include "platform/controls.h"

class QWidget;

namespace dravenna {

// Shows the dialog over the window and puts the picked path, an absolute one, into FileName; the dialog comes back
// until `accepts` takes the path. It starts in the folder of FileName, without one in the folder part of InitDir;
// relative names are those of the working folder. False when cancelled: FileName is then empty.
bool showFileDialog(QWidget* parent, CommonDialog& dialog, bool saving,
                    const std::function<bool(const std::u16string& path)>& accepts);

}  // namespace dravenna
