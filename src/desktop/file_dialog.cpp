#include "desktop/file_dialog.h"

#include <QtCore/QDir>
#include <QtCore/QUrl>
#include <QtWidgets/QFileDialog>

#include "desktop/qt_text.h"
#include "text/text.h"

namespace dravenna {

namespace {

constexpr int kOverwritePrompt = 2;

// "Npcs (*.txt)|*.txt|All files (*.*)|*.*" as the toolkit wants it: one text for each pair, the pattern in parentheses
// behind the name. It does not show what stands in these; to it, "*.*" is a name with a dot in it.
QStringList nameFilters(const QString& pairs) {
  QStringList filters;
  const QStringList parts = pairs.split(u'|');
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    QStringList patterns = parts.at(i + 1).split(u';');
    patterns.replaceInStrings(QStringLiteral("*.*"), QStringLiteral("*"));
    filters << parts.at(i) + QStringLiteral(" (") + patterns.join(u' ') + u')';
  }
  return filters;
}

}  // namespace

std::u16string localPath(const QUrl& address) {
  return QDir::separator() == u'/'
             ? fromUtf8(QByteArray::fromPercentEncoding(address.path(QUrl::FullyEncoded).toLatin1()).toStdString())
             : fromQt(QDir::toNativeSeparators(address.toLocalFile()));
}

QString startFolder(const QString& initDir, const QFileInfo& offered) {
  if (offered.filePath() != offered.fileName()) return offered.absolutePath();
  const QFileInfo place(initDir);
  return initDir.isEmpty() ? QDir::currentPath() : place.isDir() ? place.absoluteFilePath() : place.absolutePath();
}

bool showFileDialog(QWidget* parent, CommonDialog& dialog, bool saving,
                    const std::function<bool(const std::u16string& path)>& accepts) {
  const QFileInfo offered(toQt(dialog.FileName));
  QFileDialog box(parent, toQt(dialog.DialogTitle), startFolder(toQt(dialog.InitDir), offered));
  box.setObjectName(QStringLiteral("CMD"));
  box.setAcceptMode(saving ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  box.setFileMode(QFileDialog::AnyFile);
  box.setOption(QFileDialog::DontConfirmOverwrite, (dialog.Flags & kOverwritePrompt) == 0);
  box.setOption(QFileDialog::HideNameFilterDetails);
  const QStringList filters = nameFilters(toQt(dialog.Filter));
  if (!filters.isEmpty()) box.setNameFilters(filters);
  if (!dialog.FileName.empty()) box.selectFile(offered.fileName());
  while (box.exec() == QDialog::Accepted && !box.selectedFiles().isEmpty()) {
    const std::u16string picked = fromQt(QDir::toNativeSeparators(box.selectedFiles().constFirst()));
    if (!accepts(picked)) continue;
    dialog.FileName = picked;
    return true;
  }
  dialog.FileName.clear();
  return false;
}

}  // namespace dravenna
