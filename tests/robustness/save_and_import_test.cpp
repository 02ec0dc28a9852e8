// Each single call to the system fails in turn while a script is replaced: it is the old or the new one, whole.

#include <gtest/gtest.h>

#include <CLI/CLI.hpp>

#include "long_script.h"
#include "platform/faulty_calls.h"
#include "platform/posix/tree_files.h"
#include "platform/scratch_folder.h"
#include "quiet_platform.h"
#include "tool/run/session.h"

namespace dravenna {
namespace {

using Fault = FaultyCalls::Fault;

constexpr int kMessages = 3000;  // more than one read and one write

// One run over a fresh folder.
struct Scene {
  ScratchFolder folder;
  FaultyCalls calls;
  std::string before = scriptOf(kMessages, "Old ");
  std::string after = scriptOf(kMessages, "New ");
};

// `prepare` sets the scene and gives the operation, which gives whether it told of a failure.
void failEach(const std::function<std::function<bool()>(Scene&)>& prepare) {
  const std::pair<Fault, int> faults[] = {{Fault::Error, EIO},
                                          {Fault::Error, EACCES},
                                          {Fault::Error, EINVAL},
                                          {Fault::Interrupted, 0},
                                          {Fault::ShortWrite, 0}};
  std::set<std::string> failed;
  for (const auto& [fault, error] : faults) {
    bool happened = true;
    for (int at = 0; happened; ++at) {
      Scene scene;
      scene.folder.put("guard.txt", scene.before);
      scene.folder.put("guard.lxf", exchangeFileOf(kMessages, "New "));
      const std::set<std::string> names = scene.folder.names();
      const std::function<bool()> act = prepare(scene);
      scene.calls = FaultyCalls(fault, at, error);
      const bool told = act();
      happened = scene.calls.happened();
      SCOPED_TRACE(scene.calls.failed() + " number " + std::to_string(at) + ", errno " + std::to_string(error));
      if (told) failed.insert(scene.calls.failed());
      EXPECT_TRUE(!told || fault == Fault::Error) << "an interruption or a short write is no failure";
      const std::string now = scene.folder.get("guard.txt");
      EXPECT_TRUE(now == scene.before || now == scene.after) << "a script of " << now.size() << " bytes";
      EXPECT_TRUE(told || now == scene.after) << "a failure that nobody heard of";
      EXPECT_EQ(scene.folder.names(), names);

      scene.calls = FaultyCalls();
      EXPECT_FALSE(act()) << "the program does not recover";
      EXPECT_TRUE(scene.folder.get("guard.txt") == scene.after) << "the second try has not done it";
      if (testing::Test::HasFailure()) return;
    }
  }
  for (const char* const name :
       {"open", "write", "fsync", "close", "rename", "stat", "fchmod", "mayWrite", "realpath"}) {
    EXPECT_TRUE(failed.contains(name)) << name;
  }
}

std::shared_ptr<QuietForm> openForm(Scene& scene) {
  auto form = std::make_shared<QuietForm>(codePageByName("1252"), scene.calls, scene.folder.file("registry.reg"));
  form->open(scene.folder.path("guard.txt"));
  return form;
}

TEST(Save, FailsWhole) {
  failEach([](Scene& scene) {
    const auto form = openForm(scene);
    form->typeAndCommit(u"New 1");
    scene.after = scene.before;
    scene.after.replace(scene.after.find("Old 1"), 5, "New 1");
    return [form] {
      form->boxes.clear();
      (*form)->Salvar();
      EXPECT_EQ(form->boxes.size(), 1U);
      EXPECT_EQ((*form)->Modified, form->saidError());
      EXPECT_EQ(form->said(u"File saved!"), !form->saidError());
      return form->saidError();
    };
  });
}

TEST(Import, FailsWholeInTheWindow) {
  failEach([](Scene& scene) {
    const auto form = openForm(scene);
    return [form, tries = 0]() mutable {
      if (tries++ > 0) (*form)->LoadScript();  // one that failed may have left a part of the script
      form->boxes.clear();
      (*form)->mnu_Import_Click();
      EXPECT_EQ((*form)->form.MousePointer, 0);
      EXPECT_TRUE(form->saidError() || form->said(u"LXF File imported!"));
      return form->saidError();
    };
  });
}

bool toolTellsOfFailure(FaultyCalls& calls, const std::vector<std::string>& arguments) {
  Session session;
  session.files = posix::makeTreeFiles(calls);
  CLI::App app;
  addImport(app, session);
  std::vector<const char*> words{"dravenna-lxf", "import", "--codepage=1252", "--quiet", "--jobs=1"};
  for (const std::string& argument : arguments) words.push_back(argument.c_str());
  testing::internal::CaptureStderr();
  try {
    app.parse(static_cast<int>(words.size()), words.data());
  } catch (const Failure& failure) {
    session.console.error(shown(failure.description()));
  }
  const bool failed = session.console.failed();
  EXPECT_EQ(testing::internal::GetCapturedStderr().find("error") != std::string::npos, failed);
  return failed;
}

TEST(Import, FailsWholeInTheTool) {
  for (const bool tree : {false, true}) {
    SCOPED_TRACE(tree ? "a tree" : "one script");
    failEach([tree](Scene& scene) {
      const std::string folder = scene.folder.file("").parent_path();
      const std::vector<std::string> arguments =
          tree ? std::vector{folder, "--from=" + folder} : std::vector{folder + "/guard.txt", folder + "/guard.lxf"};
      return [arguments, &scene] { return toolTellsOfFailure(scene.calls, arguments); };
    });
  }
}

}  // namespace
}  // namespace dravenna
