#include "desktop/edit_box.h"

#include <QtCore/QMimeData>
#include <QtGui/QAction>
#include <QtGui/QClipboard>
#include <QtGui/QContextMenuEvent>
#include <QtGui/QDropEvent>
#include <QtGui/QFocusEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <limits>
#include <memory>

#include "desktop/qt_text.h"
#include "desktop/selection_colors.h"
#include "desktop/twips.h"

namespace dravenna {

namespace {

constexpr qsizetype kMostInBox = 1'000'000;
constexpr int kNoLimit = std::numeric_limits<int>::max() / 2;  // the box adds to it

bool isLineBreak(QChar c) {
  return c == u'\r' || c == u'\n' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
}

bool movesCaret(int key) {
  return key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Home || key == Qt::Key_End;
}

// The lines of a text, those without a character left out, with a blank between them.
QString joined(const QString& text) {
  QString line;
  bool broken = false;
  for (const QChar c : text) {
    if (isLineBreak(c)) {
      broken = true;
      continue;
    }
    if (broken && !line.isEmpty()) line += u' ';
    broken = false;
    line += c;
  }
  return line;
}

}  // namespace

EditBox::EditBox(TextBox& model, QWidget* parent) : QLineEdit(parent), model_(model) {
  setMaxLength(kNoLimit);
  connect(this, &QLineEdit::textEdited, this, [this] {
    takeOver();
    if (onUserEdit) onUserEdit();
  });
}

void EditBox::synchronise() {
  showText();
  if (!tooLong_) showSelection();
  showColors();
  if (isHidden() == model_.Visible) setVisible(model_.Visible);
}

void EditBox::showText() {
  const std::u16string& wanted = model_.Text();
  const bool tooLong = static_cast<qsizetype>(wanted.size()) > kMostInBox;
  if (tooLong != tooLong_) setReadOnly(tooLong);
  tooLong_ = tooLong;
  const QString shown = !tooLong ? toQt(wanted) : noticeOfLong ? noticeOfLong(wanted.size()) : QString();
  if (text() != shown) setText(shown);
}

void EditBox::showSelection() {
  const int start = model_.SelStart();
  const int length = model_.SelLength();
  const bool same = hasSelectedText() ? selectionStart() == start && selectionLength() == length
                                      : length == 0 && cursorPosition() == start;
  if (!same) {
    if (length > 0) {
      if (start == 0 && length == static_cast<int>(model_.Text().size())) {
        setSelection(length, -length);  // the caret, which stays in view, is at the beginning
        takenWhole_ = true;
      } else {
        setSelection(start, length);
      }
    } else {
      deselect();
      setCursorPosition(start);
    }
  }
}

void EditBox::showColors() {
  if (colorsShown_ && shownFore_ == model_.ForeColor && shownBack_ == model_.BackColor) return;
  colorsShown_ = true;
  shownFore_ = model_.ForeColor;
  shownBack_ = model_.BackColor;
  const bool onDark = toQt(shownBack_).lightness() < 128;
  QPalette colors = palette();
  for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    colors.setColor(group, QPalette::Base, toQt(shownBack_));
    colors.setColor(group, QPalette::Text, toQt(shownFore_));
    colors.setColor(group, QPalette::Highlight, kSelectionGround);
    colors.setColor(group, QPalette::HighlightedText, onDark ? toQt(shownFore_) : kSelectionText);
  }
  setPalette(colors);
}

void EditBox::takeOver() {
  if (tooLong_) return;
  const int start = hasSelectedText() ? selectionStart() : cursorPosition();
  model_.userEdited(viewOf(text()), start, selectionLength());
}

bool EditBox::event(QEvent* event) {
  // Without the focus, the toolkit's box drops its selection when the window comes forward.
  if (event->type() != QEvent::WindowActivate) return QLineEdit::event(event);
  return QWidget::event(event);  // NOLINT(bugprone-parent-virtual-call)
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

void EditBox::insertJoined(const QString& pasted) {
  const QString line = joined(pasted);
  if (isReadOnly() || text().size() + line.size() > kMostInBox) {
    QApplication::beep();
  } else if (!line.isEmpty()) {
    insert(line);
  }
}

void EditBox::keyPressEvent(QKeyEvent* event) {
  const bool left = event->key() == Qt::Key_Left;
  if (hasSelectedText() && (left || event->key() == Qt::Key_Right) &&
      (event->modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier) {
    return setCursorPosition(left ? selectionStart() : selectionEnd());
  }
  // A text taken whole is shown as selected towards its beginning; the keys find it selected towards its end.
  if (takenWhole_ && movesCaret(event->key())) {
    takenWhole_ = false;
    if (selectionLength() == text().size()) setSelection(0, static_cast<int>(text().size()));
  }
  if (event->matches(QKeySequence::Paste)) {
    insertJoined(QApplication::clipboard()->text());
  } else {
    QLineEdit::keyPressEvent(event);
  }
}

void EditBox::inputMethodEvent(QInputMethodEvent* event) {
  const QString line = joined(event->commitString());
  event->setCommitString(line, event->replacementStart(), event->replacementLength());
  QLineEdit::inputMethodEvent(event);
}

void EditBox::mouseReleaseEvent(QMouseEvent* event) {
  const QClipboard* clipboard = QApplication::clipboard();
  if (event->button() == Qt::MiddleButton && clipboard->supportsSelection()) {
    deselect();
    setCursorPosition(cursorPositionAt(event->position().toPoint()));
    insertJoined(clipboard->text(QClipboard::Selection));
  } else {
    QLineEdit::mouseReleaseEvent(event);
  }
}

void EditBox::dragEnterEvent(QDragEnterEvent* event) {
  if (event->mimeData()->hasUrls()) return event->ignore();  // files are for the window
  QLineEdit::dragEnterEvent(event);
}

void EditBox::dropEvent(QDropEvent* event) {
  if (event->mimeData()->hasText()) {
    deselect();
    setCursorPosition(cursorPositionAt(event->position().toPoint()));
    insertJoined(event->mimeData()->text());
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
    connect(paste, &QAction::triggered, this, [this] { insertJoined(QApplication::clipboard()->text()); });
  }
  menu->exec(event->globalPos());
}

}  // namespace dravenna
