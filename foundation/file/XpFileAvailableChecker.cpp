#include "foundation/file/XpFileAvailableChecker.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/NetworkPath.h"
#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"

namespace platform = vrx::platform;

namespace {

bool FolderHasStem(const XpString& path) {
  const XpString folder = XpPathDirectory(platform::AbsolutePath(path));
  const XpString stem = XpPathStem(path);
  std::vector<XpString> names;
  if (platform::ListFolder(folder, names)) return false;
  return std::any_of(names.begin(), names.end(), [&](const XpString& name) {
    return XpCompareNoCase(XpPathStem(name), stem) == 0 && XpPathIsFile(XpPathJoin(folder, name));
  });
}

std::int64_t Times(std::int64_t time, std::int32_t factor) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
  return time > kMost / factor ? kMost : time * factor;
}

}  // namespace

/// A running test, which may outlive the call that started it.
struct XpFileAvailableChecker::Worker {
  XpFileAvailableChecker* checker;
  Test test;
  XpString path;
  XpThread* thread = nullptr;
  bool hasEnded = false;  // the thread only has to be joined
};

XpFileAvailableChecker::Tests XpFileAvailableChecker::Tests::OfSystem() {
  return {platform::IsNetworkPath, XpPathIsDirectory, XpPathIsFile, FolderHasStem};
}

XpFileAvailableChecker::XpFileAvailableChecker(Tests tests) : m_tests(std::move(tests)) {}

XpFileAvailableChecker::~XpFileAvailableChecker() {
  XpSingleLock lock(&m_apiLock);
  // The worker lock is not held here, since a worker takes it before it ends. No workers are added any more.
  for (const auto& worker : m_workers) XpThreadJoin(worker->thread);
}

bool XpFileAvailableChecker::DirectoryExists(const XpString& path, std::uint32_t timeout) {
  return DirectoryExistsRetry(path, timeout, 0, 0);
}

bool XpFileAvailableChecker::DirectoryExistsRetry(const XpString& path, std::uint32_t timeout,
                                                  std::int32_t retries, std::int32_t factor) {
  return Ask(m_tests.directoryExists, path, path, m_badDirRoots, {timeout, retries, factor});
}

bool XpFileAvailableChecker::FileExists(const XpString& path, std::uint32_t timeout) {
  return FileExistsRetry(path, timeout, 0, 0);
}

bool XpFileAvailableChecker::FileExistsRetry(const XpString& path, std::uint32_t timeout,
                                             std::int32_t retries, std::int32_t factor) {
  return Ask(m_tests.fileExists, path, XpPathDirectory(path), m_badFileRoots, {timeout, retries, factor});
}

bool XpFileAvailableChecker::StemFileExists(const XpString& path, std::uint32_t timeout) {
  return Ask(m_tests.stemFileExists, path, XpPathDirectory(path), m_badFileRoots, {timeout});
}

void XpFileAvailableChecker::ClearBadDirRoots() {
  XpSingleLock lock(&m_apiLock);
  m_badDirRoots.clear();
}

void XpFileAvailableChecker::ClearBadFileRoots() {
  XpSingleLock lock(&m_apiLock);
  m_badFileRoots.clear();
}

void XpFileAvailableChecker::SetRememberBadRoots(bool remember) {
  XpSingleLock lock(&m_apiLock);
  m_rememberBadRoots = remember;
}

bool XpFileAvailableChecker::Ask(const Test& test, const XpString& path, const XpString& root,
                                 std::vector<XpString>& badRoots, Patience patience) {
  XpSingleLock lock(&m_apiLock);
  if (!m_tests.isNetworkPath(path)) return test(path);
  const auto isRoot = [&](const XpString& bad) { return XpPathCompare(bad, root) == XpPathEqual; };
  if (m_rememberBadRoots && std::any_of(badRoots.begin(), badRoots.end(), isRoot)) return false;

  const std::int32_t retries = patience.factor < 1 ? 0 : std::max(patience.retries, 0);
  for (std::int32_t round = 0;; ++round) {
    const Answer answer = AskOnThread(test, path, patience.timeout);
    if (answer != Answer::TimedOut) return answer == Answer::Yes;
    if (round == retries) break;
    patience.timeout = Times(patience.timeout, patience.factor);
  }
  if (m_rememberBadRoots) badRoots.push_back(root);
  return false;
}

XpFileAvailableChecker::Answer XpFileAvailableChecker::AskOnThread(const Test& test, const XpString& path,
                                                                   std::int64_t timeout) {
  if (!StartWorker(test, path)) return test(path) ? Answer::Yes : Answer::No;
  if (m_done.WaitMilliseconds(timeout) != XpOk) return Answer::TimedOut;
  XpSingleLock lock(&m_workerLock);
  XpThreadJoin(m_workers.back()->thread);
  m_workers.pop_back();
  return m_result ? Answer::Yes : Answer::No;
}

bool XpFileAvailableChecker::StartWorker(const Test& test, const XpString& path) {
  XpSingleLock lock(&m_workerLock);
  // Otherwise workers that ended late would keep their stacks until the checker is destroyed.
  std::erase_if(m_workers, [](const std::unique_ptr<Worker>& worker) {
    if (worker->hasEnded) XpThreadJoin(worker->thread);
    return worker->hasEnded;
  });
  m_done.Set(false);
  m_result = false;
  auto worker = std::make_unique<Worker>(Worker{this, test, path});
  worker->thread = XpThreadCreate(RunWorker, worker.get(), 0);
  if (worker->thread == nullptr) return false;
  m_workers.push_back(std::move(worker));
  return true;
}

std::uint32_t XpFileAvailableChecker::RunWorker(void* argument) {
  Worker& worker = *static_cast<Worker*>(argument);
  const bool answer = worker.test(worker.path);
  XpFileAvailableChecker& checker = *worker.checker;
  XpSingleLock lock(&checker.m_workerLock);
  worker.hasEnded = true;
  // The caller may have given up on this test and started another.
  if (checker.m_workers.back().get() != &worker) return XpOk;
  checker.m_result = answer;
  checker.m_done.Set(true);
  return XpOk;
}
