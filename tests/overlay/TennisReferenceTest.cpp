// The sample match at five moments, with the pictures that the build draws and boxes for letters.
#include <cstdlib>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include "drawing/BoxTextRenderer.h"
#include "overlay/resources/LoadResources.h"
#include "overlay/tennis/KVSTennisMetaPainterPlugIn.h"
#include "overlay/tennis/ShotTable.h"
#include "tests/overlay/ReferencePicture.h"

namespace {

using namespace vrx::overlay;

PainterInfo SampleMatch() {
  std::ifstream file(VRX_SAMPLE_SHOTS);
  const ShotTable table = ReadShotTable(std::string(std::istreambuf_iterator<char>(file), {}));
  PainterInfo info;
  info.gpsUnitFromUser = 0;
  for (std::int32_t i = 0; i < 25; ++i) info.stringTable[i] = u"text";
  info.stringTable[17] = u"Forehand";
  TennisMetaInfo& tennis = info.tennisMetaInfo;
  tennis.metaData = XpNarrowString(WriteTennisMetaData(table.shots)).ToWide();
  tennis.originalDateTime.SetDateTime(2024, 6, 8, 14, 30, 0);
  tennis.duration = 130;
  tennis.resources = LoadTennisMetaResource();
  return info;
}

TEST(TennisReferenceTest, TheSampleMatchLooksAsItDid) {
  setenv("LC_ALL", "C", 1);  // of the date
  PainterInfo info = SampleMatch();
  vrx::drawing::BoxTextRenderer boxes;
  const struct {
    std::int32_t layout;
    std::int64_t ms;
    const char* name;
  } moments[] = {{1, 3000, "tennis-before-the-first-shot"},
                 {1, 7880, "tennis-counters-roll"},
                 {1, 8000, "tennis-at-the-shot"},
                 {1, 19'930, "tennis-run-up"},
                 {2, 28'400, "tennis-short-panel"}};
  for (const auto& moment : moments) {
    info.tennisMetaInfo.layoutType = moment.layout;
    KVSTennisMetaPainterPlugIn painter(boxes);
    painter.SetPainterInfo(&info, &info.tennisMetaInfo);
    PixmapHolder frame(new XpPixmap32);
    ASSERT_EQ(frame->Allocate(1920, 1080), XpOk);
    ASSERT_TRUE(painter.Draw(0, moment.ms, 0, frame));
    vrx::test_support::ExpectReference(*frame, moment.name);
  }
}

}  // namespace
