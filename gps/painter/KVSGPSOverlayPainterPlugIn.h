// Shows the positions of a recording over the movie: speed meter or speed graph, date, times and distance,
// and the route with the present position.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "drawing/TextRenderer.h"
#include "foundation/sync/XpCriticalSection.h"
#include "gps/painter/GpsScene.h"
#include "gps/painter/GpsTextFields.h"
#include "gps/speedlog/KVSGPSSpeedLog.h"
#include "gps/templates/KorvoTemplate.h"
#include "gps/track/GpsTimeline.h"
#include "gps/trackview/KVSGPSTrack.h"
#include "overlay/painter/KVSPainterPlugInBase.h"
#include "overlay/painter/KeptLayer.h"

/// Configured on one thread and drawn on another, under a lock. Logs are read once and kept from one
/// configuration to the next.
class KVSGPSOverlayPainterPlugIn final : public KVSPainterPlugInBase {
 public:
  /// The renderer must outlive the painter.
  explicit KVSGPSOverlayPainterPlugIn(
      vrx::drawing::TextRenderer& textRenderer,
      vrx::overlay::TextResolution resolution = vrx::overlay::TextResolution::Frame);

  /// Reads the logs. False, and nothing changes, for a record of another kind.
  bool SetPainterInfo(const PainterInfo* info, const PainterInfoBase* record) override;
  /// On the time axis of the whole movie, of which renders make no use.
  bool Draw(std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs, PixmapHolder& holder) override;
  /// `gpsMs` counts from the start of the clip, or of its shown part.
  bool DrawForVideo(std::int32_t videoId, std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs,
                    PixmapHolder& holder) override;
  /// Three words have no room for what a clip needs; the one below has.
  void SetClipDateTime(std::uint32_t, std::uint32_t, std::uint32_t) override {}
  /// Takes effect with the next Prepare, like the range.
  void SetClipDateTime(const XpDateTime& date, std::uint32_t durationSeconds, std::int32_t videoId);
  void SetClipRange(double startTime, double endTime, std::int32_t videoId) override;
  bool IsDrawable() const override;
  void Configure(const PainterInfo* info, const PainterInfoBase* record) override;
  void SetOutputSize(std::int32_t width, std::int32_t height) override;
  void SetVideoLayout(std::int32_t layoutType, std::int32_t subVideoSize) override;
  /// The unit of distances and speeds. The meter and the number of the speed follow at once, everything else
  /// with the next Prepare.
  void SetMode(std::uint32_t mode) override;
  PainterStamp GetContentStamp(const PainterTimes& times) override;
  XpRowRange GetDrawnRows() const override { return m_drawnRows; }

  /// Makes everything that no frame changes: tracks, lines, speed records and texts.
  void Prepare();
  /// Logs are read again by the next Prepare.
  void ClearLogs();
  /// The look; 5 is one without instruments, and a type that is none leaves nothing to draw.
  void SetScenario(std::int32_t type);
  void SetResources(std::int32_t scenarioType, std::shared_ptr<TemplateResource> resources);
  /// A log says itself how far its clock is off.
  bool AnyLogHasHeaderMark() const;
  bool HasTimeline() const { return !m_timeline.points.empty(); }
  std::uint32_t GetMode() const { return static_cast<std::uint32_t>(m_timeline.unit); }

 private:
  /// A point of a track, and what the texts beside it need.
  struct Shown {
    const KVUGPSInfoList* list = nullptr;
    std::size_t second = 0;
    std::int64_t elapsedMs = 0;           // for the text
    double movieMs = 0.0;                 // for track and speed graph
    const LogDataEntry* entry = nullptr;  // whose length is shown; null: no texts
    const KVSGPSClipSummary* average = nullptr;
    const KVSGPSClipSummary* zone = nullptr;
  };

  bool IsReady() const { return m_template.scenario != nullptr && m_template.structure != nullptr; }
  LogDataEntry* FindClip(std::int32_t videoId);
  void BuildTrack();
  void FillSpeedLog();
  void SetUnitTexts();
  void ForgetDrawn();

  /// False: nothing is shown.
  bool FindInClip(std::int32_t videoId, std::int64_t ms, Shown& shown) const;
  bool FindInMovie(std::int64_t ms, Shown& shown) const;
  void ShowTexts(std::size_t clipIndex, std::int32_t videoId, Shown& shown) const;
  void MakeScene(const Shown& shown, vrx::gps::GpsScene& scene);
  const vrx::gps::GpsReadouts& ReadoutsFor(const Shown& shown);
  vrx::drawing::Rect TrackRect() const;
  void DrawScene(const vrx::gps::GpsScene& scene, XpPixmap32& target);
  vrx::gps::TrackLook MakeTrackLook() const;
  vrx::gps::SpeedLogLook MakeSpeedLogLook() const;

  vrx::drawing::TextRenderer& m_textRenderer;
  mutable XpCriticalSection m_lock;

  std::int32_t m_templateWidth = 1920;
  std::int32_t m_templateHeight = 1080;
  std::int32_t m_videoWidth = 1920;
  std::int32_t m_videoHeight = 1080;
  bool m_saveMovieMode = false;
  bool m_linkGpsLog = false;
  std::int32_t m_scenarioType = 0;
  std::int32_t m_videoLayoutType = 0;
  vrx::overlay::TextTable m_strings;
  XpString m_fontName;
  std::map<std::int32_t, std::shared_ptr<TemplateResource>> m_resources;  // by scenario
  KorvoTemplate m_template;

  std::vector<LogDataEntry> m_clips;
  vrx::gps::GpsTimeline m_timeline;
  LogDataEntry m_wholeClip;  // stands for the whole movie
  KVSGPSTrack m_track;
  KVSGPSSpeedLog m_speedLog;
  vrx::gps::GpsLabels m_labels;
  vrx::gps::GpsUnitTexts m_unitTexts;

  vrx::overlay::PictureRenditions m_renditions;
  vrx::overlay::KeptLayer m_base;  // symbol, face and needle
  bool m_baseHasFix = false;
  PainterPicture m_baseNeedle;
  XpRowRange m_drawnRows;

  vrx::gps::GpsReadouts m_readouts;  // of m_readoutsOf
  Shown m_readoutsOf;
  vrx::gps::GpsScene m_scene;    // of the frame that is drawn
  vrx::gps::GpsScene m_stamped;  // of the last stamp, whose number is m_sceneNumber
  std::uint64_t m_sceneNumber = 0;
  bool m_isStamped = false;
  std::uint64_t m_generation = 0;
};
