#pragma once

#include <QtWidgets/QWidget>
#include <functional>

#include "app/status.h"

class QLabel;
class QMenuBar;
class QToolButton;

namespace dravenna {

// The status at the right end of a menu bar, over it and not in it: a menu bar's own children are no part of the screen
// reader's tree. The menus come first; what has no room beside them is left out, and what is long is cut.
class StatusPlace : public QWidget {
 public:
  // `pageHint` tells what a click on the code page does.
  StatusPlace(QMenuBar& bar, QWidget* window, const QString& pageHint);

  std::function<void()> onRescued;           // the user wants to see what was found
  std::function<void(QPoint below)> onPage;  // the user has clicked on the code page

  void setParts(const Status::Parts& parts);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void arrange();
  QString pageText() const;

  QMenuBar& bar_;
  Status::Parts parts_;
  QString pageHint_;
  QToolButton *rescued_, *page_;
  QLabel *notice_, *errors_, *text_, *line_, *modified_;
};

}  // namespace dravenna
