// Files in memory: own and borrowed blocks, gaps, and positions out of range.
#include "foundation/file/XpMemoryFile.h"

#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <string>

#include "tests/foundation/FolderTest.h"

namespace {

constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();

std::string Content(XpMemoryFile& file) {
  return {static_cast<const char*>(file.GetData()), static_cast<std::size_t>(file.GetSize())};
}

TEST(MemoryFileTest, AShortReadIsNoErrorAndOpeningForWritingEmpties) {
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
  EXPECT_EQ(file.Open(XpOpenRead, XpShareNone), XpOk);
  EXPECT_EQ(file.GetSize(), 4);
  EXPECT_EQ(file.Open(XpOpenReadWrite, XpShareNone), XpOk);
  EXPECT_EQ(file.GetSize(), 0);
}

TEST(MemoryFileTest, NumbersFollowTheLastByteOrderAndAreReadCompletely) {
  XpMemoryFile file;
  EXPECT_EQ(file.WriteUInt16(0x0102, XpKeepByteOrder), XpOk);  // a new file swaps
  EXPECT_EQ(file.WriteInt32(0x03040506, XpLittleEndian), XpOk);
  EXPECT_EQ(file.WriteInt16(0x0708, XpKeepByteOrder), XpOk);
  EXPECT_EQ(file.WriteUInt64(0x1112131415161718, XpBigEndian), XpOk);
  EXPECT_EQ(file.WriteInt8(-2), XpOk);
  EXPECT_EQ(file.WriteInt16(1, 9), XpErrFailed);
  EXPECT_EQ(Content(file),
            std::string("\x01\x02\x06\x05\x04\x03\x08\x07\x11\x12\x13\x14\x15\x16\x17\x18\xFE"));
  std::uint32_t u32 = 0;
  std::int16_t i16 = 0;
  std::int64_t i64 = 0;
  ASSERT_EQ(file.Seek(2, XpSeekStart), XpOk);
  EXPECT_EQ(file.ReadUInt32(&u32, XpLittleEndian), XpOk);
  EXPECT_EQ(u32, 0x03040506u);
  EXPECT_EQ(file.ReadInt16(&i16, XpKeepByteOrder), XpOk);
  EXPECT_EQ(i16, 0x0708);
  EXPECT_EQ(file.ReadInt64(&i64, XpBigEndian), XpOk);
  EXPECT_EQ(i64, 0x1112131415161718);
  EXPECT_EQ(file.ReadUInt32(&u32, XpKeepByteOrder), XpErrEndOfFile);
  EXPECT_EQ(u32, 0x03040506u) << "cut by the end";
}

TEST(MemoryFileTest, AGapIsFilledWithZeros) {
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
  EXPECT_EQ(file.RoundCapacity(kMost), -1);
  EXPECT_EQ(file.RoundCapacity(65536), 131072);
  EXPECT_EQ(file.Read(&byte, ~std::uint64_t{0}, nullptr), XpErrInvalidFileOperation);
  EXPECT_EQ(Content(file), "abc");
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
  void* block = strdup("data");
  XpMemoryFile file;
  ASSERT_EQ(file.Attach(block, 4, true), XpOk);
  ASSERT_EQ(file.Attach(block, 4, true), XpOk);
  EXPECT_EQ(Content(file), "data");
  file.FreeData();
  EXPECT_EQ(file.GetData(), nullptr);
  ASSERT_EQ(file.Write("again", 5, nullptr), XpOk);
  EXPECT_EQ(Content(file), "again");
}

}  // namespace
