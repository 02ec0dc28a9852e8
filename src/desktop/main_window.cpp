#include "desktop/main_window.h"

#include <QtGui/QScreen>
#include <QtGui/QSessionManager>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <exception>
#include <utility>

#include "desktop/edit_box.h"
#include "desktop/placing.h"
#include "desktop/qt_text.h"
#include "desktop/rescue_dialog.h"
#include "desktop/search_box.h"
#include "desktop/status_place.h"
#include "desktop/told_font.h"
#include "desktop/twips.h"
#include "desktop/view/script_view.h"
#include "platform/system.h"
#include "text/text.h"

namespace dravenna {

namespace {

constexpr int kQuiet = 1000;                                           // milliseconds without input
constexpr std::int32_t kSmallestWidth = 4500, kSmallestHeight = 4000;  // twips, frame included

// "[*]" in a window title is the toolkit's mark of a change; doubled it stands for itself.
QString titleOf(std::u16string_view caption) {
  return toQt(caption).replace(QStringLiteral("[*]"), QStringLiteral("[*][*]"));
}

}  // namespace

MainWindow::MainWindow(TextFiles& files, RegistryCalls& registry, Process& process, RescueFolder* rescue)
    : onBeep(&QApplication::beep),
      process_(process),
      disk_(files),
      rescue_(rescue, disk_),
      principal_(Platform{disk_, registry, process, *this, rescue_}) {
  setObjectName(QStringLiteral("Principal"));
  setAcceptDrops(true);
  buildControls();
  menuBar_ = std::make_unique<MenuBar>(*menuBar(), principal_, [this](MenuBar::Click click) {
    EDT_->takeOver();
    handle([this, click] { (principal_.*click)(); });
  });
  const FormState& form = principal_.form;
  resize(pixels(form.ScaleWidth), pixels(form.ScaleHeight) + menuBar()->sizeHint().height());
  if (const QScreen* on = screen()) new Placing(*this, centredIn(on->availableGeometry()));
  connect(
      qApp, &QGuiApplication::commitDataRequest, this,
      [this](QSessionManager& session) {
        if (!principal_.Modified || !session.allowsInteraction()) return;
        close();
        session.release();
      },
      Qt::DirectConnection);
  statusTimer_.setSingleShot(true);
  quietTimer_.setSingleShot(true);
  quietTimer_.setInterval(kQuiet);
  connect(&quietTimer_, &QTimer::timeout, this, &MainWindow::putAway);
  rescue_.onLoaded = [this](const std::u16string& path) { opened_ = path; };
  // Queued: what is saved takes a notice away.
  rescue_.onFailure = [this](const Failure* failure) {
    const std::u16string notice =
        failure == nullptr ? u"" : readFilled(principal_.registry(), desktop_words::NotRescued, failure->description());
    QMetaObject::invokeMethod(
        this,
        [this, notice] {
          status_.withdraw(std::exchange(notRescued_, notice));
          if (!notice.empty()) status_.setNotice(notice);
          statusTimer_.start();
        },
        Qt::QueuedConnection);
  };
  rescue_.onFind = [this] { QMetaObject::invokeMethod(this, &MainWindow::lookForRescued, Qt::QueuedConnection); };
  connect(&statusTimer_, &QTimer::timeout, this, &MainWindow::showStatus);
  synchronise();
}

MainWindow::~MainWindow() {
  // The views let go of their models first.
  delete searchBox_;
  delete takeCentralWidget();
}

void MainWindow::buildControls() {
  auto* area = new QWidget(this);
  N_ = new ScriptView(principal_.N, area);
  N_->setObjectName(QStringLiteral("N"));
  const auto word = [this](const Setting& setting) { return toQt(read(principal_.registry(), setting)); };
  N_->setAccessibleName(word(desktop_words::ClassScript));
  N_->onMouseUp = [this] {
    EDT_->takeOver();
    handle([this] { principal_.N_MouseUp(); });
  };
  N_->onMenu = [this](QPoint place, std::size_t offset) { showViewMenu(place, offset); };
  N_->hint = [word] { return word(desktop_words::HowToBegin); };
  N_->zoom(static_cast<int>(numberIn(read(principal_.registry(), settings::Zoom))));
  zoomKept_ = N_->zoomed();
  EDT_ = new EditBox(principal_.EDT, area);
  EDT_->setObjectName(QStringLiteral("EDT"));
  EDT_->setAccessibleName(word(desktop_words::BoxName));
  EDT_->setFont(toldFont(true));
  EDT_->setFrame(false);
  EDT_->noticeOfLong = [this](std::size_t characters) {
    return toQt(
        readFilled(principal_.registry(), desktop_words::TooLong, decimal(static_cast<std::int64_t>(characters))));
  };
  EDT_->setTextMargins(3, 0, 3, 0);
  EDT_->setToolTip(QStringLiteral("F5 -> Color"));
  EDT_->onGotFocus = [this] { handle([this] { principal_.EDT_GotFocus(); }); };
  EDT_->onUserEdit = [this] { handle([] {}); };
  QWidget::setTabOrder(N_, EDT_);
  setCentralWidget(area);
  area->installEventFilter(this);
  N_->installEventFilter(this);
  EDT_->installEventFilter(this);
  N_->viewport()->installEventFilter(this);
  installEventFilter(this);
  EDT_->setFocus();
}

void MainWindow::start() {
  create();  // the system makes the window ready meanwhile
  loading_ = true;
  handle([this] { principal_.Form_Load(); });
  loading_ = false;
  pointerChanged();
  started_ = true;
  show();
  formResized();
}

void MainWindow::handle(const std::function<void()>& handlers) {
  ++running_;
  QString failure;
  try {
    handlers();
  } catch (const Failure& error) {
    failure = toQt(error.description());
  } catch (const std::exception& error) {
    failure = QString::fromUtf8(error.what());
  }
  --running_;
  if (running_ == 0) {
    synchronise();
    if (painted_) statusTimer_.start();
    quietTimer_.start();
  }
  if (!failure.isEmpty()) messageBox(u"Error: " + fromQt(failure), kCritical, u"Dravenna");
}

void MainWindow::synchronise() {
  const FormState& form = principal_.form;
  const QString title = titleOf(form.Caption);
  if (windowTitle() != title) setWindowTitle(title);
  menuBar_->synchronise();

  // The form may have given itself another size.
  const QSize wanted(wholePixels(form.Width), wholePixels(form.Height));
  if (started_ && wanted != toldSize_) {
    const QSize change = wanted - toldSize_;
    toldSize_ = wanted;
    resize(size() + change);
  }

  const RichTextBox& N = principal_.N;
  const TextBox& EDT = principal_.EDT;
  N_->setFocusPolicy(N.TabStop ? Qt::StrongFocus : Qt::ClickFocus);
  N_->setGeometry(0, pixels(N.Top), pixels(N.Width), pixels(N.Height));
  EDT_->setGeometry(0, pixels(EDT.Top), pixels(EDT.Width), pixels(EDT.Height));
  EDT_->synchronise();
  N_->synchronise();
  if (searchBox_ != nullptr) {
    searchBox_->synchronise();
    searchBox_->spare(textOnScreen());
  }
}

void MainWindow::showStatus() {
  describe();
  if (!looked_) lookForRescued();
  const Status::Parts parts = status_.parts();
  if (statusPlace_ == nullptr) {
    if (!status_.wanted() && parts.rescued.empty()) return;
    const QString pageHint = toQt(read(principal_.registry(), desktop_words::OtherPage));
    statusPlace_ = new StatusPlace(*menuBar(), this, pageHint);
    statusPlace_->onRescued = [this] { showRescued(); };
    statusPlace_->onPage = [this](QPoint below) {
      if (!takesInput() || principal_.ScriptPath.empty()) return;
      auto* menu = new QMenu(this);
      menu->setAttribute(Qt::WA_DeleteOnClose);
      addPages(*menu);
      menu->popup(below);
    };
  }
  statusPlace_->setParts(parts);
}

void MainWindow::putAway() {
  rescue_.flush();
  if (!opened_.empty()) process_.documentOpened(std::exchange(opened_, {}));
  if (N_->zoomed() == zoomKept_) return;
  zoomKept_ = N_->zoomed();
  write(principal_.registry(), settings::Zoom, decimal(zoomKept_));
}

void MainWindow::describe() {
  const auto tell = [](QWidget& control, const QString& words) {
    if (control.accessibleDescription() != words) control.setAccessibleDescription(words);
  };
  const RichTextBox& N = principal_.N;
  const auto place = N.SelLength() > 0 ? static_cast<std::size_t>(N.SelStart()) : N_->caret();
  const std::u16string current = status_.spokenText();
  tell(*EDT_, toQt(current));
  if (searchBox_ != nullptr && principal_.Ini > 0) searchBox_->describe(toQt(current + u". ") + toQt(N.SelText()));
  tell(*N_, N.Text().empty() ? N_->hint() : toQt(status_.spokenPlace(place)));
}

void MainWindow::lookForRescued() {
  looked_ = true;
  status_.setRescued(rescue_.finds().size());
  statusTimer_.start();
}

void MainWindow::showRescued() {
  if (!takesInput()) return;
  RescueDialog dialog(rescue_, principal_.registry(), this);
  if (dialog.exec() == QDialog::Accepted) restore(dialog.chosen());
  lookForRescued();
}

void MainWindow::restore(const Rescue::Find& find) {
  handle([&] {
    if (find.texts > 0) {
      const Rescue::Restored done =
          rescue_.restore(find, principal_, [this](const std::u16string& path) { open(path); });
      const auto number = [](std::size_t value) { return decimal(static_cast<std::int64_t>(value)); };
      const std::u16string notice = readFilled(principal_.registry(), desktop_words::TextsRestored, number(done.texts));
      status_.setNotice(replaceAll(notice, u"%2", number(done.of)));
      return;
    }
    // An old content goes where the user wants it.
    CommonDialog dialog;
    dialog.FileName = find.path + u".old";
    dialog.Flags = kAskBeforeOverwrite;
    dialog.Filter = u"All files (*.*)|*.*";
    pick(dialog, true);
    if (!dialog.FileName.empty()) replaceBytes(dialog.FileName, rescue_.contents(find));
  });
}

void MainWindow::tellSize() {
  FormState& form = principal_.form;
  form.WindowState = isMinimized() ? 1 : 0;
  toldSize_ = frameGeometry().size();
  form.Width = twips(toldSize_.width());
  form.Height = twips(toldSize_.height());
  form.ScaleWidth = twips(centralWidget()->width());
  form.ScaleHeight = twips(centralWidget()->height());
  const QSize frame = frameGeometry().size() - size();
  setMinimumSize(QSize(wholePixels(kSmallestWidth), wholePixels(kSmallestHeight)) - frame);
}

void MainWindow::formResized() {
  if (!started_) return;
  tellSize();
  handle([this] { principal_.Form_Resize(); });
}

}  // namespace dravenna
