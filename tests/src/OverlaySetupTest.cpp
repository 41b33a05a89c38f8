// Frames pass through the overlay callback only where a project has something to draw.
#include <gtest/gtest.h>

#include "src/job/RenderJob.h"
#include "tests/src/ProjectText.h"
#include "tests/support/TempFolder.h"

namespace {

constexpr char kCaptions[] =
    "<key>CaptionInfo</key><dict><key>Valid</key><true/><key>CaptionString</key><string>"
    "<![CDATA[<Caption><Text>HHH</Text><LeftPos>1000</LeftPos><RightPos>2010</RightPos></Caption>]]>"
    "</string></dict>";

class OverlaySetupTest : public testing::Test {
 protected:
  void Load(const std::string& info, const std::string& painter = "sub/painter.xml") {
    std::filesystem::create_directory(folder.Path() / "sub");
    folder.Write("sub/painter.xml",
                 "<plist><dict><key>PainterInfo</key><dict>" + info + "</dict></dict></plist>");
    ProjectText project;
    project.videoTrack = ClipText("a.mp4", "0", "10010");
    project.moreOutput = "<key>PainterEffect</key><string>" + painter + "</string>";
    job.Load(XpNarrowString(folder.Write("p.vrx", project.Text())).ToWide());
  }

  TempFolder folder;
  vrx::job::RenderJob job;
};

TEST_F(OverlaySetupTest, ProjectsWithoutUsableOverlaysHaveNoCallback) {
  for (const std::string info : {"", "<key>TennisMetaInfo</key><dict/>",
                                 "<key>CaptionInfo</key><dict><key>Valid</key><true/></dict>"}) {
    Load(kCaptions);
    ASSERT_NE(job.GetSystemOutput()->rawOutput, nullptr);
    Load(info);
    EXPECT_EQ(job.GetSystemOutput()->rawOutput, nullptr) << info;
    EXPECT_EQ(job.GetSystemOutput()->rawRangeCount, 0u) << info;
  }
  for (const char* painter : {"none.xml", ""}) {
    Load(kCaptions, painter);
    EXPECT_EQ(job.GetSystemOutput()->rawOutput, nullptr) << painter;
  }
}

}  // namespace
