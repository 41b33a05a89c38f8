#include "overlay/resources/PictureTable.h"

#include <array>

#include "foundation/text/XpFormat.h"

namespace vrx::overlay {
namespace {

using Gps = TemplateResource;
using Tennis = TennisMetaResource;

constexpr std::array kTemplatePictures{
    PictureRow<Gps>{u"GPS\\ldk_ak_gps.bmp", 83, 48, &Gps::gpsIcon},
    PictureRow<Gps>{u"GPS\\ldk_ak_gps_nopos.bmp", 83, 48, &Gps::gpsNoPositionIcon},
    PictureRow<Gps>{u"GPS\\Theme_Small_D\\ldk_ak_gps_start.bmp", 40, 40, &Gps::startMarker},
    PictureRow<Gps>{u"GPS\\Theme_Small_D\\ldk_ak_gps_goal.bmp", 40, 40, &Gps::goalMarker},
    PictureRow<Gps>{u"GPS\\Theme_Small_D\\ldk_ak_gps_start_text.bmp", 88, 40, &Gps::startText},
    PictureRow<Gps>{u"GPS\\Theme_Small_D\\ldk_ak_gps_goal_text.bmp", 88, 40, &Gps::goalText},
    PictureRow<Gps>{u"GPS\\Theme_Small_D\\ldk_ak_gps_position.bmp", 28, 28, &Gps::positionMarker},
    PictureRow<Gps>{u"GPS\\Theme_Small_A\\ldk_ak_meter_base_A.bmp", 1920, 317, &Gps::meterBase, nullptr, 1,
                    1},
    PictureRow<Gps>{u"GPS\\Theme_Small_A\\ldk_ak_meter_base_A_2st_vertical.bmp", 500, 317,
                    &Gps::meterBaseVertical, nullptr, 1, 1},
    PictureRow<Gps>{u"GPS\\Theme_Small_A\\ldk_ak_meter_anime_A_small_%03d.bmp", 400, 200, nullptr,
                    &Gps::meterFrames, 61, 1},
    PictureRow<Gps>{u"GPS\\Theme_Small_B\\ldk_ak_meter_base_B.bmp", 1920, 317, &Gps::meterBase, nullptr, 1,
                    2},
    PictureRow<Gps>{u"GPS\\Theme_Small_B\\ldk_ak_meter_base_B_2st_vertical.bmp", 500, 317,
                    &Gps::meterBaseVertical, nullptr, 1, 2},
    PictureRow<Gps>{u"GPS\\Theme_Small_B\\ldk_ak_meter_anime_B_small_%03d.bmp", 210, 260, nullptr,
                    &Gps::meterFrames, 31, 2},
    PictureRow<Gps>{u"GPS\\Theme_Small_C\\ldk_ak_meter_base_C.bmp", 1920, 317, &Gps::meterBase, nullptr, 1,
                    3},
    PictureRow<Gps>{u"GPS\\Theme_Small_C\\ldk_ak_meter_base_C_2st_vertical.bmp", 500, 317,
                    &Gps::meterBaseVertical, nullptr, 1, 3},
    PictureRow<Gps>{u"GPS\\Theme_Small_C\\ldk_ak_meter_anime_C_small_%03d.bmp", 24, 132, nullptr,
                    &Gps::meterFrames, 7, 3},
    PictureRow<Gps>{u"GPS\\Theme_Small_D\\ldk_ak_speedlog_base.bmp", 1920, 317, &Gps::meterBase, nullptr, 1,
                    4},
    PictureRow<Gps>{u"GPS\\Theme_Small_D\\ldk_ak_speedlog_scale_1.bmp", 2, 134, &Gps::speedLogScale1, nullptr,
                    1, 4},
    PictureRow<Gps>{u"GPS\\Theme_Small_D\\ldk_ak_speedlog_scale_2.bmp", 2, 10, &Gps::speedLogScale2, nullptr,
                    1, 4}};

constexpr std::array kTennisPictures{
    PictureRow<Tennis>{u"TennisMeta\\yellow.bmp", 90, 90, &Tennis::yellow},
    PictureRow<Tennis>{u"TennisMeta\\blue.bmp", 90, 90, &Tennis::blue},
    PictureRow<Tennis>{u"TennisMeta\\racket_%02d.bmp", 300, 300, nullptr, &Tennis::racketFrames, 8},
    PictureRow<Tennis>{u"TennisMeta\\back_%02d.bmp", 300, 300, nullptr, &Tennis::backFrames, 8},
    PictureRow<Tennis>{u"TennisMeta\\fore_%02d.bmp", 300, 300, nullptr, &Tennis::foreFrames, 8},
    PictureRow<Tennis>{u"TennisMeta\\Mov_Forehand_Spin_Flat.bmp", 20, 20, &Tennis::forehandSpinFlat},
    // The capital O is part of the name.
    PictureRow<Tennis>{u"TennisMeta\\MOv_Forehand_Slice.bmp", 20, 20, &Tennis::forehandSlice},
    PictureRow<Tennis>{u"TennisMeta\\Mov_Forehand_Volley.bmp", 20, 20, &Tennis::forehandVolley},
    PictureRow<Tennis>{u"TennisMeta\\Mov_Backhand_Spin_Flat.bmp", 20, 20, &Tennis::backhandSpinFlat},
    PictureRow<Tennis>{u"TennisMeta\\Mov_Backhand_Slice.bmp", 20, 20, &Tennis::backhandSlice},
    PictureRow<Tennis>{u"TennisMeta\\Mov_Backhand_Volley.bmp", 20, 20, &Tennis::backhandVolley},
    PictureRow<Tennis>{u"TennisMeta\\Mov_Smash.bmp", 20, 20, &Tennis::smash},
    PictureRow<Tennis>{u"TennisMeta\\Mov_Serve.bmp", 20, 20, &Tennis::serve},
    PictureRow<Tennis>{u"TennisMeta\\Mov_tag.bmp", 20, 20, &Tennis::tag},
    PictureRow<Tennis>{u"TennisMeta\\Mov_TimeLine.bmp", 510, 30, &Tennis::timeLine},
    PictureRow<Tennis>{u"TennisMeta\\Mov_TimeTop.bmp", 28, 28, &Tennis::timeTop}};

template <class Set>
void AppendFiles(std::span<const PictureRow<Set>> rows, std::vector<PictureFile>& files) {
  for (const PictureRow<Set>& row : rows) {
    for (std::int32_t frame = 0; frame < row.frameCount; ++frame) {
      files.push_back({row.GetName(frame), row.width, row.height});
    }
  }
}

}  // namespace

template <class Set>
XpString PictureRow<Set>::GetName(std::int32_t frame) const {
  if (frames == nullptr) return name;
  XpString text;
  XpFormat(text, name, frame);
  return text;
}
template struct PictureRow<TemplateResource>;
template struct PictureRow<TennisMetaResource>;

std::span<const PictureRow<TemplateResource>> TemplatePictures() noexcept { return kTemplatePictures; }
std::span<const PictureRow<TennisMetaResource>> TennisPictures() noexcept { return kTennisPictures; }

XpString DoubledPictureName(const XpString& name) {
  const std::u16string_view view = name.AsView();
  return XpString(u"2x\\") + XpString(view.substr(0, view.rfind(u'.'))) + u".png";
}

std::vector<PictureFile> ListPictureFiles() {
  std::vector<PictureFile> files;
  AppendFiles(TemplatePictures(), files);
  AppendFiles(TennisPictures(), files);
  return files;
}

}  // namespace vrx::overlay
