#include "desktop/placing.h"

#include <QtCore/QEvent>
#include <QtGui/QWindow>
#include <QtWidgets/QWidget>
#include <utility>

namespace dravenna {

Placing::Placing(QWidget& window, Choice choice) : QObject(&window), window_(window), choice_(std::move(choice)) {
  place();
  window.installEventFilter(this);
}

QSize Placing::withFrame() const {
  const QWindow* handle = window_.windowHandle();
  return handle == nullptr ? window_.frameGeometry().size() : window_.size().grownBy(handle->frameMargins());
}

void Placing::place() {
  placed_ = withFrame();
  window_.move(choice_(placed_));
}

bool Placing::eventFilter(QObject*, QEvent* event) {
  // No event tells of the frame. Before this one its size may be unknown, or even smaller than the window.
  if (event->type() != QEvent::WindowActivate) return false;
  window_.removeEventFilter(this);
  if (withFrame() != placed_) place();
  deleteLater();
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
