// Tells the formats of positions apart by their content. Commands that take any log use it.
#pragma once

#include <span>

namespace vrx::receiver {

enum class LogFormat { Unknown, Moff, Nmea, Gpx };

LogFormat DetectFormat(std::span<const char> bytes);

/// "moff", "nmea", "gpx", or "unknown".
const char* LogFormatName(LogFormat format);

}  // namespace vrx::receiver
