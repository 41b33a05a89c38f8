// The pictures that the overlays of positions and of tennis matches are put together from. Each set is loaded
// once, before the render; its painter shares the pictures and never changes them.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "foundation/memory/XpSharedPtr.h"
#include "imaging/pixmap/XpPixmap.h"

/// An XpPixmap32 with straight alpha or an opaque XpPixmap24; empty until it is loaded. A file that cannot be
/// read leaves a transparent picture of one pixel.
using PainterPicture = XpSharedPtr<XpPixmapBase>;

struct PainterResourceBase {
  explicit PainterResourceBase(std::int32_t type = -1) : resourceType(type) {}
  virtual ~PainterResourceBase() = default;

  std::int32_t resourceType;
  std::map<const XpPixmapBase*, PainterPicture> doubled;  // of twice the size, where there are any
};

/// Of the GPS overlay, for one scenario.
struct TemplateResource : PainterResourceBase {
  TemplateResource() : PainterResourceBase(1) {}

  PainterPicture meterBase;          // face of the meter, or of the speed log
  PainterPicture meterBaseVertical;  // the same where two videos are stacked
  PainterPicture gpsIcon;
  PainterPicture gpsNoPositionIcon;
  PainterPicture startMarker;
  PainterPicture goalMarker;
  PainterPicture startText;
  PainterPicture goalText;
  PainterPicture positionMarker;
  PainterPicture speedLogScale1;  // of the speed log alone
  PainterPicture speedLogScale2;
  std::vector<PainterPicture> meterFrames;  // the needle, from rest to its end
};

struct TennisMetaResource : PainterResourceBase {
  TennisMetaResource() : PainterResourceBase(2) {}

  std::vector<PainterPicture> racketFrames;  // 8 of smash and serve
  std::vector<PainterPicture> backFrames;    // 8 of the backhand
  std::vector<PainterPicture> foreFrames;    // 8 of the forehand
  PainterPicture forehandSpinFlat;           // pictograms of the strokes
  PainterPicture forehandSlice;
  PainterPicture forehandVolley;
  PainterPicture backhandSpinFlat;
  PainterPicture backhandSlice;
  PainterPicture backhandVolley;
  PainterPicture smash;
  PainterPicture serve;
  PainterPicture timeLine;
  PainterPicture timeTop;
  PainterPicture tag;     // loaded with the others; nothing draws it
  PainterPicture shade;   // one dark, translucent pixel, stretched behind the texts
  PainterPicture yellow;  // the mark of the impact: this one above
  PainterPicture blue;    // and this one below
};
