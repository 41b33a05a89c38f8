#include "gps/templates/KorvoTemplateScenario.h"

#include <algorithm>
#include <cstddef>

#include "foundation/number/Saturate.h"

using namespace vrx::gps;
using vrx::Saturate;
using vrx::drawing::Rect;
using vrx::drawing::Saturated;

namespace {

constexpr std::int32_t kTrackLines = 7;

}  // namespace

KorvoTemplateScenario::KorvoTemplateScenario(const TemplateScenarioValues& values, std::int32_t width,
                                             std::int32_t height, const XpString& fontName)
    : m_values(values), m_width(width), m_height(height), m_fontName(fontName) {
  CreateFonts();
}

void KorvoTemplateScenario::SetSize(std::int32_t width, std::int32_t height) {
  m_width = width;
  m_height = height;
  CreateFonts();
}

void KorvoTemplateScenario::CreateFonts() {
  // Fonts fit into the tighter direction, lines (see LineWidth) take the wider one.
  const double factor = std::min(static_cast<double>(m_width) / kTemplateWidth,
                                 static_cast<double>(m_height) / kTemplateHeight);
  for (std::size_t i = 0; i < m_fonts.size(); ++i) {
    const TemplateFont& font = m_values.fonts[i];
    m_fonts[i] = {.face = m_fontName,
                  .height = Saturate<std::int32_t>(font.height * factor),
                  .weight = font.weight,
                  .italic = font.italic};
  }
}

PainterPicture KorvoTemplateScenario::Picture(PainterPicture TemplateResource::*field) const {
  return m_resource ? (*m_resource).*field : PainterPicture();
}

PainterPicture KorvoTemplateScenario::GetMeterFrame(double speed, double scale) const {
  if (m_values.meterSteps <= 0 || !m_resource || m_resource->meterFrames.empty()) return {};
  const auto& frames = m_resource->meterFrames;
  if (!(scale > 0)) return frames.front();
  const auto step = Saturate<std::int64_t>(speed * m_values.meterSteps / (scale + m_values.meterHeadroom));
  return frames[static_cast<std::size_t>(std::clamp<std::int64_t>(step, 0, std::ssize(frames) - 1))];
}

Rect KorvoTemplateScenario::GetSpeedLogRect(bool scaled) const {
  return scaled ? ScaleRect(m_values.speedLogRect) : m_values.speedLogRect;
}

Rect KorvoTemplateScenario::ScaleRect(const Rect& rect) const {
  const auto x = [&](std::int64_t value) { return Saturated(value * m_width / kTemplateWidth); };
  const auto y = [&](std::int64_t value) { return Saturated(value * m_height / kTemplateHeight); };
  return {x(rect.left), y(rect.top), x(rect.right), y(rect.bottom)};
}

std::int32_t KorvoTemplateScenario::LineWidth(std::int32_t width) const {
  const double factor = std::max(static_cast<double>(m_width) / kTemplateWidth,
                                 static_cast<double>(m_height) / kTemplateHeight);
  return Saturate<std::int32_t>(std::max(factor * width, 1.0));
}

vrx::drawing::ColorRef KorvoTemplateScenario::LineColor(std::int32_t index, ColorRef color) {
  return index >= 0 && index < kTrackLines ? color : 0;
}

KorvoTemplateScenarioDriveSmall::KorvoTemplateScenarioDriveSmall(std::int32_t width, std::int32_t height,
                                                                 const XpString& fontName)
    : KorvoTemplateScenario(TemplateScenarioValuesOf(kScenarioDriveSmall), width, height, fontName) {}

KorvoTemplateScenarioSportsSmall::KorvoTemplateScenarioSportsSmall(std::int32_t width, std::int32_t height,
                                                                   const XpString& fontName)
    : KorvoTemplateScenario(TemplateScenarioValuesOf(kScenarioSportsSmall), width, height, fontName) {}

KorvoTemplateScenarioWalkSmall::KorvoTemplateScenarioWalkSmall(std::int32_t width, std::int32_t height,
                                                               const XpString& fontName)
    : KorvoTemplateScenario(TemplateScenarioValuesOf(kScenarioWalkSmall), width, height, fontName) {}

KorvoTemplateScenarioSpeedSmall::KorvoTemplateScenarioSpeedSmall(std::int32_t width, std::int32_t height,
                                                                 const XpString& fontName)
    : KorvoTemplateScenario(TemplateScenarioValuesOf(kScenarioSpeedSmall), width, height, fontName) {}

KorvoTemplateScenarioNone::KorvoTemplateScenarioNone(std::int32_t width, std::int32_t height)
    : KorvoTemplateScenario(TemplateScenarioValuesOf(kScenarioNone), width, height, {}) {}

namespace vrx::gps {

std::unique_ptr<KorvoTemplateScenario> MakeTemplateScenario(std::int32_t type, std::int32_t width,
                                                            std::int32_t height, const XpString& fontName) {
  switch (type) {
    case kScenarioDriveSmall:
      return std::make_unique<KorvoTemplateScenarioDriveSmall>(width, height, fontName);
    case kScenarioSportsSmall:
      return std::make_unique<KorvoTemplateScenarioSportsSmall>(width, height, fontName);
    case kScenarioWalkSmall:
      return std::make_unique<KorvoTemplateScenarioWalkSmall>(width, height, fontName);
    case kScenarioSpeedSmall:
      return std::make_unique<KorvoTemplateScenarioSpeedSmall>(width, height, fontName);
    case kScenarioNone:
      return std::make_unique<KorvoTemplateScenarioNone>(width, height);
    default:
      return nullptr;
  }
}

}  // namespace vrx::gps
