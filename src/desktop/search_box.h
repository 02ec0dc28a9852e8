#pragma once

#include <QtWidgets/QWidget>
#include <array>
#include <functional>

#include "desktop/placing.h"

class QPushButton;

namespace dravenna {

class EditBox;
class FrmSearch;

// The window of the search box.
class SearchBox : public QWidget {
 public:
  // Runs a handler of the form and brings the screen up to what it did.
  using Run = std::function<void(const std::function<void()>&)>;

  SearchBox(FrmSearch& box, QWidget* owner, Run run, Placing::Choice choice);

  void synchronise();

  // Moves to another place when it covers a text, told by its rectangle on the screen.
  void spare(const QRect& text);

  // To screen readers: what has been found.
  void describe(const QString& found);

  // The form is about to go: nothing of it is touched any more. The window goes with the next turn of the event loop.
  void unload();

 protected:
  bool event(QEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;

 private:
  void call(const std::function<void(FrmSearch&)>& handler);

  FrmSearch* box_;
  Run run_;
  Placing::Choice choice_;
  EditBox* txtSearch_;
  std::array<QPushButton*, 2> btn_Search_{};
  QPushButton* CancelButton_;
};

}  // namespace dravenna
