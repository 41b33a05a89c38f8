// Runs work in a process of its own and kills it at any of the calls by which it changes files, so that a
// test can look at what is left.
#pragma once

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>
#include <functional>
#include <set>

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

/// Some containers forbid a process to be traced.
inline bool MayTrace() {
  const pid_t child = fork();
  if (child == 0) _exit(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 ? 0 : 1);
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

/// Kills `work` when it enters its system call number `last`, from 1, that could change a file. False when it
/// ended before that, which has to be with success.
inline bool IsKilledAtCall(const std::function<bool()>& work, int last) {
  const pid_t child = fork();
  if (child == 0) {
    ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    raise(SIGSTOP);
    _exit(work() ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  for (int calls = 0;;) {
    if (ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) != 0) break;
    waitpid(child, &status, 0);
    if (!WIFSTOPPED(status)) break;
    if (WSTOPSIG(status) != (SIGTRAP | 0x80)) continue;
    __ptrace_syscall_info info{};
    ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info);
    static const std::set<std::uint64_t> kChanging{SYS_write,     SYS_fsync,    SYS_rename,
                                                   SYS_unlink,    SYS_fchmod,   SYS_utimensat,
                                                   SYS_fsetxattr, SYS_setxattr, SYS_chmod};
    if (info.op != PTRACE_SYSCALL_INFO_ENTRY || !kChanging.contains(info.entry.nr) || ++calls != last)
      continue;
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return true;
  }
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  return false;
}
