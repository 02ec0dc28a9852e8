#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tool/run/session.h"
#include "tool/script/outline.h"

namespace dravenna {

// A script with its outline; stays where it is, since the outline looks into it.
struct LoadedScript {
  LoadedScript() = default;
  LoadedScript(const LoadedScript&) = delete;
  LoadedScript& operator=(const LoadedScript&) = delete;

  std::string file;
  std::string buffer;
  std::string_view work;
  Outline outline;
  std::vector<const OutlineText*> records;  // the texts with a record, in order
};

// Throws Failure.
inline std::unique_ptr<LoadedScript> loadScript(const Session& session, const std::string& path) {
  auto script = std::make_unique<LoadedScript>();
  script->work = readWork(session, path, script->file, script->buffer);
  script->outline = outlineOf(script->work, *session.lists);
  for (const OutlineText& text : script->outline.texts) {
    if (text.record) script->records.push_back(&text);
  }
  return script;
}

}  // namespace dravenna
