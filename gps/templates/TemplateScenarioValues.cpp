#include "gps/templates/TemplateScenarioValues.h"

#include <algorithm>

namespace vrx::gps {
namespace {

/// What all looks with instruments share.
constexpr TemplateScenarioValues WithCommonValues(TemplateScenarioValues values) {
  values.aheadLineWidth = values.walkedLineWidth = 6;
  values.shadowLineWidth = 10;
  values.walkedColor = 0xFE0073FF;
  values.aheadColor = values.baseColor = values.rowValueColor = values.speedValueColor = 0xFEFEFEFE;
  values.titleColor = values.rowLabelColor = 0xFEB3B3B3;
  values.trackColor = 0xFE2789EE;
  values.speedLabelColor = 0xFECCCCCC;
  values.shadowColor = 0x66333333;
  return values;
}

constexpr std::array kScenarios{
    WithCommonValues(
        {.type = kScenarioDriveSmall,
         .speedLabelRect = {108, 937, 266, 967},
         .speedValueRect = {108, 972, 278, 1046},
         .speedUnitRect = {278, 999, 385, 1046},
         .meterRect = {31, 826, 431, 1026},
         .hasMeter = true,
         .hasTextShadow = true,
         .meterSteps = 60,
         .meterHeadroom = 10,
         .fonts = {{{-28}, {-18}, {-24}, {-36, 700, true}, {-24}, {-60, 700, true}, {-40, 700, true}}}}),
    WithCommonValues({.type = kScenarioSportsSmall,
                      .speedLabelRect = {140, 901, 314, 931},
                      .speedValueRect = {140, 968, 314, 1020},
                      .speedUnitRect = {314, 971, 419, 1010},
                      .meterRect = {61, 811, 271, 1071},
                      .hasMeter = true,
                      .meterSteps = 30,
                      .fonts = {{{-28}, {-18}, {-24}, {-36}, {-24}, {-70, 700}, {-30}}}}),
    WithCommonValues({.type = kScenarioWalkSmall,
                      .speedLabelRect = {114, 928, 288, 958},
                      .speedValueRect = {116, 1005, 304, 1065},
                      .speedUnitRect = {304, 1016, 436, 1055},
                      .meterRect = {46, 928, 70, 1060},
                      .hasMeter = true,
                      .meterSteps = 6,
                      .fonts = {{{-28}, {-18}, {-24}, {-36}, {-24}, {-80}, {-38}}}}),
    WithCommonValues(
        {.type = kScenarioSpeedSmall,
         .speedLabelRect = {20, 840, 178, 890},
         .speedValueRect = {108, 875, 278, 925},
         .speedUnitRect = {278, 860, 385, 910},
         .meterRect = {31, 826, 431, 1026},
         .speedLogRect = {8, 899, 430, 1074},
         .hasSpeedLog = true,
         .hasTextShadow = true,
         .meterSteps = 60,
         .meterHeadroom = 10,
         .fonts = {{{-28}, {-18}, {-24}, {-36, 700, true}, {-24}, {-60, 700, true}, {-24, 700, true}}}}),
    TemplateScenarioValues{.type = kScenarioNone, .hasMeter = true, .baseColor = 0xFEFEFEFE},
};

}  // namespace

const TemplateScenarioValues& TemplateScenarioValuesOf(std::int32_t type) {
  return *std::find_if(kScenarios.begin(), kScenarios.end(),
                       [type](const TemplateScenarioValues& values) { return values.type == type; });
}

}  // namespace vrx::gps
