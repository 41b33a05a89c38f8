#include "tests/render/VrxProcess.h"

#include <array>
#include <cstdio>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void Become(const VrxCall& call, int output, int errors) {
  dup2(output, STDOUT_FILENO);
  dup2(errors, STDERR_FILENO);
  if (call.fileSizeLimit >= 0) {
    const auto bytes = static_cast<rlim_t>(call.fileSizeLimit);
    const rlimit limit{bytes, bytes};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  const std::string program = call.program.empty() ? VRX_PROGRAM : call.program;
  std::vector<char*> arguments{const_cast<char*>(program.c_str())};
  for (const std::string& argument : call.arguments) arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);
  execv(program.c_str(), arguments.data());
  _exit(127);
}

/// Appends what can be read; false at the end of the stream.
bool Drain(int descriptor, std::string& text) {
  std::array<char, 4096> bytes;
  const ssize_t count = read(descriptor, bytes.data(), bytes.size());
  if (count > 0) text.append(bytes.data(), static_cast<std::size_t>(count));
  return count > 0;
}

}  // namespace

VrxResult RunVrx(const VrxCall& call) {
  int output[2];
  int errors[2];
  if (pipe2(output, O_CLOEXEC) != 0 || pipe2(errors, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
  const pid_t process = fork();
  if (process < 0) throw std::runtime_error("fork");
  if (process == 0) Become(call, output[1], errors[1]);
  close(output[1]);
  close(errors[1]);

  VrxResult result;
  std::size_t told = 0;
  std::array<pollfd, 2> streams{{{output[0], POLLIN, 0}, {errors[0], POLLIN, 0}}};
  while (streams[0].fd >= 0 || streams[1].fd >= 0) {
    poll(streams.data(), streams.size(), -1);
    if (streams[0].revents != 0 && !Drain(output[0], result.output)) streams[0].fd = -1;
    if (streams[1].revents != 0 && !Drain(errors[0], result.errors)) streams[1].fd = -1;
    for (auto end = result.output.find('\n', told); end != std::string::npos;
         end = result.output.find('\n', told)) {
      if (call.onLine) call.onLine(result.output.substr(told, end - told), process);
      told = end + 1;
    }
  }
  close(output[0]);
  close(errors[0]);
  int status = 0;
  waitpid(process, &status, 0);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return result;
}
