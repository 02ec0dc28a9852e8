#include "desktop/centring.h"

#include <QtCore/QEvent>
#include <QtWidgets/QWidget>

namespace dravenna {

Centring::Centring(QWidget& window, const QRect& area) : QObject(&window), window_(window), area_(area) {
  place();
  window.installEventFilter(this);
}

void Centring::place() {
  placed_ = window_.frameGeometry().size();
  window_.move(area_.center() - QRect(QPoint(), placed_).center());
}

bool Centring::eventFilter(QObject*, QEvent* event) {
  const bool framed = window_.frameGeometry().size() != window_.size();
  if (window_.isVisible() && framed && (event->type() == QEvent::Move || event->type() == QEvent::Paint)) {
    window_.removeEventFilter(this);
    if (window_.frameGeometry().size() != placed_) place();
    deleteLater();
  }
  return false;
}

}  // namespace dravenna
