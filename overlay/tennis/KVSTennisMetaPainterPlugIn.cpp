#include "overlay/tennis/KVSTennisMetaPainterPlugIn.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "foundation/number/Saturate.h"
#include "overlay/painter/PainterFontName.h"

using namespace vrx::overlay;
using vrx::Saturate;
using vrx::SaturatedAdd;
using vrx::drawing::Rect;

namespace {

constexpr std::array<std::int32_t, kTennisCounters> kLabelTexts{14, 15, 16};
constexpr std::array kUnitTexts{2, 0, 4};  // by the unit
constexpr double kMillisecondsPerSecond = 1000.0;
/// The stamp of a painter that draws nothing; scenes count from 1.
constexpr std::uint64_t kNothingDrawn = 0;

XpString SpanText(const XpDateTime& start, double seconds) {
  if (!start.IsValid()) return {};
  XpDateTime end = start;
  end.AddMinutesSeconds(0, Saturate<std::int32_t>(std::floor(seconds)));
  return start.FormatTime(XpTimeMinute, false) + u" - " + end.FormatTime(XpTimeMinute, false);
}

}  // namespace

KVSTennisMetaPainterPlugIn::KVSTennisMetaPainterPlugIn(vrx::drawing::TextRenderer& textRenderer)
    : m_textRenderer(textRenderer),
      m_strips{DigitStrip(CounterKind::Count), DigitStrip(CounterKind::Speed),
               DigitStrip(CounterKind::Speed)} {
  painterType = KVSPainterTennisMeta;
}

bool KVSTennisMetaPainterPlugIn::SetPainterInfo(const PainterInfo* info, const PainterInfoBase* record) {
  Configure(info, record);
  return true;
}

void KVSTennisMetaPainterPlugIn::Reset() {
  m_shots = TennisShots();
  m_layout.reset();
  m_resources.reset();
  ForgetDrawn();
}

void KVSTennisMetaPainterPlugIn::ForgetDrawn() {
  ++m_generation;
  m_isStamped = false;
  m_isMeasured = false;
  m_panel.Forget();
  for (DigitStrip& strip : m_strips) strip.Reset();
}

void KVSTennisMetaPainterPlugIn::Configure(const PainterInfo* info, const PainterInfoBase* record) {
  const XpSingleLock lock(&m_lock);
  Reset();
  const auto* tennis = dynamic_cast<const TennisMetaInfo*>(record);
  if (info == nullptr || tennis == nullptr) return;
  m_outputWidth = info->videoWidth;
  m_outputHeight = info->videoHeight;
  m_stringTable = info->stringTable;
  m_resources = tennis->resources;
  m_renditions.Reset(m_resources);
  m_shiftMs = Saturate<std::int64_t>(tennis->trimedShift * kMillisecondsPerSecond);
  std::vector<TennisShot> shots;
  ParseTennisMetaData(tennis->metaData, m_stringTable, shots);
  m_shots = TennisShots(std::move(shots));
  for (std::size_t i = 0; i < kLabelTexts.size(); ++i) {
    m_texts.labels[i] = TextAt(m_stringTable, kLabelTexts[i]);
  }
  m_texts.date = tennis->originalDateTime.FormatDate(XpDateShort);
  m_texts.span = SpanText(tennis->originalDateTime, tennis->duration);
  SetUnit(info->gpsUnitFromUser);
  m_layout = MakeTennisLayout(tennis->layoutType, m_resources, m_outputWidth, m_outputHeight,
                              ChoosePainterFontName());
}

void KVSTennisMetaPainterPlugIn::SetUnit(std::int32_t unit) {
  m_unit = unit;
  const bool isKnown = unit >= 0 && unit < static_cast<std::int32_t>(kUnitTexts.size());
  m_texts.unit = isKnown ? TextAt(m_stringTable, kUnitTexts[static_cast<std::size_t>(unit)]) : XpString();
}

void KVSTennisMetaPainterPlugIn::SetMode(std::uint32_t mode) {
  const XpSingleLock lock(&m_lock);
  SetUnit(static_cast<std::int32_t>(mode));
  ForgetDrawn();
}

void KVSTennisMetaPainterPlugIn::SetClipDateTime(std::uint32_t first, std::uint32_t second,
                                                 std::uint32_t /*third*/) {
  const XpSingleLock lock(&m_lock);
  const auto seconds = std::bit_cast<double>(std::uint64_t{second} << 32 | first);
  m_shiftMs = Saturate<std::int32_t>(seconds * kMillisecondsPerSecond);
}

void KVSTennisMetaPainterPlugIn::SetOutputSize(std::int32_t width, std::int32_t height) {
  const XpSingleLock lock(&m_lock);
  m_outputWidth = width;
  m_outputHeight = height;
  if (m_layout) m_layout->SetOutputSize(width, height);
  m_renditions.Forget();
  ForgetDrawn();
}

PainterStamp KVSTennisMetaPainterPlugIn::GetContentStamp(const PainterTimes& times) {
  const XpSingleLock lock(&m_lock);
  PainterStamp stamp{.isKnown = true, .generation = m_generation, .content = kNothingDrawn};
  if (!HasContent()) return stamp;
  MakeTennisScene(m_shots, *m_layout, m_unit, SaturatedAdd(m_shiftMs, times.tennisMs), m_scene);
  if (!m_isStamped || m_scene != m_stamped) {
    std::swap(m_stamped, m_scene);
    ++m_sceneNumber;
    m_isStamped = true;
  }
  stamp.content = m_sceneNumber;
  return stamp;
}

bool KVSTennisMetaPainterPlugIn::DrawForVideo(std::int32_t /*videoId*/, std::int64_t gpsMs,
                                              std::int64_t tennisMs, std::int64_t captionMs,
                                              PixmapHolder& holder) {
  return Draw(gpsMs, tennisMs, captionMs, holder);
}

bool KVSTennisMetaPainterPlugIn::Draw(std::int64_t /*gpsMs*/, std::int64_t tennisMs,
                                      std::int64_t /*captionMs*/, PixmapHolder& holder) {
  const XpSingleLock lock(&m_lock);
  m_drawnRows = {0, 0};
  if (!holder || !m_layout) return false;
  XpPixmap32& target = *holder;
  if (target.width != m_outputWidth || target.height != m_outputHeight) {
    SetOutputSize(target.width, target.height);
  }
  if (!HasContent() || target.data == nullptr) return true;
  if (!m_isMeasured) m_digits = MeasureDigits(m_textRenderer, *m_layout);
  m_isMeasured = true;
  MakeTennisScene(m_shots, *m_layout, m_unit, SaturatedAdd(m_shiftMs, tennisMs), m_scene);
  PainterSurface surface(target, m_textRenderer, m_renditions);
  DrawPanel(surface);
  DrawStats(surface);
  DrawSwing(surface);
  if (m_layout->HasTimeLine()) DrawTimeLine(surface);
  m_drawnRows = {surface.GetTouched().top, surface.GetTouched().bottom};
  return true;
}

void KVSTennisMetaPainterPlugIn::DrawPanel(PainterSurface& surface) {
  if (m_panelName != m_scene.name) m_panel.Forget();
  m_panelName = m_scene.name;
  m_panel.Show(surface, [this](PainterSurface& kept) {
    DrawTennisPanel(*m_layout, *m_resources, m_texts, m_scene.name, m_digits.threeWidth, kept);
  });
}

void KVSTennisMetaPainterPlugIn::DrawStats(PainterSurface& surface) {
  const auto rects = CounterRects(*m_layout);
  for (std::size_t i = 0; i < m_strips.size(); ++i) {
    m_strips[i].Draw(m_scene.counters[i], m_digits, *m_layout, rects[i], surface);
  }
}

void KVSTennisMetaPainterPlugIn::DrawSwing(PainterSurface& surface) {
  const TennisScene::Swing& swing = m_scene.swing;
  surface.Overlay(m_layout->GetFrame(swing.set, swing.frame), m_layout->GetSwingRect());
  const PainterPicture blue = m_layout->GetBlue();
  const PainterPicture yellow = m_layout->GetYellow();
  if (!swing.mark || !blue || !yellow) return;
  surface.Overlay(blue, *swing.mark);
  surface.Overlay(yellow, *swing.mark);
}

void KVSTennisMetaPainterPlugIn::DrawTimeLine(PainterSurface& surface) {
  for (const TennisScene::Marker& marker : m_scene.markers) DrawPictogram(marker, surface);
  if (m_scene.played) DrawPictogram(*m_scene.played, surface);
}

void KVSTennisMetaPainterPlugIn::DrawPictogram(const TennisScene::Marker& marker, PainterSurface& surface) {
  const auto strokes = TennisStrokes();
  const auto stroke = std::ranges::find(strokes, marker.strokeClass, &TennisStroke::strokeClass);
  if (stroke != strokes.end()) surface.Overlay((*m_resources).*(stroke->pictogram), marker.rect);
}
