// Starts another program, reads what it prints and waits for its end. `vrx render --jobs` renders pieces of a
// movie with it.
#pragma once

#include <mutex>
#include <string>
#include <system_error>
#include <vector>

#include "vrx/XpString.h"

namespace vrx::platform {

class ChildProcess {
 public:
  ChildProcess() = default;
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;
  /// Kills a process that still runs.
  ~ChildProcess();

  /// Once. The process has nothing on standard input and takes interrupts as usual, also where this one does
  /// not; those of the terminal do not reach it.
  std::error_code Start(const XpString& program, const std::vector<std::string>& arguments);
  /// Waits for more on its standard output or standard error and appends it. False when both have ended.
  bool Read(std::string& output, std::string& errors);
  /// Waits for its end and gives its exit status, or minus the signal that ended it. Once, after a Start that
  /// was no error.
  int Wait();

  // From any thread; they do nothing before the start and after the end.
  /// As Ctrl-C would.
  void Interrupt();
  void Kill();

 private:
  static constexpr int kNone = -1;

  void Send(int signal);
  static bool ReadSome(int& pipe, std::string& text);

  std::mutex m_mutex;     // guards the number, which another process may get after the end
  int m_process = kNone;  // that has not been waited for
  int m_output = kNone;
  int m_errors = kNone;
};

}  // namespace vrx::platform
