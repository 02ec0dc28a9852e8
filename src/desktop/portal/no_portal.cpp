#include "desktop/portal/portal.h"

namespace dravenna {

std::unique_ptr<DesktopPortal> makeDesktopPortal() { return nullptr; }

}  // namespace dravenna
