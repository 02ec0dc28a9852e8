#pragma once

#include <QtCore/QString>
#include <functional>
#include <memory>
#include <optional>

#include "platform/controls.h"

class QWidget;

namespace dravenna {

// How the desktop looks.
struct DesktopLook {
  bool dark = false;
  bool highContrast = false;
  double letters = 1;  // their size against the usual one
  QString font;        // "Cantarell Bold 11", or "Noto Sans,11,..." in the toolkit's form; empty where it is not told
  bool operator==(const DesktopLook&) const = default;
};

// What the desktop offers to any program by way of its portal.
class DesktopPortal {
 public:
  virtual ~DesktopPortal() = default;

  // Asks how the desktop looks, and tells the answer and each change.
  virtual void watchLook(std::function<void(const DesktopLook&)> tell) = 0;

  // The desktop's own file dialog in the place of the toolkit's, with the same contract (showFileDialog). Nothing where
  // the desktop has none.
  virtual std::optional<bool> pick(QWidget& window, CommonDialog& dialog, bool saving,
                                   const std::function<bool(const std::u16string& path)>& accepts) = 0;
};

// Null where there is none.
std::unique_ptr<DesktopPortal> makeDesktopPortal();

}  // namespace dravenna
