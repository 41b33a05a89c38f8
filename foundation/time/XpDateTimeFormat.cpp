// The locale texts of XpDateTime, on ICU.
#include <unicode/dtptngen.h>
#include <unicode/gregocal.h>
#include <unicode/smpdtfmt.h>

#include <array>
#include <cfloat>
#include <cstring>
#include <memory>
#include <string>

#include "foundation/time/SerialDate.h"
#include "foundation/time/XpDateTime.h"

namespace {

constexpr std::int32_t kUnixDayZero = 25569;  // 1 January 1970 as a serial date
constexpr double kMillisecondsPerSecond = 1000.0;

enum Style : std::size_t {
  ShortDate,
  LongDate,
  YearMonth,
  Hour,
  HourMinute,
  HourMinuteSecond,
  Hour24,
  HourMinute24,
  HourMinuteSecond24,
  StyleCount
};

/// The fields that the locale is asked to write; for the long date ICU has a style.
constexpr std::array<const char16_t*, StyleCount> kSkeletons = {u"yMd", u"",  u"yMMMM", u"j",  u"jm",
                                                                u"jms", u"H", u"Hm",    u"Hms"};

/// The formatters of one thread, made on first use: finding the pattern of a locale costs a hundred times
/// what formatting with it does, and overlays write the time in every frame.
class Formatters {
 public:
  XpString Format(Style style, double value) {
    const icu::Locale& locale = icu::Locale::getDefault();
    if (m_localeName != locale.getName()) {
      m_formatters = {};
      m_localeName = locale.getName();
    }
    auto& formatter = m_formatters[style];
    if (!formatter) formatter = Make(style, locale);
    if (!formatter) return XpString();
    icu::UnicodeString text;
    formatter->format(ToUDate(value), text);
    // Fonts for video seldom have the narrow no-break space that newer locale data puts before AM and PM.
    text.findAndReplace(u"\u202F", u" ");
    return XpString(std::u16string_view(text.getBuffer(), static_cast<std::size_t>(text.length())));
  }

 private:
  static UDate ToUDate(double value) {
    const auto seconds = static_cast<double>((vrx::serialdate::DayNumber(value) - kUnixDayZero) *
                                                 vrx::serialdate::kSecondsPerDay +
                                             vrx::serialdate::SecondOfDay(value));
    return seconds * kMillisecondsPerSecond;
  }

  static std::unique_ptr<icu::DateFormat> Make(Style style, const icu::Locale& locale) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::DateFormat> format;
    if (style == LongDate) {
      format.reset(icu::DateFormat::createDateInstance(icu::DateFormat::kFull, locale));
    } else {
      const std::unique_ptr<icu::DateTimePatternGenerator> generator(
          icu::DateTimePatternGenerator::createInstance(locale, status));
      if (U_FAILURE(status)) return nullptr;
      const icu::UnicodeString pattern = generator->getBestPattern(kSkeletons[style], status);
      format = std::make_unique<icu::SimpleDateFormat>(pattern, locale, status);
    }
    // The fields are shown unchanged: no zone, and the Gregorian rules for all years.
    auto calendar = std::make_unique<icu::GregorianCalendar>(*icu::TimeZone::getGMT(), locale, status);
    if (U_FAILURE(status) || !format) return nullptr;
    calendar->setGregorianChange(-DBL_MAX, status);
    format->adoptCalendar(calendar.release());
    return U_FAILURE(status) ? nullptr : std::move(format);
  }

  std::string m_localeName;
  std::array<std::unique_ptr<icu::DateFormat>, StyleCount> m_formatters;
};

XpString FormatIn(Style style, const XpDateTime& date) {
  static thread_local Formatters formatters;
  if (!date.IsValid() || !vrx::serialdate::IsInRange(date.GetValue())) return XpString();
  return formatters.Format(style, date.GetValue());
}

}  // namespace

XpString XpDateTime::FormatDate(std::int32_t kind) const {
  return FormatIn(kind == XpDateLong ? LongDate : kind == XpDateYearMonth ? YearMonth : ShortDate, *this);
}

XpString XpDateTime::FormatTime(std::int32_t kind, bool force24) const {
  switch (kind) {
    case XpTimeHour:
      return FormatIn(force24 ? Hour24 : Hour, *this);
    case XpTimeMinute:
      return FormatIn(force24 ? HourMinute24 : HourMinute, *this);
    default:
      return FormatIn(force24 ? HourMinuteSecond24 : HourMinuteSecond, *this);
  }
}

XpString XpDateTime::FormatDateTime(std::int32_t dateKind, std::int32_t timeKind, bool force24) const {
  return FormatDate(dateKind) + u" " + FormatTime(timeKind, force24);
}
