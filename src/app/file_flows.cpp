#include "app/principal.h"

namespace dravenna {

void Principal::mnu_Abrir_Click() { OpenScript(); }

void Principal::OpenScript() {
  try {
    bool declined = false;
    if (Modified) {
      const Answer answer = say(words::mnuSaveBeforeOpen, kQuestionYesNoCancel);
      if (answer == Answer::Cancel) return;
      if (answer == Answer::Yes) Salvar();
      declined = answer == Answer::No;
    }
    CMD.FileName.clear();
    CMD.DialogTitle = read(registry_, words::dialogOpen);
    CMD.Filter = u"Npcs (*.txt)|*.txt|All files (*.*)|*.*";
    if (!ScriptPath.empty()) {
      const std::size_t separator = ScriptPath.rfind(platform_.process.pathSeparator());
      CMD.InitDir = separator == std::u16string::npos ? u"" : ScriptPath.substr(0, separator + 1);
    }
    platform_.windowing.ShowOpen(CMD);
    if (CMD.FileName.empty()) return;
    if (declined) platform_.commits.declined();
    ScriptPath = CMD.FileName;
    write(registry_, settings::File, ScriptPath);
    LoadScript();
  } catch (const Failure&) {
    // A cancelled dialog is no event.
  }
}

void Principal::mnu_Guardar_Click() {
  if (!ScriptPath.empty() && ScriptLoaded) {
    Salvar();
  } else {
    say(words::NoFileSelected, kWarning);
  }
}

void Principal::Salvar() {
  if (!ScriptLoaded) {
    platform_.windowing.beep();
    return;
  }
  const std::optional<Failure> kept = attempt([&] {
    writeScript(N.Text());
    Modified = false;
    say(read(registry_, words::FileSaved) + u"\r\n\r\n" + ScriptPath, kInformation);
  });
  if (kept) sayFailure(*kept);
}

void Principal::writeScript(std::u16string_view text) {
  platform_.commits.replacing(ScriptPath);
  const auto file = platform_.files.CreateTextFile(ScriptPath, Writing::Replace);
  file->Write(text);
  file->Close();
  platform_.commits.saved();
}

void Principal::mnu_Salir_Click() { platform_.windowing.unloadMainForm(); }

void Principal::Form_Unload() {
  if (Modified) {
    if (say(words::SaveBeforeExit, kQuestionYesNo) == Answer::Yes) {
      Salvar();
    } else {
      platform_.commits.declined();
    }
  }
  closeSearch();
  if (!LastSearch.empty()) write(registry_, settings::LastSearch, LastSearch);
}

}  // namespace dravenna
