#pragma once

#include <QtWidgets/QDialog>
#include <vector>

#include "app/rescue.h"
#include "settings/registry.h"

class QListWidget;
class QPlainTextEdit;
class QPushButton;

namespace dravenna {

// The list of what the rescue folder holds: the one that is selected can be read below, restored or thrown away.
class RescueDialog : public QDialog {
 public:
  RescueDialog(Rescue& rescue, Registry& registry, QWidget* parent);

  // What is to be restored, when the dialog was accepted.
  const Rescue::Find& chosen() const;

 private:
  void showChosen();
  void throwAway();

  Rescue& rescue_;
  std::vector<Rescue::Find> finds_;
  QListWidget* list_;
  QPlainTextEdit* content_;
  QPushButton *restore_, *throwAway_;
};

}  // namespace dravenna
