// `vrx resources` tells which pictures of the overlays there are, and why the others cannot be used.
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/foundation/ScopedVariable.h"
#include "tests/render/VrxProcess.h"
#include "tests/support/TempFolder.h"

namespace {

using testing::HasSubstr;

TEST(ResourcesCommandTest, ReportsEachPictureBesideTheProgramOrWhereTheSettingsSay) {
  const TempFolder home;
  const ScopedVariable settings("VRX_REGISTRY_DIR", home.Path().string());
  const VrxResult whole = RunVrx({{"resources"}});
  EXPECT_EQ(whole.status, 0) << whole.output;
  EXPECT_THAT(whole.output, HasSubstr("/KRVOResources/\nPictures  152, of which 0 cannot be used\n"));
  EXPECT_THAT(whole.output,
              HasSubstr("TennisMeta\\MOv_Forehand_Slice.bmp                          20 x 20\n"));

  const auto own = home.Path() / "KRVOResources";
  std::filesystem::create_directories(own / "TennisMeta");
  const std::string built = std::filesystem::path(VRX_PROGRAM).parent_path() / "KRVOResources";
  std::filesystem::copy_file(built + "/TennisMeta/blue.bmp", own / "TennisMeta/blue.bmp");
  std::filesystem::copy_file(built + "/TennisMeta/blue.bmp", own / "TennisMeta/Mov_Serve.bmp");
  home.Write("KRVOResources/TennisMeta/yellow.bmp", "BM and no more");
  RunVrx({{"config", "set", "--machine", "Browser/1.0", "InstalledLocation", home.Path().string()}});
  const VrxResult part = RunVrx({{"resources", "--json"}});
  EXPECT_EQ(part.status, 1);
  const auto report = nlohmann::json::parse(part.output);
  EXPECT_EQ(report.at("folder"), own.string() + "/");
  int usable = 0;
  for (const auto& picture : report.at("pictures")) {
    const std::string file = picture.at("file");
    usable += picture.at("usable").get<bool>();
    if (file == "TennisMeta\\yellow.bmp") {
      EXPECT_EQ(picture.at("problem"), "the file is too short for a bitmap");
    }
    if (file == "TennisMeta\\Mov_tag.bmp") {
      EXPECT_EQ(picture.at("problem"), "the file does not exist");
    }
    if (file == "TennisMeta\\blue.bmp") {
      EXPECT_EQ(picture.at("width"), 90);
    }
  }
  EXPECT_EQ(usable, 2);
  EXPECT_THAT(RunVrx({{"resources"}}).output, HasSubstr("90 x 90, scaled to 20 x 20\n"));
}

}  // namespace
