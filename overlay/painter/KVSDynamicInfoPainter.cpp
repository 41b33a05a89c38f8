#include "overlay/painter/KVSDynamicInfoPainter.h"

#include <algorithm>
#include <new>

#include "overlay/painter/VideoLayouts.h"

namespace {

constexpr std::int64_t kLayoutWidth = 1920;
constexpr std::int64_t kLayoutHeight = 1080;

std::int32_t Scaled(std::int32_t position, std::int32_t output, std::int64_t layout) {
  return vrx::drawing::Saturated(std::int64_t{position} * output / layout);
}

}  // namespace

bool CreateDynamicInfoPainter(IKVSDynamicInfoPainter** out, vrx::overlay::PainterKinds kinds,
                              const vrx::overlay::PainterTools& tools) {
  auto* made = new (std::nothrow) KVSDynamicInfoPainter(kinds, tools);
  if (made == nullptr) return false;
  *out = made;
  return true;
}

void KVSDynamicInfoPainter::SetPainterInfo(const PainterInfo* info) {
  if (info == nullptr) return;
  for (const vrx::overlay::PainterKind& kind : m_kinds) {
    if (kind.IsWanted(*info)) Apply(*info, kind.record(*info));
  }
}

void KVSDynamicInfoPainter::Apply(const PainterInfo& info, const PainterInfoBase& record) {
  const auto [first, last] = m_byType.equal_range(record.painterType);
  if (first != last) {
    for (auto it = first; it != last; ++it) it->second->SetPainterInfo(&info, &record);
    return;
  }
  std::int32_t id = 0;
  if (!CreatePainter(id, record.painterType, record.layer)) return;
  GetPainter(id)->SetPainterInfo(&info, &record);
  EnablePainter(id, true);
}

bool KVSDynamicInfoPainter::CreatePainter(std::int32_t& id, std::int32_t painterType, std::int32_t layer) {
  const auto kind =
      std::find_if(m_kinds.begin(), m_kinds.end(), [=](const auto& row) { return row.type == painterType; });
  auto painter = kind != m_kinds.end() && kind->make != nullptr ? kind->make(m_tools) : nullptr;
  if (!painter) return false;
  id = m_nextId++;
  m_byId.emplace(id, painter.get());
  m_byType.emplace(painterType, painter.get());
  m_byLayer.emplace(layer, Layered{id, painter.get()});
  m_painters.push_back(std::move(painter));
  return true;
}

KVSPainterPlugInBase* KVSDynamicInfoPainter::FindPainterByType(std::int32_t painterType) const {
  for (const auto& [id, painter] : m_byId) {
    if (painter->painterType == painterType) return painter;
  }
  return nullptr;
}

KVSPainterPlugInBase* KVSDynamicInfoPainter::GetPainter(std::int32_t id) const {
  const auto found = m_byId.find(id);
  return found == m_byId.end() ? nullptr : found->second;
}

bool KVSDynamicInfoPainter::EnablePainter(std::int32_t id, bool enable) {
  KVSPainterPlugInBase* painter = GetPainter(id);
  if (painter != nullptr) painter->enabled = enable;
  return painter != nullptr;
}

void KVSDynamicInfoPainter::ClearPainters() {
  m_byId.clear();
  m_byType.clear();
  m_byLayer.clear();
  m_painters.clear();
}

bool KVSDynamicInfoPainter::DrawAll(std::int64_t gpsMs, std::int64_t tennisMs, std::int64_t captionMs,
                                    PixmapHolder& holder) {
  if (!holder) return false;
  for (const auto& [layer, entry] : m_byLayer) {
    if (entry.painter->enabled) entry.painter->Draw(gpsMs, tennisMs, captionMs, holder);
  }
  return true;
}

bool KVSDynamicInfoPainter::DrawAllForVideo(std::int32_t videoId, std::int64_t gpsMs, std::int64_t tennisMs,
                                            std::int64_t captionMs, PixmapHolder& holder) {
  if (!holder) return false;
  for (const auto& [layer, entry] : m_byLayer) {
    if (entry.painter->enabled) entry.painter->DrawForVideo(videoId, gpsMs, tennisMs, captionMs, holder);
  }
  return true;
}

bool KVSDynamicInfoPainter::DrawPainter(std::int32_t id, std::int64_t gpsMs, std::int64_t tennisMs,
                                        std::int64_t captionMs, PixmapHolder& holder) {
  KVSPainterPlugInBase* painter = GetPainter(id);
  return painter != nullptr && holder && painter->Draw(gpsMs, tennisMs, captionMs, holder);
}

bool KVSDynamicInfoPainter::GetContentStamps(const PainterTimes& times,
                                             std::vector<PainterStamp>& stamps) const {
  bool allKnown = true;
  for (const auto& [layer, entry] : m_byLayer) {
    if (!entry.painter->enabled) continue;
    PainterStamp stamp = entry.painter->GetContentStamp(times);
    stamp.painter = static_cast<std::uint64_t>(entry.id);
    allKnown = allKnown && stamp.isKnown;
    stamps.push_back(stamp);
  }
  return allKnown;
}

XpRowRange KVSDynamicInfoPainter::GetDrawnRows() const {
  XpRowRange all{0, 0};
  for (const auto& [layer, entry] : m_byLayer) {
    if (!entry.painter->enabled) continue;
    const XpRowRange rows = entry.painter->GetDrawnRows();
    if (rows.IsEmpty()) continue;
    all = all.IsEmpty() ? rows : XpRowRange{std::min(all.first, rows.first), std::max(all.last, rows.last)};
  }
  return all;
}

bool KVSDynamicInfoPainter::IsAnyDrawable() const {
  for (const auto& [layer, entry] : m_byLayer) {
    if (entry.painter->enabled && entry.painter->IsDrawable()) return true;
  }
  return false;
}

void KVSDynamicInfoPainter::SetClipDateTime(std::uint32_t first, std::uint32_t second, std::uint32_t third) {
  for (const auto& painter : m_painters) painter->SetClipDateTime(first, second, third);
}

void KVSDynamicInfoPainter::SetClipRange(double startTime, double endTime, std::int32_t videoId) {
  for (const auto& painter : m_painters) painter->SetClipRange(startTime, endTime, videoId);
}

void KVSDynamicInfoPainter::SetOutputSize(std::int32_t width, std::int32_t height) {
  m_outputWidth = width;
  m_outputHeight = height;
  for (const auto& painter : m_painters) painter->SetOutputSize(width, height);
}

void KVSDynamicInfoPainter::SetModeAll(std::uint32_t mode) {
  for (const auto& [layer, entry] : m_byLayer) entry.painter->SetMode(mode);
}

void KVSDynamicInfoPainter::SetVideoLayout(std::int32_t layoutType, std::int32_t subVideoSize) {
  m_videoLayoutType = layoutType;
  m_subVideoSize = subVideoSize;
  for (const auto& painter : m_painters) painter->SetVideoLayout(layoutType, subVideoSize);
}

bool KVSDynamicInfoPainter::GetVideoRect(std::size_t index, vrx::drawing::Rect& rect, bool scaled) const {
  const vrx::overlay::VideoLayout* layout = vrx::overlay::FindVideoLayout(m_videoLayoutType);
  if (layout == nullptr) return true;
  const auto places = layout->PlacesFor(m_subVideoSize).Get();
  if (index >= places.size()) return true;
  rect = places[index];
  if (scaled) {
    rect = {Scaled(rect.left, m_outputWidth, kLayoutWidth), Scaled(rect.top, m_outputHeight, kLayoutHeight),
            Scaled(rect.right, m_outputWidth, kLayoutWidth),
            Scaled(rect.bottom, m_outputHeight, kLayoutHeight)};
  }
  return true;
}

bool KVSDynamicInfoPainter::GetVideoLayoutFlag(bool& hasSizes) const {
  const vrx::overlay::VideoLayout* layout = vrx::overlay::FindVideoLayout(m_videoLayoutType);
  if (layout != nullptr) hasSizes = layout->hasSizes;
  return layout != nullptr;
}
