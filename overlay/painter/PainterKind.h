// What the program knows of a kind of painter: one row of a table that the painter manager, the ranges of
// overlays, the frame callback and the checks of a project all walk.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "drawing/TextRenderer.h"
#include "overlay/painter/KVSPainterPlugInBase.h"
#include "overlay/painter/TextResolution.h"

namespace vrx::overlay {

/// The clock whose time decides what a painter shows.
enum class PainterClock { None, Gps, Tennis, Caption };

/// How the frames that a painter draws on are found.
enum class PainterRange {
  None,      // it asks for no frames of its own
  Template,  // one range, from DrawStartTime to DrawEndTime
  Captions,  // one range a caption
};

/// What painters are made with; all of it must outlive them.
struct PainterTools {
  drawing::TextRenderer* textRenderer = nullptr;
  TextResolution textResolution = TextResolution::Frame;
};

struct PainterKind {
  std::int32_t type;
  const char16_t* documentKey;  // of its record in the painter document; null when no document has one
  const PainterInfoBase& (*record)(const PainterInfo& info);
  PainterClock clock;
  PainterRange range;
  std::unique_ptr<KVSPainterPlugInBase> (*make)(const PainterTools& tools);

  bool IsWanted(const PainterInfo& info) const { return record(info).valid; }
};

/// The rows in the order in which the records are applied.
using PainterKinds = std::span<const PainterKind>;

/// The record of a painter kind: RecordOf<&PainterInfo::captionInfo>.
template <auto member>
const PainterInfoBase& RecordOf(const PainterInfo& info) {
  return info.*member;
}

}  // namespace vrx::overlay
