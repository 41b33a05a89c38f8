// A process of this program that renders one piece, and what it says of its progress as JSON.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "foundation/platform/ChildProcess.h"
#include "foundation/platform/Signals.h"
#include "src/check/ProjectReport.h"

namespace vrx::host {

class PieceProcess {
 public:
  struct Failure {
    std::uint32_t code = 0;
    check::Problem cause;
  };
  struct State {
    std::uint32_t percent = 0;
    bool isWritten = false;  // the piece is there
    std::int64_t copiedFrames = 0;
    std::vector<check::Problem> problems;  // of a piece that is there
    std::optional<Failure> failure;
    bool hasEnded = false;
  };

  /// The waiter is woken whenever something is new.
  explicit PieceProcess(platform::InterruptWaiter& waiter) : m_waiter(waiter) {}
  PieceProcess(const PieceProcess&) = delete;
  PieceProcess& operator=(const PieceProcess&) = delete;
  /// Kills a process that still runs.
  ~PieceProcess();

  /// Once; `command` is a program and its arguments.
  std::error_code Start(const std::vector<std::string>& command);
  State GetState() const;
  void Interrupt() { m_child.Interrupt(); }
  void Kill() { m_child.Kill(); }

 private:
  void Follow();
  void TakeLines(std::string& output);
  void TakeEvent(const std::string& line);

  platform::InterruptWaiter& m_waiter;
  platform::ChildProcess m_child;
  mutable std::mutex m_mutex;
  State m_state;         // guarded
  std::thread m_thread;  // reads what the process says until it ends
};

}  // namespace vrx::host
