// What the engine is told of the graphics hardware before a render.
#include <gmock/gmock.h>

#include "tests/src/WrapperFixture.h"

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

class GpuBlockTest : public WrapperTest {
 protected:
  GpuBlockTest() { setenv("XDG_CONFIG_HOME", m_data.Path().c_str(), 1); }
  ~GpuBlockTest() override { unsetenv("XDG_CONFIG_HOME"); }

  fs::path File() const { return m_data.Path() / "Kelo Corporation/LBR/CalibrationData.dat"; }
  void Write(const Bytes& bytes) const {
    fs::create_directories(File().parent_path());
    std::ofstream(File(), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  }

  /// Renders on a manager of its own and gives the blocks that the engine got.
  std::vector<Bytes> Render(const std::string& sourceType = "1") {
    RecordingCallback heard;
    if (wrapper == nullptr) {
      EXPECT_EQ(VRXWrapper::CreateVRXWrapper(true, &wrapper), 0);
    }
    wrapper->SetCallback(&heard);
    ProjectText project;
    project.videoTrack =
        ClipText("a.mp4", "0", "1000", "<key>SourceType</key><integer>" + sourceType + "</integer>");
    SetProject(project);
    script->gpuBlocks.clear();
    wrapper->StartRender();
    EXPECT_EQ(heard.WaitForEnd().back(), "end");
    wrapper->Release();
    wrapper = nullptr;
    return script->gpuBlocks;
  }

 private:
  TempFolder m_data;
};

TEST_F(GpuBlockTest, OnlyAWholeFileForASourceThatNeedsItReachesTheEngine) {
  EXPECT_TRUE(Render().empty());
  EXPECT_TRUE(fs::is_directory(File().parent_path()));  // made for the host to fill
  for (const std::size_t size : {std::size_t{0}, kSize - 1, kSize + 1, std::size_t{1} << 20}) {
    Bytes block = Block(1);
    block.resize(size);
    Write(block);
    EXPECT_TRUE(Render().empty()) << size;
  }
  Write(Block(0));
  EXPECT_TRUE(Render("2").empty());
  EXPECT_EQ(Render(), std::vector<Bytes>{Block(0)});
  fs::remove(File());
  fs::create_directory(File());
  EXPECT_TRUE(Render().empty());
}

TEST_F(GpuBlockTest, EntriesOfTheOneKindAreRetiredAndAllElseStays) {
  Bytes block = Block(5);
  block[kFirst + kEntry + kFlag] = 0;      // kind 2 without the flag
  block[kFirst + 2 * kEntry] = 3;          // another kind with it
  block[kFirst + 3 * kEntry + 3] = 1;      // 2 in the low byte alone
  block[kFirst + 4 * kEntry + kFlag] = 2;  // a flag, but another one
  Write(block);
  Retire(block, 0);  // the sixth lies behind the count
  EXPECT_EQ(Render(), std::vector<Bytes>{block});
}

TEST_F(GpuBlockTest, ADamagedCountStopsAtTheEntriesThatFit) {
  for (const std::uint32_t count : {56u, 57u, 0x7FFFFFFFu, 0xFFFFFFFFu}) {
    Bytes block = Block(count);
    Write(block);
    for (std::size_t i = 0; i < 56; ++i) Retire(block, i);
    EXPECT_EQ(Render(), std::vector<Bytes>{block}) << count;
  }
}

TEST_F(GpuBlockTest, EachRenderReadsTheFileAnew) {
  Write(Block(0));
  EXPECT_EQ(Render(), std::vector<Bytes>{Block(0)});
  Bytes other = Block(0);
  other.back() ^= 0xFF;
  Write(other);
  EXPECT_EQ(Render(), std::vector<Bytes>{other});
  fs::remove(File());
  EXPECT_TRUE(Render().empty());
}

}  // namespace
