#include "foundation/file/XpSpecialFolder.h"

#include <atomic>

#include "foundation/file/XpFileOperations.h"
#include "foundation/platform/KnownFolders.h"
#include "foundation/platform/Module.h"
#include "foundation/text/XpPath.h"

namespace platform = vrx::platform;
using platform::UserFolder;

namespace {

std::atomic<XpInstalledLocation> installedLocation = nullptr;

/// A folder of the user that programs may rely on. One that cannot be made is still where files should go.
XpString MadeFolder(UserFolder folder) {
  const XpString path = platform::UserFolderPath(folder);
  if (!path.IsEmpty() && !XpPathIsDirectory(path)) XpPathMake(path);
  return path;
}

XpString JoinUnlessEmpty(const XpString& folder, const XpString& name) {
  return name.IsEmpty() ? folder : XpPathJoin(folder, name);
}

}  // namespace

XpString XpGetSpecialFolder(std::int32_t kind) {
  switch (kind) {
    case XpFolderTemporary:
      return platform::TemporaryFolder();
    case XpFolderPictures:
      return MadeFolder(UserFolder::Pictures);
    case XpFolderVideos:
      return MadeFolder(UserFolder::Videos);
    case XpFolderMusic:
      return MadeFolder(UserFolder::Music);
    case XpFolderDocuments:
      return platform::UserFolderPath(UserFolder::Documents);
    case XpFolderDesktop:
      return platform::UserFolderPath(UserFolder::Desktop);
    case XpFolderCommonDocuments:
      return platform::UserFolderPath(UserFolder::Public);
    case XpFolderAppData:
      return platform::ConfigurationFolder();
    case XpFolderLocalAppData:
      return platform::DataFolder();
    case XpFolderExecutable:
      return XpPathParent(platform::ExecutablePath());
    case XpExecutablePath:
      return platform::ExecutablePath();
    case XpFolderProfile:
      return platform::UserFolderPath(UserFolder::Home);
    case XpFolderCommonAppData:
      return platform::SharedDataFolder();
    case XpFolderCommonPrograms:
      return platform::ProgramEntriesFolder();
    case XpFolderProgramFiles:
      return platform::ProgramsFolder();
    default:
      return XpString();
  }
}

XpString XpGetAppDataPath(const XpString& first, const XpString& second, const XpString& third) {
  const XpString base = XpGetSpecialFolder(XpFolderAppData);
  if (base.IsEmpty()) return base;
  XpString path = JoinUnlessEmpty(base, first);
  path = JoinUnlessEmpty(XpPathJoin(path, second), third);
  if (!XpPathIsDirectory(path)) XpPathMake(path);
  return path;
}

XpString XpLibraryPath(const XpString& name, std::int32_t place) {
  XpString folder;
  if (place == XpLibraryInstalled) {
    const XpInstalledLocation location = installedLocation.load();
    if (location != nullptr) folder = location();
  } else if (place == XpLibrarySystem) {
    folder = platform::SystemLibraryFolder();
  }
  return folder.IsEmpty() ? name : XpPathJoin(folder, name);
}

void XpSetInstalledLocation(XpInstalledLocation location) { installedLocation.store(location); }
