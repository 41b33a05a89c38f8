// Files and folders are found, moved, deleted and made without loss of others.
#include "foundation/file/XpFileOperations.h"

#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <iterator>
#include <string>
#include <vector>

#include "foundation/file/XpFile.h"
#include "foundation/platform/FileSystem.h"
#include "tests/foundation/FolderTest.h"
#include "tests/foundation/ScopedVariable.h"

namespace {

namespace fs = std::filesystem;
using FileOperationsTest = FolderTest;

TEST_F(FileOperationsTest, ExistenceDiffersForFilesFoldersAndDanglingLinks) {
  Put("folder/file");
  fs::create_symlink("nowhere", Native("dangling"));
  const struct {
    const char* name;
    bool exists;
    bool isDirectory;
  } cases[] = {{"folder", true, true}, {"folder/", true, true},    {"folder/file", true, false},
               {"none", false, false}, {"dangling", false, false}, {"folder/file/x", false, false}};
  for (const auto& c : cases) {
    bool isDirectory = !c.isDirectory;
    EXPECT_EQ(XpPathExists(Path(c.name), &isDirectory), c.exists) << c.name;
    EXPECT_EQ(isDirectory, c.isDirectory) << c.name;
    EXPECT_EQ(XpPathIsDirectory(Path(c.name)), c.isDirectory) << c.name;
    EXPECT_EQ(XpPathIsFile(Path(c.name)), c.exists && !c.isDirectory) << c.name;
  }
}

TEST_F(FileOperationsTest, AFileIsReadOnlyByItsModeAndHiddenByAMark) {
  const XpString path = Put("a.modd", "x");
  fs::permissions(Native("a.modd"), fs::perms::owner_read);
  EXPECT_TRUE(XpPathIsReadOnly(path));
  EXPECT_EQ(XpPathClearReadOnly(path), XpOk);
  EXPECT_FALSE(XpPathIsReadOnly(path));
  EXPECT_EQ(XpPathClearReadOnly(Path("none")), XpErrFileNotFound);
  EXPECT_EQ(XpPathSetHidden(Path("none")), XpErrAccessDenied);
  if (XpPathSetHidden(path) != XpOk) GTEST_SKIP() << "this file system keeps no marks";
  EXPECT_TRUE(XpFile(path).IsHidden());
  EXPECT_EQ(Get("a.modd"), "x");
}

TEST_F(FileOperationsTest, DeletingRemovesReadOnlyFilesAndLinksButNoFolders) {
  Put("a");
  fs::permissions(Native("a"), fs::perms::owner_read);
  EXPECT_EQ(XpFileDelete(Path("a")), XpOk);
  Put("target");
  fs::create_symlink("target", Native("link"));
  EXPECT_EQ(XpFileDelete(Path("link")), XpOk);
  EXPECT_TRUE(Exists("target"));
  fs::create_directory(Native("folder"));
  EXPECT_EQ(XpFileDelete(Path("folder")), XpErrAccessDenied);
  EXPECT_EQ(XpFileDelete(Path("none")), XpErrFileNotFound);
  EXPECT_EQ(XpFileDelete(Path(std::string(300, 'n'))), XpErrDeleteFailed);
  const std::vector<XpString> some = {Path("target"), Path("none"), Put("later")};
  EXPECT_EQ(XpFilesToRecycleBin(some, false), XpErrFileNotFound);
  EXPECT_FALSE(Exists("target"));
  EXPECT_TRUE(Exists("later"));
}

TEST_F(FileOperationsTest, TheTrashKeepsFilesAndTheirOrigin) {
  const ScopedVariable data("XDG_DATA_HOME", Native("data"));
  const std::vector<XpString> both = {Put("one/100% \xC3\xA9", "first"), Put("two/100% \xC3\xA9", "second")};
  EXPECT_EQ(XpFilesToRecycleBin(both, true), XpOk);
  EXPECT_EQ(XpFileToRecycleBin(Path("none")), XpErrDeleteFailed);
  EXPECT_FALSE(Exists("one/100% \xC3\xA9"));
  EXPECT_EQ(Get("data/Trash/files/100% \xC3\xA9"), "first");
  EXPECT_EQ(Get("data/Trash/files/100% \xC3\xA9.2"), "second");
  const std::string info = Get("data/Trash/info/100% \xC3\xA9.2.trashinfo");
  EXPECT_NE(info.find("two/100%25%20%C3%A9\nDeletionDate="), std::string::npos) << info;
}

TEST_F(FileOperationsTest, RenamingReplacesAFileButNoProtectedOneAndNoFolder) {
  Put("from", "new");
  Put("to", "old");
  Put("a/x", "1");
  fs::create_directory(Native("b"));
  EXPECT_EQ(XpFileRename(Path("from"), Path("to")), XpOk);
  EXPECT_EQ(Get("to"), "new");
  EXPECT_EQ(XpFileRename(Path("none"), Path("to")), XpErrFileNotFound);
  EXPECT_EQ(XpFileRename(Path("to"), Path("b")), XpErrAccessDenied);
  Put("locked", "kept");
  fs::permissions(Native("locked"), fs::perms::owner_read);
  ASSERT_EQ(mkfifo(Native("fifo").c_str(), 0600), 0);
  for (const char* target : {"locked", "fifo"}) {
    EXPECT_EQ(XpFileRename(Path("to"), Path(target)), XpErrAccessDenied) << target;
    EXPECT_EQ(XpFileMove(Path("to"), Path(target), nullptr), XpErrAccessDenied) << target;
  }
  EXPECT_EQ(Get("locked"), "kept");
  EXPECT_TRUE(fs::is_fifo(Native("fifo")));
  EXPECT_EQ(XpFileRename(Path("locked"), Path("locked")), XpOk);
  XpFileProgress progress;
  EXPECT_EQ(XpFileCopyOrMove(Path("a"), Path("b"), &progress), XpErrAlreadyExists);
  EXPECT_EQ(progress.done, 0);
  EXPECT_EQ(XpFileCopyOrMove(Path("a"), Path("c"), &progress), XpOk);
  EXPECT_EQ(Get("c/x"), "1");
  EXPECT_EQ(progress.done, 100);
  EXPECT_EQ(progress.total, 100);
}

TEST_F(FileOperationsTest, MovingToAnotherVolumeCopiesWholeAndThenDeletes) {
  const ScopedVariable temporary("TMPDIR", "/dev/shm");
  const TempFolder other;
  struct stat here {};
  struct stat there {};
  ASSERT_EQ(stat(Native("").c_str(), &here), 0);
  ASSERT_EQ(stat(other.Path().c_str(), &there), 0);
  if (here.st_dev == there.st_dev) GTEST_SKIP() << "no second volume";
  const XpString from = Put("from", std::string(3'000'000, 'v'));
  fs::permissions(Native("from"), fs::perms::owner_read);
  XpDateTime written;
  written.SetDateTime(2015, 6, 7, 8, 9, 10);
  ASSERT_EQ(XpFile(from).SetTimes(nullptr, &written, nullptr), XpOk);
  const XpString folder = vrx::platform::PathFromNative(other.Path().native());
  XpFile moved(folder + u"/to");
  XpFileProgress progress;
  EXPECT_EQ(XpFileMove(from, folder + u"/to", &progress), XpOk);
  EXPECT_EQ(progress.done, 100);
  EXPECT_FALSE(Exists("from"));
  EXPECT_EQ(moved.GetSize(), 3'000'000);
  EXPECT_TRUE(moved.IsReadOnly());
  XpDateTime got;
  EXPECT_EQ(moved.GetWriteTime(got), XpOk);
  EXPECT_EQ(got.GetValue(), written.GetValue());
  EXPECT_EQ(XpFileMove(Put("file", "x"), folder, nullptr), XpErrAccessDenied);
  EXPECT_EQ(Get("file"), "x");
  EXPECT_EQ(other.Count(), 1) << "a partial copy was left";
  Put("tree/sub/deep", "whole");
  EXPECT_EQ(XpFilesMove(std::vector{Path("tree"), Path("file")}, folder), XpOk);
  EXPECT_EQ(other.Read("tree/sub/deep") + other.Read("file"), "wholex");
  EXPECT_FALSE(Exists("tree") || Exists("file"));
  EXPECT_EQ(XpFilesMove(std::vector{Put("file", "mine")}, folder), XpErrShellMoveFailed);
  EXPECT_EQ(other.Read("file") + Get("file"), "xmine");
  EXPECT_EQ(other.Count(), 3);
}

TEST_F(FileOperationsTest, SeveralFilesMoveIntoAFolderThatIsMade) {
  const std::vector<XpString> paths = {Put("a.txt", "1"), Put("sub/b.txt", "2")};
  EXPECT_EQ(XpFilesMove(paths, Path("new/target")), XpOk);
  EXPECT_EQ(Get("new/target/a.txt") + Get("new/target/b.txt"), "12");
  EXPECT_EQ(XpFilesMove(paths, Path("new/target")), XpErrShellMoveFailed);
  EXPECT_EQ(XpFilesMove(std::vector{Path("sub"), Put("a.txt", "mine")}, Path("new/target")),
            XpErrShellMoveFailed);
  EXPECT_TRUE(fs::is_directory(Native("new/target/sub")));
  EXPECT_EQ(Get("new/target/a.txt") + Get("a.txt"), "1mine") << "nothing is replaced";
}

TEST_F(FileOperationsTest, ATreeIsCopiedCompletelyWithLinksModesAndTimesOrNotAtAll) {
  using vrx::platform::CopyTree;
  Put("outside", "kept");
  Put("tree/odd\\name\xFF", "1");
  Put("tree/private/file", "2");
  fs::permissions(Native("tree/private/file"), fs::perms::owner_read);
  fs::permissions(Native("tree/private"), fs::perms::owner_all);
  fs::create_symlink("../outside", Native("tree/link"));
  fs::create_symlink("nowhere", Native("tree/dangling"));
  const auto written = fs::file_time_type::clock::now() - std::chrono::hours(1000);
  for (const char* name : {"tree/private/file", "tree/private", "tree"})
    fs::last_write_time(Native(name), written);
  EXPECT_FALSE(CopyTree(Path("tree"), Path("copy")));
  EXPECT_EQ(Get("copy/odd\\name\xFF") + Get("copy/private/file"), "12");
  EXPECT_EQ(fs::read_symlink(Native("copy/link")), "../outside");
  EXPECT_EQ(fs::read_symlink(Native("copy/dangling")), "nowhere");
  EXPECT_EQ(fs::status(Native("copy/private/file")).permissions(), fs::perms::owner_read);
  EXPECT_EQ(fs::status(Native("copy/private")).permissions(), fs::perms::owner_all);
  for (const char* name : {"copy/private/file", "copy/private", "copy"}) {
    EXPECT_EQ(fs::last_write_time(Native(name)), written) << name;
  }
  EXPECT_FALSE(CopyTree(Path("tree/link"), Path("link")));
  EXPECT_TRUE(fs::is_symlink(Native("link")));

  EXPECT_EQ(CopyTree(Path("tree"), Path("copy")), std::errc::file_exists);
  EXPECT_EQ(CopyTree(Path("tree/private/file"), Path("outside")), std::errc::file_exists);
  EXPECT_EQ(Get("outside"), "kept");
  EXPECT_EQ(CopyTree(Path("tree"), Path("tree/private/below")), std::errc::invalid_argument);
  ASSERT_EQ(mkfifo(Native("tree/private/pipe").c_str(), 0600), 0);
  EXPECT_EQ(CopyTree(Path("tree"), Path("second")), std::errc::invalid_argument);
  EXPECT_EQ(CopyTree(Path("none"), Path("second")), std::errc::no_such_file_or_directory);
  const auto entries = std::distance(fs::directory_iterator(Native("")), fs::directory_iterator());
  EXPECT_EQ(entries, 4) << "a partial copy was left";
}

TEST_F(FileOperationsTest, MakingAPathMakesItsParentsOrReportsTheCause) {
  for (const char* path : {"a/b/c", "a/b/c/"}) EXPECT_EQ(XpPathMake(Path(path)), XpOk);
  EXPECT_TRUE(fs::is_directory(Native("a/b/c")));
  vrx::platform::SetDriveFolder('T', Native("").string());
  EXPECT_EQ(XpPathMake(u"T:\\d\\e"), XpOk);
  vrx::platform::SetDriveFolder('T', "");
  EXPECT_TRUE(fs::is_directory(Native("d/e")));
  Put("file");
  EXPECT_EQ(XpPathMake(Path("file")), XpErrAlreadyExists);
  EXPECT_EQ(XpPathMake(Path("file/x")), XpErrAlreadyExists);
  EXPECT_EQ(XpPathMake(Path(std::string(300, 'n'))), XpErrPathForm);
  for (const char16_t* form : {u"", u"relative\\x", u"\\rooted", u"\\\\server", u"\\\\server\\"}) {
    EXPECT_EQ(XpPathMake(form), XpErrPathForm) << XpString(form);
  }
  EXPECT_EQ(XpPathMake(u"Q:\\x"), XpErrPathNotFound);
  const XpString likeServer = u"\\" + Path("a");
  EXPECT_FALSE(XpPathIsDirectory(likeServer)) << "a server is no local folder";
  EXPECT_EQ(XpPathMake(likeServer + u"\\share\\x"), XpErrPathNotFound);
}

TEST_F(FileOperationsTest, RemovingATreeNeverLeavesItThroughLinks) {
  Put("outside/precious", "kept");
  Put("tree/file");
  Put("tree/sub/odd\\name\xFF");
  fs::create_directory_symlink(Native("outside"), Native("tree/out"));
  fs::create_directory_symlink("..", Native("tree/sub/loop"));
  fs::permissions(Native("tree/file"), fs::perms::owner_read);
  EXPECT_EQ(XpPathRemove(Path("tree"), false, nullptr), XpErrDirectoryNotEmpty);
  XpFileProgress progress;
  EXPECT_EQ(XpPathRemove(Path("tree"), true, &progress), XpOk);
  EXPECT_EQ(progress.total, 3);
  EXPECT_EQ(progress.done, 3);
  EXPECT_FALSE(Exists("tree"));
  EXPECT_EQ(Get("outside/precious"), "kept");

  fs::create_directory_symlink("outside", Native("link"));
  EXPECT_EQ(XpPathRemove(Path("link/"), true, nullptr), XpOk);
  EXPECT_FALSE(Exists("link"));
  EXPECT_EQ(Get("outside/precious"), "kept");
}

TEST_F(FileOperationsTest, RemovingRefusesRootsFilesAndNothing) {
  EXPECT_EQ(XpPathRemove(u"", false, nullptr), XpErrInvalidArgument);
  for (const char16_t* root : {u"/", u"//", u"/.", u"/tmp/..", u"Z:", u"Z:\\", u"Z:\\tmp\\.."}) {
    EXPECT_EQ(XpPathRemove(root, false, nullptr), XpErrInvalidArgument) << XpString(root);
  }
  EXPECT_EQ(XpPathRemove(Path("none"), true, nullptr), XpErrFileNotFound);
  EXPECT_EQ(XpPathRemove(Put("file"), true, nullptr), XpErrPathNotFound);
  EXPECT_TRUE(Exists("file"));
}

}  // namespace
