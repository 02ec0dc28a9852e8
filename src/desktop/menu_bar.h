#pragma once

#include <QtCore/QString>
#include <functional>
#include <utility>
#include <vector>

#include "app/principal.h"

class QAction;
class QMenuBar;

namespace dravenna {

// The form's menu tree on a menu bar. Captions, check marks and the enabled state only ever follow the model.
class MenuBar {
 public:
  using Click = void (Principal::*)();

  // `run` carries out a click.
  MenuBar(QMenuBar& bar, Principal& principal, const std::function<void(Click)>& run);

  void synchronise();

 private:
  std::vector<std::pair<const MenuEntry*, QAction*>> actions_;
};

}  // namespace dravenna
