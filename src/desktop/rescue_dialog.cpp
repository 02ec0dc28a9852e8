#include "desktop/rescue_dialog.h"

#include <QtCore/QDateTime>
#include <QtCore/QLocale>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QListWidget>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QVBoxLayout>

#include "desktop/display_text.h"
#include "desktop/qt_text.h"
#include "platform/system.h"
#include "settings/catalogue.h"
#include "text/high_bytes.h"
#include "text/text.h"

namespace dravenna {

namespace {

constexpr qsizetype kMostInPreview = 1 << 20;  // characters

QString lineOf(const Rescue::Find& find, Registry& registry) {
  const bool journal = find.texts > 0;
  std::u16string line = read(registry, journal ? desktop_words::RescuedTexts : desktop_words::RescuedFile);
  line = replaceAll(line, u"%2", decimal(static_cast<std::int64_t>(find.texts)));
  const QDateTime time = QDateTime::currentDateTime().addSecs(-find.age);
  return QLocale().toString(time, QLocale::ShortFormat) + QStringLiteral("  ") +
         displayText(replaceAll(line, u"%1", find.path));
}

std::u16string contentOf(const Rescue::Find& find, const Rescue& rescue) {
  if (find.texts > 0) return rescue.texts(find);
  const std::string bytes = rescue.contents(find);
  return (looksUtf8(bytes) ? CodePage::utf8() : systemCodePage())->decode(bytes);
}

}  // namespace

RescueDialog::RescueDialog(Rescue& rescue, Registry& registry, QWidget* parent)
    : QDialog(parent),
      rescue_(rescue),
      finds_(rescue.finds()),
      list_(new QListWidget(this)),
      content_(new QPlainTextEdit(this)) {
  setObjectName(QStringLiteral("Rescue"));
  const auto count = static_cast<std::int64_t>(finds_.size());
  setWindowTitle(toQt(readFilled(registry, desktop_words::Rescued, decimal(count))));
  list_->setAccessibleName(windowTitle());
  content_->setAccessibleName(windowTitle());
  content_->setReadOnly(true);
  auto* buttons = new QDialogButtonBox(this);
  restore_ = buttons->addButton(toQt(read(registry, desktop_words::Restore)), QDialogButtonBox::AcceptRole);
  throwAway_ = buttons->addButton(toQt(read(registry, desktop_words::ThrowAway)), QDialogButtonBox::ActionRole);
  buttons->addButton(toQt(read(registry, words::btnClose)), QDialogButtonBox::RejectRole);
  auto* column = new QVBoxLayout(this);
  column->addWidget(list_, 1);
  column->addWidget(content_, 2);
  column->addWidget(buttons);
  resize(640, 400);
  for (const Rescue::Find& find : finds_) list_->addItem(lineOf(find, registry));
  connect(list_, &QListWidget::currentRowChanged, this, [this] { showChosen(); });
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(throwAway_, &QPushButton::clicked, this, [this] { throwAway(); });
  list_->setCurrentRow(0);
  showChosen();
}

const Rescue::Find& RescueDialog::chosen() const { return finds_.at(static_cast<std::size_t>(list_->currentRow())); }

void RescueDialog::showChosen() {
  const bool any = list_->currentRow() >= 0;
  restore_->setEnabled(any);
  throwAway_->setEnabled(any);
  content_->clear();
  if (!any) return;
  const std::optional<Failure> failure =
      attempt([this] { content_->setPlainText(toQt(contentOf(chosen(), rescue_)).left(kMostInPreview)); });
  if (failure) content_->setPlainText(toQt(failure->description()));
}

void RescueDialog::throwAway() {
  rescue_.throwAway(chosen());
  const int row = list_->currentRow();
  const QSignalBlocker quiet(list_);
  finds_.erase(finds_.begin() + row);
  delete list_->takeItem(row);
  showChosen();
}

}  // namespace dravenna
