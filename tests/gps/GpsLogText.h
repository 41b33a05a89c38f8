// Logs as they lie in the sidecars of movies, written line by line.
#pragma once

#include <cmath>
#include <cstdio>
#include <string>

#include "foundation/time/XpDateTime.h"
#include "gps/log/KVUGPSInfo.h"

inline XpDateTime Date(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
  XpDateTime date;
  date.SetDateTime(year, month, day, hour, minute, second);
  return date;
}

/// The moment on which the logs of the tests begin.
inline XpDateTime Start() { return Date(2018, 5, 4, 10, 0, 0); }
inline XpDateTime After(int seconds) {
  XpDateTime date = Start();
  date.AddMinutesSeconds(0, seconds);
  return date;
}

/// "2018-05-04 10:00:07", whatever the last bits of the serial date are.
inline std::string Clock(double serialDate) {
  int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0, weekday = 0;
  XpDateTime(serialDate).GetDateTimeFields(y, mo, d, h, mi, s, weekday);
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", y, mo, d, h, mi, s);
  return text;
}

struct LogFix {
  int second = 0;          // after Start()
  double latitude = 35.5;  // degrees
  double longitude = 139.5;
  double knots = 10.0;
  char status = 'A';
};

/// "3530.00000,N" or "13930.00000,E".
inline std::string Angle(double degrees, int digits, const char* signs) {
  const double minutes = std::abs(degrees) * 60.0;
  const int whole = static_cast<int>(minutes / 60.0);
  char text[40];
  std::snprintf(text, sizeof text, "%0*d%08.5f,%c", digits, whole, minutes - whole * 60.0,
                signs[degrees < 0.0 ? 1 : 0]);
  return text;
}

inline std::string Fix(const LogFix& fix) {
  int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0, weekday = 0;
  After(fix.second).GetDateTimeFields(y, mo, d, h, mi, s, weekday);
  char clock[16], rest[32];
  std::snprintf(clock, sizeof clock, "%02d%02d%02d.000", h, mi, s);
  std::snprintf(rest, sizeof rest, "%.2f,,%02d%02d%02d", fix.knots, d, mo, y % 100);
  const std::string position = Angle(fix.latitude, 2, "NS") + "," + Angle(fix.longitude, 3, "EW");
  return "$GPGGA," + std::string(clock) + "," + position + ",1,08,1.0,10.0,M,,,,*00\r\n" + "$GPRMC," + clock +
         "," + fix.status + "," + position + "," + rest + ",,,A*00\r\n";
}
