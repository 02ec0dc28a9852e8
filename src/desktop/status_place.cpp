#include "desktop/status_place.h"

#include <QtCore/QEvent>
#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QLabel>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QToolButton>
#include <algorithm>

#include "desktop/display_text.h"

namespace dravenna {

namespace {

constexpr int kGap = 10;       // pixels behind each part, and at the least in front of the first one
constexpr int kLeastCut = 60;  // pixels of a part that are worth showing

QAccessibleInterface* makeStatusBar(const QString&, QObject* object) {
  auto* place = dynamic_cast<StatusPlace*>(object);
  return place != nullptr ? new QAccessibleWidget(place, QAccessible::StatusBar) : nullptr;
}

// Each naming is an event for screen readers, also where the name is the old one.
void name(QWidget& part, const QString& name) {
  if (part.accessibleName() != name) part.setAccessibleName(name);
}

}  // namespace

StatusPlace::StatusPlace(QMenuBar& bar, QWidget* window, const QString& pageHint)
    : QWidget(window), bar_(bar), pageHint_(pageHint) {
  QAccessible::installFactory(makeStatusBar);
  setObjectName(QStringLiteral("Status"));
  const auto part = [this](const char* name) {
    auto* label = new QLabel(this);
    label->setObjectName(QLatin1String(name));
    label->setTextFormat(Qt::PlainText);
    return label;
  };
  const auto button = [this](const char* name) {
    auto* made = new QToolButton(this);
    made->setObjectName(QLatin1String(name));
    made->setAutoRaise(true);
    return made;
  };
  rescued_ = button("Status.Rescued");
  rescued_->setFocusPolicy(Qt::StrongFocus);
  connect(rescued_, &QToolButton::clicked, this, [this] { onRescued(); });
  page_ = button("Status.Page");
  page_->setAccessibleDescription(pageHint_);
  page_->setFont(bar_.font());
  page_->setFocusPolicy(Qt::NoFocus);  // the box keeps it, and Tab goes its old ways
  connect(page_, &QToolButton::clicked, this, [this] { onPage(page_->mapToGlobal(QPoint(0, page_->height()))); });
  notice_ = part("Status.Notice");
  text_ = part("Status.Text");
  line_ = part("Status.Line");
  errors_ = part("Status.Errors");
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
  name(*errors_, displayText(parts.errors));
  errors_->setToolTip(displayText(parts.errors) + QStringLiteral("\nF9"));
  name(*page_, pageText());
  page_->setToolTip(parts.pageDoubt.empty() ? pageHint_ : pageText() + QStringLiteral("\n") + pageHint_);
  modified_->setText(parts.modified.empty() ? QString() : QStringLiteral("\u25CF"));
  name(*modified_, displayText(parts.modified));
  modified_->setToolTip(displayText(parts.modified));
  name(*notice_, displayText(parts.notice));
  notice_->setToolTip(displayText(parts.notice));
  arrange();
}

QString StatusPlace::pageText() const {
  const QString page = displayText(parts_.page);
  return parts_.pageDoubt.empty() ? page : page + QStringLiteral(": ") + displayText(parts_.pageDoubt);
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
  notice_->setText(displayText(parts_.notice));
  errors_->setText(displayText(parts_.errors));
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
  const auto giveCut = [&](QLabel* label) {
    if (room - kGap >= kLeastCut) {
      label->setText(label->fontMetrics().elidedText(label->text(), Qt::ElideRight, room - kGap));
    }
    give(label);
  };
  // Where only one of the two has room, it is the notice: the menu of the script has the pages too.
  const bool noticeFirst = room - page_->sizeHint().width() - kGap < kLeastCut + kGap;
  if (noticeFirst) giveCut(notice_);
  give(page_);
  if (!noticeFirst) giveCut(notice_);
  give(line_);
  giveCut(errors_);
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
