#include "app/status.h"

#include "app/disk_watch.h"
#include "app/principal.h"
#include "text/code_page.h"
#include "text/text.h"

namespace dravenna {

namespace {

std::u16string number(std::size_t value) { return decimal(static_cast<std::int64_t>(value)); }

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
  const auto word = [this](const Setting& setting) { return read(form_.registry(), setting); };
  if (!words_) {
    words_ =
        Words{word(desktop_words::StatusText), word(desktop_words::StatusLine), word(desktop_words::StatusModified)};
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
  const TextCount::Place place = count_.place(form_.N, {form_.NavMode, form_.HasMessages, form_.HasCode, 0}, form_.Ini);
  parts.text = replaceAll(replaceAll(words().text, u"%2", number(place.count)), u"%1",
                          place.number == 0 ? u"\u2013" : number(place.number));
  parts.line = replaceAll(words().line, u"%1", number(place.line));
  if (const ErrorLines::Count& errors = errorLines_.count(form_.N); errors.lines > 0) {
    parts.errors = replaceAll(readFilled(form_.registry(), desktop_words::StatusErrors, number(errors.lines)), u"%2",
                              number(errors.first));
  }
  return parts;
}

std::u16string Status::pageDoubt() {
  if (lackedUses_ != disk_.uses()) {
    lacked_ = countLoneLow(form_.N.Text());
    lackedUses_ = disk_.uses();
  }
  const PageInUse page = disk_.page();
  if (page.looksUtf8 && page.number != kUtf8CodePage) return read(form_.registry(), desktop_words::LooksUtf8);
  return lacked_ == 0 ? std::u16string() : readFilled(form_.registry(), desktop_words::BytesLacked, number(lacked_));
}

void Status::lookAtDisk() {
  if (disk_.changed(form_.ScriptPath)) setNotice(read(form_.registry(), desktop_words::ChangedOnDisk));
}

void Status::setRescued(std::size_t finds) {
  rescued_ = finds == 0 ? std::u16string() : readFilled(form_.registry(), desktop_words::Rescued, number(finds));
}

void Status::setNotice(std::u16string notice) {
  notice_ = std::move(notice);
  noticeUses_ = disk_.uses();
}

}  // namespace dravenna
