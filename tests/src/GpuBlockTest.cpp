// What the engine gets of the graphics hardware: the host's calibration, without what must not be passed
// on.
#include <filesystem>

#include <gtest/gtest.h>

#include "src/gpu/GPUChecker.h"
#include "tests/foundation/ScopedVariable.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kSize = 3150;
constexpr std::size_t kFirst = 6, kEntry = 56, kFlag = 40;

/// A block of distinct bytes with this many entries, each of kind 2 with its flag set.
Bytes Block(std::uint32_t count) {
  Bytes bytes(kSize);
  for (std::size_t i = 0; i < kSize; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + 3);
  for (unsigned i = 0; i < 4; ++i) bytes[2 + i] = static_cast<std::uint8_t>(count >> (8 * i));
  for (std::size_t at = kFirst; at + kEntry <= kSize; at += kEntry) {
    for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = bytes[at + kFlag + i] = 0;
    bytes[at] = 2;
    bytes[at + kFlag] = 1;
  }
  return bytes;
}

void Retire(Bytes& bytes, std::size_t entry) {
  const std::size_t at = kFirst + entry * kEntry;
  for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = 0xFF;
  bytes[at + kFlag] = 0;
}

class GpuBlockTest : public testing::Test {
 protected:
  fs::path File() const { return m_folder.Path() / "Kelo Corporation/LBR/CalibrationData.dat"; }
  /// What is handed on of a file of these bytes; empty for nothing.
  Bytes Loaded(const Bytes& bytes) const {
    fs::create_directories(File().parent_path());
    std::ofstream(File(), std::ios::binary) << std::string(bytes.begin(), bytes.end());
    return Loaded();
  }
  static Bytes Loaded() {
    GPUChecker& checker = *GPUChecker::GetInstance();
    const bool isLoaded = checker.Load() == XpOk;
    return isLoaded ? Bytes(checker.GetData(), checker.GetData() + checker.GetSize()) : Bytes();
  }

 private:
  TempFolder m_folder;
  ScopedVariable m_variable{"XDG_CONFIG_HOME", m_folder.Path()};
};

TEST_F(GpuBlockTest, OnlyACompleteFileIsUsedAndItIsReadAgainEachTime) {
  EXPECT_EQ(Loaded(), Bytes());
  EXPECT_TRUE(fs::is_directory(File().parent_path())) << "made for the host to fill";
  for (const std::size_t size : {std::size_t{0}, kSize - 1, kSize + 1, std::size_t{1} << 20}) {
    EXPECT_EQ(Loaded(Bytes(size)), Bytes()) << size;
  }
  EXPECT_EQ(Loaded(Block(0)), Block(0));
  fs::remove(File());
  fs::create_directory(File());
  EXPECT_EQ(Loaded(), Bytes());
}

TEST_F(GpuBlockTest, EntriesOfTheRetiredKindAreChangedAndNoOthers) {
  Bytes block = Block(5);
  block[kFirst + kEntry + kFlag] = 0;      // kind 2 without the flag
  block[kFirst + 2 * kEntry] = 3;          // another kind with it
  block[kFirst + 3 * kEntry + 3] = 1;      // 2 in the low byte alone
  block[kFirst + 4 * kEntry + kFlag] = 2;  // a flag, but another one
  const Bytes loaded = Loaded(block);
  Retire(block, 0);  // the sixth is past the count
  EXPECT_EQ(loaded, block);
}

TEST_F(GpuBlockTest, DamagedCountStopsAtTheEntriesThatFit) {
  for (const std::uint32_t count : {56u, 57u, 0xFFFFFFFFu}) {
    Bytes block = Block(count);
    const Bytes loaded = Loaded(block);
    for (std::size_t i = 0; i < 56; ++i) Retire(block, i);
    EXPECT_EQ(loaded, block) << count;
  }
}

}  // namespace
