#pragma once

#include <QtCore/QMargins>
#include <QtCore/QObject>
#include <QtCore/QRect>
#include <functional>

class QWidget;

namespace dravenna {

// Puts a window with its frame somewhere. Some systems tell the size of the frame only when the window is on the
// screen: then it is moved once more.
class Placing final : public QObject {
 public:
  // Gives the place of the upper left corner for a size.
  using Choice = std::function<QPoint(QSize frame)>;

  Placing(QWidget& window, Choice choice);
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  QWidget& window_;
  Choice choice_;
  QMargins placed_;  // the frame, as it was known
  bool active_ = false;
};

// The same once, with the frame as it is known now.
void placeWithFrame(QWidget& window, const Placing::Choice& choice);

// A window's place on the screen, frame included.
QRect withFrame(const QWidget& window);

// In the middle of an area.
Placing::Choice centredIn(const QRect& area);

// In the corner of an area where least of `spared` is covered.
QPoint freeCorner(const QRect& area, QSize size, const QRect& spared);

}  // namespace dravenna
