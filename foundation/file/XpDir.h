// A directory on disk.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/file/XpAbstractDir.h"
#include "foundation/platform/FileSystem.h"

/// Entries are sorted by name without regard to case. A link counts as what it points to, but operations on
/// whole trees do not follow links.
class XpDir : public XpAbstractDir {
 public:
  explicit XpDir(const XpString& path = XpString());
  /// An entry of a listing, which gives its attributes and times. It can be opened like any other directory.
  XpDir(const XpString& path, std::uint32_t attributes, const XpDateTime& creation, const XpDateTime& write,
        const XpDateTime& access);

  std::int64_t GetSize() const override;
  bool IsReadOnly() const override;
  bool IsHidden() const override;
  XpResult Stat(XpDateTime* creation, XpDateTime* write, XpDateTime* access,
                std::int64_t* size) const override;

  /// The names are read now, the state of each entry when Next reaches it. XpErrPathNotFound for a
  /// missing directory, XpErrFileNotFound when no name at all fits the pattern, which may hold * and ?.
  XpResult Open(std::uint32_t flags, const XpString& pattern) override;
  XpSharedPtr<XpAbstractFSObj> Next() override;
  /// XpErrNotAFile if not open.
  XpResult Close() override;
  /// Searches again with the flags and the pattern of the last Open, and closes that search. -1 on failure.
  std::int64_t CountEntries(bool recursive) override;
  bool IsEmpty() override;
  bool Accepts(bool isDirectory, const XpString& name) const override;
  XpResult Assign(const XpAbstractDir& other) override;
  std::int64_t GetTotalSpace() const override;
  std::int64_t GetUsedSpace() const override;
  std::int64_t GetFreeSpace() const override;
  /// -1 for a negative size and for a result beyond 64 bits.
  std::int64_t RoundToCluster(std::int64_t size) override;
  std::int32_t GetFileSystem() const override;

 private:
  struct Entry {
    XpString name;
    vrx::platform::FileStatus status;
  };

  bool FindEntry(Entry& entry);
  XpString EntryPath(const XpString& name) const;
  XpString SearchText() const;

  std::uint32_t m_flags = XpDirEverything;
  XpString m_pattern;
  bool m_isOpen = false;
  std::vector<XpString> m_names;  // of the open search
  std::size_t m_nextName = 0;
  Entry m_current;
  bool m_isExhausted = false;
  std::int32_t m_clusterSize = 0;  // 0 until asked
  std::uint32_t m_attributes = 0;
  bool m_isListingEntry = false;
  XpDateTime m_creation;
  XpDateTime m_write;
  XpDateTime m_access;
};
