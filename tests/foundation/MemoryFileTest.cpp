#include "foundation/file/XpMemoryFile.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>

#include "tests/foundation/TempFolder.h"

namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

std::string Content(XpMemoryFile& file) {
  return {static_cast<const char*>(file.GetData()), static_cast<std::size_t>(file.GetSize())};
}

TEST(MemoryFileTest, IsReadyForUseAndReadsShortAtTheEndWithoutFailing) {
  XpMemoryFile file;
  char buffer[10] = {};
  std::uint64_t count = 0;
  EXPECT_EQ(file.Read(buffer, 10, &count), XpErrEndOfFile);
  EXPECT_EQ(file.Write("abcd", 4, &count), XpOk);
  EXPECT_EQ(file.Seek(0, XpSeekStart), XpOk);
  EXPECT_EQ(file.Read(buffer, 10, &count), XpOk);
  EXPECT_EQ(count, 4u);
  EXPECT_EQ(file.Read(buffer, 10, &count), XpErrEndOfFile);
  EXPECT_EQ(count, 0u);
}

TEST(MemoryFileTest, ANumberCutByTheEndIsNotReadAsRubbish) {
  XpMemoryFile file;
  ASSERT_EQ(file.Write("ab", 2, nullptr), XpOk);
  ASSERT_EQ(file.Seek(0, XpSeekStart), XpOk);
  std::uint32_t value = 7;
  EXPECT_EQ(file.ReadUInt32(&value, XpBigEndian), XpErrEndOfFile);
  EXPECT_EQ(value, 7u);
}

TEST(MemoryFileTest, CapacityGrowsInWholeGranules) {
  const XpMemoryFile file;
  EXPECT_EQ(file.RoundCapacity(0), 65536);
  EXPECT_EQ(file.RoundCapacity(65535), 65536);
  EXPECT_EQ(file.RoundCapacity(65536), 131072);
  EXPECT_EQ(file.RoundCapacity(-1), -1);
  EXPECT_EQ(file.RoundCapacity(kMost), -1);
}

TEST(MemoryFileTest, AGapIsZerosEvenWhereOldBytesLay) {
  XpMemoryFile file;
  ASSERT_EQ(file.Write("secret", 6, nullptr), XpOk);
  ASSERT_EQ(file.SetSize(1), XpOk);
  ASSERT_EQ(file.Seek(4, XpSeekStart), XpOk);
  ASSERT_EQ(file.Write("x", 1, nullptr), XpOk);
  EXPECT_EQ(Content(file), std::string("s\0\0\0x", 5));
  ASSERT_EQ(file.SetSize(7), XpOk);
  EXPECT_EQ(Content(file), std::string("s\0\0\0x\0\0", 7));
  ASSERT_EQ(file.Seek(100, XpSeekEnd), XpOk);
  ASSERT_EQ(file.SetSize(3), XpOk);
  EXPECT_EQ(file.Tell(), 3);
}

TEST(MemoryFileTest, ImpossiblePositionsAndSizesFailAndChangeNothing) {
  XpMemoryFile file;
  EXPECT_EQ(file.SetSize(10), XpErrNotAFile);
  ASSERT_EQ(file.Write("abc", 3, nullptr), XpOk);
  char byte = 0;
  ASSERT_EQ(file.Seek(-5, XpSeekCurrent), XpOk);
  EXPECT_EQ(file.Read(&byte, 1, nullptr), XpErrInvalidFileOperation);
  EXPECT_EQ(file.Write(&byte, 1, nullptr), XpErrInvalidFileOperation);
  ASSERT_EQ(file.Seek(kMost, XpSeekStart), XpOk);
  EXPECT_EQ(file.Seek(1, XpSeekCurrent), XpErrInvalidFileOperation);
  EXPECT_EQ(file.Tell(), kMost);
  EXPECT_EQ(file.Read(&byte, 1, nullptr), XpErrEndOfFile);
  EXPECT_EQ(file.Write(&byte, 1, nullptr), XpErrDiskFull);
  EXPECT_EQ(file.SetSize(-1), XpErrInvalidFileOperation);
  EXPECT_EQ(file.SetSize(kMost), XpErrDiskFull);
  EXPECT_EQ(file.Read(&byte, ~std::uint64_t{0}, nullptr), XpErrInvalidFileOperation);
  EXPECT_EQ(Content(file), "abc");
}

TEST(MemoryFileTest, OpeningForWritingDropsTheContent) {
  for (const std::uint32_t flags : {XpOpenWrite, XpOpenReadWrite}) {
    XpMemoryFile file;
    ASSERT_EQ(file.Write("abc", 3, nullptr), XpOk);
    EXPECT_EQ(file.Open(XpOpenRead, XpShareNone), XpOk);
    EXPECT_EQ(file.GetSize(), 3);
    EXPECT_EQ(file.Open(flags, XpShareNone), XpOk);
    EXPECT_EQ(file.GetSize(), 0);
    EXPECT_EQ(file.Close(), XpOk);
  }
}

TEST(MemoryFileTest, ABorrowedBlockIsWrittenInPlaceAndNeverFreedOrMoved) {
  char block[] = "0123";
  XpMemoryFile file;
  ASSERT_EQ(file.Write("old", 3, nullptr), XpOk);
  ASSERT_EQ(file.Seek(0, XpSeekStart), XpOk);
  ASSERT_EQ(file.Attach(block, 4, false), XpOk);
  EXPECT_EQ(file.GetSize(), 4);
  ASSERT_EQ(file.Write("ab", 2, nullptr), XpOk);
  EXPECT_STREQ(block, "ab23");
  ASSERT_EQ(file.Seek(0, XpSeekEnd), XpOk);
  ASSERT_EQ(file.Write("XY", 2, nullptr), XpOk);
  EXPECT_EQ(Content(file), "ab23XY");
  EXPECT_STREQ(block, "ab23");
  EXPECT_EQ(file.Attach(nullptr, 4, false), XpErrInvalidFileOperation);
  EXPECT_EQ(file.Attach(block, -1, false), XpErrInvalidFileOperation);
}

TEST(MemoryFileTest, AnOwnedBlockIsFreedOnce) {
  void* block = std::malloc(4);
  std::memcpy(block, "data", 4);
  XpMemoryFile file;
  ASSERT_EQ(file.Attach(block, 4, true), XpOk);
  ASSERT_EQ(file.Attach(block, 4, true), XpOk);
  EXPECT_EQ(Content(file), "data");
  file.FreeData();
  EXPECT_EQ(file.GetData(), nullptr);
  EXPECT_EQ(file.GetSize(), 0);
  ASSERT_EQ(file.Write("again", 5, nullptr), XpOk);
  EXPECT_EQ(Content(file), "again");
}

TEST(MemoryFileTest, ItsNameShowsTheBlock) {
  XpMemoryFile file;
  XpString name;
  EXPECT_EQ(file.GetName(name), XpOk);
  EXPECT_EQ(name, XpString(u"Memory File(                0000000000000000)"));
  XpDateTime time;
  EXPECT_EQ(file.GetCreationTime(time), XpOk);
  EXPECT_TRUE(time.IsValid());
  EXPECT_EQ(file.SetTimes(&time, &time, &time), XpErrNotSupported);
}

}  // namespace
