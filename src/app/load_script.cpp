#include "app/principal.h"
#include "scan/line_scanner.h"
#include "text/text.h"

namespace dravenna {

namespace {

// Lets the scanner colour one line of N: the line is added as a whole in clrPlain, its other segments are painted over.
class LoadSink {
 public:
  LoadSink(Principal& form, TextView line) : form_(form), line_(line), at_(form.N.appendLine(line, Segment::Plain)) {}

  void plain(std::size_t, std::size_t) {}
  void quote(std::size_t at) { paint(at, at + 1, Segment::Quote); }
  void error(std::size_t begin, std::size_t end) { paint(begin, end, Segment::Error); }
  void comment(std::size_t begin, std::size_t end) { paint(begin, end + 2, Segment::Comment); }  // with its CR LF
  void text(const QuotedText& quoted) {
    const Segment segment = classOf(line_.substr(quoted.begin, quoted.end - quoted.begin), quoted);
    if (segment != Segment::Plain) paint(quoted.begin, quoted.end, segment);
    if (segment != Segment::Title) (quoted.allowed ? form_.HasMessages : form_.HasCode) = true;
  }

 private:
  void paint(std::size_t begin, std::size_t end, Segment segment) { form_.N.paint(at_ + begin, at_ + end, segment); }

  Principal& form_;
  TextView line_;
  std::size_t at_;
};

}  // namespace

void Principal::LoadScript() {
  UndoText.clear();
  ScriptLoaded = Modified = HasMessages = HasCode = false;

  std::unique_ptr<TextReader> stream;
  const CommandLists lists(AllowedCommands, SpecialAllowedCommands);
  LineScanner scanner(lists);
  const std::optional<Failure> kept = attempt([&] {
    stream = platform_.files.OpenTextFile(ScriptPath);
    N.Visible = false;
    N.clear();
    N.reserve(stream->sizeHint());
    Ini = Fin = xIni = 0;
    setMousePointer(kHourglass);
    EDT.Visible = false;
    while (!stream->AtEndOfStream()) {
      const TextView line = stream->ReadLine();
      scanner.scan(line, LoadSink(*this, line));
    }
    stream->Close();
  });
  if (stream) N.commitAppend();
  ScriptLoaded = HasCode || HasMessages;
  mnu_Guardar.Enabled = mnu_Export.Enabled = mnu_Import.Enabled = mnu_Search.Enabled = ScriptLoaded;
  stream.reset();
  EDT.setText(u"");
  EDT.Visible = ScriptLoaded;
  setMousePointer(0);
  Form_Resize();
  N.TabStop = true;
  N.Visible = true;
  form.Caption = std::u16string(kCaption) + u" [" + ScriptPath + u"]";
  if (ScriptLoaded) {
    GoNextText(0);
  } else {
    N.setSelStart(0);
  }
  if (kept) {
    sayFailure(*kept);
    return;
  }
  if (!HasMessages && HasCode) {
    say(words::NoTextToEdit, kWarning);
  } else if (!ScriptLoaded) {
    say(words::NothingToEdit, kInformation);
  }
  if (scanner.errorLines() > 0) {
    say(readFilled(registry_, words::FileWithErrors, decimal(scanner.errorLines())), kWarning);
  }
}

}  // namespace dravenna
