// The speed graph of the GPS overlay: a strip with the speeds of a clip, or of the whole movie, that scrolls
// under a fixed cursor. The painter fills it before the first frame and lays it over each.
#pragma once

#include <cstdint>
#include <map>

#include "drawing/Geometry.h"
#include "foundation/sync/XpCriticalSection.h"
#include "gps/log/KVUGPSInfo.h"
#include "gps/speedlog/SpeedLogCanvas.h"
#include "gps/speedlog/SpeedLogRecord.h"
#include "gps/speedlog/SpeedLogScene.h"
#include "overlay/painter/PainterSurface.h"
#include "overlay/painter/TextResolution.h"
#include "vrx/XpString.h"

/// Filled on one thread and drawn on another.
class KVSGPSSpeedLog {
 public:
  using SpeedLogScene = vrx::gps::SpeedLogScene;
  using SpeedLogLook = vrx::gps::SpeedLogLook;
  using SpeedLogRecord = vrx::gps::SpeedLogRecord;

  /// Forgets all records.
  void ResetSpeedLog();
  /// Pixels of a 1920 by 1080 frame; before the records are filled.
  void SetSpeedLogSize(std::int32_t width, std::int32_t height);
  /// The whole movie is shown, in place of its clips.
  void SetLinked(bool isLinked);
  /// Of the labels, where the graph's canvas has another size than its place on the frame.
  void SetTextResolution(vrx::overlay::TextResolution resolution);
  /// Of the labels.
  void SetFontName(const XpString& fontName);

  /// The clips in the movie's order. `accumulatedMs` is where the clip begins, and ends up where it ends.
  void AddSpeedLogClip(const KVUGPSInfoList& list, std::int32_t videoId, double& accumulatedMs,
                       double startMs, double endMs);
  void SetWholeRecord(const KVUGPSInfoList& timeline);

  /// The record that is shown at a time in the movie, which becomes a time on the record's own clock. Null
  /// when there is none; otherwise valid until the records are filled again.
  const SpeedLogRecord* FindSpeedRecord(double& timeMs) const;

  /// Fills `scene` with what is seen at a time in the movie in `rect`, in pixels of the frame. False: nothing
  /// to draw.
  bool MakeScene(const vrx::drawing::Rect& rect, double timeMs, SpeedLogScene& scene) const;
  /// Lays the scene over the frame. Without memory it is left out.
  void Draw(const SpeedLogScene& scene, const SpeedLogLook& look, const vrx::drawing::Rect& rect,
            vrx::overlay::PainterSurface& surface);

 private:
  mutable XpCriticalSection m_lock;
  bool m_isLinked = false;
  vrx::drawing::Size m_size;
  XpString m_fontName;
  SpeedLogRecord m_wholeRecord;
  std::map<std::int32_t, SpeedLogRecord> m_clipRecords;  // by video
  vrx::overlay::TextResolution m_textResolution = vrx::overlay::TextResolution::Frame;
  vrx::gps::SpeedLogCanvas m_canvas;
  vrx::gps::SharpSpeedLogLabels m_sharpLabels;
};
