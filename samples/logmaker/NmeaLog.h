// Writes a route as the NMEA 0183 log of a receiver.
#pragma once

#include <string>

#include "samples/route/Route.h"

namespace vrx::test_support {

/// What RMC has after the date: since version 2.3 a mode, since 4.1 a navigation status, too.
enum class NmeaVersion { k20, k23, k41 };

/// What the receiver writes while it has no position.
enum class NmeaVoid { kEmptyFields, kLastPosition, kNothing };

struct NmeaStyle {
  std::string talker = "GP";
  NmeaVersion version = NmeaVersion::k23;
  NmeaVoid voids = NmeaVoid::kEmptyFields;
  int rate = 1;  // fixes a second; a divisor of 20
  int timeDecimals = 2;
  int positionDecimals = 4;
  bool hasChecksum = true;
  bool hasCourse = true;
  bool hasGga = true;
  bool hasSatellites = false;  // GSA and GSV of several systems, and VTG
  bool hasBinary = false;      // messages of a binary protocol between the sentences
  std::string lineEnd = "\r\n";
  std::string linePrefix;
  int rolledWeeks = 0;  // by which the date is too early
};

std::string NmeaLog(const Route& route, const NmeaStyle& style);

}  // namespace vrx::test_support
