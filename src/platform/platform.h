#pragma once

#include "platform/commit_log.h"
#include "platform/failure.h"
#include "platform/process.h"
#include "platform/registry_calls.h"
#include "platform/text_files.h"
#include "platform/windowing.h"

namespace dravenna {

// All that the program asks of its surroundings. The services outlive the form.
struct Platform {
  TextFiles& files;
  RegistryCalls& registry;
  Process& process;
  Windowing& windowing;
  CommitLog& commits = CommitLog::none();
};

}  // namespace dravenna
