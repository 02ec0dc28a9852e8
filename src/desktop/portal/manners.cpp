#include "desktop/portal/manners.h"

#include <QtCore/QLibraryInfo>
#include <QtCore/QLocale>
#include <QtGui/QPalette>
#include <QtGui/QScreen>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenuBar>
#include <cmath>

#include "desktop/main_window.h"
#include "desktop/portal/font_name.h"

namespace dravenna {

namespace {

constexpr double kUsualDots = 96;  // an inch

// Light is the toolkit's own.
QPalette paletteOf(const DesktopLook& look) {
  if (!look.dark && !look.highContrast) return {};
  if (!look.highContrast) {
    QPalette dark(QColor(0x3C, 0x3C, 0x3C), QColor(0x2A, 0x2A, 0x2A));
    dark.setColor(QPalette::Base, QColor(0x1E, 0x1E, 0x1E));
    dark.setColor(QPalette::AlternateBase, QColor(0x26, 0x26, 0x26));
    dark.setColor(QPalette::ToolTipBase, QColor(0x3C, 0x3C, 0x3C));
    dark.setColor(QPalette::ToolTipText, Qt::white);
    dark.setColor(QPalette::Highlight, QColor(0x30, 0x8C, 0xC6));
    dark.setColor(QPalette::HighlightedText, Qt::white);
    dark.setColor(QPalette::Link, QColor(0x6C, 0xB4, 0xFF));
    dark.setColor(QPalette::PlaceholderText, QColor(0xA0, 0xA0, 0xA0));
    return dark;
  }
  const QColor ground = look.dark ? Qt::black : Qt::white, ink = look.dark ? Qt::white : Qt::black;
  QPalette strong(look.dark ? QColor(0x38, 0x38, 0x38) : QColor(0xE0, 0xE0, 0xE0), ground);  // buttons are seen
  for (const auto role : {QPalette::Base, QPalette::AlternateBase, QPalette::ToolTipBase})
    strong.setColor(role, ground);
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText,
                          QPalette::Mid, QPalette::Dark, QPalette::Shadow}) {
    strong.setColor(role, ink);
  }
  for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
    strong.setColor(QPalette::Disabled, role, Qt::gray);
  }
  strong.setColor(QPalette::Highlight, look.dark ? QColor(0xFF, 0xFF, 0x00) : QColor(0x00, 0x00, 0x80));
  strong.setColor(QPalette::HighlightedText, ground);
  return strong;
}

// On X11 the desktop puts the size of its letters into the density of the screen.
bool densityTells(const QScreen& screen, double letters) {
  if (QGuiApplication::platformName() != QLatin1String("xcb")) return false;
  const double density = screen.devicePixelRatio() * screen.logicalDotsPerInch() / kUsualDots / letters;
  return std::abs(density - std::round(density)) < 0.05;
}

}  // namespace

void DesktopManners::begin() {
  if (begun_) return;
  begun_ = true;
  usualFont_ = QApplication::font();
  for (const QString& folder : {QLibraryInfo::path(QLibraryInfo::TranslationsPath),
                                QCoreApplication::applicationDirPath() + QStringLiteral("/translations")}) {
    if (!words_.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"), folder)) continue;
    QCoreApplication::installTranslator(&words_);
    break;
  }
  portal_ = makeDesktopPortal();
  if (portal_ == nullptr) return;
  portal_->watchLook([this](const DesktopLook& look) { show(look); });
  window_.pickElsewhere = [this](CommonDialog& dialog, bool saving, const auto& accepts) {
    return portal_->pick(window_, dialog, saving, accepts);
  };
}

void DesktopManners::show(const DesktopLook& look) {
  if (look == shown_) return;
  if (look.dark != shown_.dark || look.highContrast != shown_.highContrast) {
    QApplication::setPalette(paletteOf(look));
  }
  if (look.letters != shown_.letters || look.font != shown_.font) {
    const int bar = window_.menuBar()->sizeHint().height();
    QFont font = fontNamed(look.font, usualFont_);
    if (!densityTells(*window_.screen(), look.letters)) font.setPointSizeF(font.pointSizeF() * look.letters);
    QApplication::setFont(font);
    // The room below the menu bar keeps its size.
    const int higher = window_.menuBar()->sizeHint().height() - bar;
    if (!window_.isMaximized() && !window_.isFullScreen()) window_.resize(window_.width(), window_.height() + higher);
  }
  shown_ = look;
}

}  // namespace dravenna
