#include "src/gpu/GPUChecker.h"

#include <algorithm>
#include <atomic>
#include <new>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpFileOperations.h"
#include "foundation/file/XpSpecialFolder.h"
#include "foundation/sync/XpCriticalSection.h"
#include "foundation/text/XpPath.h"

namespace {

// The block: numbers are little-endian, and the count is not aligned.
constexpr std::uint32_t kBlockSize = 3150;
constexpr std::size_t kCountOffset = 2;
constexpr std::size_t kFirstEntry = 6;
constexpr std::size_t kEntrySize = 56;
constexpr std::uint32_t kMostEntries = (kBlockSize - kFirstEntry) / kEntrySize;
constexpr std::size_t kKindOffset = 0;
constexpr std::size_t kFlagOffset = 40;

constexpr std::uint32_t kRetiredFrom = 2;  // this kind, when its flag is set
constexpr std::uint32_t kFlagSet = 1;
constexpr std::uint32_t kNoKind = 0xFFFFFFFF;

std::atomic<GPUChecker*> g_checker = nullptr;

XpCriticalSection& CheckerLock() {
  static XpCriticalSection lock;
  return lock;
}

std::uint32_t ReadNumber(const std::uint8_t* bytes) {
  std::uint32_t number = 0;
  for (unsigned i = 0; i < sizeof(number); ++i) number |= std::uint32_t{bytes[i]} << (8 * i);
  return number;
}

void WriteNumber(std::uint8_t* bytes, std::uint32_t number) {
  for (unsigned i = 0; i < sizeof(number); ++i) bytes[i] = static_cast<std::uint8_t>(number >> (8 * i));
}

/// Empty unless the file is there and has the size of a block.
std::vector<std::uint8_t> ReadBlock(const XpString& path) {
  XpFile file;
  if (!XpPathIsFile(path) || file.OpenPath(path, XpOpenRead, XpShareRead) != XpOk) return {};
  if (file.GetSize() != kBlockSize) return {};
  std::vector<std::uint8_t> block(kBlockSize);
  if (file.Read(block.data(), block.size(), nullptr) != XpOk) return {};
  return block;
}

}  // namespace

GPUChecker* GPUChecker::GetInstance() {
  if (GPUChecker* checker = g_checker.load(std::memory_order_acquire)) return checker;
  XpSingleLock lock(&CheckerLock());
  if (g_checker.load(std::memory_order_relaxed) == nullptr) {
    g_checker.store(new (std::nothrow) GPUChecker, std::memory_order_release);
  }
  return g_checker.load(std::memory_order_relaxed);
}

void GPUChecker::Release() {
  GPUChecker* self = this;
  g_checker.compare_exchange_strong(self, nullptr);
  delete this;
}

std::uint32_t GPUChecker::Load() {
  const XpString folder = XpGetAppDataPath(u"Kelo Corporation", u"LBR", XpString());
  m_data = ReadBlock(XpPathJoin(folder, u"CalibrationData.dat"));
  if (m_data.empty()) return kNoData;
  RetireEntries();
  m_size = kBlockSize;
  return XpOk;
}

void GPUChecker::RetireEntries() {
  // A damaged count may promise more entries than the block has room for.
  const std::uint32_t count = std::min(ReadNumber(&m_data[kCountOffset]), kMostEntries);
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint8_t* entry = &m_data[kFirstEntry + i * kEntrySize];
    if (ReadNumber(entry + kKindOffset) != kRetiredFrom) continue;
    if (ReadNumber(entry + kFlagOffset) != kFlagSet) continue;
    WriteNumber(entry + kKindOffset, kNoKind);
    WriteNumber(entry + kFlagOffset, 0);
  }
}
