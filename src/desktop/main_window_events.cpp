#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QCloseEvent>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>

#include "desktop/changes_dialog.h"
#include "desktop/edit_box.h"
#include "desktop/file_dialog.h"
#include "desktop/key_codes.h"
#include "desktop/main_window.h"
#include "desktop/qt_text.h"
#include "desktop/view/script_view.h"
#include "editing/error_lines.h"
#include "platform/system.h"

// The user's input on its way to the form's handlers.
namespace dravenna {

bool MainWindow::eventFilter(QObject* object, QEvent* event) {
  switch (event->type()) {
    case QEvent::ShortcutOverride:
      // The menu's shortcuts come first, even where the box would take the key. The window's own event is for the menu.
      if (object == this) return false;
      event->ignore();
      return true;
    case QEvent::KeyPress:
      return keyPressed(object, *static_cast<QKeyEvent*>(event));
    case QEvent::Resize:
      if (object == centralWidget()) formResized();
      return false;
    case QEvent::Paint:
      if (object == N_->viewport() && !painted_) {
        painted_ = true;
        statusTimer_.start();
      }
      return false;
    default:
      return false;
  }
}

Control MainWindow::focusedControl() const {
  if (N_->hasFocus()) return Control::N;
  return EDT_->hasFocus() ? Control::EDT : Control::None;
}

// Always ends the event: one that goes on to the parent would come by a second time.
bool MainWindow::keyPressed(const QObject* object, QKeyEvent& event) {
  if (event.key() == Qt::Key_Tab || event.key() == Qt::Key_Backtab) return false;
  KeyEvent key = keyEventOf(event);
  key.focus = focusedControl();
  if (object == this && (key.focus != Control::None || QApplication::focusWidget() != nullptr)) return false;
  event.accept();
  if (ownKey(event)) return true;
  if (key.focus == Control::EDT) EDT_->takeOver();
  handle([&] {
    const KeyOutcome outcome = principal_.dispatchKey(key);
    const bool hasCharacter = key.KeyAscii != 0;
    const bool printable = key.KeyAscii < 0 || key.KeyAscii >= 0x20;  // negative: a code unit above 0x7FFF
    if (!(outcome.keyPasses ? !hasCharacter || outcome.characterPasses : outcome.characterPasses && printable)) return;
    // The focus may have moved on the way.
    synchronise();
    const Control target = focusedControl();
    if (isAltKey(event)) return;
    if (target == Control::EDT) {
      EDT_->keyPressEvent(&event);
      EDT_->takeOver();
    } else if (target == Control::N) {
      N_->keyPressEvent(&event);
    }
  });
  return true;
}

bool MainWindow::ownKey(const QKeyEvent& event) {
  const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
  if (modifiers.testFlag(Qt::ControlModifier) && !modifiers.testFlag(Qt::AltModifier)) {
    switch (event.key()) {
      case Qt::Key_Plus:
      case Qt::Key_Equal:  // the same key where + needs Shift
        N_->zoom(1);
        return true;
      case Qt::Key_Minus:
        N_->zoom(-1);
        return true;
      case Qt::Key_0:
        N_->zoom(0);
        return true;
      default:
        return false;
    }
  }
  if (modifiers == Qt::ShiftModifier && event.key() == Qt::Key_F10 && QApplication::focusWidget() != nullptr) {
    QWidget& control = *QApplication::focusWidget();
    const QPoint middle = control.rect().center();
    QContextMenuEvent menu(QContextMenuEvent::Keyboard, middle, control.mapToGlobal(middle));
    QCoreApplication::sendEvent(&control, &menu);
    return true;
  }
  if (modifiers != Qt::NoModifier) return false;
  switch (event.key()) {
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
      if (!EDT_->hasFocus()) return false;
      N_->scrollPages(event.key() == Qt::Key_PageUp ? -1 : 1);
      return true;
    case Qt::Key_F6:
      showChanges();
      return true;
    case Qt::Key_F9:
      showNextErrorLine();
      return true;
    case Qt::Key_F10:
      menuBar()->setActiveAction(menuBar()->actions().constFirst());
      return true;
    default:
      return false;
  }
}

void MainWindow::showChanges() {
  if (!takesInput() || !principal_.ScriptLoaded) return;
  EDT_->takeOver();
  ChangesDialog dialog(principal_, this);
  if (dialog.exec() != QDialog::Accepted) return;
  handle([this, &dialog] { principal_.offerOlder(dialog.chosen()); });
}

void MainWindow::showNextErrorLine() {
  const std::size_t line = nextErrorLine(principal_.N, N_->placeShown());
  if (line == std::u16string::npos) return onBeep();
  N_->showLine(line);
  QWidget& heard = N_->hasFocus() ? static_cast<QWidget&>(*N_) : *EDT_;
  heard.setAccessibleDescription(toQt(status_.spokenLine(line)));
}

void MainWindow::showViewMenu(QPoint place, std::size_t offset) {
  QMenu menu;
  const auto add = [&](const Setting& word) { return menu.addAction(toQt(read(principal_.registry(), word))); };
  QAction* const copy = add(desktop_words::Copy);
  copy->setEnabled(principal_.N.SelLength() > 0);
  copy->setShortcut(QKeySequence::Copy);
  connect(copy, &QAction::triggered, N_, &ScriptView::copy);
  connect(add(desktop_words::CopyLine), &QAction::triggered, N_, [this, offset] { N_->copyLine(offset); });
  menu.addSeparator();
  QMenu& pages = *menu.addMenu(toQt(read(principal_.registry(), desktop_words::OtherPage)));
  addPages(pages);
  pages.setEnabled(!principal_.ScriptPath.empty());
  menu.exec(place);
}

// The one in use is ticked; the one that is taken loads the script again.
void MainWindow::addPages(QMenu& menu) {
  menu.setObjectName(QStringLiteral("Pages"));
  for (const int number : codePages()) {
    QAction* action = menu.addAction(toQt(Status::pageName(number)), this, [this, number] { reloadIn(number); });
    action->setCheckable(true);
    action->setChecked(number == disk_.page().number);
    if (action->isChecked()) menu.setActiveAction(action);
  }
}

void MainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::WindowStateChange && started_) formResized();
  if (event->type() == QEvent::ActivationChange && !isActiveWindow()) rescue_.flush();
  if (event->type() == QEvent::ActivationChange && isActiveWindow() && painted_ && running_ == 0) {
    if (frameGeometry().size() != toldSize_) formResized();  // the frame was not known before
    status_.lookAtDisk();
    statusTimer_.start();
  }
}

void MainWindow::open(const std::u16string& path) {
  answer_ = path;
  EDT_->takeOver();
  handle([this] { principal_.OpenScript(); });
  answer_.clear();
}

void MainWindow::reloadIn(int codePage) {
  if (!takesInput()) return;
  disk_.readNextIn(codePage);
  open(std::u16string(principal_.ScriptPath));
  disk_.readNextIn(0);  // the user may have called it off
}

bool MainWindow::takesInput() const { return running_ == 0 && QApplication::activeModalWidget() == nullptr; }

// The files that a drop brings; none while the window takes no input, or where they would be moved away.
std::vector<std::u16string> MainWindow::scriptsIn(const QDropEvent& drop) {
  std::vector<std::u16string> paths;
  if (!takesInput()) return paths;
  if (!drop.possibleActions().testFlag(Qt::CopyAction)) return paths;
  for (const QUrl& url : drop.mimeData()->urls()) {
    if (!url.isLocalFile()) continue;
    const std::u16string path = localPath(url);
    if (disk_.fileExists(path)) paths.push_back(path);
  }
  return paths;
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
  event->setDropAction(Qt::CopyAction);
  event->setAccepted(!scriptsIn(*event).empty());
}

void MainWindow::dropEvent(QDropEvent* event) {
  const std::vector<std::u16string> paths = scriptsIn(*event);
  event->setDropAction(Qt::CopyAction);
  event->setAccepted(!paths.empty());
  // Queued: the program that the files come from waits for the end of the drop.
  if (!paths.empty())
    QMetaObject::invokeMethod(
        this, [this, paths] { openDropped(paths); }, Qt::QueuedConnection);
}

void MainWindow::openDropped(const std::vector<std::u16string>& paths) {
  if (!takesInput()) return;
  activateWindow();
  open(paths.front());
  if (paths.size() == 1 || principal_.ScriptPath != paths.front()) return;
  std::u16string others;
  for (std::size_t i = 1; i < paths.size(); ++i) {
    if (i > 1) others += u", ";
    others += paths[i].substr(paths[i].find_last_of(u"/\\") + 1);
  }
  status_.setNotice(readFilled(principal_.registry(), desktop_words::NotOpened, others));
  statusTimer_.start();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  event->accept();
  if (unloaded_) return;
  unloaded_ = true;
  EDT_->takeOver();
  handle([this] { principal_.Form_Unload(); });
  putAway();
}

}  // namespace dravenna
