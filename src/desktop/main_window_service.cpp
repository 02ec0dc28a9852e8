#include <QtGui/QGuiApplication>
#include <QtWidgets/QApplication>
#include <utility>

#include "desktop/color_pick_dialog.h"
#include "desktop/edit_box.h"
#include "desktop/file_dialog.h"
#include "desktop/main_window.h"
#include "desktop/message_box.h"
#include "desktop/search_box.h"
#include "desktop/view/script_view.h"
#include "platform/failure.h"
#include "platform/file_state.h"

// What the form asks of its window.
namespace dravenna {

namespace {

constexpr std::int32_t kHourglassPointer = 11;

// The form's busy pointer is not shown over a modal window; the screen's is.
class ModalPointer {
 public:
  explicit ModalPointer(bool hide) : hide_(hide) {
    if (hide_) QGuiApplication::restoreOverrideCursor();
  }
  ~ModalPointer() {
    if (hide_) QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  }
  ModalPointer(const ModalPointer&) = delete;
  ModalPointer& operator=(const ModalPointer&) = delete;

 private:
  bool hide_;
};

}  // namespace

Answer MainWindow::messageBox(std::u16string_view text, int flags, std::u16string_view title) {
  synchronise();
  if (painted_) showStatus();
  if (tellMessage_) {
    tellMessage_(text);
    return defaultAnswer(flags);
  }
  if (beforeBox) beforeBox();
  const ModalPointer pointer(busyShown_ && principal_.Screen.MousePointer != kHourglassPointer);
  return showMessageBox(isVisible() ? this : nullptr, text, flags, title);
}

void MainWindow::pick(CommonDialog& dialog, bool saving) {
  synchronise();
  if (beforeBox) beforeBox();
  const ModalPointer pointer(busyShown_ && principal_.Screen.MousePointer != kHourglassPointer);
  const auto accepts = [&](const std::u16string& path) {
    if (!saving || !sameFile(path, principal_.ScriptPath)) return true;
    messageBox(read(principal_.registry(), desktop_words::ScriptIsTarget), kWarning, kTitle);
    return false;
  };
  std::optional<bool> picked;
  if (pickElsewhere) picked = pickElsewhere(dialog, saving, accepts);
  if (!picked) picked = showFileDialog(this, dialog, saving, accepts);
  if (!*picked && dialog.CancelError) throw Failure(u"Cancel was selected.");
}

void MainWindow::ShowOpen(CommonDialog& dialog) {
  if (answer_.empty()) return pick(dialog, false);
  dialog.FileName = std::exchange(answer_, {});
}

void MainWindow::ShowSave(CommonDialog& dialog) { pick(dialog, true); }

void MainWindow::beep() { onBeep(); }

void MainWindow::pointerChanged() {
  const bool busy =
      principal_.form.MousePointer == kHourglassPointer || principal_.Screen.MousePointer == kHourglassPointer;
  if (busy == busyShown_ || loading_) return;
  busyShown_ = busy;
  if (busy) {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
  } else {
    QGuiApplication::restoreOverrideCursor();
  }
}

void MainWindow::SetFocus(Control control) {
  synchronise();
  if (control == Control::N) N_->setFocus(Qt::OtherFocusReason);
  if (control == Control::EDT) EDT_->setFocus(Qt::OtherFocusReason);
  // Out of the search box, the window itself comes forward with its control.
  if (QApplication::activeWindow() != nullptr && !isActiveWindow()) activateWindow();
}

void MainWindow::showSearchBox(FrmSearch& box) {
  synchronise();
  if (searchBox_ == nullptr) {
    searchBox_ = new SearchBox(
        box, this, [this](const std::function<void()>& handlers) { handle(handlers); },
        [this](QSize size) {
          const QWidget& page = *N_->viewport();
          return freeCorner(QRect(page.mapToGlobal(QPoint()), page.size()), size, textOnScreen());
        });
    searchBox_->show();
  }
  searchBox_->raise();
  searchBox_->activateWindow();
}

QRect MainWindow::textOnScreen() {
  const QRect text = N_->rectOfSelection();
  return text.isNull() ? text : QRect(N_->viewport()->mapToGlobal(text.topLeft()), text.size());
}

void MainWindow::unloadSearchBox(FrmSearch&) {
  if (searchBox_ == nullptr) return;
  SearchBox* box = searchBox_;
  searchBox_ = nullptr;
  box->unload();
}

void MainWindow::showColorPick(ColorPick& picker) {
  synchronise();
  const ModalPointer pointer(busyShown_ && principal_.Screen.MousePointer != kHourglassPointer);
  ColorPickDialog dialog(picker, this);
  colorPick_ = &dialog;
  dialog.exec();
  colorPick_ = nullptr;
}

void MainWindow::unloadMainForm() { close(); }

}  // namespace dravenna
