#pragma once

#include <QtWidgets/QDialog>
#include <cstddef>

#include "app/principal.h"

class QPlainTextEdit;
class QTreeWidget;

namespace dravenna {

// The list of what has been committed since the load. The one that is selected can be read in full below, and is what
// the user has chosen when the dialog was accepted.
class ChangesDialog : public QDialog {
 public:
  ChangesDialog(Principal& principal, QWidget* parent);

  std::size_t chosen() const;  // from 0

 private:
  void showChosen();

  Principal& principal_;
  QTreeWidget* list_;
  QPlainTextEdit* content_;
};

}  // namespace dravenna
