#include "foundation/registry/RegistryStore.h"

#include <string>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/file/XpReplaceFile.h"
#include "foundation/platform/FileLock.h"
#include "foundation/platform/FileSystem.h"
#include "foundation/platform/KnownFolders.h"
#include "foundation/text/XpFormat.h"
#include "foundation/text/XpPath.h"

namespace vrx::registry {
namespace {

constexpr std::int64_t kLargestFile = std::int64_t{16} << 20;
constexpr std::int32_t kMostDamagedFiles = 100;

const char16_t* FileNameOf(Root root) {
  switch (root) {
    case Root::LocalMachine:
      return u"local-machine.json";
    case Root::ClassesRoot:
      return u"classes-root.json";
    default:
      return u"current-user.json";
  }
}

enum class State { Missing, Damaged, Unreadable, Good };

State ReadFile(const XpString& path, Document& document) {
  if (!XpPathExists(path, nullptr)) return State::Missing;
  XpFile file;
  if (file.OpenPath(path, XpOpenRead, XpShareRead) != XpOk) return State::Unreadable;
  std::int64_t size = 0;
  if (file.Stat(nullptr, nullptr, nullptr, &size) != XpOk) return State::Unreadable;
  if (size > kLargestFile) return State::Damaged;
  std::string bytes(static_cast<std::size_t>(size), '\0');
  std::uint64_t done = 0;
  if (size != 0 && file.Read(bytes.data(), bytes.size(), &done) != XpOk) return State::Unreadable;
  return document.Parse(bytes) ? State::Good : State::Damaged;
}

/// Copies the damaged file beside itself; `kept` is the copy's path.
bool KeepDamagedFile(const XpString& path, XpString& kept) {
  for (std::int32_t i = 1; i <= kMostDamagedFiles; ++i) {
    XpString free = path + u".damaged";
    if (i > 1) XpAppendFormat(free, u"-%d", i);
    if (XpPathExists(free, nullptr)) continue;
    if (platform::CopyFile(path, free, {})) return false;
    kept = free;
    return true;
  }
  return false;
}

bool ReplaceStore(const XpString& path, const std::string& bytes, bool isDamaged) {
  XpString kept;
  const XpResult result = XpReplaceFile(path, [&](XpAbstractFile& file) -> XpResult {
    if (isDamaged && !KeepDamagedFile(path, kept)) return XpErrFailed;
    return file.Write(bytes.data(), bytes.size(), nullptr);
  });
  if (result != XpOk && !kept.IsEmpty()) platform::RemoveFile(kept);
  return result == XpOk;
}

}  // namespace

Root RootOf(std::uint32_t kind) {
  return kind == 1 ? Root::LocalMachine : kind == 2 ? Root::ClassesRoot : Root::CurrentUser;
}

XpString StorePath(Root root) {
  const XpString overriding = platform::RegistryFolderOverride();
  if (!overriding.IsEmpty()) return XpPathJoin(overriding, FileNameOf(root));
  const XpString base =
      root == Root::LocalMachine ? platform::SystemConfigurationFolder() : platform::ConfigurationFolder();
  return base.IsEmpty() ? base : XpPathJoin(XpPathJoin(base, u"vrx"), FileNameOf(root));
}

Document ReadStore(Root root) {
  Document document;
  ReadFile(StorePath(root), document);
  return document;
}

XpResult ChangeStore(Root root, const std::function<bool(Document&)>& change) {
  const XpString path = StorePath(root);
  if (path.IsEmpty()) return XpErrFailed;
  const XpString folder = XpPathDirectory(path);
  if (!XpPathIsDirectory(folder) && XpPathMake(folder) != XpOk) return XpErrFailed;
  const platform::FileLock lock(path + u".lock");
  if (!lock.IsHeld()) return XpErrFailed;
  Document document;
  const State state = ReadFile(path, document);
  if (state == State::Unreadable) return XpErrFailed;
  if (!change(document)) return XpOk;
  return ReplaceStore(path, document.Write(), state == State::Damaged) ? XpOk : XpErrFailed;
}

}  // namespace vrx::registry
