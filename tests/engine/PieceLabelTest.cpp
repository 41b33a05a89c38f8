#include "engine/PieceLabel.h"

#include <gtest/gtest.h>

namespace vrx::engine {
namespace {

TEST(PieceLabelTest, LabelIsReadBackAndNoOtherText) {
  const std::string text = "Holiday2024 3/7 1500+250 1001/30000 sound";
  const std::optional<PieceLabel> label = ReadPieceLabel(text);
  ASSERT_TRUE(label);
  EXPECT_EQ(label->movie, "Holiday2024");
  EXPECT_EQ(label->number, 3u);
  EXPECT_EQ(label->count, 7u);
  EXPECT_EQ(label->firstFrame, 1500);
  EXPECT_EQ(label->frameCount, 250);
  EXPECT_EQ(label->frameDuration.value, 1001);
  EXPECT_EQ(label->frameDuration.scale, 30000);
  EXPECT_TRUE(label->hasSound);
  EXPECT_EQ(TextOf(*label), text);
  for (std::size_t length = 0; length < text.size(); ++length)
    EXPECT_FALSE(ReadPieceLabel(std::string_view(text).substr(0, length))) << length;
  for (const char* good : {"a 1/1 0+1 1/25 silent", "a 0/2 2147483646+1 1/25 sound"})
    EXPECT_TRUE(ReadPieceLabel(good)) << good;
  for (const char* bad : {"a 1/1 0+1 1/25 sound ",
                          "a 1/1 0+1 1/25 loud",
                          " 1/1 0+1 1/25 sound",
                          "a-b 1/1 0+1 1/25 sound",
                          "a 01/1 0+1 1/25 sound",
                          "a +1/1 0+1 1/25 sound",
                          "a 2/1 0+1 1/25 sound",
                          "a 0/0 0+1 1/25 sound",
                          "a 0/1 0+1 1/25 silent",  // the sound of a silent movie
                          "a 1/1 -1+1 1/25 sound",
                          "a 1/1 0+0 1/25 sound",
                          "a 1/1 2147483647+1 1/25 sound",
                          "a 1/1 1+9223372036854775807 1/25 sound",
                          "a 4294967297/4294967298 0+1 1/25 sound",
                          "a 1/1 0+1 0/25 sound",
                          "a 1/1 0+1 1/0 sound",
                          "a 1/1 0+1 1/2147483648 sound",
                          "a 1/1 0+1 -1/25 sound",
                          "a 1/1 0x1+1 1/25 sound",
                          "a 1/1  0+1 1/25 sound"})
    EXPECT_FALSE(ReadPieceLabel(bad)) << bad;
  EXPECT_TRUE(IsMovieName(std::string(64, 'z')));
  EXPECT_FALSE(ReadPieceLabel(std::string(65, 'z') + text.substr(text.find(' '))));
}

}  // namespace
}  // namespace vrx::engine
