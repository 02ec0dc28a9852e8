#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QKeyEvent>
#include <QtWidgets/QScrollBar>
#include <algorithm>

#include "desktop/qt_text.h"
#include "desktop/view/script_view.h"

// What the user does in the view: caret, selection, copying.
namespace dravenna {

namespace {

constexpr int kDragScrollTime = 40;  // milliseconds between two rows while the mouse is held outside

}  // namespace

std::size_t ScriptView::caret() const { return caretAtStart_ ? shownStart_ : shownStart_ + shownLength_; }

std::size_t ScriptView::anchor() const { return caretAtStart_ ? shownStart_ + shownLength_ : shownStart_; }

void ScriptView::select(std::size_t anchor, std::size_t caret) {
  const std::size_t start = std::min(anchor, caret);
  const std::size_t length = std::max(anchor, caret) - start;
  const bool moved = start != shownStart_ || length != shownLength_;
  model_.setSelStart(static_cast<std::int32_t>(start));
  model_.setSelLength(static_cast<std::int32_t>(length));
  shownStart_ = static_cast<std::size_t>(model_.SelStart());
  shownLength_ = static_cast<std::size_t>(model_.SelLength());
  caretAtStart_ = caret < anchor;
  afterUserMove();
  if (moved) tellSelection();
}

void ScriptView::moveCaret(std::size_t offset, bool extend) { select(extend ? anchor() : offset, offset); }

void ScriptView::afterUserMove() {
  follow(caret(), caret(), 0);
  restartBlink();
  updateScrollBar();
  viewport()->update();
}

void ScriptView::showLine(std::size_t offset) {
  takeTextChanges();
  const auto [begin, end] = lineAround(offset);
  markedLine_ = begin;
  following_ = false;
  bringIntoView(begin, end, kContextRows);
  updateScrollBar();
  viewport()->update();
}

std::size_t ScriptView::placeShown() {
  if (markedLine_ && !rectOf(*markedLine_).isNull()) return *markedLine_ + 1;
  return index_.begin(top_.block) + (top_.row > 0 ? 1 : 0);
}

void ScriptView::scrollPages(int pages) {
  QScrollBar& bar = *verticalScrollBar();
  bar.setValue(bar.value() + pages * std::max(1, pageRows() - 1));  // a row stays, for the eye
}

void ScriptView::copy() const {
  if (model_.SelLength() > 0) QGuiApplication::clipboard()->setText(toQt(model_.SelText()));
}

void ScriptView::copyLine(std::size_t offset) const {
  const auto [begin, end] = lineAround(offset);
  QGuiApplication::clipboard()->setText(toQt(std::u16string_view(model_.Text()).substr(begin, end - begin)));
}

std::size_t ScriptView::offsetIn(Place place, qreal x) {
  const QTextLayout& layout = layoutOf(place.block);
  const QTextLine line = layout.lineAt(std::min(place.row, layout.lineCount() - 1));
  int at = line.xToCursor(x);
  // The place behind a row that goes on below is shown in front of the row below.
  const bool lastRow = line.lineNumber() + 1 == layout.lineCount();
  if (!lastRow && at >= line.textStart() + line.textLength()) at = layout.previousCursorPosition(at);
  return index_.begin(place.block) + static_cast<std::size_t>(at);
}

std::size_t ScriptView::offsetAt(QPoint point) {
  takeTextChanges();
  const int rows = point.y() >= 0 ? point.y() / rowHeight_ : (point.y() + 1) / rowHeight_ - 1;
  return offsetIn(moved(top_, rows), point.x() - kMargin);
}

QRect ScriptView::rectOf(std::size_t offset) {
  takeTextChanges();
  const Place place = placeOf(std::min(offset, model_.Text().size()));
  if (place.block < top_.block || (place.block == top_.block && place.row < top_.row)) return {};
  const int row = rowsBetween(top_, place, pageRows() + 1);
  if (row > pageRows()) return {};
  const QTextLine line = layoutOf(place.block).lineAt(place.row);
  const auto within = static_cast<int>(offset - index_.begin(place.block));
  const qreal left = line.cursorToX(within);
  const qreal right = line.cursorToX(std::min(within + 1, line.textStart() + line.textLength()));
  const int width = static_cast<int>(right > left ? right - left : charWidth_);
  return {kMargin + static_cast<int>(left), row * rowHeight_, width, rowHeight_};
}

QRect ScriptView::rectOfSelection() {
  const std::size_t end = shownStart_ + std::max(shownLength_, std::size_t{1}) - 1;
  const QRect page = viewport()->rect(), first = rectOf(shownStart_), last = rectOf(end);
  if (!first.isNull() && first.top() == last.top()) return first | last;
  const Place start = placeOf(shownStart_), stop = placeOf(end);
  const Place bottom = moved(top_, pageRows());
  const auto above = [](Place a, Place b) { return a.block < b.block || (a.block == b.block && a.row < b.row); };
  if (above(bottom, start) || above(stop, top_)) return {};
  QRect rows = page;
  if (!first.isNull()) rows.setTop(first.top());
  if (!last.isNull()) rows.setBottom(last.bottom());
  return rows;
}

std::size_t ScriptView::characterMove(std::size_t from, bool forward, QTextLayout::CursorMode mode) {
  std::size_t block = index_.blockAt(from);
  const auto length = [&] { return static_cast<std::size_t>(layoutOf(block).text().size()); };
  std::size_t within = std::min(from - index_.begin(block), length());
  if (forward) {
    if (within == length()) return block + 1 < index_.count() ? index_.begin(block + 1) : from;
    return index_.begin(block) +
           static_cast<std::size_t>(layoutOf(block).nextCursorPosition(static_cast<int>(within), mode));
  }
  if (within == 0) {
    if (block == 0) return 0;
    --block;
    within = length();
    if (index_.begin(block) + within < from) return index_.begin(block) + within;  // over the line end
  }
  return index_.begin(block) +
         static_cast<std::size_t>(layoutOf(block).previousCursorPosition(static_cast<int>(within), mode));
}

std::size_t ScriptView::rowMove(int rows) {
  const Place place = placeOf(caret());
  const QTextLine line = layoutOf(place.block).lineAt(place.row);
  if (wishedX_ < 0) wishedX_ = line.cursorToX(static_cast<int>(caret() - index_.begin(place.block)));
  return offsetIn(moved(place, rows), wishedX_);
}

std::size_t ScriptView::rowEnd(std::size_t from, bool atEnd) {
  const Place place = placeOf(from);
  const QTextLayout& layout = layoutOf(place.block);
  const QTextLine line = layout.lineAt(place.row);
  if (!atEnd) return index_.begin(place.block) + static_cast<std::size_t>(line.textStart());
  const int end = line.textStart() + line.textLength();
  const bool lastRow = place.row + 1 == layout.lineCount();
  return index_.begin(place.block) + static_cast<std::size_t>(lastRow ? end : layout.previousCursorPosition(end));
}

bool ScriptView::moveByKey(const QKeyEvent& event) {
  const bool extend = event.modifiers().testFlag(Qt::ShiftModifier);
  const bool control = event.modifiers().testFlag(Qt::ControlModifier);
  const auto mode = control ? QTextLayout::SkipWords : QTextLayout::SkipCharacters;
  const qreal wished = wishedX_;
  wishedX_ = -1;
  const auto vertical = [&](int rows) {
    wishedX_ = wished;
    moveCaret(rowMove(rows), extend);
  };
  switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right: {
      const bool forward = event.key() == Qt::Key_Right;
      const bool collapse = !extend && !control && shownLength_ > 0;
      const std::size_t end = forward ? shownStart_ + shownLength_ : shownStart_;
      moveCaret(collapse ? end : characterMove(caret(), forward, mode), extend);
      return true;
    }
    case Qt::Key_Up:
      vertical(-1);
      return true;
    case Qt::Key_Down:
      vertical(1);
      return true;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown: {
      const int rows = event.key() == Qt::Key_PageUp ? 1 - pageRows() : pageRows() - 1;
      top_ = moved(top_, rows);
      setTop(top_);
      vertical(rows);
      return true;
    }
    case Qt::Key_Home:
      moveCaret(control ? 0 : rowEnd(caret(), false), extend);
      return true;
    case Qt::Key_End:
      moveCaret(control ? model_.Text().size() : rowEnd(caret(), true), extend);
      return true;
    default:
      wishedX_ = wished;
      return false;
  }
}

void ScriptView::keyPressEvent(QKeyEvent* event) {
  takeTextChanges();
  if (event->matches(QKeySequence::Copy)) {
    copy();
  } else if (event->matches(QKeySequence::SelectAll)) {
    wishedX_ = -1;
    const int row = verticalScrollBar()->value();
    select(0, model_.Text().size());
    verticalScrollBar()->setValue(row);
  } else if (!moveByKey(*event)) {
    event->ignore();
  }
}

void ScriptView::mousePressEvent(QMouseEvent* event) {
  takeTextChanges();
  wishedX_ = -1;
  dragging_ = event->button() == Qt::LeftButton;
  moveCaret(offsetAt(event->position().toPoint()), dragging_ && event->modifiers().testFlag(Qt::ShiftModifier));
}

void ScriptView::mouseMoveEvent(QMouseEvent* event) {
  if (!dragging_) return;
  dragPoint_ = event->position().toPoint();
  if (viewport()->rect().contains(dragPoint_)) {
    dragTimer_.stop();
  } else if (!dragTimer_.isActive()) {
    dragTimer_.start(kDragScrollTime, this);
  }
  dragTo(dragPoint_);
}

void ScriptView::dragTo(QPoint point) {
  point.setY(std::clamp(point.y(), -rowHeight_, viewport()->height() + rowHeight_));
  moveCaret(offsetAt(point), true);
}

void ScriptView::mouseReleaseEvent(QMouseEvent* event) {
  dragging_ = false;
  dragTimer_.stop();
  const std::size_t clicked = offsetAt(event->position().toPoint());
  releasing_ = true;
  if (onMouseUp) onMouseUp();
  releasing_ = false;
  if (event->button() == Qt::RightButton && onMenu) onMenu(event->globalPosition().toPoint(), clicked);
}

void ScriptView::wheelEvent(QWheelEvent* event) {
  if (!event->modifiers().testFlag(Qt::ControlModifier)) return QAbstractScrollArea::wheelEvent(event);
  wheelTurn_ += event->angleDelta().y();
  const int notches = wheelTurn_ / QWheelEvent::DefaultDeltasPerStep;
  wheelTurn_ -= notches * QWheelEvent::DefaultDeltasPerStep;
  if (notches != 0) zoom(notches);
  event->accept();
}

void ScriptView::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return mousePressEvent(event);
  takeTextChanges();
  const std::size_t at = offsetAt(event->position().toPoint());
  const std::size_t block = index_.blockAt(at);
  const QTextLayout& layout = layoutOf(block);
  const auto within = static_cast<int>(at - index_.begin(block));
  const int next = within < layout.text().size() ? layout.nextCursorPosition(within) : within;
  const int begin = layout.previousCursorPosition(next, QTextLayout::SkipWords);
  const int end = layout.nextCursorPosition(begin, QTextLayout::SkipWords);
  select(index_.begin(block) + static_cast<std::size_t>(begin), index_.begin(block) + static_cast<std::size_t>(end));
}

void ScriptView::contextMenuEvent(QContextMenuEvent* event) {
  event->accept();
  if (event->reason() == QContextMenuEvent::Mouse || !onMenu) return;  // that one comes with the release
  const QRect at = rectOf(caret());
  onMenu(viewport()->mapToGlobal(at.isNull() ? viewport()->rect().center() : at.bottomLeft()), caret());
}

void ScriptView::focusInEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusInEvent(event);
  restartBlink();
  viewport()->update();
}

void ScriptView::focusOutEvent(QFocusEvent* event) {
  QAbstractScrollArea::focusOutEvent(event);
  restartBlink();
  viewport()->update();
}

void ScriptView::timerEvent(QTimerEvent* event) {
  if (event->timerId() == blinkTimer_.timerId()) {
    caretOn_ = !caretOn_;
    viewport()->update();
  } else if (event->timerId() == dragTimer_.timerId()) {
    dragTo(dragPoint_);
  } else {
    QAbstractScrollArea::timerEvent(event);
  }
}

}  // namespace dravenna
