#include "scan/line_scanner.h"
#include "tool/run/for_each_script.h"
#include "tool/script/contents.h"
#include "tool/script/script_lines.h"

namespace dravenna {

namespace {

constexpr char kTextsFooter[] =
    "Each line: file, line (from 1), offset in the document (from 0), class, command, text, parted by tabs.\n"
    "Classes: title, message, code, plain; error for a line with an odd number of quote marks, with its code part.\n"
    "Examples:\n"
    "  dravenna-lxf texts guard.txt | grep -P '\\tmessage\\t'\n"
    "  dravenna-lxf texts npc --json | jq -r 'select(.class == \"error\") | \"\\(.file):\\(.line)\"'\n"
    "  generator | dravenna-lxf texts - --codepage utf-8";

constexpr std::string_view className(Segment segment) {
  switch (segment) {
    case Segment::Title:
      return "title";
    case Segment::Message:
      return "message";
    case Segment::Code:
      return "code";
    case Segment::Error:
      return "error";
    default:
      return "plain";
  }
}

enum class Form { Table, Json, Bare };

// Writes one script's texts.
class TextsSink {
 public:
  TextsSink(const Encoding& in, const std::string& path, Form form, std::string& out)
      : codec_(in.codec),
        scanner_(in.lists),
        form_(form),
        out_(out),
        name_(form == Form::Json ? jsonString(path) : shownName(path)) {}

  void scan(std::string_view work) {
    forEachLine(work, [&](const ScriptLine& line) {
      line_ = line;
      if (line.text.find('"') != std::string_view::npos) scanner_.scan(line.text, *this);
      lineOffset_ += counter_.before(line.text, line.text.size()) + 2;
    });
  }

  void plain(std::size_t, std::size_t) {}
  void quote(std::size_t) {}
  void comment(std::size_t, std::size_t) {}
  void error(std::size_t begin, std::size_t end) { write(Segment::Error, begin, end, {}); }
  void text(const QuotedText& quoted) {
    const std::string_view text = line_.text.substr(quoted.begin, quoted.end - quoted.begin);
    write(classOf(text, quoted), quoted.begin, quoted.end, scanner_.tracker().ActiveCommand.word);
  }

 private:
  void write(Segment segment, std::size_t begin, std::size_t end, std::string_view command) {
    const std::string_view text = line_.text.substr(begin, end - begin);
    if (form_ == Form::Bare) {
      appendEscaped(codec_, text, out_);
      return out_.push_back('\n');
    }
    const std::string line = std::to_string(line_.number + 1);
    const std::string offset = std::to_string(lineOffset_ + counter_.before(line_.text, begin));
    if (form_ == Form::Json) {
      out_.append("{\"file\":").append(name_).append(",\"line\":").append(line);
      out_.append(",\"offset\":").append(offset);
      out_.append(",\"class\":\"").append(className(segment)).append("\",\"command\":");
      appendJsonString(codec_, command, out_);
      out_.append(",\"text\":");
      appendJsonString(codec_, text, out_);
      out_.append("}\n");
    } else {
      out_.append(name_).append("\t").append(line).append("\t").append(offset).append("\t");
      out_.append(className(segment)).append("\t");
      appendEscaped(codec_, command, out_);
      out_.push_back('\t');
      appendEscaped(codec_, text, out_);
      out_.push_back('\n');
    }
  }

  const Codec& codec_;
  PlaceCounter counter_{codec_, PlaceCounter::Unit::Utf16};
  ByteLineScanner scanner_;
  Form form_;
  std::string& out_;
  std::string name_;
  ScriptLine line_{};
  std::size_t lineOffset_ = 0;
};

void run(Session& session, const std::vector<std::string>& paths, Form form) {
  session.prepare();
  Output output(*session.outputs, "-");
  forEachScript<std::string>(
      session, collectScripts(session, paths),
      [&](const Script& script, Buffers& buffers) {
        std::string out;
        const Opened opened = openScript(session, script.path, buffers.file, buffers.work);
        if (form == Form::Bare && contentsOf(opened.work, opened.in.lists) != Contents::Script) return buffers.file;
        TextsSink(opened.in, script.path, form, out).scan(opened.work);
        return out;
      },
      [&](const Script&, std::string&& out) {
        output.buffer().append(out);
        return output.flushSome();
      });
  if (!output.close()) session.console.fail();
}

}  // namespace

void addTexts(Verb program, Session& session) {
  Verb verb = program.verb("texts", "List every quoted text with its place and class");
  const auto paths = std::make_shared<std::vector<std::string>>();
  const auto json = std::make_shared<bool>(false);
  const auto bare = std::make_shared<bool>(false);
  verb.words("path", *paths, "PATH...", "Files and folders; `-` is standard input");
  verb.flag("--json", *json, "JSON lines: an object a text");
  verb.flag("--bare", *bare, "The texts alone, a line each; all of a file that is no script");
  session.addOptions(verb);
  verb.footer(kTextsFooter);
  verb.onRun([&session, paths, json, bare] {
    if (*json && *bare) throw UsageError("--json and --bare exclude each other");
    run(session, *paths, *json ? Form::Json : *bare ? Form::Bare : Form::Table);
  });
}

}  // namespace dravenna
