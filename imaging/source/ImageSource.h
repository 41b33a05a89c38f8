// The bytes of one picture file as the format readers see them: a position, a size, and reads that may come
// short. Calls from C libraries end here, so nothing throws.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "foundation/file/XpAbstractFile.h"
#include "vrx/XpResult.h"

namespace vrx::imaging {

/// Borrows an open file and moves its position. Small reads come from a block read ahead.
class ImageSource {
 public:
  /// Reads nothing more once `cancel`, which may be null, is set.
  explicit ImageSource(XpAbstractFile& file, const std::atomic<bool>* cancel = nullptr) noexcept;
  ImageSource(const ImageSource&) = delete;
  ImageSource& operator=(const ImageSource&) = delete;

  std::int64_t Size() const noexcept { return m_size; }  // bytes
  std::int64_t Position() const noexcept {
    return m_position;
  }  // bytes from the start; may lie after the end

  /// False for a position before the start; one after the end is allowed.
  bool Seek(std::int64_t position) noexcept;
  /// Fewer bytes than asked for mean the end of the file, or a failure, see Result.
  std::size_t Read(void* buffer, std::size_t count) noexcept;
  bool ReadExactly(void* buffer, std::size_t count) noexcept { return Read(buffer, count) == count; }
  /// The first failure of the file itself; the end of the file is not one.
  XpResult Result() const noexcept { return m_result; }

 private:
  static constexpr std::size_t kBlockBytes = 32 * 1024;

  std::size_t ReadFile(std::int64_t position, void* buffer, std::size_t count) noexcept;

  XpAbstractFile& m_file;
  const std::atomic<bool>* m_cancel;
  std::int64_t m_size = 0;
  std::int64_t m_position = 0;
  std::int64_t m_blockStart = 0;
  std::size_t m_blockLength = 0;
  XpResult m_result = XpOk;
  std::array<unsigned char, kBlockBytes> m_block;
};

}  // namespace vrx::imaging
