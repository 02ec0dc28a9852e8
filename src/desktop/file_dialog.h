#pragma once

#include <QtCore/QString>
#include <functional>

#include "platform/controls.h"

class QFileInfo;
class QUrl;
class QWidget;

namespace dravenna {

// The path that an address names. Where names are bytes, it holds any of them, and perhaps the name of this computer.
std::u16string localPath(const QUrl& address);

// Where a dialog starts.
QString startFolder(const QString& initDir, const QFileInfo& offered);

// Shows the dialog over the window and puts the picked path, an absolute one, into FileName; the dialog comes back
// until `accepts` takes the path. It starts in the folder of FileName, without one in the folder part of InitDir;
// relative names are those of the working folder. False when cancelled: FileName is then empty.
bool showFileDialog(QWidget* parent, CommonDialog& dialog, bool saving,
                    const std::function<bool(const std::u16string& path)>& accepts);

}  // namespace dravenna
