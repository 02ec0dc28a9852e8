#pragma once

#include <QtWidgets/QWidget>
#include <functional>

#include "app/status.h"

class QLabel;
class QMenuBar;
class QPushButton;

namespace dravenna {

// The status at the right end of a menu bar, over it and not in it: a menu bar's own children are no part of the screen
// reader's tree. The menus come first; what has no room beside them is left out, and a long notice is cut.
class StatusPlace : public QWidget {
 public:
  StatusPlace(QMenuBar& bar, QWidget* window);

  std::function<void()> onRescued;  // the user wants to see what was found

  void setParts(const Status::Parts& parts);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void arrange();

  QMenuBar& bar_;
  Status::Parts parts_;
  QPushButton* rescued_;
  QLabel *notice_, *text_, *line_, *page_, *modified_;
};

}  // namespace dravenna
