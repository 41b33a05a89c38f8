// Where the panels of the GPS overlay lie, whatever its look: along the lower edge, or in the sides where two
// videos are stacked. The painter makes the one of the video layout.
#pragma once

#include <cstdint>
#include <memory>

#include "drawing/Geometry.h"

namespace vrx::gps {

/// Everything that one structure states, in pixels of a frame of 1920 by 1080.
struct TemplateStructureValues {
  drawing::Rect topRect;      // at the head of the frame
  drawing::Rect baseRect;     // face of the meter or speed log
  drawing::Rect mapRect;      // the track
  drawing::Rect elapsedRect;  // elapsed time
  drawing::Rect totalRect;    // total time
  drawing::Rect clockRect;    // time of day
  drawing::Rect averageRect;  // average speed
  drawing::Rect distanceRect;
  drawing::Rect dateRect;
  bool isTopBottom;
};

}  // namespace vrx::gps

class KorvoTemplateStructure {
 public:
  using Rect = vrx::drawing::Rect;

  KorvoTemplateStructure(const KorvoTemplateStructure&) = delete;
  KorvoTemplateStructure& operator=(const KorvoTemplateStructure&) = delete;
  virtual ~KorvoTemplateStructure() = default;

  /// Pixels of the output.
  void SetSize(std::int32_t width, std::int32_t height);
  std::int32_t GetFrameWidth() const { return m_frameWidth; }
  std::int32_t GetFrameHeight() const { return m_frameHeight; }
  std::int32_t GetVideoWidth() const { return m_videoWidth; }
  std::int32_t GetVideoHeight() const { return m_videoHeight; }
  bool IsTopBottom() const { return m_values.isTopBottom; }

  /// Output pixels of a length in a frame of 1920 by 1080, truncated.
  std::int32_t ScaleX(std::int64_t length) const;
  std::int32_t ScaleY(std::int64_t length) const;

  /// Output pixels.
  Rect GetTopRect() const { return ScaleRect(m_values.topRect); }
  Rect GetBaseRect() const { return ScaleRect(m_values.baseRect); }
  Rect GetMapRect() const { return ScaleRect(m_values.mapRect); }
  Rect GetElapsedRect() const { return ScaleRect(m_values.elapsedRect); }
  Rect GetTotalRect() const { return ScaleRect(m_values.totalRect); }
  Rect GetClockRect() const { return ScaleRect(m_values.clockRect); }
  Rect GetAverageRect() const { return ScaleRect(m_values.averageRect); }
  Rect GetDistanceRect() const { return ScaleRect(m_values.distanceRect); }
  Rect GetDateRect() const { return ScaleRect(m_values.dateRect); }

  /// Moves the edges to the right and down for good, by output pixels; amounts that are not above 0 change
  /// nothing, and neither does any amount while the output has no size.
  void GrowClockRect(std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom);
  void GrowDateRect(std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom);

 protected:
  KorvoTemplateStructure(const vrx::gps::TemplateStructureValues& values, std::int32_t width,
                         std::int32_t height, std::int32_t videoWidth, std::int32_t videoHeight);

 private:
  Rect ScaleRect(const Rect& rect) const;
  void Grow(Rect& rect, std::int32_t left, std::int32_t right, std::int32_t top, std::int32_t bottom) const;

  vrx::gps::TemplateStructureValues m_values;
  std::int32_t m_frameWidth;
  std::int32_t m_frameHeight;
  std::int32_t m_videoWidth;
  std::int32_t m_videoHeight;
};

class KorvoTemplateStructureNormal final : public KorvoTemplateStructure {
 public:
  KorvoTemplateStructureNormal(std::int32_t width, std::int32_t height, std::int32_t videoWidth,
                               std::int32_t videoHeight);
};

/// For two videos one over the other.
class KorvoTemplateStructureTB final : public KorvoTemplateStructure {
 public:
  KorvoTemplateStructureTB(std::int32_t width, std::int32_t height, std::int32_t videoWidth,
                           std::int32_t videoHeight);
};

namespace vrx::gps {

/// Null for a type that is not one of the video layouts.
std::unique_ptr<KorvoTemplateStructure> MakeTemplateStructure(std::int32_t layoutType, std::int32_t width,
                                                              std::int32_t height, std::int32_t videoWidth,
                                                              std::int32_t videoHeight);

}  // namespace vrx::gps
