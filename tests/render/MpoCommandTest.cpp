// `vrx mpo`: every picture of a file is listed and taken out byte for byte, and the file itself stays.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tests/imaging/MpoFile.h"
#include "tests/render/VrxProcess.h"
#include "tests/support/TempFolder.h"

namespace {

using namespace jpegfiles;
using imagefiles::Smooth;
using testing::AllOf;
using testing::HasSubstr;
using Json = nlohmann::json;

class MpoCommandTest : public testing::Test {
 protected:
  MpoCommandTest() { m_folder.Write("a.mpo", m_file.bytes); }
  std::string Path(const std::string& name) const { return (m_folder.Path() / name).string(); }
  VrxResult Run(const std::string& action, const std::string& name, const std::vector<std::string>& more) {
    std::vector<std::string> arguments{"mpo", action, Path(name)};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return RunVrx({arguments});
  }
  VrxResult Extract(const std::string& name, const std::string& output, std::vector<std::string> more = {}) {
    more.insert(more.begin(), {"-o", Path(output)});
    return Run("extract", name, more);
  }
  Bytes Picture(std::size_t i) const {
    return m_file.bytes.substr(m_file.starts[i], m_file.starts[i + 1] - m_file.starts[i]);
  }

  TempFolder m_folder;
  MpoFile m_file{{{kMpRepresentative | 0x020002, imagefiles::Jpeg(Smooth(16, 8, 3))},
                  {kMpChild | 0x010001, imagefiles::Jpeg(Smooth(8, 4, 3))},
                  {0x020002, imagefiles::Jpeg(Smooth(24, 8, 3))}}};
};

TEST_F(MpoCommandTest, ListShowsEachPictureAndNamesDamage) {
  m_folder.Write("plain.jpg", imagefiles::Jpeg(Smooth(16, 8, 3)));
  m_folder.Write("bad.mpo",
                 MpoFile(m_file).Set(1, MpField::Offset, 1u << 30).Set(2, MpField::Size, 1u << 30).bytes);
  const VrxResult result = Run("list", "a.mpo", {Path("plain.jpg"), Path("bad.mpo"), "--json"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors, AllOf(HasSubstr("plain.jpg"), HasSubstr("no index of several pictures")));
  const Json files = Json::parse(result.output);
  ASSERT_EQ(files.size(), 2u);
  EXPECT_EQ(files[0]["pictures"][0]["representative"], true);
  Json part = Json::parse(R"j({"entry": 1, "frame": null, "representative": false, "problem": null,
      "type": "large thumbnail (VGA)", "typeCode": 65537, "width": 8, "height": 4})j");
  part["position"] = m_file.starts[1];
  part["bytes"] = part["statedBytes"] = Picture(1).size();
  EXPECT_EQ(files[0]["pictures"][1], part);
  EXPECT_THAT(files[1]["pictures"][1]["problem"], HasSubstr("past the end"));
  EXPECT_EQ(files[1]["pictures"][2]["bytes"], Picture(2).size());
  EXPECT_THAT(Run("list", "bad.mpo", {}).output, AllOf(HasSubstr("disparity"), HasSubstr("24 by 8"),
                                                       HasSubstr("past the end"), HasSubstr("cut:")));
}

TEST_F(MpoCommandTest, ExtractWritesPicturesByteForByteAndNeverOverTheFile) {
  EXPECT_EQ(Extract("a.mpo", "out").status, 0);
  EXPECT_EQ(m_folder.Read("out/a-0.jpg"), Picture(0));
  EXPECT_EQ(m_folder.Read("out/a-1.jpg"), Picture(2));
  EXPECT_FALSE(std::filesystem::exists(Path("out/a-entry1.jpg")));
  EXPECT_EQ(Extract("a.mpo", "out", {"--all"}).status, 0);
  EXPECT_EQ(m_folder.Read("out/a-entry1.jpg"), Picture(1));
  EXPECT_EQ(Extract("a.mpo", "one.jpg", {"--frame", "1"}).status, 0);
  EXPECT_EQ(m_folder.Read("one.jpg"), Picture(2));
  EXPECT_THAT(Extract("a.mpo", "one.jpg", {"--frame", "2"}).errors, HasSubstr("no frame 2"));
  EXPECT_EQ(Extract("a.mpo", "out", {"--frame", "0", "--all"}).status, 2);

  std::filesystem::create_hard_link(Path("a.mpo"), Path("out/b-0.jpg"));
  std::filesystem::create_symlink(Path("a.mpo"), Path("b.mpo"));
  const VrxResult over = Extract("b.mpo", "out");
  EXPECT_EQ(over.status, 1);
  EXPECT_THAT(over.errors, HasSubstr("is the file itself"));
  EXPECT_EQ(Extract("a.mpo", "a.mpo", {"--frame", "1"}).status, 1);
  EXPECT_EQ(m_folder.Read("a.mpo"), m_file.bytes);
  EXPECT_EQ(m_folder.Read("out/b-1.jpg"), Picture(2));
}

TEST_F(MpoCommandTest, ExtractNamesDamagedPicturesAndWritesTheOthers) {
  Bytes damaged = m_file.Set(0, MpField::Size, 0).bytes;
  damaged.resize(damaged.size() - 9);
  m_folder.Write("bad.mpo", damaged);
  const VrxResult result = Extract("bad.mpo", "out");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.errors,
              AllOf(HasSubstr("bad.mpo: frame 0: damaged"), HasSubstr("bad.mpo: frame 1: cut")));
  EXPECT_FALSE(std::filesystem::exists(Path("out/bad-0.jpg")));
  EXPECT_EQ(m_folder.Read("out/bad-1.jpg"), damaged.substr(m_file.starts[2]));
  EXPECT_EQ(Extract("bad.mpo", "one.jpg", {"--frame", "1"}).status, 0);
}

}  // namespace
