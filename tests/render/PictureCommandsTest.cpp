// `vrx tags`, `info`, `thumb` and `edit`, run as a user does on files like those of cameras.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "foundation/file/XpMemoryFile.h"
#include "imaging/loader/StillImage.h"
#include "tests/imaging/CameraFile.h"
#include "tests/render/VrxProcess.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace jpegfiles;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using Json = nlohmann::json;

class PictureCommandsTest : public testing::Test {
 protected:
  std::string Path(const std::string& name) const { return (m_folder.Path() / name).string(); }
  /// `names` are files of the folder.
  VrxResult Run(const std::string& command, const std::vector<std::string>& names,
                std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{command};
    for (const std::string& name : names) arguments.push_back(Path(name));
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunVrx({arguments});
  }
  Json RunJson(const std::string& command, const std::vector<std::string>& names, int status = 0) {
    const VrxResult result = Run(command, names, {"--json"});
    EXPECT_EQ(result.status, status) << result.errors;
    return Json::parse(result.output);
  }
  /// The row of a tag of the first file.
  Json Tag(const std::string& name, const std::string& ifd, int tag) {
    const Json files = RunJson("tags", {name});
    for (const Json& row : files[0]["tags"]) {
      if (row["ifd"] == ifd && row["tag"] == tag) return row;
    }
    return {};
  }

  TempFolder m_folder;
};

TEST_F(PictureCommandsTest, TagsOfEveryFileAreListedAndABrokenOneCostsOnlyItself) {
  m_folder.Write("a.jpg", CameraFile());
  m_folder.Write("broken.jpg", CameraFile({.hasBrokenTag = true}));
  m_folder.Write("none.txt", "no picture");
  const Json files = RunJson("tags", {"a.jpg", "missing.jpg", "none.txt", "broken.jpg"}, 1);
  ASSERT_EQ(files.size(), 2u);
  EXPECT_EQ(files[0]["file"], Path("a.jpg"));
  EXPECT_EQ(files[0]["byteOrder"], "big-endian");
  EXPECT_TRUE(files[0]["faults"].empty());
  EXPECT_EQ(Tag("a.jpg", "0", 0x0132), (Json{{"ifd", "0"},
                                             {"tag", 0x0132},
                                             {"name", "DateTime"},
                                             {"type", "ASCII"},
                                             {"count", 20},
                                             {"value", kCameraDate}}));
  EXPECT_EQ(Tag("a.jpg", "exif", 0x9000)["value"], "0220");
  EXPECT_EQ(Tag("a.jpg", "1", 0x0202)["value"], CameraThumbnail().size());
  EXPECT_EQ(files[1]["faults"].size(), 1u);
  EXPECT_EQ(files[1]["tags"].size(), files[0]["tags"].size() - 1);

  const VrxResult text = Run("tags", {"a.jpg", "missing.jpg"});
  EXPECT_EQ(text.status, 1);
  EXPECT_THAT(text.output, AllOf(HasSubstr("Orientation"), HasSubstr("2019:09:08 07:06:05")));
  EXPECT_THAT(text.errors, AllOf(HasSubstr(Path("missing.jpg")), HasSubstr("does not exist")));
}

TEST_F(PictureCommandsTest, InfoGivesSizesProfileAndSegments) {
  m_folder.Write("a.jpg",
                 CameraFile({.segments = {App(2, Bytes("ICC_PROFILE\0\1\1", 14) + Profile("mine"))}}));
  m_folder.Write("b.png", imagefiles::Png(imagefiles::Smooth(30, 20, 3)));
  const Json files = RunJson("info", {"a.jpg", "b.png"});
  const Json segments = files[0]["segments"];
  EXPECT_EQ(files[0]["format"], "JPEG");
  EXPECT_EQ(
      std::tuple(files[0]["width"], files[0]["height"], files[0]["storedWidth"], files[0]["storedHeight"]),
      std::tuple(Json(47), Json(61), Json(61), Json(47)));
  EXPECT_EQ(std::tuple(files[0]["orientation"], files[0]["frames"], files[0]["profile"]),
            std::tuple(Json(6), Json(1), Json("mine")));
  EXPECT_EQ(std::pair(segments[0]["marker"], segments[0]["name"]), std::pair(Json("APP1"), Json("Exif")));
  EXPECT_EQ(segments.size(), 2u);
  EXPECT_EQ(std::tuple(files[1]["format"], files[1]["width"], files[1]["orientation"]),
            std::tuple(Json("PNG"), Json(30), Json()));
}

XpImageSize SizeOf(const std::string& path) {
  XpImageSize size;
  vrx::imaging::ReadStillImageSize(XpNarrowString(path.c_str()).ToWide(), {}, size.width, size.height);
  return size;
}

TEST_F(PictureCommandsTest, ThumbWritesUprightPicturesAndNeverOverAPicture) {
  m_folder.Write("a.jpg", CameraFile());
  m_folder.Write("b.png", imagefiles::Png(imagefiles::Smooth(300, 200, 3)));
  m_folder.Write("ink.jpg", imagefiles::Jpeg(imagefiles::Smooth(64, 32, 4)));
  EXPECT_EQ(Run("thumb", {"a.jpg"}, {"-o", Path("t.png"), "--size", "20x20"}).status, 0);
  EXPECT_EQ(SizeOf(Path("t.png")), (XpImageSize{15, 20}));
  EXPECT_EQ(Run("thumb", {"a.jpg"}, {"-o", Path("e.png"), "--embedded"}).status, 0);
  EXPECT_EQ(SizeOf(Path("e.png")), (XpImageSize{12, 16}));
  EXPECT_EQ(Run("thumb", {"a.jpg", "b.png", "ink.jpg"}, {"-o", Path("small"), "--size", "30x30"}).status, 0);
  EXPECT_EQ(SizeOf(Path("small/b.png")), (XpImageSize{30, 20}));
  EXPECT_EQ(SizeOf(Path("small/ink.png")), (XpImageSize{30, 15}));

  const std::string before = m_folder.Read("b.png");
  const VrxResult over = Run("thumb", {"b.png"}, {"-o", Path("b.png")});
  EXPECT_EQ(over.status, 1);
  EXPECT_THAT(over.errors, HasSubstr("would overwrite"));
  m_folder.Write("b.jpg", CameraFile());
  EXPECT_EQ(Run("thumb", {"b.jpg", "b.png"}, {"-o", m_folder.Path().string()}).status, 1);
  EXPECT_EQ(m_folder.Read("b.png"), before);
  EXPECT_THAT(Run("thumb", {"b.png"}, {"-o", Path("x.png"), "--embedded"}).errors,
              HasSubstr("carries no thumbnail"));
  EXPECT_EQ(Run("thumb", {"a.jpg"}, {"-o", Path("x.png"), "--size", "0x5"}).status, 2);
}

TEST_F(PictureCommandsTest, EditChangesWhatIsNamedAndSaysWhyNot) {
  m_folder.Write("a.jpg", CameraFile());
  m_folder.Write("plain.jpg", WithSegments(CameraPicture(), {Exif(Orientation(1))}));
  const VrxResult all = Run("edit", {"a.jpg"},
                            {"--rotate", "1", "--rating", "3", "--date", "2024-05-06T10:11:12",
                             "--original-date", "2023:01:02 03:04"});
  EXPECT_EQ(all.status, 0) << all.errors;
  EXPECT_EQ(Tag("a.jpg", "0", 0x0112)["value"], 1);
  EXPECT_EQ(Tag("a.jpg", "0", 0x0132)["value"], "2024:05:06 10:11:12");
  EXPECT_EQ(Tag("a.jpg", "exif", 0x9003)["value"], "2023:01:02 03:04:00");
  const VrxResult mixed = Run("edit", {"plain.jpg", "a.jpg"}, {"--rating", "2"});
  EXPECT_EQ(mixed.status, 1);
  EXPECT_THAT(mixed.errors,
              AllOf(HasSubstr(Path("plain.jpg")), HasSubstr("no maker note"), Not(HasSubstr("a.jpg:"))));
  EXPECT_THAT(Run("edit", {"plain.jpg"}, {"--original-date", "2023-01-02 03:04"}).errors,
              HasSubstr("no date of when"));
  for (const std::vector<std::string>& wrong : {std::vector<std::string>{},
                                                {"--rotate", "4"},
                                                {"--date", "2023-02-30T00:00:00"},
                                                {"--rating", "x"}}) {
    EXPECT_EQ(Run("edit", {"a.jpg"}, wrong).status, 2);
  }
}

}  // namespace
