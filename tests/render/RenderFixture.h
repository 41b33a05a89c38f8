// A folder with a project in it, and its renders through the command line program.
#pragma once

#include <string>

#include <gtest/gtest.h>

#include "samples/clipmaker/PatternClip.h"
#include "tests/render/VrxProcess.h"
#include "tests/src/ProjectText.h"
#include "tests/support/TempFolder.h"

class RenderFixture : public testing::Test {
 protected:
  RenderFixture(int width, int height, int timeValue = 1, int timeScale = 25) {
    const auto key = [this](const char* name, int value) {
      project.video += "<key>" + std::string(name) + "</key><integer>" + std::to_string(value) + "</integer>";
    };
    project.video.clear();
    key("Width", width);
    key("Height", height);
    key("TimeValue", timeValue);
    key("TimeScale", timeScale);
    key("AverageBitrate", 4'000'000);
  }

  std::string Path(const std::string& name) const { return (folder.Path() / name).string(); }
  /// Gives back `name`.
  std::string WriteClip(const std::string& name, const vrx::test_support::PatternClip& clip) const {
    WritePatternClip(Path(name), clip);
    return name;
  }
  std::string WriteProject() const { return folder.Write("p.vrx", project.Text()); }
  /// The path of the finished movie.
  std::string Render() {
    m_result = RunVrx({{"render", WriteProject(), "--progress", "none"}});
    EXPECT_EQ(m_result.status, 0) << m_result.errors;
    return Path(project.output);
  }

  ProjectText project;
  VrxResult m_result;
  TempFolder folder;
};
