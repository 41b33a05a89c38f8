#include "gps/speedlog/KVSGPSSpeedLog.h"

#include "gps/speedlog/SpeedLogSettings.h"
#include "imaging/pixmap/XpPixmapOverlay.h"

using namespace vrx::gps;
using vrx::drawing::Rect;
using vrx::drawing::Saturated;

namespace {

/// A time that was added up to a clip's end may fall short of it by a rounding error.
constexpr double kSeamMs = 0.0001;

}  // namespace

void KVSGPSSpeedLog::ResetSpeedLog() {
  const XpSingleLock lock(&m_lock);
  m_wholeRecord = {};
  m_clipRecords.clear();
}

void KVSGPSSpeedLog::SetSpeedLogSize(std::int32_t width, std::int32_t height) {
  const XpSingleLock lock(&m_lock);
  m_size = {width, height};
}

void KVSGPSSpeedLog::SetLinked(bool isLinked) {
  const XpSingleLock lock(&m_lock);
  m_isLinked = isLinked;
}

void KVSGPSSpeedLog::SetTextResolution(vrx::overlay::TextResolution resolution) {
  const XpSingleLock lock(&m_lock);
  m_textResolution = resolution;
}

void KVSGPSSpeedLog::SetFontName(const XpString& fontName) {
  const XpSingleLock lock(&m_lock);
  m_fontName = fontName;
}

void KVSGPSSpeedLog::AddSpeedLogClip(const KVUGPSInfoList& list, std::int32_t videoId, double& accumulatedMs,
                                     double startMs, double endMs) {
  const XpSingleLock lock(&m_lock);
  SpeedLogRecord& record = m_clipRecords[videoId];
  FillSpeedSamples(list, record);
  LayoutSpeedRecord(m_size, GetViewAreaTime(), false, startMs, endMs, accumulatedMs, record);
}

void KVSGPSSpeedLog::SetWholeRecord(const KVUGPSInfoList& timeline) {
  const XpSingleLock lock(&m_lock);
  double accumulatedMs = 0.0;
  FillSpeedSamples(timeline, m_wholeRecord);
  LayoutSpeedRecord(m_size, GetViewAreaTime(), true, 0.0, 0.0, accumulatedMs, m_wholeRecord);
}

const SpeedLogRecord* KVSGPSSpeedLog::FindSpeedRecord(double& timeMs) const {
  const XpSingleLock lock(&m_lock);
  if (m_isLinked) return &m_wholeRecord;
  if (m_clipRecords.empty()) return nullptr;
  timeMs += kSeamMs;
  const SpeedLogRecord* found = nullptr;
  for (const auto& [videoId, record] : m_clipRecords) {
    if (record.startMs <= timeMs && timeMs <= record.endMs) {
      found = &record;
      break;
    }
    if (found == nullptr || record.startMs >= found->startMs) found = &record;
  }
  timeMs -= found->startMs;
  return found;
}

bool KVSGPSSpeedLog::MakeScene(const Rect& rect, double timeMs, SpeedLogScene& scene) const {
  const XpSingleLock lock(&m_lock);
  const SpeedLogRecord* record = FindSpeedRecord(timeMs);
  return record != nullptr && MakeSpeedLogScene(*record, m_size, GetViewAreaPosition(), rect, timeMs, scene);
}

void KVSGPSSpeedLog::Draw(const SpeedLogScene& scene, const SpeedLogLook& look, const Rect& rect,
                          vrx::overlay::PainterSurface& surface) {
  const XpSingleLock lock(&m_lock);
  const bool isStretched = scene.canvas.width != rect.Width() || scene.canvas.height != rect.Height();
  const bool hasSharpLabels = isStretched && m_textResolution == vrx::overlay::TextResolution::Frame;
  const XpPixmap32* canvas = m_canvas.Paint(scene, look, m_fontName, !hasSharpLabels, surface);
  if (canvas == nullptr) return;
  OverlaySmoothPixmap(surface.GetTarget(), rect.left, rect.top, Saturated(rect.Width()),
                      Saturated(rect.Height()), *canvas, canvas->width, canvas->height);
  surface.Touch(rect);
  if (hasSharpLabels)
    m_sharpLabels.Show(scene, m_fontName, look.labelColor, m_canvas.GetFade(), rect, surface);
}
