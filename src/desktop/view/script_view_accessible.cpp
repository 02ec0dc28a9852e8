#include "desktop/view/script_view_accessible.h"

#include <QtCore/QTextBoundaryFinder>
#include <QtWidgets/QAccessibleWidget>
#include <algorithm>

#include "desktop/qt_text.h"
#include "desktop/twips.h"
#include "desktop/view/script_view.h"

namespace dravenna {

namespace {

enum class Side { Before, At, After };

class ScriptViewAccessible final : public QAccessibleWidget, public QAccessibleTextInterface {
 public:
  explicit ScriptViewAccessible(ScriptView& view) : QAccessibleWidget(&view, QAccessible::EditableText), view_(view) {}

  void* interface_cast(QAccessible::InterfaceType type) override {
    if (type == QAccessible::TextInterface) return static_cast<QAccessibleTextInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
  }

  QAccessible::State state() const override {
    QAccessible::State state = QAccessibleWidget::state();
    state.readOnly = true;
    state.multiLine = true;
    state.selectableText = true;
    return state;
  }

  int selectionCount() const override { return model().SelLength() > 0 ? 1 : 0; }
  void selection(int index, int* start, int* end) const override {
    const bool there = index == 0 && selectionCount() == 1;
    *start = there ? model().SelStart() : 0;
    *end = there ? model().SelStart() + model().SelLength() : 0;
  }
  void addSelection(int start, int end) override { setSelection(0, start, end); }
  void removeSelection(int index) override {
    if (index == 0) view_.moveCaret(view_.caret(), false);
  }
  void setSelection(int index, int start, int end) override {
    if (index == 0) view_.select(clamped(start), clamped(end));
  }

  int cursorPosition() const override { return static_cast<int>(view_.caret()); }
  void setCursorPosition(int position) override { view_.moveCaret(clamped(position), false); }

  int characterCount() const override { return static_cast<int>(model().Text().size()); }
  QString text(int start, int end) const override {
    const std::size_t first = clamped(start);
    return toQt(std::u16string_view(model().Text()).substr(first, std::max(first, clamped(end)) - first));
  }
  QString text(QAccessible::Text kind) const override {
    return kind == QAccessible::Value ? text(0, characterCount()) : QAccessibleWidget::text(kind);
  }

  QString textBeforeOffset(int at, QAccessible::TextBoundaryType kind, int* start, int* end) const override {
    return piece(Side::Before, at, kind, start, end);
  }
  QString textAtOffset(int at, QAccessible::TextBoundaryType kind, int* start, int* end) const override {
    return piece(Side::At, at, kind, start, end);
  }
  QString textAfterOffset(int at, QAccessible::TextBoundaryType kind, int* start, int* end) const override {
    return piece(Side::After, at, kind, start, end);
  }

  QRect characterRect(int offset) const override {
    const QRect rect = view_.rectOf(clamped(offset));
    return rect.isNull() ? rect : QRect(view_.viewport()->mapToGlobal(rect.topLeft()), rect.size());
  }
  int offsetAtPoint(const QPoint& point) const override {
    const QPoint local = view_.viewport()->mapFromGlobal(point);
    return view_.viewport()->rect().contains(local) ? static_cast<int>(view_.offsetAt(local)) : -1;
  }
  void scrollToSubstring(int start, int) override { view_.scrollTo(clamped(start)); }

  QString attributes(int offset, int* start, int* end) const override {
    const std::size_t size = model().Text().size();
    if (offset < 0 || clamped(offset) >= size) {
      *start = *end = characterCount();
      return {};
    }
    const std::size_t at = clamped(offset);
    const std::uint8_t style = model().styleAt(at);
    const auto [lineBegin, lineEnd] = view_.lineAround(at);
    std::size_t first = at;
    std::size_t last = at + 1;
    while (first > lineBegin && model().styleAt(first - 1) == style) --first;
    while (last < lineEnd && model().styleAt(last) == style) ++last;
    *start = static_cast<int>(first);
    *end = static_cast<int>(last);
    const CharStyle& look = model().style(style);
    const QColor color = toQt(look.color);
    QString text = QStringLiteral("color:rgb(%1,%2,%3);").arg(color.red()).arg(color.green()).arg(color.blue());
    if (look.bold) text += QLatin1String("font-weight:bold;");
    if (look.italic) text += QLatin1String("font-style:italic;");
    if (look.strikeThru) text += QLatin1String("text-line-through-type:single;");
    return text;
  }

 private:
  const RichTextBox& model() const { return view_.model(); }
  std::size_t clamped(int offset) const { return static_cast<std::size_t>(std::clamp(offset, 0, characterCount())); }

  // Lines and paragraphs are the model's lines with their line ends; smaller units are sought inside a line.
  std::pair<int, int> bounds(std::size_t at, QAccessible::TextBoundaryType kind) const {
    if (kind == QAccessible::NoBoundary) return {0, characterCount()};
    const auto [begin, end] = view_.lineAround(at);
    const std::size_t next = std::min(end + 2, model().Text().size());
    if (kind == QAccessible::LineBoundary || kind == QAccessible::ParagraphBoundary) {
      return {static_cast<int>(begin), static_cast<int>(next)};
    }
    if (at >= end) return {static_cast<int>(end), static_cast<int>(next)};
    const QString line = text(static_cast<int>(begin), static_cast<int>(end));
    const auto unit = kind == QAccessible::CharBoundary   ? QTextBoundaryFinder::Grapheme
                      : kind == QAccessible::WordBoundary ? QTextBoundaryFinder::Word
                                                          : QTextBoundaryFinder::Sentence;
    QTextBoundaryFinder finder(unit, line);
    finder.setPosition(static_cast<qsizetype>(at - begin));
    const auto from = finder.isAtBoundary() ? finder.position() : finder.toPreviousBoundary();
    finder.setPosition(from);
    const auto to = finder.toNextBoundary();
    return {static_cast<int>(begin) + static_cast<int>(from), static_cast<int>(begin) + static_cast<int>(to)};
  }

  QString piece(Side side, int offset, QAccessible::TextBoundaryType kind, int* start, int* end) const {
    std::pair<int, int> found = bounds(clamped(offset), kind);
    if (side == Side::Before) {
      found = found.first == 0 ? std::pair{0, 0} : bounds(clamped(found.first - 1), kind);
    } else if (side == Side::After) {
      found = found.second >= characterCount() ? std::pair{characterCount(), characterCount()}
                                               : bounds(clamped(found.second), kind);
    }
    *start = found.first;
    *end = found.second;
    return text(found.first, found.second);
  }

  ScriptView& view_;
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
  auto* view = dynamic_cast<ScriptView*>(object);
  return view != nullptr ? new ScriptViewAccessible(*view) : nullptr;
}

}  // namespace

void enableScriptViewAccessibility() {
  static const bool installed = [] {
    QAccessible::installFactory(makeInterface);
    return true;
  }();
  static_cast<void>(installed);
}

void tellSelectionChange(ScriptView& view) {
  if (!QAccessible::isActive()) return;
  const auto start = view.model().SelStart();
  QAccessibleTextSelectionEvent selection(&view, start, start + view.model().SelLength());
  selection.setCursorPosition(static_cast<int>(view.caret()));
  QAccessible::updateAccessibility(&selection);
  QAccessibleTextCursorEvent cursor(&view, static_cast<int>(view.caret()));
  QAccessible::updateAccessibility(&cursor);
}

void tellTextChange(ScriptView& view, const BlockIndex::Change& change) {
  if (!QAccessible::isActive()) return;
  const auto position = static_cast<int>(change.position);
  if (change.removed > 0) {  // what it was is gone; only its length is of use to the reader
    QAccessibleTextRemoveEvent removed(&view, position,
                                       QString(static_cast<qsizetype>(change.removed), QLatin1Char(' ')));
    QAccessible::updateAccessibility(&removed);
  }
  if (change.inserted > 0) {
    const std::u16string_view text = view.model().Text();
    QAccessibleTextInsertEvent inserted(&view, position, toQt(text.substr(change.position, change.inserted)));
    QAccessible::updateAccessibility(&inserted);
  }
}

}  // namespace dravenna
