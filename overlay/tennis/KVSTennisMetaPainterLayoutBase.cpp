#include "overlay/tennis/KVSTennisMetaPainterLayoutBase.h"

#include <algorithm>

#include "foundation/number/Saturate.h"
#include "overlay/tennis/KVSTennisMetaPainterLayoutLight.h"
#include "overlay/tennis/KVSTennisMetaPainterLayoutNormal.h"

using namespace vrx::overlay;
using vrx::drawing::Rect;
using vrx::drawing::Saturated;

namespace {

constexpr std::int64_t kLayoutWidth = 1920;
constexpr std::int64_t kLayoutHeight = 1080;
constexpr std::array kFontWeights{400, 400, 400, 700, 700, 700};

constexpr std::int32_t kTimeLineTop = 1034, kTimeLineBottom = 1064;
constexpr std::int32_t kLeastTimeLine = 10;   // output pixels
constexpr std::int32_t kTimeLineMargin = 14;  // on both ends, that markers keep to
constexpr std::int32_t kMarkerLine = (kTimeLineTop + kTimeLineBottom) / 2;

constexpr std::size_t Index(FrameSet set) { return static_cast<std::size_t>(set); }

}  // namespace

KVSTennisMetaPainterLayoutBase::KVSTennisMetaPainterLayoutBase(
    const TennisLayoutValues& values, std::shared_ptr<const TennisMetaResource> resources, std::int32_t width,
    std::int32_t height, const XpString& fontName)
    : m_values(values),
      m_resources(std::move(resources)),
      m_width(width),
      m_height(height),
      m_fontName(fontName) {
  const double half = static_cast<double>(values.swingRect.Width()) / 2;
  m_zones[Index(FrameSet::Racket)] = MakeZones(values.grid);
  m_zones[Index(FrameSet::Fore)] = MakeTurnedZones(values.grid, values.foreTurn, half);
  m_zones[Index(FrameSet::Back)] = MakeTurnedZones(values.grid, values.backTurn, half);
  CreateFonts();
}

void KVSTennisMetaPainterLayoutBase::SetOutputSize(std::int32_t width, std::int32_t height) {
  m_width = width;
  m_height = height;
  CreateFonts();
}

void KVSTennisMetaPainterLayoutBase::CreateFonts() {
  // Rectangles are scaled in each direction by itself, fonts by the tighter one.
  const double factor = std::min(static_cast<double>(m_width) / static_cast<double>(kLayoutWidth),
                                 static_cast<double>(m_height) / static_cast<double>(kLayoutHeight));
  for (std::size_t i = 0; i < m_fonts.size(); ++i) {
    const auto height = vrx::Saturate<std::int32_t>(m_values.fontHeights[i] * factor);
    m_fonts[i] = {.face = m_fontName, .height = height, .weight = kFontWeights[i]};
  }
}

std::int32_t KVSTennisMetaPainterLayoutBase::GetFrameCount(FrameSet set) const {
  return m_resources ? static_cast<std::int32_t>(FramesOf(*m_resources, set).size()) : 0;
}

PainterPicture KVSTennisMetaPainterLayoutBase::GetFrame(FrameSet set, std::int32_t index) const {
  if (index < 0 || index >= GetFrameCount(set)) return {};
  return FramesOf(*m_resources, set)[static_cast<std::size_t>(index)];
}

std::int32_t KVSTennisMetaPainterLayoutBase::ScaleX(std::int64_t value) const {
  return Saturated(value * m_width / kLayoutWidth);
}

std::int32_t KVSTennisMetaPainterLayoutBase::ScaleY(std::int64_t value) const {
  return Saturated(value * m_height / kLayoutHeight);
}

Rect KVSTennisMetaPainterLayoutBase::Scaled(const Rect& rect) const {
  return {ScaleX(rect.left), ScaleY(rect.top), ScaleX(rect.right), ScaleY(rect.bottom)};
}

Rect KVSTennisMetaPainterLayoutBase::GetDateLeftRect() const {
  Rect rect = m_values.dateRect;
  rect.right = rect.left + (rect.right - rect.left) / 2;
  return Scaled(rect);
}

Rect KVSTennisMetaPainterLayoutBase::GetDateRightRect() const {
  Rect rect = m_values.dateRect;
  rect.left = rect.right - (rect.right - rect.left) / 2;
  return Scaled(rect);
}

Rect KVSTennisMetaPainterLayoutBase::GetTimeLineRect() const {
  const Rect& date = m_values.dateRect;
  Rect line = Scaled({date.left, kTimeLineTop, date.right, kTimeLineBottom});
  const auto height = static_cast<std::int32_t>(line.Height());
  if (height >= kLeastTimeLine) return line;
  line.top -= (kLeastTimeLine - height) / 2;
  line.bottom = line.top + kLeastTimeLine;
  return line;
}

Rect KVSTennisMetaPainterLayoutBase::GetTimeMarkerRect(std::int64_t time, std::int64_t total,
                                                       std::int32_t half) const {
  if (total == 0) return {};
  const Rect& date = m_values.dateRect;
  const std::int64_t length = date.Width() - 2 * kTimeLineMargin;
  const std::int32_t x = Saturated(length * time / total + date.left + kTimeLineMargin);
  return Scaled({x - half, kMarkerLine - half, x + half, kMarkerLine + half});
}

Rect KVSTennisMetaPainterLayoutBase::GetZoneRect(FrameSet set, std::int32_t zone) const {
  if (zone < 0 || zone >= kImpactZones) return {};
  return Scaled(m_zones[Index(set)][static_cast<std::size_t>(zone)]);
}

std::unique_ptr<KVSTennisMetaPainterLayoutBase> MakeTennisLayout(
    std::int32_t layoutType, std::shared_ptr<const TennisMetaResource> resources, std::int32_t width,
    std::int32_t height, const XpString& fontName) {
  switch (layoutType) {
    case KVSTennisMetaPainterLayoutNormal::kLayoutType:
      return std::make_unique<KVSTennisMetaPainterLayoutNormal>(std::move(resources), width, height,
                                                                fontName);
    case KVSTennisMetaPainterLayoutLight::kLayoutType:
      return std::make_unique<KVSTennisMetaPainterLayoutLight>(std::move(resources), width, height, fontName);
    default:
      return nullptr;
  }
}
