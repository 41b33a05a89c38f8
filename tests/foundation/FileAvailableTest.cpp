// Files on a share that does not answer count as missing after the time-out.
#include <atomic>
#include <filesystem>
#include <map>
#include <thread>
#include <vector>

#include "foundation/file/XpFileAvailableChecker.h"
#include "foundation/platform/NetworkPath.h"
#include "tests/foundation/FolderTest.h"

namespace {

constexpr std::uint32_t kPatient = 60'000;  // milliseconds; never waited for

using FileAvailableTest = FolderTest;

XpFileAvailableChecker::Tests OnNetwork() {
  XpFileAvailableChecker::Tests tests = XpFileAvailableChecker::Tests::OfSystem();
  tests.isNetworkPath = [](const XpString&) { return true; };
  return tests;
}

TEST_F(FileAvailableTest, FilesAndFoldersAreFoundLocallyAndOnAShare) {
  const XpString file = Put("DSC1.JPG");
  Put("folder.mp4/inner.txt");
  for (const auto& tests : {XpFileAvailableChecker::Tests::OfSystem(), OnNetwork()}) {
    XpFileAvailableChecker checker(tests);
    EXPECT_TRUE(checker.FileExists(file, kPatient));
    EXPECT_FALSE(checker.DirectoryExists(file, kPatient));
    EXPECT_TRUE(checker.DirectoryExists(Path("folder.mp4"), kPatient));
    EXPECT_FALSE(checker.FileExists(Path("folder.mp4"), kPatient));
    EXPECT_FALSE(checker.FileExistsRetry(Path("none"), kPatient, 2, 2));
    EXPECT_FALSE(checker.DirectoryExistsRetry(Path("none"), kPatient, 2, 2));
    EXPECT_TRUE(checker.StemFileExists(Path("DSC1.modd"), kPatient));
    EXPECT_FALSE(checker.StemFileExists(Path("DSC.modd"), kPatient));
    EXPECT_FALSE(checker.StemFileExists(Path("folder.xml"), kPatient)) << "a folder is no file";
    EXPECT_FALSE(checker.StemFileExists(Path("nowhere/DSC1.modd"), kPatient));
  }
}

TEST_F(FileAvailableTest, ABareNameIsLookedForInTheWorkingFolder) {
  Put("DSC1.JPG");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(Native(""));
  for (const auto& tests : {XpFileAvailableChecker::Tests::OfSystem(), OnNetwork()}) {
    XpFileAvailableChecker checker(tests);
    EXPECT_TRUE(checker.FileExists(u"DSC1.JPG", kPatient));
    EXPECT_TRUE(checker.StemFileExists(u"dsc1.modd", kPatient));
    EXPECT_FALSE(checker.StemFileExists(u"DSC2.modd", kPatient));
  }
  std::filesystem::current_path(before);
}

/// A share that answers for one path only when the gate is open, and counts the tests.
struct SlowShare {
  XpManualEvent gate;
  std::atomic<int> questions = 0;

  /// A test whose caller gave up may start late.
  void AwaitQuestions(int count) const {
    while (questions < count) std::this_thread::yield();
    EXPECT_EQ(questions, count);
  }
  XpFileAvailableChecker::Tests GetTests() {
    const auto slow = [this](const XpString& path) {
      ++questions;
      if (path == u"/share/slow/file" || path == u"/share/slow") gate.Lock();
      return true;
    };
    return {[](const XpString&) { return true; }, slow, slow, slow};
  }
};

TEST(SlowShareTest, APathThatDoesNotAnswerInTimeCountsAsMissing) {
  SlowShare share;
  XpFileAvailableChecker checker(share.GetTests());
  EXPECT_FALSE(checker.FileExists(u"/share/slow/file", 1));
  share.AwaitQuestions(1);
  EXPECT_FALSE(checker.FileExistsRetry(u"/share/slow/file", 1, 3, 2));
  share.AwaitQuestions(1 + 4);
  EXPECT_FALSE(checker.FileExistsRetry(u"/share/slow/file", 1, 3, 0)) << "no retry without a factor";
  share.AwaitQuestions(1 + 4 + 1);
  EXPECT_TRUE(checker.FileExists(u"/share/other", kPatient)) << "others are not held up";
  share.gate.Set(true);
  EXPECT_TRUE(checker.FileExists(u"/share/slow/file", kPatient));
}

TEST(SlowShareTest, BadRootsAreRememberedOnlyWhenAskedFor) {
  SlowShare share;
  XpFileAvailableChecker checker(share.GetTests());
  checker.SetRememberBadRoots(true);
  EXPECT_FALSE(checker.FileExists(u"/share/slow/file", 1));
  EXPECT_FALSE(checker.DirectoryExists(u"/share/slow", 1));
  share.AwaitQuestions(2);
  EXPECT_FALSE(checker.FileExists(u"/share/slow/neighbour", kPatient));
  EXPECT_FALSE(checker.StemFileExists(u"/share/slow/neighbour", kPatient));
  EXPECT_FALSE(checker.DirectoryExists(u"/share/slow", kPatient));
  share.AwaitQuestions(2);  // nothing was asked again
  share.gate.Set(true);
  checker.ClearBadFileRoots();
  EXPECT_TRUE(checker.FileExists(u"/share/slow/neighbour", kPatient));
  EXPECT_FALSE(checker.DirectoryExists(u"/share/slow", kPatient));
  checker.ClearBadDirRoots();
  EXPECT_TRUE(checker.DirectoryExists(u"/share/slow", kPatient));
}

TEST(SlowShareTest, ThreadsThatShareACheckerEachGetTheirOwnAnswer) {
  XpFileAvailableChecker::Tests tests = OnNetwork();
  tests.fileExists = [](const XpString& path) { return path == u"/yes"; };
  XpFileAvailableChecker checker(tests);
  std::vector<std::jthread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&, t] {
      for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(checker.FileExists(t % 2 == 0 ? u"/yes" : u"/no", kPatient), t % 2 == 0);
      }
    });
  }
}

using NetworkPathTest = FolderTest;

TEST_F(NetworkPathTest, ANetworkMountIsFoundWithoutAccessBelowIt) {
  using vrx::platform::LiesOnNetwork;
  std::filesystem::create_directories(Native("plain"));
  std::filesystem::create_symlink("../x/../share/a", Native("plain/link"));
  std::filesystem::create_symlink("loop", Native("loop"));
  const std::string root = Native("").parent_path().native();
  const std::string table = "22 1 254:0 / / rw,relatime shared:1 - ext4 /dev/root rw\n" +
                            std::string("40 22 0:5 / ") + root + "/share rw master:2 - nfs4 server:/x rw\n" +
                            "41 22 0:6 / /media/my\\040stick rw - fuseblk /dev/sdb1 rw\n" +
                            "42 22 0:7 / /media/far\\134away rw - fuse.sshfs host: rw\n" +
                            "43 22 0:8 / /twice rw - cifs //a/b rw\n44 43 0:9 / /twice rw - tmpfs none rw\n" +
                            "damaged\n45 22 0:9 / /cut rw -\n";
  const auto mounts = vrx::platform::ParseMountTable(table);
  EXPECT_EQ(mounts.size(), 6u);
  const std::map<std::string, bool> expected = {
      {root + "/share", true},      {root + "/share/a/b/../c", true},
      {root + "/shared/a", false},  {root + "/plain/../plain/link/deep", true},
      {root + "/loop/x", false},    {"/media/my stick/x", false},
      {"/media/far\\away/x", true}, {"/twice/x", false},
      {"/../../etc", false},
  };
  for (const auto& [path, isNetwork] : expected) EXPECT_EQ(LiesOnNetwork(path, mounts), isNetwork) << path;
  EXPECT_TRUE(vrx::platform::IsNetworkPath(u"\\\\server\\share\\x"));
  EXPECT_FALSE(vrx::platform::IsNetworkPath(XpString()));
}

}  // namespace
