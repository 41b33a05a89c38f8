// A file on disk: opened by path, or an entry of a directory listing that answers from the listing alone.
#pragma once

#include <cstdint>

#include "foundation/file/XpAbstractFile.h"
#include "foundation/memory/XpSharedPtr.h"
#include "foundation/time/FileTime.h"

/// Opening for writing makes a file that is missing. XpOpenWrite empties it, XpOpenReadWrite keeps what is
/// there. A file whose owner may not write counts as read-only and is not opened for writing.
class XpFile : public XpAbstractFile {
 public:
  explicit XpFile(const XpString& path = XpString());
  /// An entry of a listing: no access to the disk, and Open gives XpErrOpenFailed. Attributes as
  /// XpAttributeReadOnly and its like; size in bytes.
  XpFile(const XpString& path, std::uint32_t attributes, std::int64_t size, const XpDateTime& creation,
         const XpDateTime& write, const XpDateTime& access);
  ~XpFile() override;

  /// For a closed file at once; for an open one when it is closed, each time. The system keeps no creation
  /// time that could be set, so that one is ignored. An entry of a listing still
  /// reports its listed times afterwards. XpErrInvalidFileOperation for a date that is not valid.
  XpResult SetTimes(const XpDateTime* creation, const XpDateTime* write, const XpDateTime* access) override;
  bool IsReadOnly() const override;
  bool IsHidden() const override;
  XpResult Stat(XpDateTime* creation, XpDateTime* write, XpDateTime* access,
                std::int64_t* size) const override;

  XpResult Open(std::uint32_t flags, std::uint32_t share) override;
  XpResult Close() override;
  /// Fewer bytes than asked for give XpErrEndOfFile, and `read` says how many.
  XpResult Read(void* buffer, std::uint64_t count, std::uint64_t* read) override;
  XpResult Write(const void* buffer, std::uint64_t count, std::uint64_t* written) override;
  /// A position past the end is allowed, one before the start is XpErrFailed.
  XpResult Seek(std::int64_t offset, std::int32_t origin) override;
  std::int64_t Tell() const override;
  /// Keeps a position within the new size; one beyond it moves to the new end.
  XpResult SetSize(std::int64_t size) override;

  /// Returns once the content is on the disk. XpErrNotOpen for a closed file.
  XpResult FlushToDisk();

  virtual XpResult OpenPath(const XpString& path, std::uint32_t flags, std::uint32_t share);
  /// Closes the file and takes another path.
  virtual XpResult SetPath(const XpString& path);
  virtual XpResult GetPath(XpString& path) const;
  virtual XpResult SetFileTimes(const XpDateTime* creation, const XpDateTime* write,
                                const XpDateTime* access);
  virtual void FileTimeToDateTime(const FILETIME& fileTime, XpDateTime& date) const;

 protected:
  bool IsOpen() const;
  /// Takes over a handle that was opened elsewhere, into a closed object.
  void Adopt(std::int64_t handle, std::uint32_t flags);

 private:
  XpResult StatEntry(XpDateTime* creation, XpDateTime* write, XpDateTime* access, std::int64_t* size) const;
  XpResult CheckTransfer(const void* buffer, std::uint64_t count) const;

  std::int64_t m_handle;
  std::uint32_t m_attributes = 0;
  std::int64_t m_size = 0;
  bool m_isListingEntry = false;
  // Of a listing entry: its times. Otherwise: the times that Close will set.
  XpSharedPtr<XpDateTime> m_creation;
  XpSharedPtr<XpDateTime> m_write;
  XpSharedPtr<XpDateTime> m_access;
};
