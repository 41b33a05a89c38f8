#include "tests/render/VrxProcess.h"

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

[[noreturn]] void Become(const VrxCall& call, int input, int output, int errors) {
  dup2(input, STDIN_FILENO);
  if (call.output == VrxCall::kClosed) {
    close(STDOUT_FILENO);
  } else {
    dup2(call.output.empty() ? output : open(call.output.c_str(), O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
  }
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

}  // namespace

VrxResult RunVrx(const VrxCall& call) {
  int output[2];
  std::FILE* errors = std::tmpfile();
  std::FILE* input = std::tmpfile();
  if (errors == nullptr || input == nullptr || pipe2(output, O_CLOEXEC) != 0)
    throw std::runtime_error("pipe");
  std::fwrite(call.input.data(), 1, call.input.size(), input);
  std::rewind(input);
  const pid_t process = fork();
  if (process < 0) throw std::runtime_error("fork");
  if (process == 0) Become(call, fileno(input), output[1], fileno(errors));
  std::fclose(input);
  close(output[1]);

  VrxResult result;
  std::FILE* lines = fdopen(output[0], "r");
  char* bytes = nullptr;
  std::size_t capacity = 0;
  int read = 0;
  for (ssize_t length = 0; read != call.linesRead && (length = getline(&bytes, &capacity, lines)) > 0;
       ++read) {
    std::string line(bytes, static_cast<std::size_t>(length));
    result.output += line;
    if (!line.ends_with('\n') || !call.onLine) continue;
    line.pop_back();
    call.onLine(line, process);
  }
  std::fclose(lines);
  int status = 0;
  waitpid(process, &status, 0);
  std::rewind(errors);
  while (getline(&bytes, &capacity, errors) > 0) result.errors += bytes;
  std::free(bytes);
  std::fclose(errors);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return result;
}

std::string CopyVrx(const std::filesystem::path& folder, VrxParts parts) {
  const std::filesystem::path commands = VRX_COMMANDS;
  if (parts == VrxParts::ProgramAndCommands)
    std::filesystem::copy_file(commands, folder / commands.filename());
  const std::filesystem::path program = folder / "vrx";
  std::filesystem::copy_file(VRX_PROGRAM, program);
  return program.string();
}
