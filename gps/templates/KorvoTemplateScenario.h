// Looks of the GPS overlay: its instruments with their pictures, where the speed stands, fonts and colours.
// The painter makes the one that the document names; KorvoTemplateStructure says where the rest lies.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <utility>

#include "drawing/TextRenderer.h"
#include "gps/templates/TemplateScenarioValues.h"
#include "overlay/resources/PainterResources.h"

class KorvoTemplateScenario {
 public:
  using Rect = vrx::drawing::Rect;
  using Font = vrx::drawing::Font;
  using ColorRef = vrx::drawing::ColorRef;

  KorvoTemplateScenario(const KorvoTemplateScenario&) = delete;
  KorvoTemplateScenario& operator=(const KorvoTemplateScenario&) = delete;
  virtual ~KorvoTemplateScenario() = default;

  std::int32_t GetType() const { return m_values.type; }
  /// Pixels of the output.
  void SetSize(std::int32_t width, std::int32_t height);
  void SetResource(std::shared_ptr<const TemplateResource> resource) { m_resource = std::move(resource); }

  /// Pictures are empty without a resource.
  PainterPicture GetMeterBase() const { return Picture(&TemplateResource::meterBase); }
  PainterPicture GetMeterBaseVertical() const { return Picture(&TemplateResource::meterBaseVertical); }
  PainterPicture GetGpsIcon() const { return Picture(&TemplateResource::gpsIcon); }
  PainterPicture GetGpsNoPositionIcon() const { return Picture(&TemplateResource::gpsNoPositionIcon); }
  PainterPicture GetStartMarker() const { return Picture(&TemplateResource::startMarker); }
  PainterPicture GetGoalMarker() const { return Picture(&TemplateResource::goalMarker); }
  PainterPicture GetStartText() const { return Picture(&TemplateResource::startText); }
  PainterPicture GetGoalText() const { return Picture(&TemplateResource::goalText); }
  PainterPicture GetPositionMarker() const { return Picture(&TemplateResource::positionMarker); }
  PainterPicture GetSpeedLogScale1() const { return Picture(&TemplateResource::speedLogScale1); }
  PainterPicture GetSpeedLogScale2() const { return Picture(&TemplateResource::speedLogScale2); }
  /// The needle at `speed` where `scale`, in the same unit, is the fastest one. At rest for a scale or a
  /// speed that is not above 0.
  PainterPicture GetMeterFrame(double speed, double scale) const;

  /// Output pixels.
  Rect GetSpeedLabelRect() const { return ScaleRect(m_values.speedLabelRect); }
  Rect GetSpeedValueRect() const { return ScaleRect(m_values.speedValueRect); }
  Rect GetSpeedUnitRect() const { return ScaleRect(m_values.speedUnitRect); }
  Rect GetMeterRect() const { return ScaleRect(m_values.meterRect); }
  /// Output pixels when `scaled`, otherwise those of 1920 by 1080.
  Rect GetSpeedLogRect(bool scaled) const;

  bool ShowsDateLabels() const { return false; }
  bool HasSpeedLog() const { return m_values.hasSpeedLog; }
  bool HasMeter() const { return m_values.hasMeter; }
  bool HasTextShadow() const { return m_values.hasTextShadow; }

  /// Output pixels, at least 1.
  std::int32_t GetAheadLineWidth() const { return LineWidth(m_values.aheadLineWidth); }
  std::int32_t GetWalkedLineWidth() const { return LineWidth(m_values.walkedLineWidth); }
  std::int32_t GetShadowLineWidth() const { return LineWidth(m_values.shadowLineWidth); }

  const Font& GetTitleFont() const { return m_fonts[0]; }
  const Font& GetTrackFont() const { return m_fonts[1]; }
  const Font& GetRowLabelFont() const { return m_fonts[2]; }
  const Font& GetRowValueFont() const { return m_fonts[3]; }
  const Font& GetSpeedLabelFont() const { return m_fonts[4]; }
  const Font& GetSpeedValueFont() const { return m_fonts[5]; }
  const Font& GetSpeedUnitFont() const { return m_fonts[6]; }

  /// Of the lines 0 to 6 of the track; 0 outside.
  ColorRef GetWalkedColor(std::int32_t index) const { return LineColor(index, m_values.walkedColor); }
  ColorRef GetAheadColor(std::int32_t index) const { return LineColor(index, m_values.aheadColor); }
  ColorRef GetBaseColor() const { return m_values.baseColor; }
  ColorRef GetTitleColor() const { return m_values.titleColor; }
  ColorRef GetTrackColor() const { return m_values.trackColor; }
  ColorRef GetRowLabelColor() const { return m_values.rowLabelColor; }
  ColorRef GetRowValueColor() const { return m_values.rowValueColor; }
  ColorRef GetSpeedLabelColor() const { return m_values.speedLabelColor; }
  ColorRef GetSpeedValueColor() const { return m_values.speedValueColor; }
  ColorRef GetShadowColor() const { return m_values.shadowColor; }

 protected:
  KorvoTemplateScenario(const vrx::gps::TemplateScenarioValues& values, std::int32_t width,
                        std::int32_t height, const XpString& fontName);

 private:
  PainterPicture Picture(PainterPicture TemplateResource::*field) const;
  Rect ScaleRect(const Rect& rect) const;
  std::int32_t LineWidth(std::int32_t width) const;
  static ColorRef LineColor(std::int32_t index, ColorRef color);
  void CreateFonts();

  const vrx::gps::TemplateScenarioValues& m_values;
  std::shared_ptr<const TemplateResource> m_resource;
  std::int32_t m_width;
  std::int32_t m_height;
  XpString m_fontName;
  std::array<Font, 7> m_fonts;
};

class KorvoTemplateScenarioDriveSmall final : public KorvoTemplateScenario {
 public:
  KorvoTemplateScenarioDriveSmall(std::int32_t width, std::int32_t height, const XpString& fontName);
};

class KorvoTemplateScenarioSportsSmall final : public KorvoTemplateScenario {
 public:
  KorvoTemplateScenarioSportsSmall(std::int32_t width, std::int32_t height, const XpString& fontName);
};

class KorvoTemplateScenarioWalkSmall final : public KorvoTemplateScenario {
 public:
  KorvoTemplateScenarioWalkSmall(std::int32_t width, std::int32_t height, const XpString& fontName);
};

/// With the speed graph in place of a needle.
class KorvoTemplateScenarioSpeedSmall final : public KorvoTemplateScenario {
 public:
  KorvoTemplateScenarioSpeedSmall(std::int32_t width, std::int32_t height, const XpString& fontName);
};

/// Without instruments.
class KorvoTemplateScenarioNone final : public KorvoTemplateScenario {
 public:
  KorvoTemplateScenarioNone(std::int32_t width, std::int32_t height);
};

namespace vrx::gps {

/// Null for a type that is not one of the scenarios.
std::unique_ptr<KorvoTemplateScenario> MakeTemplateScenario(std::int32_t type, std::int32_t width,
                                                            std::int32_t height, const XpString& fontName);

}  // namespace vrx::gps
