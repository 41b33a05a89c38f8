#include "host/Moment.h"

#include "gps/receiver/UtcTime.h"

namespace vrx::host {

std::string CheckMoment(const std::string& text) {
  if (receiver::ParseIsoTime(text)) return "";
  return text + " is no date and time such as 2024-05-01T10:11:12Z";
}

}  // namespace vrx::host
