#include "app/principal.h"

namespace dravenna {

void Principal::mnu_Shell_Click() {
  mnu_Shell.Checked = !mnu_Shell.Checked;
  if (mnu_Shell.Checked) {
    const std::u16string command =
        u"\"" + platform_.process.programFolder() + platform_.process.programName() + u"\"" + u" %1";
    registry_.SetRegValue(HKEY_CLASSES_ROOT_ID, kVerbCommandKey, u"", command);
  } else {
    registry_.DeleteRegKey(HKEY_CLASSES_ROOT_ID, kVerbCommandKey);
    registry_.DeleteRegKey(HKEY_CLASSES_ROOT_ID, kVerbKey);
  }
  platform_.process.shellVerbChanged(mnu_Shell.Checked);
}

}  // namespace dravenna
