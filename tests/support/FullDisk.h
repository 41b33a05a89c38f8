// A disk that has no more room for a file of this process beyond some bytes.
#pragma once

#include <sys/resource.h>

#include <csignal>

class FullDisk {
 public:
  explicit FullDisk(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &m_limit);
    const rlimit small{bytes, m_limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &m_limit);
    std::signal(SIGXFSZ, m_handler);
  }

 private:
  void (*m_handler)(int) = std::signal(SIGXFSZ, SIG_IGN);  // writing then fails instead of ending the process
  rlimit m_limit{};
};
