#include <QtCore/QOperatingSystemVersion>
#include <QtCore/QTimer>
#include <QtGui/QIcon>
#include <QtWidgets/QApplication>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>

#include "app/version.h"
#include "desktop/arguments.h"
#include "desktop/main_window.h"
#include "desktop/portal/manners.h"
#include "desktop/program_style.h"
#include "desktop/qt_text.h"
#include "desktop/view/script_view.h"
#include "platform/system.h"
#include "settings/settings_transfer.h"
#include "text/text.h"

namespace dravenna {

namespace {

constexpr char kHelp[] =
    "Usage: dravenna [SCRIPT]\n"
    "       dravenna --screenshot FILE.png [SCRIPT]   draw the window into a picture; needs no display\n"
    "       dravenna --import-settings FILE           put exported settings or a language file into the store\n"
    "       dravenna --export-settings FILE           write the program's settings into a file\n"
    "       dravenna --version | --help\n"
    "\n"
    "Opens an NPC script for translation; without SCRIPT, the one of the last time.\n"
    "DRAVENNA_CODEPAGE names the code page of scripts (1252, 874, utf-8, ...), DRAVENNA_REGISTRY the settings file.\n";

int complain(std::u16string_view text, int status) {
  std::fprintf(stderr, "dravenna: %s\n", toUtf8(text).c_str());
  return status;
}

int transferSettings(const Arguments& arguments) {
  try {
    const std::unique_ptr<RegistryCalls> registry = makeRegistry();
    if (arguments.action == Arguments::Action::ExportSettings) {
      replaceBytes(arguments.file, exportSettings(*registry));
      return 0;
    }
    const ImportedSettings done = importSettings(readBytes(arguments.file), *registry);
    if (done.verbStored) makeProcess({})->shellVerbChanged(true);
    std::printf("%zu values stored\n", done.values);
    return 0;
  } catch (const Failure& failure) {
    return complain(failure.description(), 1);
  }
}

// The toolkit ends the program by an abort when there is no display; this ends it by a word and a status. Its warnings
// are of use only then.
void tellToolkitMessage(QtMsgType type, const QMessageLogContext&, const QString& message) {
  static std::string warnings;
  const std::string line = "dravenna: " + message.toStdString() + "\n";
  if (type == QtCriticalMsg) std::fputs(line.c_str(), stderr);
  if (type == QtWarningMsg) warnings += line;
  if (type != QtFatalMsg) return;
  std::fputs((warnings + line).c_str(), stderr);
  std::_Exit(1);
}

// Not on Windows and macOS, where there is always one, and the toolkit has no fonts without it.
bool mayLackDisplay() { return QOperatingSystemVersion::currentType() == QOperatingSystemVersion::Unknown; }

// Each of these costs milliseconds or megabytes before the first paint and gives this program nothing.
void trimToolkit() {
  const auto setDefault = [](const char* name, const char* value) {
    if (!qEnvironmentVariableIsSet(name)) qputenv(name, value);
  };
  setDefault("QT_XCB_GL_INTEGRATION", "none");
  if (mayLackDisplay()) {
    setDefault("QT_QPA_PLATFORMTHEME", "generic");
  }
  QCoreApplication::setAttribute(Qt::AA_DontUseNativeMenuBar);
  QApplication::setStyle(new ProgramStyle);
}

QIcon programIcon() {
  QIcon icon;
  for (const int size : {16, 24, 32, 48, 64, 128, 256}) {
    icon.addFile(QStringLiteral(":/icons/dravenna-%1.png").arg(size), QSize(size, size));
  }
  return icon;
}

// Calls a function when the first paint of the view is on the screen.
class FirstPaint final : public QObject {
 public:
  FirstPaint(QWidget& view, std::function<void()> then) : QObject(&view), then_(std::move(then)) {
    view.installEventFilter(this);
  }
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::Paint && !seen_) {
      seen_ = true;
      QTimer::singleShot(0, object, then_);
    }
    return false;
  }

 private:
  std::function<void()> then_;
  bool seen_ = false;
};

int drawPicture(MainWindow& window, const std::u16string& file) {
  window.answerBy([](std::u16string_view text) { complain(text, 0); });
  window.start();
  QApplication::processEvents();
  window.showStatus();
  if (!window.grab().save(toQt(file), "PNG")) return complain(u"cannot write the picture " + file, 1);
  return 0;
}

// In the page that the environment names, else the settings, else the system or its locale.
std::unique_ptr<TextFiles> textFilesFor(RegistryCalls& calls) {
  Registry registry(calls);
  const std::pair<std::u16string, std::string> wishes[] = {
      {u"DRAVENNA_CODEPAGE", environmentVariable("DRAVENNA_CODEPAGE")},
      {u"CodePage", toUtf8(read(registry, settings::CodePage))}};
  for (const auto& [name, wish] : wishes) {
    if (wish.empty()) continue;
    if (const CodePagePtr page = codePageByName(wish)) return makeTextFiles(page);
    complain(name + u": " + fromUtf8(wish) + u" is no code page that is supported", 0);
  }
  return makeTextFiles(systemCodePage(), systemHasCodePage() ? Utf8Scripts::AsAllOthers : Utf8Scripts::Recognised);
}

int runWindow(const Arguments& arguments, char** argv, std::chrono::steady_clock::time_point began) {
  const bool picture = arguments.action == Arguments::Action::Screenshot;
  qInstallMessageHandler(tellToolkitMessage);
  if (picture && mayLackDisplay() && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
    qputenv("QT_QPA_PLATFORM", "offscreen");
  trimToolkit();
  int argc = 1;  // the words are the form's, not the toolkit's
  QApplication application(argc, argv);
  QCoreApplication::setApplicationName(QStringLiteral("dravenna"));
  QGuiApplication::setDesktopFileName(QStringLiteral("org.orvane.Dravenna"));

  const std::unique_ptr<RegistryCalls> registry = makeRegistry();
  const std::unique_ptr<TextFiles> files = textFilesFor(*registry);
  const std::unique_ptr<Process> process = makeProcess(arguments.rest);
  const std::unique_ptr<RescueFolder> rescue = picture ? nullptr : makeRescueFolder();
  MainWindow window(*files, *registry, *process, rescue.get());
  if (picture) return drawPicture(window, arguments.file);
  DesktopManners manners(window);
  window.beforeBox = [&manners] { manners.begin(); };
  const FirstPaint painted(*window.scriptView().viewport(), [&] {
    if (arguments.action == Arguments::Action::MeasureStart) {
      const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - began;
      std::fprintf(stderr, "%.1f ms from main() to the end of the first paint\n", time.count());
      std::_Exit(0);
    }
    window.setWindowIcon(programIcon());
    manners.begin();
  });
  // A box of the start-up, closed before there is a window, does not end the program.
  QGuiApplication::setQuitOnLastWindowClosed(false);
  window.start();
  QGuiApplication::setQuitOnLastWindowClosed(true);
  return QApplication::exec();
}

int run(const Arguments& arguments, char** argv, std::chrono::steady_clock::time_point began) {
  switch (arguments.action) {
    case Arguments::Action::Help:
      std::fputs(kHelp, stdout);
      return 0;
    case Arguments::Action::Version:
      std::printf("Dravenna %d.%d.%d\n", kVersionMajor, kVersionMinor, kVersionRevision);
      return 0;
    case Arguments::Action::Wrong:
      std::fputs(kHelp, stderr);
      return complain(arguments.complaint, 2);
    case Arguments::Action::ImportSettings:
    case Arguments::Action::ExportSettings:
      return transferSettings(arguments);
    default:
      return runWindow(arguments, argv, began);
  }
}

}  // namespace

}  // namespace dravenna

int main(int argc, char** argv) {
  const auto began = std::chrono::steady_clock::now();
  std::vector<std::u16string> words;
  for (const std::string& word : dravenna::commandWords(argc, argv)) words.push_back(dravenna::fromUtf8(word));
  return dravenna::run(dravenna::parseArguments(std::move(words)), argv, began);
}
