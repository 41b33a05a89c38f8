// Reading, writing, sizes and times of a file on disk, and the results of failures.
#include "foundation/file/XpFile.h"

#include <sys/stat.h>

#include <tuple>

#include "tests/foundation/FolderTest.h"
#include "tests/support/DeviceNode.h"

namespace {

using FileTest = FolderTest;

std::string ReadAll(XpFile& file, std::uint64_t count, XpResult expected) {
  std::string bytes(count, '\0');
  std::uint64_t read = 0;
  EXPECT_EQ(file.Read(bytes.data(), count, &read), expected);
  bytes.resize(read);
  return bytes;
}

TEST_F(FileTest, AShortReadReportsTheEndAndItsCount) {
  XpFile file(Put("a", "0123456789ABCD"));
  ASSERT_EQ(file.Open(XpOpenRead, XpShareRead), XpOk);
  EXPECT_EQ(ReadAll(file, 10, XpOk), "0123456789");
  EXPECT_EQ(ReadAll(file, 10, XpErrEndOfFile), "ABCD");
  EXPECT_EQ(ReadAll(file, 10, XpErrEndOfFile), "");
}

TEST_F(FileTest, OpeningForWritingEmptiesAFileAndForBothKeepsIt) {
  Put("kept", "abc");
  Put("emptied", "abc");
  for (const auto& [name, flags, expected] :
       {std::tuple{"kept", XpOpenReadWrite, "Xbc"}, std::tuple{"emptied", XpOpenWrite, "X"},
        std::tuple{"new", XpOpenReadWrite, "X"}}) {
    XpFile file;
    ASSERT_EQ(file.OpenPath(Path(name), flags, XpShareNone), XpOk) << name;
    std::uint64_t written = 0;
    EXPECT_EQ(file.WriteAndFlush("X", 1, &written), XpOk);
    EXPECT_EQ(written, 1u);
    EXPECT_EQ(file.Close(), XpOk);
    EXPECT_EQ(Get(name), expected);
  }
}

TEST_F(FileTest, AFailedOpenReportsTheCauseAndChangesNothing) {
  std::filesystem::create_directory(Native("folder"));
  Put("plain");
  Put("locked", "abc");
  std::filesystem::permissions(Native("locked"), std::filesystem::perms::owner_read);
  ASSERT_EQ(mkfifo(Native("pipe").c_str(), 0600), 0);
  const std::string longName(300, 'n');
  const struct {
    const char* what;
    XpString path;
    std::uint32_t flags;
    XpResult expected;
  } cases[] = {
      {"no access", Path("plain"), 0, XpErrInvalidFileOperation},
      {"missing", Path("none"), XpOpenRead, XpErrFileNotFound},
      {"missing folder", Path("none/none"), XpOpenRead, XpErrPathNotFound},
      {"file as folder", Path("plain/none"), XpOpenRead, XpErrPathNotFound},
      {"folder", Path("folder"), XpOpenRead, XpErrAccessDenied},
      {"unknown drive", u"Q:\\a", XpOpenRead, XpErrPathNotFound},
      {"empty", u"", XpOpenRead, XpErrPathNotFound},
      {"long", Path(longName), XpOpenRead, XpErrOpenFailed},
      {"write into missing folder", Path("none/none"), XpOpenWrite, XpErrNoSuchFile},
      {"write a folder", Path("folder"), XpOpenReadWrite, XpErrAccessDenied},
      {"write long", Path(longName), XpOpenWrite, XpErrNotAFile},
      {"pipe without a writer", Path("pipe"), XpOpenRead, XpErrOpenFailed},
      {"pipe without a reader", Path("pipe"), XpOpenReadWrite, XpErrNoSuchFile},
      {"empty a read-only file", Path("locked"), XpOpenWrite, XpErrAccessDenied},
      {"write a read-only file", Path("locked"), XpOpenReadWrite, XpErrAccessDenied},
  };
  for (const auto& c : cases) EXPECT_EQ(XpFile(c.path).Open(c.flags, XpShareRead), c.expected) << c.what;
  EXPECT_EQ(Get("locked"), "abc");
}

TEST_F(FileTest, WrongUseIsAnError) {
  XpFile file(Put("a", "abc"));
  char byte = 0;
  EXPECT_EQ(file.Close(), XpErrNotOpen);
  EXPECT_EQ(file.Read(&byte, 1, nullptr), XpErrNotAFile);
  EXPECT_EQ(file.Read(nullptr, 1, nullptr), XpErrInvalidFileOperation);
  EXPECT_EQ(file.Write(&byte, 0, nullptr), XpErrInvalidFileOperation);
  EXPECT_EQ(file.Seek(0, XpSeekStart), XpErrNotAFile);
  EXPECT_EQ(file.SetSize(0), XpErrNotAFile);
  EXPECT_EQ(file.Tell(), -1);
  ASSERT_EQ(file.Open(XpOpenRead, XpShareRead), XpOk);
  EXPECT_EQ(file.Open(XpOpenRead, XpShareRead), XpErrAlreadyOpen);
  EXPECT_EQ(file.Write("x", 1, nullptr), XpErrAccessDenied);
  EXPECT_EQ(file.Seek(-1, XpSeekStart), XpErrFailed);
  EXPECT_EQ(file.Read(&byte, ~std::uint64_t{0}, nullptr), XpErrInvalidFileOperation);
  EXPECT_EQ(file.Tell(), 0);
}

TEST_F(FileTest, SizesBeyondTwoGigabytesWorkAndAFullDiskIsReported) {
  constexpr std::int64_t kFar = std::int64_t{5} << 30;
  XpFile file(Path("sparse"));
  ASSERT_EQ(file.Open(XpOpenReadWrite, XpShareNone), XpOk);
  EXPECT_EQ(file.Seek(kFar, XpSeekStart), XpOk);
  EXPECT_EQ(file.Write("end", 3, nullptr), XpOk);
  EXPECT_EQ(file.Tell(), kFar + 3);
  EXPECT_EQ(file.GetSize(), kFar + 3);
  EXPECT_EQ(file.Seek(-3, XpSeekEnd), XpOk);
  EXPECT_EQ(ReadAll(file, 3, XpOk), "end");
  EXPECT_EQ(file.SetSize(std::int64_t{1} << 62), XpErrDiskFull);
  EXPECT_EQ(file.SetSize(-1), XpErrFailed);
  if (!MakeFullDevice(Native("full"))) GTEST_SKIP() << "all but the full disk, which this user cannot make";
  XpFile full(Path("full"));
  ASSERT_EQ(full.Open(XpOpenWrite, XpShareNone), XpOk);
  EXPECT_EQ(full.Write("x", 1, nullptr), XpErrDiskFull);
}

TEST_F(FileTest, ResizingKeepsAPositionWithinTheNewSize) {
  XpFile file(Put("a", "0123456789"));
  ASSERT_EQ(file.Open(XpOpenReadWrite, XpShareNone), XpOk);
  EXPECT_EQ(file.Seek(4, 77), XpOk);  // an unknown origin counts as the start
  EXPECT_EQ(file.SetSize(6), XpOk);
  EXPECT_EQ(file.Tell(), 4);
  EXPECT_EQ(file.SetSize(2), XpOk);
  EXPECT_EQ(file.Tell(), 2);
  EXPECT_EQ(file.Close(), XpOk);
  EXPECT_EQ(Get("a"), "01");
}

TEST_F(FileTest, TimesAreSetAtOnceWhenClosedAndAtCloseWhenOpen) {
  XpDateTime written;
  ASSERT_TRUE(written.SetDateTime(2016, 2, 29, 12, 34, 56));
  XpDateTime got;
  XpFile file(Put("a", "abc"));
  EXPECT_EQ(file.SetTimes(nullptr, &written, nullptr), XpOk);
  EXPECT_EQ(file.GetWriteTime(got), XpOk);
  EXPECT_EQ(got.GetValue(), written.GetValue());
  written.AddMinutesSeconds(1, 1);
  ASSERT_EQ(file.Open(XpOpenReadWrite, XpShareNone), XpOk);
  EXPECT_EQ(file.SetTimes(&written, &written, &written), XpOk);
  EXPECT_EQ(file.Write("x", 1, nullptr), XpOk);
  EXPECT_EQ(file.Close(), XpOk);
  XpDateTime accessed;
  EXPECT_EQ(file.GetTimes(nullptr, &got, &accessed), XpOk);
  EXPECT_EQ(got.GetValue(), written.GetValue());
  EXPECT_EQ(accessed.GetValue(), written.GetValue());
  const XpDateTime invalid;
  EXPECT_EQ(file.SetTimes(nullptr, &invalid, nullptr), XpErrInvalidFileOperation);
}

}  // namespace
