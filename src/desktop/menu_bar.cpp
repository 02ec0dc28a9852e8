#include "desktop/menu_bar.h"

#include <QtGui/QAction>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <map>

#include "desktop/qt_text.h"

namespace dravenna {

MenuBar::MenuBar(QMenuBar& bar, Principal& principal, const std::function<void(Click)>& run) {
  std::map<const MenuEntry*, QMenu*> menus;
  for (const MenuPlace& place : principal.menu()) {
    QAction* action = nullptr;
    const auto keepMenu = [&](QMenu* menu) {
      menus.emplace(place.entry, menu);
      action = menu->menuAction();
    };
    if (place.parent == nullptr) {
      keepMenu(bar.addMenu(QString()));
    } else if (QMenu& parent = *menus.at(place.parent); place.entry->Caption == u"-") {
      action = parent.addSeparator();
    } else if (place.click == nullptr) {
      keepMenu(parent.addMenu(QString()));
    } else {
      action = parent.addAction(QString());
      QObject::connect(action, &QAction::triggered, &bar, [run, click = place.click] { run(click); });
      if (place.shortcut != 0) action->setShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(place.shortcut)));
    }
    action->setObjectName(toQt(place.entry->name));
    action->setMenuRole(QAction::NoRole);
    actions_.emplace_back(place.entry, action);
  }
  for (const MenuEntry* entry :
       {&principal.mnu_Shell, &principal.mnu_EditMode1, &principal.mnu_EditMode2, &principal.mnu_EditMode3}) {
    for (auto& [known, action] : actions_) {
      if (known == entry) action->setCheckable(true);
    }
  }
  synchronise();
}

void MenuBar::synchronise() {
  for (auto& [entry, action] : actions_) {
    if (action->isSeparator()) continue;
    if (viewOf(action->text()) != entry->Caption) action->setText(toQt(entry->Caption));
    action->setEnabled(entry->Enabled);
    if (action->isCheckable()) action->setChecked(entry->Checked);
  }
}

}  // namespace dravenna
