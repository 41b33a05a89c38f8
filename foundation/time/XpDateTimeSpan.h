// The difference of two dates; XpDateTime::Difference makes it.
#pragma once

#include <cstdint>

class XpDateTimeSpan {
 public:
  /// Stores the days in any case; a length beyond that of all dates is not valid.
  explicit XpDateTimeSpan(double days = 0.0);
  XpDateTimeSpan(const XpDateTimeSpan&) = default;
  XpDateTimeSpan& operator=(const XpDateTimeSpan&) = default;
  virtual ~XpDateTimeSpan() = default;

  bool IsValid() const { return m_valid; }
  /// Signed length in days, linear.
  double GetTotalDays() const { return m_days; }
  /// Rounded to the second. Lengths that 64 bits do not hold give the nearest limit, no number gives 0.
  std::int64_t GetTotalSeconds() const;

 private:
  bool m_valid;
  double m_days;
};
