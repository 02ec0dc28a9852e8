#include "desktop/program_style.h"

#include <QtGui/QPainter>

namespace dravenna {

QIcon ProgramStyle::standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const {
  if (which != SP_ToolBarHorizontalExtensionButton) return QProxyStyle::standardIcon(which, option, widget);
  constexpr int kSize = 10;
  QPixmap chevrons(kSize, kSize);
  chevrons.fill(Qt::transparent);
  QPainter painter(&chevrons);
  painter.setPen(Qt::gray);  // on a light bar and on a dark one
  for (const int x : {1, 5}) painter.drawPolyline(QPolygon({{x, 2}, {x + 3, 5}, {x, 8}}));
  painter.end();
  return QIcon(chevrons);
}

}  // namespace dravenna
