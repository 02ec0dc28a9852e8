#include "app/status.h"

#include <algorithm>

#include "app/disk_watch.h"
#include "app/principal.h"
#include "text/code_page.h"
#include "text/text.h"

namespace dravenna {

namespace {

std::u16string number(std::size_t value) { return decimal(static_cast<std::int64_t>(value)); }

std::u16string textOf(std::u16string_view word, const TextCount::Place& place) {
  return replaceAll(replaceAll(word, u"%2", number(place.count)), u"%1",
                    place.number == 0 ? u"\u2013" : number(place.number));
}

}  // namespace

std::u16string Status::pageName(int number) {
  if (number == 0) return {};
  return number == kUtf8CodePage ? std::u16string(u"UTF-8") : u"Windows-" + decimal(number);
}

bool Status::wanted() {
  if (!wanted_) wanted_ = numberIn(read(form_.registry(), settings::StatusPlace)) != 0;
  return *wanted_;
}

const Status::Words& Status::words() {
  using namespace desktop_words;
  const auto word = [this](const Setting& setting) { return read(form_.registry(), setting); };
  if (!words_) {
    words_ = Words{word(StatusText),
                   word(StatusLine),
                   word(StatusModified),
                   word(StatusErrors),
                   word(NotCommitted),
                   word(LooksUtf8),
                   word(BytesLacked),
                   {word(ClassScript), word(ClassComment), word(ClassScript), word(ClassError), word(ClassTitle),
                    word(ClassMessage), word(ClassCode)}};
  }
  return *words_;
}

Status::Parts Status::parts() {
  Parts parts;
  parts.rescued = rescued_;
  if (!wanted()) return parts;
  if (!form_.Modified) disk_.noteText(form_.ScriptPath, form_.N.Text());
  if (noticeUses_ == disk_.uses()) parts.notice = notice_;
  parts.page = pageName(disk_.page().number);
  parts.pageDoubt = pageDoubt();
  if (form_.Modified) parts.modified = words().modified;
  if (form_.N.Text().empty()) return parts;
  const TextCount::Place here = place();
  parts.text = textOf(words().text, here);
  parts.line = lineOf(here.line);
  if (const ErrorLines::Count& errors = errorLines_.count(form_.N); errors.lines > 0) {
    parts.errors = replaceAll(replaceAll(words().errors, u"%2", number(errors.first)), u"%1", number(errors.lines));
  }
  return parts;
}

std::u16string Status::pageDoubt() {
  if (lackedUses_ != disk_.uses()) {
    lacked_ = countLoneLow(form_.N.Text());
    lackedUses_ = disk_.uses();
  }
  const PageInUse page = disk_.page();
  if (page.looksUtf8 && page.number != kUtf8CodePage) return words().looksUtf8;
  return lacked_ == 0 ? std::u16string() : replaceAll(words().bytesLacked, u"%1", number(lacked_));
}

TextCount::Place Status::place() {
  return count_.place(form_.N, {form_.NavMode, form_.HasMessages, form_.HasCode, 0}, form_.Ini);
}

std::u16string Status::className(std::size_t offset) {
  if (offset >= form_.N.Text().size()) return {};
  return words().classes.at(static_cast<std::size_t>(segmentOf(form_.N.colorAt(offset)))) + u". ";
}

std::u16string Status::lineOf(std::size_t number) {
  return replaceAll(words().line, u"%1", decimal(static_cast<std::int64_t>(number)));
}

std::u16string Status::spokenText() {
  std::u16string spoken;
  if (!news_.empty() && newsIni_ == form_.Ini && newsUses_ == disk_.uses()) spoken = news_ + u" ";
  if (form_.N.Text().empty()) return spoken + read(form_.registry(), desktop_words::HowToBegin);
  if (form_.Ini == 0) return spoken;
  const TextCount::Place here = place();
  spoken += className(static_cast<std::size_t>(form_.Ini)) + textOf(words().text, here) + u". " + lineOf(here.line);
  if (form_.EDT.BackColor != 0) spoken += u". " + words().notCommitted;
  return spoken;
}

std::u16string Status::spokenPlace(std::size_t offset) { return className(offset) + lineOf(place().line); }

std::u16string Status::spokenLine(std::size_t offset) {
  const std::u16string& text = form_.N.Text();
  const auto before = std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(offset), u'\n');
  return className(offset) + lineOf(static_cast<std::size_t>(before) + 1) + u". " +
         text.substr(offset, text.find(u"\r\n", offset) - offset);
}

void Status::lookAtDisk() {
  if (disk_.changed(form_.ScriptPath)) setNotice(read(form_.registry(), desktop_words::ChangedOnDisk));
}

void Status::setRescued(std::size_t finds) {
  rescued_ = finds == 0 ? std::u16string() : readFilled(form_.registry(), desktop_words::Rescued, number(finds));
  if (finds > finds_) setNews(rescued_);
  finds_ = finds;
}

void Status::setNotice(std::u16string notice) {
  notice_ = std::move(notice);
  noticeUses_ = disk_.uses();
  setNews(notice_);
}

void Status::withdraw(const std::u16string& notice) {
  if (notice_ == notice) setNotice({});
}

void Status::setNews(const std::u16string& news) {
  news_ = news.empty() || news.ends_with(u'.') ? news : news + u".";
  newsIni_ = form_.Ini;
  newsUses_ = disk_.uses();
}

}  // namespace dravenna
