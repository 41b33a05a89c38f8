// Folders of the user and the system, by environment and settings.
#include "foundation/file/XpSpecialFolder.h"

#include "tests/foundation/FolderTest.h"
#include "tests/foundation/ScopedVariable.h"

namespace {

class KnownFolderTest : public FolderTest {
 protected:
  ScopedVariable m_home{"HOME", Native("home")};
  ScopedVariable m_config{"XDG_CONFIG_HOME", Native("config")};
  ScopedVariable m_data{"XDG_DATA_HOME", "relative/is/ignored"};
  ScopedVariable m_temporary{"TMPDIR", Native("x/../tmp//")};
};

TEST_F(KnownFolderTest, UserDirsFileSetsTheUsersFolders) {
  Put("config/user-dirs.dirs",
      "# comment\nXDG_PICTURES_DIR=\"$HOME/My \\\"Pictures\\\"\"\n XDG_VIDEOS_DIR=\"" +
          Native("films").string() + "/\"\nXDG_MUSIC_DIR=\"not/absolute\"\nXDG_DOCUMENTS_DIR=broken\n" +
          std::string(20000, 'x'));
  EXPECT_EQ(XpGetSpecialFolder(XpFolderPictures), Path("home/My \"Pictures\""));
  EXPECT_EQ(XpGetSpecialFolder(XpFolderVideos), Path("films"));
  EXPECT_EQ(XpGetSpecialFolder(XpFolderMusic), Path("home/Music"));
  EXPECT_EQ(XpGetSpecialFolder(XpFolderDocuments), Path("home/Documents"));
  EXPECT_TRUE(Exists("films"));
  EXPECT_FALSE(Exists("home/Documents"));
}

TEST_F(KnownFolderTest, EveryKindHasAnAnswer) {
  EXPECT_EQ(XpGetSpecialFolder(XpFolderTemporary), Path("tmp"));
  EXPECT_EQ(XpGetSpecialFolder(XpFolderAppData), Path("config"));
  EXPECT_EQ(XpGetSpecialFolder(XpFolderLocalAppData), Path("home/.local/share"));
  EXPECT_EQ(XpGetSpecialFolder(XpFolderCommonVideos), XpString());
  EXPECT_EQ(XpGetSpecialFolder(-1), XpString());
  EXPECT_EQ(XpGetAppDataPath(u"", u"Product", u"Part"), Path("config/Product/Part"));
  EXPECT_EQ(XpGetSpecialFolder(XpExecutablePath),
            XpGetSpecialFolder(XpFolderExecutable) + u"/foundation-tests");
}

TEST_F(KnownFolderTest, LibraryPathsDependOnTheirPlace) {
  EXPECT_EQ(XpLibraryPath(u"a.dll", XpLibraryInstalled), XpString(u"a.dll"));
  EXPECT_EQ(XpLibraryPath(u"a.dll", XpLibraryAsGiven), XpString(u"a.dll"));
  const XpString system = XpLibraryPath(u"libc.so.6", XpLibrarySystem);
  EXPECT_TRUE(std::filesystem::exists(vrx::platform::NativePath(system))) << system;
}

}  // namespace
