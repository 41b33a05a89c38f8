#include "samples/logmaker/NmeaLog.h"

#include <cmath>
#include <cstdlib>

#include "samples/logmaker/LogText.h"

namespace vrx::test_support {
namespace {

constexpr double kKnotsPerMeterPerSecond = 3600.0 / 1852.0;
constexpr std::int64_t kSecondsPerWeek = 7 * 86400;

/// "4722.6140,N".
std::string Angle(double degrees, int decimals, int width, char positive, char negative) {
  // Rounded to the last digit that is written first, so that there are never 60 minutes.
  const double scale = std::pow(10, decimals);
  const double minutes = std::round(std::abs(degrees) * 60 * scale) / scale;
  const double whole = std::floor(minutes / 60);
  const std::string text = PaddedReal(whole * 100 + (minutes - whole * 60), decimals, width + 1 + decimals);
  return text + "," + (degrees < 0 ? negative : positive);
}

class NmeaText {
 public:
  NmeaText(const Route& route, const NmeaStyle& style) : m_route(route), m_style(style) {}

  void AddMoment(std::int64_t elapsed) {
    const RouteState state = m_route.At(elapsed);
    if (!state.hasFix && m_style.voids == NmeaVoid::kNothing) return;
    if (state.hasFix) m_known = state;
    const ClockReading clock = m_route.ClockAt(elapsed, -m_style.rolledWeeks * kSecondsPerWeek);
    m_clock = Padded(clock.hour, 2) + Padded(clock.minute, 2) + Padded(clock.second, 2);
    if (m_style.timeDecimals > 0) {
      const std::string fraction = Padded(clock.millisecond, 3) + "000000";
      m_clock += "." + fraction.substr(0, static_cast<std::size_t>(m_style.timeDecimals));
    }
    m_date = Padded(clock.day, 2) + Padded(clock.month, 2) + Padded(clock.year % 100, 2);
    m_hasFix = state.hasFix;
    const bool hasPosition = m_hasFix || (m_style.voids == NmeaVoid::kLastPosition && m_known.hasFix);
    m_position = hasPosition ? Position() : ",,,";
    if (m_style.hasGga) AddGga();
    if (m_style.hasSatellites) AddSatellites();
    AddRmc(hasPosition);
    if (m_style.hasBinary) AddBinary();
  }
  const std::string& Text() const { return m_text; }

 private:
  std::string Position() const {
    return Angle(m_known.latitude, m_style.positionDecimals, 4, 'N', 'S') + "," +
           Angle(m_known.longitude, m_style.positionDecimals, 5, 'E', 'W');
  }

  void Add(const std::string& talker, const std::string& rest) {
    const std::string body = talker + rest;
    m_text += m_style.linePrefix + "$" + body;
    if (m_style.hasChecksum) {
      int sum = 0;
      for (const char c : body) sum ^= static_cast<unsigned char>(c);
      constexpr const char* kHexDigits = "0123456789ABCDEF";
      m_text += {'*', kHexDigits[sum / 16], kHexDigits[sum % 16]};
    }
    m_text += m_style.lineEnd;
  }

  void AddGga() {
    Add(m_style.talker,
        "GGA," + m_clock + "," + m_position + (m_hasFix ? ",1,09,0.9,408.3,M,48.0,M,," : ",0,00,,,M,,M,,"));
  }

  void AddRmc(bool hasPosition) {
    std::string body = "RMC," + m_clock + (m_hasFix ? ",A," : ",V,") + m_position + ",";
    if (hasPosition) body += PaddedReal(m_known.metersPerSecond * kKnotsPerMeterPerSecond, 2, 6);
    body += ",";
    if (hasPosition && m_style.hasCourse) body += PaddedReal(m_known.courseDegrees, 2, 6);
    body += "," + m_date + ",,";
    if (m_style.version != NmeaVersion::k20) body += m_hasFix ? ",A" : ",N";
    if (m_style.version == NmeaVersion::k41) body += m_hasFix ? ",S" : ",V";
    Add(m_style.talker, body);
  }

  void AddSatellites() {
    Add(m_style.talker, "VTG,,T,,M,0.0,N,0.0,K,A");
    Add(m_style.talker, "GSA,A,3,02,05,13,15,,,,,,,,,1.8,0.9,1.5");
    for (const char* system : {"GP", "GL", "GA", "GB"}) {
      Add(system, "GSV,1,1,04,02,40,280,41,05,65,083,44,13,22,130,38,15,51,300,45");
    }
  }

  /// Any byte may stand in such a message, also those that begin or end a sentence.
  void AddBinary() {
    m_text += "\xB5\x62\x01\x07";
    for (int i = 0; i < 40; ++i) {
      m_random = m_random * 1'664'525 + 1'013'904'223;
      m_text += static_cast<char>(m_random >> 24);
    }
    m_text += '$';
  }

  const Route& m_route;
  const NmeaStyle& m_style;
  std::string m_text;
  std::string m_clock;
  std::string m_date;
  std::string m_position;
  bool m_hasFix = false;
  RouteState m_known;
  std::uint32_t m_random = 1;
};

}  // namespace

std::string NmeaLog(const Route& route, const NmeaStyle& style) {
  NmeaText text(route, style);
  for (std::int64_t at = 0; at <= route.Milliseconds(); at += 1000 / style.rate) text.AddMoment(at);
  return text.Text();
}

}  // namespace vrx::test_support
