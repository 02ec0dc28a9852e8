// What is not saved, or is replaced unseen, is found again.

#include <gtest/gtest.h>

#include "app/disk_watch.h"
#include "app/rescue.h"
#include "long_script.h"
#include "platform/faulty_calls.h"
#include "platform/posix/rescue_folder.h"
#include "platform/scratch_folder.h"
#include "support/quiet_form.h"
#include "text/text.h"

namespace dravenna {
namespace {

namespace fs = std::filesystem;

// Text files that belong to somebody else.
class Watched : public TextFiles {
 public:
  explicit Watched(TextFiles& files) : files_(files) {}
  std::unique_ptr<TextReader> OpenTextFile(std::u16string_view path) override { return files_.OpenTextFile(path); }
  std::unique_ptr<TextReader> openScript(std::u16string_view path) override { return files_.openScript(path); }
  std::unique_ptr<TextWriter> CreateTextFile(std::u16string_view path, Writing writing) override {
    return files_.CreateTextFile(path, writing);
  }
  bool fileExists(std::u16string_view path) override { return files_.fileExists(path); }

 private:
  TextFiles& files_;
};

// A window with a rescue folder, over files that are read through `calls`.
struct RescuingForm {
  explicit RescuingForm(const ScratchFolder& folder, posix::SystemCalls& calls = posix::realSystemCalls(),
                        posix::SystemCalls& reads = posix::realSystemCalls())
      : rescueFolder(posix::makeRescueFolder(folder.file("rescue"), calls)),
        files(posix::makeTextFiles(codePageByName("1252"), reads)),
        form(std::make_unique<Watched>(disk),
             posix::makeRegistryFile(folder.file("registry.reg"), posix::realSystemCalls()), {}, rescue) {
    rescue.onFailure = [this](const Failure* failure) { failures += (failing = failure != nullptr) ? 1 : 0; };
  }

  Rescue::Restored restore(const Rescue::Find& find) {
    return rescue.restore(find, *form, [this](const std::u16string& path) {
      form.stage.picks = {path};
      form->OpenScript();
    });
  }
  void type(std::u16string_view text) {
    form.typeAndCommit(text);
    form->dispatchKey({kKeyDown, kShift, 0, Control::EDT});
  }

  std::unique_ptr<RescueFolder> rescueFolder;
  std::unique_ptr<TextFiles> files;
  DiskWatch disk{*files};
  Rescue rescue{rescueFolder.get(), disk};
  QuietForm form;
  int failures = 0;
  bool failing = false;
};

TEST(Rescue, ProcessThatEndsAtAnyCallLosesNoCommit) {
  constexpr std::size_t kTexts = 20;
  atEachCall([&](const FaultyCalls& faulty) {
    const ScratchFolder folder;
    folder.put("guard.txt", scriptOf(kTexts, "Old "));
    FaultyCalls calls, called;
    const auto done = [&] { return folder.get("done").size(); };
    {
      RescuingForm first(folder, calls);
      first.form.open(folder.path("guard.txt"));
      calls = faulty;
      calls.attempt([&] {
        std::ofstream count(folder.file("done"));
        for (std::size_t i = 1; i <= kTexts; ++i) {
          const bool failing = first.failing;
          first.type(u"New " + decimal(static_cast<std::int64_t>(i)));
          EXPECT_FALSE(failing && first.failing) << "it works again";
          count.put('.').flush();
          if (i % 8 == 0) first.rescue.flush();
        }
        RescuingForm second(folder);
        EXPECT_TRUE(calls.happened() || second.rescue.finds().empty()) << "what is in use counts as left behind";
        return first.failures > 0;
      });
      called = std::exchange(calls, FaultyCalls());
    }
    // A failure in the last commit of all could not be made up for by the next one.
    const std::size_t least = done() - (called.happened() && !called.killed() && done() == kTexts ? 1 : 0);

    RescuingForm next(folder);
    const std::vector<Rescue::Find> finds = next.rescue.finds();
    std::size_t restored = 0;
    if (!finds.empty()) {
      EXPECT_EQ(finds.size(), 1U);
      EXPECT_EQ(fs::status(folder.file("rescue")).permissions(), fs::perms::owner_all);
      EXPECT_EQ(fs::status(finds[0].file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
      restored = next.restore(finds[0]).texts;
      EXPECT_EQ(restored, finds[0].texts);
      next.form->Salvar();
    }
    EXPECT_GE(restored, least);
    std::string expected = scriptOf(static_cast<int>(restored), "New ");
    expected += scriptOf(kTexts, "Old ").substr(expected.size());
    EXPECT_EQ(folder.get("guard.txt"), expected);
    EXPECT_TRUE(next.rescue.finds().empty());
    return called.happened();
  });
}

TEST(Rescue, TextsComeBackAsTheyWereCommitted) {
  const ScratchFolder folder;
  const std::string script = "mes \"[Guard]\";\r\nmes \"one\";\r\nmes \"[GUARD]\"; // \"[guard]\"\r\ngoto \"x\";\r\n";
  folder.put("guard.txt", script);
  std::u16string edited;
  {
    RescuingForm first(folder);
    first.form->NavMode = 2;
    first.form.open(folder.path("guard.txt"));
    first.form.typeAndCommit(u"A \"long\"\t\\ title \u00E9\xDCC3\xDCA9");
    first.type(u"[x]");
    first.type(u"y");
    first.type(u"");
    edited = first.form->N.Text();
    EXPECT_NE(edited, fromUtf8(script));
  }
  {
    RescuingForm next(folder);
    ASSERT_EQ(next.rescue.finds().size(), 1U);
    next.restore(next.rescue.finds()[0]);
    EXPECT_EQ(next.form->N.Text(), edited);
    EXPECT_EQ(folder.get("guard.txt"), script);
  }
  // The user says no at the exit.
  RescuingForm last(folder);
  ASSERT_EQ(last.rescue.finds().size(), 1U);
  last.restore(last.rescue.finds()[0]);
  last.form.stage.answers = {Answer::No};
  last.form->Form_Unload();
  EXPECT_TRUE(fs::is_empty(folder.file("rescue")));
}

TEST(Rescue, WhatASaveReplacesUnseenIsKept) {
  struct Breaking : posix::SystemCalls {
    int reads = 0;
    ssize_t read(int file, void* to, std::size_t size) override {
      errno = EIO;
      return ++reads == 2 ? -1 : SystemCalls::read(file, to, size);
    }
  };
  const std::string other = scriptOf(2, "Other ");
  for (const bool breaks : {false, true}) {
    const ScratchFolder folder;
    const std::string script = scriptOf(10000, "Text ");
    folder.put("guard.txt", script);
    Breaking calls;
    RescuingForm form(folder, posix::realSystemCalls(), breaks ? calls : posix::realSystemCalls());
    form.form.open(folder.path("guard.txt"));
    if (!breaks) {
      form.form->Salvar();
      EXPECT_TRUE(form.rescue.finds().empty());
      folder.put("guard.txt", other);
    }
    form.form->Salvar();
    form.form->Salvar();
    EXPECT_FALSE(form.form.said(u"Error: No"));
    const std::vector<Rescue::Find> finds = form.rescue.finds();
    ASSERT_EQ(finds.size(), 1U);
    EXPECT_TRUE(form.rescue.contents(finds[0]) == (breaks ? script : other));
    EXPECT_EQ(finds[0].path, folder.path("guard.txt"));
    form.rescue.throwAway(finds[0]);
    EXPECT_TRUE(fs::is_empty(folder.file("rescue")));
  }
}

}  // namespace
}  // namespace dravenna
