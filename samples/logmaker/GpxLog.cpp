#include "samples/logmaker/GpxLog.h"

#include <cstdlib>

#include "samples/logmaker/LogText.h"

namespace vrx::test_support {
namespace {

std::string Time(const ClockReading& clock, const GpxStyle& style) {
  std::string text = Padded(clock.year, 4) + "-" + Padded(clock.month, 2) + "-" + Padded(clock.day, 2) + "T" +
                     Padded(clock.hour, 2) + ":" + Padded(clock.minute, 2) + ":" + Padded(clock.second, 2);
  if (style.rate > 1) text += "." + Padded(clock.millisecond, 3);
  if (style.zoneMinutes == 0) return text + "Z";
  const int minutes = std::abs(style.zoneMinutes);
  return text + (style.zoneMinutes < 0 ? "-" : "+") + Padded(minutes / 60, 2) + ":" + Padded(minutes % 60, 2);
}

std::string Element(const std::string& name, const std::string& content) {
  return "<" + name + ">" + content + "</" + name + ">";
}

std::string Point(const RouteState& state, const ClockReading& clock, const GpxStyle& style) {
  const std::string& p = style.prefix;
  std::string text = "<" + p + "trkpt lat=\"" + PaddedReal(state.latitude, 7, 0) + "\" lon=\"" +
                     PaddedReal(state.longitude, 7, 0) + "\">" + Element(p + "ele", "408.3") +
                     Element(p + "time", Time(clock, style));
  const std::string speed = PaddedReal(state.metersPerSecond, 2, 0);
  if (style.speed == GpxSpeed::kElement) text += Element(p + "speed", speed);
  if (style.speed == GpxSpeed::kExtension) {
    text +=
        Element(p + "extensions", Element("x:TrackPoint", Element("x:hr", "92") + Element("x:speed", speed)));
  }
  return text + "</" + p + "trkpt>\n";
}

std::string Utf16(const std::string& ascii) {
  std::string text = "\xFF\xFE";
  for (const char c : ascii) text += {c, '\0'};
  return text;
}

}  // namespace

std::string GpxLog(const Route& route, const GpxStyle& style) {
  const std::string& p = style.prefix;
  const std::string bound = p.empty() ? "xmlns" : "xmlns:" + p.substr(0, p.size() - 1);
  const std::string nameSpace =
      "http://www.topografix.com/GPX/" + style.version.substr(0, 1) + "/" + style.version.substr(2);
  std::string text = std::string("<?xml version=\"1.0\" encoding=\"") + (style.isUtf16 ? "UTF-16" : "UTF-8") +
                     "\"?>\n<" + p + "gpx version=\"" + style.version + "\" creator=\"vrx-make-log\" " +
                     bound + "=\"" + nameSpace + "\" xmlns:x=\"urn:example:track-point\">\n<" + p + "trk><" +
                     p + "trkseg>\n";
  bool isBroken = false;  // a new segment begins where the fix was lost
  bool hasPoints = false;
  for (std::int64_t at = 0; at <= route.Milliseconds(); at += 1000 / style.rate) {
    const RouteState state = route.At(at);
    isBroken = isBroken || (hasPoints && !state.hasFix);
    if (!state.hasFix) continue;
    if (isBroken) text += "</" + p + "trkseg><" + p + "trkseg>\n";
    isBroken = false;
    hasPoints = true;
    text += Point(state, route.ClockAt(at, std::int64_t{style.zoneMinutes} * 60), style);
  }
  text += "</" + p + "trkseg></" + p + "trk>\n</" + p + "gpx>\n";
  return style.isUtf16 ? Utf16(text) : text;
}

}  // namespace vrx::test_support
