#include "desktop/status_place.h"

#include <QtCore/QEvent>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QToolButton>
#include <algorithm>

#include "desktop/display_text.h"
#include "desktop/qt_text.h"

namespace dravenna {

namespace {

constexpr int kGap = 10;          // pixels behind each part, and at the least in front of the first one
constexpr int kLeastNotice = 60;  // pixels of a notice that are worth showing

}  // namespace

StatusPlace::StatusPlace(QMenuBar& bar, QWidget* window, const QString& pageHint)
    : QWidget(window), bar_(bar), pageHint_(pageHint) {
  setObjectName(QStringLiteral("Status"));
  const auto part = [this](const char* name) {
    auto* label = new QLabel(this);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    return label;
  };
  rescued_ = new QPushButton(this);
  rescued_->setObjectName(QStringLiteral("Status.Rescued"));
  rescued_->setFlat(true);
  connect(rescued_, &QPushButton::clicked, this, [this] { onRescued(); });
  page_ = new QToolButton(this);
  page_->setObjectName(QStringLiteral("Status.Page"));
  page_->setAutoRaise(true);
  page_->setFont(bar_.font());
  page_->setFocusPolicy(Qt::NoFocus);  // the box keeps it, and Tab goes its old ways
  connect(page_, &QToolButton::clicked, this, [this] { onPage(); });
  notice_ = part("Status.Notice");
  text_ = part("Status.Text");
  line_ = part("Status.Line");
  errors_ = part("Status.Errors");
  errors_->setToolTip(QStringLiteral("F9"));
  modified_ = part("Status.Modified");
  bar_.installEventFilter(this);
  arrange();
  show();
}

void StatusPlace::setParts(const Status::Parts& parts) {
  if (parts == parts_) return;
  parts_ = parts;
  rescued_->setText(displayText(parts.rescued));
  text_->setText(displayText(parts.text));
  line_->setText(displayText(parts.line));
  errors_->setText(displayText(parts.errors));
  page_->setAccessibleName(pageText());
  page_->setAccessibleDescription(pageHint_);
  page_->setToolTip(parts.pageDoubt.empty() ? pageHint_ : pageText() + QStringLiteral("\n") + pageHint_);
  modified_->setText(parts.modified.empty() ? QString() : QStringLiteral("\u25CF"));
  modified_->setAccessibleName(displayText(parts.modified));
  modified_->setToolTip(displayText(parts.modified));
  notice_->setAccessibleName(displayText(parts.notice));
  notice_->setToolTip(displayText(parts.notice));
  arrange();
}

QString StatusPlace::pageText() const {
  const QString page = displayText(parts_.page);
  return parts_.pageDoubt.empty() ? page : page + QStringLiteral(": ") + displayText(parts_.pageDoubt);
}

void StatusPlace::showPages(int current, const std::vector<int>& numbers, const std::function<void(int)>& choose) {
  auto* menu = new QMenu(this);
  menu->setObjectName(QStringLiteral("Status.Pages"));
  menu->setAttribute(Qt::WA_DeleteOnClose);
  menu->setFont(bar_.font());
  for (const int number : numbers) {
    QAction* action = menu->addAction(toQt(Status::pageName(number)), this, [choose, number] { choose(number); });
    action->setCheckable(true);
    action->setChecked(number == current);
    if (number == current) menu->setActiveAction(action);
  }
  menu->popup(page_->mapToGlobal(QPoint(0, page_->height())));
}

void StatusPlace::arrange() {
  for (QWidget* part : std::initializer_list<QWidget*>{rescued_, notice_, errors_, text_, line_, page_, modified_}) {
    if (part->font() != bar_.font()) part->setFont(bar_.font());
  }
  int left = 0;
  for (const QAction* menu : bar_.actions()) {
    const QRect place = bar_.actionGeometry(const_cast<QAction*>(menu));
    left = place.isEmpty() ? bar_.width() : std::max(left, place.right() + 1);  // a menu without room: none for us
  }
  left = std::min(left + kGap, bar_.width());
  setGeometry(bar_.x() + left, bar_.y(), bar_.width() - left, bar_.height());
  raise();

  int room = width();
  const QString notice = displayText(parts_.notice);
  notice_->setText(notice);
  const auto give = [&room](auto* label) {
    const int wanted = label->sizeHint().width() + kGap;
    label->setVisible(!label->text().isEmpty() && wanted <= room);
    if (label->isVisibleTo(label->parentWidget())) room -= wanted;
  };
  give(rescued_);
  give(modified_);
  give(text_);
  // A doubt is cut where there is no room for it; the name of the page is not.
  page_->setText(pageText());
  const int frame = page_->sizeHint().width() - page_->fontMetrics().size(Qt::TextShowMnemonic, page_->text()).width();
  const int least = page_->fontMetrics().horizontalAdvance(displayText(parts_.page) + QStringLiteral("\u2026"));
  const bool alone = parts_.notice.empty() && parts_.errors.empty();
  const int wanted = std::max(least, alone ? room - kGap - frame : room / 2);
  page_->setText(page_->fontMetrics().elidedText(pageText(), Qt::ElideRight, wanted));
  give(page_);
  if (room - kGap >= kLeastNotice) {
    notice_->setText(notice_->fontMetrics().elidedText(notice, Qt::ElideRight, room - kGap));
  }
  give(notice_);
  give(line_);
  give(errors_);
  int x = room;
  for (QWidget* label : std::initializer_list<QWidget*>{rescued_, notice_, errors_, text_, line_, page_, modified_}) {
    if (!label->isVisibleTo(this)) continue;
    label->setGeometry(x, 0, label->sizeHint().width(), height());
    x += label->width() + kGap;
  }
}

bool StatusPlace::eventFilter(QObject*, QEvent* event) {
  // Queued: the bar arranges its menus first.
  if (event->type() == QEvent::Resize || event->type() == QEvent::LayoutRequest) {
    QMetaObject::invokeMethod(
        this, [this] { arrange(); }, Qt::QueuedConnection);
  }
  return false;
}

}  // namespace dravenna
