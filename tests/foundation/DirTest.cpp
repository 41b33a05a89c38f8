// Directory listings: which entries they hold, in which order, and what each entry reports.
#include "foundation/file/XpDir.h"

#include <algorithm>
#include <string>
#include <vector>

#include "foundation/file/XpFile.h"
#include "foundation/file/XpWildcard.h"
#include "tests/foundation/FolderTest.h"

namespace {

using DirTest = FolderTest;

std::string NamesOf(XpDir& dir) {
  std::string names;
  for (auto entry = dir.Next(); entry; entry = dir.Next()) {
    XpString name;
    entry->GetName(name);
    names += (names.empty() ? "" : " ") + std::string(name.ToNarrow().AsView());
    if (entry->IsDirectory()) names += "/";
  }
  return names;
}

TEST_F(DirTest, FlagsAndPatternFilterTheSortedEntries) {
  for (const char* name : {"b.JPG", "a.jpg", "clip.mp4", "Clip.mp4.modd", "sub/inner"}) Put(name);
  const struct {
    std::uint32_t flags;
    const char16_t* pattern;
    const char* expected;
  } cases[] = {
      {XpDirFolders, u"", "sub/"},
      {XpDirFiles, u"ignored", "a.jpg b.JPG clip.mp4 Clip.mp4.modd"},
      {XpDirFiles | XpDirPattern, u"?.jpg", "a.jpg b.JPG"},
      {XpDirEverything | XpDirPattern, u"*.*", "a.jpg b.JPG clip.mp4 Clip.mp4.modd sub/"},
      {XpDirFiles | XpDirPrefix, u"CLIP", "clip.mp4 Clip.mp4.modd"},
      {XpDirFiles | XpDirSuffix, u".mp4", "clip.mp4"},
      {XpDirFiles | XpDirContains, u".mp4.", "Clip.mp4.modd"},
  };
  XpDir dir(Path(""));
  for (const auto& c : cases) {
    ASSERT_EQ(dir.Open(c.flags, c.pattern), XpOk) << c.expected;
    EXPECT_EQ(NamesOf(dir), c.expected);
    EXPECT_FALSE(dir.Next());
  }
  EXPECT_EQ(dir.Close(), XpOk);
  EXPECT_EQ(dir.Close(), XpErrNotAFile);
}

TEST_F(DirTest, AnEmptyFolderIsListedButAPatternWithoutMatchFails) {
  std::filesystem::create_directory(Native("empty"));
  XpDir empty(Path("empty"));
  EXPECT_EQ(empty.Open(XpDirEverything, u""), XpOk);
  EXPECT_FALSE(empty.Next());
  EXPECT_TRUE(empty.IsEmpty());
  EXPECT_EQ(empty.Open(XpDirEverything | XpDirPattern, u"x*"), XpErrFileNotFound);
  EXPECT_EQ(XpDir(Path("none")).Open(XpDirEverything, u""), XpErrPathNotFound);
  EXPECT_EQ(XpDir(Put("file")).Open(XpDirEverything, u""), XpErrPathNotFound);
  EXPECT_EQ(XpDir(Path("none")).GetSize(), -1);
  EXPECT_EQ(XpDir(Path("none")).CountEntries(true), -1);
}

TEST_F(DirTest, AnEntryAnswersFromTheListing) {
  Put("a", "12345");
  Put(".hidden");
  XpDir dir(Path(""));
  ASSERT_EQ(dir.Open(XpDirFiles, u""), XpOk);
  EXPECT_TRUE(dir.Next()->IsHidden());
  const auto entry = dir.Next();
  Put("a", "changed since");
  ASSERT_TRUE(entry);
  EXPECT_FALSE(entry->IsHidden());
  EXPECT_EQ(entry->GetSize(), 5);
  EXPECT_EQ(static_cast<XpFile*>(entry.Get())->Open(XpOpenRead, XpShareRead), XpErrOpenFailed);
  XpString path;
  EXPECT_EQ(entry->GetPathText(path), XpOk);
  EXPECT_EQ(XpFile(path).GetSize(), 13);
  XpDateTime written;
  written.SetDateTime(2016, 2, 29, 12, 34, 56);
  EXPECT_EQ(entry->SetTimes(nullptr, &written, nullptr), XpOk);
  XpDateTime listed;
  XpDateTime now;
  EXPECT_EQ(entry->GetWriteTime(listed), XpOk);
  EXPECT_EQ(XpFile(path).GetWriteTime(now), XpOk);
  EXPECT_NE(listed.GetValue(), written.GetValue());
  EXPECT_EQ(now.GetValue(), written.GetValue());
}

TEST_F(DirTest, CountingATreeDoesNotFollowLinks) {
  Put("a", "12");
  Put("sub/b", "345");
  Put("sub/deep/c");
  std::filesystem::create_directory_symlink("..", Native("sub/up"));
  std::filesystem::create_symlink("nowhere", Native("dangling"));
  XpDir dir(Path(""));
  EXPECT_EQ(dir.CountEntries(false), 3);
  EXPECT_EQ(dir.CountEntries(true), 7);
  EXPECT_EQ(dir.GetSize(), 2 + 7);  // the dangling link is as long as its text
  ASSERT_EQ(dir.Open(XpDirFolders | XpDirPrefix, u"sub"), XpOk);
  const auto sub = dir.Next();
  ASSERT_TRUE(sub->IsDirectory());
  auto& subDir = static_cast<XpDir&>(*sub);
  EXPECT_EQ(subDir.Open(XpDirFolders, u""), XpOk);
  EXPECT_EQ(NamesOf(subDir), "deep/ up/");
}

TEST_F(DirTest, NamesWithInvalidBytesOrBackslashesCanBeOpened) {
  Put("odd\xFF", "1");
  Put("back\\slash", "22");
  for (const char* prefix : {"", "Z:"}) {
    XpDir dir(XpString(u"") + XpNarrowString(prefix).ToWide() + Path(""));
    ASSERT_EQ(dir.Open(XpDirFiles, u""), XpOk);
    std::int64_t sum = 0;
    for (auto entry = dir.Next(); entry; entry = dir.Next()) {
      XpString path;
      entry->GetPathText(path);
      sum += XpFile(path).GetSize();
    }
    EXPECT_EQ(sum, 3) << prefix;
  }
}

TEST_F(DirTest, ADerivedClassChoosesItsEntries) {
  struct OnlyLong : XpDir {
    using XpDir::XpDir;
    bool Accepts(bool, const XpString& name) const override { return name.Length() > 3; }
  };
  for (const char* name : {"abc", "abcd"}) Put(name);
  OnlyLong dir(Path(""));
  ASSERT_EQ(dir.Open(XpDirEverything, u""), XpOk);
  EXPECT_EQ(NamesOf(dir), "abcd");
  EXPECT_EQ(dir.CountEntries(false), 1);
}

TEST_F(DirTest, SpaceAddsUpAndSizesRoundToClusters) {
  XpDir dir(Path(""));
  EXPECT_GT(dir.GetTotalSpace(), 0);
  EXPECT_GE(dir.GetTotalSpace(), dir.GetFreeSpace());
  EXPECT_EQ(XpDir(Path("none")).GetTotalSpace(), -1);
  const std::int64_t cluster = dir.RoundToCluster(1);
  EXPECT_GT(cluster, 0);
  EXPECT_EQ(dir.RoundToCluster(cluster), cluster);
  EXPECT_EQ(dir.RoundToCluster(cluster + 1), 2 * cluster);
  EXPECT_EQ(dir.RoundToCluster(INT64_MAX), -1);
  EXPECT_EQ(dir.RoundToCluster(-1), -1);
  EXPECT_EQ(XpDir(Path("none")).RoundToCluster(1), 4096);
}

TEST(WildcardTest, StarsBacktrackAndCaseIsIgnored) {
  EXPECT_TRUE(vrx::MatchesWildcard(u"abcabd", u"*abd"));
  EXPECT_TRUE(vrx::MatchesWildcard(u"\u00C4.TXT", u"\u00E4*.txt"));
  EXPECT_FALSE(vrx::MatchesWildcard(u"abc", u"abc?"));
  EXPECT_FALSE(vrx::MatchesWildcard(u"", u"?"));
  EXPECT_TRUE(vrx::MatchesWildcard(u"", u"**"));
  std::u16string patient;
  for (int i = 0; i < 100; ++i) patient += u"*a";
  EXPECT_FALSE(vrx::MatchesWildcard(std::u16string(255, u'a'), patient + u"b"));
}

}  // namespace
