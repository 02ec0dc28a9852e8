#include "desktop/message_box.h"

#include <QtGui/QCloseEvent>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QMessageBox>

#include "desktop/qt_text.h"

namespace dravenna {

namespace {

// The parts of the flags.
constexpr int kButtons = 0x0F, kOkCancel = 1, kYesNoCancel = 3, kYesNo = 4;
constexpr int kIcon = 0xF0, kQuestion = 32;
constexpr int kDefault = 0x300, kSecond = 0x100, kThird = 0x200;

class MessageBox final : public QMessageBox {
 public:
  using QMessageBox::QMessageBox;
  bool mustBeAnswered = false;

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    if (mustBeAnswered && event->key() == Qt::Key_Escape) return;
    QMessageBox::keyPressEvent(event);
  }
  void closeEvent(QCloseEvent* event) override {
    if (mustBeAnswered && result() == 0) return event->ignore();
    QMessageBox::closeEvent(event);
  }
};

QMessageBox::Icon iconOf(int flags) {
  switch (flags & kIcon) {
    case kCritical:
      return QMessageBox::Critical;
    case kQuestion:
      return QMessageBox::Question;
    case kWarning:
      return QMessageBox::Warning;
    case kInformation:
      return QMessageBox::Information;
    default:
      return QMessageBox::NoIcon;
  }
}

QMessageBox::StandardButtons buttonsOf(int flags) {
  switch (flags & kButtons) {
    case kOkCancel:
      return QMessageBox::Ok | QMessageBox::Cancel;
    case kYesNoCancel:
      return QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel;
    case kYesNo:
      return QMessageBox::Yes | QMessageBox::No;
    default:
      return QMessageBox::Ok;
  }
}

QMessageBox::StandardButton buttonOf(Answer answer) {
  switch (answer) {
    case Answer::Cancel:
      return QMessageBox::Cancel;
    case Answer::Yes:
      return QMessageBox::Yes;
    case Answer::No:
      return QMessageBox::No;
    default:
      return QMessageBox::Ok;
  }
}

}  // namespace

Answer defaultAnswer(int flags) {
  const int which = flags & kDefault;
  switch (flags & kButtons) {
    case kOkCancel:
      return which == kSecond ? Answer::Cancel : Answer::Ok;
    case kYesNoCancel:
      return which == kThird ? Answer::Cancel : which == kSecond ? Answer::No : Answer::Yes;
    case kYesNo:
      return which == kSecond ? Answer::No : Answer::Yes;
    default:
      return Answer::Ok;
  }
}

Answer showMessageBox(QWidget* parent, std::u16string_view text, int flags, std::u16string_view title) {
  MessageBox box(parent);
  box.setObjectName(QStringLiteral("MsgBox"));
  box.setProperty("flags", flags);
  box.setWindowTitle(title.empty() ? QStringLiteral("Dravenna") : toQt(title));
  box.setTextFormat(Qt::PlainText);
  box.setText(toQt(text));
  box.setIcon(iconOf(flags));
  box.setStandardButtons(buttonsOf(flags));
  box.setDefaultButton(buttonOf(defaultAnswer(flags)));
  box.mustBeAnswered = (flags & kButtons) == kYesNo;
  switch (box.exec()) {
    case QMessageBox::Yes:
      return Answer::Yes;
    case QMessageBox::No:
      return Answer::No;
    case QMessageBox::Ok:
      return Answer::Ok;
    default:
      return (flags & kButtons) == 0 ? Answer::Ok : Answer::Cancel;
  }
}

}  // namespace dravenna
