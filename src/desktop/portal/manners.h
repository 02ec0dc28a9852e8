#pragma once

#include <QtCore/QTranslator>
#include <QtGui/QFont>
#include <memory>

#include "desktop/portal/portal.h"

namespace dravenna {

class MainWindow;

// What makes the window at home on its desktop, none of which the first paint waits for: the toolkit's own words in the
// language of the system, the look of menus, boxes and dialogs, the desktop's file dialogs.
class DesktopManners {
 public:
  explicit DesktopManners(MainWindow& window) : window_(window) {}

  // With the first paint or the first box, whichever is earlier; does nothing when called again.
  void begin();

 private:
  void show(const DesktopLook& look);

  MainWindow& window_;
  QTranslator words_;
  std::unique_ptr<DesktopPortal> portal_;
  DesktopLook shown_;
  QFont usualFont_;  // the toolkit's
  bool begun_ = false;
};

}  // namespace dravenna
