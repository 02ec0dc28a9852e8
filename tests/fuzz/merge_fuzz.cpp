#include <array>
#include <map>
#include <optional>
#include <random>
#include <set>

#include "fuzz_input.h"
#include "tool/merge/merge_file.h"
#include "tool/script/align.h"
#include "tool/script/outline.h"

using namespace dravenna;

namespace {

using Lines = std::vector<std::string>;
using Codes = std::vector<std::uint64_t>;

// Scripts that are edited at random, the same ones for the same input.
class Scripts {
 public:
  Scripts(const std::uint8_t* data, std::size_t size)
      : random_(static_cast<unsigned>(hashOf({reinterpret_cast<const char*>(data), size}))) {}

  bool chance(unsigned percent) { return random_() % 100 < percent; }
  std::size_t below(std::size_t limit) { return random_() % limit; }

  Lines script() {
    Lines lines;
    for (std::size_t count = below(40); count > 0; --count) lines.push_back(line());
    return lines;
  }
  // The texts become others in another language.
  Lines translated(const Lines& lines) {
    return edited(lines, 4, [&](const std::string& text) { return chance(90) ? "~" + text : text; });
  }
  Lines changed(const Lines& lines) {
    return edited(lines, 12, [&](std::string text) {
      if (chance(8)) return newText();
      if (chance(8)) text += text.ends_with('.') ? "!" : ".";
      return text;
    });
  }

  bool moved = false;      // a line, by an edit
  bool exchanged = false;  // the translator took a line out and put one in: either may count as the other's

 private:
  std::string newText() { return "text " + std::to_string(below(chance(20) ? 5 : 1000000000)) + " of the guard"; }

  std::string line() {
    const std::string number = std::to_string(below(6));
    switch (below(9)) {
      case 0:
        return "\tnext;";
      case 1:
        return "\tset @v" + number + ", 1;";
      case 2:
        return "\tmenu \"" + newText() + "\",L_" + number + ",\"" + newText() + "\",-;";
      case 3:
        return "\tif (@v) mes \"" + newText() + "\";";
      case 4:
        return "\tmes \"odd; // \"";
      case 5:
        return "}";
      default:
        return "\tmes \"" + newText() + "\";";
    }
  }

  template <class Text>
  Lines edited(const Lines& lines, unsigned percent, Text&& textOf) {
    Lines out;
    bool removed = false;
    bool added = false;
    for (const std::string& before : lines) {
      if (chance(percent) && chance(40)) {
        removed = true;
        continue;
      }
      if (chance(percent) && chance(40)) {
        added = true;
        out.push_back(line());
      }
      std::string now;
      std::size_t from = 0;
      for (std::size_t quote;
           before.find("odd") == std::string::npos && (quote = before.find('"', from)) != std::string::npos;) {
        const std::size_t close = before.find('"', quote + 1);
        if (close == std::string::npos) break;
        now += before.substr(from, quote + 1 - from) + textOf(before.substr(quote + 1, close - quote - 1)) + '"';
        from = close + 1;
      }
      now += before.substr(from);
      out.push_back(chance(percent) && chance(20) ? now + " // seen" : now);
    }
    exchanged |= percent < 5 && removed && added;
    if (percent > 5 && chance(percent) && out.size() > 2) {
      std::swap(out[below(out.size())], out[below(out.size())]);
      moved = true;
    }
    return out;
  }

  std::minstd_rand random_;
};

std::string joined(const Lines& lines, const char* end) {
  std::string file;
  for (const std::string& line : lines) file += line + end;
  return file;
}

Codes codesOf(const Document& document) {
  Codes codes;
  for (const DocumentLine& line : document.lines) codes.push_back(line.code);
  return codes;
}

std::map<std::string_view, int> textsOf(const Document& document) {
  std::map<std::string_view, int> texts;
  for (const TextPlace& place : document.texts) ++texts[place.text];
  return texts;
}

// Lines that count as the same: of a longest common subsequence of code, of several the first or the last one, or such
// with more of the same texts.
enum class Way { First, Last, ByText };

std::vector<std::size_t> partners(const Document& one, const Document& other, Way way) {
  const auto& a = one.lines;
  const auto& b = other.lines;
  const auto value = [&](std::size_t i, std::size_t j) {
    return a[i].code != b[j].code ? 0 : way == Way::ByText && a[i].whole == b[j].whole ? 4 : 1;
  };
  std::vector<std::vector<int>> best(a.size() + 1, std::vector<int>(b.size() + 1));
  for (std::size_t i = a.size(); i-- > 0;) {
    for (std::size_t j = b.size(); j-- > 0;) {
      const int pair = value(i, j) == 0 ? 0 : value(i, j) + best[i + 1][j + 1];
      best[i][j] = std::max({best[i + 1][j], best[i][j + 1], pair});
    }
  }
  std::vector<std::size_t> found(a.size(), kNone);
  for (std::size_t i = 0, j = 0; i < a.size() && j < b.size();) {
    const bool later = way == Way::Last && (best[i + 1][j] == best[i][j] || best[i][j + 1] == best[i][j]);
    if (value(i, j) != 0 && value(i, j) + best[i + 1][j + 1] == best[i][j] && !later) {
      found[i++] = j++;
    } else {
      ++(best[i + 1][j] == best[i][j] ? i : j);
    }
  }
  return found;
}

// The plainest three-way merge of lines. Nothing for a conflict.
std::optional<Codes> modelMerge(const Codes& base, const Codes& ours, const Codes& theirs,
                                const std::vector<std::size_t>& toOurs, const std::vector<std::size_t>& toTheirs) {
  Codes merged;
  std::size_t b = 0;
  std::size_t o = 0;
  std::size_t t = 0;
  for (std::size_t next = 0; next <= base.size(); ++next) {
    const std::size_t oEnd = next == base.size() ? ours.size() : toOurs[next];
    const std::size_t tEnd = next == base.size() ? theirs.size() : toTheirs[next];
    if (oEnd == kNone || tEnd == kNone) continue;
    const auto part = [](const Codes& codes, std::size_t begin, std::size_t end) {
      return Codes(codes.begin() + static_cast<std::ptrdiff_t>(begin),
                   codes.begin() + static_cast<std::ptrdiff_t>(end));
    };
    const Codes before = part(base, b, next);
    const Codes mine = part(ours, o, oEnd);
    const Codes now = part(theirs, t, tEnd);
    if (mine != before && now != before && mine != now) return std::nullopt;
    const Codes& taken = mine == before ? now : mine;
    merged.insert(merged.end(), taken.begin(), taken.end());
    if (next == base.size()) break;
    merged.push_back(base[next]);
    b = next + 1;
    o = oEnd + 1;
    t = tEnd + 1;
  }
  return merged;
}

// A fault shows what was made of the input.
void show(const std::string& base, const std::string& ours, const std::string& theirs, const std::string& merged) {
  std::fprintf(stderr, "--b\n%s--o\n%s--t\n%s--r\n%s", base.c_str(), ours.c_str(), theirs.c_str(), merged.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const CommandLists lists(kDefaultAllowedCommands, kDefaultSpecialCommands, fuzzCodePage(0));
  Scripts scripts(data, size);
  const Lines lines = scripts.script();
  const std::string base = joined(lines, "\n");
  const std::string ours = joined(scripts.translated(lines), scripts.chance(50) ? "\n" : "\r\n");
  const std::string theirs = joined(scripts.changed(lines), "\n");
  const Codec codec(fuzzCodePage(0));
  const auto documentOf = [&](const std::string& file) { return scriptDocument(file, lists); };

  const MergeWish wish{"", codec.page().number() == 1252 ? fuzzCodePage(0) : nullptr, true, nullptr, {}};
  const auto merged = [&](const std::string& b, const std::string& o, const std::string& t) {
    return mergeFile(b, o, t, lists, wish);
  };
  require(merged(base, theirs, base).bytes == theirs, "theirs did not change");
  require(merged(base, base, theirs).bytes == theirs, "ours did not change");
  require(merged(base, theirs, theirs).bytes == theirs, "both changed alike");

  const MergedFile result = merged(base, ours, theirs);
  const Document before = documentOf(base);
  const Document mine = documentOf(ours);
  const Document now = documentOf(theirs);
  const Document after = documentOf(result.bytes);
  auto texts = textsOf(after);
  auto texts3 = std::array{textsOf(before), textsOf(mine), textsOf(now)};
  for (const auto& [text, count] : texts) {
    require(texts3[1].contains(text) || texts3[2].contains(text), "a text is of neither side");
  }
  std::set<std::string_view> odd;
  for (const auto* document : {&mine, &now}) {
    for (const DocumentLine& line : document->lines) odd.insert(line.text);
  }
  for (const DocumentLine& line : after.lines) {
    require(line.firstText != line.endText || line.text.find('"') == std::string_view::npos || odd.contains(line.text),
            "a line with an odd number of quote marks");
  }
  if (result.conflicts > 0) return 0;
  for (const auto& [text, count] : texts3[0]) {
    const std::string translation = "~" + std::string(text);
    const auto once = [&](const auto& all, std::string_view one) { return all.contains(one) && all.at(one) == 1; };
    const bool alone = once(texts3[0], text) && once(texts3[2], text) && once(texts3[1], translation);
    const bool anywhere = text.size() < 24;  // with a small number, which may come again by chance
    if (scripts.moved || scripts.exchanged || anywhere || !alone || texts3[1].contains(text)) continue;
    if (!texts.contains(translation) || texts.contains(text)) show(base, ours, theirs, result.bytes);
    require(texts.contains(translation) && !texts.contains(text),
            "a text that the original left alone stays translated");
  }
  const Codes codes[] = {codesOf(before), codesOf(mine), codesOf(now)};
  std::set<std::optional<Codes>> models;
  for (const Way our : {Way::First, Way::Last, Way::ByText}) {
    const auto toOurs = partners(before, mine, our);
    for (const Way their : {Way::First, Way::Last, Way::ByText}) {
      models.insert(modelMerge(codes[0], codes[1], codes[2], toOurs, partners(before, now, their)));
    }
  }
  const bool clear = models.size() == 1 && models.begin()->has_value();
  if (clear && codesOf(after) != **models.begin()) show(base, ours, theirs, result.bytes);
  require(!clear || codesOf(after) == **models.begin(), "code is merged as lines are");
  return 0;
}
