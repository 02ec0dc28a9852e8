#include "desktop/search_box.h"

#include <QtCore/QTimer>
#include <QtGui/QCloseEvent>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QPushButton>
#include <utility>

#include "app/frm_search.h"
#include "desktop/edit_box.h"
#include "desktop/key_codes.h"
#include "desktop/qt_text.h"
#include "desktop/told_font.h"
#include "desktop/twips.h"

namespace dravenna {

namespace {

constexpr int kWidth = 3450, kHeight = 585, kControlHeight = 285;

}  // namespace

SearchBox::SearchBox(FrmSearch& box, QWidget* owner, Run run, Placing::Choice choice)
    : QWidget(owner, Qt::Tool | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      box_(&box),
      run_(std::move(run)),
      choice_(std::move(choice)),
      txtSearch_(new EditBox(box.txtSearch, this)),
      CancelButton_(new QPushButton(toQt(box.CancelButton), this)) {
  setObjectName(QStringLiteral("frmSearch"));
  setWindowTitle(toQt(box.Caption));
  setFont(toldFont(false));
  setFixedSize(pixels(kWidth), pixels(kHeight));
  const auto place = [](QWidget* control, int left, int top, int width) {
    control->setGeometry(pixels(left), pixels(top), pixels(width), pixels(kControlHeight));
  };
  txtSearch_->setObjectName(QStringLiteral("txtSearch"));
  txtSearch_->setAccessibleName(windowTitle().trimmed());
  place(txtSearch_, 0, 0, 3435);
  CancelButton_->setObjectName(QStringLiteral("CancelButton"));
  place(CancelButton_, 2310, 300, 1125);
  connect(CancelButton_, &QPushButton::clicked, this,
          [this] { call([](FrmSearch& form) { form.CancelButton_Click(); }); });
  for (const std::size_t i : {std::size_t{0}, std::size_t{1}}) {
    auto* button = new QPushButton(toQt(box.btn_Search.at(i)), this);
    button->setObjectName(QStringLiteral("btn_Search%1").arg(i));
    place(button, i == 0 ? 1170 : 30, 300, 1125);
    connect(button, &QPushButton::clicked, this,
            [this, i] { call([i](FrmSearch& form) { form.btn_Search_Click(static_cast<std::int16_t>(i)); }); });
    btn_Search_.at(i) = button;
  }
  setTabOrder(txtSearch_, CancelButton_);
  setTabOrder(CancelButton_, btn_Search_[0]);
  setTabOrder(btn_Search_[0], btn_Search_[1]);
  for (QWidget* control : findChildren<QWidget*>()) control->installEventFilter(this);
  // A click on a button leaves the focus in the text, so that the next word can be typed.
  for (QPushButton* button : findChildren<QPushButton*>()) button->setFocusPolicy(Qt::TabFocus);
  txtSearch_->setFocus();
  new Placing(*this, choice_);
}

void SearchBox::synchronise() {
  if (box_ != nullptr) txtSearch_->synchronise();
}

void SearchBox::spare(const QRect& text) {
  if (isVisible() && withFrame(*this).intersects(text)) placeWithFrame(*this, choice_);
}

void SearchBox::describe(const QString& found) {
  if (txtSearch_->accessibleDescription() != found) txtSearch_->setAccessibleDescription(found);
}

void SearchBox::unload() {
  box_ = nullptr;
  hide();
  deleteLater();
}

void SearchBox::call(const std::function<void(FrmSearch&)>& handler) {
  if (box_ == nullptr) return;
  txtSearch_->takeOver();
  run_([this, &handler] { handler(*box_); });
}

bool SearchBox::event(QEvent* event) {
  if (event->type() == QEvent::WindowDeactivate && box_ != nullptr) {
    // Queued: what has taken the focus comes to its end first.
    QTimer::singleShot(0, this, [this] {
      if (box_ != nullptr && !isActiveWindow()) call([](FrmSearch& form) { form.Form_LostFocus(); });
    });
  }
  return QWidget::event(event);
}

bool SearchBox::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride) {
    // The box is a form of its own: the main window's shortcuts do not reach into it.
    event->accept();
    return true;
  }
  if (event->type() != QEvent::KeyPress || box_ == nullptr) return QWidget::eventFilter(object, event);
  const auto& key = *static_cast<QKeyEvent*>(event);
  if (isAltKey(key)) {
    const QKeySequence pressed(Qt::ALT | static_cast<Qt::Key>(key.key()));
    for (QPushButton* button : findChildren<QPushButton*>()) {
      if (QKeySequence::mnemonic(button->text()) == pressed) button->click();
    }
    event->ignore();
    return true;
  }
  std::int16_t KeyAscii = keyEventOf(key).KeyAscii;
  if (KeyAscii == 0) return false;
  call([&KeyAscii](FrmSearch& form) { form.Form_KeyPress(KeyAscii); });
  if (KeyAscii != 0) return false;
  event->accept();
  return true;
}

void SearchBox::closeEvent(QCloseEvent* event) {
  event->ignore();
  call([](FrmSearch& form) { form.CancelButton_Click(); });
}

}  // namespace dravenna
