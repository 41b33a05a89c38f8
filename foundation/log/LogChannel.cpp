#include "foundation/log/LogChannel.h"

#include <algorithm>
#include <array>
#include <vector>

#include "foundation/file/XpDir.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/file/XpSpecialFolder.h"
#include "foundation/platform/PrivateFolder.h"
#include "foundation/registry/SfRegistry.h"
#include "foundation/text/XpFormat.h"
#include "foundation/text/XpPath.h"
#include "foundation/time/XpDateTime.h"

namespace vrx::log {
namespace {

constexpr std::array<Channel, SfLogChannelCount> kChannels{{
    {u"ImporterLogFilePath", u"ImporterLog", 10},
    {u"AppStartLogFilePath", u"LDK", 30},
    {nullptr, nullptr, 0},
    {u"KRVOOutputLogFilePath", u"KRVOOutput", 10},
    {u"DatabaseActionLogFilePath", u"DatabaseAction", 30},
}};

constexpr char16_t kRootName[] = u"LDKAppLog";
constexpr char16_t kFileName[] = u"OutputLogFile.log";
constexpr char16_t kRunFormat[] = u"%04d%02d%02d%02d%02d%02d";
constexpr char16_t kRunScanFormat[] = u"%4d%2d%2d%2d%2d%2d";
constexpr std::int32_t kRunNameLength = 14;
constexpr int kOwnLevels = 3;  // root, channel and run

/// Only digits: runs write nothing else.
bool IsRunName(const XpString& name) {
  const auto text = name.AsView();
  const auto isDigit = [](char16_t c) { return c >= u'0' && c <= u'9'; };
  XpDateTime time;
  return name.Length() == kRunNameLength && std::all_of(text.begin(), text.end(), isDigit) &&
         time.ParseDateTime(name, kRunScanFormat) && time.IsValid();
}

/// Oldest first.
std::vector<XpString> RunNames(const XpString& channelFolder) {
  std::vector<XpString> names;
  XpDir folder(channelFolder);
  if (folder.Open(XpDirFolders, XpString()) != XpOk) return names;
  while (const XpSharedPtr<XpAbstractFSObj> entry = folder.Next()) {
    XpString name;
    entry->GetName(name);
    if (IsRunName(name)) names.push_back(name);
  }
  folder.Close();
  std::sort(names.begin(), names.end(),
            [](const XpString& a, const XpString& b) { return a.AsView() < b.AsView(); });
  return names;
}

void RemoveOldest(const XpString& channelFolder, std::int32_t kept) {
  const std::vector<XpString> names = RunNames(channelFolder);
  const std::ptrdiff_t surplus = std::ssize(names) - kept + 1;
  for (std::ptrdiff_t i = 0; i < surplus; ++i) {
    // The next run tries again to remove what cannot be removed now.
    XpPathRemove(XpPathJoin(channelFolder, names[static_cast<std::size_t>(i)]), true, nullptr);
  }
}

XpString RunNameNow() {
  std::int32_t year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, dayOfWeek = 0;
  XpString name;
  if (XpDateTime::GetCurrentTime().GetDateTimeFields(year, month, day, hour, minute, second, dayOfWeek)) {
    XpFormat(name, kRunFormat, year, month, day, hour, minute, second);
  }
  return name;
}

XpString OwnRootName() { return XpString(kRootName) + u"-" + platform::UserNumber(); }

/// Empty when neither folder can be made.
XpString MakeRoot() {
  const XpString temporary = XpGetSpecialFolder(XpFolderTemporary);
  if (temporary.IsEmpty() || (!XpPathIsDirectory(temporary) && XpPathMake(temporary) != XpOk)) return {};
  const XpString shared = XpPathJoin(temporary, kRootName);
  if (platform::MakePrivateFolder(shared)) return shared;
  const XpString own = XpPathJoin(temporary, OwnRootName());
  return platform::MakePrivateFolder(own) ? own : XpString();
}

}  // namespace

const Channel* FindChannel(std::uint32_t number) {
  if (number >= kChannels.size() || kChannels[number].folderName == nullptr) return nullptr;
  return &kChannels[number];
}

XpString ChannelFolder(const Channel& channel) {
  const XpString temporary = XpGetSpecialFolder(XpFolderTemporary);
  const XpString shared = XpPathJoin(temporary, kRootName);
  const bool isTaken = XpPathExists(shared, nullptr) && !platform::IsPrivateFolder(shared, 1);
  return XpPathJoin(isTaken ? XpPathJoin(temporary, OwnRootName()) : shared, channel.folderName);
}

XpString StoredRunFolder(const Channel& channel) {
  const auto key = SfRegistryOpenRead(XpString(), XpString());
  return key ? key->GetString(channel.registryValue, XpString()) : XpString();
}

bool StoreRunFolder(const Channel& channel, const XpString& folder) {
  const auto key = SfRegistryOpenWrite(XpString(), XpString());
  return key && key->SetString(channel.registryValue, folder) == XpOk;
}

bool IsRunFolderUsable(const XpString& folder) {
  return XpPathIsAbsolute(folder) && platform::IsPrivateFolder(folder, kOwnLevels);
}

XpString MakeRunFolder(const Channel& channel) {
  const XpString root = MakeRoot();
  const XpString name = RunNameNow();
  if (root.IsEmpty() || name.IsEmpty()) return {};
  const XpString channelFolder = XpPathJoin(root, channel.folderName);
  if (!platform::MakePrivateFolder(channelFolder)) return {};
  RemoveOldest(channelFolder, channel.foldersKept);
  const XpString folder = XpPathJoin(channelFolder, name);
  return platform::MakePrivateFolder(folder) ? folder : XpString();
}

XpString LogFilePath(const XpString& runFolder) { return XpPathJoin(runFolder, kFileName); }

}  // namespace vrx::log
