// Calendar time: days since 30 December 1899 with a validity flag, exact to a second. A value does not say
// which zone it is in; its source decides that. Logs, GPS points, file times and overlays use it.
#pragma once

#include <cstdint>
#include <ctime>

#include "foundation/time/FileTime.h"
#include "foundation/time/XpDateTimeSpan.h"
#include "vrx/XpString.h"

/// What FormatDate and FormatTime write. Other values mean XpDateShort and XpTimeSecond.
enum : std::int32_t { XpDateShort = 0, XpDateLong = 1, XpDateYearMonth = 2 };
enum : std::int32_t { XpTimeHour = 0, XpTimeMinute = 1, XpTimeSecond = 2 };

class XpDateTime {
 public:
  /// Value 0.0, not valid.
  XpDateTime() = default;
  /// Stores the serial date in any case; valid from the year 100 to the end of 9999.
  explicit XpDateTime(double value);
  /// Local time now.
  static XpDateTime GetCurrentTime();
  /// The local time of a point in time; not valid before the year 100.
  static XpDateTime FromFileTime(const FILETIME& fileTime);

  /// True when the fields name a date of the years 100 to 9999; the value stays as it was when they do not.
  bool SetDateTime(std::int32_t year, std::int32_t month, std::int32_t day, std::int32_t hour,
                   std::int32_t minute, std::int32_t second);
  bool SetFromTm(const std::tm& fields);
  /// Reads year, month, day and optionally hour, minute, second in the order of a scanf-like format;
  /// see DateTimeScanner.h. Changes nothing and gives false when fewer than 3 or more than
  /// 6 numbers are found; otherwise as SetDateTime.
  bool ParseDateTime(const XpString& text, const XpString& format);

  bool IsValid() const { return m_valid; }
  double GetValue() const { return m_value; }
  /// False when the value is out of range. Day of week 0 is Sunday.
  bool GetDateTimeFields(std::int32_t& year, std::int32_t& month, std::int32_t& day, std::int32_t& hour,
                         std::int32_t& minute, std::int32_t& second, std::int32_t& dayOfWeek) const;
  /// One field, or -1 when the date is not valid.
  std::int32_t GetSecond() const;
  std::int32_t GetMinute() const;
  std::int32_t GetHour() const;
  std::int32_t GetDay() const;
  std::int32_t GetMonth() const;
  std::int32_t GetYear() const;

  /// Move the date and check again whether it is valid.
  void SubtractMinutes(std::int32_t minutes);
  void AddMinutesSeconds(std::int32_t minutes, std::int32_t seconds);
  /// This minus other.
  XpDateTimeSpan Difference(const XpDateTime& other) const;
  /// This minus other, exact to the second; false and 0 when one of the two is not valid.
  bool DifferenceInSeconds(const XpDateTime& other, std::int64_t& seconds) const;

  /// Both take the date as local time, by the zone's rules at that date; see UnixFromLocal for times that are
  /// repeated or skipped. False, or -1, when it is not valid or, for ToFileTime, before 1601.
  bool ToFileTime(FILETIME& fileTime) const;
  std::int64_t ToTimeT() const;

  /// Text in the user's locale; empty when the date is not valid. XpDateShort has digits only and a year of
  /// four of them.
  XpString FormatDate(std::int32_t kind) const;
  /// `force24` writes hours from 0 to 23 without AM or PM, whatever the locale does.
  XpString FormatTime(std::int32_t kind, bool force24) const;
  /// Date, one blank, time.
  XpString FormatDateTime(std::int32_t dateKind, std::int32_t timeKind, bool force24) const;

 private:
  void MoveSeconds(std::int64_t seconds);

  double m_value = 0.0;
  bool m_valid = false;
};
