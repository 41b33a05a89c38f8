// The interface of a directory: its entries and the volume it is on.
#pragma once

#include <cstdint>

#include "foundation/file/XpAbstractFSObj.h"
#include "foundation/memory/XpSharedPtr.h"
#include "foundation/time/FileTime.h"

/// Flags of Open. Without one of the last four every name passes.
enum : std::uint32_t {
  XpDirFolders = 0x1,
  XpDirFiles = 0x2,
  XpDirEverything = 0x3,
  XpDirPattern = 0x100,   // names that match the pattern
  XpDirPrefix = 0x200,    // names that begin with it
  XpDirSuffix = 0x400,    // names that end with it
  XpDirContains = 0x800,  // names that hold it
};

enum : std::int32_t {
  XpFileSystemOther = 0,
  XpFileSystemFat = 1,
  XpFileSystemFat32 = 2,
  XpFileSystemNtfs = 3,
  XpFileSystemExFat = 5,
};

/// Sizes are in bytes, -1 on failure. GetSize adds up the direct entries.
class XpAbstractDir : public XpAbstractFSObj {
 public:
  using XpAbstractFSObj::XpAbstractFSObj;

  bool IsFile() const override { return false; }
  bool IsDirectory() const override { return true; }

  virtual XpResult Open(std::uint32_t flags, const XpString& pattern) = 0;
  /// The current entry, an XpAbstractDir or XpAbstractFile; steps on. Null after the last one.
  virtual XpSharedPtr<XpAbstractFSObj> Next() = 0;
  virtual XpResult Close() = 0;
  virtual std::int64_t CountEntries(bool recursive) = 0;
  virtual bool IsEmpty() = 0;
  /// Whether a listing has this entry.
  virtual bool Accepts(bool isDirectory, const XpString& name) const = 0;
  virtual XpResult Assign(const XpAbstractDir& other) = 0;
  virtual std::int64_t GetTotalSpace() const = 0;
  virtual std::int64_t GetUsedSpace() const = 0;
  /// What this user may still write.
  virtual std::int64_t GetFreeSpace() const = 0;
  virtual std::int64_t RoundToCluster(std::int64_t size) = 0;
  virtual std::int32_t GetFileSystem() const = 0;
  virtual void FileTimeToDateTime(const FILETIME& fileTime, XpDateTime& date) const {
    date = XpDateTime::FromFileTime(fileTime);
  }
};
