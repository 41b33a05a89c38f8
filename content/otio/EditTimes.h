// Times and ranges of a timeline, and what a range leaves of a list of items. The reader of timelines uses
// it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "content/otio/JsonTree.h"
#include "content/otio/Timeline.h"

namespace vrx::otio {

/// A count of frames or samples.
struct Rational {
  double value = 0.0;
  double rate = 1.0;  // a second

  double Seconds() const { return value / rate; }
};

/// `a` minus `b`, exact to the frame when both count at the same rate.
double SecondsBetween(const Rational& a, const Rational& b);

struct Range {
  Rational start;
  Rational duration;  // not negative
};

/// The member `key` of `object`, nothing when it is null or missing. False with `problem` in words when it
/// cannot be.
bool ReadTime(const Json& object, const char* key, std::optional<Rational>& time, std::string& problem);
bool ReadRange(const Json& object, const char* key, std::optional<Range>& range, std::string& problem);

/// The length of all items; nothing when that of one is not known.
std::optional<double> LengthOf(const std::vector<Item>& items);

/// Cuts `items`, all of known length, to `seconds` from `startSeconds`; what lies outside of them becomes a
/// gap.
void Trim(double startSeconds, double seconds, std::vector<Item>& items);

}  // namespace vrx::otio
