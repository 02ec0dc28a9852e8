#include "desktop/placing.h"

#include <QtCore/QEvent>
#include <QtWidgets/QWidget>
#include <utility>

namespace dravenna {

Placing::Placing(QWidget& window, Choice choice) : QObject(&window), window_(window), choice_(std::move(choice)) {
  place();
  window.installEventFilter(this);
}

void Placing::place() {
  placed_ = window_.frameGeometry().size();
  window_.move(choice_(placed_));
}

bool Placing::eventFilter(QObject*, QEvent* event) {
  const bool framed = window_.frameGeometry().size() != window_.size();
  if (window_.isVisible() && framed && (event->type() == QEvent::Move || event->type() == QEvent::Paint)) {
    window_.removeEventFilter(this);
    if (window_.frameGeometry().size() != placed_) place();
    deleteLater();
  }
  return false;
}

Placing::Choice centredIn(const QRect& area) {
  return [area](QSize size) { return area.center() - QRect(QPoint(), size).center(); };
}

QPoint freeCorner(const QRect& area, QSize size, const QRect& spared) {
  const QPoint farthest(area.right() + 1 - size.width(), area.bottom() + 1 - size.height());
  QPoint best;
  int least = -1;
  for (const QPoint corner :
       {QPoint(farthest.x(), area.top()), farthest, area.topLeft(), QPoint(area.left(), farthest.y())}) {
    const QRect covered = QRect(corner, size) & spared;
    const int pixels = covered.isEmpty() ? 0 : covered.width() * covered.height();
    if (least >= 0 && pixels >= least) continue;
    least = pixels;
    best = corner;
  }
  return best;
}

}  // namespace dravenna
