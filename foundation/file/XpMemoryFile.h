// A file in a block of memory, for data that came out of containers or is built before it is written.
#pragma once

#include <cstdint>

#include "foundation/file/XpAbstractFile.h"
#include "foundation/file/XpFileTime.h"

/// Ready for reading and writing without Open. Sizes and positions are in bytes.
class XpMemoryFile : public XpAbstractFile, public XpFileTime {
 public:
  XpMemoryFile();
  ~XpMemoryFile() override;

  XpResult GetName(XpString& name) const override;
  bool IsReadOnly() const override { return false; }
  bool IsHidden() const override { return false; }
  XpResult Stat(XpDateTime* creation, XpDateTime* write, XpDateTime* access,
                std::int64_t* size) const override;

  /// Opening for writing, or for reading and writing, empties the file and moves the position to the start.
  XpResult Open(std::uint32_t flags, std::uint32_t share) override;
  XpResult Close() override;
  /// A short block at the end is XpOk with the shorter count; XpErrEndOfFile when there is nothing at all.
  XpResult Read(void* buffer, std::uint64_t count, std::uint64_t* read) override;
  /// A gap between the old end and the position becomes zeros. XpErrDiskFull when memory fails.
  XpResult Write(const void* buffer, std::uint64_t count, std::uint64_t* written) override;
  /// Any origin but XpSeekStart and XpSeekEnd counts as the current position. A position outside the content
  /// is taken as well, and reads and writes before the start fail; one that 64 bits do not hold is
  /// XpErrInvalidFileOperation.
  XpResult Seek(std::int64_t offset, std::int32_t origin) override;
  std::int64_t Tell() const override { return m_position; }
  /// XpErrNotAFile without data. New bytes are zeros.
  XpResult SetSize(std::int64_t size) override;

  /// The content; it moves when the file grows.
  virtual const void* GetData() const { return m_data; }
  virtual void* GetData() { return m_data; }
  /// Takes the block as the content; an owned one is freed with free(). A borrowed block is written in place,
  /// and copied when it has to grow. The position stays. XpErrInvalidFileOperation for a negative size or a
  /// size without a block.
  virtual XpResult Attach(void* data, std::int64_t size, bool own);
  /// Frees an owned block, then Reset.
  virtual void FreeData();
  /// Forgets the block without freeing it.
  virtual void Reset();
  /// The next multiple of 64 KiB above the size; -1 when there is none.
  virtual std::int64_t RoundCapacity(std::int64_t size) const;

 private:
  enum class Storage : std::uint32_t { None = 0, Owned = 1, Borrowed = 2 };

  XpResult Reserve(std::int64_t size);
  XpResult Reallocate(std::int64_t capacity);

  std::int64_t m_size = 0;
  std::int64_t m_capacity = 0;
  std::int64_t m_position = 0;
  std::uint8_t* m_data = nullptr;
  Storage m_storage = Storage::None;
};
