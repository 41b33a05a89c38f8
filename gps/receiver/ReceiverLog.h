// What was read from the log of a receiver of the user's own: its fixes, and how many sentences were of no
// use and why. NmeaReader and GpxReader fill it; the import and the display of logs work on it.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "foundation/xml/XmlDocument.h"

namespace vrx::receiver {

inline constexpr double kFastestKnots = 20'000;  // beyond what stays in orbit

/// Where the receiver was at a moment. Degrees are WGS 84, north and east positive.
struct Fix {
  std::int64_t utcMilliseconds = 0;  // since 1970, on the receiver's clock
  double latitude = 0.0;
  double longitude = 0.0;
  double speedKnots = -1.0;  // negative: unknown
  bool isValid = true;       // false: the receiver itself says that the position is not to be trusted
};

/// Why an RMC sentence or a track point gave no fix.
enum class Rejection {
  WrongChecksum,
  TooLong,
  TooFewFields,
  UnknownStatus,
  NoTime,
  BadTime,
  NoDate,
  BadDate,
  NoPosition,
  BadPosition,
  BadSpeed,
  OutOfRange,  // a position or a speed that cannot be
};
inline constexpr std::size_t kRejections = 12;

/// In words, as "wrong checksum".
const char* RejectionName(Rejection reason);

struct ReceiverLog {
  std::vector<Fix> fixes;         // in the log's order; void ones only when they have time and position
  std::uint64_t sentences = 0;    // of all types; for GPX, track points
  std::uint64_t validFixes = 0;   // those of `fixes` that are valid
  std::uint64_t voidFixes = 0;    // sentences that the receiver marks as void, with or without a position
  std::uint64_t rolledDates = 0;  // fixes dated before any plausible recording
  std::array<std::uint64_t, kRejections> rejected{};
  std::map<std::string, std::uint64_t> passedOver;  // other sentences, by type without talker, as "GSV"
  std::vector<std::string> warnings;                // whole sentences in English

  std::uint64_t& RejectedFor(Rejection reason) { return rejected[static_cast<std::size_t>(reason)]; }
  std::uint64_t GetRejected() const;  // for all reasons
};

struct ReadOptions {
  /// Moves dates before `earliestUtcMilliseconds` by 1024 weeks, once or twice, until they are after it.
  /// Receivers count weeks in ten bits, and old ones fall back by this time when the count overflows.
  bool correctWeekRollover = false;
  std::int64_t earliestUtcMilliseconds = 1'262'304'000'000;  // 1 January 2010
  /// For GPX: 12 hours at 10 Hz with all the usual extensions stay far below.
  xml::XmlLimits xmlLimits{.bytes = std::size_t{1} << 30, .depth = 64, .elements = 100'000'000};
};

/// Checks the date of `fix` as the options say and appends it.
void AppendFix(Fix fix, const ReadOptions& options, ReceiverLog& log);

/// Adds the warning about dates that AppendFix found; the readers call it at the end.
void WarnOfRolledDates(const ReadOptions& options, ReceiverLog& log);

}  // namespace vrx::receiver
