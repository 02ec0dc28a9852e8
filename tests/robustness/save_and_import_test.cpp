// Each single call to the system goes wrong in turn, or is the last of the process, while files are replaced: each of
// them is the old or the new one, whole.

#include <gtest/gtest.h>
#include "long_script.h"
#include "platform/faulty_calls.h"
#include "platform/posix/tree_files.h"
#include "platform/scratch_folder.h"
#include "support/quiet_form.h"
#include "tool/po_files/po_file.h"
#include "tool/run/session.h"

namespace dravenna {
namespace {

namespace fs = std::filesystem;

constexpr int kFew = 3;
const std::string kLong(22000, 'x');  // three are more than one read of the window
constexpr fs::perms kPrivate = fs::perms::owner_read | fs::perms::owner_write;

// One run over a fresh folder.
struct Scene {
  explicit Scene(const std::string& more)
      : script(scriptOf(kFew, more + "Old ")), after{{"guard.txt", scriptOf(kFew, more + "New ")}} {
    folder.put("guard.txt", script);
    folder.put("guard.lxf", exchangeFileOf(kFew, more + "New "));
  }

  ScratchFolder folder;
  FaultyCalls calls;
  std::string script;
  std::map<std::string, std::string> after;  // of what is to be replaced
  std::string backup;                        // the suffix of backups, if there are any
};

bool isTemporary(const std::string& name) { return name.starts_with(".dravenna-") && name.ends_with(".tmp"); }

// `prepare` sets the scene and gives the operation, which gives whether it told of a failure.
void failEach(const std::string& more, const std::function<std::function<bool()>(Scene&)>& prepare) {
  std::set<std::string> failed;
  atEachCall([&](const FaultyCalls& faulty) {
    Scene scene(more);
    const std::function<bool()> act = prepare(scene);
    const std::set<std::string> names = scene.folder.names();
    std::map<std::string, std::string> before;
    for (const auto& [name, bytes] : scene.after) {
      before[name] = scene.folder.get(name);
      fs::permissions(scene.folder.file(name), kPrivate);
    }

    scene.calls = faulty;
    const bool told = scene.calls.attempt(act);
    const FaultyCalls called = std::exchange(scene.calls, FaultyCalls());
    if (told) failed.insert(called.failed());
    for (const auto& [name, bytes] : scene.after) {
      const std::string now = scene.folder.get(name);
      EXPECT_TRUE(now == before[name] || now == bytes) << name << " of " << now.size() << " bytes";
      EXPECT_TRUE(told || called.killed() || now == bytes) << "a failure that nobody heard of: " << called.failed();
      EXPECT_TRUE(told || called.killed() || scene.folder.names().contains(name + scene.backup)) << "no backup";
    }
    for (const std::string& name : scene.folder.names()) {
      const std::string original = name.substr(0, name.rfind(scene.backup));
      const bool isBackup = name != original && before.contains(original);
      EXPECT_TRUE(names.contains(name) || isBackup || (called.killed() && isTemporary(name))) << name;
      EXPECT_TRUE(!isTemporary(name) || fs::status(scene.folder.file(name)).permissions() == kPrivate) << name;
      EXPECT_TRUE(!isBackup || scene.folder.get(name) == before[original]) << name;
    }
    EXPECT_TRUE(called.happened() || called.onDisk());
    EXPECT_FALSE(act()) << "the program does not recover";
    for (const auto& [name, bytes] : scene.after) EXPECT_TRUE(scene.folder.get(name) == bytes) << "the second try";
    return called.happened();
  });
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
  failEach(kLong, [](Scene& scene) {
    const auto form = openForm(scene);
    form->typeAndCommit(fromUtf8(kLong + "New 1"));
    scene.after["guard.txt"] = scene.script.replace(scene.script.find("Old 1"), 5, "New 1");
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
  failEach(kLong, [](Scene& scene) {
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

// The operation of the tool with these words.
std::function<bool()> tool(Scene& scene, std::vector<std::string> words) {
  words.insert(words.end(), {"--codepage=1252", "--quiet", "--jobs=1"});
  return [&scene, words] {
    Session session;
    session.files = posix::makeTreeFiles(scene.calls);
    CommandLine line("", "", "");
    (words[0] == "po" ? addPo : addImport)(line.program(), session);
    try {
      line.run(words);
    } catch (const Failure& failure) {
      session.console.error(shown(failure.description()));
    }
    return session.console.failed();
  };
}

// With messages on standard error, which every failure must have.
void failEachQuietly(const std::function<std::function<bool()>(Scene&)>& prepare) {
  testing::internal::CaptureStderr();
  failEach("", prepare);
  EXPECT_NE(testing::internal::GetCapturedStderr().find("error: "), std::string::npos);
}

TEST(Import, FailsWholeInTheTool) {
  failEachQuietly([](Scene& scene) {
    return tool(scene, {"import", scene.folder.file("guard.txt"), scene.folder.file("guard.lxf")});
  });
  failEachQuietly([](Scene& scene) {  // a tree
    scene.folder.put("smith.txt", scriptOf(2, "Old "));
    scene.folder.put("smith.lxf", exchangeFileOf(2, "New "));
    scene.after["smith.txt"] = scriptOf(2, "New ");
    scene.backup = ".orig";
    const std::string folder = scene.folder.file("").parent_path();
    return tool(scene, {"import", folder, "--from=" + folder, "--backup=.orig"});
  });
}

TEST(Po, FailsWhole) {
  if (!poFilesBuiltIn()) GTEST_SKIP() << "no PO files in this build";
  const auto exportOf = [](Scene& scene) {
    const std::string few = scene.folder.put("few.txt", scriptOf(2, "Old "));
    return tool(scene, {"po", "export", few, "--out=" + scene.folder.file("few.po").string(), "--force"});
  };
  failEachQuietly([&](Scene& scene) {
    auto act = exportOf(scene);
    EXPECT_FALSE(act());
    scene.after = {{"few.po", scene.folder.get("few.po")}};
    scene.folder.put("few.po", "msgid \"translated\"\nmsgstr \"before\"\n");
    return act;
  });
  failEachQuietly([&](Scene& scene) {
    EXPECT_FALSE(exportOf(scene)());
    std::string po = scene.folder.get("few.po");
    for (const std::string number : {"1", "2"}) {
      const std::string id = "msgid \"Old " + number + "\"\nmsgstr \"";
      po.insert(po.find(id) + id.size(), "New " + number);
    }
    scene.after = {{"few.txt", scriptOf(2, "New ")}};
    return tool(scene,
                {"po", "import", scene.folder.file("few.txt"), "--from=" + scene.folder.put("few.po", po).string()});
  });
}

}  // namespace
}  // namespace dravenna
