// Reads any bytes as tennis metadata, checks them, searches shots and draws frames; and reads them as a table
// of shots.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "drawing/BoxTextRenderer.h"
#include "fuzz/FuzzPicture.h"
#include "overlay/tennis/KVSTennisMetaPainterPlugIn.h"
#include "overlay/tennis/ShotTable.h"
#include "src/check/TennisCheck.h"

namespace {

using vrx::fuzz::MakePicture;
constexpr std::int32_t kWidth = 160, kHeight = 90;

std::shared_ptr<TennisMetaResource> MakePictures() {
  auto set = std::make_shared<TennisMetaResource>();
  for (auto* frames : {&set->racketFrames, &set->backFrames, &set->foreFrames})
    frames->assign(8, MakePicture(9));
  for (const auto& stroke : vrx::overlay::TennisStrokes()) (*set).*(stroke.pictogram) = MakePicture(3);
  set->shade = set->timeLine = set->timeTop = set->yellow = set->blue = MakePicture(2);
  return set;
}

void Draw(PainterInfo& info, std::int32_t layout, std::span<const std::int64_t> moments) {
  info.tennisMetaInfo.layoutType = layout;
  vrx::drawing::BoxTextRenderer text;
  KVSTennisMetaPainterPlugIn painter(text);
  painter.SetPainterInfo(&info, &info.tennisMetaInfo);
  PixmapHolder frame(new XpPixmap32);
  if (frame->Allocate(kWidth, kHeight) != XpOk) return;
  for (const std::int64_t ms : moments) {
    painter.GetContentStamp({.tennisMs = ms});
    painter.Draw(0, ms, 0, frame);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  static const std::shared_ptr<TennisMetaResource> pictures = MakePictures();
  PainterInfo info;
  info.videoWidth = kWidth;
  info.videoHeight = kHeight;
  info.saveMovieMode = size % 2 == 0;
  info.gpsUnitFromUser = static_cast<std::int32_t>(size % 4);
  for (std::int32_t i = 0; i < 25; ++i) info.stringTable[i] = u"some words";
  info.tennisMetaInfo.metaData = XpNarrowString(bytes).ToWide();
  info.tennisMetaInfo.resources = pictures;
  std::vector<vrx::check::Problem> problems;
  vrx::check::CheckTennis(info, {.text = info.tennisMetaInfo.metaData, .line = 1}, problems);

  std::vector<TennisShot> shots;
  vrx::overlay::ParseTennisMetaData(info.tennisMetaInfo.metaData, info.stringTable, shots);
  const vrx::overlay::TennisShots searched(shots);
  std::vector<std::int64_t> moments{INT64_MIN, -5000, 0, 900, 1950, 12345, INT64_MAX};
  if (!shots.empty() && shots[0].time > 0 && shots[0].time < 1e9) {
    moments.push_back(static_cast<std::int64_t>(shots[0].time * 1000) - 100);
  }
  for (const std::int64_t ms : moments) {
    const std::int64_t index = searched.FindShotIndex(ms);
    if (index < -1 || index >= static_cast<std::int64_t>(shots.size())) __builtin_trap();
    searched.SwingFrameIndex(ms, index, 8);
  }
  Draw(info, 1, moments);
  Draw(info, 2, moments);
  vrx::overlay::ReadShotTable(bytes);
  return 0;
}
