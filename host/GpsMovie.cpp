#include "host/GpsMovie.h"

#include "content/modd/SfModdXML.h"
#include "content/probe/Mp4Probe.h"
#include "host/EngineModule.h"

namespace vrx::host {
namespace {

std::optional<double> FindSeconds(const XpString& path) {
  EngineModule engine;
  std::string cause;
  if (!engine.Load(cause)) return {};
  engine.Listen({});
  const check::SourceFacts facts = engine.Probe(path);
  if (!facts.usable) return {};
  return facts.hasVideo ? facts.videoSeconds : facts.audioSeconds;
}

}  // namespace

receiver::MovieTime InspectMovie(const XpString& path) {
  receiver::MovieTime movie;
  std::int32_t minutes = kMp4NoTimeZone;
  if (GetOriginalDateTimeFromMP4(path, movie.localStart, minutes) && minutes != kMp4NoTimeZone)
    movie.zoneMinutes = minutes;
  SfModdXML sidecar(path);
  if (sidecar.Open(SfModdRead) == XpOk && sidecar.GetFileTimeZoneOffset(minutes) == XpOk)
    movie.zoneMinutes = minutes;
  movie.durationSeconds = FindSeconds(path);
  return movie;
}

}  // namespace vrx::host
