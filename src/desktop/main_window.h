#pragma once

#include <QtCore/QTimer>
#include <QtWidgets/QMainWindow>
#include <functional>
#include <memory>
#include <optional>

#include "app/disk_watch.h"
#include "app/principal.h"
#include "app/rescue.h"
#include "app/status.h"
#include "desktop/menu_bar.h"
#include "platform/windowing.h"

class QMenu;

namespace dravenna {

class ColorPickDialog;
class EditBox;
class ScriptView;
class SearchBox;
class StatusPlace;

// The main form's window. The form is the truth: what it has changed is shown when a handler has returned, before each
// modal call and before the focus moves.
class MainWindow : public QMainWindow, private Windowing {
 public:
  // Without a rescue folder, nothing is kept there.
  MainWindow(TextFiles& files, RegistryCalls& registry, Process& process, RescueFolder* rescue = nullptr);
  ~MainWindow() override;

  // Runs the form's start-up, then shows the window; the script is there with the first paint.
  void start();

  // OpenScript whose dialog is answered by this path.
  void open(const std::u16string& path);

  // Message boxes are answered by their default buttons and told to this function instead of being shown.
  void answerBy(std::function<void(std::u16string_view text)> tell) { tellMessage_ = std::move(tell); }
  // Runs before each message box and each file dialog.
  std::function<void()> beforeBox;
  // Another file dialog than the toolkit's, with its contract (showFileDialog); nothing where it cannot be shown.
  std::function<std::optional<bool>(CommonDialog& dialog, bool saving,
                                    const std::function<bool(const std::u16string& path)>& accepts)>
      pickElsewhere;
  // What sounds the beep.
  std::function<void()> onBeep;

  Principal& principal() { return principal_; }
  ScriptView& scriptView() { return *N_; }
  EditBox& editBox() { return *EDT_; }
  SearchBox* searchBox() { return searchBox_; }              // null while it is closed
  ColorPickDialog* colorPickDialog() { return colorPick_; }  // null while it is closed

  // Runs handlers of the form, then shows what they did. All input comes in by this way.
  void handle(const std::function<void()>& handlers);
  void synchronise();
  // Brings the status place up to date, which otherwise follows when all else is on the screen.
  void showStatus();

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;
  void changeEvent(QEvent* event) override;
  void closeEvent(QCloseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  // Windowing.
  Answer messageBox(std::u16string_view text, int flags, std::u16string_view title) override;
  void ShowOpen(CommonDialog& dialog) override;
  void ShowSave(CommonDialog& dialog) override;
  void beep() override;
  void pointerChanged() override;
  void SetFocus(Control control) override;
  void showSearchBox(FrmSearch& box) override;
  void unloadSearchBox(FrmSearch& box) override;
  void showColorPick(ColorPick& picker) override;
  void unloadMainForm() override;

  void buildControls();
  void tellSize();
  void formResized();
  bool keyPressed(const QObject* object, QKeyEvent& event);
  bool ownKey(const QKeyEvent& event);  // one that the form has no use for
  void showChanges();
  void showNextErrorLine();
  void showViewMenu(QPoint place, std::size_t offset);
  void addPages(QMenu& menu);  // the code pages
  Control focusedControl() const;
  QRect textOnScreen();  // what is selected in N, as far as it is seen
  void pick(CommonDialog& dialog, bool saving);
  bool takesInput() const;
  std::vector<std::u16string> scriptsIn(const QDropEvent& drop);
  void reloadIn(int codePage);
  void openDropped(const std::vector<std::u16string>& paths);

  void describe();  // to screen readers, what colour tells the eye
  void putAway();   // what nobody waits for
  void lookForRescued();
  void showRescued();
  void restore(const Rescue::Find& find);

  Process& process_;
  std::u16string opened_;  // to go into the desktop's list of recent files
  DiskWatch disk_;
  Rescue rescue_;
  Principal principal_;
  Status status_{principal_, disk_};
  ScriptView* N_ = nullptr;
  EditBox* EDT_ = nullptr;
  std::unique_ptr<MenuBar> menuBar_;
  StatusPlace* statusPlace_ = nullptr;  // null before the first paint, and where the settings do not want it
  SearchBox* searchBox_ = nullptr;
  ColorPickDialog* colorPick_ = nullptr;
  std::function<void(std::u16string_view)> tellMessage_;
  std::u16string answer_;      // of the next open dialog; empty: the user is asked
  QSize toldSize_;             // the outer size that the form knows of, in pixels
  int zoomKept_ = 0;           // in the settings
  std::u16string notRescued_;  // the notice
  int running_ = 0;            // handlers on the stack
  bool started_ = false;
  bool loading_ = false;  // the start-up runs: the busy pointer would cost more than it shows
  bool unloaded_ = false;
  bool busyShown_ = false;
  bool painted_ = false;  // N, for the first time
  bool looked_ = false;   // for what was rescued
  QTimer statusTimer_;    // the status follows when all else is on the screen
  QTimer quietTimer_;     // the user has paused
};

}  // namespace dravenna
