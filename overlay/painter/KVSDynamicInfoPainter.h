// The painter manager: owns the painters and finds them by id, by kind and in drawing order.
#pragma once

#include <map>
#include <memory>

#include "overlay/painter/IKVSDynamicInfoPainter.h"

/// No lock: painters are made and configured before frames come.
class KVSDynamicInfoPainter final : public IKVSDynamicInfoPainter {
 public:
  KVSDynamicInfoPainter(vrx::overlay::PainterKinds kinds, const vrx::overlay::PainterTools& tools)
      : m_kinds(kinds), m_tools(tools) {}

  void SetPainterInfo(const PainterInfo* info) override;
  void SetClipDateTime(std::uint32_t first, std::uint32_t second, std::uint32_t third) override;
  void SetClipRange(double startTime, double endTime, std::int32_t videoId) override;
  void SetOutputSize(std::int32_t width, std::int32_t height) override;
  bool CreatePainter(std::int32_t& id, std::int32_t painterType, std::int32_t layer) override;
  KVSPainterPlugInBase* FindPainterByType(std::int32_t painterType) const override;
  KVSPainterPlugInBase* GetPainter(std::int32_t id) const override;
  bool EnablePainter(std::int32_t id, bool enable) override;
  void ClearPainters() override;
  bool DrawAll(std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs,
               PixmapHolder& holder) override;
  bool DrawAllForVideo(std::int32_t videoId, std::int64_t gpsMs, std::int64_t tennisMs,
                       std::int64_t captionMs, PixmapHolder& holder) override;
  bool DrawPainter(std::int32_t id, std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs,
                   PixmapHolder& holder) override;
  bool IsAnyDrawable() const override;
  void SetModeAll(std::uint32_t mode) override;
  bool GetVideoRect(std::size_t index, vrx::drawing::Rect& rect, bool scaled) const override;
  bool GetVideoLayoutFlag(bool& hasSizes) const override;
  void SetVideoLayout(std::int32_t layoutType, std::int32_t subVideoSize) override;
  void SetSubVideoSize(std::int32_t subVideoSize) override { m_subVideoSize = subVideoSize; }
  void Release() override { delete this; }
  bool GetContentStamps(const PainterTimes& times, std::vector<PainterStamp>& stamps) const override;
  XpRowRange GetDrawnRows() const override;

 private:
  struct Layered {
    std::int32_t id;
    KVSPainterPlugInBase* painter;
  };

  void Apply(const PainterInfo& info, const PainterInfoBase& record);

  vrx::overlay::PainterKinds m_kinds;
  vrx::overlay::PainterTools m_tools;
  std::vector<std::unique_ptr<KVSPainterPlugInBase>> m_painters;  // in order of creation
  std::map<std::int32_t, KVSPainterPlugInBase*> m_byId;
  std::multimap<std::int32_t, KVSPainterPlugInBase*> m_byType;
  std::multimap<std::int32_t, Layered> m_byLayer;  // equal layers in order of creation
  std::int32_t m_videoLayoutType = 0;
  std::int32_t m_subVideoSize = 0;
  std::int32_t m_outputWidth = 0;
  std::int32_t m_outputHeight = 0;
  std::int32_t m_nextId = 0;  // ids are never given twice
};
