#include "app/principal.h"
#include "scan/line_scanner.h"
#include "text/text.h"

namespace dravenna {

namespace {

// Adds one line to N, segment by segment; its line end belongs to the comment, or else is a segment of its own.
class LoadSink {
 public:
  LoadSink(Principal& form, TextView line) : form_(form), line_(line) {}

  void plain(std::size_t begin, std::size_t end) { add(begin, end, clrPlain); }
  void quote(std::size_t) { form_.N.AddSegment(u"\"", clrQuote); }
  void error(std::size_t begin, std::size_t end) { add(begin, end, clrError); }
  void comment(std::size_t begin, std::size_t end) {
    add(begin, end, clrComment);
    endColor_ = clrComment;
  }
  void text(const QuotedText& quoted) {
    const Segment segment = classOf(line_.substr(quoted.begin, quoted.end - quoted.begin), quoted);
    add(quoted.begin, quoted.end, colorOf(segment));
    if (segment != Segment::Title) (quoted.allowed ? form_.HasMessages : form_.HasCode) = true;
  }
  void lineEnd() { form_.N.AddSegment(u"\r\n", endColor_); }

 private:
  void add(std::size_t begin, std::size_t end, std::uint32_t Color) {
    form_.N.AddSegment(line_.substr(begin, end - begin), Color);
  }

  Principal& form_;
  TextView line_;
  std::uint32_t endColor_ = clrPlain;
};

}  // namespace

void Principal::LoadScript() {
  UndoText.clear();
  ScriptLoaded = Modified = HasMessages = HasCode = false;

  std::unique_ptr<TextReader> stream;
  const CommandLists lists(AllowedCommands, SpecialAllowedCommands);
  LineScanner scanner(lists);
  const std::optional<Failure> kept = attempt([&] {
    stream = platform_.files.openScript(ScriptPath);
    N.Visible = false;
    N.clear();
    N.reserve(stream->sizeHint());
    Ini = Fin = xIni = 0;
    changes_.clear();
    setMousePointer(kHourglass);
    EDT.Visible = false;
    while (!stream->AtEndOfStream()) {
      const TextView line = stream->ReadLine();
      LoadSink sink(*this, line);
      scanner.scan(line, sink);
      sink.lineEnd();
    }
    stream->Close();
  });
  if (stream) N.endSegments();
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
  platform_.commits.loaded(ScriptPath, !kept);
  if (kept) {
    sayFailure(*kept);
    return;
  }
  if (!HasMessages && HasCode) {
    say(words::NoTextToEdit, kWarning);
  } else if (!ScriptLoaded) {
    say(words::NothingToEdit, kInformation);
  }
  if (scanner.ErrorLines > 0) {
    say(readFilled(registry_, words::FileWithErrors, decimal(scanner.ErrorLines)), kWarning);
  }
}

}  // namespace dravenna
