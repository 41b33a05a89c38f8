#include "overlay/tennis/KVSTennisMetaPainterLayoutNormal.h"

namespace {

constexpr vrx::overlay::TennisLayoutValues kNormalValues{
    .kind = KVSTennisMetaPainterLayoutNormal::kLayoutType,
    .hasTimeLine = true,
    .hasSeparator = false,
    .unitMargin = 16,
    .rollHeight = 90,
    .panelRect = {0, 916, 1920, 1080},
    .swingPanelRect = {0, 916, 450, 1080},
    .nameRect = {30, 1026, 420, 1064},
    .countRect = {1046, 916, 1306, 1080},
    .secondSpeedRect = {1306, 916, 1606, 1080},
    .thirdSpeedRect = {1606, 916, 1914, 1080},
    .swingRect = {80, 734, 380, 1034},
    .dateRect = {450, 916, 960, 1080},
    .labelRect = {0, 920, 240, 976},
    .fontHeights = {-36, -28, -24, -86, -26, -42},
    .valueColor = 0xFFFFFF,
    .nameColor = 0xAFAFAF,
    .dateColor = 0xC8C8C8,
    .grid = {99, 245, 25},
    .foreTurn = {-vrx::overlay::kEighthTurn, 1 - vrx::overlay::kSineOf45Degrees,
                 1 + vrx::overlay::kSineOf45Degrees, false},
    .backTurn = {vrx::overlay::kEighthTurn, 1 - vrx::overlay::kSineOf45Degrees,
                 1 - vrx::overlay::kSineOf45Degrees, false},
};

}  // namespace

KVSTennisMetaPainterLayoutNormal::KVSTennisMetaPainterLayoutNormal(
    std::shared_ptr<const TennisMetaResource> resources, std::int32_t width, std::int32_t height,
    const XpString& fontName)
    : KVSTennisMetaPainterLayoutBase(kNormalValues, std::move(resources), width, height, fontName) {}
