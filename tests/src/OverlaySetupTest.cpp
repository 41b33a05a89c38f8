// From a project with a painter document to drawn frames, through the records that the engine gets.
#include <gmock/gmock.h>

#include "src/manager/VRXWrapperManager.h"
#include "tests/src/ProjectText.h"
#include "tests/support/TempFolder.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr char kCaptions[] =
    "<key>CaptionInfo</key><dict><key>Valid</key><true/><key>CaptionString</key><string>"
    "&lt;Caption&gt;&lt;Text&gt;HHH&lt;/Text&gt;&lt;FontSize&gt;300&lt;/FontSize&gt;&lt;FontColor&gt;255&lt;/"
    "FontColor"
    "&gt;&lt;LayoutType&gt;5&lt;/LayoutType&gt;&lt;LeftPos&gt;1000&lt;/LeftPos&gt;&lt;RightPos&gt;2010&lt;/"
    "RightPos&gt;"
    "&lt;/Caption&gt;</string></dict>";

class OverlaySetupTest : public testing::Test {
 protected:
  void Load(const std::string& info, const std::string& painter = "sub/painter.xml") {
    std::filesystem::create_directory(folder.Path() / "sub");
    folder.Write("sub/painter.xml",
                 "<plist><dict><key>PainterInfo</key><dict>" + info + "</dict></dict></plist>");
    ProjectText project;
    project.videoTrack = ClipText("a.mp4", "0", "10010");
    project.moreOutput = "<key>PainterEffect</key><string>" + painter + "</string>";
    manager.SetProjectFile(XpNarrowString(folder.Write("p.vrx", project.Text())).ToWide());
  }
  /// The frame after the callback had it; it was grey before.
  Bytes Frame(std::uint64_t number) {
    Bytes bytes(640 * 360 * 4, 128);
    EXPECT_TRUE(manager.GetSystemOutput()->rawOutput->ProcessFrame(
        number, bytes.data(), static_cast<std::uint32_t>(bytes.size()), 2, 5));
    return bytes;
  }

  TempFolder folder;
  VRXWrapperManager manager;
};

TEST_F(OverlaySetupTest, CaptionsShowOnTheirFramesAndNoOthers) {
  Load(kCaptions);
  const VRXSystemOutputSetting& output = *manager.GetSystemOutput();
  ASSERT_NE(output.rawOutput, nullptr);
  ASSERT_EQ(output.rawRangeCount, 1u);
  EXPECT_EQ(output.rawRanges[0]->startTime.value, 30u * 1001);
  EXPECT_EQ(output.rawRanges[0]->startTime.scale, 30000u);
  EXPECT_EQ(output.rawRanges[0]->endTime.value, 61u * 1001);
  const Bytes untouched(640 * 360 * 4, 128);
  EXPECT_EQ(Frame(29), untouched);
  const Bytes first = Frame(30);
  EXPECT_NE(first, untouched);
  EXPECT_EQ(Frame(31), first);
  EXPECT_EQ(Frame(60), first);
  EXPECT_EQ(Frame(61), untouched);
  // Text lies in the middle; the corners belong to the movie, and so does every fourth byte.
  EXPECT_EQ(first[0], 128);
  for (std::size_t i = 3; i < first.size(); i += 4) ASSERT_EQ(first[i], 128);
}

TEST_F(OverlaySetupTest, ProjectsWithoutUsableOverlaysHaveNoCallback) {
  for (const std::string info : {"", "<key>TennisMetaInfo</key><dict/>",
                                 "<key>CaptionInfo</key><dict><key>Valid</key><true/></dict>"}) {
    Load(kCaptions);
    ASSERT_NE(manager.GetSystemOutput()->rawOutput, nullptr);
    Load(info);
    EXPECT_EQ(manager.GetSystemOutput()->rawOutput, nullptr) << info;
    EXPECT_EQ(manager.GetSystemOutput()->rawRangeCount, 0u) << info;
  }
  Load(kCaptions, "none.xml");
  EXPECT_EQ(manager.GetSystemOutput()->rawOutput, nullptr);
  Load(kCaptions, "");
  EXPECT_EQ(manager.GetSystemOutput()->rawOutput, nullptr);
}

}  // namespace
