#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tool/script/codec.h"
#include "tool/script/outline.h"

namespace dravenna {

// Texts without a record that are worked on, too.
struct MoreTexts {
  bool titles = false;
  bool choices = false;  // of menus whose command is not in the lists, as in `if (select("Yes:No") == 1)`
};

// A script with its outline; stays where it is, since the outline looks into it.
struct LoadedScript {
  LoadedScript(std::string bytes, const Encoding& encoding, MoreTexts more = {})
      : in(encoding), file(std::move(bytes)), work(in.codec.toWork(file, buffer)), outline(outlineOf(work, in.lists)) {
    for (const OutlineText& text : outline.texts) {
      const bool title = text.segment == Segment::Title;
      if (text.record || (more.titles && title) || (more.choices && text.inMenu && !title)) records.push_back(&text);
    }
  }
  LoadedScript(const LoadedScript&) = delete;
  LoadedScript& operator=(const LoadedScript&) = delete;

  const Encoding& in;
  std::string file;
  std::string buffer;
  std::string_view work;
  Outline outline;
  std::vector<const OutlineText*> records;  // the texts with a record, and more where wished, in order
};

}  // namespace dravenna
