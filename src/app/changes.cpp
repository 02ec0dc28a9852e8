#include "app/principal.h"

// The list of what has been committed.
namespace dravenna {

void Principal::noteChange(std::u16string_view after, bool title) {
  const bool brackets = N.SelStart() > Ini;
  const auto whole = [&](std::u16string_view text) {
    return brackets ? u"[" + std::u16string(text) + u"]" : std::u16string(text);
  };
  changes_.push_back({quoteNumber(N.Text(), Ini), {Ini, title, whole(N.SelText()), whole(after)}});
  const JournalledCommit& commit = changes_.back().commit;
  platform_.commits.committing(Ini, title, commit.before, commit.after);
}

std::u16string_view Principal::selectedPart(std::u16string_view whole) const {
  return N.SelStart() > Ini && whole.size() >= 2 ? whole.substr(1, whole.size() - 2) : whole;
}

void Principal::offerOlder(std::size_t change) {
  if (!ScriptLoaded || change >= changes_.size()) return;
  if (EDT.Visible) commit();
  const TextChange& chosen = changes_[change];
  Ini = xIni = quotePosition(N.Text(), chosen.quote);
  ShowCurrentText();
  EDT.setText(selectedPart(chosen.commit.before));
  selectEditBox();
}

}  // namespace dravenna
