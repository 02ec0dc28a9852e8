#pragma once

#include <QtCore/QBasicTimer>
#include <QtGui/QTextLayout>
#include <QtWidgets/QAbstractScrollArea>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "desktop/view/block_index.h"
#include "scan/rich_text_box.h"

namespace dravenna {

// Draws a RichTextBox and moves its caret and selection for the user, who cannot change the text. Only what is visible
// is ever laid out. All offsets are those of the model. Every row has the same height; scrolling goes by rows.
class ScriptView : public QAbstractScrollArea, private RichTextBox::Listener {
 public:
  explicit ScriptView(RichTextBox& model, QWidget* parent = nullptr);
  ~ScriptView() override;

  // Shows what the program has changed in the model. A new selection is brought into view.
  void synchronise();

  // The model's Visible, as last shown: a view that is not shown is blank, and keeps the focus.
  bool contentShown() const { return contentShown_; }

  const RichTextBox& model() const { return model_; }
  std::size_t caret() const;

  // The user's moves: they change the model's selection at once.
  void moveCaret(std::size_t offset, bool extend);
  void select(std::size_t anchor, std::size_t caret);
  void copy() const;
  void copyLine(std::size_t offset) const;  // the one around it, without its line end

  // The offset under a point of the viewport, the nearest one where there is no text.
  std::size_t offsetAt(QPoint point);
  // Where a character stands in the viewport; empty if it is not on the page.
  QRect rectOf(std::size_t offset);
  // What is selected, as far as it is on the page.
  QRect rectOfSelection();
  void scrollTo(std::size_t offset);
  // Shows a line, marked, and leaves the selection where it is.
  void showLine(std::size_t offset);
  // Behind the line that was shown last, while it is on the page; else the first offset of the page.
  std::size_t placeShown();
  void scrollPages(int pages);  // down, or up if negative; the caret stays where it is

  // Makes the font larger or smaller by points, within bounds; 0 takes all of that back.
  void zoom(int steps);
  int zoomed() const { return zoom_; }  // points

  // The line around an offset, without its line end.
  std::pair<std::size_t, std::size_t> lineAround(std::size_t offset) const;

  // A mouse button has been released over the view, and the caret is where it belongs.
  std::function<void()> onMouseUp;
  // A menu is wanted at a place of the screen, for the line around an offset; after onMouseUp.
  std::function<void(QPoint place, std::size_t offset)> onMenu;
  // What an empty view says.
  std::function<QString()> hint;

  // The view's own handling of a key, for those that the form's handlers have let pass.
  void keyPressEvent(QKeyEvent* event) override;

  QSize sizeHint() const override { return {592, 392}; }

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;
  void scrollContentsBy(int dx, int dy) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  static constexpr int kMargin = 4;       // pixels at the left and the right
  static constexpr int kContextRows = 3;  // kept visible above and below what has been brought into view

  // A row of a block, from 0.
  struct Place {
    std::size_t block = 0;
    int row = 0;
  };

  void textChanged(std::size_t position, std::size_t removed, std::size_t inserted) override;

  // Layout.
  void measureFont();
  void takeTextChanges();
  void dropLayouts();
  QTextLayout& layoutOf(std::size_t block);
  QList<QTextLayout::FormatRange> formatsOf(std::size_t begin, std::size_t end);
  const QTextCharFormat& formatOf(std::uint8_t style);
  qreal indentOf(std::size_t offset) const;  // of the line around it
  int pageRows() const;
  Place placeOf(std::size_t offset);
  Place moved(Place place, int rows);  // stops at both ends
  int rowsBetween(Place from, Place to, int most);
  Place lastPlace();
  std::size_t offsetIn(Place place, qreal x);

  // Scrolling.
  void setTop(Place top);
  // `margin` rows above and below are wanted too, where the page has room for them.
  void bringIntoView(std::size_t begin, std::size_t end, int margin);
  void follow(std::size_t begin, std::size_t end, int margin);
  void updateScrollBar();
  void afterUserMove();

  // Painting.
  void paintBlock(QPainter& painter, std::size_t block, int y, const QRect& clip);
  void paintHint(QPainter& painter);
  void restartBlink();

  // Keyboard and mouse.
  std::size_t anchor() const;
  std::size_t characterMove(std::size_t from, bool forward, QTextLayout::CursorMode mode);
  std::size_t rowMove(int rows);
  std::size_t rowEnd(std::size_t from, bool atEnd);
  bool moveByKey(const QKeyEvent& event);
  void dragTo(QPoint point);

  void tellSelection();

  RichTextBox& model_;
  BlockIndex index_;
  std::map<std::size_t, std::unique_ptr<QTextLayout>> layouts_;
  std::vector<std::pair<CharStyle, QTextCharFormat>> formats_;  // by the model's style index
  int rowHeight_ = 1;
  qreal ascent_ = 0;
  qreal charWidth_ = 1;
  int laidOutWidth_ = 0;
  int zoom_ = 0;  // points

  Place top_;
  bool following_ = true;  // the last selection (the caret, where the user moved it) stays in view until a scroll
  std::size_t followBegin_ = 0, followEnd_ = 0;
  std::optional<std::size_t> markedLine_;  // where it begins
  bool settingBar_ = false;
  bool contentShown_ = true;

  // The selection as last shown.
  std::size_t shownStart_ = 0, shownLength_ = 0;
  bool caretAtStart_ = false;  // the caret is the front end of the selection

  qreal wishedX_ = -1;  // where the caret would like to be while it moves from row to row
  bool dragging_ = false;
  bool releasing_ = false;  // onMouseUp runs
  QPoint dragPoint_;
  int wheelTurn_ = 0;  // of a wheel with Ctrl, in eighths of a degree, less than a notch
  QBasicTimer dragTimer_, blinkTimer_;
  bool caretOn_ = false;
};

}  // namespace dravenna
