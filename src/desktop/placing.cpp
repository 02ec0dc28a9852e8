#include "desktop/placing.h"

#include <QtCore/QEvent>
#include <QtGui/QWindow>
#include <QtWidgets/QWidget>
#include <utility>

namespace dravenna {

namespace {

QMargins frameOf(const QWidget& window) {
  return window.windowHandle() == nullptr ? QMargins() : window.windowHandle()->frameMargins();
}

}  // namespace

void placeWithFrame(QWidget& window, const Placing::Choice& choice) {
  const QMargins frame = frameOf(window);
  const QPoint corner = choice(window.size().grownBy(frame));
  // The toolkit's window has a notion of its frame which may be that of the time before it had one.
  if (frame.isNull()) {
    window.move(corner);
  } else {
    window.setGeometry(QRect(corner + QPoint(frame.left(), frame.top()), window.size()));
  }
}

QRect withFrame(const QWidget& window) { return window.geometry().marginsAdded(frameOf(window)); }

Placing::Placing(QWidget& window, Choice choice) : QObject(&window), window_(window), choice_(std::move(choice)) {
  placed_ = frameOf(window_);
  placeWithFrame(window_, choice_);
  window.installEventFilter(this);
}

bool Placing::eventFilter(QObject*, QEvent* event) {
  // No event tells of the frame. Before this one its size may be unknown, or even smaller than the window; on a system
  // that is busy, it comes later.
  active_ = active_ || event->type() == QEvent::WindowActivate;
  const QMargins frame = frameOf(window_);
  if (!active_ || frame.isNull()) return false;
  window_.removeEventFilter(this);
  if (frame != placed_) placeWithFrame(window_, choice_);
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
