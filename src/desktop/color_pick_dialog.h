#pragma once

#include <QtWidgets/QDialog>

namespace dravenna {

class ColorPick;

// The window of the colour picker; exec() returns when the form has hidden itself.
class ColorPickDialog : public QDialog {
 public:
  ColorPickDialog(ColorPick& picker, QWidget* owner);

  void reject() override;  // the close box

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  // After each handler: shows what it has changed, or ends.
  void synchronise();

  ColorPick& picker_;
};

}  // namespace dravenna
