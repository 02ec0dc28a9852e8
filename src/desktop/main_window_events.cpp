#include <QtGui/QCloseEvent>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QApplication>

#include "desktop/edit_box.h"
#include "desktop/key_codes.h"
#include "desktop/main_window.h"
#include "desktop/script_view.h"

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
  if (key.focus == Control::EDT) EDT_->takeOver();
  handle([&] {
    const KeyOutcome outcome = principal_.dispatchKey(key);
    const bool hasCharacter = key.KeyAscii != 0;
    const bool printable = key.KeyAscii < 0 || key.KeyAscii >= 0x20;  // negative: a code unit above 0x7FFF
    if (!(outcome.keyPasses ? !hasCharacter || outcome.characterPasses : outcome.characterPasses && printable)) return;
    // The focus may have moved on the way.
    synchronise();
    const Control target = focusedControl();
    if (target == Control::EDT) {
      EDT_->keyPressEvent(&event);
      EDT_->takeOver();
    } else if (target == Control::N) {
      N_->keyPressEvent(&event);
    if (isAltKey(event)) return;
    }
  });
  return true;
}

void MainWindow::changeEvent(QEvent* event) {
  QMainWindow::changeEvent(event);
  if (event->type() == QEvent::WindowStateChange && started_) formResized();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  event->accept();
  if (unloaded_) return;
  unloaded_ = true;
  EDT_->takeOver();
  handle([this] { principal_.Form_Unload(); });
}

}  // namespace dravenna
