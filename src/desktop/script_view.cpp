#include "desktop/script_view.h"

#include <QtGui/QFontDatabase>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>
#include <algorithm>
#include <cmath>

#include "desktop/display_text.h"
#include "desktop/script_view_accessible.h"
#include "desktop/twips.h"

namespace dravenna {

namespace {

constexpr int kTabColumns = 4;
constexpr int kContextRows = 3;  // kept visible around a selection that has been brought into view
constexpr std::size_t kMostLayouts = 256;

}  // namespace

ScriptView::ScriptView(RichTextBox& model, QWidget* parent) : QAbstractScrollArea(parent), model_(model) {
  enableScriptViewAccessibility();
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::ClickFocus);
  viewport()->setCursor(Qt::IBeamCursor);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));

  // The colours are made for a white ground, whatever the theme; the selection looks the same without the focus.
  QPalette colors = palette();
  const QColor highlight = colors.color(QPalette::Active, QPalette::Highlight);
  const QColor highlighted = colors.color(QPalette::Active, QPalette::HighlightedText);
  for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    colors.setColor(group, QPalette::Base, Qt::white);
    colors.setColor(group, QPalette::Text, Qt::black);
    colors.setColor(group, QPalette::Highlight, highlight);
    colors.setColor(group, QPalette::HighlightedText, highlighted);
  }
  setPalette(colors);

  measureFont();
  model_.setListener(this);
  index_.noteChange(0, 0, model_.Text().size());
  takeTextChanges();
}

ScriptView::~ScriptView() { model_.setListener(nullptr); }

void ScriptView::textChanged(std::size_t position, std::size_t removed, std::size_t inserted) {
  index_.noteChange(position, removed, inserted);
}

void ScriptView::measureFont() {
  QFont bold = font();
  bold.setBold(true);
  const QFontMetricsF plain(font());
  const QFontMetricsF strong(bold);
  ascent_ = std::ceil(std::max(plain.ascent(), strong.ascent()));
  rowHeight_ = std::max(1, static_cast<int>(ascent_ + std::ceil(std::max(plain.descent(), strong.descent()))) + 1);
  charWidth_ = std::max(1.0, plain.horizontalAdvance(QLatin1Char('0')));
  verticalScrollBar()->setSingleStep(1);
}

void ScriptView::synchronise() {
  const auto start = static_cast<std::size_t>(model_.SelStart());
  const auto length = static_cast<std::size_t>(model_.SelLength());
  const bool textMoved = index_.outdated();
  takeTextChanges();
  const bool selectionMoved = start != shownStart_ || length != shownLength_;
  if (selectionMoved || textMoved) {
    shownStart_ = start;
    shownLength_ = length;
    caretAtStart_ = false;
    follow(start, start + length);
    wishedX_ = -1;
    restartBlink();
  }
  contentShown_ = model_.Visible;
  updateScrollBar();
  viewport()->update();
  if (selectionMoved) tellSelection();
}

void ScriptView::takeTextChanges() {
  if (!index_.outdated()) return;
  const std::size_t topOffset = index_.begin(top_.block);
  const BlockIndex::Change change = index_.update(model_.Text());
  layouts_.clear();
  const std::size_t block = index_.blockAt(change.moved(topOffset));
  if (block != top_.block) top_ = {block, 0};
  tellTextChange(*this, change);
}

void ScriptView::dropLayouts() {
  layouts_.clear();
  index_.forgetRows();
}

const QTextCharFormat& ScriptView::formatOf(std::uint8_t style) {
  if (formats_.size() <= style) formats_.resize(std::size_t{style} + 1);
  auto& [known, format] = formats_[style];
  const CharStyle& wanted = model_.style(style);
  if (format.isEmpty() || !(known == wanted)) {
    known = wanted;
    format = QTextCharFormat();
    format.setForeground(toQt(wanted.color));
    if (wanted.bold) format.setFontWeight(QFont::Bold);
    if (wanted.italic) format.setFontItalic(true);
    if (wanted.strikeThru) format.setFontStrikeOut(true);
  }
  return format;
}

QList<QTextLayout::FormatRange> ScriptView::formatsOf(std::size_t begin, std::size_t end) {
  QList<QTextLayout::FormatRange> formats;
  for (std::size_t at = begin; at < end;) {
    const std::uint8_t style = model_.styleAt(at);
    std::size_t next = at + 1;
    while (next < end && model_.styleAt(next) == style) ++next;
    formats.append({static_cast<int>(at - begin), static_cast<int>(next - at), formatOf(style)});
    at = next;
  }
  return formats;
}

QTextLayout& ScriptView::layoutOf(std::size_t block) {
  std::unique_ptr<QTextLayout>& layout = layouts_[block];
  if (layout) return *layout;
  const std::size_t begin = index_.begin(block);
  const std::size_t end = index_.end(block, model_.Text());
  layout =
      std::make_unique<QTextLayout>(displayText(std::u16string_view(model_.Text()).substr(begin, end - begin)), font());
  QTextOption option;
  option.setTextDirection(Qt::LeftToRight);
  option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
  option.setTabStopDistance(kTabColumns * charWidth_);
  layout->setTextOption(option);
  layout->setCacheEnabled(true);
  layout->setFormats(formatsOf(begin, end));  // before the lines: bold is wider
  const qreal width = std::max(charWidth_ * 4, static_cast<qreal>(viewport()->width() - 2 * kMargin));
  int rows = 0;
  layout->beginLayout();
  for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
    line.setLineWidth(width);
    line.setPosition(QPointF(0, rows++ * rowHeight_ + ascent_ - line.ascent()));
  }
  layout->endLayout();
  index_.setRows(block, std::max(1, rows));
  return *layout;
}

int ScriptView::pageRows() const { return std::max(1, viewport()->height() / rowHeight_); }

ScriptView::Place ScriptView::placeOf(std::size_t offset) {
  const std::size_t block = index_.blockAt(offset);
  const QTextLayout& layout = layoutOf(block);
  const auto length = static_cast<std::size_t>(layout.text().size());
  const auto within = static_cast<int>(std::min(offset - index_.begin(block), length));
  return {block, std::max(0, layout.lineForTextPosition(within).lineNumber())};
}

ScriptView::Place ScriptView::moved(Place place, int rows) {
  while (rows > 0) {
    layoutOf(place.block);
    const int left = index_.rows(place.block) - 1 - place.row;
    if (rows <= left) return {place.block, place.row + rows};
    if (place.block + 1 == index_.count()) return {place.block, place.row + left};
    rows -= left + 1;
    place = {place.block + 1, 0};
  }
  while (rows < 0) {
    if (-rows <= place.row) return {place.block, place.row + rows};
    if (place.block == 0) return {};
    rows += place.row + 1;
    layoutOf(--place.block);
    place.row = index_.rows(place.block) - 1;
  }
  return place;
}

int ScriptView::rowsBetween(Place from, Place to, int most) {
  int rows = -from.row;
  for (; from.block < to.block && rows < most; ++from.block) {
    layoutOf(from.block);
    rows += index_.rows(from.block);
  }
  return from.block < to.block ? most : std::min(most, rows + to.row);
}

ScriptView::Place ScriptView::lastPlace() {
  const std::size_t block = index_.count() - 1;
  layoutOf(block);
  return {block, index_.rows(block) - 1};
}

void ScriptView::setTop(Place top) {
  layoutOf(top.block);
  top.row = std::clamp(top.row, 0, index_.rows(top.block) - 1);
  // No page ends behind the last row. Rows that are not laid out yet can only be more than they count.
  const std::size_t left = index_.totalRows() - index_.rowsBefore(top.block) - static_cast<std::size_t>(top.row);
  if (left < static_cast<std::size_t>(pageRows())) {
    const Place last = moved(lastPlace(), 1 - pageRows());
    if (last.block < top.block || (last.block == top.block && last.row < top.row)) top = last;
  }
  top_ = top;
  if (layouts_.size() > kMostLayouts) {
    const auto page = static_cast<std::size_t>(pageRows());
    layouts_.erase(layouts_.begin(), layouts_.lower_bound(top.block > page ? top.block - page : 0));
    layouts_.erase(layouts_.upper_bound(top.block + 2 * page), layouts_.end());
  }
}

void ScriptView::bringIntoView(std::size_t begin, std::size_t end) {
  const Place first = placeOf(begin);
  const Place last = end > begin ? placeOf(end) : first;
  const int page = pageRows();
  const int context = std::clamp((page - 1) / 2, 0, kContextRows);
  const bool above = first.block < top_.block || (first.block == top_.block && first.row < top_.row);
  if (above) {
    setTop(moved(first, -context));
    return;
  }
  const int row = rowsBetween(top_, last, page);
  if (row < page) {
    setTop(top_);
    return;
  }
  // Below the page: the end comes to the bottom, but never so far that the beginning leaves.
  const int height = rowsBetween(first, last, page);
  if (height + context >= page) {
    setTop(first);
  } else {
    setTop(moved(last, context + 1 - page));
  }
}

void ScriptView::follow(std::size_t begin, std::size_t end) {
  following_ = true;
  followBegin_ = begin;
  followEnd_ = end;
  bringIntoView(begin, end);
}

void ScriptView::updateScrollBar() {
  // Lay out the page, so that its rows are counted.
  const Place bottom = moved(top_, pageRows());
  layoutOf(bottom.block);
  settingBar_ = true;
  const std::size_t total = index_.totalRows();
  const auto page = static_cast<std::size_t>(pageRows());
  verticalScrollBar()->setPageStep(static_cast<int>(page));
  verticalScrollBar()->setRange(0, static_cast<int>(total > page ? total - page : 0));
  verticalScrollBar()->setValue(static_cast<int>(index_.rowsBefore(top_.block)) + top_.row);
  settingBar_ = false;
}

void ScriptView::scrollContentsBy(int, int) {
  if (settingBar_) return;
  following_ = false;
  const QScrollBar& bar = *verticalScrollBar();
  if (bar.value() >= bar.maximum()) {
    setTop(moved(lastPlace(), 1 - pageRows()));
  } else {
    const auto row = static_cast<std::size_t>(std::max(0, bar.value()));
    const std::size_t block = index_.blockAtRow(row);
    setTop({block, static_cast<int>(row - index_.rowsBefore(block))});
  }
  updateScrollBar();
  viewport()->update();
}

void ScriptView::scrollTo(std::size_t offset) {
  bringIntoView(offset, offset);
  updateScrollBar();
  viewport()->update();
}

void ScriptView::resizeEvent(QResizeEvent* event) {
  QAbstractScrollArea::resizeEvent(event);
  takeTextChanges();
  if (viewport()->width() != laidOutWidth_) {
    // The text at the top stays there.
    const auto top = layouts_.find(top_.block);
    std::size_t offset = index_.begin(top_.block);
    if (top != layouts_.end() && top_.row < top->second->lineCount()) {
      offset += static_cast<std::size_t>(top->second->lineAt(top_.row).textStart());
    }
    laidOutWidth_ = viewport()->width();
    dropLayouts();
    top_ = placeOf(offset);
  }
  setTop(top_);
  if (following_) bringIntoView(followBegin_, followEnd_);
  updateScrollBar();
}

void ScriptView::changeEvent(QEvent* event) {
  QAbstractScrollArea::changeEvent(event);
  if (event->type() != QEvent::FontChange || laidOutWidth_ == 0) return;
  measureFont();
  takeTextChanges();
  dropLayouts();
  setTop({top_.block, 0});
  updateScrollBar();
}

void ScriptView::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  const QRect clip = event->rect();
  painter.fillRect(clip, palette().color(QPalette::Base));
  if (!contentShown_) return;
  takeTextChanges();
  int y = -top_.row * rowHeight_;
  for (std::size_t block = top_.block; block < index_.count() && y <= clip.bottom(); ++block) {
    layoutOf(block);
    const int height = index_.rows(block) * rowHeight_;
    if (y + height > clip.top()) paintBlock(painter, block, y, clip);
    y += height;
  }
}

void ScriptView::paintBlock(QPainter& painter, std::size_t block, int y, const QRect& clip) {
  const QTextLayout& layout = layoutOf(block);
  const std::size_t begin = index_.begin(block);
  const std::size_t end = begin + static_cast<std::size_t>(layout.text().size());
  const std::size_t selectionEnd = shownStart_ + shownLength_;
  QList<QTextLayout::FormatRange> selection;
  const std::size_t first = std::max(begin, shownStart_);
  const std::size_t last = std::min(end, selectionEnd);
  if (first < last) {
    QTextCharFormat format;
    format.setBackground(palette().color(QPalette::Highlight));
    format.setForeground(palette().color(QPalette::HighlightedText));
    selection.append({static_cast<int>(first - begin), static_cast<int>(last - first), format});
  }
  const QPointF origin(kMargin, y);
  if (shownStart_ <= end && end < selectionEnd && shownLength_ > 0) {  // a selected line end shows as one character
    const QTextLine line = layout.lineAt(layout.lineCount() - 1);
    const qreal x = kMargin + line.cursorToX(static_cast<int>(end - begin));
    const qreal top = y + static_cast<qreal>(line.lineNumber() * rowHeight_);
    painter.fillRect(QRectF(x, top, charWidth_, rowHeight_), palette().color(QPalette::Highlight));
  }
  layout.draw(&painter, origin, selection, clip);
  if (!caretOn_ || index_.blockAt(caret()) != block) return;
  const auto at = static_cast<int>(std::min(caret(), end) - begin);
  const QTextLine line = layout.lineForTextPosition(at);
  if (!line.isValid()) return;
  const int x = kMargin + static_cast<int>(line.cursorToX(at));
  painter.fillRect(QRect(x, y + line.lineNumber() * rowHeight_, 1, rowHeight_), palette().color(QPalette::Text));
}

void ScriptView::restartBlink() {
  caretOn_ = hasFocus();
  const int time = QApplication::cursorFlashTime();
  if (caretOn_ && time > 1) {
    blinkTimer_.start(time / 2, this);
  } else {
    blinkTimer_.stop();
  }
}

void ScriptView::tellSelection() { tellSelectionChange(*this); }

std::pair<std::size_t, std::size_t> ScriptView::lineAround(std::size_t offset) const {
  const std::u16string_view text = model_.Text();
  std::size_t first = index_.blockAt(offset);
  std::size_t last = first;
  while (!index_.beginsLine(first, text)) --first;
  while (last + 1 < index_.count() && !index_.beginsLine(last + 1, text)) ++last;
  return {index_.begin(first), index_.end(last, text)};
}

}  // namespace dravenna
