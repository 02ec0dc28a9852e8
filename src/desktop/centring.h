#pragma once

#include <QtCore/QObject>
#include <QtCore/QRect>

class QWidget;

namespace dravenna {

// Puts a window with its frame in the middle of an area. Some systems tell the size of the frame only when the window
// is on the screen: then it is moved once more.
class Centring final : public QObject {
 public:
  Centring(QWidget& window, const QRect& area);
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  void place();

  QWidget& window_;
  QRect area_;
  QSize placed_;  // the size of the frame, with the window in it
};

}  // namespace dravenna
