// Metadata is saved beside its own file, and a sidecar that others share goes only when no file needs it.
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "content/modd/SfModdXML.h"
#include "foundation/file/XpFile.h"
#include "tests/support/KilledChild.h"
#include "tests/support/TempFolder.h"

namespace {

const std::string kDocument =
    "<plist version=\"1.0\"><dict><key>XMLFileType</key><string>ModdXML</string><key>MetaDataList</key>"
    "<array><dict><key>Rating</key><integer>1</integer></dict></array></dict></plist>";

XpString Wide(const std::string& text) { return XpNarrowString(text.c_str()).ToWide(); }

/// Opens the sidecar of the file, makes the rating 5 and saves.
XpResult Save(const std::string& path) {
  SfModdXML modd(Wide(path));
  if (const XpResult result = modd.Open(SfModdReadWrite)) return result;
  modd.GetMetaDict()->Remove(u"Rating");
  modd.GetMetaDict()->Add(u"Rating", XpIniType::Int, std::int64_t{5});
  return modd.SaveSidecar();
}

/// What the sidecar that the file uses says; -1 without one.
std::int64_t RatingOf(const std::string& path) {
  SfModdXML modd(Wide(path));
  std::int64_t rating = -1;
  if (modd.Open(SfModdRead) != XpOk) return -1;
  const XpIniElement* value = modd.GetMetaDict()->Get(u"Rating");
  return value == nullptr || value->GetInt64(rating) != XpOk ? -1 : rating;
}

/// The names in the folder, without those of media files.
std::string Sidecars(const TempFolder& folder) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
    const std::string name = entry.path().filename().string();
    if (name.ends_with(".modd") || name.ends_with(".rodd")) names.insert(name);
  }
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "" : " ") + name;
  return text;
}

TEST(ModdSaveTest, SharedSidecarGoesWhenEveryContentHasItsOwn) {
  struct Case {
    std::vector<std::string> media;
    std::string sidecars;  // beside the shared one
    std::string saved;     // the file whose sidecar is saved
    std::string left;
  };
  for (const Case& c : {
           Case{{"a.mov"}, "", "a.mov", "a.mov.modd"},
           Case{{"a.mov", "a.jpg"}, "", "a.mov", "a.modd a.mov.modd"},
           Case{{"a.mov", "a.jpg"}, "a.jpg.modd", "a.mov", "a.jpg.modd a.mov.modd"},
           Case{{"a.mov", "a.thm"}, "", "a.mov", "a.mov.modd"},  // a companion needs none
           Case{{"a.mov", "ab.jpg"}, "", "a.mov", "a.mov.modd"},
           Case{{"a.mov", "a.kr2"}, "", "a.mov", "a.modd a.mov.modd"},
           Case{{"a.mov", "a.gif"}, "", "a.mov", "a.modd a.mov.modd"},  // a picture that cannot be read
           Case{{"a.mov", "a.txt"}, "", "a.mov", "a.mov.modd"},
           Case{{"a.gif"}, "", "a.gif", "a.gif.modd a.modd"},
       }) {
    const TempFolder folder;
    for (const std::string& name : c.media) folder.Write(name, "");
    folder.Write("a.modd", kDocument);
    if (!c.sidecars.empty()) folder.Write(c.sidecars, kDocument);
    EXPECT_EQ(Save((folder.Path() / c.saved).string()), XpOk) << c.left;
    EXPECT_EQ(Sidecars(folder), c.left) << c.media.size() << c.saved;
    EXPECT_EQ(RatingOf((folder.Path() / c.saved).string()), 5) << c.left;
  }
}

TEST(ModdSaveTest, SidecarOfARawFileIsItsOwnFromTheFirstSavingOn) {
  const TempFolder folder;
  const std::string path = folder.Write("shot.krw", "");
  folder.Write("shot.jpg", "");
  folder.Write("shot.rodd", kDocument);
  folder.Write("shot.modd", kDocument);
  ASSERT_EQ(Save(path), XpOk);
  EXPECT_EQ(Sidecars(folder), "shot.krw.modd shot.modd");
  EXPECT_EQ(RatingOf(path), 5);

  const std::string other = folder.Write("shot.kr2", "");
  folder.Write("shot.rodd", kDocument);
  ASSERT_EQ(Save(path), XpOk);
  std::filesystem::remove(folder.Path() / "shot.krw.modd");
  ASSERT_EQ(Save(path), XpOk);
  EXPECT_EQ(RatingOf(other), 1) << "another RAW file of the stem still needs it";
  ASSERT_EQ(Save(other), XpOk);
  EXPECT_EQ(Sidecars(folder), "shot.kr2.modd shot.krw.modd shot.modd");
}

TEST(ModdSaveTest, OwnSidecarIsReplacedAndMarkedAsHidden) {
  const TempFolder folder;
  const std::string path = folder.Write("a.mov", ""), own = folder.Write("a.mov.modd", kDocument);
  folder.Write("a.modd", kDocument);
  chmod(own.c_str(), 0440);
  ASSERT_EQ(Save(path), XpOk);
  EXPECT_EQ(RatingOf(path), 5) << "a write-protected one too";
  EXPECT_EQ(Sidecars(folder), "a.modd a.mov.modd") << "the shared one was not in use";
  SfModdXML modd(Wide(path));
  ASSERT_EQ(modd.Open(SfModdReadWrite), XpOk);
  EXPECT_FALSE(modd.IsSharedByStem());
  EXPECT_EQ(modd.SaveSidecar(), XpOk);
  EXPECT_TRUE(XpFile(Wide(own)).IsHidden());
  modd.Open(SfModdRead);
  EXPECT_EQ(modd.SaveSidecar(), XpErrNoSuchFile) << "open for reading";
  EXPECT_EQ(modd.GetMode(), SfModdRead);
  modd.Open(7);
  EXPECT_EQ(modd.SaveSidecar(), XpErrInvalidFileOperation) << "closed";
  SfModdXML nowhere(Wide((folder.Path() / "none" / "a.mov").string()));
  ASSERT_EQ(nowhere.Open(SfModdReadWrite), XpOk);
  EXPECT_NE(nowhere.SaveSidecar(), XpOk);
  EXPECT_FALSE(nowhere.FileExists());
}

TEST(ModdSaveTest, KillAtEveryStepLeavesMetadataForEveryFile) {
  if (!MayTrace()) GTEST_SKIP() << "needs to trace a process";
  int killed = 0;
  for (int call = 1;; ++call) {
    const TempFolder folder;
    const std::string path = folder.Write("a.mov", ""), other = folder.Write("a.jpg", "");
    folder.Write("a.modd", kDocument);
    folder.Write("a.jpg.modd", kDocument);
    const bool isKilled = IsKilledAtCall([&path] { return Save(path) == XpOk; }, call);
    const std::int64_t rating = RatingOf(path);
    EXPECT_TRUE(rating == 1 || rating == 5) << call;
    EXPECT_EQ(RatingOf(other), 1) << call;
    if (!isKilled) break;
    ++killed;
  }
  EXPECT_GT(killed, 4);
}

}  // namespace
