#pragma once

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
  QSize withFrame() const;
  void place();

  QWidget& window_;
  Choice choice_;
  QSize placed_;  // the size of the frame, with the window in it
};

// In the middle of an area.
Placing::Choice centredIn(const QRect& area);

// In the corner of an area where least of `spared` is covered.
QPoint freeCorner(const QRect& area, QSize size, const QRect& spared);

}  // namespace dravenna
