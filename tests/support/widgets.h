// What the toolkit's widgets take and show, in the words of scenarios.
#pragma once

#include <QtWidgets/QtWidgets>
#include <algorithm>

#include "desktop/qt_text.h"
#include "support/driver.h"

namespace dravenna {

inline Qt::Key keyOf(std::int16_t code) {
  constexpr std::int16_t kCodes[] = {kKeyBackspace, kKeyTab,   kKeyEnter, kKeyEsc, kKeyEnd,    kKeyHome,     kKeyLeft,
                                     kKeyUp,        kKeyRight, kKeyDown,  kKeyDel, kKeyPageUp, kKeyPageDown, kKeyPlus,
                                     kKeyMinus,     kKeyF1,    kKeyF3,    kKeyF5,  kKeyF9};
  constexpr Qt::Key kKeys[] = {Qt::Key_Backspace, Qt::Key_Tab,    Qt::Key_Return,   Qt::Key_Escape, Qt::Key_End,
                               Qt::Key_Home,      Qt::Key_Left,   Qt::Key_Up,       Qt::Key_Right,  Qt::Key_Down,
                               Qt::Key_Delete,    Qt::Key_PageUp, Qt::Key_PageDown, Qt::Key_Plus,   Qt::Key_Minus,
                               Qt::Key_F1,        Qt::Key_F3,     Qt::Key_F5,       Qt::Key_F9};
  const auto* const found = std::find(std::begin(kCodes), std::end(kCodes), code);
  // Letters, digits and the blank are the same.
  return found == std::end(kCodes) ? static_cast<Qt::Key>(code) : kKeys[found - kCodes];
}

inline std::uint32_t colorNumber(const QColor& color) {
  return static_cast<std::uint32_t>(color.red() | color.green() << 8 | color.blue() << 16);
}

// The flags that a message box stands for, read from what it shows.
inline int flagsOf(const QMessageBox& box) {
  constexpr int kIcons[] = {0, kInformation, kWarning, kCritical, 32};  // in the order of QMessageBox::Icon
  int flags = kIcons[box.icon()];
  const QMessageBox::StandardButtons buttons = box.standardButtons();
  if (buttons == (QMessageBox::Ok | QMessageBox::Cancel)) flags += 1;
  if (buttons == (QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel)) flags += 3;
  if (buttons == (QMessageBox::Yes | QMessageBox::No)) flags += 4;
  const QPushButton* standard = box.defaultButton();
  if (standard == box.button(QMessageBox::Cancel) && standard != nullptr) flags += (flags & 7) == 3 ? 512 : 256;
  return flags;
}

inline QMessageBox::StandardButton buttonOf(Answer answer) {
  if (answer == Answer::Yes) return QMessageBox::Yes;
  if (answer == Answer::No) return QMessageBox::No;
  return answer == Answer::Cancel ? QMessageBox::Cancel : QMessageBox::Ok;
}

// The user goes to the folder and types the name over the one that is offered. (The list would drop its selection by
// itself, but only when it has read the folder.)
inline void typeName(QFileDialog& dialog, const QString& path) {
  const QFileInfo picked(path);
  const bool reachable = QFileInfo(picked.path()).isDir();
  if (reachable) dialog.setDirectory(picked.path());
  auto* name = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
  dialog.findChild<QListView*>(QStringLiteral("listView"))->clearSelection();
  name->selectAll();
  name->insert(reachable ? picked.fileName() : picked.filePath());
  const auto standard =
      dialog.acceptMode() == QFileDialog::AcceptSave ? QDialogButtonBox::Save : QDialogButtonBox::Open;
  dialog.findChild<QDialogButtonBox*>()->button(standard)->click();
}

inline std::optional<Value> readBox(const QLineEdit& box, const std::string& what) {
  if (what == "Text") return fromQt(box.text());
  if (what == "SelStart") return std::int64_t{box.hasSelectedText() ? box.selectionStart() : box.cursorPosition()};
  if (what == "SelLength") return std::int64_t{box.selectionLength()};
  if (what == "SelText") return fromQt(box.selectedText());
  if (what == "Visible") return !box.isHidden();
  if (what == "ForeColor") return std::int64_t{colorNumber(box.palette().color(QPalette::Text))};
  if (what == "BackColor") return std::int64_t{colorNumber(box.palette().color(QPalette::Base))};
  return std::nullopt;
}

inline std::optional<Value> readAction(const QAction& action, const std::string& what) {
  if (action.isSeparator()) return std::nullopt;
  if (what == "Caption") return fromQt(action.text());
  if (what == "Enabled") return action.isEnabled();
  if (what == "Checked") return action.isChecked();
  return std::nullopt;
}

}  // namespace dravenna
