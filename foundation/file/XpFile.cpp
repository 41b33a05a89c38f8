#include "foundation/file/XpFile.h"

#include <limits>
#include <optional>

#include "foundation/platform/FileSystem.h"
#include "foundation/platform/SystemError.h"

namespace platform = vrx::platform;

namespace {

platform::FileAccess AccessOf(std::uint32_t flags) {
  switch (flags & XpOpenAccessMask) {
    case XpOpenRead:
      return platform::FileAccess::Read;
    case XpOpenWrite:
      return platform::FileAccess::Write;
    default:
      return platform::FileAccess::ReadWrite;
  }
}

platform::FileScan ScanOf(std::uint32_t flags) {
  if ((flags & XpOpenSequential) != 0) return platform::FileScan::Sequential;
  return (flags & XpOpenRandom) != 0 ? platform::FileScan::Random : platform::FileScan::Normal;
}

platform::FileOrigin OriginOf(std::int32_t origin) {
  switch (origin) {
    case XpSeekCurrent:
      return platform::FileOrigin::Current;
    case XpSeekEnd:
      return platform::FileOrigin::End;
    default:
      return platform::FileOrigin::Start;
  }
}

/// A failure without a code of its own still says what failed.
XpResult OpenResult(XpResult result, bool writes) {
  if (result != XpErrFailed && result != XpErrFileSystem) return result;
  return writes ? XpErrNoSuchFile : XpErrOpenFailed;
}

XpSharedPtr<XpDateTime> Shared(const XpDateTime* time) {
  return time == nullptr ? XpSharedPtr<XpDateTime>() : XpSharedPtr<XpDateTime>(new XpDateTime(*time));
}

/// False when a date is given that the file system could not keep.
bool TicksOf(const XpDateTime* time, std::optional<std::uint64_t>& ticks) {
  FILETIME fileTime;
  if (time == nullptr) return true;
  if (!time->ToFileTime(fileTime)) return false;
  ticks = fileTime.Ticks();
  return true;
}

}  // namespace

XpFile::XpFile(const XpString& path) : XpAbstractFile(path), m_handle(platform::kNoFile) {}

XpFile::XpFile(const XpString& path, std::uint32_t attributes, std::int64_t size, const XpDateTime& creation,
               const XpDateTime& write, const XpDateTime& access)
    : XpAbstractFile(path),
      m_handle(platform::kNoFile),
      m_attributes(attributes),
      m_size(size),
      m_isListingEntry(true),
      m_creation(Shared(&creation)),
      m_write(Shared(&write)),
      m_access(Shared(&access)) {}

XpFile::~XpFile() {
  if (IsOpen()) XpFile::Close();
}

bool XpFile::IsOpen() const { return m_handle != platform::kNoFile; }

void XpFile::Adopt(std::int64_t handle, std::uint32_t flags) {
  m_handle = handle;
  BeginAccess(flags);
}

XpResult XpFile::FlushToDisk() {
  return IsOpen() ? platform::LastErrorResult(platform::FlushFile(m_handle)) : XpErrNotOpen;
}

XpResult XpFile::SetTimes(const XpDateTime* creation, const XpDateTime* write, const XpDateTime* access) {
  std::optional<std::uint64_t> ticks;
  for (const XpDateTime* time : {creation, write, access}) {
    if (!TicksOf(time, ticks)) return XpErrInvalidFileOperation;
  }
  if (!IsOpen()) return SetFileTimes(creation, write, access);
  if (creation != nullptr) m_creation = Shared(creation);
  if (write != nullptr) m_write = Shared(write);
  if (access != nullptr) m_access = Shared(access);
  return XpOk;
}

bool XpFile::IsReadOnly() const {
  if (m_isListingEntry) return (m_attributes & XpAttributeReadOnly) != 0;
  platform::FileStatus status;
  return !platform::StatPath(m_path, platform::Links::Follow, status) && status.isReadOnly;
}

bool XpFile::IsHidden() const {
  if (m_isListingEntry) return (m_attributes & XpAttributeHidden) != 0;
  platform::FileStatus status;
  return !platform::StatPath(m_path, platform::Links::Follow, status) && status.isHidden;
}

XpResult XpFile::StatEntry(XpDateTime* creation, XpDateTime* write, XpDateTime* access,
                           std::int64_t* size) const {
  if (creation != nullptr) *creation = *m_creation;
  if (write != nullptr) *write = *m_write;
  if (access != nullptr) *access = *m_access;
  if (size != nullptr) *size = m_size;
  return XpOk;
}

XpResult XpFile::Stat(XpDateTime* creation, XpDateTime* write, XpDateTime* access, std::int64_t* size) const {
  if (m_isListingEntry) return StatEntry(creation, write, access, size);
  platform::FileStatus status;
  const auto error = IsOpen() ? platform::StatFile(m_handle, status)
                              : platform::StatPath(m_path, platform::Links::Follow, status);
  if (error) return platform::PathErrorResult(error, m_path);
  if (status.isDirectory) return XpErrAccessDenied;
  if (creation != nullptr) FileTimeToDateTime(FILETIME::FromTicks(status.created), *creation);
  if (write != nullptr) FileTimeToDateTime(FILETIME::FromTicks(status.written), *write);
  if (access != nullptr) FileTimeToDateTime(FILETIME::FromTicks(status.accessed), *access);
  if (size != nullptr) *size = status.size;
  return XpOk;
}

XpResult XpFile::Open(std::uint32_t flags, std::uint32_t) {
  if (m_isListingEntry) return XpErrOpenFailed;
  if (IsOpen()) return XpErrAlreadyOpen;
  if ((flags & XpOpenAccessMask) == 0) return XpErrInvalidFileOperation;
  const bool writes = (flags & XpOpenWrite) != 0;
  if (writes) {
    if (const auto error = platform::MakeFile(m_path))
      return OpenResult(platform::ErrnoResult(error), writes);
  }
  platform::FileHandle handle = platform::kNoFile;
  if (const auto error = platform::OpenFile(m_path, AccessOf(flags), ScanOf(flags), handle)) {
    return OpenResult(platform::PathErrorResult(error, m_path), writes);
  }
  if ((flags & XpOpenAccessMask) == XpOpenWrite) {
    // A device has no size that could be cut; what cannot be emptied is not empty, all else is well.
    platform::FileStatus status;
    auto error = platform::StatFile(handle, status);
    if (!error && status.size != 0) error = platform::ResizeFile(handle, 0);
    if (error) {
      platform::CloseFile(handle);
      return OpenResult(platform::LastErrorResult(error), writes);
    }
  }
  Adopt(handle, flags);
  return XpOk;
}

XpResult XpFile::Close() {
  if (!IsOpen()) return XpErrNotOpen;
  const auto error = platform::CloseFile(m_handle);
  m_handle = platform::kNoFile;
  XpResult times = XpOk;
  if (m_creation || m_write || m_access)
    times = SetFileTimes(m_creation.Get(), m_write.Get(), m_access.Get());
  return error ? platform::LastErrorResult(error) : times;
}

XpResult XpFile::CheckTransfer(const void* buffer, std::uint64_t count) const {
  constexpr std::uint64_t kMost = std::numeric_limits<std::int64_t>::max();
  if (buffer == nullptr || count == 0 || count > kMost) return XpErrInvalidFileOperation;
  return IsOpen() ? XpOk : XpErrNotAFile;
}

XpResult XpFile::Read(void* buffer, std::uint64_t count, std::uint64_t* read) {
  if (read != nullptr) *read = 0;
  if (const XpResult result = CheckTransfer(buffer, count)) return result;
  std::uint64_t done = 0;
  const auto error = platform::ReadFile(m_handle, buffer, count, done);
  if (read != nullptr) *read = done;
  if (error) return platform::LastErrorResult(error);
  return done < count ? XpErrEndOfFile : XpOk;
}

XpResult XpFile::Write(const void* buffer, std::uint64_t count, std::uint64_t* written) {
  if (written != nullptr) *written = 0;
  if (const XpResult result = CheckTransfer(buffer, count)) return result;
  std::uint64_t done = 0;
  const auto error = platform::WriteFile(m_handle, buffer, count, done);
  if (written != nullptr) *written = done;
  return platform::LastErrorResult(error);
}

XpResult XpFile::Seek(std::int64_t offset, std::int32_t origin) {
  if (!IsOpen()) return XpErrNotAFile;
  std::int64_t position = 0;
  return platform::LastErrorResult(platform::SeekFile(m_handle, offset, OriginOf(origin), position));
}

std::int64_t XpFile::Tell() const {
  std::int64_t position = -1;
  if (!IsOpen() || platform::SeekFile(m_handle, 0, platform::FileOrigin::Current, position)) return -1;
  return position;
}

XpResult XpFile::SetSize(std::int64_t size) {
  if (!IsOpen()) return XpErrNotAFile;
  const std::int64_t old = Tell();
  if (const auto error = platform::ResizeFile(m_handle, size)) return platform::LastErrorResult(error);
  return old >= 0 && old < size ? XpOk : Seek(size, XpSeekStart);
}

XpResult XpFile::OpenPath(const XpString& path, std::uint32_t flags, std::uint32_t share) {
  if (const XpResult result = SetPath(path)) return result;
  return Open(flags, share);
}

XpResult XpFile::SetPath(const XpString& path) {
  // The path is taken even when the last data of the old file could not be written.
  const XpResult closed = IsOpen() ? Close() : XpOk;
  const XpResult taken = SetPathText(path);
  return closed == XpOk ? taken : closed;
}

XpResult XpFile::GetPath(XpString& path) const { return GetPathText(path); }

XpResult XpFile::SetFileTimes(const XpDateTime* creation, const XpDateTime* write, const XpDateTime* access) {
  std::optional<std::uint64_t> created;
  std::optional<std::uint64_t> written;
  std::optional<std::uint64_t> accessed;
  if (!TicksOf(creation, created) || !TicksOf(write, written) || !TicksOf(access, accessed)) {
    return XpErrInvalidFileOperation;
  }
  const auto error =
      platform::SetFileTimes(m_path, written ? &*written : nullptr, accessed ? &*accessed : nullptr);
  return error ? platform::PathErrorResult(error, m_path) : XpOk;
}

void XpFile::FileTimeToDateTime(const FILETIME& fileTime, XpDateTime& date) const {
  date = XpDateTime::FromFileTime(fileTime);
}
