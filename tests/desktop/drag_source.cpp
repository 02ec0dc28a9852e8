// FILE: a window out of which the file can be dragged. Prints "accepted" when a window would take it.
#include <QtCore/QMimeData>
#include <QtCore/QUrl>
#include <QtGui/QDrag>
#include <QtWidgets/QApplication>
#include <QtWidgets/QWidget>
#include <cstdio>

namespace {

class DragSource final : public QWidget {
 protected:
  void mousePressEvent(QMouseEvent*) override {
    auto* files = new QMimeData;
    files->setUrls({QUrl::fromLocalFile(QCoreApplication::arguments().at(1))});
    auto* drag = new QDrag(this);
    drag->setMimeData(files);
    connect(drag, &QDrag::actionChanged, [](Qt::DropAction action) {
      if (action != Qt::IgnoreAction) std::puts("accepted"), std::fflush(stdout);
    });
    drag->exec(Qt::CopyAction);
  }
};

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  DragSource source;
  source.setWindowTitle(QStringLiteral("drag source"));
  source.setGeometry(20, 40, 60, 60);
  source.show();
  return QApplication::exec();
}
