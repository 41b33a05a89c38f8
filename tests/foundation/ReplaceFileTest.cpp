// A file gets its new content completely or keeps the old one, and no other file is changed.
#include "foundation/file/XpReplaceFile.h"

#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "foundation/platform/FileSystem.h"
#include "tests/foundation/FolderTest.h"
#include "tests/support/DeviceNode.h"
#include "tests/support/FullDisk.h"

namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;

std::span<const std::byte> Bytes(std::string_view text) { return std::as_bytes(std::span(text)); }

/// Takes a superuser's privileges away for a scope, so that permissions apply.
class BoundByPermissions {
 public:
  BoundByPermissions() {
    EXPECT_EQ(syscall(SYS_capget, &m_header, m_before), 0);
    __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {m_before[0], m_before[1]};
    none[0].effective = none[1].effective = 0;
    EXPECT_EQ(syscall(SYS_capset, &m_header, none), 0);
  }
  BoundByPermissions(const BoundByPermissions&) = delete;
  BoundByPermissions& operator=(const BoundByPermissions&) = delete;
  ~BoundByPermissions() { EXPECT_EQ(syscall(SYS_capset, &m_header, m_before), 0); }

 private:
  __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct m_before[_LINUX_CAPABILITY_U32S_3] = {};
};

class ReplaceFileTest : public FolderTest {
 protected:
  struct stat Status(const std::string& name) const {
    struct stat state {};
    EXPECT_EQ(stat(Native(name).c_str(), &state), 0) << name;
    return state;
  }
  mode_t Mode(const std::string& name) const { return Status(name).st_mode & 07777; }
  /// Gives a file or link to another user; only a superuser can.
  bool GiveAway(const std::string& name) const { return lchown(Native(name).c_str(), kNobody, kNobody) == 0; }
  std::ptrdiff_t Count(const std::string& name) const {
    return std::distance(fs::directory_iterator(Native(name)), fs::directory_iterator());
  }
};

TEST_F(ReplaceFileTest, AReplacedFileKeepsItsModeOwnerAndMark) {
  const XpString path = Put("settings", "old and longer");
  ASSERT_EQ(chmod(path.ToNarrow().c_str(), 0640), 0);
  GiveAway("settings");
  const bool marked = setxattr(path.ToNarrow().c_str(), "user.vrx.hidden", "1", 1, 0) == 0;
  const struct stat before = Status("settings");
  EXPECT_EQ(XpReplaceFile(path, Bytes("new")), XpOk);
  EXPECT_EQ(Get("settings"), "new");
  const struct stat after = Status("settings");
  EXPECT_EQ(after.st_mode, before.st_mode);
  EXPECT_EQ(after.st_uid, before.st_uid);
  EXPECT_EQ(after.st_gid, before.st_gid);
  EXPECT_NE(after.st_ino, before.st_ino) << "the old file was written over";
  EXPECT_EQ(getxattr(path.ToNarrow().c_str(), "user.vrx.hidden", nullptr, 0) >= 0, marked);

  ASSERT_EQ(chmod(path.ToNarrow().c_str(), 06755), 0);
  EXPECT_EQ(XpReplaceFile(path, Bytes("new")), XpOk);
  EXPECT_EQ(Mode("settings"), 0755u) << "other content may not run with the owner's rights";

  const mode_t mask = umask(027);
  EXPECT_EQ(XpReplaceFile(Path("fresh"), Bytes("")), XpOk);
  umask(mask);
  EXPECT_EQ(Mode("fresh"), 0640u);
  EXPECT_EQ(Count(""), 2);
}

TEST_F(ReplaceFileTest, ALinkStaysAndItsTargetIsReplaced) {
  Put("real/document", "old");
  fs::create_directory(Native("links"));
  fs::create_symlink("../real/document", Native("links/first"));
  fs::create_symlink(Native("links/first"), Native("second"));
  fs::create_symlink("real/missing", Native("dangling"));
  fs::create_symlink("loop", Native("loop"));
  EXPECT_EQ(XpReplaceFile(Path("second"), Bytes("new")), XpOk);
  EXPECT_EQ(Get("real/document"), "new");
  EXPECT_EQ(XpReplaceFile(Path("dangling"), Bytes("made")), XpOk);
  EXPECT_EQ(Get("real/missing"), "made");
  EXPECT_EQ(XpReplaceFile(Path("loop"), Bytes("x")), XpErrNoSuchFile);
  for (const char* link : {"links/first", "second", "dangling"}) EXPECT_TRUE(fs::is_symlink(Native(link)));
  EXPECT_EQ(Count("real") + Count("links"), 3);
}

TEST_F(ReplaceFileTest, FoldersDevicesPipesAndProtectedFilesAreRefused) {
  Put("locked", "kept");
  ASSERT_EQ(chmod(Native("locked").c_str(), 0444), 0);
  fs::create_directory(Native("folder"));
  ASSERT_EQ(mkfifo(Native("fifo").c_str(), 0600), 0);
  ASSERT_EQ(mknod(Native("socket").c_str(), S_IFSOCK | 0600, 0), 0);
  fs::create_symlink("socket", Native("link"));
  std::vector<std::pair<const char*, XpResult>> cases = {
      {"locked", XpErrAccessDenied}, {"folder", XpErrAccessDenied}, {"fifo", XpErrNotAFile},
      {"socket", XpErrNotAFile},     {"link", XpErrNotAFile},       {"none/file", XpErrNoSuchFile},
      {"locked/x", XpErrNotAFile},
  };
  const bool hasDevice = MakeFullDevice(Native("device"));
  if (hasDevice) cases.emplace_back("device", XpErrNotAFile);
  const auto before = Count("");
  for (const auto& [name, expected] : cases)
    EXPECT_EQ(XpReplaceFile(Path(name), Bytes("x")), expected) << name;
  EXPECT_EQ(XpReplaceFile(u"", Bytes("x")), XpErrNoSuchFile);
  EXPECT_EQ(Get("locked"), "kept");
  for (const char* name : {"fifo", "socket", "device"})
    EXPECT_FALSE(fs::is_regular_file(Native(name))) << name;
  EXPECT_EQ(Count(""), before);
  if (!hasDevice) GTEST_SKIP() << "all but the device, which this user cannot make";
}

TEST_F(ReplaceFileTest, AFailureKeepsTheOldFileAndLeavesNoTemporaryFile) {
  const XpString path = Put("document", "old");
  const auto half = [](XpAbstractFile& file) { return file.Write("half", 4, nullptr); };
  EXPECT_EQ(XpReplaceFile(path,
                          [&](XpAbstractFile& file) {
                            EXPECT_EQ(half(file), XpOk);
                            return XpErrMalformedRecord;
                          }),
            XpErrMalformedRecord);
  EXPECT_EQ(XpReplaceFile(path, [](XpAbstractFile& file) { return file.Close(); }), XpErrNotOpen);
  EXPECT_THROW(XpReplaceFile(path,
                             [&](XpAbstractFile& file) {
                               half(file);
                               throw std::bad_alloc();
                               return XpOk;
                             }),
               std::bad_alloc);
  {
    const FullDisk disk(1000);
    EXPECT_EQ(XpReplaceFile(path, Bytes(std::string(5000, 'x'))), XpErrDiskFull);
    EXPECT_EQ(XpReplaceFile(Path("fresh"), Bytes(std::string(5000, 'x'))), XpErrDiskFull);
  }
  EXPECT_EQ(Get("document"), "old");
  EXPECT_EQ(Count(""), 1);
}

TEST_F(ReplaceFileTest, TheWriterMaySeekAndReadInTheNewFile) {
  const XpString path = Put("container", "old");
  EXPECT_EQ(XpReplaceFile(path,
                          [](XpAbstractFile& file) {
                            char head[4] = {};
                            EXPECT_EQ(file.Write("????data", 8, nullptr), XpOk);
                            EXPECT_EQ(file.Seek(4, XpSeekStart), XpOk);
                            EXPECT_EQ(file.Read(head, 4, nullptr), XpOk);
                            EXPECT_EQ(std::string_view(head, 4), "data");
                            EXPECT_EQ(file.Seek(0, XpSeekStart), XpOk);
                            return file.Write("HEAD", 4, nullptr);
                          }),
            XpOk);
  EXPECT_EQ(Get("container"), "HEADdata");
}

TEST_F(ReplaceFileTest, AWritableFileInAClosedFolderIsWrittenInPlace) {
  Put("closed/document", "old and longer");
  ASSERT_EQ(chmod(Native("closed").c_str(), 0555), 0);
  const ino_t before = Status("closed/document").st_ino;
  {
    const BoundByPermissions bound;
    EXPECT_EQ(XpReplaceFile(Path("closed/document"), Bytes("new")), XpOk);
    EXPECT_EQ(XpReplaceFile(Path("closed/document"), [](XpAbstractFile&) { return XpErrFailed; }),
              XpErrFailed);
    EXPECT_EQ(XpReplaceFile(Path("closed/fresh"), Bytes("x")), XpErrAccessDenied);
    EXPECT_EQ(XpReplaceFile(
                  Path("closed/document"), [](XpAbstractFile&) { return XpOk; }, XpReplaceWay::RenameOnly),
              XpErrAccessDenied);
  }
  EXPECT_EQ(Get("closed/document"), "new");
  EXPECT_EQ(Status("closed/document").st_ino, before);
  ASSERT_EQ(chmod(Native("closed").c_str(), 0755), 0);
  EXPECT_EQ(Count("closed"), 1);
}

TEST_F(ReplaceFileTest, InASharedFolderOwnersAreKeptAndForeignLinksRefused) {
  fs::create_directory(Native("shared"));
  ASSERT_EQ(chmod(Native("shared").c_str(), 01777), 0);
  Put("shared/open", "old");
  Put("shared/theirs", "old");
  ASSERT_EQ(chmod(Native("shared/open").c_str(), 0666), 0);
  ASSERT_EQ(chmod(Native("shared/theirs").c_str(), 0644), 0);
  fs::create_symlink(Native("precious"), Native("shared/trap"));
  if (!GiveAway("shared/trap")) GTEST_SKIP() << "needs files of two users";
  ASSERT_TRUE(GiveAway("shared/open") && GiveAway("shared/theirs"));
  EXPECT_EQ(XpReplaceFile(Path("shared/trap"), Bytes("x")), XpErrAccessDenied);
  EXPECT_FALSE(Exists("precious"));
  {
    const BoundByPermissions bound;
    EXPECT_EQ(XpReplaceFile(Path("shared/open"), Bytes("new")), XpOk);
    EXPECT_EQ(XpReplaceFile(Path("shared/theirs"), Bytes("new")), XpErrAccessDenied);
  }
  EXPECT_EQ(Get("shared/open"), "new");
  EXPECT_EQ(Status("shared/open").st_uid, kNobody) << "its owner changed";
  EXPECT_EQ(Get("shared/theirs"), "old");
  EXPECT_EQ(Count("shared"), 3);
}

TEST_F(ReplaceFileTest, IsSameFileSeesThroughLinks) {
  using vrx::platform::IsSameFile;
  const XpString file = Put("a/clip", "x");
  Put("a/other", "x");
  fs::create_hard_link(Native("a/clip"), Native("hard"));
  fs::create_directory_symlink("a", Native("b"));
  fs::create_symlink("b/clip", Native("soft"));
  fs::create_symlink("none", Native("dangling"));
  for (const char* name : {"a/clip", "a/../b/clip", "hard", "soft"})
    EXPECT_TRUE(IsSameFile(file, Path(name)));
  EXPECT_TRUE(IsSameFile(Path("a"), Path("b/")));
  for (const char* name : {"a/other", "none", "dangling", "a"}) EXPECT_FALSE(IsSameFile(file, Path(name)));
  EXPECT_FALSE(IsSameFile(Path("none"), Path("none")));
  EXPECT_FALSE(IsSameFile(u"", u""));
}

}  // namespace
