// What a render leaves in the log, and that a log in trouble leaves the render alone.
#include <gmock/gmock.h>
#include <unistd.h>

#include "tests/foundation/ScopedVariable.h"
#include "tests/src/WrapperFixture.h"

namespace {

namespace fs = std::filesystem;

class RenderLogTest : public WrapperTest {
 protected:
  /// The entries' lines without time, source line and separator.
  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    for (const auto& entry : fs::recursive_directory_iterator(m_home.Path() / "LDKAppLog")) {
      std::ifstream file(entry.path());
      for (std::string line; entry.is_regular_file() && std::getline(file, line);) {
        if (line.starts_with("Time:") || line.starts_with("===")) continue;
        line.pop_back();
        const std::size_t start = line.find("->"), number = line.find(':', start), text = line.find("__");
        const bool isFirst = line.starts_with("src\\") && text != line.npos;
        lines.push_back(isFirst ? line.substr(start + 2, number - start - 2) + " " + line.substr(text + 2)
                                : "  " + line);
      }
    }
    return lines;
  }

  TempFolder m_home;
  ScopedVariable m_temporary{"TMPDIR", m_home.Path()};
  ScopedVariable m_registry{"VRX_REGISTRY_DIR", m_home.Path()};
};

TEST_F(RenderLogTest, WholeRenderIsLoggedStepByStep) {
  ProjectText project;
  project.videoTrack = ClipText("100%s %n.mp4", "0", "1000", "<key>SourceType</key><integer>2</integer>");
  project.output = m_home.Path() / "50%d.mp4";
  SetProject(project);
  Render();
  Release();
  const std::string update = "updateOutputInfoByCurrentProjectFile ";
  EXPECT_THAT(
      Lines(),
      testing::ElementsAre(
          "Initialize FUNC_VRX_CreateVRX(00000000)", update + "Load VRXWrapper.xml Error(32771)",
          update + "VideoSourceType: 2", "  VideoFilePath: 100%s %n.mp4",
          "  StartTime: value = 0.000000, Scale = 1000 ", "  EndTime: value = 1000.000000, Scale = 1000 ",
          "   StartTime = 0 framerate = 30000 EndTime = 29029 framerate = 30000",
          update + "OutputFilePath: " + project.output, "renderToFile VRXWrapperManager::renderToFile start",
          testing::StartsWith("renderToFile FUNC_VRX_CreateSequence(00000000) - GetLastError="),
          "renderToFile FUNC_VRX_ReleaseSequence(00000000)", "renderToFile FUNC_VRX_ReleaseVRX(00000000)",
          "renderToFile VRXWrapperManager::renderToFile end."));
}

TEST_F(RenderLogTest, UnwritableLogDoesNotDisturbTheRender) {
  LoadProject();
  script->slices = {{.processed = 50}, {.processed = 100, .ends = true}};
  script->onSlice = [this](std::size_t slice) {
    if (slice != 0) return;
    for (const std::string& name : {std::string("LDKAppLog"), "LDKAppLog-" + std::to_string(geteuid())}) {
      fs::remove_all(m_home.Path() / name);
      m_home.Write(name, "in the way");
    }
  };
  EXPECT_THAT(Render(), testing::ElementsAre("start", "50", "100", "end"));
  EXPECT_EQ(m_home.Read("LDKAppLog"), "in the way");
}

}  // namespace
