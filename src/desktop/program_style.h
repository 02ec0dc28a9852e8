#pragma once

#include <QtWidgets/QProxyStyle>

namespace dravenna {

// The toolkit's plain style. It draws the mark of a menu bar that is too narrow by itself: the toolkit would load its
// icon theme and all image plugins for it at every start.
class ProgramStyle : public QProxyStyle {
 public:
  ProgramStyle() : QProxyStyle(QStringLiteral("fusion")) {}

  QIcon standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const override;
};

}  // namespace dravenna
