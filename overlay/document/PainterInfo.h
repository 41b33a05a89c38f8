// Everything that a painter document says about a movie's overlays, as plain records. The document's reader
// fills it, the manager adopts it, every painter is configured from it.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "foundation/time/XpDateTime.h"
#include "overlay/document/ContentImageEntry.h"
#include "overlay/document/LogDataEntry.h"
#include "overlay/document/TextTable.h"
#include "vrx/XpString.h"

/// Kinds of painter; a record of another kind belongs to none.
enum : std::int32_t {
  KVSPainterNone = -1,
  KVSPainterContentImage = 0,
  KVSPainterGPSOverlay = 1,
  KVSPainterTennisMeta = 2,
  KVSPainterCaption = 3,
};

struct TemplateResource;
struct TennisMetaResource;

struct PainterInfoBase {
  PainterInfoBase(std::int32_t type, std::int32_t drawingLayer) : painterType(type), layer(drawingLayer) {}
  PainterInfoBase(const PainterInfoBase&) = default;
  PainterInfoBase& operator=(const PainterInfoBase&) = default;
  virtual ~PainterInfoBase() = default;

  std::int32_t painterType;
  std::int32_t layer;  // lower layers are drawn first
  bool valid = false;  // the overlay is wanted
};

struct TemplateInfo : PainterInfoBase {
  TemplateInfo() : PainterInfoBase(KVSPainterGPSOverlay, 1) {}
  static constexpr std::int32_t kNoScenario = 0;
  static constexpr std::int32_t kScenarioOff = 5;

  std::int32_t scenarioType = kScenarioOff;
  std::int32_t width = 0;   // of the movie, pixels
  std::int32_t height = 0;  // of the movie, pixels
  bool linkGpsLog = false;
  bool drawTrimmedOutArea = true;  // the track keeps counting through trimmed parts
  double drawStartTime = 0.0;      // s in the movie
  double drawEndTime = 0.0;        // s in the movie
  std::vector<LogDataEntry> logData;
  std::shared_ptr<TemplateResource> resources;  // may be null
};

struct TennisMetaInfo : PainterInfoBase {
  TennisMetaInfo() : PainterInfoBase(KVSPainterTennisMeta, 2) {}

  XpString metaData;
  std::int32_t layoutType = 3;
  std::shared_ptr<TennisMetaResource> resources;  // may be null
  XpDateTime originalDateTime;
  double duration = 0.0;     // s
  double trimedShift = 0.0;  // s cut from the clip's start
};

struct CaptionInfo : PainterInfoBase {
  CaptionInfo() : PainterInfoBase(KVSPainterCaption, 3) {}

  XpString captionString;
  std::int32_t layoutKind = 0;
  bool keepShape = false;  // letters keep their shape in a movie that is not 16 by 9
};

/// Not part of the document; hosts that work with painters directly fill it.
struct ContentImageInfo : PainterInfoBase {
  ContentImageInfo() : PainterInfoBase(KVSPainterNone, -1) {}

  ContentImageList images;        // 24-bit pictures
  bool useOverlayImages = false;  // laid on like all overlays, instead of copied
};

struct PainterInfo {
  std::int32_t videoLayoutType = 0;
  std::int32_t subVideoSize = 0;
  XpString slowInfoData;
  std::int64_t extendStartPos = 0;
  float extendSpeed = 1.0f;
  std::int32_t videoWidth = 0;   // pixels
  std::int32_t videoHeight = 0;  // pixels
  double startTimeMarginByAudio = 0.0;
  vrx::overlay::TextTable stringTable;  // texts of the painters in the user's language
  bool saveMovieMode = false;           // captions show whatever clip is current
  std::int32_t gpsUnitFromUser = -1;
  TemplateInfo templateInfo;
  TennisMetaInfo tennisMetaInfo;
  CaptionInfo captionInfo;
  ContentImageInfo contentImageInfo;
};

/// Takes what a render needs from the document's record into the manager's: the first 25 texts, and an
/// overlay without anything to show is marked as not valid.
void AdoptPainterInfo(const PainterInfo& document, PainterInfo& record);
