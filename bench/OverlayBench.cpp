// What an overlay costs a frame: handed through the callback while its caption stays, when the
// caption changes, while the counters of a tennis match roll, and the blend alone.
#include <benchmark/benchmark.h>

#include <cstring>
#include <memory>
#include <vector>

#include "drawing/pango/PangoTextRenderer.h"
#include "foundation/text/XpFormat.h"
#include "imaging/pixmap/XpPixmapBlock.h"
#include "overlay/callback/BlendOverlay.h"
#include "overlay/callback/VRXIntermediateRawOutputCallback.h"
#include "overlay/caption/KVSCaptionPainterPlugIn.h"
#include "overlay/painter/IKVSDynamicInfoPainter.h"
#include "overlay/tennis/KVSTennisMetaPainterPlugIn.h"
#include "src/overlayplan/PainterTable.h"

namespace {

constexpr std::int32_t kWidth = 1920;
constexpr std::int32_t kHeight = 1080;
constexpr std::int32_t kCaptions = 1000;
constexpr std::int32_t kFrameMs = 40;

struct Release {
  void operator()(IKVSDynamicInfoPainter* painters) const { painters->Release(); }
};

/// A movie of captions that each last `framesEach` frames.
class CaptionedMovie {
 public:
  CaptionedMovie(std::int32_t framesEach, vrx::drawing::Size size)
      : m_buffer(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * 4, 90) {
    std::vector<CaptionItem> captions;
    for (std::int32_t i = 0; i < kCaptions; ++i) {
      XpString text;
      XpFormat(text, u"Third day: from the pass down\nto the lake, 1,240 m of descent\nin hour %d", i);
      const std::int32_t start = i * framesEach * kFrameMs;
      constexpr std::int32_t kBottomCentre = 8, kWhite = 0xFFFFFF;
      captions.push_back(
          {text, u"DejaVu Sans", 64.0, kWhite, kBottomCentre, start, start + framesEach * kFrameMs - 1, 0});
    }
    m_info.saveMovieMode = true;
    m_info.captionInfo.valid = true;
    m_info.templateInfo.width = size.width;
    m_info.templateInfo.height = size.height;
    IKVSDynamicInfoPainter* painters = nullptr;
    if (!CreateDynamicInfoPainter(&painters, vrx::overlayplan::GetPainterKinds(), {&m_text})) return;
    m_painters.reset(painters);
    painters->SetPainterInfo(&m_info);
    auto* painter = dynamic_cast<KVSCaptionPainterPlugIn*>(painters->FindPainterByType(KVSPainterCaption));
    if (painter != nullptr) painter->SetCaptionItems(captions);
    m_callback = std::make_unique<VRXIntermediateRawOutputCallback>(
        OverlayContext{.width = size.width,
                       .height = size.height,
                       .frameLength = {1, 25},
                       .info = &m_info,
                       .painters = painters,
                       .kinds = vrx::overlayplan::GetPainterKinds()});
  }
  bool Process(std::uint64_t frame) {
    return m_callback->ProcessFrame(frame, m_buffer.data(), static_cast<std::uint32_t>(m_buffer.size()),
                                    VRXIntermediateRawOutputCallback::kStage,
                                    VRXIntermediateRawOutputCallback::kFormat);
  }

 private:
  vrx::drawing::PangoTextRenderer m_text;
  PainterInfo m_info;
  std::unique_ptr<IKVSDynamicInfoPainter, Release> m_painters;
  std::unique_ptr<VRXIntermediateRawOutputCallback> m_callback;
  std::vector<unsigned char> m_buffer;
};

void ProcessFrames(benchmark::State& state) {
  const auto framesEach = static_cast<std::int32_t>(state.range(0));
  const std::int64_t width = state.range(1);
  CaptionedMovie movie(framesEach,
                       {static_cast<std::int32_t>(width), static_cast<std::int32_t>(width * 9 / 16)});
  const std::uint64_t frames = std::uint64_t{kCaptions} * static_cast<std::uint64_t>(framesEach);
  std::uint64_t frame = 0;
  for (auto _ : state) {
    if (!movie.Process(frame)) state.SkipWithError("the frame was refused");
    frame = (frame + 1) % frames;
  }
}
// A new caption on every frame, and one that stays for four seconds; at full HD and 4K.
BENCHMARK(ProcessFrames)->ArgsProduct({{1, 100}, {kWidth, 2 * kWidth}})->Unit(benchmark::kMicrosecond);

PainterPicture Picture(std::int32_t width, std::int32_t height) {
  auto* made = new XpPixmap32;
  PainterPicture picture(made);
  if (made->Allocate(width, height) == XpOk) {
    for (std::uint32_t i = 0; i < made->size; ++i) made->data[i] = static_cast<unsigned char>(i * 37);
  }
  return picture;
}

/// Of the sizes that are laid on a full-HD frame unscaled.
std::shared_ptr<TennisMetaResource> MakeTennisPictures() {
  auto set = std::make_shared<TennisMetaResource>();
  for (auto* frames : {&set->racketFrames, &set->backFrames, &set->foreFrames}) {
    frames->assign(8, Picture(300, 300));
  }
  for (const auto& stroke : vrx::overlay::TennisStrokes()) (*set).*(stroke.pictogram) = Picture(20, 20);
  set->timeLine = Picture(510, 30);
  set->timeTop = Picture(28, 28);
  set->shade = PainterPicture(MakeSolidPixmap(0, 0, 0, 178).release());
  set->blue = set->yellow = Picture(90, 90);
  return set;
}

void DrawTennis(benchmark::State& state) {
  const std::int64_t stepMs = state.range(0);
  std::vector<TennisShot> shots(60);
  for (std::size_t i = 0; i < shots.size(); ++i) {
    shots[i].time = 0.3 * static_cast<double>(i + 1);
    shots[i].swingType = 1 << (i % 8);
    shots[i].firstPanelValue = i % 2 == 0 ? 12 : -7;
    shots[i].secondPanelSpeed = i % 2 == 0 ? 80 : 140;
    shots[i].thirdPanelSpeed = i % 2 == 0 ? 190 : 60;
  }
  vrx::overlay::BuildSearchTree(shots);
  PainterInfo info;
  info.videoWidth = kWidth;
  info.videoHeight = kHeight;
  info.saveMovieMode = true;
  info.gpsUnitFromUser = 0;
  for (std::int32_t i = 0; i < 25; ++i) info.stringTable[i] = u"Some words";
  info.tennisMetaInfo.layoutType = 1;
  info.tennisMetaInfo.resources = MakeTennisPictures();
  info.tennisMetaInfo.originalDateTime = XpDateTime::GetCurrentTime();
  info.tennisMetaInfo.metaData = XpNarrowString(vrx::overlay::WriteTennisMetaData(shots)).ToWide();
  vrx::drawing::PangoTextRenderer text;
  KVSTennisMetaPainterPlugIn painter(text);
  painter.SetPainterInfo(&info, &info.tennisMetaInfo);
  PixmapHolder frame(new XpPixmap32);
  if (frame->Allocate(kWidth, kHeight) != XpOk) return;
  vrx::overlay::DrawnArea drawn;
  std::int64_t ms = 0;
  for (auto _ : state) {
    drawn.Clear(*frame);
    if (!painter.Draw(0, ms, 0, frame)) state.SkipWithError("nothing was drawn");
    drawn.Find(*frame, painter.GetDrawnRows());
    ms = (ms + stepMs) % 18000;
  }
}
// Counters that roll on every frame at 25 and at 60 frames a second.
BENCHMARK(DrawTennis)->Arg(40)->Arg(17)->Unit(benchmark::kMicrosecond);

void Blend(benchmark::State& state) {
  const auto drawnRows = static_cast<std::int32_t>(state.range(0));
  constexpr unsigned char kHalf = 128;
  XpPixmap32 overlay;
  if (overlay.Allocate(kWidth, kHeight) != XpOk) return;
  std::memset(overlay.data, kHalf, std::size_t{kWidth} * 4 * static_cast<std::size_t>(drawnRows));
  vrx::overlay::DrawnArea area;
  area.Find(overlay);
  std::vector<unsigned char> buffer(overlay.size, 90);
  for (auto _ : state) {
    vrx::overlay::BlendOverlay(overlay, area, buffer.data(), static_cast<std::uint32_t>(buffer.size()));
  }
}
// Nothing drawn, a band of 240 rows half transparent, and the whole picture.
BENCHMARK(Blend)->Arg(0)->Arg(240)->Arg(kHeight)->Unit(benchmark::kMicrosecond);

}  // namespace
