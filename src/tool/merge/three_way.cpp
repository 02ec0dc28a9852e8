#include "tool/merge/three_way.h"

#include <algorithm>

#include "exchange/records.h"
#include "tool/merge/match.h"
#include "tool/merge/text_change.h"

namespace dravenna {

namespace {

// The line ends of a document: all that occur, and the one that occurs most.
struct LineEnds {
  bool crlf = false;
  bool lf = false;
  std::string_view most = "\n";
  bool operator==(const LineEnds& other) const { return crlf == other.crlf && lf == other.lf; }
};

LineEnds lineEndsOf(const Document& document) {
  std::size_t counts[3] = {};
  for (const DocumentLine& line : document.lines) ++counts[line.ending.size()];
  return {counts[2] > 0, counts[1] > 0, counts[2] > counts[1] ? "\r\n" : "\n"};
}

class Merger {
 public:
  Merger(const Codec& codec, const Document& base, const Document& ours, const Document& theirs,
         const ThreeWayOptions& options)
      : codec_(codec),
        base_(base),
        ours_(ours),
        theirs_(theirs),
        options_(options),
        toOurs_(matchVersions(base, ours, false)),
        toTheirs_(matchVersions(base, theirs, true)),
        ends_(lineEndsOf(ours)),
        sameEnds_(ours.lines.size() < 2 || ends_ == lineEndsOf(theirs)),
        seen_(theirs.texts.size()) {
    if (ours.lines.size() < 2) ends_ = lineEndsOf(theirs);
  }

  ThreeWay run() {
    std::size_t b = 0;
    std::size_t o = 0;
    std::size_t t = 0;
    for (std::size_t next = 0; next <= base_.lines.size(); ++next) {
      const bool end = next == base_.lines.size();
      const std::size_t oursEnd = end ? ours_.lines.size() : toOurs_.lineOf[next];
      const std::size_t theirsEnd = end ? theirs_.lines.size() : toTheirs_.lineOf[next];
      if (oursEnd == kNone || theirsEnd == kNone) continue;
      changed({b, next, o, oursEnd, t, theirsEnd});
      if (end) break;
      emit(oursEnd, theirsEnd);
      b = next + 1;
      o = oursEnd + 1;
      t = theirsEnd + 1;
    }
    endConflict();
    return std::move(out_);
  }

 private:
  // Between two lines that all three have: lines of each.
  struct Region {
    std::size_t bBegin, bEnd, oBegin, oEnd, tBegin, tEnd;
  };
  // A text of the result; where they differ, `ours` and `theirs` stand in a conflict.
  struct Choice {
    explicit Choice(std::string_view text) : ours(text), theirs(text) {}
    std::string_view ours;
    std::string_view theirs;
  };
  struct ConflictLine {
    std::string text;
    std::string_view ending;
  };

  static bool unchanged(const Match& match, std::size_t bBegin, std::size_t bEnd, std::size_t begin, std::size_t end) {
    if (bEnd - bBegin != end - begin) return false;
    for (std::size_t i = 0; i < end - begin; ++i) {
      if (match.lineOf[bBegin + i] != begin + i) return false;
    }
    return true;
  }

  void changed(const Region& r) {
    if (unchanged(toOurs_, r.bBegin, r.bEnd, r.oBegin, r.oEnd)) {
      for (std::size_t t = r.tBegin; t < r.tEnd; ++t) emit(kNone, t);
    } else if (unchanged(toTheirs_, r.bBegin, r.bEnd, r.tBegin, r.tEnd)) {
      for (std::size_t o = r.oBegin; o < r.oEnd; ++o) emit(o, kNone);
      tellUnseen(r.tBegin, r.tEnd);
    } else {
      changedOnBothSides(r);
    }
  }

  // What both sides have is no conflict, unless it is but lines of one code with texts of their own.
  void changedOnBothSides(const Region& r) {
    const auto pairs = matchLines(ours_, r.oBegin, r.oEnd, theirs_, r.tBegin, r.tEnd);
    const bool alike = std::any_of(pairs.begin(), pairs.end(), [&](const LinePair& pair) {
      return ours_.lines[pair.a].whole == theirs_.lines[pair.b].whole;
    });
    std::size_t o = r.oBegin;
    std::size_t t = r.tBegin;
    for (const LinePair& pair : pairs) {
      if (!alike) break;
      conflict(o, pair.a, t, pair.b);
      emit(pair.a, pair.b);
      o = pair.a + 1;
      t = pair.b + 1;
    }
    conflict(o, r.oEnd, t, r.tEnd);
  }

  void conflict(std::size_t oBegin, std::size_t oEnd, std::size_t tBegin, std::size_t tEnd) {
    for (std::size_t o = oBegin; o < oEnd; ++o) {
      conflictOurs_.push_back({std::string(ours_.lines[o].text), ours_.lines[o].ending});
    }
    for (std::size_t t = tBegin; t < tEnd; ++t) {
      const DocumentLine& line = theirs_.lines[t];
      conflictTheirs_.push_back({std::string(line.text), endOf(kNone, t)});
      for (std::size_t i = line.firstText; i < line.endText; ++i) seen_[i] = true;
    }
  }

  // Writes the lines that wait in a conflict.
  void endConflict() {
    if (conflictOurs_.empty() && conflictTheirs_.empty()) return;
    ++out_.conflicts;
    const std::size_t record = record_;
    std::size_t lastRecord = record;
    const auto side = [&](char mark, std::vector<ConflictLine>& lines) {
      writeLine(options_.marker(mark), ends_.most);
      record_ = record;
      for (const ConflictLine& line : lines) write(line.text, line.ending);
      lastRecord = std::max(lastRecord, record_);
      lines.clear();
    };
    side('<', options_.swapped ? conflictTheirs_ : conflictOurs_);
    side('=', options_.swapped ? conflictOurs_ : conflictTheirs_);
    writeLine(options_.marker('>'), ends_.most);
    record_ = lastRecord;
  }

  void writeLine(std::string_view text, std::string_view ending) {
    if (!out_.work.empty() && out_.work.back() != '\n') out_.work.append(ends_.most);
    ++lines_;
    out_.work.append(text).append(ending);
  }

  void write(std::string_view text, std::string_view ending) {
    if (!options_.numbered) return writeLine(text, ending);
    recordBuffer_.clear();
    appendRecord(++record_, text, recordBuffer_);
    writeLine(recordBuffer_, ending);
  }

  // The line end of what is made of these lines, one of which may be missing.
  std::string_view endOf(std::size_t o, std::size_t t) const {
    if (t == kNone) return ours_.lines[o].ending;
    const std::string_view theirs = theirs_.lines[t].ending;
    if (o == kNone) return sameEnds_ || theirs.empty() ? theirs : ends_.most;
    const std::string_view ours = ours_.lines[o].ending;
    const std::size_t b = toOurs_.baseLineOf[o];
    return sameEnds_ && b != kNone && base_.lines[b].ending == ours ? theirs : ours;
  }

  // Writes the line that the sides have in common, or that only one has; its texts are merged.
  void emit(std::size_t o, std::size_t t) {
    const Document& document = o != kNone ? ours_ : theirs_;
    const DocumentLine& line = document.lines[o != kNone ? o : t];
    if (line.firstText == line.endText) {
      endConflict();
      return write(line.text, endOf(o, t));
    }
    const std::size_t firstNote = out_.notes.size();
    choices_.clear();
    for (std::size_t i = line.firstText; i < line.endText; ++i) {
      choices_.push_back(o == kNone   ? chooseFor(kNone, i, false)
                         : t == kNone ? chooseFor(i, kNone, toOurs_.baseLineOf[o] == kNone)
                                      : chooseFor(i, theirs_.lines[t].firstText + (i - line.firstText), false));
    }
    compose(document, line, &Choice::ours, lineBuffer_);
    const bool agreed = std::all_of(choices_.begin(), choices_.end(),
                                    [](const Choice& choice) { return choice.ours == choice.theirs; });
    if (agreed) {
      endConflict();
      write(lineBuffer_, endOf(o, t));
    } else {
      conflictOurs_.push_back({lineBuffer_, endOf(o, t)});
      compose(document, line, &Choice::theirs, lineBuffer_);
      conflictTheirs_.push_back({lineBuffer_, endOf(o, t)});
    }
    for (std::size_t i = firstNote; i < out_.notes.size(); ++i) out_.notes[i].line = lines_;
  }

  // The line with the texts of choices_.
  void compose(const Document& document, const DocumentLine& line, std::string_view Choice::*side, std::string& out) {
    out.clear();
    std::size_t copied = 0;
    for (std::size_t i = line.firstText; i < line.endText; ++i) {
      const TextPlace& place = document.texts[i];
      out.append(line.text.substr(copied, place.begin - copied)).append(choices_[i - line.firstText].*side);
      copied = place.begin + place.text.size();
    }
    out.append(line.text.substr(copied));
  }

  // A text of a line of the result: finds its other versions.
  // `ownLine`: ours have made another line of it, so that which text was its base is a guess.
  Choice chooseFor(std::size_t o, std::size_t t, bool ownLine) {
    std::size_t b = kNone;
    if (t != kNone) {
      b = toTheirs_.baseTextOf[t];
      const bool pairedElsewhere = o != kNone && toOurs_.baseTextOf[o] != kNone;
      if (b != kNone && (o == kNone || pairedElsewhere || toOurs_.textOf[b] != kNone)) o = toOurs_.textOf[b];
    }
    if (b == kNone && o != kNone) {
      b = toOurs_.baseTextOf[o];
      const std::size_t now = b == kNone ? kNone : toTheirs_.textOf[b];
      if (t == kNone) {
        t = now;
      } else if (now != kNone) {
        o = b = kNone;  // it has gone elsewhere, and another one came
      }
    }
    if (t != kNone) seen_[t] = true;
    if (o == kNone && t != kNone && b != kNone) return onlyTheirs(t, base_.texts[b].text, {});
    if (o == kNone) return onlyTheirs(t, {}, {});
    if (t == kNone) return Choice(ours_.texts[o].text);
    return choose(ours_.texts[o].text, theirs_.texts[t], b == kNone ? nullptr : &base_.texts[b], ownLine);
  }

  Choice onlyTheirs(std::size_t t, std::string_view before, std::string_view translation) {
    const TextPlace& place = theirs_.texts[t];
    if (place.toTranslate) note(MergeNote::Kind::Translate, place.text, before, translation);
    return Choice(place.text);
  }

  Choice choose(std::string_view ours, const TextPlace& theirs, const TextPlace* base, bool ownLine) {
    const std::string_view now = theirs.text;
    const std::string_view before = base == nullptr ? std::string_view() : base->text;
    if (ours == now || (base != nullptr && before == now)) return Choice(ours);
    if (base != nullptr && before == ours) {
      if (theirs.toTranslate) note(MergeNote::Kind::Translate, now, before, ours);
      return Choice(now);
    }
    OnConflict way = ownLine ? OnConflict::Ours : options_.onConflict;
    if (way == OnConflict::Smart) {
      const bool small = base == nullptr || (theirs.toTranslate && isSmallChange(codec_, before, now, theirs.menu));
      way = small ? OnConflict::Ours : OnConflict::Theirs;
    }
    if (way == OnConflict::Markers) {
      Choice both(ours);
      both.theirs = now;
      return both;
    }
    note(way == OnConflict::Ours ? MergeNote::Kind::LookAt : MergeNote::Kind::Translate, now, before, ours);
    return Choice(way == OnConflict::Ours ? ours : now);
  }

  void note(MergeNote::Kind kind, std::string_view now, std::string_view before, std::string_view translation) {
    out_.notes.push_back({kind, lines_ + 1, now, before, translation});
  }

  // Texts that changed in lines of which ours have become others.
  void tellUnseen(std::size_t begin, std::size_t end) {
    for (std::size_t t = begin; t < end; ++t) {
      const DocumentLine& line = theirs_.lines[t];
      const std::size_t b = base_.lines[toTheirs_.baseLineOf[t]].firstText;
      for (std::size_t i = line.firstText; i < line.endText; ++i) {
        const std::string_view before = base_.texts[b + (i - line.firstText)].text;
        if (!seen_[i] && before != theirs_.texts[i].text) {
          note(MergeNote::Kind::LookAt, theirs_.texts[i].text, before, {});
        }
      }
    }
  }

  const Codec& codec_;
  const Document& base_;
  const Document& ours_;
  const Document& theirs_;
  const ThreeWayOptions& options_;
  Match toOurs_;
  Match toTheirs_;
  LineEnds ends_;  // of ours
  bool sameEnds_;
  std::vector<bool> seen_;  // texts of theirs that have been looked at
  std::vector<ConflictLine> conflictOurs_;
  std::vector<ConflictLine> conflictTheirs_;
  std::size_t lines_ = 0;
  std::size_t record_ = 0;
  std::vector<Choice> choices_;  // of the line that is written
  std::string lineBuffer_;
  std::string recordBuffer_;
  ThreeWay out_;
};

}  // namespace

std::string ThreeWayOptions::marker(char mark) const {
  const std::string_view label = mark == '=' ? std::string_view() : labels[(mark == '<') == swapped ? 1 : 0];
  return std::string(markerSize, mark).append(label.empty() ? "" : " ").append(label);
}

ThreeWay mergeThreeWay(const Codec& codec, const Document& base, const Document& ours, const Document& theirs,
                       const ThreeWayOptions& options) {
  return Merger(codec, base, ours, theirs, options).run();
}

}  // namespace dravenna
