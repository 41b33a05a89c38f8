// Paths as text, native and with backslashes, and their bytes for the system.
#include <gtest/gtest.h>

#include "foundation/platform/Paths.h"
#include "foundation/text/XpPath.h"
#include "tests/foundation/FolderTest.h"

namespace {

TEST(PathTest, JoiningPutsExactlyOneSeparatorOfTheFoldersKind) {
  const struct {
    const char16_t* dir;
    const char16_t* name;
    const char16_t* joined;
  } cases[] = {
      {u"C:\\a", u"b", u"C:\\a\\b"}, {u"C:\\a\\", u"b", u"C:\\a\\b"}, {u"C:\\a", u"\\b", u"C:\\a\\b"},
      {u"C:/a/", u"b", u"C:/a/b"},   {u"/a", u"b", u"/a/b"},          {u"/a/", u"/b", u"/a/b"},
      {u"/a\\", u"b", u"/a\\/b"},    {u"/a", u"\\b", u"/a/\\b"},
  };
  for (const auto& c : cases) EXPECT_EQ(XpPathJoin(c.dir, c.name), XpString(c.joined));
}

TEST(PathTest, SplittingFindsFolderStemAndExtension) {
  const struct {
    const char16_t* path;
    const char16_t* dir;
    const char16_t* stem;
    const char16_t* ext;
  } cases[] = {
      {u"C:\\a.b\\c", u"C:\\a.b\\", u"c", u""},
      {u"C:\\a\\", u"C:\\", u"a", u""},
      {u"C:\\a\\clip.tar.mp4", u"C:\\a\\", u"clip.tar", u".mp4"},
      {u"/a.b/c\\d.e", u"/a.b/", u"c\\d", u".e"},
      {u"/", u"/", u"", u""},
      {u"", u"", u"", u""},
  };
  for (const auto& c : cases) {
    XpString dir;
    XpString stem;
    XpString ext;
    XpPathSplit(c.path, &dir, &stem, &ext);
    EXPECT_EQ(dir, XpString(c.dir));
    EXPECT_EQ(stem, XpString(c.stem));
    EXPECT_EQ(ext, XpString(c.ext));
  }
}

TEST(PathTest, ComparingIgnoresCaseAndTheKindOfSeparator) {
  EXPECT_EQ(XpPathCompare(u"C:\\Videos", u"c:\\videos\\"), XpPathEqual);
  EXPECT_EQ(XpPathCompare(u"/\u00C4", u"/\u00E4/"), XpPathEqual);
  EXPECT_EQ(XpPathCompare(u"C:\\a", u"C:\\b"), XpPathDifferent);
  EXPECT_EQ(XpPathCompare(u"C:\\a/", u"C:\\a"), XpPathEqual);
  EXPECT_EQ(XpPathCompare(u"C:/a/b", u"c:\\A\\b\\"), XpPathEqual);
  EXPECT_EQ(XpPathCompare(u"/a\\b", u"/a/b"), XpPathDifferent) << "a native name may hold a backslash";
  EXPECT_EQ(XpPathCompare(u"/a", u"\\a"), XpPathDifferent);
  EXPECT_EQ(XpPathCompare(u"/Ma\u00DFe.mp4", u"/Masse.mp4"), XpPathDifferent) << "two files";
  EXPECT_EQ(XpPathStripTrailingSlash(u"C:\\a\\/\\"), XpString(u"C:\\a"));
  EXPECT_EQ(XpPathAddTrailingSlash(u""), XpString());
  EXPECT_EQ(XpPathParent(u"/opt/vrx"), XpString(u"/opt"));
  EXPECT_EQ(XpPathParent(u"/vrx"), XpString(u"/")) << "a program may be in the root folder";
}

TEST(PathTest, ComparisonWithoutCaseGoesCharacterByCharacter) {
  struct Case {
    const char16_t* a;
    const char16_t* b;
    int order;
  };
  const Case cases[] = {
      {u"ABC", u"abc", 0},
      {u"Ma\u1E9Ee", u"ma\u00DFe", 0},
      {u"\U00010400", u"\U00010428", 0},
      {u"\u00DF", u"ss", 1},
      {u"\uFB01", u"fi", 1},
      {u"ab", u"ABC", -1},
      {u"", u"a", -1},
      {u"a", u"B", -1},
      {u"\uFFFF", u"\U00010400", -1},
      // Surrogates without their other half, as in names that are no UTF-8.
      {u"a\xDC80", u"A\xDC80", 0},
      {u"\xDC80", u"\xDC81", -1},
      {u"\xD801", u"\xD801\xDC00", -1},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(XpCompareNoCase(c.a, c.b), c.order) << "case " << (&c - cases);
    EXPECT_EQ(XpCompareNoCase(c.b, c.a), -c.order);
  }
}

TEST(PathTest, NativePathReplacesDrivesAndSeparators) {
  using vrx::platform::NativePath;
  vrx::platform::SetDriveFolder('Q', "/mnt/card");
  EXPECT_EQ(NativePath(u"q:\\DCIM\\a.mp4"), "/mnt/card/DCIM/a.mp4");
  EXPECT_EQ(NativePath(u"Q:"), "/mnt/card/");
  EXPECT_EQ(NativePath(u"Z:\\tmp/x"), "/tmp/x");
  EXPECT_EQ(NativePath(u"a\\b"), "a/b");
  EXPECT_EQ(NativePath(u"/a\\b"), "/a\\b");
  EXPECT_EQ(NativePath(u"/\xDCFF"), "/\xFF");
  vrx::platform::SetDriveFolder('Q', "");
  EXPECT_EQ(NativePath(u"Q:\\x"), "");
  EXPECT_EQ(NativePath(u"\\rooted"), "/rooted");
  for (const char16_t* server : {u"\\\\server\\share\\x", u"\\/tmp/x"}) EXPECT_EQ(NativePath(server), "");
  EXPECT_EQ(NativePath(XpString(std::u16string(u"/a\0b", 4))), "");
  EXPECT_EQ(NativePath(u""), "");
}

}  // namespace
