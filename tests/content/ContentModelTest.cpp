// Files of one stem come together as one photo or clip, and no file is lost or in two of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "content/formats/XpFormatChecker.h"
#include "content/model/ContentGrouping.h"
#include "content/model/ContentRules.h"
#include "tests/content/CameraPictures.h"
#include "tests/imaging/GifFile.h"
#include "tests/imaging/MpoFile.h"
#include "tests/support/TempFolder.h"

namespace {

using imagefiles::Bytes;
using namespace camerapictures;
using namespace vrx::formats;

XpString Wide(const std::string& text) { return XpNarrowString(text.c_str()).ToWide(); }

std::string NameOf(const XpPath& path) {
  return XpString(XpPathStem(path.GetText()) + XpPathExtension(path.GetText())).ToNarrow().c_str();
}

/// "a.mp4 + a.modd"
std::string Text(const SfContent& content) {
  std::string text;
  XpPath path;
  for (std::int32_t i = 0; i < content.GetFileCount(); ++i) {
    content.GetFileAt(path, i);
    text += (i == 0 ? "" : " + ") + NameOf(path);
  }
  return text;
}

/// The contents one after another, and after "|" the rest.
std::string Text(const vrx::model::FolderContents& found) {
  std::string text;
  for (const SfContent& content : found.contents) text += (text.empty() ? "" : "; ") + Text(content);
  if (!found.rest.empty()) text += " |";
  for (const XpPath& path : found.rest) text += " " + NameOf(path);
  return text;
}

/// A multi-picture file of so many views, of which the first one is `first`.
Bytes Views(int count, const PictureForm& first = {}) {
  constexpr std::uint32_t kDisparity = 0x020002;
  std::vector<jpegfiles::MpoPicture> pictures(static_cast<std::size_t>(count), {kDisparity, Picture({})});
  pictures.front().jpeg = Picture(first);
  return jpegfiles::MpoFile(pictures).bytes;
}

Bytes Gif(int images) {
  Bytes file = giffiles::Head(1, 1) + giffiles::Control(5);
  for (int i = 0; i < images; ++i) file += giffiles::Image({}, giffiles::Pixels({1}));
  return file + giffiles::kEnd;
}

/// The contents of a folder with these files.
std::string Group(const std::map<std::string, Bytes>& files) {
  const TempFolder folder;
  for (const auto& [name, bytes] : files) folder.Write(name, bytes);
  vrx::model::FolderContents found;
  EXPECT_EQ(vrx::model::ReadFolderContents(Wide(folder.Path().string()), found), XpOk);
  return Text(found);
}

/// Files that are known by their names alone.
std::string Group(const std::vector<std::string>& names) {
  std::map<std::string, Bytes> files;
  for (const std::string& name : names) files[name] = "";
  return Group(files);
}

TEST(ContentModelTest, EveryRuleTakesItsCompanionsInOrder) {
  EXPECT_EQ(Group({"a.kr2", "a.kr2.modd", "a.kr2.moff", "a.moff"}),
            "a.kr2 + a.kr2.modd + a.kr2.moff | a.moff");
  const Bytes none;
  const std::map<std::string, Bytes> beside{
      {"a.jpg", none}, {"a.modd", none}, {"a.moff", none}, {"a.thm", none}};
  const auto with = [&](const std::string& name, const Bytes& bytes) {
    std::map<std::string, Bytes> files = beside;
    files[name] = bytes;
    return Group(files);
  };
  EXPECT_EQ(with("a.mpo", Views(3)), "a.mpo + a.jpg + a.modd + a.moff | a.thm") << "frames";
  EXPECT_EQ(with("a.mpo", Views(2)), "a.mpo + a.jpg + a.modd + a.moff | a.thm") << "stereo";
  EXPECT_EQ(with("a.mpo", Views(2, {.width = 3424, .height = 1920})),
            "a.mpo + a.jpg + a.modd + a.moff | a.thm")
      << "a stereo panorama";
  EXPECT_EQ(with("a.mpo", none), "a.mpo + a.jpg + a.modd | a.moff a.thm") << "of no known kind";
  EXPECT_EQ(with("a.jps", none), "a.jps + a.jpg + a.modd | a.moff a.thm");
  EXPECT_EQ(with("a.tif", none), "a.jpg + a.modd + a.moff; a.tif + a.thm + a.modd");
  EXPECT_EQ(with("a.gif", Gif(1)), "a.gif + a.thm + a.modd; a.jpg + a.modd + a.moff");
  EXPECT_EQ(with("a.gif", Gif(2)), "a.gif + a.thm + a.modd; a.jpg + a.modd + a.moff") << "an animation";
  EXPECT_EQ(with("a.gif", none), "a.jpg + a.modd + a.moff | a.gif a.thm") << "no GIF";
  EXPECT_EQ(with("a.png", none), "a.jpg + a.modd + a.moff; a.png + a.modd | a.thm");
  for (const std::uint32_t kind : {257u, 258u}) {
    const Bytes spf = Picture({.segments = {Spf(kind)}});
    EXPECT_EQ(Group({{"a.jpg", spf}, {"a.modd", none}}), "a.jpg | a.modd") << kind;
    for (const Bytes& mpo : {none, Views(2), Views(3)}) {
      EXPECT_EQ(Group({{"a.mpo", mpo}, {"a.jpg", spf}}), "a.jpg; a.mpo") << "no companion of an MPO";
    }
  }
  const auto mark = [](XpTiffTagIFD& note) { note.SetUndefined(0x1000, "\1", 1); };
  EXPECT_EQ(with("a.jpg", Picture({.note = mark})), "a.jpg + a.modd | a.moff a.thm") << "marked";
  EXPECT_EQ(with("a.jpg", Picture({.width = 3424, .height = 1920})), "a.jpg + a.modd + a.moff | a.thm")
      << "panorama";
  EXPECT_EQ(Group({"a.jpg", "a.modd", "a.moff", "a.thm"}), "a.jpg + a.modd + a.moff | a.thm");
  EXPECT_EQ(Group({"a.mov", "a.thm", "a.modd", "a.moff", "a.vmlp", "a.vmlt", "a.vmlf"}),
            "a.mov + a.thm + a.modd + a.moff + a.vmlt + a.vmlf | a.vmlp");
  // The sixteenth rule takes any video; the others are exact, and each format has one.
  std::set<std::size_t> rules;
  for (const FormatCode code :
       {kKr2, kMpoFrames, kMpoPanorama, kMpoStereo, kMpoOther, kJps, kSpf257, kSpf258, kJpegMarked,
        kJpegPanorama, kTiff, kJpegPlain, kGifAnimation, kGif, kPng, kMov}) {
    EXPECT_EQ(vrx::model::FindContentRule(code), rules.size()) << code;
    rules.insert(vrx::model::FindContentRule(code));
  }
  EXPECT_EQ(vrx::model::FindContentRule(kThumbnail), vrx::model::kNoRule);
  EXPECT_EQ(vrx::model::ContentRules().size(), rules.size());
}

TEST(ContentModelTest, MixedStemsComeApart) {
  EXPECT_EQ(Group({"a.kr2", "a.jpg", "a.modd"}), "a.jpg + a.modd; a.kr2") << "a RAW file never takes a.modd";
  EXPECT_EQ(Group({"a.kr2", "a.jpg", "a.rodd"}), "a.jpg; a.kr2 + a.rodd");
  EXPECT_EQ(Group({"a.kr2", "a.rodd", "a.kr2.modd"}), "a.kr2 + a.kr2.modd | a.rodd");
  EXPECT_EQ(Group({"a.mov", "a.modd", "a.mov.modd"}), "a.mov + a.mov.modd | a.modd");
  EXPECT_EQ(Group({"a.mov", "a.jpg", "a.modd"}), "a.jpg + a.modd; a.mov + a.modd") << "shared";
  EXPECT_EQ(Group({"a.mov", "a.wmv", "a.thm"}), "a.mov + a.thm; a.wmv");
  EXPECT_EQ(Group({"A.MOV", "a.Modd", "abc.mov", "ab.modd"}), "A.MOV + a.Modd; abc.mov | ab.modd");
  EXPECT_EQ(Group({"a.b.mov", "a.b.modd", "a.mov", "a.b.mov.modd"}),
            "a.b.mov + a.b.mov.modd; a.mov | a.b.modd");
  EXPECT_EQ(Group({{"a.mpo", Views(2)}, {"a.mpo.jpg", ""}}), "a.mpo + a.mpo.jpg");
  EXPECT_EQ(Group({"a.thm"}), " | a.thm");
  EXPECT_EQ(Group({".mov", ".modd", "notes.txt"}), ".mov | .modd notes.txt")
      << "nothing goes with an empty stem";
  EXPECT_EQ(Group(std::vector<std::string>{}), "");
}

std::vector<XpPath> Gather(const std::string& path) {
  std::vector<XpPath> list;
  EXPECT_EQ(GatherStemFiles(XpPath(Wide(path)), list), XpOk);
  return list;
}

TEST(ContentModelTest, StemIsGatheredWithTheFilesThatCarryAWholeName) {
  const TempFolder folder;
  for (const char* name :
       {"a.mp4", "a.modd", "A.MP4.modd", "abc.mp4", "a", "a.b.c.modd", "x.mp4", "a[1]*.mp4"}) {
    folder.Write(name, "");
  }
  std::filesystem::create_directory(folder.Path() / "a.folder");
  std::string names;
  for (const XpPath& path : Gather((folder.Path() / "a.mp4").string())) names += NameOf(path) + " ";
  EXPECT_EQ(names, "a a.modd a.mp4 A.MP4.modd ");
  EXPECT_EQ(Gather((folder.Path() / "a[1]*.mp4").string()).size(), 1u) << "characters of patterns";
  std::vector<XpPath> list{XpPath(u"x")};
  EXPECT_NE(GatherStemFiles(XpPath(u"/no/such/folder/a.mp4"), list), XpOk);
  EXPECT_TRUE(list.empty());
}

/// One content after the other, as programs call it. The files that are left, and how often it was asked.
std::vector<XpPath> RunLoop(std::vector<XpPath> list, std::vector<std::string>& contents,
                            std::size_t& calls) {
  SfContent content;
  for (calls = 0; !list.empty() && calls < 1000; ++calls) {
    if (ClassifyNext(list, content) == kUnknown) break;
    contents.push_back(Text(content));
    RemoveContentFiles(content, list);
  }
  return list;
}

TEST(ContentModelTest, InAnyOrderEveryFileIsInOneContentOrInTheRest) {
  const TempFolder folder;
  std::vector<XpPath> all;
  for (const char* stem : {"a", "A.b", "ab"}) {
    for (const char* end : {".mov", ".jpg", ".kr2", ".png", ".modd", ".rodd", ".moff", ".thm", ".vmlf",
                            ".txt", ".mov.modd", ".jpg.modd", ".kr2.modd", ".mov.thm", ".JPG", ""}) {
      all.emplace_back(Wide(folder.Write(std::string(stem) + end, "")));
    }
  }
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    std::ranges::shuffle(all, random);
    const std::vector<XpPath> files(all.begin(), all.begin() + 1 + static_cast<int>(random() % all.size()));
    vrx::model::FolderContents found;
    vrx::model::GroupFiles(files, found);
    std::map<std::string, int> places;
    for (const XpPath& path : found.rest) ++places[NameOf(path)];
    for (const SfContent& content : found.contents) {
      XpPath path;
      for (std::int32_t i = 0; i < content.GetFileCount(); ++i) {
        content.GetFileAt(path, i);
        const bool isShared = FamilyOf(content.GetFormatAt(i)) == Family::Other;
        int& count = places[NameOf(path)];
        count = isShared ? 1 : count + 1;
      }
    }
    ASSERT_EQ(places.size(), files.size());
    for (const auto& [name, count] : places) ASSERT_EQ(count, 1) << name;

    std::vector<XpPath> stem;
    std::ranges::copy_if(files, std::back_inserter(stem),
                         [](const XpPath& path) { return NameOf(path).starts_with("a."); });
    std::vector<std::string> contents;
    std::size_t calls = 0;
    const std::vector<XpPath> left = RunLoop(stem, contents, calls);
    ASSERT_LE(calls, stem.size());
    vrx::model::GroupFiles(stem, found);
    ASSERT_EQ(contents.size(), found.contents.size());
    ASSERT_GE(left.size(), found.rest.size()) << "shared sidecars stay";
  }
}

TEST(ContentModelTest, ContentKeepsItsFilesInOrder) {
  const TempFolder folder;
  const XpPath movie(Wide(folder.Write("a.mov", ""))), sidecar(Wide(folder.Write("a.modd", "")));
  SfContent content;
  EXPECT_EQ(content.GetMark(), -1);
  EXPECT_TRUE(content.Exists(false));
  EXPECT_FALSE(content.Exists(true));
  content.SetMainFormat(kMov);
  EXPECT_EQ(content.GetMainFormat(), 0u) << "no file, no format";
  content.AddFile(movie, kMov);
  content.AddFile(sidecar, kModd);
  content.AddFile(sidecar, kModd);
  content.SetMark(5);
  EXPECT_EQ(content.IndexOfFormat(kModd), 1);
  EXPECT_EQ(content.IndexOfFormat(kMoff), -1);
  EXPECT_EQ(content.IndexOfPath(XpPath(Wide((folder.Path() / "A.MODD").string()))), 1);
  EXPECT_EQ(content.IndexOfPath(XpPath(u"a.modd")), -1);
  SfContent copy;
  copy.AddFile(movie, kPng);
  copy.CopyFrom(content);
  EXPECT_EQ(Text(copy), "a.mov + a.modd + a.modd");
  EXPECT_EQ(copy.GetMark(), 5);
  copy.ReplaceFile(movie, kModd);
  EXPECT_EQ(Text(copy), "a.mov + a.modd + a.mov");
  copy.ReplaceFile(sidecar, kMov);
  EXPECT_EQ(Text(copy), "a.modd + a.mov + a.modd") << "the main file too";
  copy.ReplaceFile(movie, kMoff);
  EXPECT_EQ(copy.GetFileCount(), 3);
  EXPECT_EQ(copy.GetFormatAt(3), 0u);
  EXPECT_EQ(copy.GetFormatAt(-1), 0u);
  XpPath path = movie;
  copy.GetFileAt(path, 3);
  EXPECT_TRUE(path.GetText().IsEmpty());

  EXPECT_TRUE(content.Exists(false));
  EXPECT_FALSE(content.IsReadOnly());
  std::filesystem::permissions(folder.Path() / "a.modd", std::filesystem::perms::owner_read);
  EXPECT_FALSE(content.IsReadOnly()) << "sidecars do not count";
  std::filesystem::permissions(folder.Path() / "a.mov", std::filesystem::perms::owner_read);
  EXPECT_TRUE(content.IsReadOnly());
  EXPECT_EQ(content.DeleteFileAt(2), XpOk);
  EXPECT_EQ(content.GetFileCount(), 2);
  EXPECT_NE(content.DeleteFileAt(1), XpOk) << "it is gone already";
  EXPECT_EQ(content.GetFileCount(), 2) << "and stays in the list";
  EXPECT_EQ(content.DeleteFileAt(2), XpErrInvalidArgument);
  EXPECT_FALSE(content.Exists(false));
  EXPECT_TRUE(content.Exists(true));
  content.Clear();
  EXPECT_EQ(content.GetMark(), -1);
  EXPECT_EQ(content.GetFileCount(), 0);
}

}  // namespace
