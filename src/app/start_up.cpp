#include <cmath>

#include "app/principal.h"
#include "app/version.h"
#include "text/text.h"

namespace dravenna {

void Principal::Form_Load() {
  const std::optional<Failure> kept = attempt([&] {
    ScriptPath = read(registry_, settings::File);
    readFileCaptions();
    mnu_Shell.Checked = !registry_.GetRegValue(HKEY_CLASSES_ROOT_ID, kVerbCommandKey, u"", u"").empty();
    mnu_Ayuda.Caption = read(registry_, words::mnuHelp);
    mnu_AcercaD.Caption = read(registry_, words::mnuAbout);
    mnu_NavigationMode.Caption = read(registry_, words::mnuNavMode);
    const double storedMode = numberIn(read(registry_, settings::NavMode));
    mnu_EditMode1.Checked = storedMode == 0;
    mnu_EditMode2.Checked = storedMode == 1;
    mnu_EditMode3.Checked = storedMode == 2;
    mnu_EditMode1.Caption = read(registry_, words::NavSecure);
    mnu_EditMode2.Caption = read(registry_, words::NavNormal);
    mnu_EditMode3.Caption = read(registry_, words::NavAdvanced);
    LastSearch = read(registry_, settings::LastSearch);
    NavMode = static_cast<std::int16_t>(std::nearbyint(numberIn(read(registry_, settings::NavMode))));
    AllowedCommands = read(registry_, settings::AllowedCommands);
    SpecialAllowedCommands = read(registry_, settings::SpecialAllowedCommands);

    const std::u16string named = replaceAll(platform_.process.commandLine(), u"\"", u"");
    if (!named.empty()) {
      if (platform_.files.fileExists(named)) {
        ScriptPath = named;
      } else {
        say(readFilled(registry_, words::FileNotFound, named), kCritical);
      }
    }
    CMD.CancelError = true;
    if (!ScriptPath.empty()) LoadScript();
    Form_Resize();
  });
  if (kept) platform_.windowing.messageBox(u"Error: " + kept->description(), 0, u"");
}

void Principal::readFileCaptions() {
  mnu_Archivo.Caption = read(registry_, words::mnuFile);
  mnu_Abrir.Caption = read(registry_, words::mnuOpen);
  mnu_Export.Caption = read(registry_, words::mnuExport);
  mnu_Import.Caption = read(registry_, words::mnuImport);
  mnu_Guardar.Caption = read(registry_, words::mnuSave);
  mnu_Salir.Caption = read(registry_, words::mnuExit);
  mnu_Edition.Caption = read(registry_, words::mnuEdition);
  mnu_Search.Caption = read(registry_, words::mnuSearch);
  mnu_Opciones.Caption = read(registry_, words::mnuOptions);
  mnu_Shell.Caption = read(registry_, words::mnuShellCaption);
}

void Principal::mnu_AcercaD_Click() {
  const std::u16string version =
      decimal(kVersionMajor) + u"." + decimal(kVersionMinor) + u"." + decimal(kVersionRevision);
  say(u"Dravenna " + version + u" for eAthena / Nezumi\r\n\r\nOrvane\r\n      (no web site)", kInformation);
}

void Principal::setNavMode(std::int16_t mode) {
  NavMode = mode;
  mnu_EditMode1.Checked = mode == 0;
  mnu_EditMode2.Checked = mode == 1;
  mnu_EditMode3.Checked = mode == 2;
  write(registry_, settings::NavMode, decimal(mode));
}

void Principal::mnu_EditMode1_Click() { setNavMode(0); }
void Principal::mnu_EditMode2_Click() { setNavMode(1); }
void Principal::mnu_EditMode3_Click() { setNavMode(2); }

}  // namespace dravenna
