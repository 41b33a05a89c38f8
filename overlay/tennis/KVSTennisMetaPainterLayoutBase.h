// Tells the tennis painter where things go and how they look: rectangles, fonts, colours, pictures and the
// zones of the racket. Values are those of a frame of 1920 by 1080 and are handed out for the output's size.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <numbers>

#include "drawing/Color.h"
#include "drawing/Geometry.h"
#include "drawing/TextRenderer.h"
#include "overlay/resources/PainterResources.h"
#include "overlay/tennis/TennisZones.h"

namespace vrx::overlay {

inline constexpr double kSineOf45Degrees = std::numbers::sqrt2 / 2;  // and its cosine
inline constexpr double kEighthTurn = std::numbers::pi / 4;

/// Everything that one layout states, in pixels of a frame of 1920 by 1080.
struct TennisLayoutValues {
  std::int32_t kind;
  bool hasTimeLine;  // and the stroke's name
  bool hasSeparator;
  std::int32_t unitMargin;
  std::int32_t rollHeight;  // of one step of a rolling counter
  drawing::Rect panelRect;
  drawing::Rect swingPanelRect;
  drawing::Rect nameRect;
  drawing::Rect countRect;
  drawing::Rect secondSpeedRect;
  drawing::Rect thirdSpeedRect;
  drawing::Rect swingRect;
  drawing::Rect dateRect;
  drawing::Rect labelRect;
  std::array<std::int32_t, 6> fontHeights;  // negative em sizes: name, small name, label, digit, unit, sign
  drawing::ColorRef valueColor;
  drawing::ColorRef nameColor;
  drawing::ColorRef dateColor;
  ZoneGrid grid;
  ZoneTurn foreTurn;
  ZoneTurn backTurn;
};

}  // namespace vrx::overlay

class KVSTennisMetaPainterLayoutBase {
 public:
  using Rect = vrx::drawing::Rect;
  using Font = vrx::drawing::Font;

  KVSTennisMetaPainterLayoutBase(const KVSTennisMetaPainterLayoutBase&) = delete;
  KVSTennisMetaPainterLayoutBase& operator=(const KVSTennisMetaPainterLayoutBase&) = delete;
  virtual ~KVSTennisMetaPainterLayoutBase() = default;

  std::int32_t GetKind() const { return m_values.kind; }
  /// Pixels of the output.
  void SetOutputSize(std::int32_t width, std::int32_t height);

  /// Pictures are empty without resources, and frames outside of their set.
  PainterPicture GetShade() const { return m_resources ? m_resources->shade : PainterPicture(); }
  PainterPicture GetBlue() const { return m_resources ? m_resources->blue : PainterPicture(); }
  PainterPicture GetYellow() const { return m_resources ? m_resources->yellow : PainterPicture(); }
  std::int32_t GetFrameCount(vrx::overlay::FrameSet set) const;
  std::int32_t GetRacketFrameCount() const { return GetFrameCount(vrx::overlay::FrameSet::Racket); }
  PainterPicture GetFrame(vrx::overlay::FrameSet set, std::int32_t index) const;

  /// Output pixels.
  Rect GetPanelRect() const { return Scaled(m_values.panelRect); }
  Rect GetSwingPanelRect() const { return Scaled(m_values.swingPanelRect); }
  Rect GetNameRect() const { return Scaled(m_values.nameRect); }
  Rect GetCountRect() const { return Scaled(m_values.countRect); }
  Rect GetSecondSpeedRect() const { return Scaled(m_values.secondSpeedRect); }
  Rect GetThirdSpeedRect() const { return Scaled(m_values.thirdSpeedRect); }
  Rect GetSwingRect() const { return Scaled(m_values.swingRect); }
  Rect GetLabelRect() const { return Scaled(m_values.labelRect); }
  Rect GetDateRect() const { return Scaled(m_values.dateRect); }
  Rect GetDateLeftRect() const;
  Rect GetDateRightRect() const;
  Rect GetTimeLineRect() const;
  /// Around the place on the time line of something `time` ahead, where `total` is the whole line. `half` is
  /// half the marker's side, 1920 by 1080 pixels. Empty for a `total` of 0.
  Rect GetTimeMarkerRect(std::int64_t time, std::int64_t total, std::int32_t half) const;
  /// Relative to the swing box; a zero rectangle for a zone that is not there.
  Rect GetZoneRect(vrx::overlay::FrameSet set, std::int32_t zone) const;

  /// Truncating.
  std::int32_t ScaleX(std::int64_t value) const;
  std::int32_t ScaleY(std::int64_t value) const;

  const Font& GetNameFont() const { return m_fonts[0]; }
  const Font& GetSmallNameFont() const { return m_fonts[1]; }
  const Font& GetLabelFont() const { return m_fonts[2]; }
  const Font& GetDigitFont() const { return m_fonts[3]; }
  const Font& GetUnitFont() const { return m_fonts[4]; }
  const Font& GetSignFont() const { return m_fonts[5]; }
  bool HasTimeLine() const { return m_values.hasTimeLine; }
  bool HasSeparator() const { return m_values.hasSeparator; }
  vrx::drawing::ColorRef GetValueColor() const { return m_values.valueColor; }
  vrx::drawing::ColorRef GetNameColor() const { return m_values.nameColor; }
  vrx::drawing::ColorRef GetDateColor() const { return m_values.dateColor; }
  std::int32_t GetUnitMargin() const { return ScaleY(m_values.unitMargin); }
  /// Not scaled.
  std::int32_t GetRollHeight() const { return m_values.rollHeight; }

 protected:
  KVSTennisMetaPainterLayoutBase(const vrx::overlay::TennisLayoutValues& values,
                                 std::shared_ptr<const TennisMetaResource> resources, std::int32_t width,
                                 std::int32_t height, const XpString& fontName);

 private:
  Rect Scaled(const Rect& rect) const;
  void CreateFonts();

  const vrx::overlay::TennisLayoutValues& m_values;
  std::shared_ptr<const TennisMetaResource> m_resources;
  std::int32_t m_width;
  std::int32_t m_height;
  XpString m_fontName;
  std::array<Font, 6> m_fonts;
  std::array<vrx::overlay::ImpactZones, 3> m_zones;  // by FrameSet
};

/// Null for a type without a layout.
std::unique_ptr<KVSTennisMetaPainterLayoutBase> MakeTennisLayout(
    std::int32_t layoutType, std::shared_ptr<const TennisMetaResource> resources, std::int32_t width,
    std::int32_t height, const XpString& fontName);
