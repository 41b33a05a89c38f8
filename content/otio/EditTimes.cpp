#include "content/otio/EditTimes.h"

#include <algorithm>
#include <cmath>

#include "content/otio/Schema.h"

namespace vrx::otio {
namespace {

constexpr double kShortest = 1e-6;  // below this, seconds are left over from rounding

bool ReadNumber(const Json& object, const char* key, const char* what, double& number, std::string& problem) {
  const Json& member = MemberOf(object, key);
  if (member.is_number()) number = member.get<double>();
  if (!member.is_number() || !std::isfinite(number)) {
    problem = std::string("the ") + key + " of " + what + " is no number";
    return false;
  }
  return true;
}

bool ReadRational(const Json& object, const char* what, Rational& time, std::string& problem) {
  if (!ReadNumber(object, "value", what, time.value, problem)) return false;
  if (!ReadNumber(object, "rate", what, time.rate, problem)) return false;
  if (time.rate <= 0 || time.rate > kHighestRate) {
    problem = std::string("the rate of ") + what + " is " + NumberText(time.rate);
    return false;
  }
  // A rate may be so small that the quotient is infinite.
  if (!(std::abs(time.Seconds()) <= kMostSeconds)) {
    problem = std::string(what) + " is more than " + NumberText(kMostSeconds) + " seconds";
    return false;
  }
  return true;
}

Item GapOf(double seconds) { return {.kind = Item::Kind::Gap, .seconds = seconds}; }

}  // namespace

double SecondsBetween(const Rational& a, const Rational& b) {
  return a.rate == b.rate ? (a.value - b.value) / a.rate : a.Seconds() - b.Seconds();
}

bool ReadTime(const Json& object, const char* key, std::optional<Rational>& time, std::string& problem) {
  time.reset();
  const Json& member = MemberOf(object, key);
  if (member.is_null()) return true;
  return ReadRational(member, key, time.emplace(), problem);
}

bool ReadRange(const Json& object, const char* key, std::optional<Range>& range, std::string& problem) {
  range.reset();
  const Json& member = MemberOf(object, key);
  if (member.is_null()) return true;
  Range& read = range.emplace();
  const bool isRead = ReadRational(MemberOf(member, "start_time"), "start_time", read.start, problem) &&
                      ReadRational(MemberOf(member, "duration"), "duration", read.duration, problem);
  if (isRead && read.duration.value >= 0) return true;
  if (isRead) problem = "the duration is negative";
  problem += std::string(" (in its ") + key + ")";
  return false;
}

std::optional<double> LengthOf(const std::vector<Item>& items) {
  double length = 0;
  for (const Item& item : items) {
    if (item.kind == Item::Kind::Clip && item.seconds == 0) return {};
    length += item.seconds;
  }
  return length;
}

void Trim(double startSeconds, double seconds, std::vector<Item>& items) {
  std::vector<Item> kept;
  const double end = startSeconds + seconds;
  if (startSeconds < 0) kept.push_back(GapOf(std::min(-startSeconds, seconds)));
  double at = 0;
  for (Item& item : items) {
    const double itemEnd = at + item.seconds;
    const double cutBefore = std::max(startSeconds - at, 0.0);
    const double left = std::min(itemEnd, end) - (at + cutBefore);
    at = itemEnd;
    if (left <= kShortest) continue;
    const bool isWhole = item.seconds - left <= kShortest;
    if (!isWhole) item.seconds = left;
    if (cutBefore > kShortest && item.kind == Item::Kind::Clip) item.startSeconds += cutBefore;
    kept.push_back(std::move(item));
  }
  const double missing = end - std::max(at, std::max(startSeconds, 0.0));
  if (missing > kShortest) kept.push_back(GapOf(missing));
  items = std::move(kept);
}

}  // namespace vrx::otio
