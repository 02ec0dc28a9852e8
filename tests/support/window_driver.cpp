#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QFileInfo>
#include <QtCore/QThread>
#include <QtCore/QTimer>
#include <QtGui/QAccessible>
#include <QtGui/QAction>
#include <QtTest/QTest>
#include <QtWidgets/QAbstractButton>
#include <QtWidgets/QApplication>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QFileDialog>
#include <QtWidgets/QListView>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <functional>

#include "desktop/color_pick_dialog.h"
#include "desktop/edit_box.h"
#include "desktop/main_window.h"
#include "desktop/qt_text.h"
#include "desktop/script_view.h"
#include "desktop/search_box.h"
#include "desktop/twips.h"
#include "support/scenario.h"
#include "support/scenario_run.h"
#include "text/text.h"

namespace dravenna {

namespace {

// Milliseconds after which something that should appear is given up.
constexpr int kPatience = 2000;

Qt::Key keyOf(std::int16_t code) {
  static const std::pair<std::int16_t, Qt::Key> kKeys[] = {{kKeyBackspace, Qt::Key_Backspace},
                                                           {kKeyTab, Qt::Key_Tab},
                                                           {kKeyEnter, Qt::Key_Return},
                                                           {kKeyEsc, Qt::Key_Escape},
                                                           {kKeyEnd, Qt::Key_End},
                                                           {kKeyHome, Qt::Key_Home},
                                                           {kKeyLeft, Qt::Key_Left},
                                                           {kKeyUp, Qt::Key_Up},
                                                           {kKeyRight, Qt::Key_Right},
                                                           {kKeyDown, Qt::Key_Down},
                                                           {kKeyDel, Qt::Key_Delete},
                                                           {kKeyF1, Qt::Key_F1},
                                                           {kKeyF3, Qt::Key_F3},
                                                           {kKeyF5, Qt::Key_F5}};
  for (const auto& [ours, theirs] : kKeys) {
    if (ours == code) return theirs;
  }
  return static_cast<Qt::Key>(code);  // letters, digits and the blank are the same
}

std::uint32_t colorNumber(const QColor& color) {
  return static_cast<std::uint32_t>(color.red() | color.green() << 8 | color.blue() << 16);
}

// The flags that a message box stands for, read from what it shows.
int flagsOf(const QMessageBox& box) {
  constexpr int kIcons[] = {0, kInformation, kWarning, kCritical, 32};  // in the order of QMessageBox::Icon
  int flags = kIcons[box.icon()];
  const QMessageBox::StandardButtons buttons = box.standardButtons();
  if (buttons == (QMessageBox::Ok | QMessageBox::Cancel)) flags += 1;
  if (buttons == (QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel)) flags += 3;
  if (buttons == (QMessageBox::Yes | QMessageBox::No)) flags += 4;
  const QPushButton* standard = box.defaultButton();
  if (standard == box.button(QMessageBox::Cancel) && standard != nullptr) flags += (flags & 7) == 3 ? 512 : 256;
  return flags;
}

QMessageBox::StandardButton buttonOf(Answer answer) {
  if (answer == Answer::Yes) return QMessageBox::Yes;
  if (answer == Answer::No) return QMessageBox::No;
  return answer == Answer::Cancel ? QMessageBox::Cancel : QMessageBox::Ok;
}

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
      mustBeOpen();
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

  void click(std::int32_t offset) override { drag(offset, offset); }

  void drag(std::int32_t from, std::int32_t to) override {
    mustBeOpen();
    activate(*window_);
    ScriptView& view = window_->scriptView();
    const auto size = static_cast<std::int32_t>(view.model().Text().size());
    if (std::min(from, to) < 0 || std::max(from, to) > size) throw ScenarioError{0, "the offset lies outside N"};
    view.scrollTo(static_cast<std::size_t>(from));
    mouseOn(*view.viewport(), QTest::MousePress, pointOf(from));
    if (view.rectOf(static_cast<std::size_t>(to)).isNull()) view.scrollTo(static_cast<std::size_t>(to));
    if (to != from) mouseOn(*view.viewport(), QTest::MouseMove, pointOf(to));
    const bool reached = view.caret() == static_cast<std::size_t>(to);
    mouseOn(*view.viewport(), QTest::MouseRelease, pointOf(to));
    settle();
    if (!reached) throw ScenarioError{0, "the mouse does not reach the offset"};
  }

  void focus(Control control) override {
    mustBeOpen();
    QWidget* target = &window_->scriptView();
    if (control == Control::EDT) target = &window_->editBox();
    if (control == Control::txtSearch) target = &searchControl("txtSearch");
    if (target->isHidden()) throw ScenarioError{0, "the control is not visible"};
    target->setFocus(Qt::TabFocusReason);
    activate(*target->window());
    settle();
  }

  void menu(const MenuPlace& place) override {
    mustBeOpen();
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
      QMouseEvent event(kEvents[which], at, field().mapToGlobal(at), button, Qt::NoButton, Qt::NoModifier);
      QCoreApplication::sendEvent(&field(), &event);
      turn();
    } else {
      mouseOn(field(), kActions[which], at);
    }
    if (step == MouseStep::Press) dragging_ = true;
    if (step == MouseStep::Release) dragging_ = false;
  }

  void button(std::u16string_view name) override {
    QWidget* target = nullptr;
    if (name == u"Command1") {
      target = picker().findChild<QWidget*>(QStringLiteral("Command1"));
    } else {
      mustBeOpen();
      target = &searchControl(toUtf8(name).c_str());
      activate(*target->window());
    }
    mouseOn(*target, QTest::MouseClick, target->rect().center());
    settle();
  }

  void resize(std::int32_t width, std::int32_t height) override {
    mustBeOpen();
    const QSize frame = window_->frameGeometry().size() - window_->size();
    window_->resize(QSize(pixels(width), pixels(height)) - frame);
    settle();
  }

  void close() override {
    mustBeOpen();
    window_->close();
    turn();
  }

  std::optional<Value> read(const std::string& what) override {
    if (std::optional<Value> value = what.starts_with("N.") ? readN(what) : readWidgets(what)) return value;
    return Driver::read(what);
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
    if (const std::optional<std::u16string> path = stage_.nextPick()) {
      // The user goes to the folder and types the name over the one that is offered. (The list would drop its selection
      // by itself, but only when it has read the folder.)
      const QFileInfo picked(toQt(*path));
      const bool reachable = QFileInfo(picked.path()).isDir();
      if (reachable) dialog.setDirectory(picked.path());
      auto* name = dialog.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
      dialog.findChild<QListView*>(QStringLiteral("listView"))->clearSelection();
      name->selectAll();
      name->insert(reachable ? picked.fileName() : picked.filePath());
      const auto standard = shown.save ? QDialogButtonBox::Save : QDialogButtonBox::Open;
      dialog.findChild<QDialogButtonBox*>()->button(standard)->click();
    }
    if (dialog.isVisible()) dialog.reject();
  }

  void mustBeOpen() const {
    if (window_ == nullptr) throw ScenarioError{0, "there is no start before it"};
    if (closed()) throw ScenarioError{0, "the main window is closed"};
    if (window_->colorPickDialog() != nullptr) throw ScenarioError{0, "the picker is open"};
  }
  bool closed() const { return !window_->isVisible(); }

  QWidget& searchControl(const char* name) const {
    if (window_->searchBox() == nullptr) throw ScenarioError{0, "the search box is closed"};
    return *window_->searchBox()->findChild<QWidget*>(QLatin1String(name));
  }
  ColorPickDialog& picker() const {
    if (window_->colorPickDialog() == nullptr) throw ScenarioError{0, "the picker is closed"};
    return *window_->colorPickDialog();
  }
  QWidget& field() const { return *picker().findChild<QWidget*>(QStringLiteral("picBigBox")); }

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
    if (what == "N.Text") return fromQt(text.text(0, text.characterCount()));
    if (what == "N.SelStart") return std::int64_t{start};
    if (what == "N.SelLength") return std::int64_t{end - start};
    if (what == "N.SelText") return fromQt(text.text(start, end));
    if (what == "N.Visible") return window_->scriptView().contentShown();
    if (what == "N.TabStop") return (window_->scriptView().focusPolicy() & Qt::TabFocus) != 0;
    return std::nullopt;
  }

  std::optional<Value> readWidgets(const std::string& what) const {
    const EditBox& edt = window_->editBox();
    const auto startOf = [](const QLineEdit& box) {
      return std::int64_t{box.hasSelectedText() ? box.selectionStart() : box.cursorPosition()};
    };
    if (what == "EDT.Text") return fromQt(edt.text());
    if (what == "EDT.SelStart") return startOf(edt);
    if (what == "EDT.SelLength") return std::int64_t{edt.selectionLength()};
    if (what == "EDT.SelText") return fromQt(edt.selectedText());
    if (what == "EDT.Visible") return !edt.isHidden();
    if (what == "EDT.ForeColor") return std::int64_t{colorNumber(edt.palette().color(QPalette::Text))};
    if (what == "EDT.BackColor") return std::int64_t{colorNumber(edt.palette().color(QPalette::Base))};
    if (what == "Caption") return fromQt(window_->windowTitle().replace(QLatin1String("[*][*]"), QLatin1String("[*]")));
    if (what == "frmSearch") return std::u16string(window_->searchBox() != nullptr ? u"open" : u"closed");
    if (what == "ColorPick") return std::u16string(window_->colorPickDialog() != nullptr ? u"open" : u"closed");
    if (what == "frmSearch.Caption") return fromQt(searchControl("txtSearch").window()->windowTitle());
    if (what.starts_with("txtSearch.")) {
      const auto& box = static_cast<QLineEdit&>(searchControl("txtSearch"));
      if (what == "txtSearch.Text") return fromQt(box.text());
      if (what == "txtSearch.SelLength") return std::int64_t{box.selectionLength()};
    }
    if (what == "btn_Search0.Caption" || what == "btn_Search1.Caption" || what == "CancelButton.Caption") {
      const std::string name = what.substr(0, what.find('.'));
      return fromQt(static_cast<QAbstractButton&>(searchControl(name.c_str())).text());
    }
    if (what == "iPreview.BackColor") {
      QWidget* swatch = picker().findChild<QWidget*>(QStringLiteral("iPreview"));
      return std::int64_t{colorNumber(swatch->grab().toImage().pixelColor(2, 2))};
    }
    return readAction(what);
  }

  std::optional<Value> readAction(const std::string& what) const {
    const std::size_t dot = what.find('.');
    if (!what.starts_with("mnu_") || dot == std::string::npos) return std::nullopt;
    const auto* action = window_->menuBar()->findChild<QAction*>(QString::fromStdString(what.substr(0, dot)));
    if (action == nullptr || action->isSeparator()) return std::nullopt;
    if (what.ends_with(".Caption")) return fromQt(action->text());
    if (what.ends_with(".Enabled")) return action->isEnabled();
    if (what.ends_with(".Checked")) return action->isChecked();
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
