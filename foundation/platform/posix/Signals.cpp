#include "foundation/platform/Signals.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <csignal>

namespace vrx::platform {

void SurviveFileSizeLimit() { std::signal(SIGXFSZ, SIG_IGN); }

InterruptWaiter::InterruptWaiter() {
  sigset_t interrupts;
  sigemptyset(&interrupts);
  for (const int signal : {SIGINT, SIGTERM}) sigaddset(&interrupts, signal);
  // A program that is to go on after its terminal has gone is started with this one ignored.
  struct sigaction hangUp {};
  sigaction(SIGHUP, nullptr, &hangUp);
  if (hangUp.sa_handler != SIG_IGN) sigaddset(&interrupts, SIGHUP);
  pthread_sigmask(SIG_BLOCK, &interrupts, nullptr);
  SurviveFileSizeLimit();
  std::signal(SIGPIPE, SIG_IGN);
  m_signals = signalfd(-1, &interrupts, SFD_CLOEXEC | SFD_NONBLOCK);
  m_wake = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
}

InterruptWaiter::~InterruptWaiter() {
  close(m_signals);
  close(m_wake);
}

InterruptWaiter::Event InterruptWaiter::Wait(std::int32_t milliseconds) {
  std::array<pollfd, 2> sources{{{m_signals, POLLIN, 0}, {m_wake, POLLIN, 0}}};
  poll(sources.data(), sources.size(), milliseconds);
  signalfd_siginfo info;
  if (read(m_signals, &info, sizeof(info)) == static_cast<ssize_t>(sizeof(info))) return Event::Interrupt;
  std::uint64_t count = 0;
  if (read(m_wake, &count, sizeof(count)) == static_cast<ssize_t>(sizeof(count))) return Event::Wake;
  return Event::Timeout;
}

void InterruptWaiter::Wake() {
  const std::uint64_t one = 1;
  // A full counter already wakes the waiter, so a refused write loses nothing.
  [[maybe_unused]] const auto written = write(m_wake, &one, sizeof(one));
}

void ExitNow(int status) { _exit(status); }

}  // namespace vrx::platform
