// What `vrx check` finds in the document of a clip of still images.
#include <gtest/gtest.h>

#include "src/check/BasebandCheck.h"
#include "tests/src/BasebandText.h"
#include "tests/support/TempFolder.h"

namespace {

TEST(BasebandCheckTest, NamesWhatLeavesFramesBlackAndWhatIsUnknown) {
  struct Case {
    std::string images;
    std::uint64_t line;
    const char* key;
    const char* message;
  };
  const Case cases[] = {
      {ImageText(1, "no.jpg", 0, 9), 2, "ImagePath", "no.jpg is left out"},
      {ImageText(1, "a", 0, 3) + ImageText(2, "a", 6, 9), 3, "InFrame", "on frames 4 to 5"},
      {ImageText(1, "a", 0, 5) + ImageText(2, "a", 4, 9), 3, "InFrame", "frames 4 to 5 have an image"},
      {ImageText(1, "a", 5, 9) + ImageText(2, "a", 0, 4), 3, "InFrame", "must stand in order"},
      {ImageText(1, "a", 0, 7), 0, "", "end with frame 7, the clip with frame 9"},
      {ImageText(1, "a", 0, 12), 0, "", "go on to frame 12"},
      {ImageText(1, "a", 0, 9, 4), 2, "Rotation", "4 is none of 0 to 3"},
      {ImageText(1, "a", 0, 9, 0, 2), 2, "Mirror", "2 is neither 0 nor 1"},
      {ImageText(1, "a", 0, 4) + ImageText(1, "a", 5, 9), 3, "ImageId", "1 is used before"},
      {"", 1, "", "holds no DecImage"},
  };
  TempFolder folder;
  for (const Case& c : cases) {
    const std::string path = folder.Write("b.xml", BasebandText(c.images));
    vrx::check::ProjectReport report;
    CheckBasebandClip({1, XpNarrowString(path).ToWide(), 0, 10}, report);
    bool found = false;
    for (const vrx::check::Problem& problem : report.problems) {
      const std::string message = problem.message.ToNarrow().c_str();
      if (message.find(c.message) == std::string::npos) continue;
      found = true;
      if (c.line > 1) {
        EXPECT_EQ(problem.line, c.line) << message;
      }
      EXPECT_STREQ(problem.key.ToNarrow().c_str(), c.key) << message;
    }
    EXPECT_TRUE(found) << c.message;
  }
}

}  // namespace
