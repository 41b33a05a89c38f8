// `vrx mpo`: every picture of a file is listed and taken out byte for byte, and the file itself stays.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tests/imaging/MpoFile.h"
#include "tests/render/VrxProcess.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace jpegfiles;
using testing::AllOf;
using testing::HasSubstr;
using Json = nlohmann::json;

class MpoCommandTest : public testing::Test {
 protected:
  MpoCommandTest() {
    m_file = MpoFile(m_pictures);
    m_start = m_file.size() - m_pictures[1].jpeg.size() - m_pictures[2].jpeg.size();
    m_folder.Write("a.mpo", m_file);
  }
  std::string Path(const std::string& name) const { return (m_folder.Path() / name).string(); }
  VrxResult Run(const std::string& action, const std::string& name, const std::vector<std::string>& more) {
    std::vector<std::string> arguments{"mpo", action, Path(name)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunVrx({arguments});
  }
  bool Has(const std::string& name) const { return std::filesystem::exists(Path(name)); }

  TempFolder m_folder;
  const std::vector<MpoPicture> m_pictures{
      {kMpRepresentative | 0x020002, imagefiles::Jpeg(imagefiles::Smooth(16, 8, 3))},
      {kMpChild | 0x010001, imagefiles::Jpeg(imagefiles::Smooth(8, 4, 3))},
      {0x020002, imagefiles::Jpeg(imagefiles::Smooth(24, 8, 3))}};
  Bytes m_file;
  std::size_t m_start = 0;  // of the second picture
};

TEST_F(MpoCommandTest, ListShowsEachPictureAndNamesDamage) {
  m_folder.Write("bad.mpo",
                 WithMpField(WithMpField(m_file, 1, MpField::Offset, 1u << 30), 2, MpField::Size, 1u << 30));
  m_folder.Write("plain.jpg", m_pictures[0].jpeg);
  const VrxResult result = Run("list", "a.mpo", {Path("plain.jpg"), Path("bad.mpo"), "--json"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, AllOf(HasSubstr("plain.jpg"), HasSubstr("no index of several pictures")));
  const Json files = Json::parse(result.output);
  ASSERT_EQ(files.size(), 2u);
  EXPECT_EQ(files[0]["pictures"][0]["representative"], true);
  EXPECT_EQ(files[0]["pictures"][1], (Json{{"entry", 1},
                                           {"frame", nullptr},
                                           {"representative", false},
                                           {"type", "large thumbnail (VGA)"},
                                           {"typeCode", 0x010001},
                                           {"position", m_start},
                                           {"bytes", m_pictures[1].jpeg.size()},
                                           {"statedBytes", m_pictures[1].jpeg.size()},
                                           {"width", 8},
                                           {"height", 4},
                                           {"problem", nullptr}}));
  EXPECT_THAT(files[1]["pictures"][1]["problem"], HasSubstr("past the end"));
  EXPECT_EQ(files[1]["pictures"][2]["frame"], 1);
  EXPECT_EQ(files[1]["pictures"][2]["bytes"], m_pictures[2].jpeg.size());
  EXPECT_THAT(Run("list", "bad.mpo", {}).output, AllOf(HasSubstr("disparity"), HasSubstr("24 by 8"),
                                                       HasSubstr("past the end"), HasSubstr("cut:")));
}

TEST_F(MpoCommandTest, ExtractWritesPicturesByteForByteAndNeverOverTheFile) {
  const Bytes first = m_file.substr(0, m_start), second = m_pictures[1].jpeg, third = m_pictures[2].jpeg;
  EXPECT_EQ(Run("extract", "a.mpo", {"-o", Path("frames")}).status, 0);
  EXPECT_EQ(m_folder.Read("frames/a-0.jpg"), first);
  EXPECT_EQ(m_folder.Read("frames/a-1.jpg"), third);
  EXPECT_FALSE(Has("frames/a-entry1.jpg"));
  EXPECT_EQ(Run("extract", "a.mpo", {"-o", Path("frames"), "--all"}).status, 0);
  EXPECT_EQ(m_folder.Read("frames/a-entry1.jpg"), second);
  EXPECT_EQ(Run("extract", "a.mpo", {"-o", Path("one.jpg"), "--frame", "1"}).status, 0);
  EXPECT_EQ(m_folder.Read("one.jpg"), third);
  EXPECT_THAT(Run("extract", "a.mpo", {"-o", Path("x.jpg"), "--frame", "2"}).errors, HasSubstr("no frame 2"));
  EXPECT_FALSE(Has("x.jpg"));
  EXPECT_EQ(Run("extract", "a.mpo", {"-o", Path("x"), "--frame", "0", "--all"}).status, 2);

  std::filesystem::create_hard_link(Path("a.mpo"), Path("frames/b-0.jpg"));
  std::filesystem::create_symlink(Path("a.mpo"), Path("b.mpo"));
  const VrxResult over = Run("extract", "b.mpo", {"-o", Path("frames")});
  EXPECT_EQ(over.status, 1);
  EXPECT_THAT(over.errors, HasSubstr("is the file itself"));
  EXPECT_EQ(Run("extract", "a.mpo", {"-o", Path("a.mpo"), "--frame", "1"}).status, 1);
  EXPECT_EQ(m_folder.Read("a.mpo"), m_file);
  EXPECT_EQ(m_folder.Read("frames/b-1.jpg"), third);
}

TEST_F(MpoCommandTest, ExtractNamesDamagedPicturesAndWritesTheOthers) {
  const Bytes cut = m_file.substr(0, m_file.size() - 9);
  m_folder.Write("cut.mpo", cut);
  const VrxResult warned = Run("extract", "cut.mpo", {"-o", Path("x.jpg"), "--frame", "1"});
  EXPECT_EQ(warned.status, 0);
  EXPECT_THAT(warned.errors, AllOf(HasSubstr("cut.mpo: frame 1"), HasSubstr("the file ends after")));
  EXPECT_EQ(m_folder.Read("x.jpg"), cut.substr(m_start + m_pictures[1].jpeg.size()));
  m_folder.Write("bad.mpo", WithMpField(m_file, 0, MpField::Size, 0));
  const VrxResult bad = Run("extract", "bad.mpo", {"-o", Path("bad")});
  EXPECT_EQ(bad.status, 1);
  EXPECT_THAT(bad.errors, HasSubstr("bad.mpo: frame 0: damaged"));
  EXPECT_FALSE(Has("bad/bad-0.jpg"));
  EXPECT_EQ(m_folder.Read("bad/bad-1.jpg"), m_pictures[2].jpeg);
}

}  // namespace
