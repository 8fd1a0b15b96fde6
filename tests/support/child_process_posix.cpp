#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>
#include <thread>

#include "support/child_process.h"

extern char** environ;

namespace test {
namespace {

using Clock = std::chrono::steady_clock;

pid_t Start(const std::string& program, const std::vector<std::string>& arguments,
            const std::string& output) {
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_adddup2(&actions, 1, 2);
  pid_t child = 0;
  const int error = posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("can't start " + program);
  return child;
}

}  // namespace

std::vector<std::string> Utf8Arguments(int argc, char** argv) { return {argv + 1, argv + argc}; }

std::filesystem::path ProgramFolder() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

ChildEnd RunChild(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                  const std::filesystem::path& output, std::chrono::seconds patience) {
  const auto start = Clock::now();
  const std::string sink = output.empty() ? "/dev/null" : output.string();
  const pid_t child = Start(program.string(), arguments, sink);
  ChildEnd end;
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (Clock::now() - start > patience && !end.timedOut) {
      end.timedOut = true;
      kill(child, SIGKILL);
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  end.duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
  if (WIFSIGNALED(status)) end.signal = WTERMSIG(status);
  if (WIFEXITED(status)) end.status = static_cast<uint32_t>(WEXITSTATUS(status));
  return end;
}

}  // namespace test
