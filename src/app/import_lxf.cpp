#include "app/principal.h"
#include "exchange/lxf_merger.h"
#include "text/text.h"

namespace dravenna {

void Principal::mnu_Import_Click() {
  if (say(words::ImportWarning, kQuestionOkCancel) == Answer::Cancel) return;
  try {
    CMD.Filter = u"Translator File (*.lxf)|*.lxf";
    CMD.DialogTitle = u"Export";
    CMD.InitDir = ScriptPath;
    CMD.FileName = lxfPath();
    platform_.windowing.ShowOpen(CMD);
    if (!CMD.FileName.empty()) ImportLxf(std::u16string(CMD.FileName));
  } catch (const Failure&) {
    // A cancelled dialog is no event.
  }
}

void Principal::ImportLxf(std::u16string_view LxfFile) {
  bool badFile = false;
  const std::optional<Failure> kept = attempt([&] {
    const auto stream = platform_.files.OpenTextFile(LxfFile);
    const std::u16string records = stream->ReadAll();
    stream->Close();
    setMousePointer(kHourglass);
    showEditBox(false);
    const CommandLists lists(AllowedCommands, SpecialAllowedCommands);
    const MergeResult merged = mergeLxf(N.Text(), records, lists);
    if (merged.status == MergeStatus::NoColon) {
      badFile = true;
      LoadScript();
      say(readFilled(registry_, words::BadLXFFile, decimal(static_cast<std::int64_t>(merged.recordIndex) + 1)),
          kCritical);
      return;
    }
    if (merged.status == MergeStatus::RanOut) {
      throw Failure(u"The exchange file ends in the middle of line " +
                    decimal(static_cast<std::int64_t>(merged.lineIndex) + 1) + u" of the script.");
    }
    writeScript(merged.text);
    LoadScript();
  });
  if (badFile) return;
  setMousePointer(0);
  if (kept) {
    sayFailure(*kept);
  } else {
    say(words::ImportFinish, kInformation);
  }
}

}  // namespace dravenna
