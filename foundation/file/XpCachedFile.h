// A file that reads ahead: for format probes, which do many small reads near each other.
#pragma once

#include <cstdint>
#include <vector>

#include "foundation/file/XpFile.h"

/// A read of less than 16 KiB fills 96 KiB around it; later small reads there cost no read from the disk.
/// Larger reads and all writes bypass the cache; it does not see what they change.
class XpCachedFile : public XpFile {
 public:
  explicit XpCachedFile(const XpString& path = XpString());
  ~XpCachedFile() override;

  XpResult Close() override;
  XpResult Read(void* buffer, std::uint64_t count, std::uint64_t* read) override;

  /// When true, what is not in the cache is read from the disk without filling it. The first read after
  /// opening resets this.
  virtual void SetBypass(bool bypass);
  /// Empties the cache and forgets the file's size and the bypass. Throws std::bad_alloc.
  virtual void ResetCache();

 private:
  bool ReadFromCache(void* buffer, std::int64_t position, std::int64_t count);
  XpResult FillCache(std::int64_t position);

  bool m_sizeKnown = false;
  std::int64_t m_fileSize = -1;  // -1 if unknown
  std::int64_t m_cacheLength = 0;
  std::int64_t m_cacheCapacity;
  std::int64_t m_cacheStart = 0;
  std::vector<std::uint8_t> m_buffer;
  bool m_bypass = false;
};
