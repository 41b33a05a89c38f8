#include "gps/receiver/ReceiverLog.h"

#include <numeric>

#include "gps/receiver/UtcTime.h"

namespace vrx::receiver {
namespace {

constexpr int kMostRollovers = 2;

constexpr std::array<const char*, kRejections> kRejectionNames = {
    "wrong checksum", "sentence too long",   "too few fields",   "unknown status",
    "no time",        "unreadable time",     "no date",          "unreadable date",
    "no position",    "unreadable position", "unreadable speed", "out of range"};

}  // namespace

const char* RejectionName(Rejection reason) { return kRejectionNames.at(static_cast<std::size_t>(reason)); }

std::uint64_t ReceiverLog::GetRejected() const {
  return std::accumulate(rejected.begin(), rejected.end(), std::uint64_t{0});
}

void AppendFix(Fix fix, const ReadOptions& options, ReceiverLog& log) {
  if (fix.utcMilliseconds < options.earliestUtcMilliseconds) {
    ++log.rolledDates;
    for (int i = 0; options.correctWeekRollover && i < kMostRollovers &&
                    fix.utcMilliseconds < options.earliestUtcMilliseconds;
         ++i) {
      fix.utcMilliseconds += kWeekRolloverSeconds * kMillisecondsPerSecond;
    }
  }
  if (fix.isValid) ++log.validFixes;
  log.fixes.push_back(fix);
}

void WarnOfRolledDates(const ReadOptions& options, ReceiverLog& log) {
  if (log.rolledDates == 0) return;
  const std::string count = std::to_string(log.rolledDates) + " fixes are dated before " +
                            UtcDateText(options.earliestUtcMilliseconds) +
                            ", probably because the receiver's " + "count of weeks has overflowed";
  log.warnings.push_back(count + (options.correctWeekRollover ? "; they were moved by 1024 weeks" : ""));
}

}  // namespace vrx::receiver
