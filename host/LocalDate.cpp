#include "host/LocalDate.h"

#include <cstddef>
#include <cstdio>

namespace vrx::host {

bool ReadLocalDate(const std::string& text, XpDateTime& date) {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, end = 0;
  char first = 0, next = 0, separator = 0;
  const int read = std::sscanf(text.c_str(), "%4d%c%2d%c%2d%c%2d:%2d%n:%2d%n", &year, &first, &month, &next,
                               &day, &separator, &hour, &minute, &end, &second, &end);
  const bool isWhole = read >= 8 && static_cast<std::size_t>(end) == text.size();
  return isWhole && first == next && (first == '-' || first == ':') &&
         (separator == 'T' || separator == ' ') && date.SetDateTime(year, month, day, hour, minute, second);
}

}  // namespace vrx::host
