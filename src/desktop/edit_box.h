#pragma once

#include <QtWidgets/QLineEdit>
#include <functional>

#include "platform/controls.h"

namespace dravenna {

// A text box over its model. It keeps its selection when it loses the focus, and the lines of what is pasted, dropped
// or composed into it are joined by blanks. A text of more than a million characters is more than the toolkit can lay
// out in reasonable time and memory: the box then shows a notice, takes no typing and leaves the model's text as it is.
class EditBox : public QLineEdit {
 public:
  explicit EditBox(TextBox& model, QWidget* parent = nullptr);

  // Model to screen: text, selection, colours. The text is written only if it differs, for the sake of the box's undo.
  void synchronise();
  // Screen to model: what the user has done.
  void takeOver();

  std::function<void()> onGotFocus;
  std::function<void()> onUserEdit;  // the model has been brought up to the user's change
  std::function<QString(std::size_t characters)> noticeOfLong;

  // The box's own handling of a key, for those that the form's handlers have let pass.
  void keyPressEvent(QKeyEvent* event) override;

 protected:
  bool event(QEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void inputMethodEvent(QInputMethodEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  void insertJoined(const QString& pasted);
  void showText();
  void showSelection();
  void showColors();

  TextBox& model_;
  std::uint32_t shownFore_ = 0, shownBack_ = 0;
  bool colorsShown_ = false;
  bool tooLong_ = false;
  bool takenWhole_ = false;  // and its view is at the beginning
};

}  // namespace dravenna
