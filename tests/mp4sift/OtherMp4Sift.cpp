// Answers with the numbers in the path: "class year month day hour minute second offset". With no more than
// the class there is no date.
#include <cstdio>
#include <string>

#include "mp4sift/Mp4SiftExports.h"

namespace {

struct Answers {
  int count = 0;
  int movieClass = 0;
  std::uint16_t fields[6] = {};
  int offset = 0;
};

Answers Read(const char16_t* path) {
  Answers a;
  const std::u16string_view text(path);
  const std::string narrow(text.begin(), text.end());
  a.count = std::sscanf(narrow.c_str(), "%d %hu %hu %hu %hu %hu %hu %d", &a.movieClass, &a.fields[0],
                        &a.fields[1], &a.fields[2], &a.fields[3], &a.fields[4], &a.fields[5], &a.offset);
  return a;
}

}  // namespace

std::int32_t GetFormatType(const char16_t* path) { return Read(path).movieClass; }

bool GetOriginalDateTime(const char16_t* path, std::uint16_t* year, std::uint16_t* month, std::uint16_t* day,
                         std::uint16_t* hour, std::uint16_t* minute, std::uint16_t* second,
                         std::int32_t* offsetMinutes) {
  const Answers a = Read(path);
  if (a.count < 8) return false;
  std::uint16_t* const fields[] = {year, month, day, hour, minute, second};
  for (int i = 0; i < 6; ++i) *fields[i] = a.fields[i];
  *offsetMinutes = a.offset;
  return true;
}
