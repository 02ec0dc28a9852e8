#include "desktop/changes_dialog.h"

#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QPlainTextEdit>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTreeWidget>
#include <QtWidgets/QVBoxLayout>
#include <algorithm>

#include "desktop/display_text.h"
#include "desktop/qt_text.h"
#include "settings/catalogue.h"

namespace dravenna {

namespace {

constexpr qsizetype kMostInRow = 1 << 10;  // characters of a text in the list

}  // namespace

ChangesDialog::ChangesDialog(Principal& principal, QWidget* parent)
    : QDialog(parent), principal_(principal), list_(new QTreeWidget(this)), content_(new QPlainTextEdit(this)) {
  setObjectName(QStringLiteral("Changes"));
  const auto word = [&](const Setting& setting) { return toQt(read(principal.registry(), setting)); };
  setWindowTitle(word(desktop_words::Changes));
  list_->setRootIsDecorated(false);
  list_->setUniformRowHeights(true);
  list_->setAllColumnsShowFocus(true);
  const QString line = word(desktop_words::StatusLine);
  list_->setHeaderLabels({QString(line).remove(QStringLiteral("%1")).trimmed(), word(desktop_words::OldText),
                          word(desktop_words::NewText)});
  list_->setAccessibleName(windowTitle());
  content_->setAccessibleName(windowTitle());
  content_->setReadOnly(true);
  content_->setTabChangesFocus(true);
  auto* buttons = new QDialogButtonBox(this);
  buttons->addButton(word(desktop_words::IntoTheBox), QDialogButtonBox::AcceptRole)
      ->setEnabled(!principal.changes().empty());
  buttons->addButton(word(words::btnClose), QDialogButtonBox::RejectRole);
  auto* column = new QVBoxLayout(this);
  column->addWidget(list_, 3);
  column->addWidget(content_, 1);
  column->addWidget(buttons);
  resize(640, 400);
  connect(list_, &QTreeWidget::currentItemChanged, this, [this] { showChosen(); });
  connect(list_, &QTreeWidget::itemActivated, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  const std::u16string& text = principal.N.Text();
  const auto cut = [](const std::u16string& whole) { return displayText(whole).left(kMostInRow); };
  for (const TextChange& change : principal.changes()) {
    const auto until = text.begin() + quotePosition(text, change.quote);
    auto* row = new QTreeWidgetItem(list_);
    row->setData(0, Qt::DisplayRole, static_cast<qlonglong>(std::count(text.begin(), until, u'\n') + 1));
    row->setText(1, cut(change.commit.before));
    row->setText(2, cut(change.commit.after));
  }
  list_->resizeColumnToContents(0);
  list_->setColumnWidth(1, (width() - list_->columnWidth(0)) / 2);
  if (list_->topLevelItemCount() > 0) list_->setCurrentItem(list_->topLevelItem(list_->topLevelItemCount() - 1));
  list_->setFocus();
}

std::size_t ChangesDialog::chosen() const {
  return static_cast<std::size_t>(list_->indexOfTopLevelItem(list_->currentItem()));
}

void ChangesDialog::showChosen() {
  const JournalledCommit& commit = principal_.changes().at(chosen()).commit;
  content_->setPlainText(displayText(commit.before) + QStringLiteral("\n\u2192 ") + displayText(commit.after));
}

}  // namespace dravenna
