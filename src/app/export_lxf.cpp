#include "app/principal.h"
#include "exchange/records.h"
#include "text/text.h"

namespace dravenna {

std::u16string Principal::lxfPath() const {
  const std::size_t dot = ScriptPath.rfind(u'.');
  return (dot == std::u16string::npos ? std::u16string() : ScriptPath.substr(0, dot + 1)) + u"lxf";
}

void Principal::mnu_Export_Click() {
  try {
    CMD.Filter = u"LXF (*.lxf)|*.lxf";
    CMD.DialogTitle = kTitle;
    CMD.InitDir = ScriptPath;
    CMD.Flags = kAskBeforeOverwrite;
    CMD.FileName = lxfPath();
    platform_.windowing.ShowSave(CMD);
    if (!CMD.FileName.empty()) ExportLxf(std::u16string(CMD.FileName));
  } catch (const Failure&) {
    // A cancelled dialog is no event.
  }
}

void Principal::ExportLxf(std::u16string_view LxfFile) {
  std::unique_ptr<TextWriter> file;
  const std::optional<Failure> kept = attempt([&] {
    file = platform_.files.CreateTextFile(LxfFile, Writing::InPlace);
    setMousePointer(kHourglass);
    showEditBox(false);
    const CommandLists lists(AllowedCommands, SpecialAllowedCommands);
    writeRecords(N.Text(), lists, [&](TextView record) { file->WriteLine(record); });
    file->Close();
  });
  setMousePointer(0);
  file.reset();
  if (kept) {
    sayFailure(*kept);
  } else {
    say(words::LXFCreated, kInformation);
  }
}

}  // namespace dravenna
