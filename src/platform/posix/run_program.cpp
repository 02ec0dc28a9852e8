#include "platform/run_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/posix/system_calls.h"

namespace dravenna {

namespace {

class SpawnActions {
 public:
  SpawnActions() { ::posix_spawn_file_actions_init(&actions_); }
  SpawnActions(const SpawnActions&) = delete;
  SpawnActions& operator=(const SpawnActions&) = delete;
  ~SpawnActions() { ::posix_spawn_file_actions_destroy(&actions_); }
  posix_spawn_file_actions_t* get() { return &actions_; }

 private:
  posix_spawn_file_actions_t actions_{};
};

}  // namespace

ProgramRun runProgram(const std::vector<std::string>& words) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) posix::failWithErrno(words[0]);
  SpawnActions actions;
  ::posix_spawn_file_actions_addopen(actions.get(), STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  ::posix_spawn_file_actions_adddup2(actions.get(), ends[1], STDOUT_FILENO);
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  pid_t child = 0;
  int failure = ::posix_spawnp(&child, arguments[0], actions.get(), nullptr, arguments.data(), environ);
  ::close(ends[1]);
  ProgramRun run{0, {}};
  char block[16384];
  ssize_t got = 0;
  while (failure == 0 && (got = posix::uninterrupted([&] { return ::read(ends[0], block, sizeof block); })) > 0) {
    run.output.append(block, static_cast<std::size_t>(got));
  }
  if (got < 0) failure = errno;
  ::close(ends[0]);
  int status = 0;
  if (child > 0) posix::uninterrupted([&] { return ::waitpid(child, &status, 0); });
  if (failure != 0) throw posix::SystemFailure(failure, words[0]);
  run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return run;
}

}  // namespace dravenna
