#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tool/script/encoding.h"
#include "tool/script/outline.h"

namespace dravenna {

// A script with its outline; stays where it is, since the outline looks into it.
struct LoadedScript {
  LoadedScript(std::string bytes, const Encoding& encoding)
      : in(encoding), file(std::move(bytes)), work(in.codec.toWork(file, buffer)), outline(outlineOf(work, in.lists)) {
    for (const OutlineText& text : outline.texts) {
      if (text.record) records.push_back(&text);
    }
  }
  LoadedScript(const LoadedScript&) = delete;
  LoadedScript& operator=(const LoadedScript&) = delete;

  const Encoding& in;
  std::string file;
  std::string buffer;
  std::string_view work;
  Outline outline;
  std::vector<const OutlineText*> records;  // the texts with a record, in order
};

}  // namespace dravenna
