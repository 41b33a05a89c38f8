// Looks for files and folders that may be on an unreachable share. The caller waits for a limited time; what
// has not answered by then counts as missing. Used to look for the companions of a media file.
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

/// Thread-safe. Only the destructor waits without a limit, for the tests that are still running.
class XpFileAvailableChecker {
 public:
  /// The questions to the system. Each may be called on a thread of its own.
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

  // Time-outs are in milliseconds and apply to network paths; other paths are tested directly. A test that
  // did not answer is repeated up to `retries` times, each time with `factor` times the last time-out. Values
  // below 1 mean no retries.
  virtual bool DirectoryExists(const XpString& path, std::uint32_t timeout);
  virtual bool DirectoryExistsRetry(const XpString& path, std::uint32_t timeout, std::int32_t retries,
                                    std::int32_t factor);
  /// False for a directory.
  virtual bool FileExists(const XpString& path, std::uint32_t timeout);
  virtual bool FileExistsRetry(const XpString& path, std::uint32_t timeout, std::int32_t retries,
                               std::int32_t factor);
  /// True when some file of the directory has the path's stem, whatever its extension.
  virtual bool StemFileExists(const XpString& path, std::uint32_t timeout);
  virtual void ClearBadDirRoots();
  virtual void ClearBadFileRoots();

  /// When on, a path or a file's directory that timed out once counts as missing without another test. Off by
  /// default.
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
  std::deque<std::unique_ptr<Worker>> m_workers;  // running tests, newest at the back
  bool m_result = false;                          // the newest worker's answer
  XpManualEvent m_done;                           // set by the newest worker
};
