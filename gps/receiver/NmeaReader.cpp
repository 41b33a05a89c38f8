#include "gps/receiver/NmeaReader.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include "gps/receiver/UtcTime.h"

namespace vrx::receiver {
namespace {

constexpr std::size_t kLongestSentence = 256;  // the standard allows 82 characters, some receivers send more
constexpr std::size_t kShortestAddress = 3;
constexpr std::size_t kLongestAddress = 8;
constexpr std::size_t kTypeLength = 3;  // an address is a talker and a type, as "GP" and "RMC"
constexpr std::size_t kAddressLength = 5;
constexpr std::size_t kMostTypes = 64;  // in the table of types that were passed over
constexpr int kCenturyTurn = 80;        // positioning by satellite began in 1980
constexpr std::string_view kRmc = "RMC";
constexpr std::string_view kPositionTypes[] = {kRmc, "GGA", "GLL", "GNS", "GSA", "GSV", "VTG", "ZDA"};

/// Fields of RMC, counted after the address.
enum Field : std::size_t {
  kTime,
  kStatus,
  kLatitude,
  kNorthOrSouth,
  kLongitude,
  kEastOrWest,
  kSpeed,
  kCourse,
  kDate,
  kFieldsNeeded
};
using Fields = std::array<std::string_view, kFieldsNeeded>;

bool EndsSentence(char c) { return c == '\r' || c == '\n' || c == '$' || c == '\0'; }

/// Steps through the sentences of a log: what is between "$" and the end of the line.
class SentenceFinder {
 public:
  explicit SentenceFinder(std::span<const char> bytes) : m_text(bytes.data(), bytes.size()) {}

  bool Next(std::string_view& sentence) {
    const std::size_t start = m_text.find('$', m_at);
    if (start == std::string_view::npos) return false;
    m_at = start + 1;
    while (m_at < m_text.size() && !EndsSentence(m_text[m_at])) ++m_at;
    sentence = m_text.substr(start + 1, m_at - start - 1);
    return true;
  }

 private:
  std::string_view m_text;
  std::size_t m_at = 0;
};

/// "GPRMC"; empty when the sentence does not begin as one, as with a "$" among stray bytes.
std::string_view AddressOf(std::string_view sentence) {
  const std::size_t comma = sentence.substr(0, kLongestAddress + 1).find(',');
  if (comma == std::string_view::npos || comma < kShortestAddress) return {};
  const std::string_view address = sentence.substr(0, comma);
  const auto belongs = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); };
  return std::ranges::all_of(address, belongs) ? address : std::string_view();
}

std::string_view TypeOf(std::string_view address) {
  return address.size() == kAddressLength ? address.substr(kAddressLength - kTypeLength) : address;
}

/// Cuts the checksum off; false when there is one that is wrong.
bool TakeChecksum(std::string_view& sentence) {
  const std::size_t star = sentence.find('*');
  if (star == std::string_view::npos) return true;
  constexpr std::size_t kDigits = 2;
  const std::string_view digits = sentence.substr(star + 1, kDigits);
  sentence = sentence.substr(0, star);
  unsigned stated = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), stated, 16);
  if (error != std::errc() || digits.size() < kDigits || end != digits.data() + kDigits) return false;
  unsigned char sum = 0;
  for (const char c : sentence) sum = static_cast<unsigned char>(sum ^ static_cast<unsigned char>(c));
  return sum == stated;
}

/// False when there are fewer fields than needed. Those beyond are ignored: their number depends on the age
/// of the receiver.
bool SplitFields(std::string_view text, Fields& fields) {
  text.remove_prefix(text.find(',') + 1);
  for (std::size_t i = 0; i < fields.size(); ++i) {
    const std::size_t comma = text.find(',');
    fields[i] = Trimmed(text.substr(0, comma));
    if (comma == std::string_view::npos) return i + 1 == fields.size();
    text.remove_prefix(comma + 1);
  }
  return true;
}

std::optional<Rejection> ReadTime(const Fields& fields, std::int64_t& utcMilliseconds) {
  CivilTime time;
  std::string_view clock = fields[kTime];
  if (clock.empty()) return Rejection::NoTime;
  const bool hasClock = TakeDigits(clock, 2, time.hour) && TakeDigits(clock, 2, time.minute) &&
                        TakeDigits(clock, 2, time.second);
  time.millisecond = TakeMilliseconds(clock);
  if (!hasClock || !clock.empty()) return Rejection::BadTime;
  std::string_view date = fields[kDate];
  if (date.empty()) return Rejection::NoDate;
  const bool hasDate = TakeDigits(date, 2, time.day) && TakeDigits(date, 2, time.month) &&
                       TakeDigits(date, 2, time.year) && date.empty();
  time.year += time.year < kCenturyTurn ? 2000 : 1900;
  // A date that is none must not be blamed on the clock.
  if (!hasDate || !UtcMilliseconds({time.year, time.month, time.day})) return Rejection::BadDate;
  const auto moment = UtcMilliseconds(time);
  if (!moment) return Rejection::BadTime;
  utcMilliseconds = *moment;
  return {};
}

/// "4807.038" and its hemisphere, the positive one of which comes first in `hemispheres`, as degrees.
std::optional<Rejection> ReadAngle(std::string_view text, std::string_view hemisphere,
                                   std::string_view hemispheres, double limit, double& degrees) {
  if (text.empty() || hemisphere.empty()) return Rejection::NoPosition;
  const auto value = PlainDecimal(text);
  if (!value || hemisphere.size() != 1 || hemispheres.find(hemisphere) == std::string_view::npos) {
    return Rejection::BadPosition;
  }
  constexpr double kDegree = 100;  // before two digits of minutes
  constexpr double kMinutes = 60;
  const double whole = std::floor(*value / kDegree);
  const double minutes = *value - whole * kDegree;
  degrees = whole + minutes / kMinutes;
  if (minutes >= kMinutes || degrees > limit) return Rejection::OutOfRange;
  if (hemisphere.front() == hemispheres.back()) degrees = -degrees;
  return {};
}

std::optional<Rejection> ReadSpeed(std::string_view text, double& knots) {
  if (text.empty()) return {};
  const auto value = PlainDecimal(text);
  if (!value) return Rejection::BadSpeed;
  if (*value > kFastestKnots) return Rejection::OutOfRange;
  knots = *value;
  return {};
}

std::optional<Rejection> ReadFix(const Fields& fields, Fix& fix) {
  if (const auto failed = ReadTime(fields, fix.utcMilliseconds)) return failed;
  if (const auto failed = ReadAngle(fields[kLatitude], fields[kNorthOrSouth], "NS", 90, fix.latitude)) {
    return failed;
  }
  if (const auto failed = ReadAngle(fields[kLongitude], fields[kEastOrWest], "EW", 180, fix.longitude)) {
    return failed;
  }
  return ReadSpeed(fields[kSpeed], fix.speedKnots);
}

std::optional<Rejection> ReadRmc(std::string_view sentence, const ReadOptions& options, ReceiverLog& log) {
  if (sentence.size() > kLongestSentence) return Rejection::TooLong;
  if (!TakeChecksum(sentence)) return Rejection::WrongChecksum;
  Fields fields;
  if (!SplitFields(sentence, fields)) return Rejection::TooFewFields;
  Fix fix;
  fix.isValid = fields[kStatus] == "A";
  if (!fix.isValid && fields[kStatus] != "V") return Rejection::UnknownStatus;
  const auto failed = ReadFix(fields, fix);
  if (!fix.isValid) ++log.voidFixes;
  if (!failed) AppendFix(fix, options, log);
  // A receiver without a position leaves fields of its void sentences empty, which is no fault.
  return fix.isValid ? failed : std::nullopt;
}

void PassOver(std::string_view type, ReceiverLog& log) {
  const bool hasRoom = log.passedOver.size() < kMostTypes || log.passedOver.contains(std::string(type));
  ++log.passedOver[hasRoom ? std::string(type) : "others"];
}

}  // namespace

XpResult ReadNmea(std::span<const char> bytes, const ReadOptions& options, ReceiverLog& log) {
  log = {};
  bool hasRmc = false;
  SentenceFinder finder(bytes);
  for (std::string_view sentence; finder.Next(sentence);) {
    const std::string_view address = AddressOf(sentence);
    if (address.empty()) continue;
    ++log.sentences;
    if (TypeOf(address) != kRmc) {
      PassOver(TypeOf(address), log);
      continue;
    }
    hasRmc = true;
    if (const auto failed = ReadRmc(sentence, options, log)) ++log.RejectedFor(*failed);
  }
  if (log.sentences == 0) return XpErrInvalidFile;
  if (!hasRmc) {
    log.warnings.push_back(
        "the log has no RMC sentences, and no others give date and position together; the receiver has to be "
        "set to write them");
  }
  WarnOfRolledDates(options, log);
  return XpOk;
}

bool HoldsNmea(std::span<const char> bytes) {
  SentenceFinder finder(bytes);
  for (std::string_view sentence; finder.Next(sentence);) {
    const std::string_view address = AddressOf(sentence);
    if (address.size() == kAddressLength && std::ranges::count(kPositionTypes, TypeOf(address)) > 0)
      return true;
  }
  return false;
}

}  // namespace vrx::receiver
