#include "overlay/tennis/KVSTennisMetaPainterLayoutLight.h"

namespace {

constexpr vrx::overlay::TennisLayoutValues kLightValues{
    .kind = KVSTennisMetaPainterLayoutLight::kLayoutType,
    .hasTimeLine = false,
    .hasSeparator = true,
    .unitMargin = 8,
    .rollHeight = 60,
    .panelRect = {16, 926, 1096, 1064},
    .swingPanelRect = {16, 926, 332, 1056},
    .nameRect = {},
    .countRect = {316, 926, 574, 1056},
    .secondSpeedRect = {574, 926, 832, 1056},
    .thirdSpeedRect = {832, 926, 1090, 1056},
    .swingRect = {16, 780, 316, 1080},
    .dateRect = {},
    .labelRect = {0, 930, 214, 978},
    .fontHeights = {-36, -28, -22, -60, -26, -42},
    .valueColor = 0xFFFFFF,
    .nameColor = 0xAFAFAF,
    .dateColor = 0xC8C8C8,
    .grid = {110, 205, 20},
    .foreTurn = {-vrx::overlay::kEighthTurn, 1 - vrx::overlay::kSineOf45Degrees,
                 1 + vrx::overlay::kSineOf45Degrees, true},
    .backTurn = {5 * vrx::overlay::kEighthTurn, 1 + vrx::overlay::kSineOf45Degrees,
                 1 + vrx::overlay::kSineOf45Degrees, true},
};

}  // namespace

KVSTennisMetaPainterLayoutLight::KVSTennisMetaPainterLayoutLight(
    std::shared_ptr<const TennisMetaResource> resources, std::int32_t width, std::int32_t height,
    const XpString& fontName)
    : KVSTennisMetaPainterLayoutBase(kLightValues, std::move(resources), width, height, fontName) {}
