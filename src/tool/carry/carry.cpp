#include "tool/carry/carry.h"

#include <algorithm>
#include <unordered_map>

#include "tool/script/align.h"
#include "tool/script/exchange_file.h"
#include "tool/script/similar.h"

namespace dravenna {

namespace {

using Texts = std::vector<std::string_view>;

std::vector<std::uint64_t> plainHashes(const Texts& texts) {
  std::vector<std::uint64_t> hashes;
  hashes.reserve(texts.size());
  for (const std::string_view text : texts) hashes.push_back(hashOf(withoutColor(text)));
  return hashes;
}

class Carrier {
 public:
  Carrier(const Texts& old, const std::vector<Translation>& translations, const Texts& fresh)
      : old_(old), translations_(translations), fresh_(fresh), used_(old.size()) {
    result_.texts.resize(fresh.size());
  }

  CarryResult run() {
    oldHashes_ = plainHashes(old_);
    freshHashes_ = plainHashes(fresh_);
    for (std::size_t i = 0; i < oldHashes_.size(); ++i) places_[oldHashes_[i]].push_back(i);
    std::size_t oldAt = 0;
    std::size_t freshAt = 0;
    for (const EqualRun& run : alignSequences(oldHashes_, freshHashes_)) {
      gaps_.push_back({oldAt, run.a, freshAt, run.b});
      for (std::size_t i = 0; i < run.length; ++i) same(run.a + i, run.b + i);
      // A text that is everywhere tells nothing of its place when no neighbour is the same.
      if (run.length == 1 && !agree(places_[oldHashes_[run.a]])) unsure(run.b);
      oldAt = run.a + run.length;
      freshAt = run.b + run.length;
    }
    gaps_.push_back({oldAt, old_.size(), freshAt, fresh_.size()});
    carryMoved();
    for (const Gap& gap : gaps_) pairSimilar(gap);
    for (std::size_t i = 0; i < used_.size(); ++i) {
      if (!used_[i]) result_.gone.push_back(i);
    }
    return std::move(result_);
  }

 private:
  struct Gap {
    std::size_t oldBegin, oldEnd, freshBegin, freshEnd;
  };

  // The old text is the new one, codes aside.
  void same(std::size_t oldRecord, std::size_t freshRecord) {
    used_[oldRecord] = true;
    CarriedText& text = result_.texts[freshRecord];
    const Translation& translation = translations_[oldRecord];
    text.oldRecord = oldRecord;
    text.translation = translation.text;
    text.why = translation.why;
    text.ofPage = translation.ofPage;
    const std::string plain = withoutColor(old_[oldRecord]);
    if (translation.state == Translation::State::Unsure) {
      text.state = CarryState::Unsure;
    } else if (translation.state == Translation::State::None ||
               (!translation.meant && withoutColor(translation.text) == plain && hasLetter(plain))) {
      text.state = CarryState::Untranslated;
    } else {
      text.state = CarryState::Carried;
    }
  }

  bool agree(const std::vector<std::size_t>& records) const {
    return std::all_of(records.begin(), records.end(), [&](std::size_t record) {
      return translations_[record].state == translations_[records.front()].state &&
             translations_[record].text == translations_[records.front()].text;
    });
  }

  void unsure(std::size_t freshRecord) {
    result_.texts[freshRecord].state = CarryState::Unsure;
    result_.texts[freshRecord].why = "the text has several translations";
  }

  // Texts that left their place: sure when the old script has one translation for them.
  void carryMoved() {
    for (std::size_t i = 0; i < freshHashes_.size(); ++i) {
      const auto found = places_.find(freshHashes_[i]);
      if (result_.texts[i].oldRecord != kNone || found == places_.end()) continue;
      same(found->second.front(), i);
      if (!agree(found->second)) unsure(i);
    }
  }

  // What stands between equal texts on both sides, in the same order.
  void pairSimilar(const Gap& gap) {
    Lonely oldLeft;
    Lonely freshLeft;
    for (std::size_t i = gap.oldBegin; i < gap.oldEnd; ++i) {
      if (!used_[i]) oldLeft.add(i, withoutColor(old_[i]));
    }
    for (std::size_t i = gap.freshBegin; i < gap.freshEnd; ++i) {
      if (result_.texts[i].oldRecord == kNone) freshLeft.add(i, withoutColor(fresh_[i]));
    }
    for (const auto& [oldRecord, freshRecord, sameWords] : pairSimilarTexts(oldLeft, freshLeft)) {
      const Translation& translation = translations_[oldRecord];
      CarriedText& text = result_.texts[freshRecord];
      used_[oldRecord] = true;
      text.oldRecord = oldRecord;
      const bool translated =
          translation.state != Translation::State::None && (translation.meant || translation.text != old_[oldRecord]);
      text.translation = translated ? translation.text : std::string();
      text.ofPage = translation.ofPage;
      text.state = sameWords && translated ? CarryState::Unsure : CarryState::Changed;
      text.why = sameWords ? "only marks, blanks or letter case changed" : "the text changed";
    }
  }

  const Texts& old_;
  const std::vector<Translation>& translations_;
  const Texts& fresh_;
  std::vector<std::uint64_t> oldHashes_;
  std::vector<std::uint64_t> freshHashes_;
  std::unordered_map<std::uint64_t, std::vector<std::size_t>> places_;  // of each plain text in the old script
  std::vector<bool> used_;
  std::vector<Gap> gaps_;
  CarryResult result_;
};

constexpr std::size_t kKinds = 3;  // of texts: those with a record, titles, others

// For each page and each kind, the texts on it.
std::vector<std::vector<std::size_t>> recordsByPage(const LoadedScript& script) {
  std::vector<std::vector<std::size_t>> groups(script.outline.pages * kKinds);
  for (std::size_t i = 0; i < script.records.size(); ++i) {
    const OutlineText& text = *script.records[i];
    groups[text.page * kKinds + (text.record ? 0 : text.segment == Segment::Title ? 1 : 2)].push_back(i);
  }
  return groups;
}

// Pages of the translation by page of the original; kNone where none is found.
std::vector<std::size_t> matchPages(const Outline& original, const Outline& translated) {
  std::vector<std::size_t> partner(original.pages, kNone);
  if (original.pages == translated.pages) {
    for (std::size_t i = 0; i < partner.size(); ++i) partner[i] = i;
    return partner;
  }
  for (const EqualRun& run : alignSequences(original.pageKeys, translated.pageKeys)) {
    for (std::size_t i = 0; i < run.length; ++i) partner[run.a + i] = run.b + i;
  }
  return partner;
}

}  // namespace

std::vector<Translation> translationsFromExchange(const LoadedScript& script, std::string_view lxf,
                                                  const std::string& name) {
  std::vector<Translation> translations(script.records.size());
  const ExchangeFile file = cutExchangeFile(lxf);
  const auto& texts = script.records;
  const auto records = std::count_if(texts.begin(), texts.end(), [](const OutlineText* text) { return text->record; });
  if (const auto misfit = misfitOf(file, name, static_cast<std::size_t>(records))) throw Failure(*misfit);
  std::size_t record = 0;
  for (std::size_t i = 0; i < translations.size(); ++i) {
    if (!texts[i]->record) continue;
    translations[i].state = Translation::State::Known;
    translations[i].text = file.records[record++].text;
  }
  return translations;
}

std::vector<Translation> translationsFromScript(const LoadedScript& script, const LoadedScript& translated) {
  std::vector<Translation> translations(script.records.size());
  const auto oldPages = recordsByPage(script);
  const auto newPages = recordsByPage(translated);
  const std::vector<std::size_t> partner = matchPages(script.outline, translated.outline);
  for (std::size_t page = 0; page < oldPages.size(); ++page) {
    const std::size_t other = partner[page / kKinds];
    if (oldPages[page].empty() || other == kNone) {
      for (const std::size_t i : oldPages[page]) {
        translations[i] = {Translation::State::Unsure, "", "the translated script has no such page of dialogue"};
      }
      continue;
    }
    const std::vector<std::size_t>& texts = newPages[other * kKinds + page % kKinds];
    if (texts.size() == oldPages[page].size()) {
      for (std::size_t k = 0; k < texts.size(); ++k) {
        translations[oldPages[page][k]] = {Translation::State::Known, std::string(translated.records[texts[k]]->text),
                                           "", false};
      }
      continue;
    }
    // Re-flowed over more or fewer texts: the page's whole translation, to be put in by hand.
    std::string whole;
    for (const std::size_t i : texts) whole.append(whole.empty() ? "" : " | ").append(translated.records[i]->text);
    for (const std::size_t i : oldPages[page]) {
      translations[i] = {Translation::State::Unsure, whole, "the page is translated with another number of texts",
                         true};
    }
  }
  return translations;
}

std::vector<std::string_view> recordTexts(const LoadedScript& script) {
  Texts texts;
  texts.reserve(script.records.size());
  for (const OutlineText* text : script.records) texts.push_back(text->text);
  return texts;
}

CarryResult carryTranslations(const Texts& old, const std::vector<Translation>& translations, const Texts& fresh) {
  return Carrier(old, translations, fresh).run();
}

}  // namespace dravenna
