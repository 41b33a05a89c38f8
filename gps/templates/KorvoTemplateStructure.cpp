#include "gps/templates/KorvoTemplateStructure.h"

#include "gps/templates/TemplateScenarioValues.h"
#include "overlay/painter/VideoLayouts.h"

using namespace vrx::gps;
using vrx::drawing::Saturated;

namespace {

constexpr std::int32_t kStackedVideos = 7;  // the video layout of two, one over the other

constexpr TemplateStructureValues kNormal{
    .topRect = {0, 40, 1200, 240},
    .baseRect = {0, 763, 1920, 1080},
    .mapRect = {1440, 560, 1920, 960},
    .elapsedRect = {786, 960, 1106, 1080},
    .totalRect = {466, 960, 786, 1080},
    .clockRect = {766, 910, 926, 960},
    .averageRect = {1106, 960, 1426, 1080},
    .distanceRect = {1426, 960, 1746, 1080},
    .dateRect = {506, 910, 766, 960},
    .isTopBottom = false,
};

constexpr TemplateStructureValues kTopBottom{
    .topRect = {0, 40, 1200, 240},
    .baseRect = {0, 763, 500, 1080},
    .mapRect = {1520, 0, 1920, 440},
    .elapsedRect = {1520, 810, 1920, 945},
    .totalRect = {1520, 945, 1920, 1080},
    .clockRect = {1520, 675, 1920, 810},
    .averageRect = {0, 478, 400, 613},
    .distanceRect = {0, 343, 400, 478},
    .dateRect = {1520, 540, 1920, 675},
    .isTopBottom = true,
};

/// Moves `edge` by `amount` pixels of an output that is `outputSize` wide or high where the template has
/// `templateSize`.
void MoveEdge(std::int32_t& edge, std::int64_t amount, std::int32_t templateSize, std::int32_t outputSize) {
  if (amount > 0 && outputSize > 0) edge = Saturated(edge + amount * templateSize / outputSize);
}

}  // namespace

KorvoTemplateStructure::KorvoTemplateStructure(const TemplateStructureValues& values, std::int32_t width,
                                               std::int32_t height, std::int32_t videoWidth,
                                               std::int32_t videoHeight)
    : m_values(values),
      m_frameWidth(width),
      m_frameHeight(height),
      m_videoWidth(videoWidth),
      m_videoHeight(videoHeight) {}

void KorvoTemplateStructure::SetSize(std::int32_t width, std::int32_t height) {
  m_frameWidth = width;
  m_frameHeight = height;
}

std::int32_t KorvoTemplateStructure::ScaleX(std::int64_t length) const {
  return Saturated(length * m_frameWidth / kTemplateWidth);
}

std::int32_t KorvoTemplateStructure::ScaleY(std::int64_t length) const {
  return Saturated(length * m_frameHeight / kTemplateHeight);
}

vrx::drawing::Rect KorvoTemplateStructure::ScaleRect(const Rect& rect) const {
  return {ScaleX(rect.left), ScaleY(rect.top), ScaleX(rect.right), ScaleY(rect.bottom)};
}

void KorvoTemplateStructure::Grow(Rect& rect, std::int32_t left, std::int32_t right, std::int32_t top,
                                  std::int32_t bottom) const {
  MoveEdge(rect.left, left, kTemplateWidth, m_frameWidth);
  MoveEdge(rect.right, right, kTemplateWidth, m_frameWidth);
  MoveEdge(rect.top, top, kTemplateHeight, m_frameHeight);
  MoveEdge(rect.bottom, bottom, kTemplateHeight, m_frameHeight);
}

void KorvoTemplateStructure::GrowClockRect(std::int32_t left, std::int32_t right, std::int32_t top,
                                           std::int32_t bottom) {
  Grow(m_values.clockRect, left, right, top, bottom);
}

void KorvoTemplateStructure::GrowDateRect(std::int32_t left, std::int32_t right, std::int32_t top,
                                          std::int32_t bottom) {
  Grow(m_values.dateRect, left, right, top, bottom);
}

KorvoTemplateStructureNormal::KorvoTemplateStructureNormal(std::int32_t width, std::int32_t height,
                                                           std::int32_t videoWidth, std::int32_t videoHeight)
    : KorvoTemplateStructure(kNormal, width, height, videoWidth, videoHeight) {}

KorvoTemplateStructureTB::KorvoTemplateStructureTB(std::int32_t width, std::int32_t height,
                                                   std::int32_t videoWidth, std::int32_t videoHeight)
    : KorvoTemplateStructure(kTopBottom, width, height, videoWidth, videoHeight) {}

namespace vrx::gps {

std::unique_ptr<KorvoTemplateStructure> MakeTemplateStructure(std::int32_t layoutType, std::int32_t width,
                                                              std::int32_t height, std::int32_t videoWidth,
                                                              std::int32_t videoHeight) {
  if (overlay::FindVideoLayout(layoutType) == nullptr) return nullptr;
  if (layoutType == kStackedVideos)
    return std::make_unique<KorvoTemplateStructureTB>(width, height, videoWidth, videoHeight);
  return std::make_unique<KorvoTemplateStructureNormal>(width, height, videoWidth, videoHeight);
}

}  // namespace vrx::gps
