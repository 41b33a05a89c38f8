// Small reads near each other are answered from the cache, and all others from the disk.
#include "foundation/file/XpCachedFile.h"

#include <string>

#include "tests/foundation/FolderTest.h"

namespace {

constexpr std::int64_t kFileSize = 400000;
constexpr std::uint64_t kLargeRead = 16384;

/// The file is overwritten while the reader has it open: old letters show that the cache answered, new ones
/// that the disk did.
class CachedFileTest : public FolderTest {
 protected:
  void SetUp() override {
    m_file.SetPathText(Put("a", std::string(kFileSize, 'o')));
    ASSERT_EQ(m_file.Open(XpOpenRead, XpShareRead), XpOk);
  }
  void Rewrite(std::size_t size = kFileSize) { Put("a", std::string(size, 'n')); }
  std::string ReadAt(std::int64_t position, std::uint64_t count) {
    std::string bytes(count, '?');
    std::uint64_t read = 0;
    EXPECT_EQ(m_file.Seek(position, XpSeekStart), XpOk);
    m_lastResult = m_file.Read(bytes.data(), count, &read);
    EXPECT_EQ(m_file.Tell(), position + static_cast<std::int64_t>(read));
    bytes.resize(read);
    return bytes;
  }

  XpCachedFile m_file;
  XpResult m_lastResult = XpOk;
};

TEST_F(CachedFileTest, SmallReadsNearEachOtherTouchTheDiskOnce) {
  EXPECT_EQ(ReadAt(40000, 4), "oooo");
  Rewrite();
  EXPECT_EQ(ReadAt(32768, 4), "oooo");              // where the read ahead began
  EXPECT_EQ(ReadAt(32768 + 98304 - 4, 4), "oooo");  // and ended
  EXPECT_EQ(ReadAt(131068, 8), "nnnnnnnn") << "one byte outside is outside";
  EXPECT_EQ(ReadAt(32768, 4), "nnnn") << "the cache has moved on";
}

TEST_F(CachedFileTest, ALargeReadGoesToTheDiskAndLeavesTheCache) {
  EXPECT_EQ(ReadAt(0, 4), "oooo");
  Rewrite();
  EXPECT_EQ(ReadAt(200000, kLargeRead), std::string(kLargeRead, 'n'));
  EXPECT_EQ(ReadAt(0, 4), "oooo");
  EXPECT_EQ(ReadAt(200000, kLargeRead - 1), std::string(kLargeRead - 1, 'n'));
  EXPECT_EQ(ReadAt(200000, 4), "nnnn");
}

TEST_F(CachedFileTest, BypassReadsTheDiskOutsideTheCache) {
  EXPECT_EQ(ReadAt(0, 4), "oooo");
  m_file.SetBypass(true);
  EXPECT_EQ(ReadAt(200000, 4), "oooo");
  Rewrite();
  EXPECT_EQ(ReadAt(200000, 4), "nnnn");
  EXPECT_EQ(ReadAt(0, 4), "oooo");
  m_file.ResetCache();
  EXPECT_EQ(ReadAt(0, 4), "nnnn");
}

TEST_F(CachedFileTest, TheEndOfTheFileIsTheSameAsWithoutCache) {
  EXPECT_EQ(ReadAt(kFileSize - 10, 10), std::string(10, 'o'));
  EXPECT_EQ(m_lastResult, XpOk);
  EXPECT_EQ(ReadAt(kFileSize - 4, 10), "oooo");
  EXPECT_EQ(m_lastResult, XpErrEndOfFile);
  EXPECT_EQ(ReadAt(kFileSize + 4, 10), "");
  EXPECT_EQ(m_lastResult, XpErrEndOfFile);
  EXPECT_EQ(m_file.Read(nullptr, 1, nullptr), XpErrInvalidFileOperation);
}

TEST_F(CachedFileTest, AFileThatShrankGivesWhatIsLeft) {
  EXPECT_EQ(ReadAt(300000, 1), "o");
  Rewrite(10);
  EXPECT_EQ(ReadAt(4, 100), "nnnnnn");
  EXPECT_EQ(m_lastResult, XpErrEndOfFile);
}

TEST_F(CachedFileTest, AnotherFileStartsWithAnEmptyCache) {
  EXPECT_EQ(ReadAt(0, 4), "oooo");
  ASSERT_EQ(m_file.OpenPath(Put("b", "a short file"), XpOpenRead, XpShareRead), XpOk);
  EXPECT_EQ(ReadAt(2, 5), "short");
}

}  // namespace
