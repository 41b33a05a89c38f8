#include "gps/receiver/GpxReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "foundation/xml/XmlEvents.h"
#include "gps/receiver/SecondFixes.h"
#include "gps/receiver/UtcTime.h"

namespace vrx::receiver {
namespace {

constexpr std::size_t kLongestText = 64;       // of a time or a number; what is longer is neither
constexpr std::size_t kHeadLength = 64 << 10;  // comments and a style sheet may come before the root

enum class Element { Document, Gpx, Track, Segment, Point, Time, Speed, Other };

/// ASCII of an attribute or a text; other characters become "?", which no number and no time contains.
std::string Narrowed(std::u16string_view text) {
  std::string narrow;
  for (const char16_t c : text.substr(0, kLongestText + 1)) {
    narrow.push_back(c < 0x80 ? static_cast<char>(c) : '?');
  }
  return narrow;
}

/// A number of XML Schema, with sign and exponent; what is not finite is none.
std::optional<double> Number(std::string_view text) {
  text = Trimmed(text);
  if (text.size() > kLongestText) return {};
  if (text.starts_with('+')) text.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(value)) return {};
  return value;
}

class TrackPoints final : public xml::XmlEvents {
 public:
  TrackPoints(const ReadOptions& options, ReceiverLog& log) : m_options(options), m_log(log) {}

  bool IsGpx() const { return m_isGpx; }
  bool HasOtherPoints() const { return m_hasOtherPoints; }

  void Start(std::u16string_view name, std::span<const xml::XmlAttribute> attributes) override {
    const Element element = Classify(xml::LocalName(name));
    m_open.push_back(element);
    if (element == Element::Gpx) m_isGpx = true;
    if (element == Element::Point) StartPoint(attributes);
    if (element == Element::Time || element == Element::Speed) m_text.clear();
  }
  void Text(std::u16string_view text) override {
    const Element element = Top();
    if (element != Element::Time && element != Element::Speed) return;
    if (m_text.size() <= kLongestText) m_text += Narrowed(text);
  }
  void End() override {
    const Element element = Top();
    m_open.pop_back();
    if (element == Element::Time) m_time = m_text;
    if (element == Element::Speed && !m_metersPerSecond) m_metersPerSecond = Number(m_text);
    if (element == Element::Point) EndPoint();
  }

 private:
  Element Top() const { return m_open.empty() ? Element::Document : m_open.back(); }

  Element Classify(std::u16string_view name) {
    const Element parent = Top();
    if (parent == Element::Document && name == u"gpx") return Element::Gpx;
    if (parent == Element::Gpx && name == u"trk") return Element::Track;
    if (parent == Element::Track && name == u"trkseg") return Element::Segment;
    if (parent == Element::Segment && name == u"trkpt") return Element::Point;
    if (parent == Element::Point && name == u"time") return Element::Time;
    if (m_isInPoint && name == u"speed") return Element::Speed;
    m_hasOtherPoints = m_hasOtherPoints || name == u"rtept" || name == u"wpt";
    return Element::Other;
  }

  void StartPoint(std::span<const xml::XmlAttribute> attributes) {
    m_isInPoint = true;
    m_latitude.clear();
    m_longitude.clear();
    m_time.clear();
    m_metersPerSecond.reset();
    for (const auto& [name, value] : attributes) {
      if (name == u"lat") m_latitude = Narrowed(value);
      if (name == u"lon") m_longitude = Narrowed(value);
    }
  }

  void EndPoint() {
    m_isInPoint = false;
    ++m_log.sentences;
    Fix fix;
    if (const auto failed = MakeFix(fix)) {
      ++m_log.RejectedFor(*failed);
    } else {
      AppendFix(fix, m_options, m_log);
    }
  }

  std::optional<Rejection> MakeFix(Fix& fix) const {
    if (Trimmed(m_time).empty()) return Rejection::NoTime;
    const auto moment = ParseIsoTime(m_time);
    if (!moment) return Rejection::BadTime;
    if (m_latitude.empty() || m_longitude.empty()) return Rejection::NoPosition;
    const auto latitude = Number(m_latitude);
    const auto longitude = Number(m_longitude);
    if (!latitude || !longitude) return Rejection::BadPosition;
    if (std::abs(*latitude) > 90 || std::abs(*longitude) > 180) return Rejection::OutOfRange;
    fix = {*moment, *latitude, *longitude};
    // Some programs write -1 or NaN for an unknown speed. The text has its own safeguards against damage, so
    // a strange speed says nothing against the position.
    const double knots = m_metersPerSecond.value_or(-1) * kKnotsPerMeterPerSecond;
    if (knots >= 0 && knots <= kFastestKnots) fix.speedKnots = knots;
    return {};
  }

  const ReadOptions& m_options;
  ReceiverLog& m_log;
  std::vector<Element> m_open;  // the elements around the current place
  bool m_isGpx = false;
  bool m_hasOtherPoints = false;
  bool m_isInPoint = false;
  std::string m_text;
  std::string m_time;
  std::string m_latitude;
  std::string m_longitude;
  std::optional<double> m_metersPerSecond;
};

}  // namespace

XpResult ReadGpx(std::span<const char> bytes, const ReadOptions& options, ReceiverLog& log) {
  log = {};
  TrackPoints points(options, log);
  xml::XmlProblem problem;
  const bool isWhole = xml::ReadXmlEvents(bytes, options.xmlLimits, points, problem);
  if (isWhole && !points.IsGpx()) return XpErrInvalidFile;
  if (!isWhole) {
    const std::string place = problem.line == 0 ? "" : " in line " + std::to_string(problem.line);
    log.warnings.push_back("the document breaks off" + place + ": " + problem.message);
    if (log.fixes.empty()) return XpErrNotWellFormed;
  }
  if (log.sentences == 0) {
    log.warnings.push_back(points.HasOtherPoints()
                               ? "the document has routes or places, but no track that was recorded"
                               : "the document has no track points");
  }
  WarnOfRolledDates(options, log);
  return XpOk;
}

bool HoldsGpx(std::span<const char> bytes) {
  // Without the zero bytes of UTF-16, the names of elements look alike in all encodings that matter.
  std::string head(bytes.begin(),
                   bytes.begin() + static_cast<std::ptrdiff_t>(std::min(bytes.size(), kHeadLength)));
  std::erase(head, '\0');
  const std::size_t first = head.find('<');
  constexpr std::size_t kLongestMark = 3;  // a byte order mark and blanks may come before the first element
  if (first == std::string::npos || Trimmed(head.substr(0, first)).size() > kLongestMark) return false;
  for (std::size_t at = first; at != std::string::npos; at = head.find('<', at + 1)) {
    std::string_view name = std::string_view(head).substr(at + 1);
    name = name.substr(0, name.find_first_of(" \t\r\n/>"));
    if (name.substr(name.find(':') + 1) == "gpx") return true;
  }
  return false;
}

}  // namespace vrx::receiver
