#include "desktop/file_dialog.h"

#include <QtCore/QDir>
#include <QtWidgets/QFileDialog>

#include "desktop/qt_text.h"

namespace dravenna {

namespace {

constexpr int kOverwritePrompt = 2;

// "Npcs (*.txt)|*.txt|All files (*.*)|*.*" as the toolkit wants it: one text for each pair, the pattern in parentheses.
QStringList nameFilters(const QString& pairs) {
  QStringList filters;
  const QStringList parts = pairs.split(u'|');
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    QString name = parts.at(i);
    const qsizetype open = name.lastIndexOf(u'(');
    if (open >= 0 && name.endsWith(u')')) name = name.left(open).trimmed();
    QStringList patterns = parts.at(i + 1).split(u';');
    patterns.replaceInStrings(QStringLiteral("*.*"), QStringLiteral("*"));
    filters << name + QStringLiteral(" (") + patterns.join(u' ') + u')';
  }
  return filters;
}

}  // namespace

bool showFileDialog(QWidget* parent, CommonDialog& dialog, bool saving) {
  QFileDialog box(parent, toQt(dialog.DialogTitle));
  box.setObjectName(QStringLiteral("CMD"));
  box.setAcceptMode(saving ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  box.setFileMode(QFileDialog::AnyFile);
  box.setOption(QFileDialog::DontConfirmOverwrite, (dialog.Flags & kOverwritePrompt) == 0);
  if (dialog.DialogTitle.empty()) box.setWindowTitle(saving ? QStringLiteral("Save As") : QStringLiteral("Open"));
  const QStringList filters = nameFilters(toQt(dialog.Filter));
  if (!filters.isEmpty()) box.setNameFilters(filters);
  if (!dialog.InitDir.empty()) box.setDirectory(toQt(dialog.InitDir));
  if (!dialog.FileName.empty()) box.selectFile(toQt(dialog.FileName));
  const bool picked = box.exec() == QDialog::Accepted && !box.selectedFiles().isEmpty();
  dialog.FileName = picked ? fromQt(QDir::toNativeSeparators(box.selectedFiles().constFirst())) : std::u16string();
  return picked;
}

}  // namespace dravenna
