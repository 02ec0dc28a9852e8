#include <QtTest/QtTest>
#include <QtWidgets/QtWidgets>
#include <algorithm>
#include <functional>

#include "desktop/color_pick_dialog.h"
#include "desktop/edit_box.h"
#include "desktop/main_window.h"
#include "desktop/qt_text.h"
#include "desktop/search_box.h"
#include "desktop/twips.h"
#include "desktop/view/script_view.h"
#include "support/scenario.h"
#include "support/scenario_run.h"
#include "support/widgets.h"
#include "text/text.h"

namespace dravenna {

namespace {

// Milliseconds after which something that should appear is given up.
constexpr int kPatience = 60000;

// The real window, driven by events of mouse and keyboard, and its dialogs, answered as they appear.
class WindowDriver : public QObject, public Driver {
 public:
  explicit WindowDriver(const Surroundings& surroundings) : surroundings_(surroundings), stage_(surroundings.stage) {
    qApp->installEventFilter(this);
  }
  ~WindowDriver() override {
    window_.reset();
    turn();
  }

  Principal* form() override { return window_ != nullptr ? &window_->principal() : nullptr; }

  bool closed() override { return !window_->isVisible(); }

  Control focused() override {
    QWidget* const widget = QApplication::focusWidget();
    if (widget == nullptr || closed()) return Control::None;
    if (widget == &window_->scriptView()) return Control::N;
    if (widget == &window_->editBox()) return Control::EDT;
    return widget->objectName() == QStringLiteral("txtSearch") ? Control::txtSearch : Control::None;
  }

  void start(std::u16string_view commandLine) override {
    surroundings_.process.line = commandLine;
    window_ = std::make_unique<MainWindow>(surroundings_.files, surroundings_.registry, surroundings_.process);
    window_->onBeep = [this] { ++stage_.beeps; };
    window_->start();
    settle();
  }

  void key(const KeyStroke& stroke) override {
    QWidget* target = window_->colorPickDialog();
    if (target == nullptr) {
      mainForm();
      const bool inSearch = window_->searchBox() != nullptr && QApplication::activeWindow() == window_->searchBox();
      target = inSearch ? static_cast<QWidget*>(window_->searchBox()) : window_.get();
    }
    activate(*target);
    const QString text = stroke.character != 0 ? QString(QChar(stroke.character)) : QString();
    Qt::KeyboardModifiers modifiers;
    modifiers.setFlag(Qt::ShiftModifier, (stroke.shift & kShift) != 0);
    modifiers.setFlag(Qt::ControlModifier, (stroke.shift & kCtrl) != 0);
    modifiers.setFlag(Qt::AltModifier, (stroke.shift & kAlt) != 0);
    QTest::sendKeyEvent(QTest::Click, target->windowHandle(), keyOf(stroke.code), text, modifiers);
    settle();
  }

  void selectEdt() override {
    focus(Control::EDT);
    window_->editBox().selectAll();
  }

  void drag(std::int32_t from, std::int32_t to) override {
    activate(*window_);
    ScriptView& view = window_->scriptView();
    view.scrollTo(static_cast<std::size_t>(from));
    mouseOn(*view.viewport(), QTest::MousePress, pointOf(from));
    if (view.rectOf(static_cast<std::size_t>(to)).isNull()) view.scrollTo(static_cast<std::size_t>(to));
    if (to != from) mouseOn(*view.viewport(), QTest::MouseMove, pointOf(to));
    const bool reached = view.caret() == static_cast<std::size_t>(to);
    mouseOn(*view.viewport(), QTest::MouseRelease, pointOf(to));
    settle();
    if (!reached) throw ScenarioError{0, "the mouse does not reach the offset"};
  }

  void focus(Control where) override {
    QWidget* target = &window_->scriptView();
    if (where == Control::EDT) target = &window_->editBox();
    if (where == Control::txtSearch) target = &control("txtSearch");
    if (target->isHidden()) throw ScenarioError{0, "the control is not visible"};
    target->setFocus(Qt::TabFocusReason);
    activate(*target->window());
    settle();
  }

  void menu(const MenuPlace& place) override {
    activate(*window_);
    std::vector<const MenuPlace*> way;
    for (const MenuPlace* at = &place; at != nullptr; at = placeOf(at->parent)) way.insert(way.begin(), at);
    QWidget* shown = window_->menuBar();
    for (const MenuPlace* at : way) {
      QAction* const action = actionOf(*at->entry);
      const QRect where = shown == window_->menuBar() ? window_->menuBar()->actionGeometry(action)
                                                      : static_cast<QMenu*>(shown)->actionGeometry(action);
      mouseOn(*shown, QTest::MouseClick, where.center());
      if (action->menu() == nullptr) break;
      shown = action->menu();
      if (!QTest::qWaitFor([shown] { return shown->isVisible(); }, kPatience)) throw ScenarioError{0, "no menu opens"};
    }
    // A menu that is still open is left by Esc, and so is the menu bar.
    for (int i = 0; i < 4 && QApplication::activePopupWidget() != nullptr; ++i) {
      QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
    }
    if (window_->menuBar()->hasFocus()) QTest::keyClick(window_->menuBar(), Qt::Key_Escape);
    settle();
  }

  void mouse(MouseStep step, std::int32_t x, std::int32_t y) override {
    const QPoint at = field().contentsRect().topLeft() + QPoint(x, y);
    constexpr QTest::MouseAction kActions[] = {QTest::MousePress, QTest::MouseMove, QTest::MouseRelease};
    constexpr QEvent::Type kEvents[] = {QEvent::MouseButtonPress, QEvent::MouseMove, QEvent::MouseButtonRelease};
    const auto which = static_cast<std::size_t>(step);
    // From outside no real mouse reaches the field but by dragging.
    if (!dragging_) outside_ = !field().rect().contains(at);
    if (outside_) {
      const auto button = step == MouseStep::Move ? Qt::NoButton : Qt::LeftButton;
      QMouseEvent event(kEvents[which], at, field().mapTo(field().window(), at), field().mapToGlobal(at), button,
                        Qt::NoButton, Qt::NoModifier);
      QCoreApplication::sendEvent(&field(), &event);
      turn();
    } else {
      mouseOn(field(), kActions[which], at);
    }
    if (step == MouseStep::Press) dragging_ = true;
    if (step == MouseStep::Release) dragging_ = false;
  }

  void button(const std::string& name) override {
    QWidget& target = control(name);
    activate(*target.window());
    mouseOn(target, QTest::MouseClick, target.rect().center());
    settle();
  }

  void resize(std::int32_t width, std::int32_t height) override {
    const QSize frame = window_->frameGeometry().size() - window_->size();
    window_->resize(QSize(pixels(width), pixels(height)) - frame);
    settle();
  }

  void close() override {
    window_->close();
    turn();
  }

  std::optional<Value> read(const std::string& what) override {
    const std::size_t dot = std::min(what.find('.'), what.size());
    const std::string name = what.substr(0, dot), property = what.substr(std::min(dot + 1, what.size()));
    std::optional<Value> value;
    if (name == "N") value = readN(property);
    if (name == "EDT") value = readBox(window_->editBox(), property);
    if (name == "txtSearch") value = readBox(static_cast<QLineEdit&>(control(name)), property);
    if (const auto* action = window_->menuBar()->findChild<QAction*>(QString::fromStdString(name))) {
      value = readAction(*action, property);
    }
    if (what == "Caption")
      value = fromQt(window_->windowTitle().replace(QLatin1String("[*][*]"), QLatin1String("[*]")));
    if (name == "Status") {
      window_->showStatus();
      auto* part = window_->findChild<QWidget*>(QString::fromStdString(what));
      value = fromQt(QAccessible::queryAccessibleInterface(part)->text(QAccessible::Name));
    }
    if (what == "frmSearch") value = openIf(window_->searchBox() != nullptr);
    if (what == "ColorPick") value = openIf(window_->colorPickDialog() != nullptr);
    if (what == "frmSearch.Caption") value = fromQt(control("txtSearch").window()->windowTitle());
    if (name.starts_with("btn_Search") || name == "CancelButton") {
      value = fromQt(static_cast<QAbstractButton&>(control(name)).text());
    }
    if (name == "iPreview") {
      value = std::int64_t{colorNumber(control(name).grab().toImage().pixelColor(2, 2))};
    }
    return value ? value : Driver::read(what);
  }

  std::vector<std::uint32_t> colors() override {
    std::vector<std::uint32_t> colors;
    QAccessibleTextInterface& text = accessibleN();
    const int count = text.characterCount();
    for (int at = 0; at < count;) {
      int start = 0, end = 0;
      const QString attributes = text.attributes(at, &start, &end);
      int red = 0, green = 0, blue = 0;
      std::sscanf(attributes.toLatin1().constData(), "color:rgb(%d,%d,%d)", &red, &green, &blue);
      end = std::max(end, at + 1);
      colors.insert(colors.end(), static_cast<std::size_t>(end - at), colorNumber(QColor(red, green, blue)));
      at = end;
    }
    return colors;
  }

  std::int64_t point(std::int32_t x, std::int32_t y) override {
    const QPoint at = field().contentsRect().topLeft() + QPoint(x, y);
    if (!field().contentsRect().contains(at)) return Driver::point(x, y);
    return colorNumber(field().grab(QRect(at, QSize(1, 1))).toImage().pixelColor(0, 0));
  }

 private:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() != QEvent::Show) return false;
    if (auto* box = qobject_cast<QMessageBox*>(object)) {
      whenRun(*box, [this, box] { answer(*box); });
    } else if (auto* dialog = qobject_cast<QFileDialog*>(object)) {
      whenRun(*dialog, [this, dialog] { pick(*dialog); });
    } else if (auto* picker = dynamic_cast<ColorPickDialog*>(object)) {
      whenRun(*picker, [this] { surroundings_.stepsOfPicker(*form()->colorPick); });
    }
    return false;
  }

  // Acts once the dialog runs its own event loop; some systems deliver events while it is still being shown.
  void whenRun(QDialog& dialog, std::function<void()> act, int outerLevel = QThread::currentThread()->loopLevel()) {
    QTimer::singleShot(0, &dialog, [this, &dialog, act = std::move(act), outerLevel] {
      if (QThread::currentThread()->loopLevel() > outerLevel) {
        act();
        // The end of the dialog interrupted its loop; the events that were processed behind it took that back.
        QAbstractEventDispatcher::instance()->interrupt();
      } else {
        whenRun(dialog, act, outerLevel);
      }
    });
  }

  void answer(QMessageBox& box) {
    QAbstractButton* button = box.defaultButton();
    if (qobject_cast<QFileDialog*>(box.parentWidget()) != nullptr) {
      // The dialog's own question is no box of the program.
      if (QAbstractButton* yes = box.button(QMessageBox::Yes)) button = yes;
    } else {
      const int flags = flagsOf(box);
      stage_.boxes.push_back({fromQt(box.text()), flags, fromQt(box.windowTitle())});
      button = box.button(buttonOf(stage_.answerFor(flags)));
    }
    mouseOn(*button, QTest::MouseClick, button->rect().center());
  }

  void pick(QFileDialog& dialog) {
    ShownDialog shown{dialog.acceptMode() == QFileDialog::AcceptSave, form()->CMD};
    shown.properties.DialogTitle = fromQt(dialog.windowTitle());
    stage_.dialog = shown;
    if (const std::optional<std::u16string> path = stage_.nextPick()) typeName(dialog, toQt(*path));
    if (dialog.isVisible()) dialog.reject();
  }

  // A control of the window that is open in front of the main one.
  QWidget& control(const std::string& name) const {
    const QWidget* dialog = window_->colorPickDialog();
    if (dialog == nullptr) dialog = window_->searchBox();
    auto* const found = dialog != nullptr ? dialog->findChild<QWidget*>(QString::fromStdString(name)) : nullptr;
    if (found == nullptr) throw ScenarioError{0, "no open window has " + name};
    return *found;
  }
  QWidget& field() const { return control("picBigBox"); }

  const MenuPlace* placeOf(const MenuEntry* entry) const {
    for (const MenuPlace& place : window_->principal().menu()) {
      if (place.entry == entry) return &place;
    }
    return nullptr;
  }
  QAction* actionOf(const MenuEntry& entry) const { return window_->menuBar()->findChild<QAction*>(toQt(entry.name)); }

  // Where the caret is put in front of a character, in the viewport.
  QPoint pointOf(std::int32_t offset) const {
    const QRect rect = window_->scriptView().rectOf(static_cast<std::size_t>(offset));
    if (rect.isNull()) throw ScenarioError{0, "the offset is not on the page"};
    return {rect.left(), rect.center().y()};
  }

  void mouseOn(QWidget& widget, QTest::MouseAction action, QPoint at) {
    QWidget* const top = widget.window();
    const auto button = action == QTest::MouseMove ? Qt::NoButton : Qt::LeftButton;
    QTest::mouseEvent(action, top->windowHandle(), button, {}, widget.mapTo(top, at));
    turn();
  }

  // What a window manager does for a window that the user turns to.
  void activate(QWidget& window) {
    const auto active = [&window] { return QApplication::activeWindow() == &window; };
    if (!active()) {
      window.activateWindow();
      if (!QTest::qWaitFor(active, kPatience)) throw ScenarioError{0, "the window does not come forward"};
    }
    turn();
  }

  static void turn() {
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }

  void settle() {
    turn();
    if (closed()) return;
    // A window manager takes its time to give a new window the focus.
    QWidget* const box = window_->searchBox();
    if (box != nullptr && box != knownBox_) activate(*box);
    knownBox_ = box;
    if (QApplication::activeWindow() == nullptr) activate(*window_);
  }

  QAccessibleTextInterface& accessibleN() const {
    return *QAccessible::queryAccessibleInterface(&window_->scriptView())->textInterface();
  }

  std::optional<Value> readN(const std::string& what) const {
    QAccessibleTextInterface& text = accessibleN();
    int start = text.cursorPosition(), end = start;
    if (text.selectionCount() > 0) text.selection(0, &start, &end);
    if (what == "Text") return fromQt(text.text(0, text.characterCount()));
    if (what == "SelStart") return std::int64_t{start};
    if (what == "SelLength") return std::int64_t{end - start};
    if (what == "SelText") return fromQt(text.text(start, end));
    if (what == "Visible") return window_->scriptView().contentShown();
    if (what == "TabStop") return (window_->scriptView().focusPolicy() & Qt::TabFocus) != 0;
    return std::nullopt;
  }

  Surroundings surroundings_;
  Stage& stage_;
  std::unique_ptr<MainWindow> window_;
  QWidget* knownBox_ = nullptr;
  bool dragging_ = false;  // on the picker's field
  bool outside_ = false;   // its mouse is sent straight to it
};

}  // namespace

int runScenariosInWindow(const std::vector<std::filesystem::path>& paths) {
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QCoreApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  QCoreApplication::setAttribute(Qt::AA_DontUseNativeMenuBar);
  QApplication::setStyle(QStringLiteral("fusion"));
  // What the platform plugins lack is no news.
  qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
    if (type == QtCriticalMsg || type == QtFatalMsg) std::fprintf(stderr, "%s\n", qPrintable(message));
  });
  int argc = 1;
  char name[] = "dravenna-scenarios";
  char* argv[] = {name, nullptr};
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  return runScenarios(paths, [](const Surroundings& surroundings) -> std::unique_ptr<Driver> {
    return std::make_unique<WindowDriver>(surroundings);
  });
}

}  // namespace dravenna
