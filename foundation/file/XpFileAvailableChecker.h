// Looks for files and folders that may lie on an unreachable share: the caller waits for a limited time, and
// what hasn't answered by then counts as not there. Used where companions of a media file are looked for.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <vector>

#include "foundation/sync/XpCriticalSection.h"
#include "foundation/sync/XpManualEvent.h"
#include "foundation/sync/XpThread.h"
#include "vrx/XpString.h"

/// Threads may share one. Only the destructor waits without limit, for the tests that are still under way.
class XpFileAvailableChecker {
 public:
  /// What is asked of the system. Each may be called on a thread of its own.
  struct Tests {
    std::function<bool(const XpString& path)> isNetworkPath;
    std::function<bool(const XpString& path)> directoryExists;
    std::function<bool(const XpString& path)> fileExists;
    std::function<bool(const XpString& path)> stemFileExists;
    static Tests OfSystem();
  };

  explicit XpFileAvailableChecker(Tests tests = Tests::OfSystem());
  XpFileAvailableChecker(const XpFileAvailableChecker&) = delete;
  XpFileAvailableChecker& operator=(const XpFileAvailableChecker&) = delete;
  virtual ~XpFileAvailableChecker();

  // Time-outs are in milliseconds and hold for network paths; others are tested at once. With retries, a test
  // that didn't answer is begun again up to `retries` times, each with `factor` times the time-out of the one
  // before; with either below 1 there are none.
  virtual bool DirectoryExists(const XpString& path, std::uint32_t timeout);
  virtual bool DirectoryExistsRetry(const XpString& path, std::uint32_t timeout, std::int32_t retries,
                                    std::int32_t factor);
  /// A directory is no file.
  virtual bool FileExists(const XpString& path, std::uint32_t timeout);
  virtual bool FileExistsRetry(const XpString& path, std::uint32_t timeout, std::int32_t retries,
                               std::int32_t factor);
  /// True when some file of the directory has the path's stem, whatever its extension.
  virtual bool StemFileExists(const XpString& path, std::uint32_t timeout);
  virtual void ClearBadDirRoots();
  virtual void ClearBadFileRoots();

  /// With this on, a path, or the directory of a file, that once timed out counts as not there at once. Off
  /// at first.
  void SetRememberBadRoots(bool remember);

 private:
  using Test = std::function<bool(const XpString& path)>;
  struct Patience {
    std::int64_t timeout;  // milliseconds
    std::int32_t retries = 0;
    std::int32_t factor = 0;
  };
  struct Worker;
  enum class Answer { No, Yes, TimedOut };

  bool Ask(const Test& test, const XpString& path, const XpString& root, std::vector<XpString>& badRoots,
           Patience patience);
  Answer AskOnThread(const Test& test, const XpString& path, std::int64_t timeout);
  bool StartWorker(const Test& test, const XpString& path);
  static std::uint32_t RunWorker(void* worker);

  const Tests m_tests;
  bool m_rememberBadRoots = false;
  std::vector<XpString> m_badDirRoots;            // directories whose test timed out
  std::vector<XpString> m_badFileRoots;           // directories of files whose test timed out
  XpCriticalSection m_apiLock;                    // held by each public operation; taken before m_workerLock
  XpCriticalSection m_workerLock;                 // guards the three below
  std::deque<std::unique_ptr<Worker>> m_workers;  // the tests under way, newest at the back
  bool m_result = false;                          // the newest worker's answer
  XpManualEvent m_done;                           // set by the newest worker
};
