#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QUrl>
#include <QtDBus/QDBusArgument>
#include <QtDBus/QDBusConnection>
#include <QtDBus/QDBusMessage>
#include <QtDBus/QDBusMetaType>
#include <QtDBus/QDBusPendingCallWatcher>
#include <QtDBus/QDBusPendingReply>
#include <QtGui/QGuiApplication>
#include <QtWidgets/QDialog>
#include <utility>

#include "desktop/file_dialog.h"
#include "desktop/portal/portal.h"
#include "desktop/qt_text.h"

namespace dravenna {

// Of a file dialog: a name with its patterns, as the portal takes them.
struct PortalPattern {
  uint kind = 0;  // a pattern of file names
  QString pattern;
};
struct PortalFilter {
  QString name;
  QList<PortalPattern> patterns;
};

namespace {

using Settings = QMap<QString, QVariantMap>;

const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kObject = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kSettings = QStringLiteral("org.freedesktop.portal.Settings");
const QString kFileChooser = QStringLiteral("org.freedesktop.portal.FileChooser");
const QString kRequest = QStringLiteral("org.freedesktop.portal.Request");
const QString kAppearance = QStringLiteral("org.freedesktop.appearance");
const QString kInterface = QStringLiteral("org.gnome.desktop.interface");
const QString kGeneral = QStringLiteral("org.kde.kdeglobals.General");

constexpr int kNoDialog = 2;  // a result beside the dialog's two

// Asking for a bus where there is none would start one.
bool hasBus() {
  return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
         QFile::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
}

DesktopLook lookIn(const Settings& settings) {
  const QVariantMap appearance = settings.value(kAppearance);
  DesktopLook look;
  look.dark = appearance.value(QStringLiteral("color-scheme")).toUInt() == 1;
  look.highContrast = appearance.value(QStringLiteral("contrast")).toUInt() == 1;
  const QVariantMap interface = settings.value(kInterface);
  const double letters = interface.value(QStringLiteral("text-scaling-factor")).toDouble();
  if (letters >= 0.5 && letters <= 3) look.letters = letters;
  look.font = interface.value(QStringLiteral("font-name")).toString();
  if (look.font.isEmpty()) look.font = settings.value(kGeneral).value(QStringLiteral("font")).toString();
  return look;
}

// "Npcs (*.txt)|*.txt|All files (*.*)|*.*". To the portal, "*.*" is a name with a dot in it.
QList<PortalFilter> filtersIn(const QString& pairs) {
  QList<PortalFilter> filters;
  const QStringList parts = pairs.split(u'|');
  for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
    PortalFilter filter{parts.at(i), {}};
    for (QString pattern : parts.at(i + 1).split(u';')) {
      if (pattern == QLatin1String("*.*")) pattern = QStringLiteral("*");
      filter.patterns.append({0, pattern});
    }
    filters.append(filter);
  }
  return filters;
}

QString parentOf(QWidget& window) {
  return QGuiApplication::platformName() == QLatin1String("xcb") ? QStringLiteral("x11:%1").arg(window.winId(), 0, 16)
                                                                 : QString();
}

// Holds the main window while the desktop's dialog is shown, and takes its answer.
class Request final : public QDialog {
  Q_OBJECT

 public:
  explicit Request(QWidget& window) : QDialog(&window) { setAttribute(Qt::WA_DontShowOnScreen); }
  QStringList addresses;

 public Q_SLOTS:
  void answered(uint response, const QVariantMap& results) {
    addresses = results.value(QStringLiteral("uris")).toStringList();
    done(response == 0 && !addresses.isEmpty() ? Accepted : Rejected);
  }
};

class DbusPortal final : public QObject, public DesktopPortal {
  Q_OBJECT

 public:
  DbusPortal() {
    qDBusRegisterMetaType<Settings>();
    qDBusRegisterMetaType<PortalPattern>();
    qDBusRegisterMetaType<QList<PortalPattern>>();
    qDBusRegisterMetaType<PortalFilter>();
    qDBusRegisterMetaType<QList<PortalFilter>>();
  }

  void watchLook(std::function<void(const DesktopLook&)> tell) override {
    tell_ = std::move(tell);
    bus_.connect(kService, kObject, kSettings, QStringLiteral("SettingChanged"), this, SLOT(ask()));
    ask();
  }

  std::optional<bool> pick(QWidget& window, CommonDialog& dialog, bool saving,
                           const std::function<bool(const std::u16string& path)>& accepts) override {
    const QFileInfo offered(toQt(dialog.FileName));
    QVariantMap options{
        {QStringLiteral("modal"), true},
        {QStringLiteral("current_folder"), QFile::encodeName(startFolder(toQt(dialog.InitDir), offered)).append('\0')},
    };
    if (!dialog.Filter.empty()) {
      options.insert(QStringLiteral("filters"), QVariant::fromValue(filtersIn(toQt(dialog.Filter))));
    }
    if (saving) options.insert(QStringLiteral("current_name"), offered.fileName());
    for (;;) {
      Request request(window);
      switch (ask(request, saving, toQt(dialog.DialogTitle), options)) {
        case QDialog::Accepted:
          break;
        case QDialog::Rejected:
          dialog.FileName.clear();
          return false;
        default:
          return std::nullopt;
      }
      const std::u16string picked = localPath(QUrl::fromEncoded(request.addresses.constFirst().toUtf8()));
      if (!accepts(picked)) continue;
      dialog.FileName = picked;
      return true;
    }
  }

 private Q_SLOTS:
  void ask() {
    QDBusMessage question = QDBusMessage::createMethodCall(kService, kObject, kSettings, QStringLiteral("ReadAll"));
    question << QStringList{kAppearance, kInterface, kGeneral};
    auto* answer = new QDBusPendingCallWatcher(bus_.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, [this, answer] {
      answer->deleteLater();
      const QDBusPendingReply<Settings> reply = *answer;
      if (reply.isValid()) tell_(lookIn(reply.value()));
    });
  }

 private:
  int ask(Request& request, bool saving, const QString& title, QVariantMap options) {
    const QString token = QStringLiteral("dravenna%1").arg(++requests_);
    const QString path = QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2")
                             .arg(bus_.baseService().mid(1).replace(u'.', u'_'), token);
    bus_.connect(kService, path, kRequest, QStringLiteral("Response"), &request, SLOT(answered(uint, QVariantMap)));
    options.insert(QStringLiteral("handle_token"), token);
    QDBusMessage question = QDBusMessage::createMethodCall(
        kService, kObject, kFileChooser, saving ? QStringLiteral("SaveFile") : QStringLiteral("OpenFile"));
    question << parentOf(*request.parentWidget()) << title << options;
    const QDBusPendingCallWatcher answer(bus_.asyncCall(question));
    connect(&answer, &QDBusPendingCallWatcher::finished, &request, [&] {
      if (answer.isError()) request.done(kNoDialog);
    });
    return request.exec();
  }

  QDBusConnection bus_ = QDBusConnection::sessionBus();
  std::function<void(const DesktopLook&)> tell_;
  int requests_ = 0;
};

}  // namespace

QDBusArgument& operator<<(QDBusArgument& to, const PortalPattern& pattern) {
  to.beginStructure();
  to << pattern.kind << pattern.pattern;
  to.endStructure();
  return to;
}
const QDBusArgument& operator>>(const QDBusArgument& from, PortalPattern& pattern) {
  from.beginStructure();
  from >> pattern.kind >> pattern.pattern;
  from.endStructure();
  return from;
}
QDBusArgument& operator<<(QDBusArgument& to, const PortalFilter& filter) {
  to.beginStructure();
  to << filter.name << filter.patterns;
  to.endStructure();
  return to;
}
const QDBusArgument& operator>>(const QDBusArgument& from, PortalFilter& filter) {
  from.beginStructure();
  from >> filter.name >> filter.patterns;
  from.endStructure();
  return from;
}

std::unique_ptr<DesktopPortal> makeDesktopPortal() {
  if (!hasBus() || !QDBusConnection::sessionBus().isConnected()) return nullptr;
  return std::make_unique<DbusPortal>();
}

}  // namespace dravenna

#include "dbus_portal.moc"
