#include "model.h"

#include "text/case_fold.h"

namespace dravenna::model {

namespace {

Text trimmed(Text text) {
  while (!text.empty() && text.front() == u' ') text.erase(0, 1);
  while (!text.empty() && text.back() == u' ') text.pop_back();
  return text;
}

Text without(Text text, char16_t character) {
  std::erase(text, character);
  return text;
}

Text cleanWord(Text word, bool dropSemicolon) {
  for (const char16_t c : Text(u",[]+\t-")) word = without(word, c);
  if (dropSemicolon) word = without(word, u';');
  return trimmed(word);
}

bool holds(const Text& text, const Text& what) { return text.find(what) != Text::npos; }

}  // namespace

std::vector<Text> cutAt(const Text& text, const Text& separator) {
  std::vector<Text> parts(1);
  for (std::size_t at = 0; at < text.size();) {
    if (text.compare(at, separator.size(), separator) == 0) {
      parts.emplace_back();
      at += separator.size();
    } else {
      parts.back() += text[at++];
    }
  }
  return parts;
}

Text joined(const std::vector<Text>& parts, const Text& separator) {
  Text all;
  for (std::size_t i = 0; i < parts.size(); ++i) all += (i == 0 ? Text() : separator) + parts[i];
  return all;
}

Text removeColor(Text text) {
  std::size_t position = 1;
  for (;;) {
    const std::size_t at = text.find(u'^', position - 1);
    if (at == Text::npos) break;
    const Text taken = text.substr(at + 1, 6);
    bool code = taken.size() == 6;
    for (const char16_t c : taken) code = code && Text(u"0123456789ABCDEFGHabcdefgh").find(c) != Text::npos;
    if (code) {
      text.erase(at, 7);
      position = at + 1;
    } else {
      text[at] = 1;
      position = at + 2;
    }
  }
  for (char16_t& c : text) c = c == 1 ? u'^' : c;
  return text;
}

std::size_t findIgnoringCase(const Text& text, const Text& needle, std::size_t from) {
  for (std::size_t at = from; at + needle.size() <= text.size(); ++at) {
    std::size_t same = 0;
    while (same < needle.size() && foldCase(text[at + same]) == foldCase(needle[same])) ++same;
    if (same == needle.size()) return at;
  }
  return Text::npos;
}

bool Rule::inList(const Text& list, const Text& word) {
  return findIgnoringCase(list, u"," + word + u",", 0) != Text::npos;
}

void Rule::codePiece(const Text& piece, std::size_t number) {
  if ((!inList(u",mes,menu,", active_) && allowed(prior_)) || (active_.empty() && number > 0)) {
    active_ = prior_;
  } else {
    prior_ = active_;
    active_ = piece;
  }
  active_ = cleanWord(active_, true);
  if (!active_.empty()) {
    const Text word = active_;
    active_ = trimmed(cutAt(word, u"(").front());
    const Text behind = trimmed(cutAt(word, u")").back());
    if (holds(word, u"(") && holds(word, u")")) {
      if (allowed(behind) && !allowed(active_)) active_ = behind;
    } else if (holds(word, u")")) {
      active_ = allowed(behind) && !allowed(prior_) ? behind : prior_;
    }
  }
  if (holds(active_, u" ")) {
    const std::vector<Text> words = cutAt(active_, u" ");
    active_ = allowed(words.back()) && !allowed(words.front()) ? words.back() : words.front();
  }
  if (!allowed(active_) && allowed(prior_)) {
    active_ = prior_;
  } else if (active_ != prior_) {
    textsInCommand_ = 0;
  }
}

Rule::Line Rule::walk(const Text& line, const std::function<void(Text&)>& onText) {
  const std::size_t slashes = line.find(u"//");
  const Text code = line.substr(0, slashes);
  Line result{cutAt(code, u"\""), slashes == Text::npos ? Text() : line.substr(slashes)};
  std::vector<Text>& pieces = result.pieces;
  if (pieces.size() == 1) return result;
  if (pieces.size() % 2 == 0) {
    result.odd = true;
    pieces = {code};
    return result;
  }
  for (std::size_t i = 0; i + 1 < pieces.size(); ++i) {
    if (i % 2 == 0) {
      codePiece(pieces[i], i);
    } else {
      ++textsInCommand_;
      onText(pieces[i]);
    }
  }
  const Text last = cleanWord(pieces.back(), false);
  if (!last.empty() && last.back() == u';') active_ = prior_ = Text();
  return result;
}

Document Rule::load(const Rule& rule, const Text& file) {
  Rule state = rule;
  Document document;
  const auto add = [&](const Text& text, std::uint32_t color) {
    document.text += text;
    document.colors.insert(document.colors.end(), text.size(), color);
  };
  std::vector<Text> lines = cutAt(file, u"\n");
  const Text last = lines.back();
  lines.pop_back();
  for (Text& line : lines) {
    if (!line.empty() && line.back() == u'\r') line.pop_back();
  }
  if (!last.empty()) lines.push_back(last);
  for (const Text& line : lines) {
    std::vector<std::uint32_t> classes;
    const Line cut = state.walk(line, [&](Text& text) {
      const bool mayRead = state.allowed(state.active_);
      if (text.size() > 1 && text.front() == u'[' && text.back() == u']') {
        classes.push_back(clrTitle);
        return;
      }
      const bool first = inList(state.specialList_, state.active_) && state.textsInCommand_ == 1;
      const bool bracket = text == u"[" || text == u"]";
      classes.push_back(!mayRead || first ? clrCode : bracket ? clrPlain : clrMessage);
      (mayRead ? document.hasMessages : document.hasCode) = true;
    });
    document.errorLines += cut.odd ? 1 : 0;
    for (std::size_t i = 0; i < cut.pieces.size(); ++i) {
      if (i > 0) add(u"\"", clrQuote);
      add(cut.pieces[i], cut.odd ? clrError : i % 2 == 1 ? classes[i / 2] : clrPlain);
    }
    add(cut.comment + u"\r\n", cut.comment.empty() ? clrPlain : clrComment);
  }
  return document;
}

bool Rule::takesRecord(const Text& text) const {
  if (!text.empty() && (text.front() == u'[' || text.back() == u']')) return false;
  return allowed(active_) && !(inList(specialList_, active_) && textsInCommand_ == 1);
}

std::vector<Text> Rule::records(const Rule& rule, const Text& document) {
  Rule state = rule;
  std::vector<Text> all;
  for (const Text& line : cutAt(document, u"\r\n")) {
    state.walk(line, [&](Text& text) {
      if (const Text plain = removeColor(text); state.takesRecord(plain)) all.push_back(plain);
    });
  }
  return all;
}

Merged Rule::merge(const Rule& rule, const Text& document, const Text& exchangeFile) {
  Rule state = rule;
  Merged merged;
  const std::vector<Text> records = cutAt(exchangeFile, u"\r\n");
  std::vector<Text> lines = cutAt(document, u"\r\n");
  std::size_t record = 0;
  for (std::size_t i = 0; i < lines.size() - 1 && record < records.size() - 1; ++i) {
    bool replaced = false;
    const Line cut = state.walk(lines[i], [&](Text& text) {
      if (merged.ranOut || merged.badRecord != 0 || !state.takesRecord(removeColor(text))) return;
      merged.ranOut = record == records.size();
      if (merged.ranOut) return;
      const std::size_t colon = records[record].find(u':');
      if (colon == Text::npos) merged.badRecord = record + 1;
      text = records[record++].substr(colon + 1);
      replaced = true;
    });
    if (merged.ranOut || merged.badRecord != 0) return merged;
    if (replaced) lines[i] = joined(cut.pieces, u"\"") + cut.comment;
  }
  merged.text = joined(lines, u"\r\n");
  return merged;
}

}  // namespace dravenna::model
