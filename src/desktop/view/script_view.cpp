#include "desktop/view/script_view.h"

#include <QtGui/QFontDatabase>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QScrollBar>
#include <algorithm>
#include <cmath>

#include "desktop/display_text.h"
#include "desktop/selection_colors.h"
#include "desktop/twips.h"
#include "desktop/view/script_view_accessible.h"

namespace dravenna {

namespace {

constexpr int kTabColumns = 4;
constexpr std::size_t kMostLayouts = 256;
constexpr int kSmallestFont = 5, kLargestFont = 48;  // points, by zooming

// The platform's. Weight and slant are set, so that they are not taken from the desktop's other font.
QFont fixedFont() {
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setWeight(font.weight());
  font.setItalic(font.italic());
  return font;
}

}  // namespace

ScriptView::ScriptView(RichTextBox& model, QWidget* parent) : QAbstractScrollArea(parent), model_(model) {
  enableScriptViewAccessibility();
  setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setFrameShape(QFrame::NoFrame);
  setFocusPolicy(Qt::ClickFocus);
  viewport()->setCursor(Qt::IBeamCursor);
  viewport()->setAttribute(Qt::WA_OpaquePaintEvent);
  setFont(fixedFont());

  // The colours are made for a white ground, whatever the theme; the selection looks the same without the focus.
  QPalette colors = palette();
  for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
    colors.setColor(group, QPalette::Base, Qt::white);
    colors.setColor(group, QPalette::Text, Qt::black);
    colors.setColor(group, QPalette::Highlight, kSelectionGround);
    colors.setColor(group, QPalette::HighlightedText, kSelectionText);
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
    follow(start, start + length, releasing_ ? 0 : kContextRows);  // what was clicked stays under the mouse
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
  if (markedLine_) {
    const bool gone = *markedLine_ >= change.position && *markedLine_ < change.position + change.removed;
    markedLine_ = gone ? std::nullopt : std::optional(change.moved(*markedLine_));
  }
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
  const qreal indent = std::min(indentOf(begin), std::floor(width / 2));
  const bool beginsLine = index_.beginsLine(block, model_.Text());
  int rows = 0;
  layout->beginLayout();
  for (QTextLine line = layout->createLine(); line.isValid(); line = layout->createLine()) {
    const qreal left = rows == 0 && beginsLine ? 0 : indent;
    line.setLineWidth(width - left);
    line.setPosition(QPointF(left, rows++ * rowHeight_ + ascent_ - line.ascent()));
  }
  layout->endLayout();
  index_.setRows(block, std::max(1, rows));
  return *layout;
}

qreal ScriptView::indentOf(std::size_t offset) const {
  const std::u16string_view text = model_.Text();
  int columns = 0;
  for (std::size_t at = lineAround(offset).first; at < text.size(); ++at) {
    if (text[at] == u'\t') {
      columns += kTabColumns - columns % kTabColumns;
    } else if (text[at] == u' ') {
      ++columns;
    } else {
      break;
    }
  }
  return columns * charWidth_;
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

void ScriptView::bringIntoView(std::size_t begin, std::size_t end, int margin) {
  const Place first = placeOf(begin);
  const Place last = end > begin ? placeOf(end) : first;
  const int page = pageRows();
  const int height = rowsBetween(first, last, page) + 1;
  if (height > page) return setTop(first);
  margin = std::min(margin, (page - height) / 2);
  const Place highest = moved(first, -margin);  // the page may begin no deeper
  if (highest.block < top_.block || (highest.block == top_.block && highest.row < top_.row)) {
    setTop(moved(first, -std::min(kContextRows, (page - height) / 2)));
  } else if (rowsBetween(top_, last, page) + margin >= page) {
    setTop(moved(last, std::min(kContextRows, (page - height) / 2) + 1 - page));
  } else {
    setTop(top_);
  }
}

void ScriptView::follow(std::size_t begin, std::size_t end, int margin) {
  following_ = true;
  followBegin_ = begin;
  followEnd_ = end;
  bringIntoView(begin, end, margin);
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
  bringIntoView(offset, offset, 0);
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
  if (following_) bringIntoView(followBegin_, followEnd_, kContextRows);
  updateScrollBar();
}

void ScriptView::changeEvent(QEvent* event) {
  QAbstractScrollArea::changeEvent(event);
  if (event->type() != QEvent::FontChange) return;
  measureFont();
  if (laidOutWidth_ == 0) return;
  takeTextChanges();
  dropLayouts();
  setTop({top_.block, 0});
  if (following_) bringIntoView(followBegin_, followEnd_, kContextRows);
  updateScrollBar();
}

void ScriptView::zoom(int steps) {
  QFont font = fixedFont();
  const qreal size = font.pointSizeF() + zoom_ + steps;
  if (steps != 0 && (size < kSmallestFont || size > kLargestFont)) return;
  zoom_ = steps == 0 ? 0 : zoom_ + steps;
  if (zoom_ != 0) font.setPointSizeF(size);
  setFont(font);
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
