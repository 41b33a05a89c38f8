// The result of the host's calibration of the graphics hardware, a block of bytes that is passed on to the
// engine. Render control reads it again before each render that asks for it.
#pragma once

#include <cstdint>
#include <vector>

#include "vrx/XpResult.h"

class GPUChecker {
 public:
  /// The process's only one, made on first use; null when memory is short.
  static GPUChecker* GetInstance();

  GPUChecker(const GPUChecker&) = delete;
  GPUChecker& operator=(const GPUChecker&) = delete;
  virtual ~GPUChecker() = default;
  /// Deletes the only instance; the next GetInstance makes another one.
  virtual void Release();

  /// Reads CalibrationData.dat from the user's data folder, which is made when missing, and retires the
  /// entries that must not reach the engine. kNoData, with no data, unless the file is there
  /// and has exactly its size.
  std::uint32_t Load();
  static constexpr std::uint32_t kNoData = 0x80004005;
  /// Forgets the block.
  void Drop() { m_data.clear(); }

  /// Null without data; valid until the next Load or Drop.
  const std::uint8_t* GetData() const { return m_data.empty() ? nullptr : m_data.data(); }
  /// Bytes; what the last block had when there is none.
  std::uint32_t GetSize() const { return m_size; }

 private:
  GPUChecker() = default;
  void RetireEntries();

  std::vector<std::uint8_t> m_data;
  std::uint32_t m_size = 0;
};
