// FOLDER ROUNDS: a fuzz target where there is no fuzzer. Runs the inputs in the folder, then so many that are cut
// together of them, the same ones each time.

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <set>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

std::string input;

void showInput(int) { std::fprintf(stderr, "--- input:\n%s\n---\n", input.c_str()); }

void run() { LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size()); }

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  std::signal(SIGABRT, showInput);
  std::set<std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator(argv[1])) {
    std::ifstream file(entry.path(), std::ios::binary);
    found.emplace(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  const std::vector<std::string> inputs(found.begin(), found.end());
  for (const std::string& whole : inputs) {
    input = whole;
    run();
  }
  std::minstd_rand random(1);
  const auto below = [&](std::size_t limit) { return random() % limit; };
  for (int round = std::stoi(argv[2]); round > 0; --round) {
    input = inputs[below(inputs.size())];
    for (std::size_t cuts = 1 + below(8); cuts > 0; --cuts) {
      const std::string& from = inputs[below(inputs.size())];
      const std::string piece = from.substr(below(from.size()), below(12));
      const std::size_t at = below(input.size() + 1);
      input.replace(at, below(2) == 0 ? 0 : below(12), piece);
      if (below(4) == 0) input.front() = static_cast<char>('0' + below(15));
    }
    run();
  }
  return 0;
}
