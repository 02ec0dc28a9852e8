// Times of the core: each once on a generated script of 660 KB, and on one given by path as the first argument.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>

#include "app/principal.h"
#include "generated_script.h"
#include "platform/system.h"
#include "support/quiet_form.h"
#include "text/text.h"

namespace dravenna {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kScriptSize = 660 * std::size_t{1024};

// A form with a script open.
struct Editor {
  explicit Editor(const fs::path& source) {
    fs::copy_file(source, script, fs::copy_options::overwrite_existing);
    fs::permissions(script, fs::perms::owner_write, fs::perm_options::add);
    quiet.open(fromUtf8(script.string()));
  }

  void press(std::int16_t key, std::int16_t shift = 0) { form.Form_KeyDown(key, shift); }

  fs::path folder = fs::path(getenv("DRAVENNA_BENCH_DIR"));
  fs::path script = folder / "script.txt";
  QuietForm quiet{makeTextFiles(codePageByName("1252")), makeRegistry()};
  Principal& form = *quiet;
};

using State = benchmark::State;

void loadAndScan(State& state, Editor& editor) {
  for ([[maybe_unused]] auto _ : state) editor.form.LoadScript();
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fs::file_size(editor.script)));
}

void step(State& state, Editor& editor) {
  for ([[maybe_unused]] auto _ : state) editor.press(kKeyDown);
}

void commit(State& state, Editor& editor) {
  bool flip = false;
  for ([[maybe_unused]] auto _ : state) {
    editor.form.EDT.setText((flip = !flip) ? u"A longer text than the one that stood here before" : u"Short");
    editor.press(kKeyEnter);
  }
}

void replaceTitle(State& state, Editor& editor) {
  editor.form.NavMode = 1;
  editor.form.Ini = 0;
  editor.press(kKeyDown);
  if (editor.form.EDT.Text() != u"Guard") editor.form.Buscar(u"Guard", true);
  bool flip = false;
  for ([[maybe_unused]] auto _ : state) {
    editor.form.EDT.setText((flip = !flip) ? u"Gatekeeper" : u"Guard");
    editor.press(kKeyEnter);
  }
}

void searchWithoutHit(State& state, Editor& editor) {
  editor.form.xIni = 0;
  for ([[maybe_unused]] auto _ : state)
    editor.form.Buscar(u"CLOSE;", true);  // stands in code only: the walk goes to the end
}

void save(State& state, Editor& editor) {
  for ([[maybe_unused]] auto _ : state) editor.form.Salvar();
}

void exportScript(State& state, Editor& editor) {
  for ([[maybe_unused]] auto _ : state) editor.form.mnu_Export_Click();
}

void importScript(State& state, Editor& editor) {
  editor.form.mnu_Export_Click();
  for ([[maybe_unused]] auto _ : state) editor.form.mnu_Import_Click();
}

void removeColor(State& state, Editor& editor) {
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(editor.form.RemoveColor(editor.form.N.Text()));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(fs::file_size(editor.script)));
}

void openPicker(State& state, Editor& editor) {
  for ([[maybe_unused]] auto _ : state) editor.press(kKeyF5);
}

void registerAll(const std::string& suffix, const fs::path& source) {
  const std::pair<const char*, void (*)(State&, Editor&)> all[] = {{"load_and_scan", loadAndScan},
                                                                   {"step", step},
                                                                   {"commit", commit},
                                                                   {"replace_title", replaceTitle},
                                                                   {"search_no_hit", searchWithoutHit},
                                                                   {"save", save},
                                                                   {"export", exportScript},
                                                                   {"import", importScript},
                                                                   {"remove_color", removeColor},
                                                                   {"open_picker", openPicker}};
  for (const auto& [name, function] : all) {
    benchmark::RegisterBenchmark((name + suffix).c_str(), [function = function, source](State& state) {
      Editor editor(source);
      function(state, editor);
    })->Unit(benchmark::kMicrosecond);
  }
}

}  // namespace
}  // namespace dravenna

int main(int argc, char** argv) {
  namespace fs = std::filesystem;
  benchmark::Initialize(&argc, argv);
  const fs::path folder = fs::temp_directory_path() / "dravenna-bench";
  fs::create_directories(folder);
  setenv("DRAVENNA_BENCH_DIR", folder.c_str(), 1);
  setenv("DRAVENNA_REGISTRY", (folder / "registry.reg").c_str(), 1);
  const fs::path generated = folder / "generated.txt";
  dravenna::replaceBytes(dravenna::fromUtf8(generated.string()), dravenna::generatedScript(dravenna::kScriptSize));
  dravenna::registerAll("/generated", generated);
  if (argc > 1) dravenna::registerAll("/given", argv[1]);
  benchmark::RunSpecifiedBenchmarks();
  fs::remove_all(folder);
  return 0;
}
