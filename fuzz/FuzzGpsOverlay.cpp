// Draws the overlay of positions from any bytes: first with them as the log in a movie's sidecar, then the
// route and the speed graph alone with points of numbers that no log can hold. The last bytes choose the
// look and the moments.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include <fuzzer/FuzzedDataProvider.h>

#include "drawing/BoxTextRenderer.h"
#include "fuzz/FuzzPicture.h"
#include "gps/painter/KVSGPSOverlayPainterPlugIn.h"
#include "tests/content/MoffBytes.h"
#include "tests/support/TempFolder.h"

namespace {

using vrx::drawing::Rect;
using vrx::fuzz::MakePicture;

constexpr std::int32_t kWidth = 192, kHeight = 108;
constexpr std::size_t kMostPoints = 400;

std::shared_ptr<TemplateResource> MakePictures() {
  auto set = std::make_shared<TemplateResource>();
  set->meterBase = set->meterBaseVertical = MakePicture(20);
  set->gpsIcon = set->gpsNoPositionIcon = set->speedLogScale1 = set->speedLogScale2 = MakePicture(4);
  set->startMarker = set->goalMarker = set->startText = set->goalText = set->positionMarker = MakePicture(9);
  set->meterFrames.assign(7, MakePicture(12));
  return set;
}

std::shared_ptr<TemplateResource> Pictures() {
  static const std::shared_ptr<TemplateResource> pictures = MakePictures();
  return pictures;
}

/// Any 64 bits, so that infinities and numbers that are none come up too.
double AnyDouble(FuzzedDataProvider& bytes) {
  const auto bits = bytes.ConsumeIntegral<std::uint64_t>();
  double number;
  std::memcpy(&number, &bits, sizeof number);
  return number;
}

double AnyNumber(FuzzedDataProvider& bytes) {
  return bytes.ConsumeIntegralInRange(0, 9) == 0 ? AnyDouble(bytes)
                                                 : bytes.ConsumeIntegral<std::int16_t>() / 10.0;
}

LogDataEntry AnyClip(FuzzedDataProvider& bytes, const XpString& path) {
  LogDataEntry clip;
  clip.videoId = bytes.ConsumeIntegralInRange(0, 3);
  clip.startTime = AnyNumber(bytes);
  clip.endTime = clip.startTime + bytes.ConsumeIntegral<std::uint8_t>();
  clip.duration = bytes.ConsumeIntegral<std::uint8_t>();
  clip.gpsLogFilePath = path;
  clip.originalDateTime.SetDateTime(2018, 5, 4, 9, 10, bytes.ConsumeIntegralInRange(0, 59));
  return clip;
}

void DrawLog(FuzzedDataProvider& bytes, const TempFolder& folder) {
  PainterInfo info;
  info.videoLayoutType = bytes.ConsumeIntegralInRange(0, 16);
  info.videoWidth = kWidth;
  info.videoHeight = kHeight;
  info.saveMovieMode = bytes.ConsumeBool();
  info.gpsUnitFromUser = bytes.ConsumeIntegralInRange(-1, 3);
  for (std::int32_t i = 0; i < 25; ++i) info.stringTable[i] = u"some words";
  TemplateInfo& record = info.templateInfo;
  record.scenarioType = bytes.ConsumeIntegralInRange(0, 6);
  record.width = kWidth;
  record.height = kHeight;
  record.linkGpsLog = bytes.ConsumeBool();
  record.drawTrimmedOutArea = bytes.ConsumeBool();
  if (bytes.ConsumeIntegralInRange(0, 7) != 0) record.resources = Pictures();
  const XpString path = XpNarrowString((folder.Path() / "clip.moff").native()).ToWide();
  for (int clips = bytes.ConsumeIntegralInRange(0, 3); clips > 0; --clips)
    record.logData.push_back(AnyClip(bytes, path));
  std::int64_t moments[4] = {};
  for (std::int64_t& ms : moments)
    ms = bytes.ConsumeBool() ? bytes.ConsumeIntegral<std::uint16_t>() : bytes.ConsumeIntegral<std::int64_t>();

  const std::string log = bytes.ConsumeRemainingBytesAsString();
  using namespace vrx::test_support;
  folder.Write("clip.mts", "four");  // the movie, which the sidecar has to fit
  folder.Write("clip.moff", MoffBytes({}, {{.entries = {{.data = log}}}}));
  vrx::drawing::BoxTextRenderer text;
  KVSGPSOverlayPainterPlugIn painter(text);
  painter.SetPainterInfo(&info, &record);
  PixmapHolder frame(new XpPixmap32);
  if (frame->Allocate(kWidth, kHeight) != XpOk) return;
  for (const std::int64_t ms : moments) {
    painter.GetContentStamp({.gpsMs = ms});
    for (std::int32_t id = 0; id < 3; ++id) painter.DrawForVideo(id, ms, 0, 0, frame);
    painter.Draw(ms, 0, 0, frame);
  }
}

KVUGPSInfoList AnyPoints(FuzzedDataProvider& bytes) {
  KVUGPSInfoList list;
  for (std::size_t left = bytes.ConsumeIntegralInRange<std::size_t>(0, kMostPoints); left > 0; --left) {
    KVUGPSInfo& point = list.emplace_back();
    point.kind = bytes.ConsumeIntegralInRange(0, 4);
    point.status = bytes.ConsumeIntegralInRange(0, 1);
    point.speed = AnyNumber(bytes);
    point.latitude = AnyNumber(bytes);
    point.longitude = AnyNumber(bytes);
  }
  return list;
}

Rect AnyRect(FuzzedDataProvider& bytes) {
  if (bytes.ConsumeIntegralInRange(0, 9) != 0) return {4, 8, 150, 100};
  const auto edge = [&bytes] { return bytes.ConsumeIntegralInRange(-1500, 1500); };
  return {edge(), edge(), edge(), edge()};
}

void DrawPoints(FuzzedDataProvider& bytes) {
  KVSGPSTrack track;
  KVSGPSSpeedLog speeds;
  track.SetPerClip(bytes.ConsumeBool());
  speeds.SetLinked(bytes.ConsumeBool());
  speeds.SetSpeedLogSize(bytes.ConsumeIntegralInRange(-1, 500), bytes.ConsumeIntegralInRange(-1, 300));
  const std::shared_ptr<TemplateResource> pictures = Pictures();
  vrx::gps::TrackLook trackLook{.aheadWidth = bytes.ConsumeIntegralInRange(0, 12),
                                .walkedWidth = bytes.ConsumeIntegralInRange(0, 12),
                                .shadowWidth = bytes.ConsumeIntegralInRange(0, 20),
                                .shadowColor = 0x333333,
                                .startMarker = pictures->startMarker,
                                .goalText = pictures->goalText,
                                .positionMarker = pictures->positionMarker,
                                .frameWidth = 1920,
                                .frameHeight = 1080};
  const vrx::gps::SpeedLogLook speedLook{.scale1 = pictures->speedLogScale1,
                                         .goalMarker = pictures->goalMarker,
                                         .positionMarker = pictures->positionMarker,
                                         .labelColor = 0xB3B3B3};
  double accumulatedMs = 0.0;
  for (std::int32_t clip = bytes.ConsumeIntegralInRange(0, 3); clip > 0; --clip) {
    const double start = AnyNumber(bytes), end = AnyNumber(bytes);
    const KVSGPSBounds bounds{AnyNumber(bytes), AnyNumber(bytes), AnyNumber(bytes), AnyNumber(bytes)};
    const KVUGPSInfoList list = AnyPoints(bytes);
    track.BuildTrackSegment(list, bounds, start, end, bytes.ConsumeBool());
    speeds.AddSpeedLogClip(list, clip, accumulatedMs, start * 1000, end * 1000);
    speeds.SetWholeRecord(list);
  }
  XpPixmap32 frame;
  if (frame.Allocate(kWidth, kHeight) != XpOk) return;
  vrx::drawing::BoxTextRenderer text;
  vrx::overlay::PictureRenditions renditions;
  vrx::gps::TrackScene trackScene;
  vrx::gps::SpeedLogScene speedScene;
  for (int moments = 4; moments > 0; --moments) {
    vrx::overlay::PainterSurface surface(frame, text, renditions);
    const Rect rect = AnyRect(bytes);
    const double ms = AnyNumber(bytes) * 100;
    track.MakeScene(rect, bytes.ConsumeBool() ? bytes.ConsumeIntegral<std::int64_t>() : moments * 1000,
                    trackScene);
    track.Draw(trackScene, trackLook, rect, surface);
    if (speeds.MakeScene(rect, ms, speedScene)) speeds.Draw(speedScene, speedLook, rect, surface);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const TempFolder folder;
  static const int settings = setenv("VRX_REGISTRY_DIR", folder.Path().c_str(), 1);
  if (settings != 0) std::abort();
  FuzzedDataProvider points(data, size), log(data, size);
  DrawPoints(points);
  DrawLog(log, folder);
  return 0;
}
