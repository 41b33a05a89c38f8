#include "host/GpsReport.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "gps/receiver/UtcTime.h"
#include "gps/track/GpsUnits.h"
#include "host/Console.h"

namespace vrx::host {
namespace {

using receiver::FixedDecimal;
using receiver::kMillisecondsPerSecond;

constexpr int kDegreeDecimals = 7;  // a centimetre

std::string IsoText(std::int64_t unixSeconds) {
  return receiver::IsoText(unixSeconds * kMillisecondsPerSecond);
}

/// "10:12:53".
std::string TimeOfDay(std::int64_t unixSeconds) { return IsoText(unixSeconds).substr(11, 8); }

std::string DateText(std::int64_t unixSeconds) {
  static constexpr const char* kMonths[] = {"January",   "February", "March",    "April",
                                            "May",       "June",     "July",     "August",
                                            "September", "October",  "November", "December"};
  const receiver::CivilTime time = receiver::CivilUtc(unixSeconds * kMillisecondsPerSecond);
  return std::to_string(time.day) + " " + kMonths[time.month - 1] + " " + std::to_string(time.year);
}

/// "4 May 2018, 10:00:13 to 10:12:53 UTC".
std::string SpanText(const GpsFacts& facts) {
  std::string text = DateText(facts.start) + ", " + TimeOfDay(facts.start) + " to ";
  if (DateText(facts.end) != DateText(facts.start)) text += DateText(facts.end) + ", ";
  return text + TimeOfDay(facts.end) + " UTC";
}

std::string DistanceText(double meters) {
  constexpr double kKilometer = 1000.0;
  if (meters < kKilometer) return FixedDecimal(meters, 0) + " m";
  return FixedDecimal(meters / kKilometer, meters < 100 * kKilometer ? 2 : 1) + " km";
}

double InKilometersPerHour(double knots) { return gps::SpeedInUnit(knots, gps::kGpsUnitKilometers); }

std::string SpeedText(double knots) {
  return FixedDecimal(InKilometersPerHour(knots), 1) + " km/h (" + FixedDecimal(knots, 1) + " knots)";
}

std::string AngleText(double degrees, const char* directions) {
  return FixedDecimal(std::abs(degrees), 5) + " " + directions[degrees < 0.0 ? 1 : 0];
}

void PrintLine(const char* name, const std::string& text) {
  std::printf("%-11s %s\n", name, Masked(text).c_str());
}

std::string CountsText(const GpsSource& source) {
  const bool isGpx = source.format == receiver::LogFormat::Gpx;
  std::string text = std::to_string(source.sentences) + (isGpx ? " track points: " : " sentences: ") +
                     std::to_string(source.fixes) + " fixes, " + std::to_string(source.voids) + " void";
  const std::string rejected = RejectedText(source);
  return rejected.empty() ? text + ", none rejected" : text + ", " + rejected;
}

std::string PassedOverText(const GpsSource& source) {
  std::string text;
  for (const auto& [type, count] : source.passedOver)
    text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + type;
  return text;
}

std::string LeftText(const receiver::ThinCounts& left) {
  std::string text;
  const auto add = [&](std::uint64_t count, const char* what) {
    if (count != 0) text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + what;
  };
  add(left.thinned, "between the seconds");
  add(left.duplicates, "of a time that another one has");
  add(left.outOfOrder, "whose time runs backwards");
  return text;
}

std::string GapsText(const GpsFacts& facts) {
  if (facts.gaps.empty()) return "no gaps";
  const auto length = [](const GpsGap& gap) { return gap.to - gap.from; };
  const GpsGap& longest = *std::ranges::max_element(facts.gaps, {}, length);
  const std::string count = facts.gaps.size() == 1 ? "1 gap" : std::to_string(facts.gaps.size()) + " gaps";
  return count + ", the longest " + ClockText(static_cast<double>(length(longest))) + " from " +
         TimeOfDay(longest.from);
}

const char* KindName(std::int32_t kind) {
  switch (kind) {
    case GPSPointBeforeFix:
      return "beforeFix";
    case GPSPointInterpolated:
      return "interpolated";
    case GPSPointAfterFix:
      return "afterFix";
    case GPSPointHeld:
      return "held";
    default:
      return "logged";
  }
}

Json RoundedJson(double value, int decimals) {
  const double scale = std::pow(10.0, decimals);
  return std::round(value * scale) / scale;
}

Json PointsJson(const GpsFacts& facts) {
  Json points = Json::array();
  for (const KVUGPSInfo& point : facts.track) {
    points.push_back({{"second", UnixSeconds(point) - facts.start},
                      {"time", IsoText(UnixSeconds(point))},
                      {"latitude", RoundedJson(point.latitude / kArcSecondsPerDegree, kDegreeDecimals)},
                      {"longitude", RoundedJson(point.longitude / kArcSecondsPerDegree, kDegreeDecimals)},
                      {"speedKnots", point.speed < 0.0 ? Json() : RoundedJson(point.speed, 3)},
                      {"kind", KindName(point.kind)}});
  }
  return points;
}

Json MovieJson(const receiver::Alignment& movie) {
  const bool isCovered = movie.hasOverlap;
  return {{"start", receiver::IsoText(movie.startUtcSeconds * kMillisecondsPerSecond)},
          {"seconds", movie.movieSeconds ? RoundedJson(*movie.movieSeconds, 3) : Json()},
          {"coveredFrom", isCovered ? RoundedJson(movie.coveredFromSeconds, 3) : Json()},
          {"coveredTo", isCovered ? RoundedJson(movie.coveredToSeconds, 3) : Json()}};
}

/// For XML: characters that it cannot hold are left out, bytes of file names that are no UTF-8 are replaced.
std::string Escaped(std::string_view text) {
  std::string escaped;
  while (!text.empty()) {
    char32_t code = 0;
    const std::size_t length = textcodec::DecodeOne(text, code);
    const char c = text.front();
    if (length == 0) {
      escaped += "\uFFFD";
    } else if (c == '&') {
      escaped += "&amp;";
    } else if (c == '<') {
      escaped += "&lt;";
    } else if (code >= U' ' && code != 0xFFFE && code != 0xFFFF) {
      escaped += text.substr(0, length);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return escaped;
}

void PrintTrackPoint(const KVUGPSInfo& point) {
  constexpr double kKnotsToMetersPerSecond = 1852.0 / 3600.0;
  std::printf("      <trkpt lat=\"%s\" lon=\"%s\"><time>%s</time>",
              FixedDecimal(point.latitude / kArcSecondsPerDegree, kDegreeDecimals).c_str(),
              FixedDecimal(point.longitude / kArcSecondsPerDegree, kDegreeDecimals).c_str(),
              IsoText(UnixSeconds(point)).c_str());
  if (point.speed >= 0.0) {
    std::printf("<extensions><v:speed>%s</v:speed></extensions>",
                FixedDecimal(point.speed * kKnotsToMetersPerSecond, 4).c_str());
  }
  std::puts("</trkpt>");
}

}  // namespace

std::string RejectedText(const GpsSource& source) {
  std::uint64_t sum = 0;
  std::string reasons;
  for (const auto& [reason, count] : source.rejected) {
    sum += count;
    reasons += (reasons.empty() ? "" : ", ") + std::to_string(count) + " " + reason;
  }
  return sum == 0 ? "" : std::to_string(sum) + " rejected (" + reasons + ")";
}

std::string GpsSummary(const GpsFacts& facts) {
  const auto speed = [](double knots) { return FixedDecimal(InKilometersPerHour(knots), 0) + " km/h"; };
  const char* divider = "   \u00B7   ";
  return SpanText(facts) + divider + DistanceText(facts.distanceMeters) + divider +
         (facts.maxSpeedKnots ? "at most " + speed(*facts.maxSpeedKnots) + ", " : "") + "on average " +
         speed(facts.meanSpeedKnots) + divider +
         (facts.gaps.empty()       ? "no gaps"
          : facts.gaps.size() == 1 ? "1 gap"
                                   : std::to_string(facts.gaps.size()) + " gaps");
}

void PrintGpsText(const GpsReport& report) {
  const GpsSource& source = report.source;
  const GpsFacts& facts = report.facts;
  PrintLine("Log", Utf8(source.path) + " (" + receiver::LogFormatName(source.format) + ")" +
                       (source.movie.IsEmpty() ? "" : ", for " + Utf8(source.movie)));
  PrintLine("Read", CountsText(source));
  if (const std::string others = PassedOverText(source); !others.empty()) PrintLine("Passed over", others);
  if (const std::string left = LeftText(source.left); !left.empty()) PrintLine("Left out", left);
  if (facts.track.empty()) {
    PrintLine("Positions", "none");
    return;
  }
  PrintLine("Time", SpanText(facts) + " (" + ClockText(static_cast<double>(facts.end - facts.start)) + "), " +
                        GapsText(facts));
  PrintLine("Distance", DistanceText(facts.distanceMeters));
  PrintLine("Speed", (facts.maxSpeedKnots ? "at most " + SpeedText(*facts.maxSpeedKnots) : "not in the log") +
                         ", on average " + SpeedText(facts.meanSpeedKnots));
  PrintLine("Bounds", AngleText(facts.bounds.south, "NS") + " to " + AngleText(facts.bounds.north, "NS") +
                          ", " + AngleText(facts.bounds.west, "EW") + " to " +
                          AngleText(facts.bounds.east, "EW"));
  if (source.format == receiver::LogFormat::Moff) {
    PrintLine("Shift", std::to_string(source.shiftSeconds) + " s");
    PrintLine("Header mark", source.hasHeaderMark ? "yes: not linked with the logs of other clips" : "no");
  }
  if (!report.movie) return;
  PrintLine("Movie", receiver::DescribeOverlap(*report.movie));
  if (!report.movie->hasOverlap) PrintLine("", receiver::DescribeMismatch(*report.movie));
}

void PrintGpsJson(const GpsReport& report, bool points) {
  const GpsSource& source = report.source;
  const GpsFacts& facts = report.facts;
  const bool isEmpty = facts.track.empty();
  Json document{{"source", Utf8(source.path)},
                {"format", receiver::LogFormatName(source.format)},
                {"sentences", source.sentences},
                {"fixes", source.fixes},
                {"void", source.voids},
                {"rejected", source.rejected},
                {"start", isEmpty ? Json() : Json(IsoText(facts.start))},
                {"end", isEmpty ? Json() : Json(IsoText(facts.end))},
                {"seconds", facts.end - facts.start},
                {"distanceMeters", RoundedJson(facts.distanceMeters, 3)},
                {"maxSpeedKnots", facts.maxSpeedKnots ? RoundedJson(*facts.maxSpeedKnots, 3) : Json()},
                {"meanSpeedKnots", RoundedJson(facts.meanSpeedKnots, 3)}};
  const GpsBounds& bounds = facts.bounds;
  document["bounds"] = Json();
  if (!isEmpty) {
    document["bounds"] = {{"north", RoundedJson(bounds.north, kDegreeDecimals)},
                          {"south", RoundedJson(bounds.south, kDegreeDecimals)},
                          {"east", RoundedJson(bounds.east, kDegreeDecimals)},
                          {"west", RoundedJson(bounds.west, kDegreeDecimals)}};
  }
  document["gaps"] = Json::array();
  for (const GpsGap& gap : facts.gaps)
    document["gaps"].push_back({{"from", IsoText(gap.from)}, {"to", IsoText(gap.to)}});
  document["shiftSeconds"] = source.shiftSeconds;
  document["headerMark"] = source.hasHeaderMark;
  document["movie"] = report.movie ? MovieJson(*report.movie) : Json();
  document["warnings"] = source.warnings;
  if (points) document["points"] = PointsJson(facts);
  PrintJson(document, 2);
}

void PrintGpsCsv(const GpsReport& report) {
  std::puts("second,time,latitude,longitude,speed_knots,kind");
  for (const KVUGPSInfo& point : report.facts.track) {
    std::printf("%lld,%s,%s,%s,%s,%s\n", static_cast<long long>(UnixSeconds(point) - report.facts.start),
                IsoText(UnixSeconds(point)).c_str(),
                FixedDecimal(point.latitude / kArcSecondsPerDegree, kDegreeDecimals).c_str(),
                FixedDecimal(point.longitude / kArcSecondsPerDegree, kDegreeDecimals).c_str(),
                point.speed < 0.0 ? "" : FixedDecimal(point.speed, 3).c_str(), KindName(point.kind));
  }
}

void PrintGpsGpx(const GpsReport& report) {
  std::puts(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<gpx version=\"1.1\" creator=\"vrx\" xmlns=\"http://www.topografix.com/GPX/1/1\" "
      "xmlns:v=\"urn:vrx:gps\">");
  std::printf("  <trk>\n    <name>%s</name>\n", Escaped(Utf8(report.source.path)).c_str());
  bool isOpen = false;
  for (const KVUGPSInfo& point : report.facts.track) {
    const bool isLogged = point.kind == GPSPointLogged;
    if (isLogged && !isOpen) std::puts("    <trkseg>");
    if (!isLogged && isOpen) std::puts("    </trkseg>");
    if (isLogged) PrintTrackPoint(point);
    isOpen = isLogged;
  }
  if (isOpen) std::puts("    </trkseg>");
  std::puts("  </trk>\n</gpx>");
}

}  // namespace vrx::host
