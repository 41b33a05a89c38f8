#include "foundation/platform/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

#include "foundation/platform/Paths.h"

extern char** environ;

namespace vrx::platform {
namespace {

std::error_code ErrorOf(int number) { return {number, std::generic_category()}; }

/// What a new process has in place of this one's set-up.
class SpawnSettings {
 public:
  SpawnSettings(int output, int errors) {
    posix_spawn_file_actions_init(&m_files);
    posix_spawn_file_actions_addopen(&m_files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&m_files, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&m_files, errors, STDERR_FILENO);
    posix_spawnattr_init(&m_attributes);
    sigset_t signals;
    sigemptyset(&signals);
    posix_spawnattr_setsigmask(&m_attributes, &signals);
    for (const int signal : {SIGINT, SIGTERM, SIGPIPE}) sigaddset(&signals, signal);
    posix_spawnattr_setsigdefault(&m_attributes, &signals);
    posix_spawnattr_setpgroup(&m_attributes, 0);
    posix_spawnattr_setflags(&m_attributes,
                             POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
  }
  SpawnSettings(const SpawnSettings&) = delete;
  SpawnSettings& operator=(const SpawnSettings&) = delete;
  ~SpawnSettings() {
    posix_spawnattr_destroy(&m_attributes);
    posix_spawn_file_actions_destroy(&m_files);
  }
  int Spawn(const std::string& program, std::vector<char*>& arguments, pid_t& process) const {
    return posix_spawn(&process, program.c_str(), &m_files, &m_attributes, arguments.data(), environ);
  }

 private:
  posix_spawn_file_actions_t m_files{};
  posix_spawnattr_t m_attributes{};
};

}  // namespace

ChildProcess::~ChildProcess() {
  for (const int pipe : {m_output, m_errors}) {
    if (pipe != kNone) close(pipe);
  }
  if (m_process == kNone) return;
  Kill();
  Wait();
}

std::error_code ChildProcess::Start(const XpString& program, const std::vector<std::string>& arguments) {
  std::array<int, 2> output{}, errors{};
  if (pipe2(output.data(), O_CLOEXEC) != 0) return ErrorOf(errno);
  if (pipe2(errors.data(), O_CLOEXEC) != 0) {
    const int error = errno;
    for (const int pipe : output) close(pipe);
    return ErrorOf(error);
  }
  m_output = output[0];
  m_errors = errors[0];
  const std::string path = NativePath(program);
  std::vector<char*> words{const_cast<char*>(path.c_str())};
  for (const std::string& argument : arguments) words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);
  pid_t process = kNone;
  const int error = SpawnSettings(output[1], errors[1]).Spawn(path, words, process);
  close(output[1]);
  close(errors[1]);
  const std::scoped_lock lock(m_mutex);
  if (error == 0) m_process = process;
  return ErrorOf(error);
}

bool ChildProcess::ReadSome(int& pipe, std::string& text) {
  std::array<char, 1 << 14> block;
  const ssize_t count = read(pipe, block.data(), block.size());
  if (count < 0 && errno == EINTR) return true;
  if (count > 0) {
    text.append(block.data(), static_cast<std::size_t>(count));
    return true;
  }
  close(pipe);
  pipe = kNone;
  return false;
}

bool ChildProcess::Read(std::string& output, std::string& errors) {
  // A pipe that has been closed has the number -1, which poll passes over.
  std::array<pollfd, 2> pipes{{{m_output, POLLIN, 0}, {m_errors, POLLIN, 0}}};
  constexpr int kForever = -1;
  if (m_output == kNone && m_errors == kNone) return false;
  if (poll(pipes.data(), pipes.size(), kForever) < 0) return errno == EINTR;
  if (pipes[0].revents != 0) ReadSome(m_output, output);
  if (pipes[1].revents != 0) ReadSome(m_errors, errors);
  return true;
}

int ChildProcess::Wait() {
  // The number stays taken until the lock is held, so that no signal goes to another process.
  siginfo_t info;
  while (waitid(P_PID, static_cast<id_t>(m_process), &info, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
  }
  const std::scoped_lock lock(m_mutex);
  int status = 0;
  waitpid(m_process, &status, 0);
  m_process = kNone;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void ChildProcess::Send(int signal) {
  const std::scoped_lock lock(m_mutex);
  if (m_process != kNone) kill(m_process, signal);
}

void ChildProcess::Interrupt() { Send(SIGINT); }
void ChildProcess::Kill() { Send(SIGKILL); }

}  // namespace vrx::platform
