#include "foundation/file/XpDir.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpWildcard.h"
#include "foundation/platform/Paths.h"
#include "foundation/platform/SystemError.h"
#include "foundation/text/XpPath.h"

namespace platform = vrx::platform;

namespace {

constexpr std::int32_t kUsualCluster = 4096;
constexpr std::int64_t kMostFolderBytes = std::numeric_limits<std::int64_t>::max();

std::uint32_t AttributesOf(const platform::FileStatus& status) {
  std::uint32_t attributes = 0;
  if (status.isReadOnly) attributes |= XpAttributeReadOnly;
  if (status.isHidden) attributes |= XpAttributeHidden;
  if (status.isDirectory) attributes |= XpAttributeDirectory;
  if (status.isLink) attributes |= XpAttributeLink;
  return attributes;
}

bool ComesBefore(const XpString& a, const XpString& b) {
  const int order = XpCompareNoCase(a, b);
  return order != 0 ? order < 0 : a < b;
}

/// Lists a directory. A missing directory, or a file in its place, is reported as XpErrPathNotFound.
XpResult ListNames(const XpString& path, std::vector<XpString>& names) {
  const auto error = platform::ListFolder(path, names);
  return error == std::errc::no_such_file_or_directory ? XpErrPathNotFound : platform::LastErrorResult(error);
}

XpString NativeForm(const XpString& path) {
  return platform::PathFromNative(platform::NativePath(platform::AbsolutePath(path)));
}

}  // namespace

XpDir::XpDir(const XpString& path) : XpAbstractDir(path) {}

XpDir::XpDir(const XpString& path, std::uint32_t attributes, const XpDateTime& creation,
             const XpDateTime& write, const XpDateTime& access)
    : XpAbstractDir(path),
      m_attributes(attributes),
      m_isListingEntry(true),
      m_creation(creation),
      m_write(write),
      m_access(access) {}

std::int64_t XpDir::GetSize() const {
  std::vector<XpString> names;
  if (platform::ListFolder(m_path, names)) return -1;
  std::int64_t sum = 0;
  for (const XpString& name : names) {
    platform::FileStatus status;
    if (platform::StatEntry(m_path, name, status)) continue;  // gone since the listing
    sum += std::min(status.size, kMostFolderBytes - sum);
  }
  return sum;
}

bool XpDir::IsReadOnly() const {
  if (m_isListingEntry) return (m_attributes & XpAttributeReadOnly) != 0;
  platform::FileStatus status;
  return !platform::StatPath(m_path, platform::Links::Follow, status) && status.isReadOnly;
}

bool XpDir::IsHidden() const {
  if (m_isListingEntry) return (m_attributes & XpAttributeHidden) != 0;
  platform::FileStatus status;
  return !platform::StatPath(m_path, platform::Links::Follow, status) && status.isHidden;
}

XpResult XpDir::Stat(XpDateTime* creation, XpDateTime* write, XpDateTime* access, std::int64_t* size) const {
  XpDateTime created = m_creation;
  XpDateTime written = m_write;
  XpDateTime accessed = m_access;
  if (!m_isListingEntry) {
    platform::FileStatus status;
    const auto error = platform::StatPath(m_path, platform::Links::Follow, status);
    if (error) return platform::PathErrorResult(error, m_path);
    if (!status.isDirectory) return XpErrPathNotFound;
    FileTimeToDateTime(FILETIME::FromTicks(status.created), created);
    FileTimeToDateTime(FILETIME::FromTicks(status.written), written);
    FileTimeToDateTime(FILETIME::FromTicks(status.accessed), accessed);
  }
  if (creation != nullptr) *creation = created;
  if (write != nullptr) *write = written;
  if (access != nullptr) *access = accessed;
  if (size != nullptr) *size = GetSize();
  return XpOk;
}

XpString XpDir::SearchText() const {
  if ((m_flags & XpDirPrefix) != 0) return m_pattern + u"*";
  if ((m_flags & XpDirSuffix) != 0) return u"*" + m_pattern;
  if ((m_flags & XpDirContains) != 0) return u"*" + m_pattern + u"*";
  return (m_flags & XpDirPattern) != 0 ? m_pattern : XpString(u"*");
}

XpResult XpDir::Open(std::uint32_t flags, const XpString& pattern) {
  if (m_isOpen) Close();
  m_flags = flags;
  m_pattern = pattern;
  std::vector<XpString> names;
  if (const XpResult result = ListNames(m_path, names)) return result;
  const XpString search = SearchText();
  const auto matches = [&](std::u16string_view name) { return vrx::MatchesWildcard(name, search.AsView()); };
  std::erase_if(names, [&](const XpString& name) { return !matches(name.AsView()); });
  // Even an empty directory holds "." and "..", which are not returned.
  if (names.empty() && !matches(u".") && !matches(u"..")) return XpErrFileNotFound;
  std::sort(names.begin(), names.end(), ComesBefore);
  m_names = std::move(names);
  m_nextName = 0;
  m_isOpen = true;
  m_isExhausted = !FindEntry(m_current);
  return XpOk;
}

/// The next entry that still exists and is accepted.
bool XpDir::FindEntry(Entry& entry) {
  while (m_nextName < m_names.size()) {
    entry.name = m_names[m_nextName++];
    if (!platform::StatEntry(m_path, entry.name, entry.status) &&
        Accepts(entry.status.isDirectory, entry.name)) {
      return true;
    }
  }
  return false;
}

/// A name with a backslash would be split in a path with backslashes, so such an entry gets a native path.
XpString XpDir::EntryPath(const XpString& name) const {
  const bool ambiguous = name.Find(u'\\') >= 0 && !XpPathIsNative(m_path);
  return XpPathJoin(ambiguous ? NativeForm(m_path) : m_path, name);
}

XpSharedPtr<XpAbstractFSObj> XpDir::Next() {
  if (!m_isOpen || m_isExhausted) return XpSharedPtr<XpAbstractFSObj>();
  const platform::FileStatus& status = m_current.status;
  const XpString path = EntryPath(m_current.name);
  const std::uint32_t attributes = AttributesOf(status);
  XpDateTime creation;
  XpDateTime write;
  XpDateTime access;
  FileTimeToDateTime(FILETIME::FromTicks(status.created), creation);
  FileTimeToDateTime(FILETIME::FromTicks(status.written), write);
  FileTimeToDateTime(FILETIME::FromTicks(status.accessed), access);
  XpSharedPtr<XpAbstractFSObj> entry;
  if (status.isDirectory) {
    entry = XpSharedPtr<XpAbstractFSObj>(new XpDir(path, attributes, creation, write, access));
  } else {
    entry = XpSharedPtr<XpAbstractFSObj>(new XpFile(path, attributes, status.size, creation, write, access));
  }
  m_isExhausted = !FindEntry(m_current);
  return entry;
}

XpResult XpDir::Close() {
  if (!m_isOpen) return XpErrNotAFile;
  m_isOpen = false;
  m_names = {};
  m_nextName = 0;
  return XpOk;
}

std::int64_t XpDir::CountEntries(bool recursive) {
  if (m_isOpen) Close();
  const XpString search = SearchText();
  std::int64_t count = 0;
  std::vector<XpString> folders = {NativeForm(m_path)};
  for (bool isTop = true; !folders.empty(); isTop = false) {
    const XpString folder = folders.back();
    folders.pop_back();
    std::vector<XpString> names;
    if (platform::ListFolder(folder, names)) {
      if (isTop) return -1;
      continue;  // an unreadable folder counts as one entry
    }
    for (const XpString& name : names) {
      platform::FileStatus status;
      if (platform::StatEntry(folder, name, status)) continue;
      const bool listed = vrx::MatchesWildcard(name.AsView(), search.AsView());
      if (listed && Accepts(status.isDirectory, name)) ++count;
      if (recursive && status.isDirectory && !status.isLink) folders.push_back(XpPathJoin(folder, name));
    }
  }
  return count;
}

bool XpDir::IsEmpty() {
  const bool nothing = Open(m_flags, m_pattern) != XpOk || m_isExhausted;
  if (m_isOpen) Close();
  return nothing;
}

bool XpDir::Accepts(bool isDirectory, const XpString&) const {
  return (m_flags & (isDirectory ? XpDirFolders : XpDirFiles)) != 0;
}

XpResult XpDir::Assign(const XpAbstractDir& other) {
  XpString path;
  if (const XpResult result = other.GetPathText(path)) return result;
  const auto* directory = dynamic_cast<const XpDir*>(&other);
  m_clusterSize = directory == nullptr ? 0 : directory->m_clusterSize;
  return SetPathText(path);
}

std::int64_t XpDir::GetTotalSpace() const {
  platform::VolumeSpace space;
  return platform::GetVolumeSpace(m_path, space) ? -1 : space.total;
}

std::int64_t XpDir::GetUsedSpace() const {
  platform::VolumeSpace space;
  return platform::GetVolumeSpace(m_path, space) ? -1 : space.total - space.free;
}

std::int64_t XpDir::GetFreeSpace() const {
  platform::VolumeSpace space;
  return platform::GetVolumeSpace(m_path, space) ? -1 : space.available;
}

std::int64_t XpDir::RoundToCluster(std::int64_t size) {
  if (m_clusterSize == 0) {
    platform::VolumeSpace space;
    const bool known = !platform::GetVolumeSpace(m_path, space) && space.clusterSize > 0;
    m_clusterSize = known ? space.clusterSize : kUsualCluster;
  }
  if (size < 0) return -1;
  const std::int64_t over = size % m_clusterSize;
  if (over == 0) return size;
  const std::int64_t missing = m_clusterSize - over;
  return size > kMostFolderBytes - missing ? -1 : size + missing;
}

std::int32_t XpDir::GetFileSystem() const {
  switch (platform::GetVolumeFormat(m_path)) {
    case platform::VolumeFormat::Fat:
      return XpFileSystemFat;
    case platform::VolumeFormat::Fat32:
      return XpFileSystemFat32;
    case platform::VolumeFormat::Ntfs:
      return XpFileSystemNtfs;
    case platform::VolumeFormat::ExFat:
      return XpFileSystemExFat;
    default:
      return XpFileSystemOther;
  }
}
