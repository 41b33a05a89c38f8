// The numbers of the looks of the GPS overlay. KorvoTemplateScenario hands them out for the output's size.
#pragma once

#include <array>
#include <cstdint>

#include "drawing/Color.h"
#include "drawing/Geometry.h"

namespace vrx::gps {

/// The frame that the numbers of looks and structures are made for.
inline constexpr std::int32_t kTemplateWidth = 1920;
inline constexpr std::int32_t kTemplateHeight = 1080;

/// As project documents number them.
enum : std::int32_t {
  kScenarioDriveSmall = 1,
  kScenarioSportsSmall = 2,
  kScenarioWalkSmall = 3,
  kScenarioSpeedSmall = 4,
  kScenarioNone = 5,
};

struct TemplateFont {
  std::int32_t height = 0;  // negative em size
  std::int32_t weight = 400;
  bool italic = false;
};

/// Everything that one scenario states, in pixels of a frame of 1920 by 1080.
struct TemplateScenarioValues {
  std::int32_t type;
  drawing::Rect speedLabelRect;
  drawing::Rect speedValueRect;
  drawing::Rect speedUnitRect;
  drawing::Rect meterRect;
  drawing::Rect speedLogRect;
  bool hasSpeedLog;
  bool hasMeter;
  bool hasTextShadow;
  double meterSteps;     // of the needle over the whole scale; 0: there is no needle
  double meterHeadroom;  // knots above the scale
  std::int32_t aheadLineWidth;
  std::int32_t walkedLineWidth;
  std::int32_t shadowLineWidth;
  std::array<TemplateFont, 7> fonts;  // title, track, row label, row value, speed label, value and unit
  drawing::ColorRef walkedColor;
  drawing::ColorRef aheadColor;
  drawing::ColorRef baseColor;
  drawing::ColorRef titleColor;
  drawing::ColorRef trackColor;
  drawing::ColorRef rowLabelColor;
  drawing::ColorRef rowValueColor;
  drawing::ColorRef speedLabelColor;
  drawing::ColorRef speedValueColor;
  drawing::ColorRef shadowColor;  // its top byte is the alpha
};

/// `type` is one of the scenarios.
const TemplateScenarioValues& TemplateScenarioValuesOf(std::int32_t type);

}  // namespace vrx::gps
