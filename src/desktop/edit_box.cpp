#include "desktop/edit_box.h"

#include <QtCore/QMimeData>
#include <QtGui/QAction>
#include <QtGui/QClipboard>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QDropEvent>
#include <QtGui/QFocusEvent>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QMenu>
#include <limits>
#include <memory>

#include "desktop/qt_text.h"
#include "desktop/twips.h"

namespace dravenna {

namespace {

// The box counts lengths in int and adds to them.
constexpr int kMostCharacters = std::numeric_limits<int>::max() / 2;

bool isLineBreak(QChar c) {
  return c == u'\r' || c == u'\n' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
}

}  // namespace

EditBox::EditBox(TextBox& model, QWidget* parent) : QLineEdit(parent), model_(model) {
  setMaxLength(kMostCharacters);
  connect(this, &QLineEdit::textEdited, this, [this] {
    takeOver();
    if (onUserEdit) onUserEdit();
  });
}

void EditBox::synchronise() {
  const std::u16string& wanted = model_.Text();
  if (viewOf(text()) != wanted) setText(toQt(wanted));
  const int start = model_.SelStart();
  const int length = model_.SelLength();
  const bool same = hasSelectedText() ? selectionStart() == start && selectionLength() == length
                                      : length == 0 && cursorPosition() == start;
  if (!same) {
    if (length > 0) {
      setSelection(start, length);
    } else {
      deselect();
      setCursorPosition(start);
    }
  }
  showColors();
  if (isHidden() == model_.Visible) setVisible(model_.Visible);
}

void EditBox::showColors() {
  if (colorsShown_ && shownFore_ == model_.ForeColor && shownBack_ == model_.BackColor) return;
  colorsShown_ = true;
  shownFore_ = model_.ForeColor;
  shownBack_ = model_.BackColor;
  QPalette colors = palette();
  for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    colors.setColor(group, QPalette::Base, toQt(shownBack_));
    colors.setColor(group, QPalette::Text, toQt(shownFore_));
    colors.setColor(group, QPalette::Highlight, palette().color(QPalette::Active, QPalette::Highlight));
    colors.setColor(group, QPalette::HighlightedText, palette().color(QPalette::Active, QPalette::HighlightedText));
  }
  setPalette(colors);
}

void EditBox::takeOver() {
  const int start = hasSelectedText() ? selectionStart() : cursorPosition();
  model_.userEdited(viewOf(text()), start, selectionLength());
}

void EditBox::focusInEvent(QFocusEvent* event) {
  // As when the window comes forward: the selection stays as it is.
  QFocusEvent plain(QEvent::FocusIn, Qt::ActiveWindowFocusReason);
  QLineEdit::focusInEvent(&plain);
  event->accept();
  if (onGotFocus) onGotFocus();
}

void EditBox::focusOutEvent(QFocusEvent* event) {
  takeOver();
  QFocusEvent plain(QEvent::FocusOut, Qt::ActiveWindowFocusReason);
  QLineEdit::focusOutEvent(&plain);
  event->accept();
}

void EditBox::insertCut(const QString& text) {
  qsizetype end = 0;
  while (end < text.size() && !isLineBreak(text.at(end))) ++end;
  if (end > 0) insert(text.left(end));
}

void EditBox::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Paste)) {
    insertCut(QGuiApplication::clipboard()->text());
  } else {
    QLineEdit::keyPressEvent(event);
  }
}

void EditBox::mouseReleaseEvent(QMouseEvent* event) {
  const QClipboard* clipboard = QGuiApplication::clipboard();
  if (event->button() == Qt::MiddleButton && clipboard->supportsSelection()) {
    deselect();
    setCursorPosition(cursorPositionAt(event->position().toPoint()));
    insertCut(clipboard->text(QClipboard::Selection));
  } else {
    QLineEdit::mouseReleaseEvent(event);
  }
}

void EditBox::dropEvent(QDropEvent* event) {
  if (event->mimeData()->hasText()) {
    deselect();
    setCursorPosition(cursorPositionAt(event->position().toPoint()));
    insertCut(event->mimeData()->text());
    event->setDropAction(Qt::CopyAction);
    event->accept();
  } else {
    event->ignore();
  }
}

void EditBox::contextMenuEvent(QContextMenuEvent* event) {
  const std::unique_ptr<QMenu> menu(createStandardContextMenu());
  if (auto* paste = menu->findChild<QAction*>(QStringLiteral("edit-paste"))) {
    paste->disconnect(this);
    connect(paste, &QAction::triggered, this, [this] { insertCut(QGuiApplication::clipboard()->text()); });
  }
  menu->exec(event->globalPos());
}

}  // namespace dravenna
