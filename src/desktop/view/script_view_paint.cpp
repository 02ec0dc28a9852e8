#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <algorithm>

#include "desktop/twips.h"
#include "desktop/view/script_view.h"

namespace dravenna {

namespace {

constexpr qreal kFrame = 2;  // pixels of the focus frame, within the margin
constexpr int kHintMargin = 24;
constexpr QColor kHintColor(0x55, 0x55, 0x55);

}  // namespace

void ScriptView::paintEvent(QPaintEvent* event) {
  QPainter painter(viewport());
  const QRect clip = event->rect();
  painter.fillRect(clip, palette().color(QPalette::Base));
  if (hasFocus()) {
    painter.setPen(QPen(palette().color(QPalette::Highlight), kFrame));
    painter.drawRect(QRectF(viewport()->rect()).adjusted(kFrame / 2, kFrame / 2, -kFrame / 2, -kFrame / 2));
  }
  if (!contentShown_) return;
  takeTextChanges();
  if (model_.Text().empty()) return paintHint(painter);
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
  if (markedLine_ && index_.blockAt(*markedLine_) == block) {
    painter.fillRect(0, y, kMargin - 1, layout.lineCount() * rowHeight_, toQt(clrError));
  }
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
  // The toolkit's ground of a row is lower than the row, so this one lies below it.
  for (int row = 0; row < layout.lineCount() && shownLength_ > 0; ++row) {
    const QTextLine line = layout.lineAt(row);
    const auto inRow = [&](std::size_t offset) {
      const auto within = static_cast<int>(std::max(offset, begin) - begin);
      return std::clamp(within, line.textStart(), line.textStart() + line.textLength());
    };
    const bool lastRow = row + 1 == layout.lineCount();
    const bool lineEnd = lastRow && shownStart_ <= end && end < selectionEnd;  // shows as one character
    const int from = inRow(first), to = inRow(last);
    if (from == to && !lineEnd) continue;
    const auto [left, right] = std::minmax({line.cursorToX(from), line.cursorToX(to)});
    painter.fillRect(
        QRectF(kMargin + left, y + row * rowHeight_, right - left + (lineEnd ? charWidth_ : 0), rowHeight_),
        palette().color(QPalette::Highlight));
  }
  layout.draw(&painter, QPointF(kMargin, y), selection, clip);
  if (!caretOn_ || index_.blockAt(caret()) != block) return;
  const auto at = static_cast<int>(std::min(caret(), end) - begin);
  const QTextLine line = layout.lineForTextPosition(at);
  if (!line.isValid()) return;
  const int x = kMargin + static_cast<int>(line.cursorToX(at));
  painter.fillRect(QRect(x, y + line.lineNumber() * rowHeight_, 1, rowHeight_), palette().color(QPalette::Text));
}

void ScriptView::paintHint(QPainter& painter) {
  if (!hint) return;
  painter.setFont(QApplication::font());
  painter.setPen(kHintColor);
  painter.drawText(viewport()->rect().adjusted(kHintMargin, kHintMargin, -kHintMargin, -kHintMargin),
                   Qt::AlignCenter | Qt::TextWordWrap, hint());
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

}  // namespace dravenna
